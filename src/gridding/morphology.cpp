// Morphology and image geometry: structuring elements, grey dilation and erosion of a
// double matrix with an element, profiles along polylines with bilinear interpolation,
// image to XYZ triples, and the natural (principal) axes of a 16-bit image.
//
// Method: dilation and erosion take the maximum / minimum over the element's cells
// around each pixel, cells outside the matrix and values equal to NANUM skipped
// (O(pixels x cells)). Profiles sample a polyline at equal arc-length steps. Natural
// axes: the intensity-weighted centroid and second central moments (two-pass, in
// double), the axes being the eigenvectors of the 2 x 2 covariance matrix in closed form
// (angle = atan2(2 mxy, mxx - myy) / 2).
// Failure codes: see image.h.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "zemath/image.h"
#include "zemath/status.h"

using namespace zemath;

namespace {

constexpr double kDegree = 3.141592653589793 / 180.0;

// Whether cell (r, c) of a rows x cols element of `kind` is set; offsets dr, dc from the
// centre (rows / 2, cols / 2).
bool strel_cell(int kind, int rows, int cols, int r, int c, double param) {
    const double dr = r - rows / 2, dc = c - cols / 2;
    const double rc = (rows % 2 == 0) ? -0.5 : 0.0, cc = (cols % 2 == 0) ? -0.5 : 0.0;
    const double er = (dr - rc) / (0.5 * rows), ec = (dc - cc) / (0.5 * cols);
    switch (kind) {
        case 0:  // rectangle
            return true;
        case 1:  // ellipse inscribed in the rectangle
            return er * er + ec * ec <= 1.0;
        case 2:  // diamond inscribed in the rectangle
            return std::fabs(er) + std::fabs(ec) <= 1.0;
        case 3:  // cross: centre row and centre column
            return dr == 0 || dc == 0;
        case 4:  // horizontal line
            return dr == 0;
        case 5:  // vertical line
            return dc == 0;
        case 6: {  // line through the centre at param degrees (counterclockwise from +x)
            const double a = param * kDegree;
            // Distance of the cell centre from the line; rows grow downwards.
            return std::fabs(-dr * std::cos(a) - dc * std::sin(a)) <= 0.5;
        }
        default: {  // 7: octagon, the rectangle with param cells cut from each corner
            const int corner_r = std::min(r, rows - 1 - r), corner_c = std::min(c, cols - 1 - c);
            return corner_r + corner_c >= static_cast<int>(param);
        }
    }
}

template <bool kMax>
int morphology(const double* in, int n_rows, int n_cols, const unsigned char* strel, int s_rows,
               int s_cols, double* out) {
    if (!in || !out) return ZEMATH_ERR_NULL_POINTER;
    if (n_rows < 1 || n_cols < 1 || s_rows < 1 || s_cols < 1) return ZEMATH_ERR_SIZE_BELOW_ONE;
    if (!strel) return ZEMATH_ERR_EMPTY_ELEMENT;
    struct Cell {
        int dr, dc;
    };
    return guard_status([&] {
        std::vector<Cell> cells;
        for (int r = 0; r < s_rows; ++r)
            for (int c = 0; c < s_cols; ++c)
                if (strel[static_cast<std::ptrdiff_t>(r) * s_cols + c])
                    cells.push_back({r - s_rows / 2, c - s_cols / 2});
        if (cells.empty()) return static_cast<int>(ZEMATH_ERR_EMPTY_ELEMENT);
        if (n_rows < s_rows || n_cols < s_cols) return static_cast<int>(ZEMATH_ERR_IMAGE_TOO_SMALL);
        // Out of a copy, so out may be in.
        const std::vector<double> copy(in, in + static_cast<std::size_t>(n_rows) * n_cols);
        for (int r = 0; r < n_rows; ++r) {
            for (int c = 0; c < n_cols; ++c) {
                double best = kNanum;
                bool any = false;
                for (const Cell& cell : cells) {
                    const int rr = r + cell.dr, cc = c + cell.dc;
                    if (rr < 0 || rr >= n_rows || cc < 0 || cc >= n_cols) continue;
                    const double v = copy[static_cast<std::size_t>(rr) * n_cols + cc];
                    if (is_missing(v)) continue;
                    if (!any || (kMax ? v > best : v < best) || std::isnan(v)) best = v;
                    any = true;
                    if (std::isnan(v)) break;  // NaN propagates
                }
                out[static_cast<std::size_t>(r) * n_cols + c] = best;
            }
        }
        return static_cast<int>(ZEMATH_OK);
    });
}

// Bilinear value at column position px, row position py; NANUM outside the image or
// next to a missing pixel.
double bilinear(const double* image, int n_rows, int n_cols, double px, double py) {
    if (!(px >= 0.0 && py >= 0.0 && px <= n_cols - 1 && py <= n_rows - 1)) return kNanum;
    const int c0 = std::min(static_cast<int>(px), std::max(n_cols - 2, 0));
    const int r0 = std::min(static_cast<int>(py), std::max(n_rows - 2, 0));
    const int c1 = std::min(c0 + 1, n_cols - 1), r1 = std::min(r0 + 1, n_rows - 1);
    const double fx = px - c0, fy = py - r0;
    const double v00 = image[static_cast<std::size_t>(r0) * n_cols + c0];
    const double v01 = image[static_cast<std::size_t>(r0) * n_cols + c1];
    const double v10 = image[static_cast<std::size_t>(r1) * n_cols + c0];
    const double v11 = image[static_cast<std::size_t>(r1) * n_cols + c1];
    if (is_missing(v00) || is_missing(v01) || is_missing(v10) || is_missing(v11)) return kNanum;
    return (v00 * (1 - fx) + v01 * fx) * (1 - fy) + (v10 * (1 - fx) + v11 * fx) * fy;
}

}  // namespace

extern "C" {

ZEMATH_API int zemath_make_strel(int kind, const double* params, int n_params, unsigned char* strel,
                                 int nRows, int nCols) noexcept {
    if (!strel || nRows < 1 || nCols < 1) return ZEMATH_ERR_EMPTY_ELEMENT;
    if (kind < 0 || kind > 7) return ZEMATH_ERR_BAD_OPTION;
    double param = 0.0;
    if (kind >= 6) {
        if (!params || n_params < 1 || std::isnan(params[0]) || is_missing(params[0]))
            return ZEMATH_ERR_TOO_FEW_POINTS;
        param = params[0];
        if (kind == 7) param = std::clamp(param, 0.0, 1e9);
    }
    int set = 0;
    for (int r = 0; r < nRows; ++r) {
        for (int c = 0; c < nCols; ++c) {
            const bool on = strel_cell(kind, nRows, nCols, r, c, param);
            strel[static_cast<std::ptrdiff_t>(r) * nCols + c] = on ? 1 : 0;
            set += on;
        }
    }
    return set;
}

ZEMATH_API int zemath_dilate_matrix_with_strel(const double* matrix, int nRows, int nCols,
                                               const unsigned char* strel, int sRows, int sCols,
                                               double* out) noexcept {
    return morphology<true>(matrix, nRows, nCols, strel, sRows, sCols, out);
}

ZEMATH_API int zemath_erode_matrix_with_strel(const double* matrix, int nRows, int nCols,
                                              const unsigned char* strel, int sRows, int sCols,
                                              double* out) noexcept {
    return morphology<false>(matrix, nRows, nCols, strel, sRows, sCols, out);
}

ZEMATH_API int zemath_image_lines_profile(const double* image, int nRows, int nCols,
                                          const double* vx, const double* vy, int nVertices,
                                          int nPoints, double* distance, double* values) noexcept {
    if (!image || !vx || !vy || !values) return ZEMATH_ERR_NULL_POINTER;
    if (nRows < 1 || nCols < 1) return ZEMATH_ERR_SIZE_BELOW_ONE;
    if (nVertices < 2 || nPoints < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&] {
        std::vector<double> cumulative(static_cast<std::size_t>(nVertices), 0.0);
        for (int k = 1; k < nVertices; ++k)
            cumulative[k] = cumulative[k - 1] + std::hypot(vx[k] - vx[k - 1], vy[k] - vy[k - 1]);
        const double total = cumulative.back();
        if (!std::isfinite(total)) return static_cast<int>(ZEMATH_ERR_GENERAL);
        int segment = 0;
        for (int i = 0; i < nPoints; ++i) {
            // The fraction first: total * i overflowed for lengths near the double range.
            const double s =
                i == nPoints - 1 ? total : total * (static_cast<double>(i) / (nPoints - 1));
            while (segment < nVertices - 2 && s > cumulative[segment + 1]) ++segment;
            const double length = cumulative[segment + 1] - cumulative[segment];
            const double t = length > 0 ? (s - cumulative[segment]) / length : 0.0;
            const double px = vx[segment] + t * (vx[segment + 1] - vx[segment]);
            const double py = vy[segment] + t * (vy[segment + 1] - vy[segment]);
            if (distance) distance[i] = s;
            values[i] = bilinear(image, nRows, nCols, px, py);
        }
        return nPoints;
    });
}

ZEMATH_API int zemath_image_xyz_profile(const double* image, int nRows, int nCols, double x_first,
                                        double x_step, double y_first, double y_step, double* x,
                                        double* y, double* z) noexcept {
    if (!image || !x || !y || !z) return ZEMATH_ERR_NULL_POINTER;
    if (nRows < 1 || nCols < 1) return ZEMATH_ERR_SIZE_BELOW_ONE;
    int written = 0;
    for (int r = 0; r < nRows; ++r) {
        for (int c = 0; c < nCols; ++c) {
            const double v = image[static_cast<std::size_t>(r) * nCols + c];
            if (is_missing(v)) continue;
            x[written] = x_first + c * x_step;
            y[written] = y_first + r * y_step;
            z[written] = v;
            ++written;
        }
    }
    return written;
}

ZEMATH_API int zemath_us_find_natural_axes(const unsigned short* image, int nRows, int nCols,
                                           unsigned short threshold, double* centre_x,
                                           double* centre_y, double* angle, double* major,
                                           double* minor) noexcept {
    if (!image || !centre_x || !centre_y || !angle || !major || !minor)
        return ZEMATH_ERR_NULL_POINTER;
    if (nRows < 1 || nCols < 1) return ZEMATH_ERR_SIZE_BELOW_ONE;
    // Weight of a pixel: its value above the threshold (pixels at or below weigh 0).
    auto weight = [&](int r, int c) {
        const unsigned v = image[static_cast<std::size_t>(r) * nCols + c];
        return v > threshold ? static_cast<double>(v - threshold) : 0.0;
    };
    double total = 0.0, sx = 0.0, sy = 0.0;
    for (int r = 0; r < nRows; ++r)
        for (int c = 0; c < nCols; ++c) {
            const double w = weight(r, c);
            total += w;
            sx += w * c;
            sy += w * r;
        }
    if (total <= 0.0) return ZEMATH_ERR_TOO_FEW_POINTS;
    const double cx = sx / total, cy = sy / total;
    double mxx = 0.0, myy = 0.0, mxy = 0.0;
    for (int r = 0; r < nRows; ++r)
        for (int c = 0; c < nCols; ++c) {
            const double w = weight(r, c);
            mxx += w * (c - cx) * (c - cx);
            myy += w * (r - cy) * (r - cy);
            mxy += w * (c - cx) * (r - cy);
        }
    mxx /= total;
    myy /= total;
    mxy /= total;
    // Eigenvalues of [[mxx, mxy], [mxy, myy]] without cancellation in the difference.
    const double mean = 0.5 * (mxx + myy), half_gap = std::hypot(0.5 * (mxx - myy), mxy);
    *centre_x = cx;
    *centre_y = cy;
    // atan2 gives -180 degrees for a covariance that rounds to a tiny negative value beside a
    // taller than wide spread; the axis is the same at +90, the end of the documented range.
    const double degrees = 0.5 * std::atan2(2.0 * mxy, mxx - myy) / kDegree;
    *angle = degrees <= -90.0 ? degrees + 180.0 : degrees;
    *major = std::sqrt(mean + half_gap);
    *minor = std::sqrt(std::max(0.0, mean - half_gap));
    return ZEMATH_OK;
}

}  // extern "C"
