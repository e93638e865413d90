// Sampling windows (see sampling_window.hpp) and their export.
#include "frame/sampling_window.hpp"

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

}  // namespace

int sampling_window_cells(int n_cols, int width, int height, int shape,
                          std::vector<WindowCell>& cells) {
    cells.clear();
    if (shape < kWindowRectangle || shape > kWindowDiagonalCross) return ZEMATH_ERR_BAD_OPTION;
    if (n_cols < 1 || width < 1 || height < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    const int row_first = -(height / 2), row_last = (height - 1) / 2;
    const int col_first = -(width / 2), col_last = (width - 1) / 2;
    for (int r = row_first; r <= row_last; ++r)
        for (int c = col_first; c <= col_last; ++c)
            if (in_shape(shape, r, c, width, height))
                cells.push_back({r, c, static_cast<std::ptrdiff_t>(r) * n_cols + c});
    return static_cast<int>(cells.size());
}

}  // namespace zemath

using namespace zemath;

extern "C" ZEMATH_API int get_sampling_window_offset(int nCols, int nWidth, int nHeight, int nShape,
                                                     int* row_offsets, int* col_offsets,
                                                     int* linear_offsets, int capacity) noexcept {
    return guard_status([&] {
        std::vector<WindowCell> cells;
        const int count = sampling_window_cells(nCols, nWidth, nHeight, nShape, cells);
        if (count < 0) return count;
        if (!row_offsets && !col_offsets && !linear_offsets) return count;
        if (capacity < count) return static_cast<int>(ZEMATH_ERR_TOO_FEW_POINTS);
        if (linear_offsets) {
            // Every linear offset must fit an int.
            const long long reach = static_cast<long long>(nHeight / 2 + 1) * nCols + nWidth;
            if (reach > INT_MAX) return static_cast<int>(ZEMATH_ERR_TOO_FEW_POINTS);
        }
        for (int k = 0; k < count; ++k) {
            if (row_offsets) row_offsets[k] = cells[k].row;
            if (col_offsets) col_offsets[k] = cells[k].col;
            if (linear_offsets) linear_offsets[k] = static_cast<int>(cells[k].linear);
        }
        return count;
    });
}
