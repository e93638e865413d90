// Rainflow counting of load histories.
//
// Method: one pass of the hysteresis filter keeps the turning points (a candidate extreme
// and the current direction of travel); the four-point rule runs over them with a stack,
// each point pushed once and removed at most once, so the count is O(n) in time and
// O(number of residue points) in stack. Classes are equal-width over the loads' range or
// the caller's bounds. The residue is counted as half cycles or, repeated once, with the
// four-point rule again. Matrices are filled, folded and optionally moved to range-mean
// form by index arithmetic.
//
// Accuracy: counting is exact (comparisons only); ranges and means are one subtraction
// and one addition of the caller's loads; the damage sum adds terms in order.
//
// Failure codes: -1, -2, -19 for the five matrix functions; -1, -10, -11, -14, -18, -19,
// -25, -151 for the zemath_ functions, as documented in zemath/rainflow.h.
//
// References: ASTM E1049-85, Standard practices for cycle counting in fatigue analysis
// (rainflow counting); the four-point rule and the residue
// treatments of fatigue practice; Palmgren-Miner linear damage accumulation with a
// Basquin S-N curve.
#include "signal/rainflow.hpp"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "zemath/rainflow.h"
#include "zemath/status.h"

namespace zemath::rainflow {

namespace {

// The hysteresis filter over n points read through value_at(i); emit(i) receives each
// kept point in order. Returns the number kept, or kNanAfterMove.
template <class ValueAt, class Emit>
int filter_core(int n, double h, ValueAt value_at, Emit emit) {
    int i = 0;
    // Missing points and leading NaN are passed over: the direction is still unknown.
    while (i < n && (is_missing(value_at(i)) || is_nan(value_at(i)))) ++i;
    if (i == n) return 0;
    emit(i);
    int count = 1;
    double last_kept = value_at(i);
    int candidate = i;
    double yc = value_at(i);
    int direction = 0;
    for (++i; i < n; ++i) {
        const double y = value_at(i);
        if (is_missing(y)) continue;
        if (is_nan(y)) {
            if (direction != 0) return kNanAfterMove;
            continue;
        }
        const double lo = yc - h, hi = yc + h;
        int next;
        if (direction == 0)
            next = y < lo ? -1 : (y > hi ? 1 : 0);
        else if (direction > 0)
            next = y < lo ? -1 : 1;
        else
            next = y > hi ? 1 : -1;
        if (next == direction) {
            // The run goes on: on equal loads the later point wins.
            if ((direction > 0 && y >= yc) || (direction < 0 && y <= yc)) {
                candidate = i;
                yc = y;
            }
        } else {
            if (direction != 0) {  // a reversal: the old candidate is a turning point
                emit(candidate);
                ++count;
                last_kept = yc;
            }
            candidate = i;
            yc = y;
            direction = next;
        }
    }
    // A history that never moved keeps only its first point (the candidate is that point).
    if (direction != 0 && std::fabs(yc - last_kept) >= h) {
        emit(candidate);
        ++count;
    }
    return count;
}

bool has_nan(std::span<const double> v) {
    for (double x : v)
        if (is_nan(x)) return true;
    return false;
}

}  // namespace

int filter_turning_points(std::span<const double> load, double h, int* kept) {
    const int n = static_cast<int>(load.size());
    int k = 0;
    return filter_core(
        n, h, [&](int i) { return load[i]; }, [&](int i) { kept[k++] = i; });
}

int filter_indexed(std::span<const double> load, std::span<const int> index, double h, int* kept) {
    const int n = static_cast<int>(index.size());
    int k = 0;
    // kept may be index itself: entry k is written only after entries >= k were read.
    return filter_core(
        n, h, [&](int i) { return load[index[i]]; }, [&](int i) { kept[k++] = index[i]; });
}

void count_four_point(std::span<const double> value, std::vector<CyclePositions>& cycles,
                      std::vector<int>& residue) {
    // The stack keeps each point's value beside its position, so the test reads one
    // contiguous block.
    struct Entry {
        double value;
        int position;
    };
    std::vector<Entry> stack;
    stack.reserve(std::min<std::size_t>(value.size(), 1024));
    const int n = static_cast<int>(value.size());
    for (int k = 0; k < n; ++k) {
        stack.push_back({value[k], k});
        std::size_t s = stack.size();
        while (s >= 4) {
            const double a = stack[s - 4].value, b = stack[s - 3].value;
            const double c = stack[s - 2].value, d = stack[s - 1].value;
            if (std::min(b, c) >= std::min(a, d) && std::max(b, c) <= std::max(a, d)) {
                cycles.push_back({stack[s - 3].position, stack[s - 2].position});
                stack[s - 3] = stack[s - 1];
                s -= 2;
                stack.resize(s);
            } else {
                break;
            }
        }
    }
    residue.resize(stack.size());
    for (std::size_t k = 0; k < stack.size(); ++k) residue[k] = stack[k].position;
}

void residue_cycles(std::span<const double> value, std::span<const int> residue, int mode,
                    std::vector<CyclePositions>& cycles) {
    const std::size_t count = residue.size();
    if (count < 2) return;
    if (mode == 0 || mode == 1) {
        const double r0 = value[residue[0]], r1 = value[residue[1]];
        const std::size_t start = (mode == 0 ? r0 > r1 : r1 > r0) ? 1 : 0;
        for (std::size_t i = start; i + 1 < count; i += 2)
            cycles.push_back({residue[i], residue[i + 1]});
        return;
    }
    // Repeat the residue once, reduce the doubled sequence to turning points and count it.
    std::vector<int> doubled(2 * count);
    std::copy(residue.begin(), residue.end(), doubled.begin());
    std::copy(residue.begin(), residue.end(), doubled.begin() + static_cast<std::ptrdiff_t>(count));
    const int kept = filter_indexed(value, doubled, 0.0, doubled.data());
    doubled.resize(static_cast<std::size_t>(std::max(kept, 0)));
    std::vector<double> doubled_value(doubled.size());
    for (std::size_t k = 0; k < doubled.size(); ++k) doubled_value[k] = value[doubled[k]];
    std::vector<CyclePositions> found;
    std::vector<int> rest;
    count_four_point(doubled_value, found, rest);
    for (const CyclePositions& c : found) cycles.push_back({doubled[c.from], doubled[c.to]});
}

int Classes::index(double load) const {
    if (!(upper > lower)) return 0;
    // Halves keep upper - lower finite for bounds near the largest doubles.
    const double t = (0.5 * load - 0.5 * lower) / (0.5 * upper - 0.5 * lower);
    const double scaled = std::floor(t * bins);
    if (!(scaled >= 0)) return 0;
    if (scaled >= bins) return bins - 1;  // the upper bound falls in the last class
    return static_cast<int>(scaled);
}

void fold(int* matrix, int bins) {
    const std::size_t b = static_cast<std::size_t>(bins);
    for (std::size_t r = 0; r < b; ++r)
        for (std::size_t c = r + 1; c < b; ++c) {
            const int sum = matrix[r * b + c] + matrix[c * b + r];
            matrix[r * b + c] = sum;
            matrix[c * b + r] = sum;
        }
}

void min_to_max_to_range_mean(int* matrix, int bins) {
    const std::size_t b = static_cast<std::size_t>(bins);
    std::vector<int> in(matrix, matrix + b * b);
    std::fill(matrix, matrix + b * b, 0);
    for (std::size_t r = 0; r < b; ++r)
        for (std::size_t c = r + 1; c < b; ++c)
            // Mean class rounded up on odd sums: kept deliberately, stored matrices rely on it.
            matrix[(c - r) * b + (r + c + 1) / 2] = in[r * b + c];
}

void range_mean_to_min_to_max(int* matrix, int bins) {
    const std::size_t b = static_cast<std::size_t>(bins);
    std::vector<int> in(matrix, matrix + b * b);
    std::fill(matrix, matrix + b * b, 0);
    for (std::size_t d = 1; d < b; ++d)
        for (std::size_t m = (d + 1) / 2; m < b; ++m) {
            const std::size_t r = m - (d + 1) / 2, c = r + d;
            if (c < b) matrix[r * b + c] = in[d * b + m];
        }
}

int analyse_cycles(std::span<const double> load, double h, int residue_mode, CycleList& out) {
    // One pass: each turning point the filter keeps is pushed on the four-point stack at
    // once, so no intermediate arrays are formed.
    struct Entry {
        double value;
        int index;
    };
    std::vector<Entry> stack;
    stack.reserve(1024);
    out.from.clear();
    out.to.clear();
    out.from.reserve(load.size() / 2 + 1);
    out.to.reserve(load.size() / 2 + 1);
    const auto push = [&](int i) {
        stack.push_back({load[i], i});
        std::size_t s = stack.size();
        while (s >= 4) {
            const double a = stack[s - 4].value, b = stack[s - 3].value;
            const double c = stack[s - 2].value, d = stack[s - 1].value;
            if (std::min(b, c) >= std::min(a, d) && std::max(b, c) <= std::max(a, d)) {
                out.from.push_back(stack[s - 3].index);
                out.to.push_back(stack[s - 2].index);
                stack[s - 3] = stack[s - 1];
                s -= 2;
                stack.resize(s);
            } else {
                break;
            }
        }
    };
    const int count = filter_core(
        static_cast<int>(load.size()), h, [&](int i) { return load[i]; }, push);
    if (count < 0) return count;
    out.closed = out.from.size();
    if (residue_mode == 0) {
        for (std::size_t k = 0; k + 1 < stack.size(); ++k) {
            out.from.push_back(stack[k].index);
            out.to.push_back(stack[k + 1].index);
        }
        out.residue_weight = 0.5;
    } else {
        std::vector<double> value(stack.size());
        std::vector<int> positions(stack.size());
        for (std::size_t k = 0; k < stack.size(); ++k) {
            value[k] = stack[k].value;
            positions[k] = static_cast<int>(k);
        }
        std::vector<CyclePositions> cycles;
        residue_cycles(value, positions, 2, cycles);
        for (const CyclePositions& c : cycles) {
            out.from.push_back(stack[c.from].index);
            out.to.push_back(stack[c.to].index);
        }
        out.residue_weight = 1.0;
    }
    return 0;
}

namespace {

constexpr int kBadArgument = -1;
constexpr int kStepFailed = -2;

// Class bounds for modes 1 and 2 must be finite and increasing.
bool valid_bounds(unsigned class_mode, double lower, double upper) {
    if (class_mode == 0) return true;
    return std::isfinite(lower) && std::isfinite(upper) && lower < upper;
}

// Classes for the given loads. Returns false when they cannot be formed: a NaN load, an
// infinite load in mode 0, a load outside the bounds in mode 1, or no load at all.
bool make_classes(std::span<const double> loads, unsigned class_mode, double lower, double upper,
                  int bins, Classes& classes) {
    if (loads.empty()) return false;
    classes.bins = bins;
    if (class_mode == 0) {
        double lo = loads[0], hi = loads[0];
        for (double y : loads) {
            if (!std::isfinite(y)) return false;
            lo = std::min(lo, y);
            hi = std::max(hi, y);
        }
        classes.lower = lo;
        classes.upper = hi;
        return true;
    }
    for (double y : loads) {
        if (is_nan(y)) return false;
        if (class_mode == 1 && (y < lower || y > upper)) return false;
    }
    classes.lower = lower;
    classes.upper = upper;
    return true;
}

// Adds one count per cycle to matrix[from class][to class].
void add_cycles(int* matrix, int bins, std::span<const double> cls,
                std::span<const CyclePositions> cycles) {
    const std::size_t b = static_cast<std::size_t>(bins);
    for (const CyclePositions& c : cycles) {
        // Classes are whole numbers held in double, rounded by adding 0.5 and truncating.
        const auto from = static_cast<std::size_t>(cls[c.from] + 0.5);
        const auto to = static_cast<std::size_t>(cls[c.to] + 0.5);
        ++matrix[from * b + to];
    }
}

int rainflow_matrix(std::span<const double> load, int bins, int* total, int* closed_matrix,
                    double h, unsigned residue_mode, unsigned class_mode, double lower,
                    double upper) {
    // The usable loads (NANUM dropped), through the hysteresis filter when it applies.
    std::size_t usable = 0;
    for (double y : load) usable += !is_missing(y);
    std::vector<double> value;
    value.reserve(usable);
    if (h >= 0 && usable >= 3) {
        const int count = filter_core(
            static_cast<int>(load.size()), h, [&](int i) { return load[i]; },
            [&](int i) { value.push_back(load[i]); });
        if (count < 0) return kStepFailed;
    } else {
        for (double y : load)
            if (!is_missing(y)) value.push_back(y);
    }
    Classes classes;
    if (!make_classes(value, class_mode, lower, upper, bins, classes)) return kStepFailed;
    for (double& y : value) y = classes.index(y);

    // Turning points again in class space, pushed straight onto the four-point stack; the
    // closed cycles are counted into a working matrix so that the caller's matrices are
    // written only once nothing can fail any more.
    const std::size_t b = static_cast<std::size_t>(bins), cells = b * b;
    std::vector<int> closed_counts(cells, 0);
    std::vector<double> stack;
    stack.reserve(value.size());
    const auto push = [&](int i) {
        stack.push_back(value[i]);
        std::size_t s = stack.size();
        while (s >= 4) {
            const double a1 = stack[s - 4], b1 = stack[s - 3], c1 = stack[s - 2], d1 = stack[s - 1];
            if (std::min(b1, c1) >= std::min(a1, d1) && std::max(b1, c1) <= std::max(a1, d1)) {
                // Classes are whole numbers held in double, rounded by adding 0.5.
                ++closed_counts[static_cast<std::size_t>(b1 + 0.5) * b +
                                static_cast<std::size_t>(c1 + 0.5)];
                stack[s - 3] = d1;
                s -= 2;
                stack.resize(s);
            } else {
                break;
            }
        }
    };
    const int n = static_cast<int>(value.size());
    if (n >= 3) {
        filter_core(
            n, 0.0, [&](int i) { return value[i]; }, push);
    } else {
        for (int i = 0; i < n; ++i) push(i);
    }
    std::vector<int> residue(stack.size());
    for (std::size_t k = 0; k < residue.size(); ++k) residue[k] = static_cast<int>(k);
    std::vector<CyclePositions> cycles;
    residue_cycles(stack, residue, static_cast<int>(residue_mode), cycles);

    std::fill(total, total + cells, 0);
    std::copy(closed_counts.begin(), closed_counts.end(), closed_matrix);
    add_cycles(total, bins, stack, cycles);
    fold(closed_matrix, bins);
    fold(total, bins);
    for (std::size_t k = 0; k < cells; ++k) total[k] += closed_matrix[k];
    if (residue_mode == 3) {
        min_to_max_to_range_mean(total, bins);
        min_to_max_to_range_mean(closed_matrix, bins);
    }
    return 0;
}

}  // namespace

}  // namespace zemath::rainflow

using namespace zemath;
using namespace zemath::rainflow;

ZEMATH_API int Rainflow_Filtering(int* pnSize, double* pTime, double* pValue,
                                  double dHysteresis) noexcept {
    if (pnSize == nullptr || pValue == nullptr || *pnSize < 1) return kBadArgument;
    const int n = *pnSize;
    if (!(dHysteresis >= 0) || n < 3) return 0;
    const std::span<const double> load(pValue, static_cast<std::size_t>(n));
    // A NaN after the first move refuses the whole call: find out before writing.
    if (has_nan(load) && filter_core(
                             n, dHysteresis, [&](int i) { return load[i]; }, [](int) {}) < 0)
        return kBadArgument;
    int k = 0;
    // In place: the point kept k-th has index >= k and is never read again.
    const int kept = filter_core(
        n, dHysteresis, [&](int i) { return pValue[i]; },
        [&](int i) {
            pValue[k] = pValue[i];
            if (pTime != nullptr) pTime[k] = pTime[i];
            ++k;
        });
    *pnSize = kept;
    return 0;
}

ZEMATH_API int Rainflow_Matrix(int nSize, double* pTime, double* pValue, int nBins,
                               int* pTotalMatrix, int* pClosedMatrix, double dHysteresis,
                               int nResidueMode, int nClassMode, double dClassLower,
                               double dClassUpper) noexcept {
    // Modes are compared as unsigned: a negative mode is out of range.
    const auto residue_mode = static_cast<unsigned>(nResidueMode);
    const auto class_mode = static_cast<unsigned>(nClassMode);
    if (nSize < 2 || nBins < 2 || pTime == nullptr || pValue == nullptr ||
        pTotalMatrix == nullptr || pClosedMatrix == nullptr || residue_mode > 3 || class_mode > 2 ||
        !valid_bounds(class_mode, dClassLower, dClassUpper))
        return kBadArgument;
    return guard_status([&] {
        return rainflow_matrix(std::span<const double>(pValue, static_cast<std::size_t>(nSize)),
                               nBins, pTotalMatrix, pClosedMatrix, dHysteresis, residue_mode,
                               class_mode, dClassLower, dClassUpper);
    });
}

ZEMATH_API int Rainflow_Cycle_2_Rainflow_Matrix(int nCycles, double* pFrom, double* pTo, int nBins,
                                                int* pMatrix, int nClassMode, int nResidueMode,
                                                double dClassLower, double dClassUpper) noexcept {
    const auto residue_mode = static_cast<unsigned>(nResidueMode);
    const auto class_mode = static_cast<unsigned>(nClassMode);
    if (nCycles < 1 || nBins < 2 || pFrom == nullptr || pTo == nullptr || pMatrix == nullptr ||
        residue_mode > 3 || class_mode > 2 || !valid_bounds(class_mode, dClassLower, dClassUpper))
        return kBadArgument;
    const std::size_t n = static_cast<std::size_t>(nCycles);
    for (std::size_t k = 0; k < n; ++k)
        if (is_missing(pFrom[k]) || is_missing(pTo[k])) return kBadArgument;
    return guard_status([&] {
        // Loads in one array: the from loads, then the to loads.
        std::vector<double> loads(pFrom, pFrom + n);
        loads.insert(loads.end(), pTo, pTo + n);
        Classes classes;
        if (!make_classes(loads, class_mode, dClassLower, dClassUpper, nBins, classes))
            return kBadArgument;
        const std::size_t b = static_cast<std::size_t>(nBins);
        std::fill(pMatrix, pMatrix + b * b, 0);
        // Each given cycle counts once in [from][to] before folding.
        for (std::size_t k = 0; k < n; ++k)
            ++pMatrix[static_cast<std::size_t>(classes.index(pFrom[k])) * b +
                      static_cast<std::size_t>(classes.index(pTo[k]))];
        fold(pMatrix, nBins);
        if (residue_mode == 3) min_to_max_to_range_mean(pMatrix, nBins);
        return 0;
    });
}

ZEMATH_API int MinToMax_RFM_2_RangeMean_RFM(int nBins, int* pMatrix) noexcept {
    if (nBins < 2 || pMatrix == nullptr) return kBadArgument;
    return guard_status([&] {
        min_to_max_to_range_mean(pMatrix, nBins);
        return 0;
    });
}

ZEMATH_API int RangeMean_RFM_2_MinToMax_RFM(int nBins, int* pMatrix) noexcept {
    if (nBins < 2 || pMatrix == nullptr) return kBadArgument;
    return guard_status([&] {
        range_mean_to_min_to_max(pMatrix, nBins);
        return 0;
    });
}

ZEMATH_API int zemath_rainflow_cycles(const double* load, int n, double hysteresis,
                                      int residue_mode, int capacity, int* from_index,
                                      int* to_index, double* range, double* mean, double* count,
                                      int* n_cycles, int* n_closed) noexcept {
    if (load == nullptr || n_cycles == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (n < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (!(hysteresis >= 0)) return ZEMATH_ERR_NEGATIVE_PARAM;
    if (residue_mode != 0 && residue_mode != 1) return ZEMATH_ERR_BAD_OPTION;
    const std::span<const double> history(load, static_cast<std::size_t>(n));
    if (has_nan(history)) return ZEMATH_ERR_GENERAL;
    return guard_status([&] {
        CycleList list;
        analyse_cycles(history, hysteresis, residue_mode, list);
        const std::size_t cycles = list.from.size();
        const bool listing = from_index != nullptr || to_index != nullptr || range != nullptr ||
                             mean != nullptr || count != nullptr;
        // Counts beyond INT_MAX cannot occur: at most n - 1 cycles from n points.
        *n_cycles = static_cast<int>(cycles);
        if (n_closed != nullptr) *n_closed = static_cast<int>(list.closed);
        if (!listing) return 0;
        if (capacity < 0 || cycles > static_cast<std::size_t>(capacity))
            return static_cast<int>(ZEMATH_ERR_TOO_MANY_REQUESTED);
        for (std::size_t k = 0; k < cycles; ++k) {
            const double a = load[list.from[k]], b = load[list.to[k]];
            if (from_index != nullptr) from_index[k] = list.from[k];
            if (to_index != nullptr) to_index[k] = list.to[k];
            if (range != nullptr) range[k] = std::fabs(b - a);
            if (mean != nullptr) mean[k] = 0.5 * a + 0.5 * b;
            if (count != nullptr) count[k] = k < list.closed ? 1.0 : list.residue_weight;
        }
        return 0;
    });
}

ZEMATH_API int zemath_rainflow_damage(const double* range, const double* count, int n,
                                      double exponent, double intercept, double endurance_limit,
                                      double* damage) noexcept {
    if (range == nullptr || damage == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (n < 0) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (!(exponent > 0) || !std::isfinite(exponent) || !(intercept > 0) ||
        !std::isfinite(intercept) || is_nan(endurance_limit))
        return ZEMATH_ERR_PARAM_RANGE;
    const auto bad = [](double v) { return !(v >= 0) || !std::isfinite(v); };
    double sum = 0;
    for (int k = 0; k < n; ++k) {
        const double weight = count != nullptr ? count[k] : 1.0;
        if (bad(range[k]) || bad(weight)) return ZEMATH_ERR_PARAM_RANGE;
        // A cycle counted zero times does no damage, even where S^m alone overflows.
        if (range[k] > endurance_limit && range[k] > 0 && weight > 0) {
            double term = std::pow(range[k], exponent) / intercept;
            // S^m beyond the double range while S^m / C is not: take it by logarithms.
            if (!std::isfinite(term))
                term = std::exp(exponent * std::log(range[k]) - std::log(intercept));
            sum += weight * term;
        }
    }
    *damage = sum;
    return 0;
}
