// Utility-library substitute: the message-code facility. Families post short warning
// codes ("_ZEMS_CW_3", ...) here; the library prints nothing and keeps nothing. A host
// that wants the codes registers a sink (zemath_set_message_sink); each posted code is
// handed to the sink registered at the time of posting, on the posting thread. Without a
// sink a posted code is dropped at once. Registration and posting are thread-safe.
#pragma once

namespace zemath::util {

// Hands `code` (a null-terminated string that lives for the program) to the registered
// sink, if any. Never throws.
void post_message(const char* code) noexcept;

}  // namespace zemath::util
