// NRMat<T>: the library's working matrix: one contiguous row-major block reached
// through an array of row pointers. Ownership 0: owns block and row pointers; 1: owns
// only the row pointers (the block is the caller's); other: owns neither. Allocation
// failure throws the integer 31000.
#pragma once

#include <algorithm>
#include <new>
#include <type_traits>

#include "core/guard.hpp"
#include "zemath/types.h"

namespace zemath {

template <class T>
class NRMat {
  public:
    NRMat() = default;

    NRMat(int rows, int cols) { allocate(rows, cols); }

    NRMat(int rows, int cols, const T& value) {
        allocate(rows, cols);
        fill(value);
    }

    // Attaches row pointers to a caller's contiguous block (ownership 1).
    NRMat(T* block, int rows, int cols) { attach(block, rows, cols); }

    NRMat(const NRMat& other) {
        if (!other.is_valid()) return;
        allocate(other.rows_, other.cols_);
        std::copy_n(other.block(), count(), block());
    }

    NRMat& operator=(const NRMat& other) {
        if (this == &other || !other.is_valid()) return *this;
        if (rows_ != other.rows_ || cols_ != other.cols_ || ownership_ != 0) {
            NRMat fresh(other.rows_, other.cols_);
            clean_up();
            steal(fresh);
        }
        std::copy_n(other.block(), count(), block());
        return *this;
    }

    NRMat(NRMat&& other) noexcept { steal(other); }
    NRMat& operator=(NRMat&& other) noexcept {
        if (this != &other) {
            clean_up();
            steal(other);
        }
        return *this;
    }

    ~NRMat() { clean_up(); }

    void clean_up() noexcept {
        if (rowptr_) {
            if (ownership_ == 0) delete[] rowptr_[0];
            if (ownership_ == 0 || ownership_ == 1) delete[] rowptr_;
        }
        rowptr_ = nullptr;
        rows_ = cols_ = ownership_ = 0;
    }

    void attach(T* block_start, int rows, int cols) {
        clean_up();
        if (rows < 1 || cols < 1 || !block_start) return;
        rowptr_ = new (std::nothrow) T*[static_cast<size_t>(rows)];
        if (!rowptr_) throw kAllocFailure;
        rows_ = rows;
        cols_ = cols;
        ownership_ = 1;
        link(block_start);
    }

    bool is_valid(bool /*check_memory*/ = false) const {
        return rows_ >= 1 && cols_ >= 1 && rowptr_ != nullptr;
    }

    int rows() const { return rows_; }
    int cols() const { return cols_; }
    int ownership() const { return ownership_; }
    T* operator[](int i) { return rowptr_[i]; }
    const T* operator[](int i) const { return rowptr_[i]; }

    // Address of element (i, j), or null out of range. (0, 0) reaches the whole block.
    T* ptr(int i, int j) {
        if (i < 0 || j < 0 || i >= rows_ || j >= cols_ || !rowptr_) return nullptr;
        return rowptr_[i] + j;
    }
    const T* ptr(int i, int j) const { return const_cast<NRMat*>(this)->ptr(i, j); }

    // Resizes to rows x cols. Unless discard is set, the first min(old rows, rows) x
    // min(old cols, cols) values of the old flat block are copied to the start of the new
    // block. Kept deliberately: callers rely on this flat row-major copy, so kept values
    // re-flow into the new rows when the column count changes.
    bool set_size(int rows, int cols, bool discard = false) {
        if (rows < 1 || cols < 1) return false;
        if (rows == rows_ && cols == cols_ && rowptr_) return true;
        NRMat fresh(rows, cols);
        if (!discard && is_valid()) {
            const long keep = static_cast<long>(std::min(rows_, rows)) * std::min(cols_, cols);
            std::copy_n(block(), keep, fresh.block());
        }
        clean_up();
        steal(fresh);
        return true;
    }

    void fill(const T& value) {
        if (!is_valid()) return;
        for (int i = 0; i < rows_; ++i) std::fill_n(rowptr_[i], cols_, value);
    }

    // Copies rows first_row..last_row and columns first_col..last_col (-1 for a last
    // index: the last row or column) into target, resized to fit. A target that is this
    // matrix itself is served through a temporary copy.
    bool sub_matrix(NRMat& target, int first_col, int last_col, int first_row, int last_row) const {
        if (!is_valid()) return false;
        if (last_col == -1) last_col = cols_ - 1;
        if (last_row == -1) last_row = rows_ - 1;
        if (first_col < 0 || first_col > last_col || last_col >= cols_) return false;
        if (first_row < 0 || first_row > last_row || last_row >= rows_) return false;
        NRMat part(last_row - first_row + 1, last_col - first_col + 1);
        for (int i = first_row; i <= last_row; ++i)
            std::copy(rowptr_[i] + first_col, rowptr_[i] + last_col + 1, part[i - first_row]);
        target = std::move(part);
        return true;
    }

    // The transpose as a new matrix.
    NRMat transposed() const {
        NRMat t;
        if (!is_valid()) return t;
        t.set_size(cols_, rows_, true);
        for (int i = 0; i < rows_; ++i)
            for (int j = 0; j < cols_; ++j) t[j][i] = rowptr_[i][j];
        return t;
    }

    // Sets every diagonal element to value.
    void set_diagonal(const T& value) {
        for (int i = 0; i < std::min(rows_, cols_); ++i) rowptr_[i][i] = value;
    }

    T* block() { return rowptr_ ? rowptr_[0] : nullptr; }
    const T* block() const { return rowptr_ ? rowptr_[0] : nullptr; }
    long count() const { return static_cast<long>(rows_) * cols_; }

  private:
    void allocate(int rows, int cols) {
        if (rows < 1 || cols < 1) return;
        T** ptrs = new (std::nothrow) T*[static_cast<size_t>(rows)];
        if (!ptrs) throw kAllocFailure;
        T* storage = new (std::nothrow) T[static_cast<size_t>(rows) * static_cast<size_t>(cols)];
        if (!storage) {
            delete[] ptrs;
            throw kAllocFailure;
        }
        rowptr_ = ptrs;
        rows_ = rows;
        cols_ = cols;
        ownership_ = 0;
        link(storage);
        if constexpr (std::is_same_v<T, d_complex>)
            std::fill_n(storage, count(), d_complex{0.0, 0.0});
    }
    void link(T* storage) {
        for (int i = 0; i < rows_; ++i) rowptr_[i] = storage + static_cast<long>(i) * cols_;
    }
    void steal(NRMat& other) noexcept {
        rows_ = other.rows_;
        cols_ = other.cols_;
        rowptr_ = other.rowptr_;
        ownership_ = other.ownership_;
        other.rows_ = other.cols_ = other.ownership_ = 0;
        other.rowptr_ = nullptr;
    }

    int rows_ = 0;
    int cols_ = 0;
    T** rowptr_ = nullptr;
    int ownership_ = 0;
};

// Matrix product a x b into a new matrix; an empty result when the inner sizes differ.
template <class T>
NRMat<T> multiply(const NRMat<T>& a, const NRMat<T>& b) {
    NRMat<T> product;
    if (!a.is_valid() || !b.is_valid() || a.cols() != b.rows()) return product;
    product.set_size(a.rows(), b.cols(), true);
    product.fill(T{});
    for (int i = 0; i < a.rows(); ++i)
        for (int k = 0; k < a.cols(); ++k) {
            const T aik = a[i][k];
            for (int j = 0; j < b.cols(); ++j) product[i][j] += aik * b[k][j];
        }
    return product;
}

}  // namespace zemath
