// Message-code facility: one sink (function and context) guarded by a mutex. The sink is
// copied under the lock and called outside it, so a sink may itself (un)register.
#include "platform/util/messages.hpp"

#include <mutex>

#include "zemath/statistics.h"

namespace {

struct SinkSlot {
    std::mutex lock;
    zemath_message_sink sink = nullptr;
    void* context = nullptr;
};

SinkSlot& slot() {
    static SinkSlot the_slot;  // the registration is the host's, not per-call state
    return the_slot;
}

}  // namespace

namespace zemath::util {

void post_message(const char* code) noexcept {
    zemath_message_sink sink = nullptr;
    void* context = nullptr;
    {
        std::lock_guard<std::mutex> hold(slot().lock);
        sink = slot().sink;
        context = slot().context;
    }
    if (sink != nullptr && code != nullptr) sink(code, context);
}

}  // namespace zemath::util

ZEMATH_API void zemath_set_message_sink(zemath_message_sink sink, void* context) noexcept {
    std::lock_guard<std::mutex> hold(slot().lock);
    slot().sink = sink;
    slot().context = sink != nullptr ? context : nullptr;
}
