/* zeMath: numerical analysis library with a C interface. Umbrella header. */
#ifndef ZEMATH_H
#define ZEMATH_H

#include "zemath/types.h"
#include "zemath/status.h"
#include "zemath/frame.h"
#include "zemath/complex.h"

#endif /* ZEMATH_H */
