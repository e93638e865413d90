// Texts of the status codes, generated from the one list in zemath/status_list.h: a code
// listed twice would be a duplicate case label, so the compiler keeps the numbers unique.
#include "zemath/status.h"

extern "C" ZEMATH_API const char* zemath_status_string(int status) noexcept {
#define ZEMATH_STATUS_CASE(name, value, text) \
    case name:                                \
        return text;
#define ZEMATH_BACKEND_STATUS_CASE(name, value, text) \
    case name:                                        \
        return "back end: " text;
    switch (status) {
        ZEMATH_STATUS_CODES(ZEMATH_STATUS_CASE)
        ZEMATH_BACKEND_STATUS_CODES(ZEMATH_BACKEND_STATUS_CASE)
        default:
            return "unknown status";
    }
#undef ZEMATH_STATUS_CASE
#undef ZEMATH_BACKEND_STATUS_CASE
}
