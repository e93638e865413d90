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

// The cells of the window, appended to cells (cleared first). Returns their count, or
// -10 for an unknown shape, -18 when nCols, nWidth or nHeight is below 1.
int sampling_window_cells(int n_cols, int width, int height, int shape,
                          std::vector<WindowCell>& cells);

}  // namespace zemath
