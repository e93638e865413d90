// Rank filters over 16-bit grey images (row-major, n_rows x n_cols): the percentile
// (rank) filter and the conservative smoothing filter, run by one engine that walks a
// window over a rectangular region of interest, reading every window from an unfiltered
// copy so that the result does not depend on the walking order.
//
// Method: windows come from the sampling-window cells (frame/sampling_window.hpp);
// cells outside the image are skipped, so border windows are smaller. The per-window
// operation is an exchangeable operator object (the classes below). For the full
// rectangle the percentile filter takes its order statistic from a sliding histogram of
// the 16-bit values instead of sorting each window (Huang, Yang and Tang, "A fast
// two-dimensional median filtering algorithm", IEEE Trans. ASSP 27 (1979)): moving one
// column right removes one window column and adds another (O(window height) per
// pixel), and the rank is found by a coarse-to-fine count in a four-level radix-16
// histogram tree (at most 64 comparisons). It gives exactly the operator's result.
// Failure codes: see image.h.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace zemath {

// The per-window operation: values[0..count-1] are the in-image pixels of the window in
// cell order, centre points at the centre pixel.
template <class T>
class MathOperatorBase {
  public:
    virtual ~MathOperatorBase() = default;
    virtual T operate(const T* values, int count, const T* centre) {
        (void)values;
        (void)count;
        (void)centre;
        return T{0};
    }
};

template <class T>
class FilterMax : public MathOperatorBase<T> {
  public:
    T operate(const T* values, int count, const T*) override {
        T best = values[0];  // the first when count is 0 or 1
        for (int i = 1; i < count; ++i) best = std::max(best, values[i]);
        return best;
    }
};

template <class T>
class FilterMin : public MathOperatorBase<T> {
  public:
    T operate(const T* values, int count, const T*) override {
        T best = values[0];
        for (int i = 1; i < count; ++i) best = std::min(best, values[i]);
        return best;
    }
};

// Rank rule of the percentile filter: for a full window (count >= window_size) the value
// of 0-based rank `index`; for a window clipped at the border, rank k' - 1 with
// k' = trunc(percent / 100 x count), or rank 0 when k' is 0.
inline int clipped_rank(int index, int window_size, double percent, int count) {
    if (count >= window_size) return std::min(index, count - 1);
    const double k = static_cast<double>(static_cast<long long>(percent / 100.0 * count));
    if (k <= 0.0) return 0;
    return static_cast<int>(std::min(k, static_cast<double>(count))) - 1;
}

template <class T>
class FilterOrder : public MathOperatorBase<T> {
  public:
    FilterOrder(int index, int window_size, double percent)
        : index_(index), window_size_(window_size), percent_(percent) {
        sorted_.reserve(static_cast<std::size_t>(window_size));
    }
    T operate(const T* values, int count, const T*) override {
        sorted_.assign(values, values + count);  // capacity reserved: no allocation
        const int rank = clipped_rank(index_, window_size_, percent_, count);
        // A selection gives the value the full ascending sort would hold at that rank.
        std::nth_element(sorted_.begin(), sorted_.begin() + rank, sorted_.end());
        return sorted_[static_cast<std::size_t>(rank)];
    }
    int index() const { return index_; }

  private:
    int index_, window_size_;
    double percent_;
    std::vector<T> sorted_;
};

// Conservative smoothing: the centre is clamped into [min, max] of the other values.
template <class T>
class FilterReserve : public MathOperatorBase<T> {
  public:
    T operate(const T* values, int count, const T* centre) override {
        bool any = false;
        bool centre_skipped = false;
        T low{}, high{};
        for (int i = 0; i < count; ++i) {
            // The centre value is left out once (its own cell), by value: equal
            // neighbours still count.
            if (!centre_skipped && values[i] == *centre) {
                centre_skipped = true;
                continue;
            }
            if (!any) {
                low = high = values[i];
                any = true;
            } else {
                low = std::min(low, values[i]);
                high = std::max(high, values[i]);
            }
        }
        if (!any) return *centre;
        if (*centre < low) return low;
        if (*centre > high) return high;
        return *centre;
    }
};

// The engine's arguments after the checks of the exports.
struct FilterRegion {
    int row_from, col_from, row_to, col_to;  // inclusive, inside the image
};

enum class FilterKind { percentile, conserve };

// Runs the filter in place. Returns 0, or -1 when the window has a negative cell count
// (unknown shape).
int run_image_filter(std::uint16_t* image, int n_rows, int n_cols, FilterKind kind, double percent,
                     int width, int height, int shape, double threshold,
                     const FilterRegion& region);

}  // namespace zemath
