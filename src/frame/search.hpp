// Searches in ascending double arrays and order tests shared by the frame families.
#pragma once

#include <span>

namespace zemath {

// Position of target in ascending x (non-empty): -1 below x[0], size - 1 at or above the
// last element, 0 for sizes up to 2, otherwise the bisection's last position whose value
// does not exceed target (low = 0, high = size - 1; mid = (low + high) / 2; x[mid] >
// target moves high, else low; until high - low = 1).
int find_index_ascending(std::span<const double> x, double target);

// The same for every target, written to indices[0..targets.size()), with the same
// results: 32 searches run interleaved, with masks in place of branches, so that their
// memory loads overlap; from 1024 targets on an array verified non-decreasing and
// NaN-free, the targets are radix-sorted and found in one galloping sweep instead.
void find_indices_ascending(std::span<const double> x, std::span<const double> targets,
                            int* indices);

// Index of the element of ascending x nearest to target: the lower value on ties, the
// first of repeated values.
int nearest_index_ascending(std::span<const double> x, double target);

// 2 increasing, 1 decreasing, 0 neither (the order test of the vector container over the
// whole array, equal neighbours allowed unless strict). x must be non-empty.
int monotonic_direction(std::span<const double> x, bool strict);

}  // namespace zemath
