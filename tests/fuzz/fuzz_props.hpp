// Property helpers shared by the signal, image and reduction targets: sentinel-filled
// output buffers whose untouched state is checked after a refused call, bitwise equality
// (NaN and NANUM compare equal to themselves), and argument draws that mostly stay in a
// working range but sometimes take any int.
#pragma once

#include <cstring>
#include <vector>

#include "fuzz_input.hpp"

namespace zemath_fuzz {

// A double no export computes by chance.
inline constexpr double kSentinel = -7.0e-123;
inline constexpr int kIntSentinel = -0x5A5A5A5A;

inline bool same_bits(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

template <class T>
bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

inline std::vector<double> sentinels(int n) {
    return std::vector<double>(static_cast<size_t>(n > 0 ? n : 0), kSentinel);
}

inline std::vector<int> int_sentinels(int n) {
    return std::vector<int>(static_cast<size_t>(n > 0 ? n : 0), kIntSentinel);
}

template <class T>
bool all_equal(const std::vector<T>& v, T value) {
    for (const T& e : v)
        if (std::memcmp(&e, &value, sizeof(T)) != 0) return false;
    return true;
}

// A window, order or count argument: mostly in [-1, max], sometimes any int.
inline int param(Input& in, int max) {
    return in.byte() % 16 == 0 ? in.integer() : in.count(max);
}

// A length or repeat count the caller backs with storage or time: mostly in [-1, max],
// sometimes 0, negative or INT_MIN, never beyond max.
inline int length(Input& in, int max) {
    if (in.byte() % 16 == 0) {
        static const int edges[] = {INT32_MIN, -2, -1, 0};
        return edges[in.pick(4)];
    }
    return in.count(max);
}

}  // namespace zemath_fuzz
