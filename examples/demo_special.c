/* zeMath demo, special functions: a few rows of the script function table called by
 * name, the categories of the table, and the integral of a host-side function over a
 * finite and an infinite interval. */
#include <math.h>
#include <stdio.h>

#include "zemath.h"

void demo_special(void);
void demo_special_categories(void); /* demo_special_list.cpp: the C++ string arrays */

static double call_row(const char* name, double a0, double a1, double a2) {
    char buffer[64];
    unsigned long row = 0;
    double args[10] = {0};
    double result = NANUM;
    snprintf(buffer, sizeof buffer, "%s", name);
    if (zemath_KS_functions(1, buffer, &row, NULL, NULL) < 0) return NANUM;
    args[0] = a0;
    args[1] = a1;
    args[2] = a2;
    zemath_KS_functions(2, NULL, &row, args, &result);
    return result;
}

/* The table functions beside the library's own algorithms (the zemath_ family): the
 * two are computed independently, so their agreement is a check on both. */
static void side_by_side(void) {
    printf("table vs own: erf(0.5)        %.17g  %.17g\n", erfz(0.5), zemath_erf(0.5));
    printf("              gamma(-2.5)     %.17g  %.17g\n", gammaz(-2.5), zemath_gamma(-2.5));
    printf("              P(5, 4)         %.17g  %.17g\n", incomplete_gamma(5.0, 4.0),
           zemath_incomplete_gamma(5.0, 4.0));
    printf("              RJ(.5,1,1.5,2)  %.17g  %.17g\n", elliptic_integral_rj(0.5, 1.0, 1.5, 2.0),
           zemath_elliptic_integral_rj(0.5, 1.0, 1.5, 2.0));
    printf("              K_{1/4}(2)      %.17g  %.17g\n", bessel_k_nu(2.0, 1),
           zemath_bessel_k_nu(2.0, 1));
}

/* The host's script function, evaluated through the callback record. */
static double gaussian(void* context, double x) {
    const double width = *(const double*)context;
    return exp(-x * x / (width * width));
}

void demo_special(void) {
    double width = 1.0;
    KSFInfo info;
    unsigned long row = 0;
    double bounds[2] = {NANUM, NANUM};
    double whole = 0.0;
    char integral[] = "integral";
    info.function = gaussian;
    info.context = &width;

    printf("table rows by name: bessel_j0(2.5) = %.15g, gamma(0.5) = %.15g\n",
           call_row("bessel_j0", 2.5, 0, 0), call_row("gamma", 0.5, 0, 0));
    printf("  jacobian_theta(3, 0.7, 0.4) = %.15g, fresnel_s(1) = %.15g\n",
           call_row("jacobian_theta", 3, 0.7, 0.4), call_row("fresnel_s", 1.0, 0, 0));
    printf("  lambertW(0.12887284, -1, 1) = %.15g, bessel_i_nu(3.9, -3) = %.15g\n",
           call_row("lambertW", 0.12887284, -1, 1), call_row("bessel_i_nu", 3.9, -3, 0));
    side_by_side();
    demo_special_categories();
    printf("integral of exp(-x^2) over [0, 1]     : %.15g\n", integralKS(&info, 0.0, 1.0));
    if (zemath_KS_base_functions(1, integral, &row, NULL, NULL, NULL) == 2 &&
        zemath_KS_base_functions(2, NULL, &row, &info, bounds, &whole) == 0)
        printf("integral over (-inf, inf) (sqrt(pi)) : %.15g\n", whole);
}
