/* zeMath: search family. */
#ifndef ZEMATH_SEARCH_H
#define ZEMATH_SEARCH_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_SEARCH_H */
