/* zeMath: complex functions under their collision-free names (ending in z). The plain
 * names (cabs, sin, ...) are exported by the companion library zemath_plain. Every
 * function returns NANUM (in both parts for a complex result) when either part of its
 * argument equals NANUM. */
#ifndef ZEMATH_COMPLEX_H
#define ZEMATH_COMPLEX_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Modulus |z|, computed without intermediate overflow; NANUM for a missing part. */
ZEMATH_API double cabsz(d_complex z) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_COMPLEX_H */
