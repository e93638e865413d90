/* zeMath: random family. */
#ifndef ZEMATH_RANDOM_H
#define ZEMATH_RANDOM_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_RANDOM_H */
