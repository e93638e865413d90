// Search family: order tests, searches in ascending arrays, nearest points, level
// crossings, bound indices and range rounding.
//
// Method: bisection for the searches in ascending data (batched and branch-free for
// many targets, each search making exactly the documented comparisons; for a thousand
// targets or more into an array verified sorted, a radix sort of the targets and one
// galloping sweep, which gives the same answers there), one linear pass
// for the order tests and the nearest point of unordered data. Decimal steps and
// increments are recognised (step * 10^p an integer for some p <= 15) so that rounded
// values are the doubles nearest the decimal multiples rather than products carrying
// the step's representation error.
//
// Failure codes: -5, -6, -11, -14, -15, -18, -64 as documented in zemath/search.h. The
// sweep's storage is taken without throwing and its absence only selects the bisection,
// so no export needs the allocation guard.
#include "zemath/search.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "core/missing.hpp"
#include "frame/nrvec.hpp"
#include "frame/search.hpp"
#include "platform/util/sort_kernels.hpp"

namespace zemath {

int find_index_ascending(std::span<const double> x, double target) {
    const int n = static_cast<int>(x.size());
    if (target < x[0]) return -1;
    if (target >= x[n - 1]) return n - 1;
    if (n - 1 < 2) return 0;
    int low = 0, high = n - 1;
    while (high - low > 1) {
        const int mid = low + (high - low) / 2;  // (low + high) / 2 without overflow
        if (x[mid] > target)
            high = mid;
        else
            low = mid;
    }
    return low;
}

namespace {

// Many targets into a sorted array: sort the targets (radix sort of (target, position)
// records), then walk x once, galloping from each answer to the next. On an array that
// is non-decreasing and free of NaN the bisection's answer is the unique last position
// not above the target (or -1, or n - 1 at the ends), so this gives exactly its results;
// any other array is left to the bisection. Returns false, having written nothing, when
// x fails that check or storage is short.
bool find_indices_by_sweep(std::span<const double> x, std::span<const double> targets,
                           int* indices) {
    const std::size_t n = x.size(), m = targets.size();
    for (std::size_t i = 1; i < n; ++i)
        if (!(x[i - 1] <= x[i])) return false;  // also catches NaN
    if (is_nan(x[0])) return false;
    using Rec = util::Record<12>;  // target, then its position
    std::unique_ptr<Rec[]> order(new (std::nothrow) Rec[m]);
    std::unique_ptr<Rec[]> scratch(new (std::nothrow) Rec[m]);
    if (!order || !scratch) return false;
    std::size_t count = 0;
    for (std::size_t k = 0; k < m; ++k) {
        const double t = targets[k];
        if (is_nan(t)) {  // the bisection's own answer; the radix sort takes no NaN
            indices[k] = find_index_ascending(x, t);
            continue;
        }
        const auto position = static_cast<std::uint32_t>(k);
        std::memcpy(order[count].bytes, &t, 8);
        std::memcpy(order[count].bytes + 8, &position, 4);
        ++count;
    }
    util::radix_sort<double, 12, false>(reinterpret_cast<unsigned char*>(order.get()), count,
                                        reinterpret_cast<unsigned char*>(scratch.get()));
    const double* data = x.data();
    std::size_t above = 0;  // first position whose value exceeds the current target
    for (std::size_t r = 0; r < count; ++r) {
        double t;
        std::uint32_t position;
        std::memcpy(&t, order[r].bytes, 8);
        std::memcpy(&position, order[r].bytes + 8, 4);
        // Gallop from the previous answer, then bisect the bracket [low, high).
        std::size_t low = above, high = above, step = 1;
        while (high < n && data[high] <= t) {
            low = high + 1;
            high += step;
            step *= 2;
        }
        high = std::min(high, n);
        while (low < high) {
            const std::size_t mid = low + (high - low) / 2;
            if (data[mid] <= t)
                low = mid + 1;
            else
                high = mid;
        }
        above = low;
        indices[position] = static_cast<int>(above) - 1;
    }
    return true;
}

// The sweep pays a pass over x and a sort of the targets; it wins from about a thousand
// targets when x is not much longer than the targets times 64 (measured: 3 and 5 times
// faster than the interleaved bisection for 1e6 targets into 1e6 and 1e7 values).
constexpr std::size_t kSweepMinimumTargets = 1024;
constexpr std::size_t kSweepMaximumRatio = 64;

}  // namespace

void find_indices_ascending(std::span<const double> x, std::span<const double> targets,
                            int* indices) {
    if (targets.size() >= kSweepMinimumTargets && x.size() <= kSweepMaximumRatio * targets.size() &&
        targets.size() <= UINT32_MAX && find_indices_by_sweep(x, targets, indices))
        return;
    // Otherwise the bisections of 32 targets at a time run interleaved, so that their
    // memory reads overlap (measured: 2 to 2.5 times faster than one bisection after the
    // other, for 100 and 1000 targets into 1e4 to 1e7 values).
    constexpr std::size_t kLanes = 32;
    const int n = static_cast<int>(x.size());
    const double first = x[0], last = x[n - 1];
    const double* data = x.data();
    // Enough halvings to bring any interval of length n - 1 down to 1.
    const int steps = std::bit_width(static_cast<unsigned>(n - 1));
    for (std::size_t start = 0; start < targets.size(); start += kLanes) {
        const std::size_t lanes = std::min(kLanes, targets.size() - start);
        int low[kLanes], high[kLanes], settled[kLanes];
        double target[kLanes];
        for (std::size_t k = 0; k < lanes; ++k) {
            const double t = targets[start + k];
            target[k] = t;
            // A lane answered by the end tests idles on the interval (0, 1), whose probe
            // x[0] is always readable; its answer waits in settled.
            low[k] = 0;
            high[k] = 1;
            if (t < first)
                settled[k] = -1;
            else if (t >= last)
                settled[k] = n - 1;
            else if (n - 1 < 2)
                settled[k] = 0;
            else {
                settled[k] = INT_MIN;
                high[k] = n - 1;
            }
        }
        for (int s = 0; s < steps; ++s) {
            for (std::size_t k = 0; k < lanes; ++k) {
                const int lo = low[k], hi = high[k];
                const int mid = lo + (hi - lo) / 2;  // lo when the lane is done
                const int active = hi - lo > 1;
                const int above = data[mid] > target[k];
                // Masks rather than conditionals keep the compiler from branching on an
                // unpredictable comparison.
                const int move_high = -(active & above), move_low = -(active & (above ^ 1));
                high[k] = (mid & move_high) | (hi & ~move_high);
                low[k] = (mid & move_low) | (lo & ~move_low);
            }
        }
        for (std::size_t k = 0; k < lanes; ++k)
            indices[start + k] = settled[k] == INT_MIN ? low[k] : settled[k];
    }
}

int nearest_index_ascending(std::span<const double> x, double target) {
    const int n = static_cast<int>(x.size());
    const int i = find_index_ascending(x, target);
    if (i < 0) return 0;
    if (i >= n - 1)
        return static_cast<int>(std::lower_bound(x.begin(), x.end(), x[n - 1]) - x.begin());
    // x[i] <= target < x[i + 1]: the upper neighbour only when strictly nearer.
    int best = (x[i + 1] - target < target - x[i]) ? i + 1 : i;
    // Among repeated values, the first point holding the nearest one.
    if (best > 0 && x[best - 1] == x[best])
        best = static_cast<int>(std::lower_bound(x.begin(), x.begin() + best, x[best]) - x.begin());
    return best;
}

int monotonic_direction(std::span<const double> x, bool strict) {
    if (x.size() <= static_cast<std::size_t>(INT_MAX)) {
        // The vector container attaches to the caller's data; it never writes or frees it.
        const NRVec<double> view(const_cast<double*>(x.data()), static_cast<int>(x.size()));
        if (view.is_ordered(true, !strict)) return 2;
        if (view.is_ordered(false, !strict)) return 1;
        return 0;
    }
    // Beyond the container's int size: the same test on the raw run.
    if (ordered_run(x.data(), x.size(), true, !strict)) return 2;
    if (ordered_run(x.data(), x.size(), false, !strict)) return 1;
    return 0;
}

}  // namespace zemath

using namespace zemath;

namespace {

bool usable(double v) {
    return !is_nan(v) && !is_missing(v);
}

// Exact power of ten for |e| <= 22; beyond that the nearest double pow gives.
double power_of_ten(int e) {
    return std::pow(10.0, e);
}

// A step known as numerator / 10^scale (scale >= 0) when step * 10^scale is an integer
// of at most 9 digits for some scale <= 15, up to the representation error of the step
// (1e-12 relative, a few ulps); otherwise numerator = step, scale = -1 (pi, 1/3).
struct DecimalStep {
    double numerator;
    int scale;
    double step;

    explicit DecimalStep(double value) : numerator(value), scale(-1), step(value) {
        constexpr double kMaxNumerator = 1e9;  // beyond this every double looks decimal
        // Decimal when value * 10^p lies within 1e-12 relative of a whole number: far above
        // the error of the double and of the product (a few ulps, 1e-16 each), far below the
        // spacing of the numerators up to 1e9 (1e-9 relative).
        constexpr double kRepresentation = 1e-12;
        for (int p = 0; p <= 15; ++p) {
            const double scaled = value * power_of_ten(p);
            const double whole = std::nearbyint(scaled);
            if (whole > kMaxNumerator) break;
            if (whole != 0.0 && std::fabs(scaled - whole) <= kRepresentation * whole) {
                numerator = whole;
                scale = p;
                return;
            }
        }
    }
    // k * step as the double nearest the decimal value when the step is decimal: one
    // rounding (k * numerator is exact below 2^53, the division correctly rounded).
    double multiple(double k) const {
        // + 0.0 turns a -0.0 (k = -0) into 0.
        return (scale < 0 ? k * step : (k * numerator) / power_of_ten(scale)) + 0.0;
    }
};

// The smallest step 1, 2 or 5 times a power of ten that is >= raw (raw > 0, finite).
DecimalStep nice_step(double raw) {
    int e = static_cast<int>(std::floor(std::log10(raw)));
    double mantissa = raw / power_of_ten(e);
    // log10 may land one decade off near exact powers of ten.
    if (mantissa < 1.0) {
        --e;
        mantissa = raw / power_of_ten(e);
    } else if (mantissa >= 10.0) {
        ++e;
        mantissa = raw / power_of_ten(e);
    }
    double m = 10.0;
    for (double candidate : {1.0, 2.0, 5.0})
        // 1e-12 absorbs the rounding of raw / 10^e (a few ulps), so that a raw step of exactly
        // 1, 2 or 5 times a power of ten keeps that step.
        if (mantissa <= candidate * (1.0 + 1e-12)) {
            m = candidate;
            break;
        }
    DecimalStep step(m * power_of_ten(e));
    if (e < 0 && e >= -15) {  // exact decimal form: m / 10^-e
        step.numerator = m;
        step.scale = -e;
    }
    return step;
}

template <class T>
int check_order(const T* x, int n, double fraction, int* order) {
    if (!x || !order) return ZEMATH_ERR_NULL_POINTER;
    if (n < 2) return ZEMATH_ERR_SIZE_BELOW_ONE;
    if (!(fraction >= 0.0 && fraction <= 1.0)) return ZEMATH_ERR_BAD_FRACTION;
    long long pairs = 0, up = 0, down = 0;
    bool have_previous = false;
    T previous{};
    for (int i = 0; i < n; ++i) {
        const T v = x[i];
        if constexpr (std::is_floating_point_v<T>) {
            if (!usable(v)) continue;
        }
        if (have_previous) {
            ++pairs;
            up += previous < v;
            down += v < previous;
        }
        previous = v;
        have_previous = true;
    }
    const double allowed = fraction * static_cast<double>(pairs);
    const bool increasing = static_cast<double>(down) <= allowed;
    const bool decreasing = static_cast<double>(up) <= allowed;
    if (increasing && (!decreasing || down <= up))
        *order = 2;
    else if (decreasing)
        *order = 1;
    else
        *order = 0;
    return ZEMATH_OK;
}

}  // namespace

extern "C" {

ZEMATH_API int zemath_is_monotonic(const double* x, unsigned int n, bool strict) noexcept {
    if (!x) return ZEMATH_ERR_NULL_POINTER;
    // -5 for an empty array is kept deliberately: hosts rely on it.
    if (n == 0) return ZEMATH_ERR_NO_POINTS;
    return monotonic_direction({x, n}, strict);
}

ZEMATH_API int zemath_binary_search(const double* x, int n, double target, int* index) noexcept {
    if (!x || !index || n < 1 || x[0] > x[n - 1]) return ZEMATH_ERR_TOO_FEW_POINTS;
    *index = find_index_ascending({x, static_cast<std::size_t>(n)}, target);
    return ZEMATH_OK;
}

ZEMATH_API int zemath_array_find_indices(const double* x, int n, const double* targets,
                                         int ntargets, int* indices) noexcept {
    if (!x || !targets || !indices || n < 1 || x[0] > x[n - 1]) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (ntargets < 1) return ZEMATH_OK;
    find_indices_ascending({x, static_cast<std::size_t>(n)},
                           {targets, static_cast<std::size_t>(ntargets)}, indices);
    return ZEMATH_OK;
}

ZEMATH_API bool zemath_is_inside_range(double value, double a, double b,
                                       bool include_ends) noexcept {
    const double low = std::min(a, b), high = std::max(a, b);
    if (low < value && value < high) return true;
    return include_ends && (value == a || value == b);
}

ZEMATH_API int zemath_find_nearest_index(const double* x, int n, double target,
                                         int* index) noexcept {
    if (!x || !index) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (!usable(target)) return ZEMATH_ERR_BOUND_NOT_FOUND;
    int best = -1;
    double best_key = 0.0;
    for (int i = 0; i < n; ++i) {
        const double v = x[i];
        if (!usable(v)) continue;
        // Infinite targets: nearest means largest (+inf) or smallest (-inf); all finite
        // distances to them are infinite and would not tell the points apart.
        double key;
        if (target == HUGE_VAL)
            key = -v;
        else if (target == -HUGE_VAL)
            key = v;
        else
            key = v == target ? 0.0 : std::fabs(v - target);
        if (best < 0 || key < best_key) {
            best = i;
            best_key = key;
        }
    }
    if (best < 0) return ZEMATH_ERR_BOUND_NOT_FOUND;
    *index = best;
    return ZEMATH_OK;
}

ZEMATH_API int zemath_find_nearest_values(const double* x, int n, const double* targets,
                                          int ntargets, int* indices, double* values) noexcept {
    if (!x || !targets || (!indices && !values)) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1 || x[0] > x[n - 1]) return ZEMATH_ERR_TOO_FEW_POINTS;
    const std::span<const double> data(x, static_cast<std::size_t>(n));
    for (int k = 0; k < ntargets; ++k) {
        const double t = targets[k];
        const int i = usable(t) ? nearest_index_ascending(data, t) : -1;
        if (indices) indices[k] = i;
        if (values) values[k] = i >= 0 ? x[i] : kNanum;
    }
    return ZEMATH_OK;
}

ZEMATH_API int zemath_find_index_by_target(const double* y, int n, double target, int start,
                                           int direction, int* index) noexcept {
    if (!y || !index) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1 || start < 0 || start >= n) return ZEMATH_ERR_TOO_FEW_POINTS;
    const int step = direction >= 0 ? 1 : -1;
    int found = -1;
    for (int i = start; i >= 0 && i < n; i += step) {
        const double here = y[i];
        if (!usable(here)) continue;
        if (here == target) {
            found = i;
            break;
        }
        const int j = i + step;
        if (j < 0 || j >= n || !usable(y[j])) continue;
        const double next = y[j];
        if ((here < target && target < next) || (next < target && target < here)) {
            found = i;
            break;
        }
    }
    *index = found;
    return ZEMATH_OK;
}

ZEMATH_API int zemath_get_lower_upper_bounds_index(const double* x, int n, double lower,
                                                   double upper, int* lower_index,
                                                   int* upper_index) noexcept {
    if (!x || !lower_index || !upper_index) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (!(lower <= upper)) return ZEMATH_ERR_EMPTY_RANGE;
    const double* end = x + n;
    int lo, hi;
    if (x[0] <= x[n - 1]) {
        // First point not below lower, last point not above upper.
        lo =
            static_cast<int>(std::partition_point(x, end, [&](double v) { return v < lower; }) - x);
        hi = static_cast<int>(std::partition_point(x, end, [&](double v) { return v <= upper; }) -
                              x) -
             1;
        if (lo >= n || hi < 0 || lo > hi) return ZEMATH_ERR_BOUND_NOT_FOUND;
    } else {
        // Descending: last point not below lower, first point not above upper.
        lo = static_cast<int>(std::partition_point(x, end, [&](double v) { return v >= lower; }) -
                              x) -
             1;
        hi =
            static_cast<int>(std::partition_point(x, end, [&](double v) { return v > upper; }) - x);
        if (lo < 0 || hi >= n || hi > lo) return ZEMATH_ERR_BOUND_NOT_FOUND;
    }
    *lower_index = lo;
    *upper_index = hi;
    return ZEMATH_OK;
}

ZEMATH_API int zemath_check_order(const double* x, int n, double fraction, int* order) noexcept {
    return check_order(x, n, fraction, order);
}

ZEMATH_API int zemath_i_check_order(const int* x, int n, double fraction, int* order) noexcept {
    return check_order(x, n, fraction, order);
}

ZEMATH_API int zemath_round_range(double* lower, double* upper, int divisions,
                                  double* increment) noexcept {
    if (!lower || !upper) return ZEMATH_ERR_NULL_POINTER;
    if (divisions < 1) return ZEMATH_ERR_SIZE_BELOW_ONE;
    const double a = *lower, b = *upper;
    if (!std::isfinite(a) || !std::isfinite(b) || is_missing(a) || is_missing(b) || a > b)
        return ZEMATH_ERR_EMPTY_RANGE;
    double width = b - a;
    if (width == 0.0) width = a != 0.0 ? std::fabs(a) : 1.0;
    // The step is never below the spacing of doubles at the range's ends: a finer one has
    // no distinct multiples there, and rounding k * step would move a bound inward.
    const double magnitude = std::max(std::fabs(a), std::fabs(b));
    const double spacing =
        std::nextafter(magnitude, std::numeric_limits<double>::infinity()) - magnitude;
    const double raw = std::max(width / divisions, spacing);
    if (!std::isfinite(raw) || raw == 0.0) return ZEMATH_ERR_EMPTY_RANGE;
    const DecimalStep step = nice_step(raw);
    // Bounds within 1e-9 step of a multiple count as on it (absorbs the representation
    // error of decimal data such as 0.3).
    constexpr double kOnMultiple = 1e-9;
    double k_low = std::floor(a / step.step + kOnMultiple);
    double k_high = std::ceil(b / step.step - kOnMultiple);
    if (k_low == k_high) {
        k_low -= 1.0;
        k_high += 1.0;
    }
    const double new_lower = step.multiple(k_low), new_upper = step.multiple(k_high);
    if (!std::isfinite(new_lower) || !std::isfinite(new_upper) || !std::isfinite(step.step))
        return ZEMATH_ERR_EMPTY_RANGE;
    *lower = new_lower;
    *upper = new_upper;
    if (increment) *increment = step.step;
    return ZEMATH_OK;
}

ZEMATH_API int zemath_round_with_tolerance(const double* x, int n, double increment,
                                           double tolerance, double* out) noexcept {
    if (!x || !out) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1) return ZEMATH_ERR_SIZE_BELOW_ONE;
    if (!(increment > 0.0) || !std::isfinite(increment) || !(tolerance >= 0.0))
        return ZEMATH_ERR_NEGATIVE_PARAM;
    const DecimalStep step(increment);
    int rounded = 0;
    for (int i = 0; i < n; ++i) {
        const double v = x[i];
        if (!usable(v) || !std::isfinite(v)) {
            out[i] = v;
            continue;
        }
        const double multiple = step.multiple(std::nearbyint(v / increment));
        if (std::fabs(v - multiple) <= tolerance) {
            out[i] = multiple;
            ++rounded;
        } else {
            out[i] = v;
        }
    }
    return rounded;
}

}  // extern "C"
