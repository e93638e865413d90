// s: special functions, one substitute per routine code. Each returns the function
// value and sets fail->code: 0 on success, a positive number when the argument lies
// outside the routine's domain or the result would overflow (the value returned then
// is 0 or the limiting value; callers that map failures to NANUM need not look at it).
// Every routine accepts any double, NaN and infinities included, without looping.
//
// Families and their files: s_airy.cpp, s_bessel.cpp (orders 0 and 1 and their scaled
// forms), s_bessel_frac.cpp (orders nu/4), s_kelvin.cpp, s_fresnel.cpp, s_integrals.cpp
// (E1, Ci, Si), s_gamma.cpp (gamma, log-gamma, polygamma, incomplete gamma),
// s_carlson.cpp, s_theta.cpp, s_normal.cpp (Phi, erf, erfc, erfcx).
#pragma once

#include "platform/nag/nag.hpp"

namespace zemath::nag {

// Exponential, cosine and sine integrals.
double s13aac(double x, NagError* fail);  // E1(x); x < 0: -Ei(-x); x = 0 fails
double s13acc(double x, NagError* fail);  // Ci(x), x > 0
double s13adc(double x, NagError* fail);  // Si(x), all x, no failures

// Gamma family.
double s14aac(double x, NagError* fail);         // Gamma(x); poles and overflow fail
double s14abc(double x, NagError* fail);         // ln Gamma(x), x > 0
double s14aec(double x, int k, NagError* fail);  // psi^(k)(x), k = 0..6
// Regularised incomplete gamma: p = P(a, x), q = Q(a, x); a > 0, x >= 0. tol is
// accepted for the routine's shape; the result is always at full precision.
void s14bac(double a, double x, double tol, double* p, double* q, NagError* fail);

// Normal and error functions (no failures).
double s15abc(double x, NagError* fail);  // Phi(x)
double s15acc(double x, NagError* fail);  // 1 - Phi(x)
double s15adc(double x, NagError* fail);  // erfc(x)
double s15aec(double x, NagError* fail);  // erf(x)
// Cody's rational approximations: mode 0 erf, 1 erfc, 2 e^(x^2) erfc(x).
double cody_erf(double x, int mode);

// Bessel functions of orders 0 and 1.
double s17acc(double x, NagError* fail);  // Y0, x > 0
double s17adc(double x, NagError* fail);  // Y1, x > 0
double s17aec(double x, NagError* fail);  // J0
double s17afc(double x, NagError* fail);  // J1
double s18acc(double x, NagError* fail);  // K0, x > 0
double s18adc(double x, NagError* fail);  // K1, x > 0
double s18aec(double x, NagError* fail);  // I0
double s18afc(double x, NagError* fail);  // I1
double s18ccc(double x, NagError* fail);  // e^x K0(x)
double s18cdc(double x, NagError* fail);  // e^x K1(x)
double s18cec(double x, NagError* fail);  // e^-|x| I0(x), no failures
double s18cfc(double x, NagError* fail);  // e^-|x| I1(x), no failures

// Modified Bessel functions of order nu/4, nu in -3..-1, 1..3.
double s18eec(double x, int nu, NagError* fail);  // I_{nu/4}(x)
double s18ecc(double x, int nu, NagError* fail);  // e^-x I_{nu/4}(x)
double s18efc(double x, int nu, NagError* fail);  // K_{nu/4}(x)
double s18edc(double x, int nu, NagError* fail);  // e^x K_{nu/4}(x)

// Airy functions.
double s17agc(double x, NagError* fail);  // Ai
double s17ahc(double x, NagError* fail);  // Bi
double s17ajc(double x, NagError* fail);  // Ai'
double s17akc(double x, NagError* fail);  // Bi'

// Kelvin functions.
double s19aac(double x, NagError* fail);  // ber
double s19abc(double x, NagError* fail);  // bei
double s19acc(double x, NagError* fail);  // ker, x > 0
double s19adc(double x, NagError* fail);  // kei, x >= 0

// Fresnel integrals with the pi/2 convention (no failures).
double s20acc(double x, NagError* fail);  // S(x)
double s20adc(double x, NagError* fail);  // C(x)

// Carlson's symmetric elliptic integrals and the Jacobian theta functions.
double s21bac(double x, double y, NagError* fail);                      // RC
double s21bbc(double x, double y, double z, NagError* fail);            // RF
double s21bcc(double x, double y, double z, NagError* fail);            // RD
double s21bdc(double x, double y, double z, double r, NagError* fail);  // RJ
double s21ccc(int k, double x, double q, NagError* fail);               // theta_k(x, q)

}  // namespace zemath::nag
