// Internal pieces of the triangulation shared with the scattered-data interpolators.
#pragma once

#include <cstddef>
#include <cstring>
#include <new>
#include <vector>

#include "core/allocate.hpp"
#include "gridding/delaunay.hpp"
#include "zemath/triangulation.h"

namespace zemath {

// A growable array of doubles (the few vector operations the node preparation uses) in
// storage from raw_alloc, so that a record can take it over as its own array (release)
// instead of copying it. Throws std::bad_alloc when storage cannot be had.
class NodeArray {
  public:
    NodeArray() = default;
    NodeArray(const NodeArray& other) { assign(other.begin(), other.end()); }
    NodeArray(NodeArray&& other) noexcept { swap(other); }
    NodeArray& operator=(const NodeArray& other) {
        if (this != &other) assign(other.begin(), other.end());
        return *this;
    }
    NodeArray& operator=(NodeArray&& other) noexcept {
        NodeArray(std::move(other)).swap(*this);
        return *this;
    }
    ~NodeArray() { raw_free(data_); }

    double* data() noexcept { return data_; }
    const double* data() const noexcept { return data_; }
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    double* begin() noexcept { return data_; }
    double* end() noexcept { return data_ + size_; }
    const double* begin() const noexcept { return data_; }
    const double* end() const noexcept { return data_ + size_; }
    double& operator[](std::size_t i) noexcept { return data_[i]; }
    const double& operator[](std::size_t i) const noexcept { return data_[i]; }

    void reserve(std::size_t count) {
        if (count <= capacity_) return;
        double* const grown = raw_array<double>(count);
        if (grown == nullptr) throw std::bad_alloc();
        if (size_ > 0) std::memcpy(grown, data_, size_ * sizeof(double));
        raw_free(data_);
        data_ = grown, capacity_ = count;
    }
    void resize(std::size_t count) {  // new elements are 0.0, as a vector's
        reserve(count);
        for (std::size_t i = size_; i < count; ++i) data_[i] = 0.0;
        size_ = count;
    }
    void push_back(double value) {
        if (size_ == capacity_) reserve(capacity_ < 8 ? 8 : 2 * capacity_);
        data_[size_++] = value;
    }
    void assign(const double* first, const double* last) {
        size_ = 0;
        reserve(static_cast<std::size_t>(last - first));
        if (last != first)
            std::memcpy(data_, first, static_cast<std::size_t>(last - first) * sizeof(double));
        size_ = static_cast<std::size_t>(last - first);
    }
    void clear() noexcept { size_ = 0; }
    void swap(NodeArray& other) noexcept {
        std::swap(data_, other.data_), std::swap(size_, other.size_),
            std::swap(capacity_, other.capacity_);
    }
    // The storage (at least size() elements, from raw_alloc; null when none was ever
    // allocated), handed to the caller; the array is left empty.
    double* release() noexcept {
        double* const block = data_;
        data_ = nullptr, size_ = capacity_ = 0;
        return block;
    }

  private:
    double* data_ = nullptr;
    std::size_t size_ = 0, capacity_ = 0;
};

struct Nodes {
    NodeArray x, y, z;
    double xrange = 1.0, yrange = 1.0;  // factors still to apply to reach caller units
    void scale_back();
};

// Usable nodes, duplicates within 1e-8 of the ranges merged, sorted (x, then y); divided
// by the ranges when the normalised option is set (scale_back undoes it). 0 or -2.
int prepare_nodes(int n, const double* x, const double* y, const double* z, unsigned options,
                  Nodes& nodes);

// Built-in or engine build (with fallback). 0, -2 or -130. Without neighbours the mesh's
// nb may be left empty (its twin links are always there).
int triangulate_nodes(const Nodes& nodes, unsigned options, Mesh& mesh, bool neighbours = true);

}  // namespace zemath
