/* zeMath: the script function table. A fixed table of 88 scalar functions (the special
 * functions of special.h and the distribution functions of distributions.h) that a host
 * script language looks up by name and calls with an array of doubles, plus a one-row
 * table of functions that need a host context (the definite integral of a script
 * function).
 *
 * Rows, in alphabetical order of name, each with: the name; the signature code (the
 * prototype, see below); the category code (0 special function, 1 cumulative
 * distribution, 2 density, 3 inverse distribution, 5 angle conversion); the script
 * argument names, comma-separated; the argument-count word (the number of values the
 * host passes, the status slot included where the prototype has one); the category
 * label ("Airy", "Bessel", "Error", "Gamma", "Integral", "Kelvin", "Miscellaneous",
 * "Trigonometric"; empty for the distribution rows).
 *
 * Calling a row (mode 2): args[i] is passed as it is for a double parameter; for an
 * integer parameter (orders, tails, counts, branches, flags) it is truncated toward zero,
 * values beyond the int range clamped to it; where the prototype ends in a status pointer
 * the call supplies one and discards what it receives. A NaN or NANUM in an integer
 * position gives the result NANUM without a call. args must hold the row's
 * argument-count word of values (the status slot's value is ignored).
 *
 * Signature codes: 0 f(x), 1 f(x, y), 2 f(x, y, z), 3 f(x*4), 4 f(x*6), 5 f(x, int),
 * 6 f(int, x, y), 7 f(x, st), 9 f(x, int tail, st), 10 f(x, y, st), 11 f(x, y, z, st),
 * 12 f(x, y, int, st), 13 f(x, y, int tail, st), 14 f(x, y, int, st), 16 f(int, x,
 * int tail, st), 17 f(x*4, st), 19 f(x, y, z, int tail, st), 20 f(int, int, x, int tail,
 * st), 23 f(int*4, int tail, st), 24 f(int, x, st), 25 f(x, int, int, st), 26 f(x, y, z,
 * int, st), 27 f(int, int, x, st), 28 f(x*4, int, int), 29 f(x*8, int, int). */
#ifndef ZEMATH_FUNCTION_TABLE_H
#define ZEMATH_FUNCTION_TABLE_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Number of rows of the script function table. */
#define ZEMATH_KS_FUNCTION_COUNT 88

/* Lookup and call.
 * mode 1: find the row whose name equals name exactly; store its row number through
 *         index when index is non-null; return the row's argument-count word, or -1 when
 *         name is NULL or unknown.
 * mode 2: call the function of row *index with args and store its value through result;
 *         return 0. A row with an argument-check hook that rejects args stores the row's
 *         rejection value instead (no row has a hook at present). -1 when index, args or
 *         result is NULL or *index is not a row number; nothing is written then.
 * modes 3 and 4: accepted and harmless: nothing is read or written, the return is 0.
 * any other mode: -1. */
ZEMATH_API int zemath_KS_functions(unsigned mode, char* name, unsigned long* index, double* args,
                                   double* result) ZEMATH_NOEXCEPT;

/* How the host evaluates its script function at one point: function(context, x). */
typedef double (*KSFCallback)(void* context, double x);
typedef struct KSFInfo {
    KSFCallback function;
    void* context;
} KSFInfo;

/* The definite integral of f from x1 to x2. A bound equal to NANUM is infinite (x1:
 * -infinity, x2: +infinity); so are x1 = -inf and x2 = +inf. A finite interval is
 * integrated by adaptive 21-point Gauss-Kronrod quadrature with extrapolation, an
 * infinite one by the same after the map x = bound +- (1 - t)/t (15-point rule) beyond
 * the unit distance next to the bound (integrated unmapped, so that a singularity at a
 * finite bound keeps full resolution); requested accuracy
 * max(1e-300, 1e-10 |integral|), at most 500 subintervals. x1 > x2
 * gives minus the integral from x2 to x1; x1 = x2 gives 0.
 * NANUM when f or its function is NULL, a bound is NaN, x1 = +inf or x2 = -inf, the
 * quadrature cannot reach the accuracy (divergent or too badly behaved integrand: the
 * subinterval limit, round-off, an interval too short to bisect, an extrapolation that
 * stops converging or signals divergence), or the integrand returns a non-finite value. */
ZEMATH_API double integralKS(KSFInfo* f, double x1, double x2) ZEMATH_NOEXCEPT;

/* The table of functions that need the host's context; one row: "integral" (argument
 * names "x1, x2", count word 2, label "Integral"), computed by integralKS with context
 * taken as a KSFInfo*.
 * mode 1: as zemath_KS_functions (store the row number, return the count word; -1 when
 *         unknown). mode 2: -1 when the row's flag word is set, when index, args or
 *         result is NULL or *index is not a row; otherwise result = row(context, args[0],
 *         args[1]) and 0 is returned. Modes 3 and 4: 0, nothing done. Other modes: -1. */
ZEMATH_API int zemath_KS_base_functions(unsigned mode, char* name, unsigned long* index,
                                        void* context, double* args,
                                        double* result) ZEMATH_NOEXCEPT;

/* The string array class of string_array.hpp (opaque to C callers). */
#ifdef __cplusplus
class CStringArray;
#else
typedef struct CStringArray CStringArray;
#endif

/* Empties names and argumentLists, then appends, in table order, the name and the
 * argument-name list of every row whose category code equals category, and (labels
 * non-null) its label to labels (labels is not emptied first). Returns the number of
 * rows appended; -1 when names or argumentLists is NULL (nothing touched) or no row has
 * the category (the two arrays are left empty); -19 when storage runs out. */
ZEMATH_API int zemath_KS_functions_get_list(CStringArray* names, CStringArray* argumentLists,
                                            int category, CStringArray* labels) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_FUNCTION_TABLE_H */
