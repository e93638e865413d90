/* Compiled as strict C99: the public headers must be valid C. */
#include "zemath.h"

int zemath_c99_header_check(void) {
    return ZEMATH_OK;
}
