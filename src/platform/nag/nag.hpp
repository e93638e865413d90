// The numerical back end's common ground: the error record every substitute routine
// fills, its error numbers, the allocator through which substitutes hand arrays to
// callers and its release routine x04bdc, and the back end's own bridge records.
//
// Each substitute routine is exposed under its routine code (g01eac, c05bac, ...) with a
// NagError* last argument: code 0 on success, a positive error number on failure, so
// that the library's wrappers read exactly like the calls they replace.
//
// Allocation failure has one rule: a substitute never catches it. std::bad_alloc leaves
// the routine (whose working storage lives in containers, so nothing leaks) and the
// export's guard (core/guard.hpp) turns it into -19 or NANUM; no routine reports
// NE_ALLOC_FAIL.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zemath/status.h"
#include "zemath/types.h"

// The back end's records, mirrored by zemath_Spline / zemath_Comm (public types.h
// declares them incomplete).
struct Nag_Spline {
    intptr_t n;
    double* lamda;
    double* c;
    intptr_t init1;
    intptr_t init2;
};

struct comm_struct {
    zemath_word word[ZEMATH_COMM_WORDS];
};

namespace zemath::nag {

// Error numbers. 70 and the numbers callers see through the distribution functions are
// listed in the public status header; the rest are this back end's own, documented there.
enum ErrorCode : int {
    NE_NOERROR = 0,
    NE_REAL_ARG_LT = ZEMATH_NAG_REAL_ARG_LT,
    NE_REAL_ARG_LE = ZEMATH_NAG_REAL_ARG_LE,
    NE_REAL_ARG_GT = ZEMATH_NAG_REAL_ARG_GT,
    NE_REAL_ARG_GE = ZEMATH_NAG_REAL_ARG_GE,
    NE_INT_ARG_LT = ZEMATH_NAG_INT_ARG_LT,
    NE_INT_ARG_GT = ZEMATH_NAG_INT_ARG_GT,
    NE_REAL = ZEMATH_NAG_REAL,
    NE_INT = ZEMATH_NAG_INT,
    NE_REAL_ARG_TOO_SMALL = ZEMATH_NAG_REAL_ARG_TOO_SMALL,
    NE_ALLOC_FAIL = ZEMATH_NAG_ALLOC_FAIL,
    NE_CONV = ZEMATH_NAG_CONV,
    NE_PROB_LIMIT = ZEMATH_NAG_PROB_LIMIT,
    NE_NOT_SORTED = ZEMATH_NAG_NOT_SORTED,
    NE_QUAD_MAX_SUBDIV = ZEMATH_NAG_QUAD_MAX_SUBDIV,
    NE_QUAD_ROUNDOFF_TOL = ZEMATH_NAG_QUAD_ROUNDOFF_TOL,
    NE_QUAD_BAD_SUBDIV = ZEMATH_NAG_QUAD_BAD_SUBDIV,
    NE_QUAD_NO_CONV = ZEMATH_NAG_QUAD_NO_CONV,
    NE_QUAD_DIVERGENT = ZEMATH_NAG_QUAD_DIVERGENT,
    NE_BAD_PARAM = ZEMATH_NAG_BAD_PARAM,                // 70
    NE_INCOMPAT_PARAM = ZEMATH_NAG_INCOMPAT_PARAM,      // 88
    NE_TOO_MANY_ITER = ZEMATH_NAG_TOO_MANY_ITER,        // 357
    NE_DEVIATE_FAILED = ZEMATH_NAG_DEVIATE_FAILED,      // 422
    NE_ACCURACY_WARNING = ZEMATH_NAG_ACCURACY_WARNING,  // 424
};

// Tail selector of the probability and deviate routines. TwoTail is the two-sample
// test's two-sided choice and Further one more selector code; the g01 routines accept
// neither and fail with NE_BAD_PARAM.
enum class Nag_TailProbability {
    Nag_LowerTail,
    Nag_UpperTail,
    Nag_TwoTailSignif,
    Nag_TwoTailConfid,
    Nag_TwoTail,
    Nag_Further
};

struct NagError {
    int code = NE_NOERROR;
    void set(int c) { code = c; }
    bool failed() const { return code != NE_NOERROR; }
};

// Allocates n bytes for an array handed to a caller; null on failure. Released only
// by x04bdc (zemath_free and the zemath_free_*_struct functions).
void* x04bbc(std::size_t bytes) noexcept;

// Releases a block from x04bbc and nulls the caller's pointer; null is ignored.
void x04bdc(void** block) noexcept;

template <class T>
inline void nag_free(T*& block) noexcept {
    void* p = block;
    x04bdc(&p);
    block = static_cast<T*>(p);
}

}  // namespace zemath::nag
