// Fuzz target: the 16-bit image filters, structuring elements, grey morphology, profiles
// and natural axes (image.h) and the polygon primitives (geometry.h). Checked on each
// call: refused calls leave the image and outputs as they were; filters change no pixel
// outside the region and never leave the image's value range, and the rectangle
// percentile filter's histogram paths equal its per-window operator; a structuring element's
// count matches the cells set; counts returned fit the capacity; the reorder permutes the
// vertex pairs.
#include <algorithm>
#include <cmath>
#include <utility>

#include "fuzz_input.hpp"
#include "gridding/image_filters.hpp"
#include "fuzz_props.hpp"
#include "zemath.h"

using zemath_fuzz::data_or_null;
using zemath_fuzz::Input;
using zemath_fuzz::kSentinel;
using zemath_fuzz::param;
using zemath_fuzz::require;
using zemath_fuzz::same_bits;

namespace {

// Sizes: mostly small positive, sometimes 0, -1 or any int.
int side(Input& in, int max) {
    const int kind = in.pick(16);
    if (kind == 0) return in.integer();
    if (kind == 1) return in.pick(3) - 1;
    return 1 + in.pick(max);
}

size_t cells(int rows, int cols) {
    return rows > 0 && cols > 0 ? static_cast<size_t>(rows) * static_cast<size_t>(cols) : 0;
}

int16_t small(Input& in) {
    return static_cast<int16_t>(in.raw<int16_t>());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(14);
    const int rows = side(in, 40), cols = side(in, 40);
    const size_t area = cells(rows, cols);
    if (area > 4096) return 0;  // the caller could not hold the image
    const bool null_in = in.byte() % 32 == 0, null_out = in.byte() % 32 == 0;
    switch (which) {
        case 0:
        case 1: {
            std::vector<unsigned short> image(area);
            const int spread = in.pick(3);
            for (auto& p : image)
                p = spread == 0 ? in.raw<unsigned short>()
                                : static_cast<unsigned short>(in.byte() % (spread == 1 ? 4 : 256));
            const std::vector<unsigned short> image0 = image;
            // Mostly small windows; sometimes up to 64 cells a side, as large as or larger
            // than the image (the export refuses those; the engine's paths are compared
            // on them below).
            const int window_max = in.byte() % 4 == 0 ? 64 : 9;
            const int width = side(in, window_max), height = side(in, window_max),
                      shape = param(in, 4);
            const double threshold = in.byte() & 1 ? in.real() : 0.0;
            const double percent = in.real();
            const int rmax = std::clamp(rows, 0, 64), cmax = std::clamp(cols, 0, 64);
            int r0 = param(in, rmax), c0 = param(in, cmax), r1 = param(in, rmax),
                c1 = param(in, cmax);
            if (in.byte() & 1) r0 = 0, c0 = 0, r1 = -1, c1 = -1;
            unsigned short* pi = null_in ? nullptr : data_or_null(image);
            const int status =
                which == 0 ? zemath_us_percentile_filter(pi, rows, cols, percent, width, height,
                                                         shape, threshold, r0, c0, r1, c1)
                           : zemath_us_conserve_filter(pi, rows, cols, width, height, shape,
                                                       threshold, r0, c0, r1, c1);
            if (status != 0) {
                require(image == image0);
            } else {
                const int rt = r1 == -1 ? rows - 1 : r1, ct = c1 == -1 ? cols - 1 : c1;
                require(r0 >= 0 && r0 <= rt && rt < rows && c0 >= 0 && c0 <= ct && ct < cols);
                const auto [lo, hi] = std::minmax_element(image0.begin(), image0.end());
                for (int r = 0; r < rows; ++r)
                    for (int c = 0; c < cols; ++c) {
                        const size_t k = static_cast<size_t>(r) * cols + c;
                        if (r < r0 || r > rt || c < c0 || c > ct) require(image[k] == image0[k]);
                        require(image[k] >= *lo && image[k] <= *hi);
                    }
            }
            // The rectangle percentile filter: the row, column and coarse-to-fine histogram
            // paths, the selection network (interiors of 32 pixels and more) and the automatic
            // choice give the operator's result pixel for pixel, also for windows larger than the
            // image. rows and cols may be any int here (INT_MIN included): the last index only for
            // a real image.
            const int rt = r1 == -1 && rows >= 1 ? rows - 1 : r1;
            const int ct = c1 == -1 && cols >= 1 ? cols - 1 : c1;
            const bool valid_region = rows >= 1 && cols >= 1 && r0 >= 0 && c0 >= 0 && r0 <= rt &&
                                      c0 <= ct && rt < rows && ct < cols;
            if (which == 0 && shape == 0 && !null_in && valid_region && width >= 1 && height >= 1 &&
                !std::isnan(percent) && width <= 1 << 21 && height <= 1 << 21 &&
                static_cast<long long>(width) * height * static_cast<long long>(area) <= 1 << 21) {
                const zemath::FilterRegion region{r0, c0, rt, ct};
                auto filtered = [&](zemath::RankPath path) {
                    std::vector<unsigned short> out = image0;
                    require(zemath::run_image_filter(out.data(), rows, cols,
                                                     zemath::FilterKind::percentile, percent, width,
                                                     height, 0, threshold, region, path) == 0);
                    return out;
                };
                const std::vector<unsigned short> expected = filtered(zemath::RankPath::generic);
                if (status == 0) require(image == expected);
                require(filtered(zemath::RankPath::row_histogram) == expected);
                require(filtered(zemath::RankPath::column_histogram) == expected);
                require(filtered(zemath::RankPath::selection_network) == expected);
                require(filtered(zemath::RankPath::coarse_fine) == expected);
                require(filtered(zemath::RankPath::automatic) == expected);
            }
            break;
        }
        case 2: {
            const int kind = param(in, 8), n_params = in.count(2);
            std::vector<double> params = in.reals(n_params);
            for (double& p : params)
                if (in.byte() & 1) p = static_cast<double>(in.byte() % 64) - 8;
            std::vector<unsigned char> strel(area, 0xA5);
            const int set =
                zemath_make_strel(kind, in.byte() % 16 ? data_or_null(params) : nullptr, n_params,
                                  null_out ? nullptr : data_or_null(strel), rows, cols);
            if (set < 0) {
                require(std::all_of(strel.begin(), strel.end(),
                                    [](unsigned char b) { return b == 0xA5; }));
            } else {
                require(static_cast<size_t>(set) <= area);
                require(std::all_of(strel.begin(), strel.end(),
                                    [](unsigned char b) { return b <= 1; }));
                require(std::count(strel.begin(), strel.end(), 1) == set);
            }
            break;
        }
        case 3:
        case 4: {
            std::vector<double> matrix = in.reals(static_cast<int>(area));
            const bool finite = in.byte() & 1;
            if (finite)
                for (double& v : matrix) v = static_cast<double>(small(in)) / 8.0;
            const std::vector<double> matrix0 = matrix;
            const int s_rows = side(in, 7), s_cols = side(in, 7);
            const size_t s_area = cells(s_rows, s_cols);
            if (s_area > 64) break;
            std::vector<unsigned char> strel(s_area);
            for (auto& b : strel) b = in.byte() % 3 == 0 ? 0 : 1;
            const bool alias = in.byte() & 1;
            std::vector<double> out = zemath_fuzz::sentinels(static_cast<int>(area));
            std::vector<double>& target = alias ? matrix : out;
            const std::vector<double> before = target;
            double* po = null_out ? nullptr : alias ? data_or_null(matrix) : data_or_null(out);
            const double* pm = null_in ? nullptr : data_or_null(matrix);
            const unsigned char* ps = in.byte() % 16 ? data_or_null(strel) : nullptr;
            const int status =
                which == 3 ? zemath_dilate_matrix_with_strel(pm, rows, cols, ps, s_rows, s_cols, po)
                           : zemath_erode_matrix_with_strel(pm, rows, cols, ps, s_rows, s_cols, po);
            if (status != 0) {
                require(same_bits(target, before));
            } else if (finite) {
                const auto [lo, hi] = std::minmax_element(matrix0.begin(), matrix0.end());
                for (double v : target) require(v == NANUM || (v >= *lo && v <= *hi));
            }
            if (!alias) require(same_bits(matrix, matrix0));
            break;
        }
        case 5: {
            std::vector<double> image = in.reals(static_cast<int>(area));
            const int vertices = in.count(8);
            std::vector<double> vx = in.reals(vertices), vy = in.reals(vertices);
            if (in.byte() & 1)
                for (size_t k = 0; k < vx.size(); ++k)
                    vx[k] = std::fmod(std::fabs(vx[k]), 50.0) - 5,
                    vy[k] = std::fmod(std::fabs(vy[k]), 50.0) - 5;
            const int points = zemath_fuzz::length(in, 500);
            std::vector<double> distance = zemath_fuzz::sentinels(points),
                                values = zemath_fuzz::sentinels(points);
            const bool with_distance = in.byte() & 1;
            const int status =
                zemath_image_lines_profile(null_in ? nullptr : data_or_null(image), rows, cols,
                                           data_or_null(vx), data_or_null(vy), vertices, points,
                                           with_distance ? data_or_null(distance) : nullptr,
                                           null_out ? nullptr : data_or_null(values));
            if (status < 0) {
                require(zemath_fuzz::all_equal(distance, kSentinel) &&
                        zemath_fuzz::all_equal(values, kSentinel));
            } else {
                require(status == points);
                if (with_distance) require(distance[0] == 0.0);
                for (int k = 1; k < points && with_distance; ++k)
                    require(distance[k] >= distance[k - 1]);
            }
            break;
        }
        case 6: {
            std::vector<double> image = in.reals(static_cast<int>(area));
            std::vector<double> x = zemath_fuzz::sentinels(static_cast<int>(area)),
                                y = zemath_fuzz::sentinels(static_cast<int>(area)),
                                z = zemath_fuzz::sentinels(static_cast<int>(area));
            const int count = zemath_image_xyz_profile(
                null_in ? nullptr : data_or_null(image), rows, cols, in.real(), in.real(),
                in.real(), in.real(), null_out ? nullptr : data_or_null(x), data_or_null(y),
                data_or_null(z));
            if (count < 0) {
                require(zemath_fuzz::all_equal(z, kSentinel) &&
                        zemath_fuzz::all_equal(x, kSentinel));
            } else {
                require(static_cast<size_t>(count) <= area);
                for (int k = 0; k < count; ++k) require(z[k] != NANUM);
                for (size_t k = count; k < area; ++k) require(same_bits(z[k], kSentinel));
            }
            break;
        }
        case 7: {
            std::vector<unsigned short> image(area);
            for (auto& p : image) p = in.byte() % 3 ? 0 : in.raw<unsigned short>();
            double out[5] = {kSentinel, kSentinel, kSentinel, kSentinel, kSentinel};
            const int status = zemath_us_find_natural_axes(
                null_in ? nullptr : data_or_null(image), rows, cols, in.raw<unsigned short>(),
                null_out ? nullptr : &out[0], &out[1], &out[2], &out[3], &out[4]);
            if (status != 0) {
                for (double v : out) require(same_bits(v, kSentinel));
            } else {
                require(out[0] >= 0 && out[0] <= cols - 1 && out[1] >= 0 && out[1] <= rows - 1);
                require(out[2] > -90.0 && out[2] <= 90.0);
                require(out[3] >= out[4] && out[4] >= 0.0);
            }
            break;
        }
        default: {
            // Geometry: a polygon of n vertices.
            const int n = in.count(in.byte() & 1 ? 12 : 400);
            std::vector<double> x = in.reals(n), y = in.reals(n);
            if (in.byte() & 1)
                for (size_t k = 0; k < x.size(); ++k)
                    x[k] = static_cast<double>(in.byte() % 16),
                    y[k] = static_cast<double>(in.byte() % 16);
            const std::vector<double> x0 = x, y0 = y;
            double* px = null_in ? nullptr : data_or_null(x);
            double* py = data_or_null(y);
            switch (which) {
                case 8: {
                    const int r = zemath_d_point_in_polygon(px, py, n, in.real(), in.real());
                    require((r >= 0 && r <= 2) || r == -11 || r == -18);
                    break;
                }
                case 9: {
                    std::vector<float> fx(x.begin(), x.end()), fy(y.begin(), y.end());
                    const int r = zemath_f_point_in_polygon(
                        null_in ? nullptr : data_or_null(fx), data_or_null(fy), n,
                        static_cast<float>(in.real()), static_cast<float>(in.real()));
                    require((r >= 0 && r <= 2) || r == -11 || r == -18);
                    const double a = zemath_f_polygon_area(null_in ? nullptr : data_or_null(fx),
                                                           data_or_null(fy), n);
                    if (n >= 1 && n <= 2 && !null_in) require(a == 0.0);
                    break;
                }
                case 10: {
                    const double a = zemath_d_polygon_area(px, py, n);
                    if (n >= 1 && n <= 2 && !null_in) require(a == 0.0);
                    if (null_in || n < 0) require(a == NANUM);
                    break;
                }
                case 11: {
                    std::vector<long> lx = in.values<long>(n), ly = in.values<long>(n);
                    const double a = zemath_l_polygon_area(null_in ? nullptr : data_or_null(lx),
                                                           data_or_null(ly), n);
                    if (n >= 1 && n <= 2 && !null_in) require(a == 0.0);
                    break;
                }
                default: {
                    const int status = zemath_d_polygon_reorder(px, py, n);
                    if (status != 0) {
                        require(same_bits(x, x0) && same_bits(y, y0));
                    } else {
                        // The same multiset of (x, y) pairs, compared bitwise.
                        auto pairs = [](const std::vector<double>& a,
                                        const std::vector<double>& b) {
                            std::vector<std::pair<uint64_t, uint64_t>> p(a.size());
                            for (size_t k = 0; k < a.size(); ++k) {
                                std::memcpy(&p[k].first, &a[k], 8);
                                std::memcpy(&p[k].second, &b[k], 8);
                            }
                            std::sort(p.begin(), p.end());
                            return p;
                        };
                        require(pairs(x, y) == pairs(x0, y0));
                    }
                    return 0;
                }
            }
            require(same_bits(x, x0) && same_bits(y, y0));
            break;
        }
    }
    return 0;
}
