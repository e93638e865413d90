/* zeMath: progress reporting. Long-running functions that offer it (a bShowProgress
 * argument) report their progress through one callback the host registers for the whole
 * process. Without a registered callback nothing is reported and nothing is printed.
 *
 * The callback receives the host's context pointer, a caption ("Smoothing..."), a short
 * label ("Smooth") and the percentage done: 0 when the work starts, rising values while it
 * runs, 100 when it ends (also when it ends early on an error). Calls come from the
 * thread running the function; when several threads report at once the callback must
 * itself be thread-safe. Its return value is reserved: return 0.
 *
 * Registration is thread-safe; a function already running keeps the callback it found
 * when it started. */
#ifndef ZEMATH_PROGRESS_H
#define ZEMATH_PROGRESS_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

typedef int (*zemath_progress_callback)(void* context, const char* caption, const char* label,
                                        int percent);

/* Registers callback with its context (callback NULL: progress is no longer reported). */
ZEMATH_API void zemath_set_progress_callback(zemath_progress_callback callback,
                                             void* context) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_PROGRESS_H */
