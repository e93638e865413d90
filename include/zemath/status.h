/* zeMath: status codes. 0 is success; a negative code names the check that failed;
 * a positive code is the error number of a numerical back-end routine handed on.
 * Each family documents which of these its functions return. */
#ifndef ZEMATH_STATUS_H
#define ZEMATH_STATUS_H

#include "types.h"

enum zemath_status {
    ZEMATH_OK = 0,
    ZEMATH_ERR_GENERAL = -1,          /* null pointer or zero count in simple primitives; bad container range */
    ZEMATH_ERR_TOO_FEW_CURVES = -2,   /* too few points or curves; target count larger than the data */
    ZEMATH_ERR_NULL_ROWSTAT = -3,     /* required pointer null (row-wise statistics); zero input range in stretch */
    ZEMATH_ERR_FILTER_WINDOW = -4,    /* filter window larger than the image or of zero area */
    ZEMATH_ERR_SIZE_MISMATCH = -5,    /* fewer than 2 points, or two sizes that must agree differ */
    ZEMATH_ERR_EMPTY_RANGE = -6,      /* empty or inverted range or rectangle; image dimensions below 2 */
    ZEMATH_ERR_TOO_FEW_DERIV = -7,    /* too few points for derivative, integration or boundary */
    ZEMATH_ERR_NULL_CURVE = -8,       /* one of several curve pointers is null */
    ZEMATH_ERR_KERNEL = -9,           /* the smoothing kernel reported failure */
    ZEMATH_ERR_BAD_OPTION = -10,      /* unknown method or option selector */
    ZEMATH_ERR_NULL_POINTER = -11,    /* a required pointer argument is null */
    ZEMATH_ERR_TOO_FEW_MATRIX = -12,  /* too few points, or an empty matrix dimension */
    ZEMATH_ERR_TOO_FEW_SAMPLING = -13,/* too few points for sampling resolution, or pointer missing */
    ZEMATH_ERR_NEGATIVE_PARAM = -14,  /* a parameter that must be non-negative is negative */
    ZEMATH_ERR_SIZE_BELOW_ONE = -15,  /* too few points or a size below 1 */
    ZEMATH_ERR_NOT_MONOTONIC = -17,   /* abscissas not strictly monotonic */
    ZEMATH_ERR_TOO_FEW_POINTS = -18,  /* too few points or a count out of range */
    ZEMATH_ERR_ALLOC = -19,           /* memory could not be allocated */
    ZEMATH_ERR_TOO_MANY_REQUESTED = -25, /* more items requested than exist */
    ZEMATH_ERR_NO_STEP = -32,         /* no regular step found in the data */
    ZEMATH_ERR_DUPLICATES = -33,      /* duplicate removal failed */
    ZEMATH_ERR_NEGATIVE_SMOOTHING = -35, /* negative smoothing parameter */
    ZEMATH_ERR_EMPTY_MODEL = -36,     /* evaluation on an empty model */
    ZEMATH_ERR_BAD_INTERVAL = -37,    /* empty or invalid range for integration or quantiles */
    ZEMATH_ERR_ZERO_STEP = -50,       /* the step found is zero */
    ZEMATH_ERR_EMPTY_ELEMENT = -52,   /* structuring element without data */
    ZEMATH_ERR_IMAGE_TOO_SMALL = -54, /* image smaller than the structuring element */
    ZEMATH_ERR_BOUND_NOT_FOUND = -64, /* a bound could not be located */
    ZEMATH_ERR_DOF = -98,             /* too few data for the degrees of freedom asked for */
    ZEMATH_ERR_STATS_INPUT = -110,    /* invalid input to a statistics routine */
    ZEMATH_ERR_TOO_MANY_ITEMS = -112, /* more than 500 items */
    ZEMATH_ERR_AXIS_NOT_MONOTONIC = -113, /* an axis is not monotonic */
    ZEMATH_ERR_NONPOSITIVE_COUNT = -116,  /* a count that must be positive is not */
    ZEMATH_ERR_PARAM_RANGE = -151,    /* parameter outside its allowed range; null or empty generator output */
    ZEMATH_ERR_SIZES_DIFFER = -155,   /* sizes that must agree differ, or a count below 1 */
    ZEMATH_ERR_NULL_STATS = -156,     /* required pointer null (statistics family) */
    ZEMATH_ERR_TWO_SAMPLE = -157,     /* invalid option or non-positive value in a two-sample test */
    ZEMATH_ERR_TOO_FEW_DATA = -165,   /* too few data for the method */
    ZEMATH_ERR_TOO_MANY_DATA = -166,  /* too many data for the method; zero count in summaries */
    ZEMATH_ERR_SIZES_DIFFER_A = -174, /* sizes that must agree differ */
    ZEMATH_ERR_SIZES_DIFFER_B = -175, /* sizes that must agree differ */
    ZEMATH_ERR_RESULT_RANGE = -187,   /* a result exceeds its range */
    ZEMATH_ERR_TOO_MANY_GROUPS = -198,/* more than 20 groups */
    ZEMATH_ERR_MEDIAN = -65,          /* the median cannot be formed */
    ZEMATH_ERR_NEGATIVE_WEIGHT = -108,/* a weight is negative */
    ZEMATH_ERR_NO_USABLE_VALUE = -158,/* no usable (non-missing) value */
    ZEMATH_ERR_CONSTANT_DATA = -185,  /* all values are equal */
    ZEMATH_ERR_CONFIDENCE_LEVEL = -196, /* confidence level not strictly between 0 and 1 */
    ZEMATH_ERR_BAD_ABSCISSA = -220,   /* abscissas not acceptable (not increasing, not finite) */
    ZEMATH_ERR_KRIGING_SOLVE = -38,   /* a kriging system could not be factorised or solved */
    ZEMATH_ERR_COLLINEAR = -130,      /* all nodes of a triangulation are collinear */
    ZEMATH_ERR_TOO_MANY_REGIONS = -56, /* more regions found than the caller's capacity */
    ZEMATH_ERR_PEAK_PREPARE = -57,    /* the derivative for a peak search could not be prepared */
    ZEMATH_ERR_PEAK_SEARCH = -58      /* the peak search on a derivative failed */
};

/* Error numbers handed on from the numerical back end (positive). The distribution
 * functions return these through their status pointer. */
enum zemath_backend_status {
    ZEMATH_NAG_REAL_ARG_LT = 5,       /* a real argument below its lower limit */
    ZEMATH_NAG_REAL_ARG_LE = 6,       /* a real argument at or below its lower limit */
    ZEMATH_NAG_REAL_ARG_GT = 7,       /* a real argument above its upper limit */
    ZEMATH_NAG_REAL_ARG_GE = 8,       /* a real argument at or above its upper limit */
    ZEMATH_NAG_INT_ARG_LT = 11,       /* an integer argument below its lower limit */
    ZEMATH_NAG_INT_ARG_GT = 12,       /* an integer argument above its upper limit */
    ZEMATH_NAG_REAL = 15,             /* a general constraint on real arguments fails */
    ZEMATH_NAG_INT = 16,              /* a general constraint on integer arguments fails */
    ZEMATH_NAG_REAL_ARG_TOO_SMALL = 17, /* argument too close to a limit for a representable result */
    ZEMATH_NAG_BAD_PARAM = 70,        /* an enumerated argument (tail selector, branch) out of range */
    ZEMATH_NAG_ALLOC_FAIL = 73,       /* working storage could not be allocated */
    ZEMATH_NAG_INCOMPAT_PARAM = 88,   /* mutually incompatible arguments */
    ZEMATH_NAG_CONV = 300,            /* an iteration did not converge; approximate result */
    ZEMATH_NAG_PROB_LIMIT = 301,      /* probability too close to 0 or 1 for the result */
    ZEMATH_NAG_NOT_SORTED = 302,      /* data that must be sorted are not */
    ZEMATH_NAG_TOO_MANY_ITER = 357,   /* iteration limit reached */
    ZEMATH_NAG_DEVIATE_FAILED = 422,  /* a deviate could not be computed to accuracy */
    ZEMATH_NAG_ACCURACY_WARNING = 424 /* probability returned, full accuracy may not be reached */
};

ZEMATH_EXTERN_C_BEGIN

/* Name of a status code ("ok", "null pointer", ...); "unknown status" for other values. */
ZEMATH_API const char* zemath_status_string(int status);

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_STATUS_H */
