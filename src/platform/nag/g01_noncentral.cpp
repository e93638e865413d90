// g01gbc, g01gcc, g01gdc, g01gec: lower-tail probabilities of the non-central t,
// chi-square, F and beta distributions.
//
// Method: Boost.Math's non-central distributions. The chi-square, beta and F laws are
// Poisson mixtures of their central laws (weights e^(-lambda/2) (lambda/2)^j / j!);
// Boost sums them from the Poisson mode outwards with recurrences on the incomplete
// gamma / beta terms (Ding; Benton and Krishnamoorthy), and takes the complement series
// when the lower tail is the larger one, so both tails keep their accuracy. The t law
// uses the series of Benton and Krishnamoorthy (2003) over I_x(j+1/2, v/2) and
// I_x(j+1, v/2) with the same complement switch.
//
// tol and max_iter: tol is accepted for the call shape (the series are always summed to
// full double precision). max_iter must be at least 1; the series then run under their
// own cap (Boost's, 10^6 terms) rather than max_iter, so a small max_iter never truncates
// a sum - a caller always gets the converged value.
//
// Failures: NE_REAL for NaN, NE_REAL_ARG_LT / NE_REAL_ARG_LE / NE_REAL_ARG_GT for
// parameters outside their ranges, NE_INT_ARG_LT for max_iter < 1, NE_CONV when a series
// does not converge (no value).
#include <cmath>

#include "platform/nag/quiet_policy.hpp"  // first: configures Boost
#include <boost/math/distributions/non_central_beta.hpp>
#include <boost/math/distributions/non_central_chi_squared.hpp>
#include <boost/math/distributions/non_central_f.hpp>
#include <boost/math/distributions/non_central_t.hpp>

#include "platform/nag/g01.hpp"

namespace zemath::nag {

namespace {

using detail::QuietPolicy;

double checked(double value, NagError* fail) {
    if (!std::isfinite(value)) {
        fail->set(NE_CONV);
        return 0.0;
    }
    return std::fmin(std::fmax(value, 0.0), 1.0);
}

// Non-centrality: 0 <= lambda, finite.
bool bad_lambda(double lambda, NagError* fail) {
    if (std::isnan(lambda)) return fail->set(NE_REAL), true;
    if (lambda < 0.0) return fail->set(NE_REAL_ARG_LT), true;
    if (std::isinf(lambda)) return fail->set(NE_REAL_ARG_GT), true;
    return false;
}

// A positive, finite shape or degrees-of-freedom parameter.
bool bad_positive(double value, NagError* fail) {
    if (std::isnan(value)) return fail->set(NE_REAL), true;
    if (value <= 0.0) return fail->set(NE_REAL_ARG_LE), true;
    if (std::isinf(value)) return fail->set(NE_REAL_ARG_GT), true;
    return false;
}

}  // namespace

double g01gbc(double t, double df, double delta, double /*tol*/, int max_iter,
              NagError* fail) {
    if (std::isnan(t) || std::isnan(df) || std::isnan(delta)) return fail->set(NE_REAL), 0.0;
    if (df < 1.0) return fail->set(NE_REAL_ARG_LT), 0.0;
    if (std::isinf(df) || std::isinf(delta)) return fail->set(NE_REAL_ARG_GT), 0.0;
    if (max_iter < 1) return fail->set(NE_INT_ARG_LT), 0.0;
    fail->set(NE_NOERROR);
    if (t == -INFINITY) return 0.0;
    if (t == INFINITY) return 1.0;
    const boost::math::non_central_t_distribution<double, QuietPolicy> law(df, delta);
    return checked(boost::math::cdf(law, t), fail);
}

double g01gcc(double x, double df, double lambda, double /*tol*/, int max_iter,
              NagError* fail) {
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (x < 0.0) return fail->set(NE_REAL_ARG_LT), 0.0;
    if (bad_positive(df, fail) || bad_lambda(lambda, fail)) return 0.0;
    if (max_iter < 1) return fail->set(NE_INT_ARG_LT), 0.0;
    fail->set(NE_NOERROR);
    if (x == INFINITY) return 1.0;
    if (x == 0.0) return 0.0;
    const boost::math::non_central_chi_squared_distribution<double, QuietPolicy> law(df, lambda);
    return checked(boost::math::cdf(law, x), fail);
}

double g01gdc(double f, double df1, double df2, double lambda, double /*tol*/, int max_iter,
              NagError* fail) {
    if (std::isnan(f)) return fail->set(NE_REAL), 0.0;
    if (f < 0.0) return fail->set(NE_REAL_ARG_LT), 0.0;
    if (bad_positive(df1, fail) || bad_positive(df2, fail) || bad_lambda(lambda, fail))
        return 0.0;
    if (max_iter < 1) return fail->set(NE_INT_ARG_LT), 0.0;
    fail->set(NE_NOERROR);
    if (f == INFINITY) return 1.0;
    if (f == 0.0) return 0.0;
    const boost::math::non_central_f_distribution<double, QuietPolicy> law(df1, df2, lambda);
    return checked(boost::math::cdf(law, f), fail);
}

double g01gec(double x, double a, double b, double lambda, double /*tol*/, int max_iter,
              NagError* fail) {
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (x < 0.0) return fail->set(NE_REAL_ARG_LT), 0.0;
    if (x > 1.0) return fail->set(NE_REAL_ARG_GT), 0.0;
    if (bad_positive(a, fail) || bad_positive(b, fail) || bad_lambda(lambda, fail)) return 0.0;
    if (max_iter < 1) return fail->set(NE_INT_ARG_LT), 0.0;
    fail->set(NE_NOERROR);
    if (x == 0.0) return 0.0;
    if (x == 1.0) return 1.0;
    const boost::math::non_central_beta_distribution<double, QuietPolicy> law(a, b, lambda);
    return checked(boost::math::cdf(law, x), fail);
}

}  // namespace zemath::nag
