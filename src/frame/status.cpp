// Names of the status codes.
#include "zemath/status.h"

extern "C" ZEMATH_API const char* zemath_status_string(int status) noexcept {
    switch (status) {
        case ZEMATH_OK: return "ok";
        case ZEMATH_ERR_GENERAL: return "general failure: null pointer, zero count or bad range";
        case ZEMATH_ERR_TOO_FEW_CURVES: return "too few points or curves";
        case ZEMATH_ERR_NULL_ROWSTAT: return "required pointer is null, or zero input range";
        case ZEMATH_ERR_FILTER_WINDOW: return "filter window larger than the image or of zero area";
        case ZEMATH_ERR_SIZE_MISMATCH: return "too few points, or sizes differ";
        case ZEMATH_ERR_EMPTY_RANGE: return "empty or inverted range";
        case ZEMATH_ERR_TOO_FEW_DERIV: return "too few points for derivative or integration";
        case ZEMATH_ERR_NULL_CURVE: return "a curve pointer is null";
        case ZEMATH_ERR_KERNEL: return "the smoothing kernel failed";
        case ZEMATH_ERR_BAD_OPTION: return "unknown method or option";
        case ZEMATH_ERR_NULL_POINTER: return "null pointer";
        case ZEMATH_ERR_TOO_FEW_MATRIX: return "too few points or empty matrix dimension";
        case ZEMATH_ERR_TOO_FEW_SAMPLING: return "too few points for sampling resolution";
        case ZEMATH_ERR_NEGATIVE_PARAM: return "negative parameter";
        case ZEMATH_ERR_SIZE_BELOW_ONE: return "too few points or size below 1";
        case ZEMATH_ERR_NOT_MONOTONIC: return "abscissas not strictly monotonic";
        case ZEMATH_ERR_TOO_FEW_POINTS: return "too few points or count out of range";
        case ZEMATH_ERR_ALLOC: return "memory could not be allocated";
        case ZEMATH_ERR_TOO_MANY_REQUESTED: return "more items requested than exist";
        case ZEMATH_ERR_NO_STEP: return "no regular step found";
        case ZEMATH_ERR_DUPLICATES: return "duplicate removal failed";
        case ZEMATH_ERR_NEGATIVE_SMOOTHING: return "negative smoothing parameter";
        case ZEMATH_ERR_EMPTY_MODEL: return "evaluation on an empty model";
        case ZEMATH_ERR_BAD_INTERVAL: return "empty or invalid interval";
        case ZEMATH_ERR_ZERO_STEP: return "step is zero";
        case ZEMATH_ERR_EMPTY_ELEMENT: return "structuring element without data";
        case ZEMATH_ERR_IMAGE_TOO_SMALL: return "image smaller than the structuring element";
        case ZEMATH_ERR_BOUND_NOT_FOUND: return "bound could not be located";
        case ZEMATH_ERR_DOF: return "too few data for the degrees of freedom";
        case ZEMATH_ERR_STATS_INPUT: return "invalid input to a statistics routine";
        case ZEMATH_ERR_TOO_MANY_ITEMS: return "too many items";
        case ZEMATH_ERR_AXIS_NOT_MONOTONIC: return "axis not monotonic";
        case ZEMATH_ERR_NONPOSITIVE_COUNT: return "count must be positive";
        case ZEMATH_ERR_PARAM_RANGE: return "parameter out of range";
        case ZEMATH_ERR_SIZES_DIFFER: return "sizes differ or count below 1";
        case ZEMATH_ERR_NULL_STATS: return "null pointer";
        case ZEMATH_ERR_TWO_SAMPLE: return "invalid option or non-positive value in two-sample test";
        case ZEMATH_ERR_TOO_FEW_DATA: return "too few data";
        case ZEMATH_ERR_TOO_MANY_DATA: return "too many data, or zero count";
        case ZEMATH_ERR_SIZES_DIFFER_A: return "sizes differ";
        case ZEMATH_ERR_SIZES_DIFFER_B: return "sizes differ";
        case ZEMATH_ERR_RESULT_RANGE: return "result exceeds its range";
        case ZEMATH_ERR_TOO_MANY_GROUPS: return "too many groups";
        case ZEMATH_NAG_REAL_ARG_LT: return "back end: real argument below its limit";
        case ZEMATH_NAG_REAL_ARG_LE: return "back end: real argument at or below its limit";
        case ZEMATH_NAG_REAL_ARG_GT: return "back end: real argument above its limit";
        case ZEMATH_NAG_REAL_ARG_GE: return "back end: real argument at or above its limit";
        case ZEMATH_NAG_INT_ARG_LT: return "back end: integer argument below its limit";
        case ZEMATH_NAG_INT_ARG_GT: return "back end: integer argument above its limit";
        case ZEMATH_NAG_REAL: return "back end: constraint on real arguments fails";
        case ZEMATH_NAG_INT: return "back end: constraint on integer arguments fails";
        case ZEMATH_NAG_REAL_ARG_TOO_SMALL: return "back end: argument too close to its limit";
        case ZEMATH_NAG_ALLOC_FAIL: return "back end: allocation failed";
        case ZEMATH_NAG_CONV: return "back end: iteration did not converge";
        case ZEMATH_NAG_PROB_LIMIT: return "back end: probability too close to 0 or 1";
        case ZEMATH_NAG_BAD_PARAM: return "back end: argument selector out of range";
        case ZEMATH_NAG_INCOMPAT_PARAM: return "back end: incompatible arguments";
        case ZEMATH_NAG_TOO_MANY_ITER: return "back end: iteration limit reached";
        case ZEMATH_NAG_DEVIATE_FAILED: return "back end: deviate could not be computed to accuracy";
        case ZEMATH_NAG_ACCURACY_WARNING: return "back end: full accuracy may not have been reached";
        default: return "unknown status";
    }
}
