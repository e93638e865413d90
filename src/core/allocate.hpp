// Storage that may fail without throwing.
//
// try_allocate: scratch arrays; the caller falls back to a method that needs none, or
// reports the failure through its own status.
//
// raw_alloc / raw_free: the one source of untyped blocks (records' arrays handed to
// callers and released by the library's own free functions, FFTW's aligned buffers). They
// go through the global allocation functions, as the containers do, so that a program
// replacing those functions (the allocation-failure test) sees every allocation of the
// library in one sequence. A block from raw_alloc is released by raw_free only, never by
// free(); one from raw_alloc_aligned by raw_free_aligned with the same alignment.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace zemath {

// n default-initialised T, or null when the storage cannot be had.
template <class T>
std::unique_ptr<T[]> try_allocate(std::size_t n) {
    return std::unique_ptr<T[]>(new (std::nothrow) T[n]);
}

// bytes (at least one) of uninitialised storage, or null.
inline void* raw_alloc(std::size_t bytes) noexcept {
    return ::operator new(bytes > 0 ? bytes : 1, std::nothrow);
}

inline void raw_free(void* block) noexcept {
    ::operator delete(block);
}

// bytes (at least one) aligned to alignment (a power of two), or null.
inline void* raw_alloc_aligned(std::size_t bytes, std::size_t alignment) noexcept {
    return ::operator new (bytes > 0 ? bytes : 1, std::align_val_t{alignment}, std::nothrow);
}

inline void raw_free_aligned(void* block, std::size_t alignment) noexcept {
    ::operator delete (block, std::align_val_t{alignment});
}

// Storage for count T (at least one), or null, also when the byte count overflows.
template <class T>
T* raw_array(std::size_t count) noexcept {
    if (count > SIZE_MAX / sizeof(T)) return nullptr;
    return static_cast<T*>(raw_alloc(count > 0 ? count * sizeof(T) : sizeof(T)));
}

}  // namespace zemath
