/* Loops of the benchmark table's special-function rows (bench/table/families/special.py):
 * a scalar function mapped over arrays through a pointer, one indirect call per element.
 * The same loop serves our export and a GSL function of the same prototype, so both sides
 * pay the same call. Not part of the library. */
#include <stddef.h>

#if defined(__GNUC__)
#define BENCH_API __attribute__((visibility("default")))
#else
#define BENCH_API
#endif

typedef double (*fn_x)(double);
typedef double (*fn_xy)(double, double);
typedef double (*fn_xk)(double, int);
typedef double (*fn_kx)(int, double);
typedef double (*fn_xyz)(double, double, double);
typedef double (*fn_xyzr)(double, double, double, double);
typedef double (*fn_kxq)(int, double, double);

BENCH_API void bench_special_x(void* f, const double* x, double* out, long n) {
    for (long i = 0; i < n; ++i) out[i] = ((fn_x)f)(x[i]);
}

BENCH_API void bench_special_xy(void* f, const double* x, const double* y, double* out, long n) {
    for (long i = 0; i < n; ++i) out[i] = ((fn_xy)f)(x[i], y[i]);
}

/* f(x, k) with one integer k for the whole array (orders). */
BENCH_API void bench_special_xk(void* f, const double* x, int k, double* out, long n) {
    for (long i = 0; i < n; ++i) out[i] = ((fn_xk)f)(x[i], k);
}

/* f(k, x): GSL's order-first prototypes (gsl_sf_psi_n). */
BENCH_API void bench_special_kx(void* f, int k, const double* x, double* out, long n) {
    for (long i = 0; i < n; ++i) out[i] = ((fn_kx)f)(k, x[i]);
}

BENCH_API void bench_special_xyz(void* f, const double* x, const double* y, const double* z,
                                 double* out, long n) {
    for (long i = 0; i < n; ++i) out[i] = ((fn_xyz)f)(x[i], y[i], z[i]);
}

BENCH_API void bench_special_xyzr(void* f, const double* x, const double* y, const double* z,
                                  const double* r, double* out, long n) {
    for (long i = 0; i < n; ++i) out[i] = ((fn_xyzr)f)(x[i], y[i], z[i], r[i]);
}

BENCH_API void bench_special_kxq(void* f, int k, const double* x, const double* q, double* out,
                                 long n) {
    for (long i = 0; i < n; ++i) out[i] = ((fn_kxq)f)(k, x[i], q[i]);
}
