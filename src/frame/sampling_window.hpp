// Sampling windows: the cells of a window of nWidth columns by nHeight rows around a
// centre pixel, as (row offset, column offset, linear offset = row offset x nCols +
// column offset), in row-major order. The window spans row offsets -(nHeight / 2) ..
// (nHeight - 1) / 2 and column offsets -(nWidth / 2) .. (nWidth - 1) / 2, so an even
// side has its extra cell before the centre (the convention of the usual image filter
// libraries, which keeps results comparable). Shapes:
//   0 rectangle: every cell;
//   1 ellipse inscribed in the rectangle: cells whose centres satisfy
//     ((r - rc) / (nHeight / 2))^2 + ((c - cc) / (nWidth / 2))^2 <= 1 about the
//     rectangle's centre (rc, cc) (-0.5 on an even side);
//   2 cross: the centre row and the centre column;
//   3 diagonal cross: the cells on the two diagonals through the centre (|r| = |c|),
//     clipped to the rectangle.
#pragma once

#include <climits>
#include <cstddef>
#include <vector>

namespace zemath {

struct WindowCell {
    int row, col;
    std::ptrdiff_t linear;
};

enum WindowShape : int {
    kWindowRectangle = 0,
    kWindowEllipse = 1,
    kWindowCross = 2,
    kWindowDiagonalCross = 3
};

// Offsets a caller can use: cells outside these bounds are not listed (a window much
// larger than the data it is applied to then costs storage in proportion to the data).
struct WindowClip {
    int row_low = INT_MIN, row_high = INT_MAX, col_low = INT_MIN, col_high = INT_MAX;
};

// The cells of the window inside clip, appended to cells (cleared first). Returns their
// count, or -10 for an unknown shape, -18 when nCols, nWidth or nHeight is below 1. The
// caller keeps the listed count within an int (a clip, or sampling_window_count).
int sampling_window_cells(int n_cols, int width, int height, int shape,
                          std::vector<WindowCell>& cells, const WindowClip& clip = {});

// The number of cells of the whole window (valid shape and sides >= 1), without listing
// them: O(1), or O(min(width, height) log) for the ellipse. Exact up to INT_MAX; a count
// beyond it may come back as another value beyond it.
long long sampling_window_count(int width, int height, int shape);

}  // namespace zemath
