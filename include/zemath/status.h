/* zeMath: status codes. 0 is success; a negative code names the check that failed;
 * a positive code is the error number of a numerical back-end routine handed on.
 * Each family documents which of these its functions return. */
#ifndef ZEMATH_STATUS_H
#define ZEMATH_STATUS_H

#include "status_list.h"
#include "types.h"

/* The codes and their texts are listed once, in status_list.h. */
#define ZEMATH_STATUS_ENUMERATOR(name, value, text) name = value,
#define ZEMATH_STATUS_ALIAS_ENUMERATOR(alias, name) alias = name,

/* clang-format off */
/* 0 and the library's own checks (negative). */
enum zemath_status {
    ZEMATH_STATUS_CODES(ZEMATH_STATUS_ENUMERATOR)
    ZEMATH_STATUS_ALIASES(ZEMATH_STATUS_ALIAS_ENUMERATOR)
};

/* Error numbers handed on from the numerical routines (positive). */
enum zemath_backend_status {
    ZEMATH_BACKEND_STATUS_CODES(ZEMATH_STATUS_ENUMERATOR)
};

/* clang-format on */

#undef ZEMATH_STATUS_ENUMERATOR
#undef ZEMATH_STATUS_ALIAS_ENUMERATOR

ZEMATH_EXTERN_C_BEGIN

/* The text of a status code from status_list.h ("ok", "null pointer", ...; positive
 * codes prefixed "back end: "); "unknown status" for any other value. Never NULL; the
 * string is static. */
ZEMATH_API const char* zemath_status_string(int status) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_STATUS_H */
