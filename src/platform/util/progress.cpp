// Utility-library substitute: progress reporting. The one piece of process-wide state is
// the host's registration (callback and context), guarded by a lock; reports snapshot it.
#include "platform/util/progress.hpp"

#include <algorithm>
#include <mutex>

namespace zemath::util {
namespace {

struct Registration {
    std::mutex lock;
    zemath_progress_callback callback = nullptr;
    void* context = nullptr;
};

Registration& registration() {
    static Registration r;
    return r;
}

}  // namespace

ProgressReport::ProgressReport(const char* caption, const char* label, std::size_t total,
                               std::size_t step, bool enabled) noexcept
    : caption_(caption),
      label_(label),
      total_(total),
      step_(std::max<std::size_t>(step, 1)),
      next_(step_) {
    if (!enabled) return;
    Registration& r = registration();
    {
        std::lock_guard<std::mutex> guard(r.lock);
        callback_ = r.callback;
        context_ = r.context;
    }
    if (callback_ != nullptr) callback_(context_, caption_, label_, 0);
}

ProgressReport::~ProgressReport() {
    if (callback_ != nullptr) callback_(context_, caption_, label_, 100);
}

void ProgressReport::report(std::size_t done) noexcept {
    const int percent =
        total_ > 0 ? static_cast<int>(std::min<std::size_t>(done, total_) * 100 / total_) : 100;
    callback_(context_, caption_, label_, percent);
    next_ = done + step_;
}

}  // namespace zemath::util

ZEMATH_API void zemath_set_progress_callback(zemath_progress_callback callback,
                                             void* context) noexcept {
    auto& r = zemath::util::registration();
    std::lock_guard<std::mutex> guard(r.lock);
    r.callback = callback;
    r.context = context;
}
