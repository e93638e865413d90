/* Loops for the benchmark table (bench/table/): the Python driver times whole-array work
 * on both sides, so a scalar export is called here over arrays, through the pointer the
 * driver takes from the library itself (one indirect call per element: a nanosecond or
 * two, against tens of nanoseconds and more for each distribution value). Also the plain
 * streaming read that the streaming primitives are set against. Not part of the library. */
#include <math.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#if defined(__GNUC__)
#define BENCH_API __attribute__((visibility("default")))
#else
#define BENCH_API
#endif

typedef double (*fn_p)(double, int*);
typedef double (*fn_x_tail)(double, int, int*);
typedef double (*fn_xa_tail)(double, double, int, int*);
typedef double (*fn_xab_tail)(double, double, double, int, int*);

/* Each returns the number of elements whose status was not 0. */
BENCH_API long bench_map_p(void* f, const double* p, double* out, long n) {
    long failed = 0;
    for (long i = 0; i < n; ++i) {
        int status = 0;
        out[i] = ((fn_p)f)(p[i], &status);
        failed += status != 0;
    }
    return failed;
}

BENCH_API long bench_map_x_tail(void* f, const double* x, int tail, double* out, long n) {
    long failed = 0;
    for (long i = 0; i < n; ++i) {
        int status = 0;
        out[i] = ((fn_x_tail)f)(x[i], tail, &status);
        failed += status != 0;
    }
    return failed;
}

BENCH_API long bench_map_xa_tail(void* f, const double* x, const double* a, int tail, double* out,
                                 long n) {
    long failed = 0;
    for (long i = 0; i < n; ++i) {
        int status = 0;
        out[i] = ((fn_xa_tail)f)(x[i], a[i], tail, &status);
        failed += status != 0;
    }
    return failed;
}

/* Also for nctcdf(t, df, delta, maxiter, status): the int is then maxiter. */
BENCH_API long bench_map_xab_tail(void* f, const double* x, const double* a, const double* b,
                                  int tail, double* out, long n) {
    long failed = 0;
    for (long i = 0; i < n; ++i) {
        int status = 0;
        out[i] = ((fn_xab_tail)f)(x[i], a[i], b[i], tail, &status);
        failed += status != 0;
    }
    return failed;
}

/* The deviates and the non-central laws: two, three or four doubles and the status. */
typedef double (*fn_pa)(double, double, int*);
typedef double (*fn_pab)(double, double, double, int*);
typedef double (*fn_pabc)(double, double, double, double, int*);

BENCH_API long bench_map_pa(void* f, const double* p, const double* a, double* out, long n) {
    long failed = 0;
    for (long i = 0; i < n; ++i) {
        int status = 0;
        out[i] = ((fn_pa)f)(p[i], a[i], &status);
        failed += status != 0;
    }
    return failed;
}

BENCH_API long bench_map_pab(void* f, const double* p, const double* a, const double* b,
                             double* out, long n) {
    long failed = 0;
    for (long i = 0; i < n; ++i) {
        int status = 0;
        out[i] = ((fn_pab)f)(p[i], a[i], b[i], &status);
        failed += status != 0;
    }
    return failed;
}

BENCH_API long bench_map_pabc(void* f, const double* p, const double* a, const double* b,
                              const double* c, double* out, long n) {
    long failed = 0;
    for (long i = 0; i < n; ++i) {
        int status = 0;
        out[i] = ((fn_pabc)f)(p[i], a[i], b[i], c[i], &status);
        failed += status != 0;
    }
    return failed;
}

/* Plain streaming read: every 64-bit word of x once, combined by xor (integer work the
 * compiler vectorises, so the loop runs at the memory's pace, not the adder's). */
BENCH_API uint64_t bench_read(const double* x, long n) {
    uint64_t acc0 = 0, acc1 = 0, acc2 = 0, acc3 = 0;
    long i = 0;
    for (; i + 4 <= n; i += 4) {
        uint64_t w[4];
        memcpy(w, x + i, sizeof w);
        acc0 ^= w[0];
        acc1 ^= w[1];
        acc2 ^= w[2];
        acc3 ^= w[3];
    }
    for (; i < n; ++i) {
        uint64_t w;
        memcpy(&w, x + i, sizeof w);
        acc0 ^= w;
    }
    return acc0 ^ acc1 ^ acc2 ^ acc3;
}

/* Plain streaming copy (read once, write once), for the cumulative sum. */
BENCH_API void bench_copy(const double* x, double* out, long n) {
    memcpy(out, x, (size_t)n * sizeof *x);
}

/* Integrands of the quadrature rows, each in two calling forms with the same arithmetic:
 * the host callback integralKS evaluates (context, x), and the plain double(double) that
 * scipy.integrate.quad takes as a low-level callable. */
#define BENCH_INTEGRAND(name, expr)                                    \
    BENCH_API double bench_quad_##name(double x) {                     \
        return (expr);                                                 \
    }                                                                  \
    BENCH_API double bench_quad_host_##name(void* context, double x) { \
        (void)context;                                                 \
        return (expr);                                                 \
    }
BENCH_INTEGRAND(smooth, exp(-x) * (x * x))
BENCH_INTEGRAND(power, pow(x, -0.9))
BENCH_INTEGRAND(log_sqrt, log(x) / sqrt(x))
BENCH_INTEGRAND(oscillating, cos(100.0 * sin(x)))
BENCH_INTEGRAND(slow_tail, 1.0 / ((1.0 + x) * sqrt(x)))
BENCH_INTEGRAND(gauss, exp(-pow(x, 2.0)))

/* Counts the evaluations of an integrand for the quadrature rows' notes: context points
 * at a BenchCounted. */
typedef struct {
    double (*f)(double);
    long count;
} BenchCounted;
BENCH_API double bench_quad_host_counted(void* context, double x) {
    BenchCounted* c = (BenchCounted*)context;
    ++c->count;
    return c->f(x);
}
