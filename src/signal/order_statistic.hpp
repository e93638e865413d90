// Sliding order statistics: a multiset of doubles with insertion, removal of one equal
// value and access to the k-th smallest, for the moving percentile filter. Values are
// ordered by operator< with NaN above every number (equal to other NaNs).
//
// Small windows keep a sorted array: binary search, and one memmove per update of the
// elements between the old and the new rank, which at these sizes costs less than the
// pointer chasing of a tree. Larger windows use an order-statistic treap in a node pool
// sized once (no allocation per update): O(log w) expected per insertion, removal and
// k-th access.
// Reference: R. Seidel, C. R. Aragon, "Randomized search trees", Algorithmica 16 (1996).
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace zemath {

inline bool order_less(double a, double b) noexcept {
    return a < b || (!std::isnan(a) && std::isnan(b));
}

class SortedWindow {
  public:
    explicit SortedWindow(std::size_t capacity) { values_.reserve(capacity); }
    std::size_t size() const noexcept { return values_.size(); }
    void insert(double v) {
        values_.insert(std::upper_bound(values_.begin(), values_.end(), v, order_less), v);
    }
    void erase(double v) {
        auto it = std::lower_bound(values_.begin(), values_.end(), v, order_less);
        if (it != values_.end()) values_.erase(it);
    }
    double kth(std::size_t k) const noexcept { return values_[k]; }

  private:
    std::vector<double> values_;
};

class TreapWindow {
  public:
    explicit TreapWindow(std::size_t capacity) : nodes_(capacity + 1) {
        free_.reserve(capacity);
        for (std::size_t i = capacity; i >= 1; --i) free_.push_back(static_cast<std::uint32_t>(i));
    }
    std::size_t size() const noexcept { return nodes_[root_].size; }

    void insert(double v) {
        const std::uint32_t node = free_.back();
        free_.pop_back();
        nodes_[node] = Node{v, 0, 0, 1, next_priority()};
        std::uint32_t left = 0, right = 0;
        split_less(root_, v, left, right);
        root_ = merge(merge(left, node), right);
    }
    void erase(double v) {
        std::uint32_t left = 0, right = 0, first = 0, rest = 0;
        split_less(root_, v, left, right);  // left: values below v
        split_count(right, 1, first, rest);
        if (first != 0 && !order_less(v, nodes_[first].key)) {
            free_.push_back(first);
            root_ = merge(left, rest);
        } else {
            root_ = merge(left, merge(first, rest));
        }
    }
    double kth(std::size_t k) const noexcept {
        std::uint32_t t = root_;
        for (;;) {
            const std::size_t left = nodes_[nodes_[t].left].size;
            if (k < left) {
                t = nodes_[t].left;
            } else if (k == left) {
                return nodes_[t].key;
            } else {
                k -= left + 1;
                t = nodes_[t].right;
            }
        }
    }

  private:
    struct Node {
        double key;
        std::uint32_t left, right, size, priority;
    };
    std::uint32_t next_priority() noexcept {  // xorshift32: a fixed, reproducible sequence
        seed_ ^= seed_ << 13;
        seed_ ^= seed_ >> 17;
        seed_ ^= seed_ << 5;
        return seed_;
    }
    void update(std::uint32_t t) noexcept {
        nodes_[t].size = 1 + nodes_[nodes_[t].left].size + nodes_[nodes_[t].right].size;
    }
    // Splits t into values ordered below v and the rest.
    void split_less(std::uint32_t t, double v, std::uint32_t& left, std::uint32_t& right) {
        if (t == 0) {
            left = right = 0;
        } else if (order_less(nodes_[t].key, v)) {
            split_less(nodes_[t].right, v, nodes_[t].right, right);
            left = t;
            update(t);
        } else {
            split_less(nodes_[t].left, v, left, nodes_[t].left);
            right = t;
            update(t);
        }
    }
    // Splits t into its first count values and the rest.
    void split_count(std::uint32_t t, std::size_t count, std::uint32_t& left,
                     std::uint32_t& right) {
        if (t == 0) {
            left = right = 0;
            return;
        }
        const std::size_t ls = nodes_[nodes_[t].left].size;
        if (count <= ls) {
            split_count(nodes_[t].left, count, left, nodes_[t].left);
            right = t;
        } else {
            split_count(nodes_[t].right, count - ls - 1, nodes_[t].right, right);
            left = t;
        }
        update(t);
    }
    std::uint32_t merge(std::uint32_t a, std::uint32_t b) {
        if (a == 0) return b;
        if (b == 0) return a;
        if (nodes_[a].priority > nodes_[b].priority) {
            nodes_[a].right = merge(nodes_[a].right, b);
            update(a);
            return a;
        }
        nodes_[b].left = merge(a, nodes_[b].left);
        update(b);
        return b;
    }

    std::vector<Node> nodes_;  // node 0 is the empty tree (size 0)
    std::vector<std::uint32_t> free_;
    std::uint32_t root_ = 0;
    std::uint32_t seed_ = 2463534242u;
};

}  // namespace zemath
