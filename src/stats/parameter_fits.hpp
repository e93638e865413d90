// Maximum-likelihood fits of the gamma and Weibull laws with the covariance of their
// estimates, behind the confidence-limit exports of the statistics family.
#pragma once

#include <span>

namespace zemath::stats {

// Estimates of a two-parameter law and their asymptotic covariance (the inverse of the
// information of the whole sample), ok false when the likelihood has no maximum (fewer
// than two distinct values) or the solver did not converge.
struct ParameterFit {
    bool ok = false;
    double first = 0.0, second = 0.0;  // gamma: shape, scale; Weibull: scale, shape
    double var_first = 0.0, var_second = 0.0;
};

// Gamma law with shape a and scale b, density x^(a-1) e^(-x/b) / (Gamma(a) b^a), from
// positive finite data: a solves ln a - psi(a) = ln(mean) - mean(ln x), b = mean / a; the
// covariance is the inverse Fisher information (equal to the observed one at the estimate).
ParameterFit fit_gamma(std::span<const double> x);

// Weibull law with scale a and shape b, P(X <= x) = 1 - exp(-(x/a)^b), from positive finite
// data: b solves sum x^b ln x / sum x^b - 1/b = mean(ln x), a = (mean(x^b))^(1/b); the
// covariance is the inverse observed information (the negated Hessian of the
// log-likelihood at the estimate).
ParameterFit fit_weibull(std::span<const double> x);

}  // namespace zemath::stats
