// Shared plumbing of the distribution exports: the tail-code translation and the one
// way a scalar function reports its value and status.
#pragma once

#include <initializer_list>
#include <utility>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/nag/nag.hpp"
#include "zemath/status.h"

namespace zemath::stats {

using nag::Nag_TailProbability;

// Tail codes of the exports: 1 upper, 2 lower, 3 two-tail significance, 4 two-tail
// confidence; 0 and 5 are refused by the callers (see distributions.h); any other value
// is read as 2.
inline Nag_TailProbability translate_tail(int tail) {
    switch (tail) {
        case 1:
            return Nag_TailProbability::Nag_UpperTail;
        case 3:
            return Nag_TailProbability::Nag_TwoTailSignif;
        case 4:
            return Nag_TailProbability::Nag_TwoTailConfid;
        case 0:
            return Nag_TailProbability::Nag_TwoTail;
        case 5:
            return Nag_TailProbability::Nag_Further;
        default:
            return Nag_TailProbability::Nag_LowerTail;
    }
}

// Missing (NANUM) arguments: every distribution function refuses them with -110.
template <class... T>
inline bool any_missing(T... values) {
    return (is_missing(values) || ...);
}

inline void set_status(int* status, int code) {
    if (status) *status = code;
}

// The routines that return both tails at once offer only upper (1) and lower (2); any
// other tail is refused with 70 through the routine's error record, as the routine's own
// selector check would.
inline bool refuse_two_output_tail(int tail, nag::NagError* fail) {
    if (tail == 1 || tail == 2) return false;
    fail->set(nag::NE_BAD_PARAM);
    return true;
}

// The value of a back-end call: on failure NANUM with the back end's code.
inline double finish(double value, const nag::NagError& fail, int* status) {
    set_status(status, fail.code);
    return fail.failed() ? kNanum : value;
}

// finish as routine_export's default finisher: a type of its own, so that the call is
// inlined (through a function pointer it stayed a call in every export).
struct Finish {
    double operator()(double value, const nag::NagError& fail, int* status) const {
        return finish(value, fail, status);
    }
};

// An in-house parameter error: NANUM and -110.
inline double reject(int* status) {
    set_status(status, ZEMATH_ERR_STATS_INPUT);
    return kNanum;
}

// The frame of every export of the family that calls a numerical routine: the status is
// preset to -19, which stands only if the guard catches an allocation failure (rare: of the
// distribution routines only the studentized range's quadratures keep small buffers, and the
// Boost policy never throws), then the body runs inside the guard.
template <class Body>
double routine_frame(int* status, Body&& body) {
    set_status(status, ZEMATH_ERR_ALLOC);
    return guard_value(std::forward<Body>(body));
}

// The one adapter of those exports: a missing value among `checked` is refused first
// (NANUM, -110); then routine(&fail) computes the value and `finisher` turns value and
// error record into the result and status (by default finish: the value, or NANUM with the
// routine's error number). A routine lambda refuses a selector by setting fail itself.
template <class Routine, class Finisher = Finish>
double routine_export(int* status, std::initializer_list<double> checked, Routine&& routine,
                      Finisher finisher = {}) {
    return routine_frame(status, [&] {
        for (double value : checked)
            if (is_missing(value)) return reject(status);
        nag::NagError fail;
        const double value = routine(&fail);
        return finisher(value, fail, status);
    });
}

}  // namespace zemath::stats
