// Every family's exports called from 8 threads at once: each thread works on its own
// data and all of them read the same shared inputs. Deterministic rows must give exactly
// the single-threaded result; random rows must succeed and differ between threads. Run
// under ThreadSanitizer by the tsan preset (`make tsan`), where any data race fails it.
//
// A new family adds its rows to kRows: a name, whether the result is deterministic, and
// a function of (shared inputs, thread number) returning the values to compare.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "zemath.h"
#include "zemath/sort.h"
#include "zemath/string_array.hpp"

namespace {

constexpr int kThreads = 8;
constexpr int kRepeats = 4;

// Read-only inputs every thread uses at once.
struct Shared {
    std::vector<double> data;    // unsorted, with NANUM and NaN gaps
    std::vector<double> sorted;  // ascending
    std::vector<double> targets;
    std::vector<double> table;  // probabilities summing to 1
};

const Shared& shared() {
    static const Shared s = [] {
        Shared out;
        for (int i = 0; i < 4096; ++i)
            out.data.push_back(static_cast<double>((i * 7919) % 10007) / 10007.0 - 0.3);
        out.data[17] = NANUM;
        out.data[101] = NAN;
        out.sorted = out.data;
        out.sorted[17] = 0.0;
        out.sorted[101] = 0.0;
        std::sort(out.sorted.begin(), out.sorted.end());
        out.targets = {-1.0, 0.0, 0.25, 0.5, 0.7, 2.0};
        out.table.assign(16, 1.0 / 16);
        return out;
    }();
    return s;
}

struct Row {
    const char* name;
    bool deterministic;
    std::function<std::vector<double>(const Shared&, int thread)> run;
};

// The thread number only selects data slices, so that threads work on different inputs
// while a deterministic row's result still depends on the thread alone.
std::vector<double> slice(const std::vector<double>& v, int thread) {
    const size_t begin = static_cast<size_t>(thread) * 64;
    return {v.begin() + static_cast<long>(begin), v.begin() + static_cast<long>(begin + 2048)};
}

// A curve of 512 points: three peaks (the first moved by the thread number) on a ripple.
struct Curve {
    std::vector<double> x, y;
    int n() const { return static_cast<int>(x.size()); }
};

Curve curve(int thread) {
    Curve c;
    for (int k = 0; k < 512; ++k) {
        const double x = 0.01 * k;
        const auto bell = [x](double centre, double width) {
            return std::exp(-(x - centre) * (x - centre) / (2 * width * width));
        };
        c.x.push_back(x);
        c.y.push_back(bell(1.0 + 0.05 * thread, 0.1) + 0.6 * bell(2.5, 0.2) +
                      0.8 * bell(4.0, 0.15) + 0.01 * std::sin(37.0 * k));
    }
    return c;
}

void append(std::vector<double>& out, const std::vector<double>& values) {
    out.insert(out.end(), values.begin(), values.end());
}

// Scattered points in the unit square (its corners included), shifted per thread.
struct Scatter {
    std::vector<double> x, y, z;
};

Scatter scattered(int thread, int n) {
    Scatter p;
    const auto add = [&p](double x, double y) {
        p.x.push_back(x);
        p.y.push_back(y);
        p.z.push_back(std::sin(3 * x) + y * y);
    };
    for (double cx : {0.0, 1.0})
        for (double cy : {0.0, 1.0}) add(cx, cy);
    for (int k = 1; k <= n - 4; ++k) {
        const double u = k * 0.6180339887498949 + 0.01 * thread, v = k * 0.7548776662466927;
        add(u - std::floor(u), v - std::floor(v));
    }
    return p;
}

// A full 12 x 10 grid, x step 0.5 and y step 0.25.
Scatter grid_points(int thread) {
    Scatter p;
    for (int i = 0; i < 12; ++i)
        for (int j = 0; j < 10; ++j) {
            p.x.push_back(0.5 * j);
            p.y.push_back(0.25 * i);
            p.z.push_back(i * j + thread);
        }
    return p;
}

const Row kRows[] = {
    {"primitives", true,
     [](const Shared& s, int t) {
         std::vector<double> x = slice(s.data, t), out;
         double mn = 0, mx = 0, variance = 0;
         int imin = 0, imax = 0, count = 0;
         out.push_back(zemath_d_sum(x.data(), 2048, &mn, &mx, &imin, &imax, &count));
         out.push_back(zemath_d_mean_variance(x.data(), 2048, &variance, &count));
         out.push_back(variance);
         double fraction = 0;
         out.push_back(zemath_d_find_most(s.data.data(), 4096, 20, &fraction));
         std::vector<double> cumulative(2048);
         zemath_d_cumulative_sum(x.data(), 0, 2048, cumulative.data(), nullptr);
         out.push_back(cumulative.back());
         zemath_d_stretch(x.data(), 2048, 0.0, 1.0, 0.0, 100.0);
         out.push_back(x[5]);
         return out;
     }},
    {"sort", true,
     [](const Shared& s, int t) {
         std::vector<double> x = slice(s.data, t);
         theMergeSort(x.data(), 0, 2047, sizeof(double), GetAppropriateCompareAscend(11));
         std::vector<double> y = slice(s.data, t);
         theQuickSort(y.data(), 0, 2047, sizeof(double), GetAppropriateCompareDescend(11));
         x.insert(x.end(), y.begin(), y.end());
         return x;
     }},
    {"search", true,
     [](const Shared& s, int t) {
         const int n = static_cast<int>(s.sorted.size());
         std::vector<int> found(s.targets.size());
         std::vector<double> values(s.targets.size()), out;
         zemath_array_find_indices(s.sorted.data(), n, s.targets.data(), 6, found.data());
         out.insert(out.end(), found.begin(), found.end());
         zemath_find_nearest_values(s.sorted.data(), n, s.targets.data(), 6, found.data(),
                                    values.data());
         out.insert(out.end(), values.begin(), values.end());
         int index = -1, order = -1;
         zemath_find_nearest_index(s.data.data(), n, 0.01 * t, &index);
         out.push_back(index);
         zemath_check_order(s.data.data(), n, 0.1, &order);
         out.push_back(order);
         double lower = -0.3 * t, upper = 17.0;
         zemath_round_range(&lower, &upper, 7, nullptr);
         out.push_back(lower);
         return out;
     }},
    {"distributions", true,
     [](const Shared&, int t) {
         int status = 0;
         const double x = 0.5 + t;
         return std::vector<double>{normcdf(x, 1, &status),
                                    tcdf(x, 7.5, 1, &status),
                                    finv(0.9, 3.0, 12.0 + t, &status),
                                    betainv(0.3, 2.0, 3.0 + t, &status),
                                    gaminv(0.7, 2.5, 1.0, &status),
                                    binocdf(t, 20, 0.3, 2, &status),
                                    nctcdf(x, 5.0, 1.0, 50, &status),
                                    ncchi2cdf(x, 3.0, 2.0, &status),
                                    srangecdf(x, 10.0, 3, &status),
                                    lambertW(x, 0, 0, &status)};
     }},
    {"random", false,
     [](const Shared& s, int) {
         std::vector<double> out(256);
         std::vector<int> counts(256);
         EXPECT_EQ(normrnd(out.data(), 256, 0.0, 1.0), 0);
         EXPECT_EQ(gamrnd(out.data(), 256, 3.0, 1.0), 0);
         EXPECT_EQ(disrnd(counts.data(), 256, s.table.data(), 16, 0, 0), 0);
         EXPECT_EQ(binornd(counts.data() + 128, 128, 10, 0.4), 0);
         const double identity[] = {1.0, 0.0, 0.0, 1.0}, mean[] = {0.0, 0.0};
         EXPECT_EQ(mvnrnd(out.data() + 128, 64, 2, mean, identity), 0);
         out.insert(out.end(), counts.begin(), counts.end());
         return out;
     }},
    {"smoothing", true,
     [](const Shared&, int t) {
         const Curve c = curve(t);
         const int n = c.n();
         std::vector<double> out, s(c.y.size());
         for (int method = 0; method < 4; ++method) {
             EXPECT_EQ(zemath_smooth(n, c.y.data(), s.data(), 3, method, 1, 3, 2, 0, 50.0, 0, 0, 2),
                       0);
             append(out, s);
         }
         EXPECT_EQ(zemath_savitsky_golay(c.y.data(), s.data(), n, 4, 4, 3, 1, 0), 0);
         append(out, s);
         EXPECT_EQ(zemath_savitsky_golay_derivative(c.x.data(), c.y.data(), s.data(), n, 3, 3, 2, 1,
                                                    true),
                   0);
         append(out, s);
         EXPECT_EQ(zemath_adj_average(s.data(), c.y.data(), n, 2, 2, 0), 0);
         append(out, s);
         EXPECT_EQ(zemath_median_filter(n, c.y.data(), s.data(), 4, 30.0, 2, true), 0);
         append(out, s);
         EXPECT_EQ(zemsp_fft_filter_smoothing(n, c.y.data(), s.data(), 20.0), 0);
         append(out, s);
         double span = 0.05;
         EXPECT_EQ(zemath_loess_xUnevenly(n, 1, 1, &span, c.x.data(), c.y.data(), s.data(), false),
                   0);
         append(out, s);
         EXPECT_EQ(zemath_loess_xEvenly(n, 0, 0, &span, c.y.data(), s.data(), false), 0);
         append(out, s);
         double coef[4] = {};
         EXPECT_EQ(zemath_polynomial_fit(c.x.data(), c.y.data(), n, 3, coef), 0);
         out.insert(out.end(), coef, coef + 4);
         out.push_back(zemath_polynomial(coef, 3, 1.5));
         return out;
     }},
    {"moving", true,
     [](const Shared&, int t) {
         const Curve c = curve(t);
         const int n = c.n();
         std::vector<double> out, s(c.y.size());
         const double weights[5] = {1, 2, 3, 2, 1};
         EXPECT_EQ(zemath_emovavg(s.data(), c.y.data(), n, 5, 0, 0), 0);
         append(out, s);
         EXPECT_EQ(zemath_mmovavg(s.data(), c.y.data(), n, 5, 1), 0);
         append(out, s);
         EXPECT_EQ(zemath_tmovavg(s.data(), c.y.data(), n, 6, 0), 0);
         append(out, s);
         EXPECT_EQ(zemath_wmovavg(s.data(), c.y.data(), n, weights, 5, 0), 0);
         append(out, s);
         EXPECT_EQ(zemath_movrms(s.data(), c.y.data(), n, 7, 0), 0);
         append(out, s);
         EXPECT_EQ(zemath_movslope(s.data(), c.y.data(), n, 7, 0), 0);
         append(out, s);
         EXPECT_EQ(zemath_d_running_ave_circular(s.data(), c.y.data(), n, 9, 0), 0);
         append(out, s);
         return out;
     }},
    {"calculus", true,
     [](const Shared&, int t) {
         const Curve c = curve(t);
         const int n = c.n();
         std::vector<double> out, d = c.y;
         EXPECT_EQ(zemath_derivative(c.x.data(), d.data(), n, 1), 0);
         append(out, d);
         for (int method = 0; method < 2; ++method) {
             zemath_IntegrationResult r{};
             EXPECT_EQ(
                 zemath_integrate(c.x.data(), c.y.data(), 3, n - 2, &r, method, method, nullptr),
                 0);
             out.insert(out.end(), {r.area, r.abs_area, r.x_half_area, r.x_centroid, r.fwhm,
                                    static_cast<double>(r.peak_index)});
         }
         double area = 0;
         EXPECT_EQ(zemath_integrate_with_bounds(c.x.data(), c.y.data(), n, 1.0, 3.5, &area), 0);
         out.push_back(area);
         std::vector<double> cumulative(c.y.size());
         EXPECT_EQ(zemath_numeric_integral(c.x.data(), c.y.data(), n, cumulative.data()), 0);
         append(out, cumulative);
         const double width = 1.0 + t;  // the context differs per thread
         const auto bell = [](double x, void* context) {
             const double w = *static_cast<const double*>(context);
             return std::exp(-x * x / w);
         };
         double value = 0, error = 0;
         EXPECT_EQ(zemath_function_integral(bell, const_cast<double*>(&width), -3.0, 2.0, 1e-10,
                                            &value, &error),
                   0);
         out.push_back(value);
         EXPECT_EQ(zemath_function_integral_on_new_romberg(bell, const_cast<double*>(&width), -3.0,
                                                           2.0, 1e-10, 20, &value, &error),
                   0);
         out.push_back(value);
         const double scales[] = {2.0, 5.0};
         std::vector<double> re(2 * c.y.size()), im(re.size());
         EXPECT_EQ(
             zemath_cwt(c.y.data(), n, scales, 2, ZEMATH_WAVELET_MORLET, 6.0, re.data(), im.data()),
             0);
         append(out, re);
         append(out, im);
         return out;
     }},
    {"peaks", true,
     [](const Shared&, int t) {
         const Curve c = curve(t);
         const int n = c.n();
         std::vector<double> out, px(c.y.size()), py(c.y.size());
         std::vector<int> idx(c.y.size());
         const auto keep = [&](int found) {
             out.push_back(found);
             out.insert(out.end(), px.begin(), px.begin() + found);
             out.insert(out.end(), idx.begin(), idx.begin() + found);
         };
         int size = n;
         EXPECT_EQ(zemath_find_peaks_by_local_maximum(&size, c.x.data(), c.y.data(), px.data(),
                                                      py.data(), idx.data(), 1, 5),
                   0);
         keep(size);
         const int local = size;
         const std::vector<int> local_idx(idx.begin(), idx.begin() + local);
         size = n;
         EXPECT_EQ(zemath_find_local_extremes(&size, c.x.data(), c.y.data(), px.data(), py.data(),
                                              idx.data(), 3, 4),
                   0);
         keep(size);
         size = n;
         EXPECT_EQ(zemath_find_peaks_by_search_window(&size, c.x.data(), c.y.data(), px.data(),
                                                      py.data(), idx.data(), 1, 0.5, 0.05),
                   0);
         keep(size);
         size = n;
         EXPECT_EQ(zemath_find_peaks_1st_derivative(&size, c.x.data(), c.y.data(), px.data(),
                                                    py.data(), idx.data(), 1, true, 7, 2),
                   0);
         keep(size);
         size = n;
         EXPECT_EQ(zemath_find_peaks_2nd_derivative(&size, c.x.data(), c.y.data(), px.data(),
                                                    py.data(), idx.data(), 1, 3),
                   0);
         keep(size);
         size = n;
         EXPECT_EQ(zemsp_find_peaks_2nd_derivative(&size, c.x.data(), c.y.data(), px.data(),
                                                   py.data(), idx.data(), 1, 3, 7, 2),
                   0);
         keep(size);
         EXPECT_EQ(zemath_match_peaks_centers_by_index(c.x.data(), c.y.data(), n, local_idx.data(),
                                                       px.data(), py.data(), local),
                   0);
         int peaks = local;
         idx.assign(local_idx.begin(), local_idx.end());
         idx.resize(c.y.size());
         EXPECT_EQ(zemath_test_peaks_by_height(&peaks, px.data(), py.data(), idx.data(), 0.2), 0);
         keep(peaks);
         EXPECT_EQ(zemath_test_peaks_by_number(peaks, px.data(), py.data(), idx.data(), 2), 0);
         keep(std::min(peaks, 2));
         std::vector<int> markers(2 * local_idx.size() + 1);
         std::vector<double> mx(markers.size()), my(markers.size());
         EXPECT_EQ(zemath_find_markers_of_peaks_by_height_and_width(
                       n, c.x.data(), c.y.data(), local, local_idx.data(), 0.5, markers.data(),
                       mx.data(), my.data()),
                   0);
         append(out, mx);
         out.push_back(zemath_find_k_min_max(c.y.data(), n, 10 + t, t & 1));
         return out;
     }},
    {"baseline", true,
     [](const Shared&, int t) {
         const Curve c = curve(t);
         const int n = c.n();
         std::vector<double> out, bx(8), by(8);
         EXPECT_EQ(zemath_init_baseline_by_connect_ends(n, c.x.data(), c.y.data(), 8, bx.data(),
                                                        by.data()),
                   0);
         append(out, by);
         std::vector<int> idx(c.y.size());
         const int flat =
             zemath_find_baseline_part_in_smooth_curve(n, c.x.data(), c.y.data(), idx.data());
         EXPECT_GE(flat, 0);
         out.push_back(flat);
         out.insert(out.end(), idx.begin(), idx.begin() + std::max(flat, 0));
         const std::vector<double> base(c.y.size(), 0.0);
         const int peak[2] = {100 + 20 * t, 300};
         int markers[4] = {}, option = 0;
         double mx[4] = {}, my[4] = {};
         EXPECT_EQ(zemath_make_base_markers(markers, mx, my, 4, peak, 2, c.x.data(), c.y.data(),
                                            &option, base.data(), n),
                   0);
         out.insert(out.end(), markers, markers + 4);
         out.insert(out.end(), mx, mx + 4);
         out.push_back(zemath_get_noise_level(n, c.y.data()));
         out.push_back(zemath_check_linear(n, c.x.data(), c.y.data(), 5 * t, 0.01, 0.01, t & 1));
         std::vector<int> start(64), end(64);
         const int regions = zemath_find_base_regions(n, c.x.data(), c.y.data(), 9, 64,
                                                      start.data(), end.data(), 0.01, 0.001, 0);
         EXPECT_GE(regions, 0);
         out.push_back(regions);
         out.insert(out.end(), start.begin(), start.begin() + std::max(regions, 0));
         out.insert(out.end(), end.begin(), end.begin() + std::max(regions, 0));
         return out;
     }},
    {"peak measures", true,
     [](const Shared&, int t) {
         const Curve c = curve(t);
         const int n = c.n();
         std::vector<double> out, crossings(c.y.size());
         int count = 0;
         EXPECT_EQ(
             zemath_get_level_crossing(n, c.x.data(), c.y.data(), 0.3, &count, crossings.data()),
             0);
         out.push_back(count);
         out.insert(out.end(), crossings.begin(), crossings.begin() + count);
         double v = 0;
         EXPECT_EQ(zemath_x_from_y(n, c.x.data(), c.y.data(), 0.25, &v), 0);
         out.push_back(v);
         EXPECT_EQ(zemath_y_form_x(n, c.x.data(), c.y.data(), 1.234 + 0.1 * t, &v, true, true), 0);
         out.push_back(v);
         std::vector<double> g(c.y.size());
         EXPECT_EQ(zemath_generate_peak_data(n, c.x.data(), g.data(), t & 1, 2.0 + 0.1 * t, 1.5,
                                             0.4, 0.1),
                   0);
         append(out, g);
         double moments[5] = {};
         EXPECT_EQ(zemath_calc_peak_moments(n, c.x.data(), g.data(), nullptr, 50, 400, moments), 0);
         out.insert(out.end(), moments, moments + 5);
         return out;
     }},
    {"interpolation", true,
     [](const Shared&, int t) {
         const Curve c = curve(t);
         const int n = c.n();
         std::vector<double> out, xnew(97), ynew(97);
         for (int k = 0; k < 97; ++k) xnew[k] = -0.2 + k * 0.055 + 0.001 * t;
         for (int method = 0; method <= 5; ++method) {
             EXPECT_EQ(zemath_interpolate(c.x.data(), c.y.data(), n, xnew.data(), 97, ynew.data(),
                                          method, method % 3),
                       0);
             append(out, ynew);
         }
         return out;
     }},
    {"rainflow", true,
     [](const Shared& s, int t) {
         std::vector<double> load(s.data.begin() + 64 * t, s.data.begin() + 64 * t + 600);
         for (double& v : load)
             if (v == NANUM || std::isnan(v)) v = 0.1;
         const int n = static_cast<int>(load.size());
         std::vector<double> out, time(load.size());
         for (int k = 0; k < n; ++k) time[k] = k;
         std::vector<int> from(load.size()), to(load.size());
         std::vector<double> range(load.size()), mean(load.size()), count(load.size());
         int cycles = 0, closed = 0;
         EXPECT_EQ(
             zemath_rainflow_cycles(load.data(), n, 0.05, 0, n, from.data(), to.data(),
                                    range.data(), mean.data(), count.data(), &cycles, &closed),
             0);
         out.push_back(cycles);
         out.push_back(closed);
         out.insert(out.end(), range.begin(), range.begin() + cycles);
         double damage = 0;
         EXPECT_EQ(
             zemath_rainflow_damage(range.data(), count.data(), cycles, 3.0, 1e6, 0.1, &damage), 0);
         out.push_back(damage);
         std::vector<int> total(64), closed_m(64), from_to(64);
         EXPECT_EQ(Rainflow_Matrix(n, time.data(), load.data(), 8, total.data(), closed_m.data(),
                                   0.05, 0, 0, 0, 0),
                   0);
         out.insert(out.end(), total.begin(), total.end());
         std::vector<double> from_load(static_cast<size_t>(cycles)), to_load(from_load.size());
         for (int k = 0; k < cycles; ++k) from_load[k] = load[from[k]], to_load[k] = load[to[k]];
         EXPECT_EQ(Rainflow_Cycle_2_Rainflow_Matrix(cycles, from_load.data(), to_load.data(), 8,
                                                    from_to.data(), 0, 0, 0, 0),
                   0);
         EXPECT_EQ(MinToMax_RFM_2_RangeMean_RFM(8, from_to.data()), 0);
         out.insert(out.end(), from_to.begin(), from_to.end());
         EXPECT_EQ(RangeMean_RFM_2_MinToMax_RFM(8, from_to.data()), 0);
         out.insert(out.end(), from_to.begin(), from_to.end());
         int kept = n;
         EXPECT_EQ(Rainflow_Filtering(&kept, time.data(), load.data(), 0.2), 0);
         out.push_back(kept);
         out.insert(out.end(), load.begin(), load.begin() + kept);
         return out;
     }},
    {"xyz examination", true,
     [](const Shared&, int t) {
         const Scatter g = grid_points(t);
         const int n = static_cast<int>(g.x.size());
         std::vector<double> out;
         zemath_xyz_exam rec{1e-8, 1e-8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1};
         const int category =
             zemath_xyz_examine_data_pro(n, g.x.data(), g.y.data(), g.z.data(), &rec);
         out.insert(out.end(), {static_cast<double>(category), static_cast<double>(rec.nVar),
                                rec.dXStep, rec.dYStep, rec.dXmax, rec.dYmax});
         int nvar = 0;
         double v[6] = {};
         out.push_back(zemath_xyz_examine_data_ex(n, g.x.data(), g.y.data(), g.z.data(), 1e-8, 1e-8,
                                                  &nvar, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5],
                                                  true, 1));
         out.insert(out.end(), v, v + 6);
         double step = 0;
         int count = 0;
         EXPECT_EQ(zemath_find_array_step(g.x.data(), n, &step, 1e-6), 0);
         out.push_back(step);
         EXPECT_EQ(zemath_find_array_step_stat(g.y.data(), n, &step, 1e-9, &count), 0);
         out.push_back(step);
         out.push_back(count);
         EXPECT_EQ(zemath_find_array_step_by_gcd(g.x.data(), n, &step, 1e-6, 0.0), 0);
         out.push_back(step);
         const int nx = 10 + t, ny = 12;
         std::vector<double> mat(static_cast<size_t>(nx * ny), -1.0);
         EXPECT_EQ(zemath_convert_regular_xyz_to_matrix(n, g.x.data(), g.y.data(), g.z.data(),
                                                        mat.data(), 0.0, 0.5, nx, 0.0, 0.25, ny),
                   0);
         append(out, mat);
         std::vector<double> x = g.x, y = g.y, z = g.z;
         const int kept =
             zemath_xyz_remove_duplicates(n, x.data(), y.data(), z.data(), 1, 1e-9, 1e-9, 0);
         out.push_back(kept);
         out.insert(out.end(), z.begin(), z.begin() + std::max(kept, 0));
         return out;
     }},
    {"triangulation", true,
     [](const Shared&, int t) {
         const Scatter p = scattered(t, 300);
         const int n = static_cast<int>(p.x.size());
         std::vector<double> out;
         for (unsigned options : {0u, static_cast<unsigned>(ZEMATH_TRI_ENGINE)}) {
             Triangulation tri;
             zemath_triangulation_init(&tri);
             EXPECT_EQ(zemath_triangulation(n, p.x.data(), p.y.data(), p.z.data(), &tri, options),
                       0);
             out.push_back(tri.triangles);
             out.insert(out.end(), tri.tri, tri.tri + 6 * tri.triangles);
             double value = 0;
             EXPECT_TRUE(zemath_Triangulation_value(&tri, 0.5, 0.5, &value));
             out.push_back(value);
             int count = 0;
             std::vector<double> bx(static_cast<size_t>(tri.boundaryCount)), by(bx), bz(bx);
             EXPECT_EQ(
                 zemath_triangulation_boundary(&tri, &count, bx.data(), by.data(), bz.data(), 0),
                 0);
             append(out, bz);
             const double qx[] = {0.2, 0.4, 0.6, 0.8}, qy[] = {0.3, 0.5, 0.7, 0.1};
             double qz[4] = {};
             EXPECT_EQ(zemath_tri_contour_interpolate(4, qx, qy, qz, &tri), 0);
             out.insert(out.end(), qz, qz + 4);
             zemath_triangulation_free(&tri);
         }
         const double tx[] = {0.25, 0.5, 0.75}, ty[] = {0.5, 0.25, 0.75};
         double tz[3] = {};
         EXPECT_EQ(
             zemath_tri_linear_interpolate(n, p.x.data(), p.y.data(), p.z.data(), 3, tx, ty, tz, 0),
             0);
         out.insert(out.end(), tz, tz + 3);
         EXPECT_EQ(zemath_tri_natural_neighbor_interpolate(n, p.x.data(), p.y.data(), p.z.data(), 3,
                                                           tx, ty, tz, 0),
                   0);
         out.insert(out.end(), tz, tz + 3);
         Triangulation reduced;
         zemath_triangulation_init(&reduced);
         EXPECT_EQ(zemath_triangulation_reduce(n, p.x.data(), p.y.data(), p.z.data(), &reduced, 40),
                   0);
         out.push_back(reduced.nodes);
         out.insert(out.end(), reduced.x, reduced.x + reduced.nodes);
         zemath_triangulation_free(&reduced);
         const Scatter g = grid_points(t);
         Triangulation gridded;
         zemath_triangulation_init(&gridded);
         EXPECT_EQ(zemath_construct_triangulation(12, 10, g.x.data(), g.y.data(), g.z.data(),
                                                  &gridded, 0),
                   0);
         out.push_back(gridded.edges);
         zemath_triangulation_free(&gridded);
         return out;
     }},
    {"triangulation supplementary area", true,
     [](const Shared&, int t) {
         // z = x on a 3 by 2 grid over [0, 2] x [0, 1]; the line x = level at a level
         // per thread, closed along the boundary around the part above it.
         const double gx[6] = {0, 1, 2, 0, 1, 2}, gy[6] = {0, 0, 0, 1, 1, 1};
         const double level = 0.25 + 0.1 * t;
         double lx[2] = {level, level}, ly[2] = {0.0, 1.0};
         TriContourLine line = {2, 0, lx, ly};
         TriContourLevel levels = {level, 1, &line};
         TriContour contour = {1, &levels}, rings;
         zemath_tri_contour_init(&rings);
         Triangulation mesh;
         zemath_triangulation_init(&mesh);
         EXPECT_EQ(zemath_construct_triangulation(2, 3, gx, gy, gx, &mesh, 0), 0);
         EXPECT_EQ(zemath_triangulation_supplementary_area(&mesh, &contour, &rings,
                                                           ZEMATH_TRI_AREA_ABOVE),
                   0);
         std::vector<double> out;
         for (int l = 0; l < rings.levelCount; ++l)
             for (int k = 0; k < rings.levels[l].lineCount; ++k) {
                 const TriContourLine& ring = rings.levels[l].line[k];
                 out.push_back(ring.count);
                 out.insert(out.end(), ring.x, ring.x + ring.count);
                 out.insert(out.end(), ring.y, ring.y + ring.count);
             }
         zemath_tri_contour_free(&rings);
         zemath_triangulation_free(&mesh);
         return out;
     }},
    {"kriging", true,
     [](const Shared&, int t) {
         const Scatter p = scattered(t, 200);
         const int n = static_cast<int>(p.x.size());
         std::vector<double> out, gx(9), gy(7), grid(63);
         for (int k = 0; k < 9; ++k) gx[k] = k / 8.0;
         for (int k = 0; k < 7; ++k) gy[k] = k / 6.0;
         EXPECT_EQ(zemath_2d_kriging_grid(n, p.x.data(), p.y.data(), p.z.data(), 4, 1.0, 1.5, 9,
                                          gx.data(), 7, gy.data(), grid.data(), 0),
                   0);
         append(out, grid);
         std::vector<double> zt(9), var(9);
         EXPECT_EQ(zemath_2d_kriging_scat_ex(n, p.x.data(), p.y.data(), p.z.data(), 3, 2.0, 1.0, 9,
                                             gx.data(), gx.data(), zt.data(), var.data(), 30),
                   0);
         append(out, zt);
         append(out, var);
         EXPECT_EQ(zemath_2d_kriging_scat(n, p.x.data(), p.y.data(), p.z.data(), 4, 1.0, 1.8, 7,
                                          gy.data(), gx.data(), zt.data(), 0),
                   0);
         out.insert(out.end(), zt.begin(), zt.begin() + 7);
         return out;
     }},
    {"image filters", true,
     [](const Shared&, int t) {
         constexpr int rows = 24, cols = 30;
         std::vector<unsigned short> image(rows * cols);
         for (int k = 0; k < rows * cols; ++k)
             image[k] = static_cast<unsigned short>((k * 7919 + 131 * t) % 4000);
         std::vector<double> out;
         std::vector<unsigned short> work = image;
         EXPECT_EQ(
             zemath_us_percentile_filter(work.data(), rows, cols, 50.0, 3, 5, 1, 0.0, 0, 0, -1, -1),
             0);
         out.insert(out.end(), work.begin(), work.end());
         // The rectangle through both histogram paths (a low and a tall window): their
         // counts are per call, nothing shared.
         std::vector<unsigned short> tall(48 * cols);
         for (std::size_t k = 0; k < tall.size(); ++k)
             tall[k] = static_cast<unsigned short>((k * 40503 + 977 * t) % 65536);
         for (const int height : {5, 45}) {
             std::vector<unsigned short> band = tall;
             EXPECT_EQ(zemath_us_percentile_filter(band.data(), 48, cols, 30.0, 9, height, 0, 0.0,
                                                   1, 2, 46, 27),
                       0);
             out.insert(out.end(), band.begin(), band.end());
         }
         work = image;
         EXPECT_EQ(zemath_us_conserve_filter(work.data(), rows, cols, 3, 3, 0, 10.0, 2, 2, 20, 25),
                   0);
         out.insert(out.end(), work.begin(), work.end());
         unsigned char strel[25];
         const double angle = 30.0 + t;
         out.push_back(zemath_make_strel(6, &angle, 1, strel, 5, 5));
         std::vector<double> m(image.begin(), image.end()), dilated(m.size()), eroded(m.size());
         EXPECT_EQ(
             zemath_dilate_matrix_with_strel(m.data(), rows, cols, strel, 5, 5, dilated.data()), 0);
         EXPECT_EQ(zemath_erode_matrix_with_strel(m.data(), rows, cols, strel, 5, 5, eroded.data()),
                   0);
         append(out, dilated);
         append(out, eroded);
         const double vx[] = {0.5, 20.0, 28.0}, vy[] = {1.0, 10.5, 22.0};
         std::vector<double> distance(40), values(40);
         EXPECT_EQ(zemath_image_lines_profile(m.data(), rows, cols, vx, vy, 3, 40, distance.data(),
                                              values.data()),
                   40);
         append(out, values);
         std::vector<double> x(m.size()), y(m.size()), z(m.size());
         out.push_back(zemath_image_xyz_profile(m.data(), rows, cols, 0.5, 0.1, -1.0, 0.2, x.data(),
                                                y.data(), z.data()));
         append(out, y);
         double axes[5] = {};
         EXPECT_EQ(zemath_us_find_natural_axes(image.data(), rows, cols, 2000, &axes[0], &axes[1],
                                               &axes[2], &axes[3], &axes[4]),
                   0);
         out.insert(out.end(), axes, axes + 5);
         return out;
     }},
    {"reduction", true,
     [](const Shared& s, int t) {
         const Curve c = curve(t);
         const int n = c.n();
         const unsigned un = static_cast<unsigned>(n);
         std::vector<double> out, groups(c.y.size());
         for (int method : {0, 3, 9, 13}) {
             const int g = zemath_reducexy_n_points(c.y.data(), groups.data(), un, 7, method);
             EXPECT_GT(g, 0);
             out.insert(out.end(), groups.begin(), groups.begin() + std::max(g, 0));
         }
         int g = zemath_reducexy_fixing_increbin(c.x.data(), c.y.data(), un, 0.0, 0.0, 2,
                                                 groups.data(), 0.3);
         EXPECT_GT(g, 0);
         out.insert(out.end(), groups.begin(), groups.begin() + std::max(g, 0));
         g = zemath_reducexy_n_groups(c.x.data(), c.y.data(), n, 0.0, 0.0, 11, groups.data(), 17);
         EXPECT_EQ(g, 17);
         out.insert(out.end(), groups.begin(), groups.begin() + std::max(g, 0));
         const double edges[] = {0.5, 1.0, 2.5, 4.0};
         int last[4] = {};
         EXPECT_EQ(zemath_group_xy_by_x_new(c.x.data(), n, edges, 4, last), 4);
         out.insert(out.end(), last, last + 4);
         double increment = 0, step = 0;
         EXPECT_EQ(zemath_mean_increment(c.x.data(), n, &increment), 0);
         out.push_back(increment);
         out.push_back(zemath_sampling_resolution(n, c.x.data(), &step, 1e-6));
         out.push_back(step);
         std::vector<double> z(s.data.begin() + 64 * t, s.data.begin() + 64 * t + 20 * 24);
         std::vector<double> reduced(z.size());
         int out_rows = 0, out_cols = 0;
         EXPECT_EQ(zemath_reduce_2D_data(z.data(), 20, 24, 3, 2, 0, 3, reduced.data(), &out_rows,
                                         &out_cols),
                   0);
         out.insert(out.end(), reduced.begin(), reduced.begin() + out_rows * out_cols);
         std::vector<double> xs(c.y.size()), ys(c.y.size());
         g = reduce_xy_get_sampling_data(c.x.data(), c.y.data(), n, 6, 1, xs.data(), ys.data());
         EXPECT_GT(g, 0);
         out.insert(out.end(), ys.begin(), ys.begin() + std::max(g, 0));
         g = zemath_skip_points_in_every_sampling_size(c.x.data(), c.y.data(), n, 5, xs.data(),
                                                       ys.data());
         EXPECT_GT(g, 0);
         out.insert(out.end(), ys.begin(), ys.begin() + std::max(g, 0));
         std::vector<int> ro(64), co(64), lo(64);
         g = get_sampling_window_offset(40 + t, 5, 3, 1, ro.data(), co.data(), lo.data(), 64);
         EXPECT_GT(g, 0);
         out.insert(out.end(), lo.begin(), lo.begin() + std::max(g, 0));
         return out;
     }},
    {"complex", true,
     [](const Shared&, int t) {
         std::vector<double> out;
         const auto put = [&out](d_complex w) { out.insert(out.end(), {w.re, w.im}); };
         for (int k = 0; k < 64; ++k) {
             const d_complex z{-2.0 + 0.07 * k + 0.01 * t, 1.5 - 0.05 * k};
             out.push_back(cabsz(z));
             put(sqrtz(z));
             put(ipow(z, k % 7 - 3));
             put(rpow(z, 0.37 * t));
             put(cpowz(z, d_complex{0.5, -0.25}));
             put(logz(z));
             put(expz(z));
             put(sinz(z));
             put(cosz(z));
             put(tanz(z));
             put(tanhz(z));
             put(atanz(z));
             put(atanhz(z));
         }
         return out;
     }},
    {"geometry", true,
     [](const Shared&, int t) {
         std::vector<double> x, y, out;
         std::vector<float> fx, fy;
         std::vector<long> lx, ly;
         const int n = 12 + t;
         for (int k = 0; k < n; ++k) {  // a star-shaped polygon, listed in a shuffled order
             const int j = (k * 5) % n;
             const double r = 1.0 + 0.4 * ((j * 3) % 4), a = 2 * 3.14159265358979 * j / n;
             x.push_back(r * std::cos(a));
             y.push_back(r * std::sin(a));
             fx.push_back(static_cast<float>(x.back()));
             fy.push_back(static_cast<float>(y.back()));
             lx.push_back(std::lround(100 * x.back()));
             ly.push_back(std::lround(100 * y.back()));
         }
         out.push_back(zemath_d_polygon_area(x.data(), y.data(), n));
         out.push_back(zemath_f_polygon_area(fx.data(), fy.data(), n));
         out.push_back(zemath_l_polygon_area(lx.data(), ly.data(), n));
         out.push_back(zemath_d_polygon_reorder(x.data(), y.data(), n));
         append(out, x);
         out.push_back(zemath_d_polygon_area(x.data(), y.data(), n));
         for (int k = 0; k < 50; ++k) {
             const double px = -1.5 + 0.06 * k, py = 0.3 - 0.01 * k;
             out.push_back(zemath_d_point_in_polygon(x.data(), y.data(), n, px, py));
             out.push_back(zemath_f_point_in_polygon(
                 fx.data(), fy.data(), n, static_cast<float>(px), static_cast<float>(py)));
         }
         return out;
     }},
    {"statistics", true,
     [](const Shared& s, int t) {
         std::vector<double> x = slice(s.data, t), out;
         x.resize(500);
         const unsigned n = static_cast<unsigned>(x.size());
         std::vector<double> w(x.size());
         for (size_t k = 0; k < w.size(); ++k) w[k] = 1.0 + static_cast<double>(k % 3);
         DescStatResults d{};
         EXPECT_EQ(zemath_desc_stats(x.data(), n, &d, w.data(), 0.95, 4), 0);
         out.insert(out.end(), {d.Mean, d.SD, d.Skewness, d.Kurtosis, d.GeoMean, d.Mode,
                                static_cast<double>(d.Missing)});
         const double percents[] = {0, 5, 25, 50, 75, 99.5, 100};
         double results[7];
         for (int rule = 0; rule < 6; ++rule) {
             EXPECT_EQ(zemath_percentiles(x.data(), 500, percents, 7, results, rule,
                                          rule & 1 ? w.data() : nullptr),
                       0);
             out.insert(out.end(), results, results + 7);
         }
         QuantileOptions qo{};
         qo.nInterpolate = t % 6;
         qo.bMin = qo.biMin = qo.bQ1 = qo.bMedian = qo.bQ3 = qo.bMax = qo.biMax = qo.bIQR = true;
         QuantileResults q{};
         EXPECT_EQ(zemath_quantiles(x.data(), n, &qo, &q, percents, 7, results, nullptr), 0);
         out.insert(out.end(), {q.Q1, q.Median, q.Q3, static_cast<double>(q.iMax)});
         std::vector<double> values(x.size()), counts(x.size());
         int distinct = 0;
         EXPECT_EQ(
             zemath_discrete_frequencies(x.data(), n, values.data(), counts.data(), &distinct), 0);
         out.push_back(distinct);
         double bins[32];
         int nbins = 0;
         EXPECT_EQ(zemath_frequency_count(x.data(), n, -0.3, 0.7, 0.05, bins, 32, &nbins), 0);
         out.insert(out.end(), bins, bins + nbins);
         const std::vector<double> y(s.data.begin() + 3000 - 50 * t,
                                     s.data.begin() + 3400 - 50 * t);
         const TTestHypothesis hyp{0, 0.1, t % 3};
         TwoSampleTTestResults r2{};
         double unequal[3] = {};
         EXPECT_EQ(zemath_two_sample_t_test(x.data(), n, y.data(), 400, &hyp, &r2, unequal), 0);
         out.insert(out.end(), {r2.t, r2.P, unequal[0], unequal[2]});
         EXPECT_EQ(zemath_two_sample_t_test_pair(x.data(), y.data(), 400, &hyp, &r2), 0);
         out.insert(out.end(), {r2.t, r2.P});
         double F = 0, P = 0, df1 = 0, df2 = 0;
         EXPECT_EQ(zemath_f_test(x.data(), n, y.data(), 400, 0, &F, &P, &df1, &df2), 0);
         out.insert(out.end(), {F, P});
         double mu[3], sigma[3];
         EXPECT_EQ(zemath_confidence_limit_Norm(x.data(), n, 0.9, &mu[0], &mu[1], &mu[2], &sigma[0],
                                                &sigma[1], &sigma[2]),
                   0);
         out.insert(out.end(), {mu[1], mu[2], sigma[1], sigma[2]});
         const int sizes[] = {5, 20, 80};
         double powers[3];
         EXPECT_EQ(zemath_tTest_powers(0.05, 0.5, 1.0, t % 3, 3, sizes, powers), 0);
         out.insert(out.end(), powers, powers + 3);
         const double targets[] = {0.8, 0.9};
         int needed[2];
         EXPECT_EQ(
             zemath_two_sample_tTest_samplesize(0.05, 0.4 + 0.1 * t, 1.0, 0, 2, targets, needed),
             0);
         out.insert(out.end(), needed, needed + 2);
         std::vector<double> finite = x;  // the test refuses a NaN value
         for (double& v : finite)
             if (std::isnan(v)) v = 0.5;
         ShapiroWilkResults sw{};
         EXPECT_EQ(zemath_shapiro_wilk_test(n, finite.data(), &sw, 0), 0);
         out.insert(out.end(), {sw.W, sw.P});
         std::vector<double> rows(x.begin(), x.begin() + 480), row_t(8), row_p(8), row_dof(8);
         EXPECT_EQ(zemath_row_ttest2(8, rows.data(), 30, rows.data() + 240, 30, 0, row_t.data(),
                                     row_p.data(), row_dof.data()),
                   0);
         append(out, row_p);
         return out;
     }},
    {"special functions", true,
     [](const Shared&, int t) {
         std::vector<double> out;
         for (int k = 0; k < 40; ++k) {
             const double x = 0.37 * k + 0.013 * t + 0.05;
             out.insert(out.end(), {airy_ai(x - 6),
                                    airy_bi(x - 6),
                                    bessel_j0(x),
                                    bessel_y1(x),
                                    bessel_i0(x),
                                    bessel_k1(x),
                                    bessel_i_nu(x, 1 + k % 3),
                                    bessel_k_nu_scaled(x, -1 - k % 3),
                                    kelvin_ber(x),
                                    kelvin_kei(x),
                                    fresnel_s(x),
                                    exp_integral(x - 3),
                                    cos_integral(x),
                                    sin_integral(x),
                                    elliptic_integral_rj(x, 1.0, 2.0, 0.5 + x),
                                    gammaz(x - 4.5),
                                    log_gamma(x),
                                    real_polygamma(x, k % 4),
                                    incomplete_gamma(1.5, x),
                                    jacobian_theta(k % 5, x, 0.3),
                                    erfcx(x - 3),
                                    erfinv(x / 16 - 0.6),
                                    angleint2(0, 0, 1, x, 0, 0, -x, 1, t & 1, 1),
                                    zemath_bessel_j1(x),
                                    zemath_kelvin_ker(x),
                                    zemath_erfc(x - 2)});
         }
         // The script table: a lookup by name and calls by row number.
         char name[] = "bessel_i_nu";
         unsigned long index = 0;
         EXPECT_EQ(zemath_KS_functions(1, name, &index, nullptr, nullptr), 2);
         double args[2] = {1.25 + t, 2.0}, result = 0;
         EXPECT_EQ(zemath_KS_functions(2, nullptr, &index, args, &result), 0);
         out.push_back(result);
         char hyge[] = "hygecdf";
         EXPECT_EQ(zemath_KS_functions(1, hyge, &index, nullptr, nullptr), 6);
         double hargs[6] = {3.0 + t, 20, 10, 8, 0, 0};
         EXPECT_EQ(zemath_KS_functions(2, nullptr, &index, hargs, &result), 0);
         out.push_back(result);
         const double width = 0.5 + t;
         KSFInfo info{[](void* context, double x) {
                          return std::exp(-x * x / *static_cast<const double*>(context));
                      },
                      const_cast<double*>(&width)};
         out.push_back(integralKS(&info, NANUM, NANUM));
         out.push_back(integralKS(&info, -1.0, 2.0));
         CStringArray names, lists;
         const int listed = zemath_KS_functions_get_list(&names, &lists, t % 4, nullptr);
         EXPECT_GT(listed, 0);
         out.push_back(listed);
         for (int k = 0; k < listed; ++k)
             out.push_back(static_cast<double>(std::strlen(names.GetAt(k))));
         return out;
     }},
    {"emd", true,
     [](const Shared& s, int t) {
         const int n = 1024;
         const std::vector<double> trend = slice(s.sorted, t);
         std::vector<double> x(n), y(n), imfs(4 * n), residue(n), upper(n), lower(n), out;
         for (int i = 0; i < n; ++i) {
             x[i] = i;
             y[i] = std::sin(0.4 * i + 0.1 * t) + 2.0 * std::sin(0.03 * i) + 0.5 * trend[2 * i];
         }
         int count = 0, n_max = 0, n_min = 0, crossings = 0;
         out.push_back(zemath_empirical_mode_decomposition(
             n, x.data(), y.data(), 0.05, 0.5, 0.05, imfs.data(), 4, &count, residue.data(), 2));
         out.push_back(count);
         out.insert(out.end(), imfs.begin(), imfs.begin() + count * n);
         out.insert(out.end(), residue.begin(), residue.end());
         out.push_back(zemath_emd_get_upper_lower_envelope(n, x.data(), y.data(), upper.data(),
                                                           lower.data(), &n_max, &n_min, 1));
         out.insert(out.end(), {upper[n / 2], lower[n / 2], double(n_max), double(n_min)});
         zemath_emd_get_zero_crossing(n, x.data(), imfs.data(), &crossings, nullptr, nullptr);
         out.push_back(crossings);
         return out;
     }},
    {"peak_analysis", true,
     [](const Shared& s, int t) {
         std::vector<double> y = slice(s.data, t), x(2048), out;
         for (int i = 0; i < 2048; ++i) x[static_cast<size_t>(i)] = i;
         std::vector<double> px(2048), py(2048), bx(2048), base(2048);
         std::vector<int> idx(2048);
         int n = 2048;
         out.push_back(zemath_pick_peaks(&n, x.data(), y.data(), px.data(), py.data(), idx.data(),
                                         3, 0.0, 0.2, 5));
         out.insert(out.end(), px.begin(), px.begin() + n);
         out.push_back(zemath_create_baseline_by_masking_peaks(2048, x.data(), y.data(), 2048,
                                                               bx.data(), base.data(), 1));
         out.push_back(base[1000]);
         double m[8];
         out.push_back(
             zemath_calc_peak_moments_ex(2048, x.data(), y.data(), nullptr, 200, 400, 1, m));
         out.insert(out.end(), m, m + 8);
         out.push_back(zemath_get_noise_level_of_flat_part(2048, y.data(), 256));
         double left = 0, right = 0;
         out.push_back(zemath_find_inflection_point(2048, x.data(), y.data(), 1024, &left, &right));
         out.push_back(left);
         return out;
     }},
};

TEST(Concurrency, EightThreadsMatchSingleThreadedResults) {
    const Shared& s = shared();
    // Expected results, one thread at a time.
    std::vector<std::vector<std::vector<double>>> expected(std::size(kRows));
    for (size_t r = 0; r < std::size(kRows); ++r)
        for (int t = 0; t < kThreads; ++t) expected[r].push_back(kRows[r].run(s, t));

    std::vector<std::vector<std::vector<double>>> got(
        kThreads, std::vector<std::vector<double>>(std::size(kRows)));
    {
        std::vector<std::jthread> pool;
        for (int t = 0; t < kThreads; ++t)
            pool.emplace_back([&, t] {
                for (int repeat = 0; repeat < kRepeats; ++repeat)
                    for (size_t r = 0; r < std::size(kRows); ++r) got[t][r] = kRows[r].run(s, t);
            });
    }
    const auto same = [](const std::vector<double>& a, const std::vector<double>& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](double x, double y) {
            return x == y || (std::isnan(x) && std::isnan(y));
        });
    };
    for (size_t r = 0; r < std::size(kRows); ++r) {
        for (int t = 0; t < kThreads; ++t) {
            ASSERT_EQ(got[t][r].size(), expected[r][t].size()) << kRows[r].name;
            if (kRows[r].deterministic) {
                EXPECT_TRUE(same(got[t][r], expected[r][t])) << kRows[r].name << " thread " << t;
            } else if (t > 0) {  // independent streams
                EXPECT_FALSE(same(got[t][r], got[t - 1][r])) << kRows[r].name << " thread " << t;
            }
        }
    }
}

}  // namespace
