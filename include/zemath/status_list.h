/* zeMath: the one list of status codes. status.h builds its enums from it, the library
 * builds zemath_status_string from it, and the tests walk it, so the three cannot drift.
 *
 * ZEMATH_STATUS_CODES(X) and ZEMATH_BACKEND_STATUS_CODES(X) call X(name, value, text) for
 * every code: `text` is what zemath_status_string returns. A number that several checks
 * share has one entry here, named by its commonest condition, and an alias in
 * ZEMATH_STATUS_ALIASES(A), A(alias, name), named for the other condition, so that every
 * call site can say what it checks. */
#ifndef ZEMATH_STATUS_LIST_H
#define ZEMATH_STATUS_LIST_H

/* clang-format off */
#define ZEMATH_STATUS_CODES(X) \
    X(ZEMATH_OK, 0, "ok") \
    X(ZEMATH_ERR_GENERAL, -1, "general failure: null pointer, zero count or bad range") \
    X(ZEMATH_ERR_TOO_FEW_CURVES, -2, "too few points or curves") \
    X(ZEMATH_ERR_NULL_ROWSTAT, -3, "required pointer is null, or zero input range") \
    X(ZEMATH_ERR_FILTER_WINDOW, -4, "filter window larger than the image or of zero area") \
    X(ZEMATH_ERR_SIZE_MISMATCH, -5, "too few points, or sizes differ") \
    X(ZEMATH_ERR_EMPTY_RANGE, -6, "empty or inverted range") \
    X(ZEMATH_ERR_TOO_FEW_DERIV, -7, "too few points for derivative or integration") \
    X(ZEMATH_ERR_NULL_CURVE, -8, "a curve pointer is null") \
    X(ZEMATH_ERR_KERNEL, -9, "the smoothing kernel failed") \
    X(ZEMATH_ERR_BAD_OPTION, -10, "unknown method or option") \
    X(ZEMATH_ERR_NULL_POINTER, -11, "null pointer") \
    X(ZEMATH_ERR_TOO_FEW_MATRIX, -12, "too few points or empty matrix dimension") \
    X(ZEMATH_ERR_TOO_FEW_SAMPLING, -13, "too few points for sampling resolution") \
    X(ZEMATH_ERR_NEGATIVE_PARAM, -14, "negative parameter") \
    X(ZEMATH_ERR_SIZE_BELOW_ONE, -15, "too few points or size below 1") \
    X(ZEMATH_ERR_NOT_MONOTONIC, -17, "abscissas not strictly monotonic") \
    X(ZEMATH_ERR_TOO_FEW_POINTS, -18, "too few points or count out of range") \
    X(ZEMATH_ERR_ALLOC, -19, "memory could not be allocated") \
    X(ZEMATH_ERR_TOO_MANY_REQUESTED, -25, "more items requested than exist") \
    X(ZEMATH_ERR_NO_STEP, -32, "no regular step found") \
    X(ZEMATH_ERR_DUPLICATES, -33, "duplicate removal failed") \
    X(ZEMATH_ERR_NEGATIVE_SMOOTHING, -35, "negative smoothing parameter") \
    X(ZEMATH_ERR_EMPTY_MODEL, -36, "evaluation on an empty model") \
    X(ZEMATH_ERR_BAD_INTERVAL, -37, "empty or invalid interval") \
    X(ZEMATH_ERR_ZERO_STEP, -50, "step is zero") \
    X(ZEMATH_ERR_EMPTY_ELEMENT, -52, "structuring element without data") \
    X(ZEMATH_ERR_IMAGE_TOO_SMALL, -54, "image smaller than the structuring element") \
    X(ZEMATH_ERR_BOUND_NOT_FOUND, -64, "bound could not be located") \
    X(ZEMATH_ERR_DOF, -98, "too few data for the degrees of freedom") \
    X(ZEMATH_ERR_STATS_INPUT, -110, "invalid input to a statistics routine") \
    X(ZEMATH_ERR_TOO_MANY_ITEMS, -112, "too many items") \
    X(ZEMATH_ERR_AXIS_NOT_MONOTONIC, -113, "axis not monotonic") \
    X(ZEMATH_ERR_NONPOSITIVE_COUNT, -116, "count must be positive") \
    X(ZEMATH_ERR_PARAM_RANGE, -151, "parameter out of range") \
    X(ZEMATH_ERR_SIZES_DIFFER, -155, "sizes differ or count below 1") \
    X(ZEMATH_ERR_NULL_STATS, -156, "required pointer is null (statistics)") \
    X(ZEMATH_ERR_TWO_SAMPLE, -157, "invalid option or non-positive value in two-sample test") \
    X(ZEMATH_ERR_TOO_FEW_DATA, -165, "too few data") \
    X(ZEMATH_ERR_TOO_MANY_DATA, -166, "too many data, or zero count") \
    X(ZEMATH_ERR_WEIGHTS_LENGTH, -174, "weight array length differs from the data's") \
    X(ZEMATH_ERR_LENGTHS_DIFFER, -175, "lengths of paired arrays differ") \
    X(ZEMATH_ERR_RESULT_RANGE, -187, "result exceeds its range") \
    X(ZEMATH_ERR_TOO_MANY_GROUPS, -198, "too many groups") \
    X(ZEMATH_ERR_KRIGING_SOLVE, -38, "kriging system could not be solved") \
    X(ZEMATH_ERR_MEDIAN, -65, "the median cannot be formed") \
    X(ZEMATH_ERR_NEGATIVE_WEIGHT, -108, "negative weight") \
    X(ZEMATH_ERR_COLLINEAR, -130, "all nodes are collinear") \
    X(ZEMATH_ERR_NO_USABLE_VALUE, -158, "no usable value") \
    X(ZEMATH_ERR_CONSTANT_DATA, -185, "all values are equal") \
    X(ZEMATH_ERR_CONFIDENCE_LEVEL, -196, "confidence level not strictly between 0 and 1") \
    X(ZEMATH_ERR_BAD_ABSCISSA, -220, "abscissas not acceptable") \
    X(ZEMATH_ERR_TOO_MANY_REGIONS, -56, "more regions found than the output can hold") \
    X(ZEMATH_ERR_PEAK_PREPARE, -57, "the derivative for a peak search could not be prepared") \
    X(ZEMATH_ERR_PEAK_SEARCH, -58, "the peak search on a derivative failed") \
    X(ZEMATH_ERR_TOO_FEW_EXTREMES, -105, "too few extremes to build envelopes") \
    X(ZEMATH_ERR_REMAINDER_VANISHED, -106, "the remainder vanished") \
    X(ZEMATH_ERR_SIFTING_LIMIT, -107, "sifting limit exceeded") \
    X(ZEMATH_ERR_SIFT_ENVELOPE, -109, "envelopes could not be built while sifting")

/* Error numbers handed on from the numerical routines (positive); the distribution
 * functions return these through their status pointer. */
#define ZEMATH_BACKEND_STATUS_CODES(X) \
    X(ZEMATH_NAG_REAL_ARG_LT, 5, "real argument below its limit") \
    X(ZEMATH_NAG_REAL_ARG_LE, 6, "real argument at or below its limit") \
    X(ZEMATH_NAG_REAL_ARG_GT, 7, "real argument above its limit") \
    X(ZEMATH_NAG_REAL_ARG_GE, 8, "real argument at or above its limit") \
    X(ZEMATH_NAG_INT_ARG_LT, 11, "integer argument below its limit") \
    X(ZEMATH_NAG_INT_ARG_GT, 12, "integer argument above its limit") \
    X(ZEMATH_NAG_REAL, 15, "constraint on real arguments fails") \
    X(ZEMATH_NAG_INT, 16, "constraint on integer arguments fails") \
    X(ZEMATH_NAG_REAL_ARG_TOO_SMALL, 17, "argument too close to its limit for a representable result") \
    X(ZEMATH_NAG_BAD_PARAM, 70, "argument selector out of range") \
    X(ZEMATH_NAG_ALLOC_FAIL, 73, "working storage could not be allocated") \
    X(ZEMATH_NAG_INCOMPAT_PARAM, 88, "incompatible arguments") \
    X(ZEMATH_NAG_CONV, 300, "iteration did not converge; approximate result") \
    X(ZEMATH_NAG_PROB_LIMIT, 301, "probability too close to 0 or 1") \
    X(ZEMATH_NAG_NOT_SORTED, 302, "data not sorted") \
    X(ZEMATH_NAG_QUAD_MAX_SUBDIV, 303, "subinterval limit reached before the requested accuracy") \
    X(ZEMATH_NAG_QUAD_ROUNDOFF_TOL, 304, "round-off prevents the requested accuracy") \
    X(ZEMATH_NAG_QUAD_BAD_SUBDIV, 305, "integrand too badly behaved: an interval too short to bisect") \
    X(ZEMATH_NAG_QUAD_NO_CONV, 306, "extrapolation does not converge: round-off in its table") \
    X(ZEMATH_NAG_QUAD_DIVERGENT, 307, "integral probably divergent or too slowly convergent") \
    X(ZEMATH_NAG_TOO_MANY_ITER, 357, "iteration limit reached") \
    X(ZEMATH_NAG_DEVIATE_FAILED, 422, "deviate could not be computed to accuracy") \
    X(ZEMATH_NAG_ACCURACY_WARNING, 424, "full accuracy may not have been reached")

/* Condition names for shared numbers: A(alias, code it equals). */
#define ZEMATH_STATUS_ALIASES(A) \
    A(ZEMATH_ERR_ZERO_INPUT_RANGE, ZEMATH_ERR_NULL_ROWSTAT)      /* stretch: high == low */ \
    A(ZEMATH_ERR_NO_POINTS, ZEMATH_ERR_SIZE_MISMATCH)            /* monotonicity of an empty array */ \
    A(ZEMATH_ERR_BAD_FRACTION, ZEMATH_ERR_SIZE_BELOW_ONE)        /* order check: fraction outside [0, 1] */ \
    A(ZEMATH_ERR_SIZES_DIFFER_A, ZEMATH_ERR_WEIGHTS_LENGTH)      /* earlier name of -174 */ \
    A(ZEMATH_ERR_SIZES_DIFFER_B, ZEMATH_ERR_LENGTHS_DIFFER)      /* earlier name of -175 */ \
    A(ZEMATH_ERR_ENVELOPE, ZEMATH_ERR_STATS_INPUT)               /* envelope mean: envelopes failed */
/* clang-format on */

#endif /* ZEMATH_STATUS_LIST_H */
