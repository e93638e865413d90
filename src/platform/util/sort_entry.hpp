// The utility library's two record-sort entry points: records first..last of a given
// width, sorted in place with a caller's comparison function (negative: a before b).
// merge_sort_records is stable; quick_sort_records is an introsort, O(n log n) on every
// input and not stable. Both run the kernels of sort_kernels.hpp, on a fixed-size record
// type for the usual widths and on an index array (then permuting the records by cycles)
// for any other width.
//
// Both return false, with the records untouched, for a null base or comparison
// function, a width below 1, first < 0 or last < first, or when working storage cannot
// be allocated; true otherwise (also for a single record).
#pragma once

namespace zemath::util {

using RecordCompare = int (*)(const void*, const void*);

bool merge_sort_records(void* base, int first, int last, int width, RecordCompare compare);
bool quick_sort_records(void* base, int first, int last, int width, RecordCompare compare);

}  // namespace zemath::util
