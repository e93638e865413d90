// Reads a fuzzer's bytes as call arguments: small choices, counts, doubles drawn either
// from raw bits or from a table of special values, and whole data arrays. Running out of
// bytes yields zeros, so every input is a complete call. Each family's target is one
// LLVMFuzzerTestOneInput that picks an export from a table and builds its arguments here.
#pragma once

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "zemath/types.h"

namespace zemath_fuzz {

class Input {
  public:
    Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }

    template <class T>
    T raw() {
        T value{};
        unsigned char bytes[sizeof(T)] = {};
        for (unsigned char& b : bytes) b = byte();
        std::memcpy(&value, bytes, sizeof(T));
        return value;
    }

    // One of n choices (n >= 1).
    int pick(int n) { return static_cast<int>(byte() % static_cast<unsigned>(n)); }

    // A count in [-1, max] (max below 0 reads as 0), biased towards the small and the edges.
    int count(int max) {
        if (max < 0) max = 0;
        switch (byte() % 8) {
            case 0:
                return 0;
            case 1:
                return 1;
            case 2:
                return -1;
            case 3:
                return max;
            default:
                return static_cast<int>(raw<uint16_t>() % (static_cast<unsigned>(max) + 1u));
        }
    }

    // Any int: the edges, small values or raw bits.
    int integer() {
        switch (byte() % 6) {
            case 0:
                return INT32_MIN;
            case 1:
                return INT32_MAX;
            case 2:
                return static_cast<int>(byte()) - 128;
            default:
                return raw<int>();
        }
    }

    // A double: special values, small decimals or raw bit patterns.
    double real() {
        static const double specials[] = {NAN,     INFINITY, -INFINITY, NANUM,    -0.0, 0.0,
                                          DBL_MAX, -DBL_MAX, DBL_MIN,   4.9e-324, 1.0,  -1.0,
                                          0.5,     2.0,      1e-300,    1e300};
        switch (byte() % 4) {
            case 0:
                return specials[byte() % (sizeof specials / sizeof specials[0])];
            case 1:
                return static_cast<double>(raw<int16_t>()) / 64.0;
            case 2:
                return static_cast<double>(byte()) / 255.0;
            default:
                return raw<double>();
        }
    }

    // n doubles (n >= 0); the array is exactly n long so that reads past it are caught.
    std::vector<double> reals(int n) {
        std::vector<double> out(static_cast<size_t>(n > 0 ? n : 0));
        for (double& v : out) v = real();
        return out;
    }

    template <class T>
    std::vector<T> values(int n) {
        std::vector<T> out(static_cast<size_t>(n > 0 ? n : 0));
        for (T& v : out) v = raw<T>();
        return out;
    }

    bool empty() const { return at_ >= size_; }

  private:
    const uint8_t* data_;
    size_t size_;
    size_t at_ = 0;
};

// Pointer to the first element, or NULL for an empty array (callers also pass NULL).
template <class T>
T* data_or_null(std::vector<T>& v) {
    return v.empty() ? nullptr : v.data();
}

// Aborts on a broken property so the fuzzer keeps the input.
inline void require(bool ok) {
    if (!ok) __builtin_trap();
}

// The same, naming the target's line that states the property.
inline void require_at(bool ok, int line) {
    if (!ok) {
        std::fprintf(stderr, "property broken at line %d\n", line);
        __builtin_trap();
    }
}

}  // namespace zemath_fuzz
