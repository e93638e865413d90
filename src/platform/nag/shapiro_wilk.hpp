// Shapiro-Wilk W test kernels shared by the statistics family and the back end's g01ddc.
//
// as_r94: Royston's algorithm AS R94 (1995) in double precision, complete samples.
//   Coefficients: m_i = Phi^-1((i - 3/8) / (n + 1/4)), the two extreme coefficients from
//   Royston's polynomials in 1/sqrt(n), the others m_i normalised; n = 3 uses sqrt(1/2).
//   W is computed as 1 - W1 from centred sums (accurate for W near 1). p-value: n = 3
//   exact, (6/pi)(asin(sqrt W) - pi/3); 4 <= n <= 11 the normal approximation of
//   -ln(gamma - ln(1 - W)), gamma = -2.273 + 0.459 n; n >= 12 of ln(1 - W) with mean and
//   log-sd polynomials in ln n. Upper tail computed directly.
//   Accuracy: the algorithm's own (W to rounding; p-value approximation about 1e-3
//   relative against exact null quantiles, by design).
//   Indicators: 1 n < 3, 2 n > 5000 (W and p still returned), 3 coefficient array
//   shorter than n/2, 6 range below 1e-19, 7 data not ascending.
//
// as181: Royston's algorithm AS 181 (1982) in single precision as published, with the
//   approximate normal scores of AS 177.3 and the normal deviate of AS 111 and
//   probability of AS 66. Indicators: 1 n <= 2, 2 n > 2000, 3 n2 != n / 2 (W = p = 1).
//   Accuracy: W agrees with a double-precision evaluation of the published formulas
//   (tests/reference/gen_as181.py) to single precision, p to 2e-3. The published
//   extreme coefficient (Shapiro and Wilk's a_1^2 = Gamma((n+1)/2) / (sqrt(2)
//   Gamma(n/2+1))) exceeds AS R94's for large n, so W is 0.01 to 0.03 below AS R94's at
//   n >= 250; the p-value is calibrated for this W (checked by simulation).
//
// References: Royston, P. (1995) Remark AS R94, Applied Statistics 44(4), 547-551;
// Royston, J.P. (1982) Algorithm AS 181, Applied Statistics 31(2), 176-180; Royston (1982)
// AS 177, 31, 161-165; Beasley and Springer (1977) AS 111; Hill (1973) AS 66.
#pragma once

#include <cstddef>

namespace zemath::numeric {

// x[0..n-1] ascending; a holds na >= n/2 slots and receives a[0..n/2-1], the
// coefficients of the pairs (x[n-1-i] - x[i]). Returns the indicator; w and pw are set
// whenever it is 0 or 2 (pw = 1 on entry).
int as_r94(const double* x, std::size_t n, double* a, std::size_t na, double* w, double* pw);

// AS 181 coefficients (WCOEF): a[0..n2-1] and eps, the smallest possible W.
int as181_coefficients(float* a, int n, int n2, float* eps);
// AS 181 W and p-value (WEXT) for x ascending with ssq = sum (x - mean)^2.
int as181_w(const float* x, int n, float ssq, const float* a, int n2, float eps, float* w,
            float* pw);

}  // namespace zemath::numeric
