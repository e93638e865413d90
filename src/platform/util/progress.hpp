// Utility-library substitute: progress reporting through the host's registered callback.
#pragma once

#include <cstddef>

#include "zemath/progress.h"

namespace zemath::util {

// One report of a long computation: 0 at construction, then a call each time the count
// done passes another step, 100 at destruction. Silent when disabled or when no callback
// is registered. The callback in force at construction is used throughout.
class ProgressReport {
  public:
    ProgressReport(const char* caption, const char* label, std::size_t total, std::size_t step,
                   bool enabled) noexcept;
    ~ProgressReport();
    ProgressReport(const ProgressReport&) = delete;
    ProgressReport& operator=(const ProgressReport&) = delete;

    void advance(std::size_t done) noexcept {
        if (callback_ != nullptr && done >= next_) report(done);
    }

  private:
    void report(std::size_t done) noexcept;

    zemath_progress_callback callback_ = nullptr;
    void* context_ = nullptr;
    const char* caption_;
    const char* label_;
    std::size_t total_, step_, next_;
};

}  // namespace zemath::util
