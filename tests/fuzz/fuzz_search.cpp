// Fuzz target: the searches, order tests and range rounding on arrays exactly as long
// as their counts; indices written must lie inside the array.
#include <algorithm>
#include <cmath>

#include "fuzz_input.hpp"
#include "zemath.h"

using zemath_fuzz::data_or_null;
using zemath_fuzz::Input;
using zemath_fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(10);
    const int n = in.count(400);
    const int len = n > 0 ? n : 0;
    std::vector<double> x = in.reals(n);
    if (in.byte() & 1) std::sort(x.begin(), x.end());  // many searches want ascending data
    double* px = in.byte() % 16 ? data_or_null(x) : nullptr;
    int index = -7, other = -7;
    switch (which) {
        case 0:
            if (zemath_binary_search(px, n, in.real(), &index) == 0)
                require(index >= -1 && index < len);
            break;
        case 1: {
            const int nt = in.count(64);
            std::vector<double> targets = in.reals(nt);
            std::vector<int> found(targets.size(), -9);
            if (zemath_array_find_indices(px, n, data_or_null(targets), nt, data_or_null(found)) ==
                0)
                for (int f : found) require(f == -9 || (f >= -1 && f < len));
            break;
        }
        case 2:
            if (zemath_find_nearest_index(px, n, in.real(), &index) == 0)
                require(index >= 0 && index < len);
            break;
        case 3: {
            const int nt = in.count(64);
            std::vector<double> targets = in.reals(nt), values(targets.size());
            std::vector<int> found(targets.size(), -9);
            if (zemath_find_nearest_values(px, n, data_or_null(targets), nt, data_or_null(found),
                                           data_or_null(values)) == 0)
                for (int f : found) require(f == -9 || (f >= -1 && f < len));
            break;
        }
        case 4:
            if (zemath_find_index_by_target(px, n, in.real(), in.integer(), in.integer(), &index) ==
                0)
                require(index >= -1 && index < len);
            break;
        case 5:
            if (zemath_get_lower_upper_bounds_index(px, n, in.real(), in.real(), &index, &other) ==
                0)
                require(index >= 0 && index < len && other >= 0 && other < len);
            break;
        case 6: {
            int order = -1;
            if (zemath_check_order(px, n, in.real(), &order) == 0)
                require(order >= 0 && order <= 2);
            std::vector<int> ints = in.values<int>(n);
            zemath_i_check_order(data_or_null(ints), n, in.real(), &order);
            break;
        }
        case 7: {
            double lower = in.real(), upper = in.real(), increment = 0;
            if (zemath_round_range(&lower, &upper, in.integer(), &increment) == 0)
                require(lower <= upper && increment > 0);
            break;
        }
        case 8: {
            std::vector<double> out(x.size());
            const int hits = zemath_round_with_tolerance(px, n, in.real(), in.real(),
                                                         in.byte() & 1 ? px : data_or_null(out));
            require(hits <= len);
            break;
        }
        default:
            require(zemath_is_monotonic(px, static_cast<unsigned>(len), in.byte() & 1) <= 2);
            zemath_is_inside_range(in.real(), in.real(), in.real(), in.byte() & 1);
            break;
    }
    return 0;
}
