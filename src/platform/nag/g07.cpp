// g07cac: two-sample t test from summaries. Student's t tails and deviates come from
// g01ebc / g01fbc (1e-13 relative); the statistic is a few rounding errors from exact.
#include "platform/nag/g07.hpp"

#include <cmath>

#include "platform/nag/g01.hpp"

namespace zemath::nag {

void g07cac(Nag_TailProbability tail, Nag_TestVariances equal, int nx, int ny, double xmean,
            double ymean, double xstd, double ystd, double clevel, double* t, double* df,
            double* prob, double* dl, double* du, NagError* fail) {
    fail->code = NE_NOERROR;
    Nag_TailProbability g01_tail;
    switch (tail) {
        case Nag_TailProbability::Nag_TwoTail:
            g01_tail = Nag_TailProbability::Nag_TwoTailSignif;
            break;
        case Nag_TailProbability::Nag_UpperTail:
            g01_tail = Nag_TailProbability::Nag_UpperTail;
            break;
        case Nag_TailProbability::Nag_LowerTail:
            g01_tail = Nag_TailProbability::Nag_LowerTail;
            break;
        default:
            fail->set(NE_BAD_PARAM);
            return;
    }
    if (equal != Nag_TestVariances::Nag_EqualVar && equal != Nag_TestVariances::Nag_UnequalVar) {
        fail->set(NE_BAD_PARAM);
        return;
    }
    if (nx < 2 || ny < 2) {
        fail->set(NE_INT_ARG_LT);
        return;
    }
    if (!(xstd > 0.0) || !(ystd > 0.0)) {
        fail->set(NE_REAL_ARG_LE);
        return;
    }
    if (!(clevel > 0.0 && clevel < 1.0) || !std::isfinite(xmean) || !std::isfinite(ymean) ||
        !std::isfinite(xstd) || !std::isfinite(ystd)) {
        fail->set(NE_REAL);
        return;
    }
    const double fx = nx, fy = ny;
    const double vx = xstd * xstd / fx, vy = ystd * ystd / fy;
    double se, dof;
    if (equal == Nag_TestVariances::Nag_EqualVar) {
        dof = fx + fy - 2.0;
        const double pooled = ((fx - 1.0) * xstd * xstd + (fy - 1.0) * ystd * ystd) / dof;
        se = std::sqrt(pooled * (1.0 / fx + 1.0 / fy));
    } else {
        se = std::sqrt(vx + vy);
        dof = (vx + vy) * (vx + vy) / (vx * vx / (fx - 1.0) + vy * vy / (fy - 1.0));
    }
    const double statistic = (xmean - ymean) / se;
    NagError inner;
    const double p = g01ebc(g01_tail, statistic, dof, &inner);
    if (inner.failed()) {
        fail->set(inner.code);
        return;
    }
    const double quantile = g01fbc(Nag_TailProbability::Nag_TwoTailConfid, clevel, dof, &inner);
    if (inner.failed()) {
        fail->set(inner.code);
        return;
    }
    *t = statistic;
    *df = dof;
    *prob = p;
    *dl = (xmean - ymean) - quantile * se;
    *du = (xmean - ymean) + quantile * se;
}

}  // namespace zemath::nag
