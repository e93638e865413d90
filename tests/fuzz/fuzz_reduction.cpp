// Fuzz target: XY and matrix data reduction, sampling windows (reduction.h) and the
// complex functions (complex.h). Output arrays are exactly as long as the documented
// group counts. Checked on each call: refused calls write nothing; the group counts
// returned are the documented ones; window offsets lie inside the window; a missing part
// makes a complex result missing in both parts.
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

int groups_of(int n, int size) {
    return n > 0 && size > 0 ? n / size + (n % size != 0) : 0;
}

bool has_nanum(d_complex z) {
    return z.re == NANUM || z.im == NANUM;
}

bool missing(d_complex z) {
    return z.re == NANUM && z.im == NANUM;
}

// The binned reductions' range and bin count as their header states them; 0 when the
// call is refused.
double expected_bins(const std::vector<double>& x, int method, double x_start, double x_end,
                     double increment) {
    double low = 0.0, high = 0.0;
    bool any = false;
    if (method >= 12 && method <= 14) {
        low = std::min(x_start, x_end), high = std::max(x_start, x_end);
        any = !std::isnan(low) && !std::isnan(high);
    } else {
        for (double v : x) {
            if (v == NANUM || std::isnan(v)) continue;
            low = any ? std::min(low, v) : v;
            high = any ? std::max(high, v) : v;
            any = true;
        }
    }
    const double span = high - low;
    if (!any || !(increment > 0.0) || increment > span || !std::isfinite(span)) return 0.0;
    const double bins = std::trunc(span / increment) + 1.0;
    return bins > 1e8 ? 0.0 : bins;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(13);
    const int n = in.count(in.byte() & 1 ? 40 : 1500);
    const int len = n > 0 ? n : 0;
    std::vector<double> x = in.reals(n), y = in.reals(n);
    if (in.byte() & 1) std::sort(x.begin(), x.end());
    const std::vector<double> x0 = x, y0 = y;
    const bool null_in = in.byte() % 32 == 0, null_out = in.byte() % 32 == 0;
    const int method = in.byte() % 8 == 0 ? in.integer() : in.pick(16);
    bool inputs_kept = true;
    switch (which) {
        case 0: {
            const int cols = param(in, 200), width = param(in, 15), height = param(in, 15);
            const int shape = param(in, 4), capacity = zemath_fuzz::length(in, 300);
            const int slots = std::max(capacity, 0);
            std::vector<int> ro = zemath_fuzz::int_sentinels(slots),
                             co = zemath_fuzz::int_sentinels(slots),
                             lo = zemath_fuzz::int_sentinels(slots);
            const int outputs = in.byte();
            int* pr = outputs & 1 ? data_or_null(ro) : nullptr;
            int* pc = outputs & 2 ? data_or_null(co) : nullptr;
            int* pl = outputs & 4 ? data_or_null(lo) : nullptr;
            const int count =
                get_sampling_window_offset(cols, width, height, shape, pr, pc, pl, capacity);
            const bool any = pr || pc || pl;
            if (count < 0 || !any) {
                require(zemath_fuzz::all_equal(ro, kIntSentinel) &&
                        zemath_fuzz::all_equal(co, kIntSentinel) &&
                        zemath_fuzz::all_equal(lo, kIntSentinel));
            }
            if (count >= 0) {
                require(count >= 1);
                if (width >= 1 && height >= 1)
                    require(static_cast<long>(count) <= 1L * width * height);
            }
            if (count >= 1 && any) {
                require(count <= capacity);
                for (int k = 0; k < count; ++k) {
                    if (pr) require(ro[k] >= -(height / 2) && ro[k] <= (height - 1) / 2);
                    if (pc) require(co[k] >= -(width / 2) && co[k] <= (width - 1) / 2);
                    if (pr && pc && pl) require(lo[k] == 1L * ro[k] * cols + co[k]);
                }
                for (int k = count; k < slots; ++k)
                    require(ro[k] == kIntSentinel && co[k] == kIntSentinel &&
                            lo[k] == kIntSentinel);
            }
            break;
        }
        case 1: {
            const int per = in.byte() % 16 == 0 ? in.integer() : in.count(64);
            const unsigned un = static_cast<unsigned>(len), uper = static_cast<unsigned>(per);
            const int expected =
                uper == 0 || un == 0 ? 0 : static_cast<int>(un / uper + (un % uper != 0));
            std::vector<double> out = zemath_fuzz::sentinels(expected);
            const int status =
                zemath_reducexy_n_points(null_in ? nullptr : data_or_null(y),
                                         null_out ? nullptr : data_or_null(out), un, uper, method);
            if (status < 0)
                require(zemath_fuzz::all_equal(out, kSentinel));
            else
                require(status == expected);
            break;
        }
        case 2: {
            const double xs = in.real(), xe = in.real();
            const double inc =
                in.byte() & 1 ? in.real() : static_cast<double>(in.byte() + 1) / 16.0;
            const double bins = len > 0 ? expected_bins(x, method, xs, xe, inc) : 0.0;
            if (bins > 5000) break;  // a valid call whose output would be too large here
            std::vector<double> out = zemath_fuzz::sentinels(bins > 0 ? static_cast<int>(bins) : 1);
            const int status = zemath_reducexy_fixing_increbin(
                null_in ? nullptr : data_or_null(x), data_or_null(y), static_cast<unsigned>(len),
                xs, xe, method, null_out ? nullptr : data_or_null(out), inc);
            if (status < 0)
                require(zemath_fuzz::all_equal(out, kSentinel) &&
                        (bins == 0 || null_in || null_out));
            else
                require(status == static_cast<int>(bins) && !null_in && !null_out);
            break;
        }
        case 3: {
            const int groups = param(in, 400);
            if (groups > 5000) break;
            std::vector<double> out = zemath_fuzz::sentinels(groups);
            const int status = zemath_reducexy_n_groups(
                null_in ? nullptr : data_or_null(x), data_or_null(y), n, in.real(), in.real(),
                method, null_out ? nullptr : data_or_null(out), groups);
            if (status < 0)
                require(zemath_fuzz::all_equal(out, kSentinel));
            else
                require(status == groups);
            break;
        }
        case 4: {
            const int edges_n = zemath_fuzz::length(in, 100);
            std::vector<double> edges = in.reals(edges_n);
            if (in.byte() & 1) std::sort(edges.begin(), edges.end());
            std::vector<int> last = zemath_fuzz::int_sentinels(edges_n);
            const int status = zemath_group_xy_by_x_new(null_in ? nullptr : data_or_null(x), n,
                                                        data_or_null(edges), edges_n,
                                                        null_out ? nullptr : data_or_null(last));
            if (status < 0) {
                require(zemath_fuzz::all_equal(last, kIntSentinel));
            } else {
                require(status == edges_n);
                for (int k = 0; k < edges_n; ++k)
                    require(last[k] >= (k == 0 ? -1 : last[k - 1]) && last[k] < len);
                require(last[edges_n - 1] == len - 1);  // the last bin takes the rest
            }
            break;
        }
        case 5:
        case 6: {
            double step = kSentinel;
            const int status =
                which == 5 ? zemath_mean_increment(null_in ? nullptr : data_or_null(x), n,
                                                   null_out ? nullptr : &step)
                           : zemath_sampling_resolution(n, null_in ? nullptr : data_or_null(x),
                                                        null_out ? nullptr : &step, in.real());
            if (status == -11 || status == -13) require(same_bits(step, kSentinel));
            if (status == 0) require(!same_bits(step, kSentinel));
            break;
        }
        case 7: {
            const int rows = std::min(param(in, 40), 64), cols = std::min(param(in, 40), 64);
            const int width = param(in, 9), height = param(in, 9), shape = param(in, 4);
            const int cells = rows > 0 && cols > 0 ? rows * cols : 0;
            std::vector<double> z = in.reals(cells);
            const int out_n = groups_of(rows, height) * groups_of(cols, width);
            std::vector<double> out = zemath_fuzz::sentinels(out_n);
            int out_rows = kIntSentinel, out_cols = kIntSentinel;
            const bool counts = in.byte() & 1;
            const int status =
                zemath_reduce_2D_data(null_in ? nullptr : data_or_null(z), rows, cols, width,
                                      height, shape, method, null_out ? nullptr : data_or_null(out),
                                      counts ? &out_rows : nullptr, counts ? &out_cols : nullptr);
            if (status != 0) {
                require(zemath_fuzz::all_equal(out, kSentinel));
                require(out_rows == kIntSentinel && out_cols == kIntSentinel);
            } else if (counts) {
                require(out_rows == groups_of(rows, height) && out_cols == groups_of(cols, width));
            }
            break;
        }
        case 8:
        case 9: {
            const int sampling = param(in, 50);
            const int expected = groups_of(n, sampling);
            const bool alias = in.byte() & 1;
            std::vector<double> ox = zemath_fuzz::sentinels(expected),
                                oy = zemath_fuzz::sentinels(expected);
            double* pox = alias ? data_or_null(x) : data_or_null(ox);
            double* poy = alias ? data_or_null(y) : data_or_null(oy);
            inputs_kept = !alias;
            const double* pin = null_in ? nullptr : data_or_null(x);
            const int status =
                which == 8 ? reduce_xy_get_sampling_data(pin, data_or_null(y), n, sampling, method,
                                                         null_out ? nullptr : pox, poy)
                           : zemath_skip_points_in_every_sampling_size(
                                 pin, data_or_null(y), n, sampling, null_out ? nullptr : pox, poy);
            if (status < 0) {
                require(same_bits(x, x0) && same_bits(y, y0));
                require(zemath_fuzz::all_equal(ox, kSentinel) &&
                        zemath_fuzz::all_equal(oy, kSentinel));
            } else {
                require(status == expected);
                if (which == 9)
                    for (int k = 0; k < expected; ++k)
                        require(
                            same_bits(alias ? y[k] : oy[k], y0[static_cast<size_t>(k) * sampling]));
                if (alias)
                    for (int k = expected; k < len; ++k)
                        require(same_bits(x[k], x0[k]) && same_bits(y[k], y0[k]));
            }
            break;
        }
        default: {
            // Complex functions.
            const d_complex z{in.real(), in.real()}, w{in.real(), in.real()};
            const double r = in.real();
            const int p = in.integer();
            d_complex v{};
            bool nanum_in = has_nanum(z);
            switch (in.pick(14)) {
                case 0: {
                    const double a = cabsz(z);
                    if (nanum_in)
                        require(a == NANUM);
                    else
                        require(std::isnan(a) || a >= 0.0);
                    return 0;
                }
                case 1:
                    v = sqrtz(z);
                    if (!nanum_in) require(std::isnan(v.re) || v.re >= 0.0 || v.re == NANUM);
                    break;
                case 2:
                    v = ipow(z, p % 4096);
                    break;
                case 3:
                    v = rpow(z, r), nanum_in = nanum_in || r == NANUM;
                    break;
                case 4:
                    v = cpowz(z, w), nanum_in = nanum_in || has_nanum(w);
                    break;
                case 5:
                    v = logz(z);
                    if (!nanum_in && !std::isnan(v.im)) require(std::fabs(v.im) <= M_PI);
                    break;
                case 6:
                    v = expz(z);
                    break;
                case 7:
                    v = sinz(z);
                    break;
                case 8:
                    v = cosz(z);
                    break;
                case 9:
                    v = tanz(z);
                    break;
                case 10:
                    v = tanhz(z);
                    if (!missing(v)) require(std::isfinite(v.re) && std::isfinite(v.im));
                    break;
                case 11:
                    v = atanz(z);
                    break;
                case 12:
                    v = atanhz(z);
                    break;
                default:
                    v = ipow(z, p);
                    break;
            }
            if (nanum_in) require(missing(v));
            return 0;
        }
    }
    if (inputs_kept) require(same_bits(x, x0) && same_bits(y, y0));
    return 0;
}
