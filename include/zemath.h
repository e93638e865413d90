/* zeMath: numerical analysis library with a C interface. Umbrella header. */
#ifndef ZEMATH_H
#define ZEMATH_H

#include "zemath/types.h"
#include "zemath/status.h"
#include "zemath/frame.h"
#include "zemath/complex.h"
#include "zemath/primitives.h"
#include "zemath/search.h"
#include "zemath/sort.h"
#include "zemath/distributions.h"
#include "zemath/random.h"
#include "zemath/special.h"
#include "zemath/function_table.h"

#endif /* ZEMATH_H */
