// The scale law shared by the non-central t and the studentized range: S = sqrt(chi2_v / v),
// the divisor of a Student-type statistic.
#pragma once

namespace zemath::numeric {

// Density of Y = ln S at y: v s^2 g(v/2, v s^2 / 2), s = e^y, g the standard gamma
// density. In y the density has no end-point singularity for any v > 0 (f_S ~ s^(v-1) at
// 0), its mode is at y = 0 and its width 1/sqrt(2v). Its constant is formed once, for the
// many nodes of a quadrature: ChiScaleLogDensity f(v); f(y). v finite and positive (the
// callers take the v = infinity limit law themselves).
class ChiScaleLogDensity {
  public:
    explicit ChiScaleLogDensity(double v);
    double operator()(double y) const;
    // The same with s = e^y, which the caller has already formed: outside |y| < 1/4 the
    // deviance is taken as s^2 - 1 - 2y instead of from expm1 (within 1.5 ulps of s^2 where
    // expm1 is within one; the exponent's rounding only matters where the density is far
    // below its mode).
    double operator()(double y, double s) const;

  private:
    double half_v_;        // a = v / 2
    double log_constant_;  // ln 2 + ln(a / (2 pi)) / 2 - mu(a)
};

// The same for one point (the constant formed per call). 0 for an infinite y.
double chi_scale_log_density(double y, double v);

}  // namespace zemath::numeric
