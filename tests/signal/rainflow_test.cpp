// Rainflow family: the ASTM E1049 example, the filter, cycle lists and matrices against an
// independent Python implementation of the four-point rule (tests/reference/
// gen_rainflow.py), hand-checked cases of every residue mode, the matrix conversions, the
// damage sum, and one table of refused calls that must leave every output untouched.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <utility>
#include <vector>

#include "zemath/rainflow.h"
#include "zemath/status.h"

namespace {

struct FilterReference {
    std::vector<double> load;
    double hysteresis;
    std::vector<int> kept;
};
struct CycleReference {
    std::vector<double> load;
    double hysteresis;
    int residue_mode;
    std::vector<int> from, to;
    std::vector<double> weight;
    int closed, turning;
};
struct MatrixReference {
    std::vector<double> load;
    int bins;
    double hysteresis;
    int residue_mode, class_mode;
    double lower, upper;
    std::vector<int> total, closed;
};
struct DamageReference {
    std::vector<double> range, count;
    double exponent, intercept, limit, damage;
};
#include "reference/rainflow_ref.inc"

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct Cycles {
    int status, n = -7, closed = -7;
    std::vector<int> from, to;
    std::vector<double> range, mean, count;
};
Cycles cycles_of(const std::vector<double>& load, double h, int mode, int capacity = 4096) {
    Cycles c;
    c.from.assign(capacity, -7);
    c.to = c.from;
    c.range.assign(capacity, -7);
    c.mean = c.count = c.range;
    c.status = zemath_rainflow_cycles(load.data(), static_cast<int>(load.size()), h, mode, capacity,
                                      c.from.data(), c.to.data(), c.range.data(), c.mean.data(),
                                      c.count.data(), &c.n, &c.closed);
    return c;
}

TEST(Rainflow, AstmExampleTable) {
    const Cycles c = cycles_of(kAstmHistory, 0.0, 0);
    ASSERT_EQ(c.status, 0);
    std::map<double, double> by_range;
    for (int k = 0; k < c.n; ++k) by_range[c.range[k]] += c.count[k];
    EXPECT_EQ(by_range, (std::map<double, double>(kAstmTable.begin(), kAstmTable.end())));
    EXPECT_EQ(c.closed, 1);  // -1 -> 3 closes; the rest is residue
}

TEST(Rainflow, FilterMatchesReference) {
    for (const FilterReference& r : kFilterReference) {
        std::vector<double> value = r.load, time(r.load.size());
        std::iota(time.begin(), time.end(), 0.0);
        int n = static_cast<int>(value.size());
        ASSERT_EQ(Rainflow_Filtering(&n, time.data(), value.data(), r.hysteresis), 0);
        ASSERT_EQ(n, static_cast<int>(r.kept.size()));
        for (int k = 0; k < n; ++k) {
            EXPECT_EQ(time[k], r.kept[k]);
            EXPECT_EQ(value[k], r.load[r.kept[k]]);
        }
    }
}

TEST(Rainflow, CycleListMatchesReference) {
    for (const CycleReference& r : kCycleReference) {
        const Cycles c = cycles_of(r.load, r.hysteresis, r.residue_mode);
        ASSERT_EQ(c.status, 0);
        ASSERT_EQ(c.n, static_cast<int>(r.from.size()));
        EXPECT_EQ(c.closed, r.closed);
        for (int k = 0; k < c.n; ++k) {
            EXPECT_EQ(c.from[k], r.from[k]);
            EXPECT_EQ(c.to[k], r.to[k]);
            EXPECT_EQ(c.count[k], r.weight[k]);
            EXPECT_EQ(c.range[k], std::fabs(r.load[r.to[k]] - r.load[r.from[k]]));
            EXPECT_EQ(c.mean[k], 0.5 * r.load[r.to[k]] + 0.5 * r.load[r.from[k]]);
        }
        // Every turning point is accounted for: closed cycles use two, the residue's half
        // cycles chain through all residue points.
        if (r.residue_mode == 0) {
            EXPECT_EQ(2 * c.closed + (c.n - c.closed + 1), r.turning);
        }
    }
}

TEST(Rainflow, MatrixMatchesReference) {
    for (const MatrixReference& r : kMatrixReference) {
        std::vector<double> load = r.load, time(load.size(), 0.0);
        std::vector<int> total(r.bins * r.bins, -7), closed = total;
        ASSERT_EQ(Rainflow_Matrix(static_cast<int>(load.size()), time.data(), load.data(), r.bins,
                                  total.data(), closed.data(), r.hysteresis, r.residue_mode,
                                  r.class_mode, r.lower, r.upper),
                  0);
        EXPECT_EQ(total, r.total) << r.residue_mode << " " << r.class_mode;
        EXPECT_EQ(closed, r.closed) << r.residue_mode << " " << r.class_mode;
        EXPECT_EQ(load, r.load);  // the history is not modified
    }
}

// Hand-checked: in 0 4 1 3 0 only 1 -> 3 closes; 1 5 0 4 is all residue, and each residue
// mode counts it differently. Classes 0..5 equal the loads (bounds [-0.5, 5.5], 6 bins).
TEST(Rainflow, ResidueModesByHand) {
    const struct {
        std::vector<double> load;
        int mode;
        std::vector<std::pair<int, int>> total_cells, closed_cells;  // upper-triangle counts
    } cases[] = {
        {{0, 4, 1, 3, 0}, 0, {{4, 1}}, {{9, 1}}},    // 0->4, closed 1->3
        {{0, 4, 1, 3, 0}, 2, {{4, 1}}, {{9, 1}}},    // doubled residue closes 4->0
        {{1, 5, 0, 4}, 0, {{11, 1}, {4, 1}}, {}},    // rising: 1->5, 0->4
        {{1, 5, 0, 4}, 1, {{5, 1}}, {}},             // falling: 5->0
        {{1, 5, 0, 4}, 2, {{10, 1}, {5, 1}}, {}},    // repeated: 4->1, 0->5
        {{0, 4, 1, 3, 0}, 3, {{26, 1}}, {{14, 1}}},  // range-mean: [4][2], [2][2]
    };
    for (const auto& c : cases) {
        std::vector<double> load = c.load, time(load.size());
        std::vector<int> total(36, -7), closed(36, -7), want_total(36, 0), want_closed(36, 0);
        ASSERT_EQ(Rainflow_Matrix(static_cast<int>(load.size()), time.data(), load.data(), 6,
                                  total.data(), closed.data(), 0.0, c.mode, 1, -0.5, 5.5),
                  0);
        for (auto [cell, v] : c.total_cells) want_total[cell] = v;
        for (auto [cell, v] : c.closed_cells) want_closed[cell] = v;
        if (c.mode != 3) {  // from-to matrices are folded: mirror the upper triangle
            for (auto* m : {&want_total, &want_closed})
                for (int r = 0; r < 6; ++r)
                    for (int k = r + 1; k < 6; ++k) (*m)[k * 6 + r] = (*m)[r * 6 + k];
            for (int k = 0; k < 36; ++k) want_total[k] += want_closed[k];
        } else {
            want_total[14] += 1;  // the closed cycle is also in the total
        }
        EXPECT_EQ(total, want_total) << c.mode;
        EXPECT_EQ(closed, want_closed) << c.mode;
    }
    // The cycle list names the turning points: 1 -> 3 runs from index 2 to index 3.
    const Cycles c = cycles_of({0, 4, 1, 3, 0}, 0.0, 0);
    ASSERT_EQ(c.closed, 1);
    EXPECT_EQ(std::make_pair(c.from[0], c.to[0]), std::make_pair(2, 3));
    EXPECT_EQ(c.n, 3);  // residue 0 4 0: two half cycles
}

TEST(Rainflow, FilterEdgeCases) {
    const struct {
        std::vector<double> load;
        double h;
        std::vector<double> kept;
    } cases[] = {
        {{1, 2, 2, 3, 5}, 0.0, {1, 5}},             // monotonic: first and last
        {{1, 2, 2, 3, 5}, 3.5, {1, 5}},             // last lies at least h away
        {{1, 2, 2, 3, 4.5}, 4.0, {1}},              // never leaves the band
        {{3, 3, 3, 3}, 0.0, {3}},                   // constant
        {{0, 1, 0.5, 1.2, -1}, 1.0, {0, 1.2, -1}},  // swing of 0.5 < h ignored
        {{kNaN, 1, 3, 2, 4}, 0.0, {1, 3, 2, 4}},    // NaN before the first move is passed
        {{1, NANUM, 3, 2, 4}, 0.0, {1, 3, 2, 4}},   // NANUM is skipped
        {{2, 1, 1, 2}, 0.0, {2, 1, 2}},             // plateau: the later equal point is kept
        {{5, 1, 9}, -1.0, {5, 1, 9}},               // negative hysteresis: no change
        {{5, kNaN}, 0.0, {5, kNaN}},                // fewer than 3 points: no change
    };
    for (const auto& c : cases) {
        std::vector<double> value = c.load;
        int n = static_cast<int>(value.size());
        ASSERT_EQ(Rainflow_Filtering(&n, nullptr, value.data(), c.h), 0);
        value.resize(n);
        ASSERT_EQ(value.size(), c.kept.size());
        for (std::size_t k = 0; k < value.size(); ++k)
            EXPECT_TRUE(value[k] == c.kept[k] || (std::isnan(value[k]) && std::isnan(c.kept[k])));
    }
    // Plateau: the later point wins, seen through the times.
    std::vector<double> value{2, 1, 1, 2}, time{0, 1, 2, 3};
    int n = 4;
    ASSERT_EQ(Rainflow_Filtering(&n, time.data(), value.data(), 0.0), 0);
    EXPECT_EQ(time[1], 2.0);
}

TEST(Rainflow, MatrixConversions) {
    // A cycle between classes 2 and 5 goes to row 3, column 4 (mean rounded up).
    std::vector<int> m(64, 0);
    m[2 * 8 + 5] = 7;
    m[5 * 8 + 2] = 9;  // lower triangle: dropped
    m[3 * 8 + 3] = 4;  // diagonal: dropped
    ASSERT_EQ(MinToMax_RFM_2_RangeMean_RFM(8, m.data()), 0);
    std::vector<int> want(64, 0);
    want[3 * 8 + 4] = 7;
    EXPECT_EQ(m, want);
    // Round trip on the upper triangle.
    std::vector<int> upper(81, 0);
    for (int r = 0; r < 9; ++r)
        for (int c = r + 1; c < 9; ++c) upper[r * 9 + c] = 1 + r * 13 + c * 7;
    std::vector<int> trip = upper;
    ASSERT_EQ(MinToMax_RFM_2_RangeMean_RFM(9, trip.data()), 0);
    for (int c = 0; c < 9; ++c) EXPECT_EQ(trip[c], 0);  // row 0 stays 0
    ASSERT_EQ(RangeMean_RFM_2_MinToMax_RFM(9, trip.data()), 0);
    EXPECT_EQ(trip, upper);
    // A cycle list: 0->4 once, 1->3 and 3->1 (bounds [0, 5]; 5 is in the last class).
    std::vector<double> from{0, 1, 3}, to{5, 3, 1};
    std::vector<int> fm(25, -7), rm(25, -7);
    ASSERT_EQ(Rainflow_Cycle_2_Rainflow_Matrix(3, from.data(), to.data(), 5, fm.data(), 1, 0, 0, 5),
              0);
    EXPECT_EQ(fm[4], 1);
    EXPECT_EQ(fm[20], 1);
    EXPECT_EQ(fm[8], 2);
    EXPECT_EQ(fm[16], 2);
    EXPECT_EQ(std::accumulate(fm.begin(), fm.end(), 0), 6);
    ASSERT_EQ(Rainflow_Cycle_2_Rainflow_Matrix(3, from.data(), to.data(), 5, rm.data(), 1, 3, 0, 5),
              0);
    EXPECT_EQ(rm[4 * 5 + 2], 1);
    EXPECT_EQ(rm[2 * 5 + 2], 2);
    EXPECT_EQ(std::accumulate(rm.begin(), rm.end(), 0), 3);
}

TEST(Rainflow, DamageMatchesReference) {
    for (const DamageReference& r : kDamageReference) {
        double d = -1;
        ASSERT_EQ(
            zemath_rainflow_damage(r.range.data(), r.count.data(), static_cast<int>(r.range.size()),
                                   r.exponent, r.intercept, r.limit, &d),
            0);
        EXPECT_NEAR(d, r.damage, 1e-13 * r.damage);
    }
    double d = -1;
    const double one[] = {10.0};
    ASSERT_EQ(zemath_rainflow_damage(one, nullptr, 1, 3, 1e6, 10.0, &d), 0);
    EXPECT_EQ(d, 0.0);  // at the endurance limit: no damage
    ASSERT_EQ(zemath_rainflow_damage(one, nullptr, 0, 3, 1e6, 0, &d), 0);
    EXPECT_EQ(d, 0.0);
}

// S^m overflowing a double: a cycle counted zero times adds nothing (it gave 0 * inf = NaN),
// and a finite S^m / C is still formed (1e3^120 / 1e300 = 1e60).
TEST(Rainflow, DamageWhereThePowerOverflows) {
    const double range[] = {1e3, 1e3};
    const double zero_count[] = {0.0, 0.0};
    double d = -1;
    ASSERT_EQ(zemath_rainflow_damage(range, zero_count, 2, 120, 1e300, 0, &d), 0);
    EXPECT_EQ(d, 0.0);
    const double counts[] = {0.5, 1.0};
    ASSERT_EQ(zemath_rainflow_damage(range, counts, 2, 120, 1e300, 0, &d), 0);
    EXPECT_NEAR(d, 1.5e60, 1e-12 * 1.5e60);
    ASSERT_EQ(zemath_rainflow_damage(range, nullptr, 1, 200, 1e10, 0, &d), 0);
    EXPECT_EQ(d, std::numeric_limits<double>::infinity());  // truly beyond the range
}

TEST(Rainflow, RefusedCallsWriteNothing) {
    std::vector<double> load{0, 4, 1, 3, 0}, time(5), nan_load{0, 4, kNaN, 3, 0};
    std::vector<double> inf_load{0, 4, kInf, 3, 0};
    std::vector<int> total(16, -7), closed(16, -7);
    const std::vector<int> untouched(16, -7);
    double *v = load.data(), *t = time.data(), *z = nan_load.data(), *w = inf_load.data();
    int *mt = total.data(), *mc = closed.data();
    // Rainflow_Matrix: { n, time, load, bins, total, residue, class, lower, upper, status }
    const struct {
        int n;
        double *time, *load;
        int bins;
        int* total;
        int residue, cls;
        double lower, upper;
        int status;
    } matrix_cases[] = {
        {1, t, v, 4, mt, 0, 0, 0, 0, -1},       {5, t, v, 1, mt, 0, 0, 0, 0, -1},
        {5, nullptr, v, 4, mt, 0, 0, 0, 0, -1}, {5, t, nullptr, 4, mt, 0, 0, 0, 0, -1},
        {5, t, v, 4, nullptr, 0, 0, 0, 0, -1},  {5, t, v, 4, mt, 4, 0, 0, 0, -1},
        {5, t, v, 4, mt, -1, 0, 0, 0, -1},      {5, t, v, 4, mt, 0, 3, 0, 0, -1},
        {5, t, v, 4, mt, 0, -2, 0, 0, -1},      {5, t, v, 4, mt, 0, 1, 5, 5, -1},
        {5, t, v, 4, mt, 0, 2, 0, kNaN, -1},    {5, t, v, 4, mt, 0, 1, 0, 3.5, -2},  // 4 outside
        {5, t, z, 4, mt, 0, 0, 0, 0, -2},       {5, t, w, 4, mt, 0, 0, 0, 0, -2},
    };
    for (const auto& c : matrix_cases) {
        EXPECT_EQ(Rainflow_Matrix(c.n, c.time, c.load, c.bins, c.total, mc, 0.0, c.residue, c.cls,
                                  c.lower, c.upper),
                  c.status);
        EXPECT_EQ(total, untouched);
        EXPECT_EQ(closed, untouched);
    }
    // Rainflow_Cycle_2_Rainflow_Matrix: { cycles, from, to, bins, class, residue, upper }
    const struct {
        int n;
        double *from, *to;
        int bins, cls, residue;
        double upper;
    } cycle_cases[] = {
        {0, t, v, 4, 0, 0, 0}, {5, t, v, 1, 0, 0, 0}, {5, nullptr, v, 4, 0, 0, 0},
        {5, t, v, 4, 3, 0, 0}, {5, t, v, 4, 0, 4, 0}, {5, t, v, 4, 1, 0, 3.5},
        {5, z, v, 4, 0, 0, 0}, {5, w, v, 4, 0, 0, 0},
    };
    for (const auto& c : cycle_cases) {
        EXPECT_EQ(Rainflow_Cycle_2_Rainflow_Matrix(c.n, c.from, c.to, c.bins, mt, c.cls, c.residue,
                                                   0, c.upper),
                  -1);
        EXPECT_EQ(total, untouched);
    }
    EXPECT_EQ(MinToMax_RFM_2_RangeMean_RFM(1, mt), -1);
    EXPECT_EQ(RangeMean_RFM_2_MinToMax_RFM(4, nullptr), -1);
    EXPECT_EQ(total, untouched);

    // Filtering: NaN after the first move refuses and leaves arrays and count alone.
    std::vector<double> filtered = nan_load;
    int n = 5;
    EXPECT_EQ(Rainflow_Filtering(&n, t, filtered.data(), 0.0), -1);
    EXPECT_EQ(n, 5);
    EXPECT_TRUE(std::isnan(filtered[2]) && filtered[1] == 4 && filtered[3] == 3);
    n = 0;
    EXPECT_EQ(Rainflow_Filtering(&n, t, v, 0.0), -1);
    EXPECT_EQ(Rainflow_Filtering(nullptr, t, v, 0.0), -1);
    n = 5;
    EXPECT_EQ(Rainflow_Filtering(&n, t, nullptr, 0.0), -1);

    // Cycle list and damage.
    int nc = -7, ncl = -7, idx[2] = {-7, -7};
    const double* cl = load.data();
    EXPECT_EQ(zemath_rainflow_cycles(nullptr, 5, 0, 0, 2, idx, 0, 0, 0, 0, &nc, &ncl), -11);
    EXPECT_EQ(zemath_rainflow_cycles(cl, 5, 0, 0, 2, idx, 0, 0, 0, 0, nullptr, &ncl), -11);
    EXPECT_EQ(zemath_rainflow_cycles(cl, 1, 0, 0, 2, idx, 0, 0, 0, 0, &nc, &ncl), -18);
    EXPECT_EQ(zemath_rainflow_cycles(cl, INT_MIN, 0, 0, 2, idx, 0, 0, 0, 0, &nc, &ncl), -18);
    EXPECT_EQ(zemath_rainflow_cycles(cl, 5, -0.5, 0, 2, idx, 0, 0, 0, 0, &nc, &ncl), -14);
    EXPECT_EQ(zemath_rainflow_cycles(cl, 5, kNaN, 0, 2, idx, 0, 0, 0, 0, &nc, &ncl), -14);
    EXPECT_EQ(zemath_rainflow_cycles(cl, 5, 0, 2, 2, idx, 0, 0, 0, 0, &nc, &ncl), -10);
    EXPECT_EQ(zemath_rainflow_cycles(nan_load.data(), 5, 0, 0, 2, idx, 0, 0, 0, 0, &nc, &ncl), -1);
    EXPECT_EQ(nc, -7);
    EXPECT_EQ(zemath_rainflow_cycles(cl, 5, 0, 0, 2, idx, 0, 0, 0, 0, &nc, &ncl), -25);
    EXPECT_EQ(idx[0], -7);
    EXPECT_EQ(nc, 3);  // the capacity needed is reported
    EXPECT_EQ(ncl, 1);
    nc = -7;
    EXPECT_EQ(zemath_rainflow_cycles(cl, 5, 0, 0, 0, nullptr, 0, 0, 0, 0, &nc, nullptr), 0);
    EXPECT_EQ(nc, 3);  // counting only

    double d = -7;
    const double ranges[] = {1, 2}, bad_counts[] = {1, -1};
    EXPECT_EQ(zemath_rainflow_damage(nullptr, 0, 2, 3, 1, 0, &d), -11);
    EXPECT_EQ(zemath_rainflow_damage(ranges, 0, 2, 3, 1, 0, nullptr), -11);
    EXPECT_EQ(zemath_rainflow_damage(ranges, 0, -1, 3, 1, 0, &d), -18);
    EXPECT_EQ(zemath_rainflow_damage(ranges, 0, 2, 0, 1, 0, &d), -151);
    EXPECT_EQ(zemath_rainflow_damage(ranges, 0, 2, 3, -1, 0, &d), -151);
    EXPECT_EQ(zemath_rainflow_damage(ranges, 0, 2, 3, kInf, 0, &d), -151);
    EXPECT_EQ(zemath_rainflow_damage(ranges, 0, 2, 3, 1, kNaN, &d), -151);
    EXPECT_EQ(zemath_rainflow_damage(ranges, bad_counts, 2, 3, 1, 0, &d), -151);
    EXPECT_EQ(d, -7);
}

TEST(Rainflow, DegenerateHistories) {
    // A constant history holds no cycle; an all-missing one cannot be classified.
    std::vector<double> flat(7, 2.5), time(7), missing(4, NANUM);
    std::vector<int> total(9, -7), closed(9, -7);
    double* t = time.data();
    ASSERT_EQ(Rainflow_Matrix(7, t, flat.data(), 3, total.data(), closed.data(), 0, 0, 0, 0, 0), 0);
    EXPECT_EQ(total, std::vector<int>(9, 0));
    EXPECT_EQ(cycles_of(flat, 0, 0).n, 0);
    EXPECT_EQ(Rainflow_Matrix(4, t, missing.data(), 3, total.data(), closed.data(), 0, 0, 0, 0, 0),
              -2);
}

}  // namespace
