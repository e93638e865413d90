// Utility-library probability helpers: the regularised incomplete beta function, the
// standard normal distribution and its inverse, and the upper-tail F quantile.
//
// Method: thin forms of the back end's g01 routines (same accuracy: within 1e-13 relative
// of 50-digit references). Ftable uses the reciprocal symmetry of the F law: if F has
// (df1, df2) degrees of freedom then 1/F has (df2, df1), so the upper-tail quantile
// P(F > f) = p is 1 / (the lower-tail p quantile with the degrees swapped); it is computed
// to full accuracy for every p, where 1 - p would lose the small upper tails.
//
// Failures: these helpers have no status; an argument outside the domain, NaN, NANUM or a
// result that cannot be computed gives NANUM. incbeta shares g01eec's limit a, b <= 1e6.
#include "platform/util/probability.hpp"

#include <cmath>

#include "core/missing.hpp"
#include "platform/nag/g01.hpp"

namespace zemath::util {

using nag::Nag_TailProbability;
using nag::NagError;

double incbeta(double x, double a, double b) {
    if (is_missing(x) || is_missing(a) || is_missing(b)) return kNanum;
    if (!(x >= 0 && x <= 1 && a > 0 && b > 0)) return kNanum;  // NaN fails too
    NagError fail;
    double p = 0;
    nag::g01eec(x, a, b, 0.0, &p, nullptr, nullptr, &fail);
    return fail.failed() ? kNanum : p;
}

double prob(double z) {
    if (is_missing(z)) return kNanum;
    NagError fail;
    const double p = nag::g01eac(Nag_TailProbability::Nag_LowerTail, z, &fail);
    return fail.failed() ? kNanum : p;
}

double invprob(double p) {
    if (is_missing(p)) return kNanum;
    NagError fail;
    const double z = nag::g01cec(p, &fail);
    return fail.failed() ? kNanum : z;
}

double Ftable(double p, int df1, int df2) {
    if (is_missing(p) || !(p > 0 && p <= 1) || df1 < 1 || df2 < 1) return kNanum;
    if (p == 1) return 0.0;
    NagError fail;
    const double reciprocal = nag::g01fdc(p, df2, df1, &fail);
    if (fail.failed()) return kNanum;
    const double f = 1.0 / reciprocal;
    return std::isinf(f) ? kNanum : f;  // the quantile is beyond the double range
}

}  // namespace zemath::util
