// Duplicate merging of scattered points: points whose x (and y) agree within absolute
// tolerances are merged into one, their value arrays combined by a method code.
//
// Method: one sort of the points by x (sort_by_key below: the radix sort from 2048
// points), x-clusters chained by gaps within the x tolerance, each cluster sorted by y
// and split into groups by gaps within the y tolerance, then one merging pass over
// arrays gathered in x order (no random reads after the gather). O(n log n); no pairwise
// scan. The merged point keeps the coordinates of the first point of its group in the
// cluster's y order (smallest y, then smallest x), so merged coordinates are always
// coordinates of the data.
// Failure: none beyond allocation (31000 / bad_alloc, caught by the export guard).
#pragma once

#include <cstring>
#include <span>
#include <vector>

#include "platform/util/sort_kernels.hpp"

namespace zemath {

// A key beside the position it came from, packed as the library's sorter packs a double
// key with its int index (12 bytes).
using KeyedPosition = util::Record<12>;
inline KeyedPosition keyed(double key, int position) {
    KeyedPosition r;
    std::memcpy(r.bytes, &key, sizeof key);
    std::memcpy(r.bytes + sizeof key, &position, sizeof position);
    return r;
}
inline double key_of(const KeyedPosition& r) {
    double key;
    std::memcpy(&key, r.bytes, sizeof key);
    return key;
}
inline int position_of(const KeyedPosition& r) {
    int position;
    std::memcpy(&position, r.bytes + sizeof(double), sizeof position);
    return position;
}

// Sorts the records by key, ascending; keys must not be NaN (callers drop them), -0.0
// ties with 0.0. The order of equal keys is the one the library's index sort gives (the
// vector container's sort_with_index, quicksort method): from 2048 records the stable
// radix sort, below it the introsort. The node sort of the triangulation and the
// duplicate merging share it.
void sort_by_key(std::vector<KeyedPosition>& records);

enum class DupMethod { mean = 0, median = 1, minimum = 2, maximum = 3, sum = 4, keep_all = 5 };

// Unknown codes mean 0 (mean), as documented.
DupMethod dup_method_from_code(int code);

// Combines one group of values by the method; values equal to NANUM are ignored, a group
// with no usable value gives NANUM. A NaN among the values propagates.
double combine_values(std::span<double> group, DupMethod method);

struct DupOptions {
    // The documented default tolerances (zemath/xyz.h: 1e-8 when no record is given).
    double xtol = 1e-8;
    double ytol = 1e-8;
    bool use_y = true;           // false: one key (x) only
    bool keep_missing_z = true;  // false: points whose first value is NANUM are dropped
};

// Merges duplicates of the points (x[i], y[i]) with companion value arrays values[k][i],
// in place; the survivors are written to the front of every array, x-cluster by
// x-cluster, by y inside each cluster.
// Points whose x (or y when used) is NANUM or NaN are dropped first. Returns the new
// count (0 when nothing is left). keep_all is not handled here (callers return early).
int merge_duplicates(int n, double* x, double* y, std::span<double* const> values, DupMethod method,
                     const DupOptions& options);

// Sorts x[0..n-1] ascending and keeps the first of every chain of values within tol
// of its predecessor; NaN and NANUM are dropped. Returns the new count.
int unique_sorted(double* x, int n, double tol);

}  // namespace zemath
