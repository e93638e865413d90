// Fuzz target: the rainflow family (rainflow.h). Checked on each call: refused calls
// write nothing; the filter keeps a subsequence of the (time, load) pairs; matrices hold
// no negative counts, stay folded in from-to form, and a cycle list's matrix accounts for
// every cycle; the two matrix forms convert into each other; the cycle list respects its
// capacity and its indices lie inside the history.
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

// Loads: fuzzed doubles, or a random walk of small steps (which has cycles to count).
std::vector<double> loads(Input& in, int n) {
    std::vector<double> v = in.reals(n);
    if (in.byte() & 1) {
        double level = 0.0;
        for (double& e : v) {
            const double step = static_cast<double>(static_cast<int>(in.byte() % 21) - 10);
            level = in.byte() % 32 == 0 ? e : level + step;
            e = level;
        }
    }
    return v;
}

bool folded(const std::vector<int>& m, int bins) {
    for (int r = 0; r < bins; ++r)
        for (int c = r + 1; c < bins; ++c)
            if (m[r * bins + c] != m[c * bins + r]) return false;
    return true;
}

bool non_negative(const std::vector<int>& m) {
    return std::all_of(m.begin(), m.end(), [](int v) { return v >= 0; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(7);
    const int n = in.count(in.byte() & 1 ? 40 : 2000);
    const int len = n > 0 ? n : 0;
    std::vector<double> v = loads(in, n);
    std::vector<double> t = in.reals(n);
    const std::vector<double> v0 = v, t0 = t;
    const bool null_in = in.byte() % 32 == 0, null_out = in.byte() % 32 == 0;
    const int bins = in.byte() % 16 == 0 ? in.integer() : in.count(40);
    const size_t cells = bins > 0 && bins <= 4096 ? static_cast<size_t>(bins) * bins : 0;
    if (bins > 4096) return 0;  // the caller could not hold the matrices
    const int residue = param(in, 4), class_mode = param(in, 3);
    const double hysteresis = in.byte() & 1 ? in.real() : static_cast<double>(in.byte() % 8);
    double lower = in.real(), upper = in.real();
    if (in.byte() & 1)
        lower = -static_cast<double>(in.byte()), upper = static_cast<double>(in.byte());
    switch (which) {
        case 0: {
            int count = n;
            double* pt = in.byte() % 4 ? data_or_null(t) : nullptr;
            const int status = Rainflow_Filtering(null_out ? nullptr : &count, pt,
                                                  null_in ? nullptr : data_or_null(v), hysteresis);
            if (status != 0 || n < 3 || !(hysteresis >= 0)) {
                require(count == n && same_bits(v, v0) && same_bits(t, t0));
            } else {
                // A subsequence of the (time, load) pairs.
                require(count >= 0 && count <= len);
                int j = 0;
                for (int k = 0; k < count; ++k) {
                    while (j < len && !(same_bits(v[k], v0[j]) && (!pt || same_bits(t[k], t0[j]))))
                        ++j;
                    require(j < len);
                    ++j;
                }
            }
            break;
        }
        case 1: {
            std::vector<int> total(cells, kIntSentinel), closed(cells, kIntSentinel);
            const int status =
                Rainflow_Matrix(n, null_in ? nullptr : data_or_null(t), data_or_null(v), bins,
                                null_out ? nullptr : data_or_null(total), data_or_null(closed),
                                hysteresis, residue, class_mode, lower, upper);
            if (status != 0) {
                require(zemath_fuzz::all_equal(total, kIntSentinel));
                require(zemath_fuzz::all_equal(closed, kIntSentinel));
            } else {
                require(non_negative(total) && non_negative(closed));
                long sum_closed = 0;
                for (size_t c = 0; c < cells; ++c) {
                    require(total[c] >= closed[c]);
                    sum_closed += closed[c];
                }
                // Each closed cycle uses two turning points; folding counts it twice at most.
                require(sum_closed <= static_cast<long>(len));
                if (residue != 3) require(folded(total, bins) && folded(closed, bins));
            }
            break;
        }
        case 2: {
            const int cycles = in.count(200);
            std::vector<double> from = loads(in, cycles), to = loads(in, cycles);
            std::vector<int> m(cells, kIntSentinel);
            const int status = Rainflow_Cycle_2_Rainflow_Matrix(
                cycles, null_in ? nullptr : data_or_null(from), data_or_null(to), bins,
                null_out ? nullptr : data_or_null(m), class_mode, residue, lower, upper);
            if (status != 0) {
                require(zemath_fuzz::all_equal(m, kIntSentinel));
            } else {
                require(non_negative(m));
                long upper_sum = 0, all = 0;
                for (int r = 0; r < bins; ++r)
                    for (int c = 0; c < bins; ++c) {
                        all += m[r * bins + c];
                        if (c >= r) upper_sum += m[r * bins + c];
                    }
                if (residue == 3) {
                    require(all <= cycles);  // cycles within one class are dropped
                } else {
                    require(folded(m, bins));
                    require(upper_sum == cycles);  // every cycle counted once per triangle
                }
            }
            break;
        }
        case 3:
        case 4: {
            std::vector<int> m(cells);
            for (int& e : m) e = in.byte() % 8;
            const std::vector<int> m0 = m;
            int* pm = null_in ? nullptr : data_or_null(m);
            const int status = which == 3 ? MinToMax_RFM_2_RangeMean_RFM(bins, pm)
                                          : RangeMean_RFM_2_MinToMax_RFM(bins, pm);
            if (status != 0) {
                require(m == m0);
            } else if (which == 3) {
                // Back to from-to form: the strict upper triangle of the input returns.
                require(RangeMean_RFM_2_MinToMax_RFM(bins, pm) == 0);
                for (int r = 0; r < bins; ++r)
                    for (int c = 0; c < bins; ++c)
                        require(m[r * bins + c] == (c > r ? m0[r * bins + c] : 0));
            }
            break;
        }
        case 5: {
            const int capacity = zemath_fuzz::length(in, 600);
            const int slots = std::max(capacity, 0);
            std::vector<int> fi = zemath_fuzz::int_sentinels(slots),
                             ti = zemath_fuzz::int_sentinels(slots);
            std::vector<double> range = zemath_fuzz::sentinels(slots),
                                mean = zemath_fuzz::sentinels(slots),
                                count = zemath_fuzz::sentinels(slots);
            const int outputs = in.byte();
            int n_cycles = kIntSentinel, n_closed = kIntSentinel;
            int* pfi = outputs & 1 ? data_or_null(fi) : nullptr;
            int* pti = outputs & 2 ? data_or_null(ti) : nullptr;
            double* pr = outputs & 4 ? data_or_null(range) : nullptr;
            double* pmn = outputs & 8 ? data_or_null(mean) : nullptr;
            double* pc = outputs & 16 ? data_or_null(count) : nullptr;
            const bool only_counts = !pfi && !pti && !pr && !pmn && !pc;
            const int status = zemath_rainflow_cycles(null_in ? nullptr : data_or_null(v), n,
                                                      hysteresis, param(in, 2), capacity, pfi, pti,
                                                      pr, pmn, pc, null_out ? nullptr : &n_cycles,
                                                      outputs & 32 ? &n_closed : nullptr);
            const bool untouched = zemath_fuzz::all_equal(fi, kIntSentinel) &&
                                   zemath_fuzz::all_equal(ti, kIntSentinel) &&
                                   zemath_fuzz::all_equal(range, kSentinel) &&
                                   zemath_fuzz::all_equal(mean, kSentinel) &&
                                   zemath_fuzz::all_equal(count, kSentinel);
            if (status == 0) {
                require(n_cycles >= 0 && (only_counts || n_cycles <= capacity));
                if (outputs & 32) require(n_closed >= 0 && n_closed <= n_cycles);
                for (int k = 0; k < n_cycles && !only_counts; ++k) {
                    if (pfi) require(fi[k] >= 0 && fi[k] < len);
                    if (pti) require(ti[k] >= 0 && ti[k] < len);
                    if (pr) require(!(range[k] < 0.0));
                    if (pc) require(count[k] == 0.5 || count[k] == 1.0);
                }
                for (int k = std::max(n_cycles, 0); k < slots; ++k)
                    require(fi[k] == kIntSentinel && same_bits(range[k], kSentinel));
                if (only_counts) require(untouched);
            } else if (status == -25) {
                require(untouched && n_cycles > capacity);
            } else {
                require(untouched && n_cycles == kIntSentinel && n_closed == kIntSentinel);
            }
            break;
        }
        default: {
            std::vector<double> range = in.reals(n), count = in.reals(n);
            if (in.byte() & 1)
                for (double& e : range) e = std::fabs(std::fmod(e, 1e3));
            if (in.byte() & 1)
                for (double& e : count) e = 0.5 * (in.byte() & 3);
            const double exponent = in.byte() & 1 ? in.real() : 3.0;
            const double intercept = in.byte() & 1 ? in.real() : 1e12;
            double damage = kSentinel;
            const int status =
                zemath_rainflow_damage(null_in ? nullptr : data_or_null(range),
                                       in.byte() & 1 ? data_or_null(count) : nullptr, n, exponent,
                                       intercept, in.real(), null_out ? nullptr : &damage);
            if (status != 0)
                require(same_bits(damage, kSentinel));
            else
                require(damage >= 0.0);
            break;
        }
    }
    if (which != 0) require(same_bits(v, v0) && same_bits(t, t0));
    return 0;
}
