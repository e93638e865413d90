// Fuzz target: the record sorts with the library's comparison functions on records of
// any width; a successful sort leaves the keys in order and the records a permutation.
#include <algorithm>
#include <cstring>

#include "fuzz_input.hpp"
#include "zemath.h"
#include "zemath/sort.h"

using zemath_fuzz::Input;
using zemath_fuzz::require;

namespace {

using Compare = int (*)(const void*, const void*);

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    static const int codes[] = {2, 4, 5, 6, 8, 9, 10, 11};
    static const int key_bytes[] = {1, 1, 2, 2, 4, 4, 4, 8};
    const int which = in.pick(8);
    const bool ascending = in.byte() & 1;
    const bool merge = in.byte() & 1;
    const int width = key_bytes[which] + in.pick(9);
    const int records = in.count(300);
    const int count = records > 0 ? records : 0;
    std::vector<unsigned char> base(static_cast<size_t>(count) * static_cast<size_t>(width));
    for (unsigned char& b : base) b = in.byte();
    if (which == 7 && in.byte() % 4 == 0) {  // doubles with NaN, NANUM and signed zeros
        for (int r = 0; r < count; ++r) {
            const double v = in.real();
            std::memcpy(base.data() + static_cast<size_t>(r) * width, &v, sizeof v);
        }
    }
    void* compare = ascending ? GetAppropriateCompareAscend(codes[which])
                              : GetAppropriateCompareDescend(codes[which]);
    const int first = in.count(count);
    const int back = in.count(count);
    const int last = count - 1 - (back > 0 ? back : 0);
    const std::vector<unsigned char> before = base;
    void* records_ptr = base.empty() ? nullptr : base.data();
    const int sorted = merge ? theMergeSort(records_ptr, first, last, width, compare)
                             : theQuickSort(records_ptr, first, last, width, compare);
    if (!sorted) {
        require(base == before);
        return 0;
    }
    const auto cmp = reinterpret_cast<Compare>(compare);
    for (int r = first; r < last; ++r)
        require(cmp(base.data() + static_cast<size_t>(r) * width,
                    base.data() + static_cast<size_t>(r + 1) * width) <= 0 ||
                which >= 6);  // float keys: NaN compares equal to everything
    // Outside the range nothing moved; inside, the multiset of records is kept.
    require(
        std::equal(base.begin(), base.begin() + static_cast<long>(first) * width, before.begin()));
    require(std::equal(base.begin() + static_cast<long>(last + 1) * width, base.end(),
                       before.begin() + static_cast<long>(last + 1) * width));
    // Records compared in place (no copy per record): both sides' record addresses sorted
    // by their bytes, then compared pairwise.
    const auto record_order = [width](const unsigned char* p, const unsigned char* q) {
        return std::memcmp(p, q, static_cast<size_t>(width)) < 0;
    };
    std::vector<const unsigned char*> a, b;
    a.reserve(static_cast<size_t>(last - first + 1));
    b.reserve(static_cast<size_t>(last - first + 1));
    for (int r = first; r <= last; ++r) {
        a.push_back(base.data() + static_cast<size_t>(r) * width);
        b.push_back(before.data() + static_cast<size_t>(r) * width);
    }
    std::sort(a.begin(), a.end(), record_order);
    std::sort(b.begin(), b.end(), record_order);
    for (size_t k = 0; k < a.size(); ++k)
        require(std::memcmp(a[k], b[k], static_cast<size_t>(width)) == 0);
    return 0;
}
