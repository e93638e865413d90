// Rank filters over 16-bit images: the engine, its sliding-histogram fast path and the
// exports (method and references in image_filters.hpp).
#include "gridding/image_filters.hpp"

#include <array>
#include <cmath>
#include <cstring>
#include <memory>

#include "core/guard.hpp"
#include "frame/sampling_window.hpp"
#include "zemath/image.h"
#include "zemath/status.h"

namespace zemath {
namespace {

// Counts of 16-bit values in a four-level radix-16 tree: level L holds the counts of
// the values' top 4 (L + 1) bits, so a rank is found by four scans of 16 counters.
// Counter is 16 bits wide when a window holds fewer than 65536 cells: half the memory,
// so the 65536 finest counters stay in the processor's second-level cache.
template <class Counter>
class HistogramTree {
  public:
    HistogramTree() : counts_(16 + 256 + 4096 + 65536, Counter{0}) {}
    void add(std::uint16_t v) { change(v, Counter{1}); }
    void remove(std::uint16_t v) { change(v, static_cast<Counter>(~Counter{0})); }  // -1 mod 2^k
    // The value of 0-based rank `rank` (ascending) among the values held.
    std::uint16_t select(unsigned rank) const {
        unsigned prefix = 0;
        for (int level = 0; level < 4; ++level) {
            const Counter* row = counts_.data() + kOffset[level] + prefix * 16;
            unsigned digit = 0;
            while (digit < 15 && rank >= row[digit]) rank -= row[digit++];
            prefix = prefix * 16 + digit;
        }
        return static_cast<std::uint16_t>(prefix);
    }

  private:
    static constexpr std::array<unsigned, 4> kOffset{0, 16, 16 + 256, 16 + 256 + 4096};
    void change(std::uint16_t v, Counter delta) {
        counts_[kOffset[0] + (v >> 12)] += delta;
        counts_[kOffset[1] + (v >> 8)] += delta;
        counts_[kOffset[2] + (v >> 4)] += delta;
        counts_[kOffset[3] + v] += delta;
    }
    std::vector<Counter> counts_;
};

// The threshold rule: a result replaces the pixel only when (|before - result| - T) s
// is 0 or more.
struct Threshold {
    bool active = false;
    int level = 0;  // T
    int sign = 1;   // s
    bool accepts(std::uint16_t before, std::uint16_t result) const {
        if (!active) return true;
        const int moved = before > result ? before - result : result - before;
        return (moved - level) * sign >= 0;
    }
};

Threshold make_threshold(const std::uint16_t* image, std::size_t pixels, double threshold) {
    Threshold t;
    if (threshold == 0.0 || std::isnan(threshold)) return t;
    const auto [low, high] = std::minmax_element(image, image + pixels);
    // T = trunc(range |threshold| / 100), kept in 16 bits: saturated at 65535.
    const double level =
        std::isinf(threshold) ? 65535.0 : std::trunc((*high - *low) * std::fabs(threshold) / 100.0);
    t.active = true;
    t.level = level >= 65535.0 ? 65535 : static_cast<int>(level);
    t.sign = threshold > 0 ? 1 : -1;
    return t;
}

// The operator of the percentile filter for a window of m cells.
std::unique_ptr<MathOperatorBase<std::uint16_t>> percentile_operator(double percent, int m) {
    // k in double: a percent far beyond 100 must not overflow an int.
    const double k = std::trunc(percent / 100.0 * m);
    if (k <= 1.0) return std::make_unique<FilterMin<std::uint16_t>>();  // 0, 1 and below
    if (k - 1.0 < m)
        return std::make_unique<FilterOrder<std::uint16_t>>(static_cast<int>(k) - 1, m, percent);
    return std::make_unique<FilterMax<std::uint16_t>>();
}

// Generic path: gathers each window in cell order and calls the operator.
void filter_generic(std::uint16_t* image, const std::uint16_t* copy, int n_rows, int n_cols,
                    const std::vector<WindowCell>& cells, MathOperatorBase<std::uint16_t>& op,
                    const Threshold& threshold, const FilterRegion& region) {
    std::vector<std::uint16_t> values(cells.size());
    std::vector<std::ptrdiff_t> linear(cells.size());
    int row_low = 0, row_high = 0, col_low = 0, col_high = 0;  // extent of the cells
    for (std::size_t k = 0; k < cells.size(); ++k) {
        linear[k] = cells[k].linear;
        row_low = std::min(row_low, cells[k].row);
        row_high = std::max(row_high, cells[k].row);
        col_low = std::min(col_low, cells[k].col);
        col_high = std::max(col_high, cells[k].col);
    }
    for (int r = region.row_from; r <= region.row_to; ++r) {
        const bool rows_inside = r + row_low >= 0 && r + row_high < n_rows;
        for (int c = region.col_from; c <= region.col_to; ++c) {
            const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(r) * n_cols + c;
            int count = 0;
            if (rows_inside && c + col_low >= 0 && c + col_high < n_cols) {
                // Whole window inside: no per-cell test.
                for (const std::ptrdiff_t offset : linear)
                    values[static_cast<std::size_t>(count++)] = copy[at + offset];
            } else {
                for (const WindowCell& cell : cells) {
                    const int rr = r + cell.row, cc = c + cell.col;
                    if (rr < 0 || rr >= n_rows || cc < 0 || cc >= n_cols) continue;
                    values[static_cast<std::size_t>(count++)] = copy[at + cell.linear];
                }
            }
            const std::uint16_t result = op.operate(values.data(), count, copy + at);
            if (threshold.accepts(copy[at], result)) image[at] = result;
        }
    }
}

// Fast path of the percentile filter on the full rectangle: a sliding histogram per row.
template <class Counter>
void filter_rectangle_rank(std::uint16_t* image, const std::uint16_t* copy, int n_rows, int n_cols,
                           int width, int height, const MathOperatorBase<std::uint16_t>& op,
                           double percent, const Threshold& threshold, const FilterRegion& region) {
    const int m = width * height;
    const int row_before = height / 2, row_after = (height - 1) / 2;
    const int col_before = width / 2, col_after = (width - 1) / 2;
    const auto* order = dynamic_cast<const FilterOrder<std::uint16_t>*>(&op);
    const bool is_min = dynamic_cast<const FilterMin<std::uint16_t>*>(&op) != nullptr;
    HistogramTree<Counter> tree;
    for (int r = region.row_from; r <= region.row_to; ++r) {
        const int top = std::max(0, r - row_before), bottom = std::min(n_rows - 1, r + row_after);
        const int rows_in = bottom - top + 1;
        auto column = [&](int c, bool add) {
            const std::uint16_t* p = copy + static_cast<std::ptrdiff_t>(top) * n_cols + c;
            for (int k = 0; k < rows_in; ++k, p += n_cols) add ? tree.add(*p) : tree.remove(*p);
        };
        int left = std::max(0, region.col_from - col_before);
        int right = std::min(n_cols - 1, region.col_from + col_after);
        for (int c = left; c <= right; ++c) column(c, true);
        for (int c = region.col_from;; ++c) {
            const int count = rows_in * (right - left + 1);
            int rank;
            if (order)
                rank = clipped_rank(order->index(), m, percent, count);
            else
                rank = is_min ? 0 : count - 1;
            const std::uint16_t result = tree.select(static_cast<unsigned>(rank));
            const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(r) * n_cols + c;
            if (threshold.accepts(copy[at], result)) image[at] = result;
            if (c == region.col_to) break;
            // Slide one column right.
            if (c - col_before >= 0) {
                column(c - col_before, false);
                ++left;
            }
            if (c + 1 + col_after < n_cols) {
                column(c + 1 + col_after, true);
                ++right;
            }
        }
        for (int c = left; c <= right; ++c) column(c, false);  // empty for the next row
    }
}

}  // namespace

int run_image_filter(std::uint16_t* image, int n_rows, int n_cols, FilterKind kind, double percent,
                     int width, int height, int shape, double threshold_percent,
                     const FilterRegion& region) {
    std::vector<WindowCell> cells;
    const int m = sampling_window_cells(n_cols, width, height, shape, cells);
    if (m < 0) return ZEMATH_ERR_GENERAL;
    if (m == 0) return ZEMATH_OK;
    std::unique_ptr<MathOperatorBase<std::uint16_t>> op;
    if (kind == FilterKind::conserve)
        op = std::make_unique<FilterReserve<std::uint16_t>>();
    else
        op = percentile_operator(percent, m);
    const std::size_t pixels = static_cast<std::size_t>(n_rows) * static_cast<std::size_t>(n_cols);
    const Threshold threshold = make_threshold(image, pixels, threshold_percent);
    const std::vector<std::uint16_t> copy(image, image + pixels);
    // The histogram beats a per-window selection from a 3 x 3 window up (measured); a
    // single cell is the pixel itself.
    if (kind == FilterKind::percentile && shape == kWindowRectangle && m > 1) {
        if (m < 65536)
            filter_rectangle_rank<std::uint16_t>(image, copy.data(), n_rows, n_cols, width, height,
                                                 *op, percent, threshold, region);
        else
            filter_rectangle_rank<std::uint32_t>(image, copy.data(), n_rows, n_cols, width, height,
                                                 *op, percent, threshold, region);
    } else
        filter_generic(image, copy.data(), n_rows, n_cols, cells, *op, threshold, region);
    return ZEMATH_OK;
}

}  // namespace zemath

using namespace zemath;

namespace {

// The checks shared by both filters, in their documented order. Writes the region with
// -1 ends resolved.
int check_filter_arguments(const unsigned short* image, int n_rows, int n_cols, int width,
                           int height, int row_from, int col_from, int row_to, int col_to,
                           FilterRegion& region) {
    if (!image) return ZEMATH_ERR_NULL_POINTER;
    if (n_rows < 1 || n_cols < 1) return ZEMATH_ERR_SIZE_MISMATCH;
    if (width < 1 || height < 1 || width > n_cols || height > n_rows)
        return ZEMATH_ERR_FILTER_WINDOW;
    if (row_to == -1) row_to = n_rows - 1;
    if (col_to == -1) col_to = n_cols - 1;
    if (row_from < 0 || col_from < 0 || row_from > row_to || col_from > col_to ||
        row_to >= n_rows || col_to >= n_cols)
        return ZEMATH_ERR_SIZE_MISMATCH;
    region = {row_from, col_from, row_to, col_to};
    return ZEMATH_OK;
}

}  // namespace

extern "C" {

ZEMATH_API int zemath_us_percentile_filter(unsigned short* image, int nRows, int nCols,
                                           double dPercent, int nWidth, int nHeight, int nShape,
                                           double dThreshold, int nRowFrom, int nColFrom,
                                           int nRowTo, int nColTo) noexcept {
    FilterRegion region{};
    const int status = check_filter_arguments(image, nRows, nCols, nWidth, nHeight, nRowFrom,
                                              nColFrom, nRowTo, nColTo, region);
    if (status != ZEMATH_OK) return status;
    if (std::isnan(dPercent)) return ZEMATH_ERR_GENERAL;
    return guard_status([&] {
        return run_image_filter(image, nRows, nCols, FilterKind::percentile, dPercent, nWidth,
                                nHeight, nShape, dThreshold, region);
    });
}

ZEMATH_API int zemath_us_conserve_filter(unsigned short* image, int nRows, int nCols, int nWidth,
                                         int nHeight, int nShape, double dThreshold, int nRowFrom,
                                         int nColFrom, int nRowTo, int nColTo) noexcept {
    FilterRegion region{};
    const int status = check_filter_arguments(image, nRows, nCols, nWidth, nHeight, nRowFrom,
                                              nColFrom, nRowTo, nColTo, region);
    if (status != ZEMATH_OK) return status;
    return guard_status([&] {
        return run_image_filter(image, nRows, nCols, FilterKind::conserve, 0.0, nWidth, nHeight,
                                nShape, dThreshold, region);
    });
}

}  // extern "C"
