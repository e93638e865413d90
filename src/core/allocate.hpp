// Scratch storage that may fail without throwing: the caller falls back to a method that
// needs none, or reports the failure through its own status.
#pragma once

#include <cstddef>
#include <memory>
#include <new>

namespace zemath {

// n default-initialised T, or null when the storage cannot be had.
template <class T>
std::unique_ptr<T[]> try_allocate(std::size_t n) {
    return std::unique_ptr<T[]>(new (std::nothrow) T[n]);
}

}  // namespace zemath
