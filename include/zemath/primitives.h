/* zeMath: primitives family. */
#ifndef ZEMATH_PRIMITIVES_H
#define ZEMATH_PRIMITIVES_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_PRIMITIVES_H */
