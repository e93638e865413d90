// Fuzz target: peak detectors and peak-list filters (peaks.h), baselines (baseline.h),
// point look-ups (peak_measures.h) and 1-D interpolation (interpolation.h). Checked on
// each call: refused calls write nothing; counts returned never exceed the capacity
// given; entries past the count stay as they were; every index written lies inside the
// caller's arrays, and a reported peak carries the Y of the point it indexes.
#include <algorithm>
#include <cmath>

#include "fuzz_input.hpp"
#include "fuzz_props.hpp"
#include "zemath.h"

using zemath_fuzz::data_or_null;
using zemath_fuzz::Input;
using zemath_fuzz::kIntSentinel;
using zemath_fuzz::kSentinel;
using zemath_fuzz::param;
using zemath_fuzz::require;
using zemath_fuzz::same_bits;

namespace {

std::vector<double> abscissae(Input& in, int n) {
    const int kind = in.pick(4);
    if (kind == 0) {
        const double start = in.real(), step = in.byte() & 1 ? in.real() : 0.25;
        std::vector<double> x(static_cast<size_t>(n > 0 ? n : 0));
        for (size_t i = 0; i < x.size(); ++i) x[i] = start + step * static_cast<double>(i);
        return x;
    }
    std::vector<double> x = in.reals(n);
    if (kind >= 2) std::sort(x.begin(), x.end());
    if (kind == 3) std::reverse(x.begin(), x.end());
    return x;
}

// Peak indices: mostly inside [0, n), sometimes just outside or any int.
std::vector<int> peak_indices(Input& in, int count, int n) {
    std::vector<int> idx(static_cast<size_t>(count > 0 ? count : 0));
    for (int& i : idx) {
        const int kind = in.pick(16);
        i = kind == 0 ? in.integer() : kind == 1 ? n : in.count(n - 1);
    }
    return idx;
}

bool in_range(int i, int n) {
    return i >= 0 && i < n;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(26);
    const int n = in.count(in.byte() & 1 ? 40 : 800);
    const int len = n > 0 ? n : 0;
    std::vector<double> y = in.reals(n);
    std::vector<double> x = abscissae(in, n);
    if (in.byte() % 4 == 0)  // a smooth curve with peaks, for the detectors to find some
        for (int i = 0; i < len; ++i)
            y[i] = std::sin(0.3 * i) * (1.0 + 0.01 * (i % 7)) + y[i] * 1e-3;
    const std::vector<double> y0 = y, x0 = x;
    const bool null_in = in.byte() % 32 == 0, null_out = in.byte() % 32 == 0;
    const double* px = null_in ? nullptr : data_or_null(x);
    const double* py = data_or_null(y);
    std::vector<double> ox = zemath_fuzz::sentinels(len), oy = zemath_fuzz::sentinels(len);
    std::vector<int> oi = zemath_fuzz::int_sentinels(len);
    const bool with_indices = in.byte() % 8 != 0;
    double* pox = null_out ? nullptr : data_or_null(ox);
    double* poy = data_or_null(oy);
    int* poi = with_indices ? data_or_null(oi) : nullptr;
    bool inputs_kept = true;

    if (which <= 5) {  // the detectors, with the peak list convention
        int count = n;
        const int flags = in.byte() % 4 == 0 ? in.integer() : in.pick(8);
        const int half = param(in, 12), sg_points = param(in, 15), sg_order = param(in, 6);
        const bool smooth = in.byte() & 1;
        const double width = in.real(), min_height = in.real();
        int status = 0;
        switch (which) {
            case 0:
                status =
                    zemath_find_peaks_by_local_maximum(&count, px, py, pox, poy, poi, flags, half);
                break;
            case 1:
                status = zemath_find_local_extremes(&count, px, py, pox, poy, poi, flags, half);
                break;
            case 2:
                status = zemath_find_peaks_by_search_window(&count, px, py, pox, poy, poi, flags,
                                                            width, min_height);
                break;
            case 3:
                status = zemath_find_peaks_1st_derivative(&count, px, py, pox, poy, poi, flags,
                                                          smooth, sg_points, sg_order);
                break;
            case 4:
                status =
                    zemath_find_peaks_2nd_derivative(&count, px, py, pox, poy, poi, flags, half);
                break;
            default:
                status = zemsp_find_peaks_2nd_derivative(&count, px, py, pox, poy, poi, flags, half,
                                                         sg_points, sg_order);
                break;
        }
        if (status != 0) {
            require(count == n);
            require(zemath_fuzz::all_equal(ox, kSentinel) && zemath_fuzz::all_equal(oy, kSentinel));
            require(zemath_fuzz::all_equal(oi, kIntSentinel));
        } else {
            require(count >= 0 && count <= len);
            for (int k = count; k < len; ++k)
                require(same_bits(ox[k], kSentinel) && same_bits(oy[k], kSentinel) &&
                        oi[k] == kIntSentinel);
            if (poi) {
                for (int k = 0; k < count; ++k) {
                    require(in_range(oi[k], len));
                    if (which != 1) require(same_bits(oy[k], y[oi[k]]));
                    if (which != 1 && which != 2) require(same_bits(ox[k], x[oi[k]]));
                }
            } else {
                require(zemath_fuzz::all_equal(oi, kIntSentinel));
            }
        }
    } else {
        switch (which) {
            case 7:
            case 8: {
                // Peak lists: the arrays hold exactly nPeaks entries.
                std::vector<int> idx = peak_indices(in, n, len);
                std::vector<int> idx0 = idx;
                const double min_height = in.real();
                const int keep = param(in, len + 1);
                const std::vector<double> xb = x, yb = y;
                double* wx = null_in ? nullptr : data_or_null(x);
                inputs_kept = false;
                int count = n;
                const int status = which == 7
                                       ? zemath_test_peaks_by_height(&count, wx, data_or_null(y),
                                                                     data_or_null(idx), min_height)
                                       : zemath_test_peaks_by_number(n, wx, data_or_null(y),
                                                                     data_or_null(idx), keep);
                if (status != 0) {
                    require(count == n);
                    require(same_bits(x, xb) && same_bits(y, yb) && same_bits(idx, idx0));
                } else {
                    require(count >= 0 && count <= len);
                }
                break;
            }
            case 9: {
                const int peaks = in.count(60);
                std::vector<int> idx = peak_indices(in, peaks, len);
                std::vector<double> qx = zemath_fuzz::sentinels(peaks),
                                    qy = zemath_fuzz::sentinels(peaks);
                const int status = zemath_match_peaks_centers_by_index(
                    px, py, n, data_or_null(idx), null_out ? nullptr : data_or_null(qx),
                    data_or_null(qy), peaks);
                if (status == 0 || status == -6) {
                    size_t k = 0;
                    for (; k < idx.size() && in_range(idx[k], len); ++k)
                        require(same_bits(qx[k], x[idx[k]]) && same_bits(qy[k], y[idx[k]]));
                    require(status == 0 ? k == idx.size() : k < idx.size());
                    for (; k < idx.size(); ++k)
                        require(same_bits(qx[k], kSentinel) && same_bits(qy[k], kSentinel));
                } else {
                    require(zemath_fuzz::all_equal(qx, kSentinel) &&
                            zemath_fuzz::all_equal(qy, kSentinel));
                }
                break;
            }
            case 10: {
                const int k = param(in, len), direction = in.byte() & 1;
                const double v = zemath_find_k_min_max(null_in ? nullptr : py, n, k, direction);
                if (v != NANUM && !std::isnan(v))
                    require(std::find(y.begin(), y.end(), v) != y.end());
                if (k < 0 || k >= len || null_in) require(v == NANUM);
                break;
            }
            case 11: {
                const int peaks = in.count(30);
                std::vector<int> idx = peak_indices(in, peaks, len);
                const double fraction = in.byte() & 1 ? in.real() : 0.5;
                const int slots = peaks > 0 ? 2 * peaks : 0;
                std::vector<int> markers = zemath_fuzz::int_sentinels(slots);
                std::vector<double> mx = zemath_fuzz::sentinels(slots),
                                    my = zemath_fuzz::sentinels(slots);
                const int status = zemath_find_markers_of_peaks_by_height_and_width(
                    n, px, py, peaks, data_or_null(idx), fraction,
                    null_out ? nullptr : data_or_null(markers), data_or_null(mx), data_or_null(my));
                if (status != 0) {
                    require(zemath_fuzz::all_equal(markers, kIntSentinel));
                    require(zemath_fuzz::all_equal(mx, kSentinel) &&
                            zemath_fuzz::all_equal(my, kSentinel));
                } else {
                    for (int k = 0; k < peaks; ++k) {
                        require(in_range(markers[2 * k], len) && in_range(markers[2 * k + 1], len));
                        require(markers[2 * k] <= idx[k] && idx[k] <= markers[2 * k + 1]);
                    }
                }
                break;
            }
            case 12: {
                const int base = zemath_fuzz::length(in, 100);
                std::vector<double> bx = zemath_fuzz::sentinels(base),
                                    by = zemath_fuzz::sentinels(base);
                const int status = zemath_init_baseline_by_connect_ends(
                    n, px, py, base, null_out ? nullptr : data_or_null(bx), data_or_null(by));
                if (status != 0)
                    require(zemath_fuzz::all_equal(bx, kSentinel) &&
                            zemath_fuzz::all_equal(by, kSentinel));
                else if (base > 1)
                    require(same_bits(bx[base - 1], x[len - 1]));
                break;
            }
            case 13: {
                const int count = zemath_find_baseline_part_in_smooth_curve(
                    n, px, py, null_out ? nullptr : data_or_null(oi));
                if (count < 0) {
                    require(zemath_fuzz::all_equal(oi, kIntSentinel));
                } else {
                    require(count <= len);
                    for (int k = 0; k < count; ++k)
                        require(in_range(oi[k], len) && (k == 0 || oi[k] > oi[k - 1]));
                    for (int k = count; k < len; ++k) require(oi[k] == kIntSentinel);
                }
                break;
            }
            case 14: {
                const int peaks = in.count(30);
                std::vector<int> idx = peak_indices(in, peaks, len);
                int markers_n = 2 * std::max(peaks, 0);
                if (in.byte() % 8 == 0) markers_n = zemath_fuzz::length(in, 64);
                std::vector<int> markers = zemath_fuzz::int_sentinels(markers_n);
                std::vector<double> mx = zemath_fuzz::sentinels(markers_n),
                                    my = zemath_fuzz::sentinels(markers_n);
                std::vector<double> base = in.reals(n);
                const int option = 0;
                const int status = zemath_make_base_markers(
                    null_out ? nullptr : data_or_null(markers), data_or_null(mx), data_or_null(my),
                    markers_n, data_or_null(idx), peaks, px, py, &option,
                    in.byte() % 16 ? data_or_null(base) : nullptr, n);
                if (status != 0) {
                    require(zemath_fuzz::all_equal(markers, kIntSentinel));
                    require(zemath_fuzz::all_equal(mx, kSentinel) &&
                            zemath_fuzz::all_equal(my, kSentinel));
                } else {
                    require(markers_n == 2 * peaks);
                    for (int k = 0; k < peaks; ++k) {
                        require(in_range(markers[2 * k], len) && in_range(markers[2 * k + 1], len));
                        require(markers[2 * k] <= idx[k] && idx[k] <= markers[2 * k + 1]);
                    }
                }
                break;
            }
            case 15: {
                const double v = zemath_get_noise_level(n, null_in ? nullptr : py);
                require(v == NANUM || std::isnan(v) || v >= 0.0);
                break;
            }
            case 16: {
                const int start = param(in, len);
                const int e =
                    zemath_check_linear(n, px, py, start, in.real(), in.real(), param(in, 2));
                if (e >= 0) require(e >= start && e < len);
                break;
            }
            case 17: {
                const int min_points = param(in, 40), max_regions = zemath_fuzz::length(in, 20);
                std::vector<int> starts = zemath_fuzz::int_sentinels(max_regions),
                                 ends = zemath_fuzz::int_sentinels(max_regions);
                const double t1 = in.real(), t2 = in.real();
                const int status = zemath_find_base_regions(
                    n, px, py, min_points, max_regions, null_out ? nullptr : data_or_null(starts),
                    data_or_null(ends), t1, t2, param(in, 2));
                const int stored = status >= 0 ? status : status == -56 ? max_regions : 0;
                require(stored <= std::max(max_regions, 0));
                for (int k = 0; k < stored; ++k)
                    require(in_range(starts[k], len) && starts[k] <= ends[k] && ends[k] < len);
                for (int k = std::max(stored, 0); k < static_cast<int>(starts.size()); ++k)
                    require(starts[k] == kIntSentinel && ends[k] == kIntSentinel);
                break;
            }
            case 18: {
                int crossings = kIntSentinel;
                const int status = zemath_get_level_crossing(n, px, py, in.real(),
                                                             null_out ? nullptr : &crossings, pox);
                if (status != 0) {
                    require(crossings == kIntSentinel && zemath_fuzz::all_equal(ox, kSentinel));
                } else {
                    require(crossings >= 0 && crossings <= len);
                    for (int k = crossings; k < len; ++k) require(same_bits(ox[k], kSentinel));
                }
                break;
            }
            case 19: {
                double xo = kSentinel;
                const int status = zemath_x_from_y(n, px, py, in.real(), null_out ? nullptr : &xo);
                if (status != 0)
                    require(same_bits(xo, kSentinel));
                else
                    require(std::any_of(x.begin(), x.end(),
                                        [&](double v) { return same_bits(v, xo); }));
                break;
            }
            case 20: {
                double yo = kSentinel;
                const bool sorted = in.byte() & 1, even = in.byte() & 1;
                const int status =
                    zemath_y_form_x(n, px, py, in.real(), null_out ? nullptr : &yo, sorted, even);
                if (status != 0) require(same_bits(yo, kSentinel));
                break;
            }
            case 21: {
                const bool alias = in.byte() & 1;
                const int shape = param(in, 2);
                const double c = in.real(), h = in.real(), w = in.real(), off = in.real();
                std::vector<double>& target = alias ? x : oy;
                inputs_kept = !alias;
                const std::vector<double> before = target;
                const int status = zemath_generate_peak_data(
                    n, px,
                    alias ? (null_in ? nullptr : data_or_null(x)) : (null_out ? nullptr : poy),
                    shape, c, h, w, off);
                if (status != 0) require(same_bits(target, before));
                require(same_bits(y, y0));
                break;
            }
            case 22: {
                int first = param(in, len), last = param(in, len);
                std::vector<double> base = in.byte() & 1 ? in.reals(n) : std::vector<double>();
                std::vector<double> moments = zemath_fuzz::sentinels(5);
                if (first >= 0 && last >= len) last = len;  // refused by the checks
                if (std::max(first, last) > len) break;     // beyond the caller's arrays
                const int status =
                    zemath_calc_peak_moments(n, px, py, data_or_null(base), first, last,
                                             null_out ? nullptr : data_or_null(moments));
                if (status != 0) require(zemath_fuzz::all_equal(moments, kSentinel));
                break;
            }
            default: {
                const int nnew = zemath_fuzz::length(in, 300);
                std::vector<double> xnew = in.reals(nnew);
                if (in.byte() & 1) std::sort(xnew.begin(), xnew.end());
                const bool alias = in.byte() & 1;
                std::vector<double> ynew = zemath_fuzz::sentinels(nnew);
                const std::vector<double> xnew0 = xnew;
                std::vector<double>& target = alias ? xnew : ynew;
                const int status = zemath_interpolate(
                    px, null_out ? nullptr : py, n, data_or_null(xnew), nnew,
                    alias ? data_or_null(xnew) : data_or_null(ynew), param(in, 6), param(in, 3));
                if (status != 0)
                    require(same_bits(target, alias ? xnew0 : zemath_fuzz::sentinels(nnew)));
                break;
            }
        }
    }
    if (inputs_kept) require(same_bits(y, y0) && same_bits(x, x0));
    return 0;
}
