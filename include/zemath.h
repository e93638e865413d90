/* zeMath: numerical analysis library with a C interface. Umbrella header. */
#ifndef ZEMATH_H
#define ZEMATH_H

#include "zemath/types.h"
#include "zemath/status.h"
#include "zemath/frame.h"
#include "zemath/complex.h"
#include "zemath/geometry.h"
#include "zemath/reduction.h"
#include "zemath/image.h"
#include "zemath/primitives.h"
#include "zemath/search.h"
#include "zemath/sort.h"
#include "zemath/distributions.h"
#include "zemath/random.h"
#include "zemath/statistics.h"
#include "zemath/calculus.h"
#include "zemath/smoothing.h"
#include "zemath/progress.h"
#include "zemath/moving.h"
#include "zemath/rainflow.h"
#include "zemath/emd.h"
#include "zemath/interpolation.h"
#include "zemath/xyz.h"
#include "zemath/triangulation.h"
#include "zemath/kriging.h"
#include "zemath/peaks.h"
#include "zemath/peak_measures.h"
#include "zemath/baseline.h"
#include "zemath/special.h"
#include "zemath/function_table.h"

#endif /* ZEMATH_H */
