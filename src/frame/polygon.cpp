// Polygon primitives: the exported members, stamped from the lists of frame/polygon.hpp.
#include "frame/polygon.hpp"

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "zemath/geometry.h"
#include "zemath/status.h"

namespace zemath {
namespace {

template <class T>
int point_in_polygon_export(const T* x, const T* y, int n, T px, T py) {
    if (!x || !y) return ZEMATH_ERR_NULL_POINTER;
    if (n < 3) return ZEMATH_ERR_TOO_FEW_POINTS;
    const auto count = static_cast<std::size_t>(n);
    return static_cast<int>(locate_point(std::span<const T>(x, count), std::span<const T>(y, count),
                                         static_cast<double>(px), static_cast<double>(py)));
}

template <class T>
double polygon_area_export(const T* x, const T* y, int n) {
    if (!x || !y || n < 0) return kNanum;
    const auto count = static_cast<std::size_t>(n);
    return polygon_area(std::span<const T>(x, count), std::span<const T>(y, count));
}

template <class T>
int polygon_reorder_export(T* x, T* y, int n) {
    if (!x || !y) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&] {
        const auto count = static_cast<std::size_t>(n);
        reorder_polygon(std::span<T>(x, count), std::span<T>(y, count));
        return ZEMATH_OK;
    });
}

}  // namespace
}  // namespace zemath

using namespace zemath;

#define ZEMATH_STAMP_POINT_IN_POLYGON(L, T)                                           \
    ZEMATH_API int zemath_##L##_point_in_polygon(const T* x, const T* y, int n, T px, \
                                                 T py) noexcept {                     \
        return point_in_polygon_export(x, y, n, px, py);                              \
    }
#define ZEMATH_STAMP_POLYGON_AREA(L, T)                                                   \
    ZEMATH_API double zemath_##L##_polygon_area(const T* x, const T* y, int n) noexcept { \
        return polygon_area_export(x, y, n);                                              \
    }
#define ZEMATH_STAMP_POLYGON_REORDER(L, T)                                    \
    ZEMATH_API int zemath_##L##_polygon_reorder(T* x, T* y, int n) noexcept { \
        return polygon_reorder_export(x, y, n);                               \
    }

extern "C" {
ZEMATH_POINT_IN_POLYGON_MEMBERS(ZEMATH_STAMP_POINT_IN_POLYGON)
ZEMATH_POLYGON_AREA_MEMBERS(ZEMATH_STAMP_POLYGON_AREA)
ZEMATH_POLYGON_REORDER_MEMBERS(ZEMATH_STAMP_POLYGON_REORDER)
}
