// Out-of-line operations of the double vector.
#include "frame/nrvec.hpp"

#include "frame/scan.hpp"

namespace zemath {

int range_min_max(const NRVec<double>& v, double* min, double* max, int* index_of_min,
                  int* index_of_max, int first, int last, const double* missing) {
    if (last == -1) last = v.size() - 1;
    if (!v.is_valid() || first < 0 || first > last || last >= v.size()) return -1;
    const ScanResult<double> r =
        scan_min_max<double, double, false>(v.data(), first, last + 1, missing);
    if (r.count) {
        if (min) *min = r.min;
        if (max) *max = r.max;
    }
    if (index_of_min) *index_of_min = r.index_of_min;
    if (index_of_max) *index_of_max = r.index_of_max;
    return r.count;
}

}  // namespace zemath
