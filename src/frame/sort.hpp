// Sorting inside the library: the vector container sorts itself, and fills and reorders
// an index vector, through the exported sorter class (zemath/sort.hpp).
//
// Index sort of keys over positions first..last (last = -1: the end): the index vector
// is filled with 0, 1, 2, ... over its whole length (grown to the key count when
// shorter), then a CZSorter with the chosen method (0 quicksort, otherwise the stable
// merge sort) sorts keys[first..last] with index[first..last] as companion, ascending or
// descending. Positions outside first..last keep their keys and index values. Returns
// false, with keys untouched, for an invalid key vector or a range outside it (first < 0,
// first > last, last >= size). Growing the index vector, or a sorter that cannot get its
// memory, throws 31000 as the containers do (run inside the export guard).
#pragma once

#include "frame/nrvec.hpp"

namespace zemath {

bool sort_with_index(NRVec<double>& keys, NRVec<int>& index, bool ascending, int method,
                     int first = 0, int last = -1);
bool sort_with_index(NRVec<int>& keys, NRVec<int>& index, bool ascending, int method, int first = 0,
                     int last = -1);

// Sorts keys[first..last] in place, without an index.
bool sort_vector(NRVec<double>& keys, bool ascending, int method, int first = 0, int last = -1);
bool sort_vector(NRVec<int>& keys, bool ascending, int method, int first = 0, int last = -1);

}  // namespace zemath
