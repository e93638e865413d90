// The export guard: every exported function runs its body through one of these, so
// that nothing throws across the C boundary. The containers throw the integer 31000 on
// allocation failure; that and std::bad_alloc become the export's failure value.
#pragma once

#include <new>
#include <utility>

#include "zemath/status.h"
#include "zemath/types.h"

namespace zemath {

inline constexpr int kAllocFailure = 31000;  // thrown by NRVec/NRMat when storage fails

template <class R, class Body>
inline R guarded(R failure_value, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (int) {  // 31000 is the only integer the containers throw
        return failure_value;
    } catch (const std::bad_alloc&) {
        return failure_value;
    } catch (...) {  // never expected; still never cross the boundary
        return failure_value;
    }
}

// An int-status export: allocation failure becomes -19.
template <class Body>
inline int guard_status(Body&& body) noexcept {
    return guarded<int>(ZEMATH_ERR_ALLOC, std::forward<Body>(body));
}

// A double-valued export: allocation failure becomes NANUM.
template <class Body>
inline double guard_value(Body&& body) noexcept {
    return guarded<double>(NANUM, std::forward<Body>(body));
}

// A void export: allocation failure is swallowed.
template <class Body>
inline void guard_void(Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
    } catch (...) {
    }
}

}  // namespace zemath
