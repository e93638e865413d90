// NRVec<T>: the library's working vector. It either owns its storage or is attached to
// a caller's buffer (then it never frees it). Allocation failure throws the integer
// 31000 (the export guard turns it into the export's failure value); element access
// out of range through at() yields a null pointer instead of failing.
#pragma once

#include <algorithm>
#include <cstring>
#include <new>
#include <span>
#include <type_traits>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "zemath/types.h"

namespace zemath {

// True when no neighbouring pair of data[0..n) breaks the order: ascending and strict
// needs data[i] < data[i + 1] (a pair with data[i] >= data[i + 1] fails), ascending and
// not strict fails on data[i] > data[i + 1]; descending mirrors both. A pair holding a
// NaN never breaks the rule, because every comparison with NaN is false; kept
// deliberately (hosts pass data with NaN gaps to the order checks).
template <class T>
bool ordered_run(const T* data, size_t n, bool ascending, bool allow_equal) {
    for (size_t i = 0; i + 1 < n; ++i) {
        const T& a = data[i];
        const T& b = data[i + 1];
        bool breaks;
        if (ascending)
            breaks = allow_equal ? (a > b) : (a >= b);
        else
            breaks = allow_equal ? (b > a) : (b >= a);
        if (breaks) return false;
    }
    return true;
}

template <class T>
class NRVec {
  public:
    NRVec() = default;

    // Owning vector of n elements; n < 1 gives an empty vector. New elements are left
    // uninitialised, except d_complex which is zero-filled.
    explicit NRVec(int n) { allocate(n); }

    NRVec(int n, const T& value) {
        allocate(n);
        fill(value);
    }

    // Attaches to an outside buffer without taking ownership.
    NRVec(T* buffer, int n) : size_(n), data_(buffer), attached_(true) {}

    NRVec(const NRVec& other) { copy_from(other); }
    NRVec(NRVec&& other) noexcept { steal(other); }
    NRVec& operator=(const NRVec& other) {
        if (this != &other) {
            NRVec copy(other);
            clean_up();
            steal(copy);
        }
        return *this;
    }
    NRVec& operator=(NRVec&& other) noexcept {
        if (this != &other) {
            clean_up();
            steal(other);
        }
        return *this;
    }
    ~NRVec() { clean_up(); }

    // Attached: forget the pointer; owning: free the storage.
    void clean_up() noexcept {
        if (!attached_) delete[] data_;
        data_ = nullptr;
        size_ = 0;
        attached_ = false;
    }

    void attach(T* buffer, int n) {
        clean_up();
        data_ = buffer;
        size_ = n;
        attached_ = true;
    }

    // Valid when it has at least one element and storage. The memory check always
    // succeeds: only the size and null tests decide.
    bool is_valid(bool /*check_memory*/ = false) const { return size_ >= 1 && data_ != nullptr; }

    int size() const { return size_; }
    bool attached() const { return attached_; }
    T* data() { return data_; }
    const T* data() const { return data_; }
    T& operator[](int i) { return data_[i]; }
    const T& operator[](int i) const { return data_[i]; }
    T* begin() { return data_; }
    T* end() { return data_ + (size_ > 0 ? size_ : 0); }
    const T* begin() const { return data_; }
    const T* end() const { return data_ + (size_ > 0 ? size_ : 0); }
    std::span<T> span() { return {data_, static_cast<size_t>(size_ > 0 ? size_ : 0)}; }
    std::span<const T> span() const { return {data_, static_cast<size_t>(size_ > 0 ? size_ : 0)}; }

    // Pointer to element i, or null when i is outside 0..size-1.
    T* at(int i) { return (i >= 0 && i < size_ && data_) ? data_ + i : nullptr; }
    const T* at(int i) const { return (i >= 0 && i < size_ && data_) ? data_ + i : nullptr; }

    void fill(const T& value) {
        if (is_valid()) std::fill(begin(), end(), value);
    }

    // Resizes to n elements. Unless discard is set, the first min(old, n) elements are
    // kept. The vector owns its storage afterwards. Returns false for n < 1.
    bool set_size(int n, bool discard = false) {
        if (n < 1) return false;
        if (n == size_ && data_ && !attached_) return true;
        NRVec fresh(n);
        if (!discard && is_valid()) std::copy_n(data_, std::min(n, size_), fresh.data_);
        clean_up();
        steal(fresh);
        return true;
    }

    // Appends one element (reallocating owned storage geometrically).
    void append(const T& value) { insert(size_ > 0 ? size_ : 0, value); }

    // Inserts value before position pos (0..size). Returns false for a bad position.
    bool insert(int pos, const T& value) {
        const int n = size_ > 0 ? size_ : 0;
        if (pos < 0 || pos > n) return false;
        NRVec fresh(n + 1);
        if (n) {
            std::copy_n(data_, pos, fresh.data_);
            std::copy(data_ + pos, data_ + n, fresh.data_ + pos + 1);
        }
        fresh.data_[pos] = value;
        clean_up();
        steal(fresh);
        return true;
    }

    // Removes elements first..last (inclusive). Returns false for a bad range.
    bool remove(int first, int last) {
        if (!is_valid() || first < 0 || first > last || last >= size_) return false;
        const int keep = size_ - (last - first + 1);
        if (keep == 0) {
            clean_up();
            return true;
        }
        NRVec fresh(keep);
        std::copy_n(data_, first, fresh.data_);
        std::copy(data_ + last + 1, data_ + size_, fresh.data_ + first);
        clean_up();
        steal(fresh);
        return true;
    }

    // Index of the first element equal to value at or after start, or -1.
    int find(const T& value, int start = 0) const {
        for (int i = std::max(start, 0); i < size_; ++i)
            if (data_[i] == value) return i;
        return -1;
    }

    // Number of elements equal to value.
    int count(const T& value) const {
        return is_valid() ? static_cast<int>(std::count(begin(), end(), value)) : 0;
    }

    // Copies elements first..last (last = -1: the end) into target (resized to fit).
    bool sub_vector(NRVec& target, int first, int last = -1) const {
        if (last == -1) last = size_ - 1;
        if (!is_valid() || first < 0 || first > last || last >= size_) return false;
        NRVec fresh(last - first + 1);
        std::copy(data_ + first, data_ + last + 1, fresh.data_);
        target = std::move(fresh);
        return true;
    }

    // Order test over first..last (last = -1: the end): ascending or descending, with or
    // without equal neighbours; see ordered_run.
    bool is_ordered(bool ascending, bool allow_equal, int first = 0, int last = -1) const {
        if (last == -1) last = size_ - 1;
        if (!is_valid() || first < 0 || first > last || last >= size_) return false;
        return ordered_run(data_ + first, static_cast<size_t>(last - first) + 1, ascending,
                           allow_equal);
    }

  private:
    void allocate(int n) {
        if (n < 1) return;
        data_ = new (std::nothrow) T[static_cast<size_t>(n)];
        if (!data_) throw kAllocFailure;
        size_ = n;
        if constexpr (std::is_same_v<T, d_complex>) std::fill_n(data_, n, d_complex{0.0, 0.0});
    }
    void copy_from(const NRVec& other) {
        if (!other.is_valid()) return;
        allocate(other.size_);
        std::copy(other.begin(), other.end(), data_);
    }
    void steal(NRVec& other) noexcept {
        size_ = other.size_;
        data_ = other.data_;
        attached_ = other.attached_;
        other.size_ = 0;
        other.data_ = nullptr;
        other.attached_ = false;
    }

    int size_ = 0;
    T* data_ = nullptr;
    bool attached_ = false;
};

// --- Operations particular to some instantiations -------------------------------------

// Subtracts a scalar; NANUM in an element or as the scalar gives NANUM.
inline void subtract_scalar(NRVec<double>& v, double scalar) {
    if (!v.is_valid()) return;
    for (double& x : v) x = (is_missing(x) || is_missing(scalar)) ? kNanum : x - scalar;
}

// Divides by a scalar; NANUM in an element, a NANUM scalar or a scalar of exactly 0 gives
// NANUM.
inline void divide_scalar(NRVec<double>& v, double scalar) {
    if (!v.is_valid()) return;
    const bool all_missing = is_missing(scalar) || scalar == 0.0;
    for (double& x : v) x = (all_missing || is_missing(x)) ? kNanum : x / scalar;
}

// True when v is valid, every element is below size and no value occurs twice.
inline bool is_permutation(const NRVec<unsigned int>& v) {
    if (!v.is_valid()) return false;
    NRVec<unsigned char> seen(v.size(), 0);
    for (unsigned int value : v) {
        if (value >= static_cast<unsigned int>(v.size()) || seen[static_cast<int>(value)])
            return false;
        seen[static_cast<int>(value)] = 1;
    }
    return true;
}

// Dot product over the common length (plain arithmetic: callers remove missing values
// first).
template <class T>
inline T dot(const NRVec<T>& a, const NRVec<T>& b) {
    T sum{};
    const int n = std::min(a.size(), b.size());
    for (int i = 0; i < n; ++i) sum += a[i] * b[i];
    return sum;
}

// Range minimum and maximum of a double vector over first..last (last = -1: the end),
// skipping values equal to *missing when missing is non-null; first occurrence wins on
// ties. Returns -1 for an invalid vector or bad range, else the number of non-missing
// values; min and max are written only when that number is non-zero.
int range_min_max(const NRVec<double>& v, double* min, double* max, int* index_of_min,
                  int* index_of_max, int first, int last, const double* missing);

}  // namespace zemath
