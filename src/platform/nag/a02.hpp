// a02: complex arithmetic of the back end (principal values).
#pragma once

#include "zemath/types.h"

namespace zemath::nag {

// |z| without intermediate overflow or underflow.
double a02dbc(double re, double im) noexcept;

}  // namespace zemath::nag
