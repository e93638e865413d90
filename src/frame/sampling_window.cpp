// Sampling windows (see sampling_window.hpp) and their export.
#include "frame/sampling_window.hpp"

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "core/guard.hpp"
#include "zemath/reduction.h"
#include "zemath/status.h"

namespace zemath {

namespace {

bool in_shape(int shape, int row, int col, int width, int height) {
    switch (shape) {
        case kWindowRectangle:
            return true;
        case kWindowEllipse: {
            // Centre of the rectangle in offset units; semi-axes half the sides.
            const double rc = (height % 2 == 0) ? -0.5 : 0.0, cc = (width % 2 == 0) ? -0.5 : 0.0;
            const double dr = (row - rc) / (0.5 * height), dc = (col - cc) / (0.5 * width);
            return dr * dr + dc * dc <= 1.0;
        }
        case kWindowCross:
            return row == 0 || col == 0;
        default:  // diagonal cross
            return std::abs(row) == std::abs(col);
    }
}

// Largest column offset c >= 0 of row r inside the ellipse (the row holds -c..c on an odd
// width, -1-c..c on an even one), or -1 when the row has no cell. The test is monotonic in
// |c - centre|, so a bisection finds the edge in O(log width).
int ellipse_half_extent(int row, int width, int height) {
    if (!in_shape(kWindowEllipse, row, 0, width, height)) return -1;
    int inside = 0, outside = (width - 1) / 2 + 1;
    while (outside - inside > 1) {
        const int mid = inside + (outside - inside) / 2;
        (in_shape(kWindowEllipse, row, mid, width, height) ? inside : outside) = mid;
    }
    return inside;
}

}  // namespace

int sampling_window_cells(int n_cols, int width, int height, int shape,
                          std::vector<WindowCell>& cells, const WindowClip& clip) {
    cells.clear();
    if (shape < kWindowRectangle || shape > kWindowDiagonalCross) return ZEMATH_ERR_BAD_OPTION;
    if (n_cols < 1 || width < 1 || height < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    long long row_first = std::max(-(height / 2), clip.row_low);
    long long row_last = std::min((height - 1) / 2, clip.row_high);
    const long long col_first = std::max(-(width / 2), clip.col_low);
    const long long col_last = std::min((width - 1) / 2, clip.col_high);
    if (shape == kWindowDiagonalCross) {
        // Rows beyond the widest column hold no diagonal cell: never walked.
        row_first = std::max<long long>(row_first, -(width / 2));
        row_last = std::min<long long>(row_last, width / 2);
    }
    // Cells are listed row by row, each row as the spans of the shape cut to the clip, so
    // the work follows the cells listed, not the window's bounding rectangle.
    const auto span = [&](long long r, long long lo, long long hi) {
        for (long long c = std::max(lo, col_first); c <= std::min(hi, col_last); ++c)
            cells.push_back(
                {static_cast<int>(r), static_cast<int>(c),
                 static_cast<std::ptrdiff_t>(r) * n_cols + static_cast<std::ptrdiff_t>(c)});
    };
    for (long long r = row_first; r <= row_last; ++r) {
        switch (shape) {
            case kWindowRectangle:
                span(r, col_first, col_last);
                break;
            case kWindowEllipse: {
                const int half = ellipse_half_extent(static_cast<int>(r), width, height);
                if (half >= 0) span(r, width % 2 ? -half : -1LL - half, half);
                break;
            }
            case kWindowCross:
                if (r == 0)
                    span(r, col_first, col_last);
                else
                    span(r, 0, 0);
                break;
            default: {  // diagonal cross, columns -|r| and |r|
                const long long a = r < 0 ? -r : r;
                span(r, -a, -a);
                if (a != 0) span(r, a, a);
                break;
            }
        }
    }
    return static_cast<int>(cells.size());
}

long long sampling_window_count(int width, int height, int shape) {
    const long long w = width, h = height;
    switch (shape) {
        case kWindowRectangle:
            return w * h;
        case kWindowCross:
            return w + h - 1;
        case kWindowDiagonalCross: {
            // Row r (r != 0) meets the diagonals at columns r and -r when they lie inside.
            const long long up = (h - 1) / 2, down = h / 2, right = (w - 1) / 2, left = w / 2;
            return 1 + std::min(up, right) + std::min(up, left) + std::min(down, right) +
                   std::min(down, left);
        }
        default:
            break;
    }
    // Ellipse: lines along the shorter side, each an interval of cells symmetric about the
    // centre (the predicate is symmetric in its two terms, so a column is tested as a row).
    const int lines = std::min(width, height), across = std::max(width, height);
    constexpr int kCountedLines = 100000;
    // An ellipse this wide holds its inner rectangle of side / sqrt(2) cells, far past
    // the int range: no need to count it.
    if (lines > kCountedLines) return w * h;
    long long count = 0;
    for (int l = -(lines / 2); l <= (lines - 1) / 2; ++l) {
        const int half = ellipse_half_extent(l, across, lines);
        // Odd sides: cells -half..half; even sides: -1-half..half.
        if (half >= 0) count += across % 2 ? 2LL * half + 1 : 2LL * (half + 1);
    }
    return count;
}

}  // namespace zemath

using namespace zemath;

extern "C" ZEMATH_API int get_sampling_window_offset(int nCols, int nWidth, int nHeight, int nShape,
                                                     int* row_offsets, int* col_offsets,
                                                     int* linear_offsets, int capacity) noexcept {
    if (nShape < kWindowRectangle || nShape > kWindowDiagonalCross) return ZEMATH_ERR_BAD_OPTION;
    if (nCols < 1 || nWidth < 1 || nHeight < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    // Counted before any cell is listed, so that neither the count nor a capacity refusal
    // costs storage in proportion to the window.
    const long long count = sampling_window_count(nWidth, nHeight, nShape);
    if (count > INT_MAX) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (!row_offsets && !col_offsets && !linear_offsets) return static_cast<int>(count);
    if (capacity < count) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (linear_offsets) {
        // Every linear offset must fit an int.
        const long long reach = static_cast<long long>(nHeight / 2 + 1) * nCols + nWidth;
        if (reach > INT_MAX) return ZEMATH_ERR_TOO_FEW_POINTS;
    }
    return guard_status([&] {
        std::vector<WindowCell> cells;
        const int listed = sampling_window_cells(nCols, nWidth, nHeight, nShape, cells);
        for (int k = 0; k < listed; ++k) {
            if (row_offsets) row_offsets[k] = cells[k].row;
            if (col_offsets) col_offsets[k] = cells[k].col;
            if (linear_offsets) linear_offsets[k] = static_cast<int>(cells[k].linear);
        }
        return listed;
    });
}
