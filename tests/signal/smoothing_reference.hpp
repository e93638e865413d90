// The SciPy/NumPy smoothing reference rows (tests/reference/gen_smoothing.py), shared by the
// smoothing and median filter tests.
#pragma once

#include <vector>

namespace smoothing_reference {

struct CoefficientReference {
    int left, right, order, deriv;
    std::vector<double> c;
};
struct FilterReference {
    int half, order, deriv, mode;
    std::vector<double> x, y;
};
struct DerivativeReference {
    int half, order, deriv;
    std::vector<double> x, y, d;
};
struct FftReference {
    double cutoff;
    std::vector<double> x, y;
};
#include "reference/smoothing_ref.inc"

}  // namespace smoothing_reference
