// Fuzz target: peak picking, peak extents, derivative-centred peaks, width and centre
// markers, curvature trimming, the masked, end-weighted and small-curvature baselines,
// flat-part noise and the peak measures (asymptote points included). Arrays are exactly as long as
// their counts; counts and indices written must lie inside the arrays, and a refused call (negative
// status) must leave every output as it was.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "fuzz_input.hpp"
#include "zemath.h"

using zemath_fuzz::data_or_null;
using zemath_fuzz::Input;
using zemath_fuzz::require;

namespace {

constexpr double kSentinel = -7.25;
constexpr int kIntSentinel = -7;

template <class T>
bool all_equal(const std::vector<T>& v, T value) {
    return std::all_of(v.begin(), v.end(), [&](T e) { return e == value; });
}

bool in_range(int i, int n) {
    return i >= 0 && i < n;
}

struct Outputs {
    std::vector<double> x, y;
    std::vector<int> index;
    explicit Outputs(int n)
        : x(static_cast<size_t>(n > 0 ? n : 0), kSentinel),
          y(x.size(), kSentinel),
          index(x.size(), kIntSentinel) {}
    bool untouched() const {
        return all_equal(x, kSentinel) && all_equal(y, kSentinel) && all_equal(index, kIntSentinel);
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(21);
    const int n = in.count(300);
    const int len = n > 0 ? n : 0;
    std::vector<double> x = in.reals(n), y = in.reals(n);
    if (in.byte() & 1) std::sort(x.begin(), x.end());
    if (in.byte() & 1)  // a smooth peak keeps the searches busy
        for (int i = 0; i < len; ++i) y[i] = 5.0 * std::exp(-0.01 * (i - len / 2) * (i - len / 2));
    const double* px = in.byte() % 16 ? data_or_null(x) : nullptr;
    const double* py = in.byte() % 16 ? data_or_null(y) : nullptr;
    const int flags = in.integer();
    switch (which) {
        case 0: {  // the picker
            Outputs out(n);
            int count = n;
            const int status = zemath_pick_peaks(&count, px, py, data_or_null(out.x),
                                                 data_or_null(out.y), data_or_null(out.index),
                                                 flags, in.real(), in.real(), in.integer());
            if (status < 0) require(out.untouched() && count == n);
            if (status == 0) {
                require(count >= 0 && count <= len);
                for (int k = 0; k < count; ++k) require(in_range(out.index[k], len));
            }
            break;
        }
        case 1: {
            int left = kIntSentinel, right = kIntSentinel;
            const int status = zemath_find_peaks_partition(n, px, py, in.real(), flags,
                                                           in.integer(), &left, &right);
            if (status < 0) require(left == kIntSentinel && right == kIntSentinel);
            if (status == 0) require(in_range(left, len) && in_range(right, len) && left <= right);
            break;
        }
        case 2: {
            std::vector<double> dy = in.reals(n);
            Outputs out(n);
            int count = n;
            const int status = zemath_find_peak_by_derivative_centralized(
                &count, px, py, data_or_null(dy), data_or_null(out.x), data_or_null(out.y),
                data_or_null(out.index), flags);
            if (status < 0) require(out.untouched() && count == n);
            if (status == 0) {
                require(count >= 0 && count < len);
                for (int k = 0; k < count; ++k) require(in_range(out.index[k], len));
            }
            break;
        }
        case 3: {
            int peaks = in.count(8);
            std::vector<int> indices(static_cast<size_t>(peaks > 0 ? peaks : 0));
            for (int& i : indices) i = in.count(len);
            const std::vector<int> given = indices;
            Outputs markers(2 * peaks);
            const int before = peaks;
            const int status = zemath_find_markers_of_peaks_by_height_and_full_width(
                n, px, py, &peaks, data_or_null(indices), in.real(), in.real(), in.real(),
                data_or_null(markers.index), data_or_null(markers.x), data_or_null(markers.y));
            if (status < 0) require(markers.untouched() && indices == given && peaks == before);
            if (status == 0) {
                require(peaks >= 0 && peaks <= before);
                for (int k = 0; k < 2 * peaks; ++k) require(in_range(markers.index[k], len));
            }
            break;
        }
        case 4: {
            const int peaks = in.count(8);
            std::vector<double> centres = in.reals(peaks);
            Outputs markers(2 * peaks);
            std::vector<int> found(centres.size(), kIntSentinel);
            const int status = zemath_find_markers_of_peak_centers_by_height_and_width(
                n, px, py, peaks, data_or_null(centres), in.real(), in.real(),
                data_or_null(markers.index), data_or_null(markers.x), data_or_null(markers.y),
                in.byte() & 1 ? data_or_null(found) : nullptr);
            if (status < 0) require(markers.untouched() && all_equal(found, kIntSentinel));
            if (status == 0)
                for (int k = 0; k < 2 * peaks; ++k) require(in_range(markers.index[k], len));
            break;
        }
        case 5: {
            std::vector<double> tx = x, ty = y;
            zemath_trim_peak_part_by_2nd_derivative(n, px ? data_or_null(tx) : nullptr,
                                                    py ? data_or_null(ty) : nullptr);
            for (int i = 0; i < len; ++i) {  // a point is kept whole or trimmed whole
                const bool trimmed = tx[i] == NANUM && ty[i] == NANUM;
                require(trimmed || (std::memcmp(&tx[i], &x[i], sizeof(double)) == 0 &&
                                    std::memcmp(&ty[i], &y[i], sizeof(double)) == 0));
            }
            break;
        }
        case 6: {
            const int out_size = in.byte() & 1 ? n : in.count(300);
            Outputs out(out_size);
            const int status = zemath_create_baseline_by_masking_peaks(
                n, px, py, out_size, data_or_null(out.x), data_or_null(out.y), flags);
            if (status < 0) require(out.untouched());
            break;
        }
        case 7: {
            Outputs out(n);
            const int status = zemath_create_baseline_end_weighted_linear(n, px, py, in.integer(),
                                                                          data_or_null(out.x));
            if (status < 0) require(out.untouched());
            break;
        }
        case 8:
        case 9: {
            Outputs out(n);
            const int status = which == 8 ? zemath_find_baseline_part_by_small_curvature(
                                                n, px, py, in.real(), data_or_null(out.index))
                                          : zemath_find_baseline_part_by_small_curvature2(
                                                n, px, py, in.real(), in.integer(), in.integer(),
                                                data_or_null(out.index));
            if (status < 0) require(out.untouched());
            require(status <= len);
            for (int k = 0; k < status; ++k) require(in_range(out.index[k], len));
            break;
        }
        case 10: {
            const double level = zemath_get_noise_level_of_flat_part(n, py, in.integer());
            require(level == NANUM || !(level < 0.0));
            break;
        }
        case 11: {
            std::vector<double> base = in.reals(n), moments(8, kSentinel);
            const int status = zemath_calc_peak_moments_ex(
                n, px, py, in.byte() & 1 ? data_or_null(base) : nullptr, in.integer(), in.integer(),
                in.integer(), in.byte() % 16 ? moments.data() : nullptr);
            if (status < 0) require(all_equal(moments, kSentinel));
            break;
        }
        case 12: {
            std::vector<double> base = in.reals(n);
            Outputs out(n);
            const int status = zemath_adjust_data_of_peaks(n, py, data_or_null(base),
                                                           data_or_null(out.x), in.integer());
            if (status < 0) require(out.untouched());
            break;
        }
        case 13: {
            Outputs out(n);
            const double centre = in.real();
            const int status =
                zemath_generate_peak_x_array(n, centre, in.real(), in.real(), data_or_null(out.x));
            if (status < 0) require(out.untouched());
            if (status == 0 && len % 2 == 1) require(out.x[len / 2] == centre);
            break;
        }
        case 14:
        case 15:
        case 16: {
            double left = kSentinel, right = kSentinel;
            const int peak = in.integer() % (len + 2);
            int status;
            if (which == 14)
                status = zemath_find_xs(n, px, py, peak, in.real(), &left, &right);
            else if (which == 15)
                status = zemath_find_inflection_point(n, px, py, peak, &left, &right);
            else
                status = zemath_iterate_for_finding_inflection(n, px, py, peak, &left, &right);
            if (status < 0) require(left == kSentinel && right == kSentinel);
            break;
        }
        case 17: {
            const int capacity = in.count(40);
            std::vector<int> start(static_cast<size_t>(capacity > 0 ? capacity : 0), kIntSentinel),
                end = start;
            const int status = zemath_cut_to_segments_by_height(
                n, py, in.real(), capacity, data_or_null(start), data_or_null(end));
            if (status < 0) require(all_equal(start, kIntSentinel) && all_equal(end, kIntSentinel));
            for (int k = 0; k < status; ++k)
                require(start[k] <= end[k] && in_range(start[k], len) && in_range(end[k], len) &&
                        (k == 0 || start[k] > end[k - 1] + 1));
            break;
        }
        case 19: {
            double level = kSentinel;
            const int status = zemath_yatasymt(n, py, in.integer(), in.integer(), &level);
            if (status < 0) require(level == kSentinel);
            break;
        }
        case 20: {
            double left = kSentinel, right = kSentinel;
            const int status = zemath_xatasymt(n, px, py, in.integer() % (len + 2), in.real(),
                                               in.real(), &left, &right);
            if (status < 0) require(left == kSentinel && right == kSentinel);
            break;
        }
        default: {  // the shared picker on unsorted X with huge distances
            Outputs out(n);
            int count = n;
            if (zemath_pick_peaks(&count, px, py, data_or_null(out.x), data_or_null(out.y),
                                  data_or_null(out.index), 3 | (flags & 4), 0.0, in.real(),
                                  in.byte() & 1 ? INT32_MAX : 1 + in.count(50)) == 0)
                for (int k = 0; k < count; ++k) require(in_range(out.index[k], len));
            break;
        }
    }
    return 0;
}
