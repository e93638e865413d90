// Rank filters over 16-bit images: the engine, its sliding-histogram fast path and the
// exports (method and references in image_filters.hpp).
#include "gridding/image_filters.hpp"

#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#if defined(__linux__)
#include <sys/mman.h>
#endif
#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

#include "core/guard.hpp"
#include "frame/sampling_window.hpp"
#include "zemath/image.h"
#include "zemath/status.h"

namespace zemath {
namespace {

// Cleared by allow_vector_lanes(false): the vector paths then take their plain-lane code.
std::atomic<bool> vector_lanes_allowed{true};

// Counts of 16-bit values in a four-level radix-16 tree: level L holds the counts of
// the values' top 4 (L + 1) bits, so a rank is found by four scans of 16 counters.
// Counter is 16 bits wide when a window holds fewer than 65536 cells: half the memory,
// so the 65536 finest counters stay in the processor's second-level cache.
template <class Counter>
class HistogramTree {
  public:
    HistogramTree() : counts_(16 + 256 + 4096 + 65536, Counter{0}) {}
    void add(std::uint16_t v) { change(v, Counter{1}); }
    void remove(std::uint16_t v) { change(v, static_cast<Counter>(~Counter{0})); }  // -1 mod 2^k
    // The value of 0-based rank `rank` (ascending) among the values held.
    std::uint16_t select(unsigned rank) const {
        unsigned prefix = 0;
        for (int level = 0; level < 4; ++level) {
            const Counter* row = counts_.data() + kOffset[level] + prefix * 16;
            unsigned digit = 0;
            while (digit < 15 && rank >= row[digit]) rank -= row[digit++];
            prefix = prefix * 16 + digit;
        }
        return static_cast<std::uint16_t>(prefix);
    }

  private:
    static constexpr std::array<unsigned, 4> kOffset{0, 16, 16 + 256, 16 + 256 + 4096};
    void change(std::uint16_t v, Counter delta) {
        counts_[kOffset[0] + (v >> 12)] += delta;
        counts_[kOffset[1] + (v >> 8)] += delta;
        counts_[kOffset[2] + (v >> 4)] += delta;
        counts_[kOffset[3] + v] += delta;
    }
    std::vector<Counter> counts_;
};

// The threshold rule: a result replaces the pixel only when (|before - result| - T) s
// is 0 or more.
struct Threshold {
    bool active = false;
    int level = 0;  // T
    int sign = 1;   // s
    bool accepts(std::uint16_t before, std::uint16_t result) const {
        if (!active) return true;
        const int moved = before > result ? before - result : result - before;
        return (moved - level) * sign >= 0;
    }
};

Threshold make_threshold(const std::uint16_t* image, std::size_t pixels, double threshold) {
    Threshold t;
    if (threshold == 0.0 || std::isnan(threshold)) return t;
    const auto [low, high] = std::minmax_element(image, image + pixels);
    // T = trunc(range |threshold| / 100), kept in 16 bits: saturated at 65535.
    const double level =
        std::isinf(threshold) ? 65535.0 : std::trunc((*high - *low) * std::fabs(threshold) / 100.0);
    t.active = true;
    t.level = level >= 65535.0 ? 65535 : static_cast<int>(level);
    t.sign = threshold > 0 ? 1 : -1;
    return t;
}

// The operator of the percentile filter for a window of m cells.
std::unique_ptr<MathOperatorBase<std::uint16_t>> percentile_operator(double percent, int m) {
    // k in double: a percent far beyond 100 must not overflow an int.
    const double k = std::trunc(percent / 100.0 * m);
    if (k <= 1.0) return std::make_unique<FilterMin<std::uint16_t>>();  // 0, 1 and below
    if (k - 1.0 < m)
        return std::make_unique<FilterOrder<std::uint16_t>>(static_cast<int>(k) - 1, m, percent);
    return std::make_unique<FilterMax<std::uint16_t>>();
}

// Generic path: gathers each window in cell order and calls the operator.
void filter_generic(std::uint16_t* image, const std::uint16_t* copy, int n_rows, int n_cols,
                    const std::vector<WindowCell>& cells, MathOperatorBase<std::uint16_t>& op,
                    const Threshold& threshold, const FilterRegion& region) {
    std::vector<std::uint16_t> values(cells.size());
    std::vector<std::ptrdiff_t> linear(cells.size());
    int row_low = 0, row_high = 0, col_low = 0, col_high = 0;  // extent of the cells
    for (std::size_t k = 0; k < cells.size(); ++k) {
        linear[k] = cells[k].linear;
        row_low = std::min(row_low, cells[k].row);
        row_high = std::max(row_high, cells[k].row);
        col_low = std::min(col_low, cells[k].col);
        col_high = std::max(col_high, cells[k].col);
    }
    for (int r = region.row_from; r <= region.row_to; ++r) {
        const bool rows_inside = r + row_low >= 0 && r + row_high < n_rows;
        for (int c = region.col_from; c <= region.col_to; ++c) {
            const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(r) * n_cols + c;
            int count = 0;
            if (rows_inside && c + col_low >= 0 && c + col_high < n_cols) {
                // Whole window inside: no per-cell test.
                for (const std::ptrdiff_t offset : linear)
                    values[static_cast<std::size_t>(count++)] = copy[at + offset];
            } else {
                for (const WindowCell& cell : cells) {
                    const int rr = r + cell.row, cc = c + cell.col;
                    if (rr < 0 || rr >= n_rows || cc < 0 || cc >= n_cols) continue;
                    values[static_cast<std::size_t>(count++)] = copy[at + cell.linear];
                }
            }
            const std::uint16_t result = op.operate(values.data(), count, copy + at);
            if (threshold.accepts(copy[at], result)) image[at] = result;
        }
    }
}

// The rank the percentile filter takes in a full-rectangle window of count in-image
// cells, from the operator chosen for the whole window.
struct RankRule {
    enum class Kind { minimum, order, maximum } kind = Kind::minimum;
    int index = 0, window_size = 1;
    double percent = 0.0;
    unsigned rank(int count) const {
        if (kind == Kind::order)
            return static_cast<unsigned>(clipped_rank(index, window_size, percent, count));
        return kind == Kind::minimum ? 0u : static_cast<unsigned>(count - 1);
    }
};

RankRule rank_rule(const MathOperatorBase<std::uint16_t>& op, double percent, int m) {
    RankRule rule;
    rule.window_size = m;
    rule.percent = percent;
    if (const auto* order = dynamic_cast<const FilterOrder<std::uint16_t>*>(&op)) {
        rule.kind = RankRule::Kind::order;
        rule.index = order->index();
    } else if (dynamic_cast<const FilterMax<std::uint16_t>*>(&op)) {
        rule.kind = RankRule::Kind::maximum;
    }
    return rule;
}

// Row path: a window histogram slid along each row.
template <class Counter>
void filter_rectangle_rows(std::uint16_t* image, const std::uint16_t* copy, int n_rows, int n_cols,
                           int width, int height, const RankRule& rule, const Threshold& threshold,
                           const FilterRegion& region) {
    const int row_before = height / 2, row_after = (height - 1) / 2;
    const int col_before = width / 2, col_after = (width - 1) / 2;
    HistogramTree<Counter> tree;
    for (int r = region.row_from; r <= region.row_to; ++r) {
        const int top = std::max(0, r - row_before), bottom = std::min(n_rows - 1, r + row_after);
        const int rows_in = bottom - top + 1;
        auto column = [&](int c, bool add) {
            const std::uint16_t* p = copy + static_cast<std::ptrdiff_t>(top) * n_cols + c;
            for (int k = 0; k < rows_in; ++k, p += n_cols) add ? tree.add(*p) : tree.remove(*p);
        };
        int left = std::max(0, region.col_from - col_before);
        int right = std::min(n_cols - 1, region.col_from + col_after);
        for (int c = left; c <= right; ++c) column(c, true);
        for (int c = region.col_from;; ++c) {
            const std::uint16_t result = tree.select(rule.rank(rows_in * (right - left + 1)));
            const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(r) * n_cols + c;
            if (threshold.accepts(copy[at], result)) image[at] = result;
            if (c == region.col_to) break;
            // Slide one column right; inside the image one pass removes the leaving
            // column and adds the entering one (independent updates, overlapped).
            const bool leaves = c - col_before >= 0, enters = c + 1 + col_after < n_cols;
            if (leaves && enters) {
                const std::uint16_t* out = copy + static_cast<std::ptrdiff_t>(top) * n_cols + left;
                const std::uint16_t* in = out + (right + 1 - left);
                for (int k = 0; k < rows_in; ++k, out += n_cols, in += n_cols) {
                    tree.remove(*out);
                    tree.add(*in);
                }
            } else if (leaves) {
                column(left, false);
            } else if (enters) {
                column(right + 1, true);
            }
            left += leaves;
            right += enters;
        }
        for (int c = left; c <= right; ++c) column(c, false);  // empty for the next row
    }
}

// The value levels of the column path: values x = v - low over `bits` bits (the image
// range), counted at up to four levels; level k counts x >> shift(k), each level
// refining a bin of the level above into 16 (the top level takes the bits left over).
// Every level is stored in runs of 16 counters (the top one padded).
struct ValueBins {
    std::uint16_t low = 0;
    int bits = 1, levels = 1;
    int shift(int k) const { return 4 * (levels - 1 - k); }
    std::size_t size(int k) const { return (((std::size_t{1} << bits) - 1) >> shift(k)) + 1; }
    std::size_t offset(int k) const {
        std::size_t at = 0;
        for (int j = 0; j < k; ++j) at += (size(j) + 15) / 16 * 16;
        return at;
    }
    std::size_t per_column() const { return offset(levels); }  // counters
};

ValueBins value_bins(const std::uint16_t* image, std::size_t pixels) {
    const auto [low, high] = std::minmax_element(image, image + pixels);
    ValueBins bins;
    bins.low = *low;
    bins.bits = 1;  // a constant image still has one level of two bins
    while (bins.bits < 16 && (static_cast<unsigned>(*high - *low) >> bins.bits) != 0) ++bins.bits;
    bins.levels = (bins.bits + 3) / 4;
    return bins;
}

template <class To, class From>
inline void add_counts(To* to, const From* from, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) to[i] = static_cast<To>(to[i] + from[i]);
}
template <class To, class From>
inline void subtract_counts(To* to, const From* from, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) to[i] = static_cast<To>(to[i] - from[i]);
}
template <class To, class From>
inline void move_counts(To* to, const From* add, const From* remove, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) to[i] = static_cast<To>(to[i] + add[i] - remove[i]);
}

// Position of rank `rank` in counts[0..n-1] (the last bin when the counts run out);
// rank becomes the rank inside that bin.
template <class Counter>
inline std::size_t find_bin(const Counter* counts, std::size_t n, unsigned& rank) {
    std::size_t b = 0;
    while (b + 1 < n && rank >= counts[b]) rank -= counts[b++];
    return b;
}

// Zeroed storage of the column histograms. It is read and written at scattered places
// over megabytes: on Linux it is aligned to and asked to be backed by 2 MiB pages, so
// that those accesses do not each miss the address translation cache as well.
template <class T>
class ColumnStorage {
  public:
    explicit ColumnStorage(std::size_t n) : bytes_(std::max<std::size_t>(n * sizeof(T), 1)) {
        data_ = static_cast<T*>(::operator new (bytes_, std::align_val_t{kAlign}));
#if defined(__linux__) && defined(MADV_HUGEPAGE)
        if (bytes_ >= kAlign) madvise(data_, bytes_ / kAlign * kAlign, MADV_HUGEPAGE);
#endif
        std::memset(static_cast<void*>(data_), 0, bytes_);
    }
    ~ColumnStorage() {
        ::operator delete (data_, std::align_val_t{kAlign});
    }
    ColumnStorage(const ColumnStorage&) = delete;
    ColumnStorage& operator=(const ColumnStorage&) = delete;
    T* data() {
        return data_;
    }

  private:
    static constexpr std::size_t kAlign = std::size_t{2} << 20;
    std::size_t bytes_;
    T* data_;
};

// Column path: column histograms walked down vertical strips of the region. ColCounter
// holds a column's counts (at most the window height), WinCounter a window's (at most
// the window's cells); strip_cols input columns per strip, at least width. The column
// histograms are stored run by run: run u of strip column j at (u strip_cols + j) 16,
// so the runs a window sums over its columns lie side by side. The top two levels
// (at most 16 + 256 bins) of the window are kept whole; each run of 16 bins of the
// lower levels is brought up to date only when the rank falls in it.
template <class ColCounter, class WinCounter>
void filter_rectangle_columns(std::uint16_t* image, const std::uint16_t* copy, int n_rows,
                              int n_cols, int width, int height, const RankRule& rule,
                              const Threshold& threshold, const FilterRegion& region,
                              const ValueBins& bins, int strip_cols) {
    constexpr int kWholeLevels = 2;
    constexpr std::size_t kRun = 16;
    const int row_before = height / 2, row_after = (height - 1) / 2;
    const int col_before = width / 2, col_after = (width - 1) / 2;
    const int levels = bins.levels;
    std::array<std::size_t, 4> offset{}, size{};
    std::array<int, 4> shift{};
    for (int k = 0; k < levels; ++k)
        offset[k] = bins.offset(k), size[k] = bins.size(k), shift[k] = bins.shift(k);
    const std::size_t runs = bins.per_column() / kRun;
    const std::size_t whole_runs = bins.offset(std::min(levels, kWholeLevels)) / kRun;
    const auto strip = static_cast<std::size_t>(strip_cols);
    const std::uint16_t low = bins.low;
    ColumnStorage<ColCounter> columns(runs * strip * kRun);
    std::vector<WinCounter> window(runs * kRun);
    // The columns lo..hi a run of a lower level holds, valid during the pass (one output
    // row of one strip) it was brought up to date in.
    struct Stamp {
        long long pass = -1;
        int lo = 0, hi = -1;
    };
    std::vector<Stamp> stamps(runs);
    long long pass = 0;
    const int outputs_per_strip = strip_cols - (width - 1);

    for (int s0 = region.col_from; s0 <= region.col_to;) {
        const int s1 =
            region.col_to - s0 < outputs_per_strip ? region.col_to : s0 + outputs_per_strip - 1;
        const int in_lo = std::max(0, s0 - col_before);
        const int in_hi = std::min(n_cols - 1, s1 + col_after);
        // Run u of image column c.
        auto run_of = [&](std::size_t u, int c) {
            return columns.data() + (u * strip + static_cast<std::size_t>(c - in_lo)) * kRun;
        };
        // Adds (delta 1) or removes (delta -1 mod 2^k) image row r in every strip column.
        // The counters of the lower levels lie far apart (a cache miss each): those of
        // the column kAhead places on are fetched while this one is counted.
        constexpr int kAhead = 16;
        auto change_row = [&](int r, ColCounter delta) {
            const std::uint16_t* p = copy + static_cast<std::ptrdiff_t>(r) * n_cols + in_lo;
            for (int c = in_lo; c <= in_hi; ++c, ++p) {
                if (c + kAhead <= in_hi) {
                    const unsigned ahead = static_cast<unsigned>(p[kAhead] - low);
                    for (int k = kWholeLevels; k < levels; ++k) {
                        const std::size_t i = offset[k] + (ahead >> shift[k]);
                        __builtin_prefetch(run_of(i / kRun, c + kAhead) + i % kRun, 1);
                    }
                }
                const unsigned x = static_cast<unsigned>(*p - low);
                for (int k = 0; k < levels; ++k) {
                    const std::size_t i = offset[k] + (x >> shift[k]);
                    ColCounter& n = run_of(i / kRun, c)[i % kRun];
                    n = static_cast<ColCounter>(n + delta);
                }
            }
        };
        const auto minus_one = static_cast<ColCounter>(~ColCounter{0});
        int top = std::max(0, region.row_from - row_before);
        int bottom = std::min(n_rows - 1, region.row_from + row_after);
        for (int r = top; r <= bottom; ++r) change_row(r, ColCounter{1});

        for (int r = region.row_from;; ++r) {
            ++pass;
            const int rows_in = bottom - top + 1;
            int lo = std::max(0, s0 - col_before), hi = std::min(n_cols - 1, s0 + col_after);
            std::fill(window.begin(),
                      window.begin() + static_cast<std::ptrdiff_t>(whole_runs * kRun),
                      WinCounter{0});
            for (std::size_t u = 0; u < whole_runs; ++u)
                for (int c = lo; c <= hi; ++c)
                    add_counts(window.data() + u * kRun, run_of(u, c), kRun);
            for (int c = s0;; ++c) {
                unsigned rank = rule.rank(rows_in * (hi - lo + 1));
                std::size_t prefix = find_bin(window.data(), size[0], rank);
                for (int k = 1; k < levels; ++k) {
                    const std::size_t u = (offset[k] + prefix * kRun) / kRun;
                    WinCounter* run = window.data() + u * kRun;
                    if (k >= kWholeLevels) {  // bring the run to columns lo..hi
                        Stamp& stamp = stamps[u];
                        if (stamp.pass == pass && (lo - stamp.lo) + (hi - stamp.hi) < hi - lo + 1) {
                            for (int j = stamp.lo; j < lo; ++j)
                                subtract_counts(run, run_of(u, j), kRun);
                            for (int j = stamp.hi + 1; j <= hi; ++j)
                                add_counts(run, run_of(u, j), kRun);
                        } else {
                            std::fill(run, run + kRun, WinCounter{0});
                            const ColCounter* from = run_of(u, lo);
                            for (int j = lo; j <= hi; ++j, from += kRun)
                                add_counts(run, from, kRun);
                        }
                        stamp = {pass, lo, hi};
                    }
                    prefix = prefix * kRun + find_bin(run, kRun, rank);
                }
                const auto result = static_cast<std::uint16_t>(low + prefix);
                const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(r) * n_cols + c;
                if (threshold.accepts(copy[at], result)) image[at] = result;
                if (c == s1) break;
                // Slide one column right.
                const bool leaves = c - col_before >= 0, enters = c + 1 + col_after < n_cols;
                for (std::size_t u = 0; u < whole_runs; ++u) {
                    WinCounter* run = window.data() + u * kRun;
                    if (leaves && enters)
                        move_counts(run, run_of(u, hi + 1), run_of(u, lo), kRun);
                    else if (leaves)
                        subtract_counts(run, run_of(u, lo), kRun);
                    else if (enters)
                        add_counts(run, run_of(u, hi + 1), kRun);
                }
                lo += leaves;
                hi += enters;
            }
            if (r == region.row_to) break;
            // Move the column histograms down one row.
            if (r + 1 - row_before > top) change_row(top++, minus_one);
            if (r + 1 + row_after < n_rows) change_row(++bottom, ColCounter{1});
        }
        for (int r = top; r <= bottom; ++r) change_row(r, minus_one);  // zero for the next strip
        s0 = s1 + 1;
    }
}

// Input columns per strip of the column path for this window and value range, or 0 when
// even a strip of one output column would take more than kColumnHistogramMaxBytes.
int column_strip_width(int n_cols, int width, const ValueBins& bins, std::size_t counter_bytes) {
    const std::size_t column_bytes = bins.per_column() * counter_bytes;
    const std::size_t fit = kColumnHistogramBytes / column_bytes;
    const std::size_t wanted = std::max<std::size_t>(fit, static_cast<std::size_t>(width) + 63);
    if (static_cast<std::size_t>(width) * column_bytes > kColumnHistogramMaxBytes) return 0;
    const std::size_t most = kColumnHistogramMaxBytes / column_bytes;
    // A strip never needs more than the image's columns (nor fewer than the window's).
    const std::size_t cap = static_cast<std::size_t>(std::max(n_cols, width));
    return static_cast<int>(std::min({wanted, most, cap}));
}

template <class ColCounter>
void filter_rectangle_columns_for(std::uint16_t* image, const std::uint16_t* copy, int n_rows,
                                  int n_cols, int width, int height, const RankRule& rule,
                                  const Threshold& threshold, const FilterRegion& region,
                                  const ValueBins& bins, int strip_cols) {
    if (static_cast<long long>(width) * height < 65536)
        filter_rectangle_columns<ColCounter, std::uint16_t>(
            image, copy, n_rows, n_cols, width, height, rule, threshold, region, bins, strip_cols);
    else
        filter_rectangle_columns<ColCounter, std::uint32_t>(
            image, copy, n_rows, n_cols, width, height, rule, threshold, region, bins, strip_cols);
}

// Selection network path (small rectangles): the comparators of Batcher's odd-even
// merge sort of the m window cells that the output position `rank` depends on, run on
// kNetworkLanes horizontally adjacent full windows at once, one vector lane per pixel
// (the window's cell t of the pixels c .. c + lanes - 1 is one unaligned load of the
// copy). Border pixels (clipped windows) and interiors narrower than the lanes take the
// row path.
struct Exchange {
    std::uint16_t low, high;  // positions receiving the minimum and the maximum
    std::uint8_t keep;        // 1 only the minimum is used later, 2 only the maximum, 3 both
};

std::vector<Exchange> selection_network(int m, int rank) {
    int p2 = 1;
    while (p2 < m) p2 *= 2;
    std::vector<Exchange> all;
    for (int p = 1; p < p2; p *= 2)
        for (int k = p; k >= 1; k /= 2)
            for (int j = k % p; j + k < p2; j += 2 * k)
                for (int i = 0; i < k && i + j + k < p2; ++i)
                    // Positions m and above would hold +infinity: comparators on them
                    // never exchange anything.
                    if ((i + j) / (2 * p) == (i + j + k) / (2 * p) && i + j + k < m)
                        all.push_back({static_cast<std::uint16_t>(i + j),
                                       static_cast<std::uint16_t>(i + j + k), 3});
    // Backwards from the output: keep the comparators that feed a position still needed.
    std::vector<char> live(static_cast<std::size_t>(m), 0);
    live[static_cast<std::size_t>(rank)] = 1;
    std::vector<Exchange> kept;
    for (auto e = all.rbegin(); e != all.rend(); ++e) {
        const bool low_used = live[e->low] != 0, high_used = live[e->high] != 0;
        if (!low_used && !high_used) continue;
        kept.push_back(
            {e->low, e->high, static_cast<std::uint8_t>((low_used ? 1 : 0) | (high_used ? 2 : 0))});
        live[e->low] = live[e->high] = 1;
    }
    std::reverse(kept.begin(), kept.end());
    return kept;
}

#if defined(__GNUC__)
#define ZEMATH_NETWORK_VECTORS 1
typedef std::uint16_t NetworkLanes __attribute__((vector_size(2 * kNetworkLanes)));

template <bool Thresholded>
__attribute__((always_inline)) inline void network_rows_body(
    std::uint16_t* image, const std::uint16_t* copy, int n_cols, const std::ptrdiff_t* cells, int m,
    const Exchange* network, std::size_t exchanges, int rank, const Threshold& threshold,
    int row_from, int row_to, int col_from, int col_to) {
    NetworkLanes v[kNetworkMaxCells];  // on the stack: aligned to the vectors
    for (int r = row_from; r <= row_to; ++r) {
        for (int c0 = col_from;; c0 += kNetworkLanes) {
            // The last block overlaps the one before: it recomputes some pixels from the
            // unfiltered copy, which gives the same values.
            const int c = std::min(c0, col_to + 1 - kNetworkLanes);
            const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(r) * n_cols + c;
            for (int t = 0; t < m; ++t) std::memcpy(&v[t], copy + at + cells[t], sizeof v[t]);
            for (std::size_t e = 0; e < exchanges; ++e) {
                const Exchange x = network[e];
                const NetworkLanes a = v[x.low], b = v[x.high];
                if (x.keep & 1) v[x.low] = a < b ? a : b;
                if (x.keep & 2) v[x.high] = a < b ? b : a;
            }
            if constexpr (Thresholded) {
                for (int k = 0; k < kNetworkLanes; ++k)
                    if (threshold.accepts(copy[at + k], v[rank][k])) image[at + k] = v[rank][k];
            } else {
                std::memcpy(image + at, &v[rank], sizeof v[rank]);
            }
            if (c0 + kNetworkLanes > col_to) break;
        }
    }
}

template <bool Thresholded>
void network_rows_plain(std::uint16_t* image, const std::uint16_t* copy, int n_cols,
                        const std::ptrdiff_t* cells, int m, const Exchange* network,
                        std::size_t exchanges, int rank, const Threshold& threshold, int row_from,
                        int row_to, int col_from, int col_to) {
    network_rows_body<Thresholded>(image, copy, n_cols, cells, m, network, exchanges, rank,
                                   threshold, row_from, row_to, col_from, col_to);
}

#if defined(__x86_64__) || defined(__i386__)
template <bool Thresholded>
__attribute__((target("avx2"))) void network_rows_avx2(
    std::uint16_t* image, const std::uint16_t* copy, int n_cols, const std::ptrdiff_t* cells, int m,
    const Exchange* network, std::size_t exchanges, int rank, const Threshold& threshold,
    int row_from, int row_to, int col_from, int col_to) {
    network_rows_body<Thresholded>(image, copy, n_cols, cells, m, network, exchanges, rank,
                                   threshold, row_from, row_to, col_from, col_to);
}

bool processor_has_avx2_lanes() {
    if (!vector_lanes_allowed.load(std::memory_order_relaxed)) return false;
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2");
}
#endif
#endif

void filter_rectangle_rows_any(std::uint16_t* image, const std::uint16_t* copy, int n_rows,
                               int n_cols, int width, int height, const RankRule& rule,
                               const Threshold& threshold, const FilterRegion& region) {
    if (static_cast<long long>(width) * height < 65536)
        filter_rectangle_rows<std::uint16_t>(image, copy, n_rows, n_cols, width, height, rule,
                                             threshold, region);
    else
        filter_rectangle_rows<std::uint32_t>(image, copy, n_rows, n_cols, width, height, rule,
                                             threshold, region);
}

// The network path over the region; returns false (nothing written) when the window is
// too large for it.
bool filter_rectangle_network(std::uint16_t* image, const std::uint16_t* copy, int n_rows,
                              int n_cols, int width, int height, const RankRule& rule,
                              const Threshold& threshold, const FilterRegion& region) {
#if ZEMATH_NETWORK_VECTORS
    const long long m = static_cast<long long>(width) * height;
    if (m > kNetworkMaxCells) return false;
    const int row_before = height / 2, row_after = (height - 1) / 2;
    const int col_before = width / 2, col_after = (width - 1) / 2;
    // Pixels whose window lies inside the image.
    const int r0 = std::max(region.row_from, row_before);
    const int r1 = std::min(region.row_to, n_rows - 1 - row_after);
    const int c0 = std::max(region.col_from, col_before);
    const int c1 = std::min(region.col_to, n_cols - 1 - col_after);
    if (r0 > r1 || c1 - c0 + 1 < kNetworkLanes) {
        filter_rectangle_rows_any(image, copy, n_rows, n_cols, width, height, rule, threshold,
                                  region);
        return true;
    }
    const int cells = static_cast<int>(m);
    const int rank = static_cast<int>(rule.rank(cells));
    const std::vector<Exchange> network = selection_network(cells, rank);
    std::vector<std::ptrdiff_t> offsets(static_cast<std::size_t>(cells));
    for (int dr = 0, t = 0; dr < height; ++dr)
        for (int dc = 0; dc < width; ++dc, ++t)
            offsets[static_cast<std::size_t>(t)] =
                static_cast<std::ptrdiff_t>(dr - row_before) * n_cols + (dc - col_before);
    auto run = [&](auto thresholded) {
        constexpr bool kThresholded = decltype(thresholded)::value;
#if defined(__x86_64__) || defined(__i386__)
        if (processor_has_avx2_lanes())
            return network_rows_avx2<kThresholded>(image, copy, n_cols, offsets.data(), cells,
                                                   network.data(), network.size(), rank, threshold,
                                                   r0, r1, c0, c1);
#endif
        network_rows_plain<kThresholded>(image, copy, n_cols, offsets.data(), cells, network.data(),
                                         network.size(), rank, threshold, r0, r1, c0, c1);
    };
    if (threshold.active)
        run(std::true_type{});
    else
        run(std::false_type{});
    // The clipped windows around the inside block: bands above and below, then left and
    // right of it.
    const FilterRegion bands[4] = {{region.row_from, region.col_from, r0 - 1, region.col_to},
                                   {r1 + 1, region.col_from, region.row_to, region.col_to},
                                   {r0, region.col_from, r1, c0 - 1},
                                   {r0, c1 + 1, r1, region.col_to}};
    for (const FilterRegion& band : bands)
        if (band.row_from <= band.row_to && band.col_from <= band.col_to)
            filter_rectangle_rows_any(image, copy, n_rows, n_cols, width, height, rule, threshold,
                                      band);
    return true;
#else
    (void)image, (void)copy, (void)n_rows, (void)n_cols, (void)width, (void)height, (void)rule,
        (void)threshold, (void)region;
    return false;
#endif
}

// Coarse-to-fine path: the window's counts of the top 4 and top 8 bits of the values
// (scaled to 16 bits) come from column counts of those two levels, as on the column
// path; the two lower levels are never kept per column. The second level's bins
// ("buckets" of 256 scaled values) near the rank wanted form a band of 8 to 64
// buckets (band_buckets) whose lower 8 bits the window counts in full: each strip column
// keeps the list of its values in the band (BandList), read once from column-major planes
// of the high and low bytes and then carried from row to row; the window adds a column's
// list when the column enters and takes it away when it leaves. When the rank leaves the
// band, the band is moved around it and recounted from the window's columns. Per column
// 272 counters (544 bytes) instead of up to 69904, so that a strip's columns stay near the
// second-level cache.
constexpr std::size_t kTreeCounters = 16 + 256;
constexpr int kCoarseFineStripOutputs = 512;
constexpr unsigned kMaxBandBuckets = 64;
// Storage of a strip's lists of band values (see BandList).
constexpr std::size_t kBandListBytes = std::size_t{8} << 20;

// Buckets in the band for a window of `height` rows: about four values of a column fall
// in the band (uniform data), wider for short windows, whose rank moves further from one
// pixel to the next.
unsigned band_buckets(int height) {
    unsigned k = 8;
    while (k < kMaxBandBuckets && static_cast<long long>(k) * 2 * height <= 1024) k *= 2;
    return k;
}

#if defined(__GNUC__)
typedef std::uint16_t CountLanes __attribute__((vector_size(32)));

// to += add - remove over the 272 counters of a tree (a null pointer: nothing).
__attribute__((always_inline)) inline void tree_move(std::uint16_t* to, const std::uint16_t* add,
                                                     const std::uint16_t* remove) {
    for (std::size_t i = 0; i < kTreeCounters; i += 16) {
        CountLanes t, v{}, r{};
        std::memcpy(&t, to + i, sizeof t);
        if (add) std::memcpy(&v, add + i, sizeof v);
        if (remove) std::memcpy(&r, remove + i, sizeof r);
        t = t + v - r;
        std::memcpy(to + i, &t, sizeof t);
    }
}

// Zeroes `trees` trees in vector stores (a memset call costs more at these sizes).
typedef std::uint16_t ClearLanes __attribute__((vector_size(16)));
__attribute__((always_inline)) inline void clear_trees(std::uint16_t* tree, std::size_t trees) {
    ClearLanes zero{};
    __asm__("" : "+x"(zero));  // keeps the stores from being turned back into a memset call
    for (std::size_t i = 0; i < trees * kTreeCounters; i += 8)
        std::memcpy(tree + i, &zero, sizeof zero);
}

// Band offsets: a value of the band is counted at u = (high - first) 256 + low (high and
// low bytes of its scaled value); u = 256 buckets is counted in spare counters, and pads
// the lists so that they are taken kListPad at a time.
constexpr unsigned kListPad = 4;

// Appends to list[n..] the band offsets of the values at k + the set bits of bits: four
// without a branch per value (while bits is empty, the entry written is the padding value
// at k + 63, left out of the count and overwritten by the next one), the rest one by one.
__attribute__((always_inline)) inline int take_hits(std::uint64_t bits, const std::uint8_t* high,
                                                    const std::uint8_t* low, int k, unsigned first,
                                                    std::uint16_t* list, int n) {
    for (unsigned j = 0; j < kListPad; ++j) {
        const int i = k + __builtin_ctzll(bits | std::uint64_t{1} << 63);
        list[n] = static_cast<std::uint16_t>((high[i] - first) << 8 | low[i]);
        n += bits != 0;
        bits &= bits - 1;
    }
    for (; bits; bits &= bits - 1) {
        const int i = k + __builtin_ctzll(bits);
        list[n++] = static_cast<std::uint16_t>((high[i] - first) << 8 | low[i]);
    }
    return n;
}

// Ends a list of n offsets with kListPad spare ones (see band_apply).
__attribute__((always_inline)) inline void pad_list(std::uint16_t* list, int n, unsigned buckets) {
    for (unsigned j = 0; j < kListPad; ++j) list[n + j] = static_cast<std::uint16_t>(buckets << 8);
}

// The band offsets of the values of a column (from the column-major byte planes) that fall
// in the band: the high bytes are compared 64 at a time, one byte lane a value. Writes
// them to list, padded, and returns how many; list holds length + 2 kListPad entries. The
// planes may be read up to 63 bytes past length (padding).
__attribute__((always_inline)) inline int band_scan(const std::uint8_t* high,
                                                    const std::uint8_t* low, int length,
                                                    unsigned first, unsigned buckets,
                                                    std::uint16_t* list) {
    int n = 0;
    for (int k = 0; k < length; k += 64) {
        std::uint64_t bits = 0;
#if defined(__SSE2__)
        const __m128i base = _mm_set1_epi8(static_cast<char>(first));
        const __m128i last = _mm_set1_epi8(static_cast<char>(buckets - 1));
        for (int q = 0; q < 4; ++q) {
            const __m128i d = _mm_sub_epi8(
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(high + k + 16 * q)), base);
            bits |= static_cast<std::uint64_t>(static_cast<unsigned>(
                        _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_min_epu8(d, last), d))))
                    << (16 * q);
        }
#else
        for (int q = 0; q < 64; ++q)
            if (static_cast<unsigned>(high[k + q] - first) < buckets) bits |= std::uint64_t{1} << q;
#endif
        if (length - k < 64) bits &= (std::uint64_t{1} << (length - k)) - 1;
        n = take_hits(bits, high, low, k, first, list, n);
    }
    pad_list(list, n, buckets);
    return n;
}

#if defined(__x86_64__) || defined(__i386__)
__attribute__((target("avx2"), noinline)) int band_scan_avx2(const std::uint8_t* high,
                                                             const std::uint8_t* low, int length,
                                                             unsigned first, unsigned buckets,
                                                             std::uint16_t* list) {
    const __m256i base = _mm256_set1_epi8(static_cast<char>(first));
    const __m256i last = _mm256_set1_epi8(static_cast<char>(buckets - 1));
    int n = 0;
    for (int k = 0; k < length; k += 64) {
        const __m256i d0 =
            _mm256_sub_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(high + k)), base);
        const __m256i d1 = _mm256_sub_epi8(
            _mm256_loadu_si256(reinterpret_cast<const __m256i*>(high + k + 32)), base);
        std::uint64_t bits =
            static_cast<std::uint32_t>(
                _mm256_movemask_epi8(_mm256_cmpeq_epi8(_mm256_min_epu8(d0, last), d0))) |
            static_cast<std::uint64_t>(static_cast<std::uint32_t>(
                _mm256_movemask_epi8(_mm256_cmpeq_epi8(_mm256_min_epu8(d1, last), d1))))
                << 32;
        if (length - k < 64) bits &= (std::uint64_t{1} << (length - k)) - 1;
        n = take_hits(bits, high, low, k, first, list, n);
    }
    pad_list(list, n, buckets);
    return n;
}
#endif

// Adds delta (1 or -1 mod 2^16) to the band's counts of the offsets list[0..n) (padded):
// trees[0 .. 16 buckets + 16) counts u >> 4, the 256 buckets + 256 counters after them u;
// the last 16 and 256 take the padding. Four at a time, so that the loop's end is foreseen.
__attribute__((always_inline)) inline void band_apply(const std::uint16_t* list, int n,
                                                      unsigned buckets, std::uint16_t* trees,
                                                      std::uint16_t delta) {
    std::uint16_t* finest = trees + buckets * 16 + 16;
    for (int i = 0; i < n; i += kListPad)
        for (unsigned j = 0; j < kListPad; ++j) {
            const unsigned u = list[i + j];
            trees[u >> 4] = static_cast<std::uint16_t>(trees[u >> 4] + delta);
            finest[u] = static_cast<std::uint16_t>(finest[u] + delta);
        }
}

// find_bin over 16 counters whose sum is below 65536, without a branch per counter:
// the running sums in two vectors, compared with the rank at once.
__attribute__((always_inline)) inline unsigned find_bin16(const std::uint16_t* counts,
                                                          unsigned& rank) {
#if defined(__SSE2__)
    __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(counts));
    __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(counts + 8));
    a = _mm_add_epi16(a, _mm_slli_si128(a, 2));
    b = _mm_add_epi16(b, _mm_slli_si128(b, 2));
    a = _mm_add_epi16(a, _mm_slli_si128(a, 4));
    b = _mm_add_epi16(b, _mm_slli_si128(b, 4));
    a = _mm_add_epi16(a, _mm_slli_si128(a, 8));
    b = _mm_add_epi16(b, _mm_slli_si128(b, 8));
    b = _mm_add_epi16(
        b, _mm_unpackhi_epi64(_mm_shufflehi_epi16(a, 0xFF), _mm_shufflehi_epi16(a, 0xFF)));
    // Running sums above the rank (unsigned, through the sign bit).
    const __m128i flip = _mm_set1_epi16(static_cast<short>(0x8000));
    const __m128i r = _mm_set1_epi16(static_cast<short>(rank ^ 0x8000u));
    const unsigned above = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(
        _mm_cmpgt_epi16(_mm_xor_si128(a, flip), r), _mm_cmpgt_epi16(_mm_xor_si128(b, flip), r))));
    const unsigned bin = above ? static_cast<unsigned>(__builtin_ctz(above)) : 15u;
    if (bin) {
        std::uint16_t sums[16];
        _mm_storeu_si128(reinterpret_cast<__m128i*>(sums), a);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(sums + 8), b);
        rank -= sums[bin - 1];
    }
    return bin;
#else
    return static_cast<unsigned>(find_bin(counts, 16, rank));
#endif
}

// The band values of one strip column, kept from row to row: offsets from start to
// start + size in the column's list (in row order, padded), for the rows top .. bottom and
// the band from bucket `band` (-1: none yet). The next row's list drops the rows above its
// top and appends those below the old bottom, unless the band has moved.
struct BandList {
    int band = -1, top = 0, bottom = -1, start = 0, size = 0;
};

struct CoarseFineArgs {
    std::uint16_t* image;
    const std::uint16_t* copy;
    // Column c, row r at c n_rows + r: high and low bytes of the scaled values.
    const std::uint8_t* high_columns;
    const std::uint8_t* low_columns;
    std::uint16_t* columns;     // strip column trees, zero on entry
    std::uint16_t* band_trees;  // 272 (band_buckets + 1) counters (see band_apply)
    unsigned band_buckets;
    // The band offsets of each strip column (see BandList): list_capacity entries a column.
    std::uint16_t* band_lists;
    BandList* lists;
    int list_capacity;
    int strip_outputs;  // output columns a strip
    int n_rows, n_cols, width, height;
    const RankRule* rule;
    const Threshold* threshold;
    FilterRegion region;
    std::uint16_t low;
    int shift;  // scaled = (v - low) << shift
    bool fine;  // the lower 8 scaled bits carry value bits
};

template <bool Wide>
__attribute__((always_inline)) inline void coarse_fine_body(const CoarseFineArgs& a) {
    auto scan = [](const std::uint8_t* high, const std::uint8_t* low, int length, unsigned first,
                   unsigned buckets, std::uint16_t* list) {
#if defined(__x86_64__) || defined(__i386__)
        if constexpr (Wide) return band_scan_avx2(high, low, length, first, buckets, list);
#endif
        return band_scan(high, low, length, first, buckets, list);
    };
    const int n_rows = a.n_rows, n_cols = a.n_cols;
    const int row_before = a.height / 2, row_after = (a.height - 1) / 2;
    const int col_before = a.width / 2, col_after = (a.width - 1) / 2;
    const FilterRegion& region = a.region;
    const auto minus_one = static_cast<std::uint16_t>(0xFFFF);
    const unsigned buckets = a.band_buckets;
    std::uint16_t window[kTreeCounters];
    for (int s0 = region.col_from; s0 <= region.col_to;) {
        const int s1 =
            region.col_to - s0 < a.strip_outputs ? region.col_to : s0 + a.strip_outputs - 1;
        const int in_lo = std::max(0, s0 - col_before);
        const int in_hi = std::min(n_cols - 1, s1 + col_after);
        if (a.fine) std::fill(a.lists, a.lists + (in_hi - in_lo + 1), BandList{});
        auto column = [&](int c) {
            return a.columns + static_cast<std::size_t>(c - in_lo) * kTreeCounters;
        };
        auto change_row = [&](int r, std::uint16_t delta) {
            const std::uint16_t* p = a.copy + static_cast<std::ptrdiff_t>(r) * n_cols + in_lo;
            std::uint16_t* tree = column(in_lo);
            for (int c = in_lo; c <= in_hi; ++c, ++p, tree += kTreeCounters) {
                const unsigned y = (static_cast<unsigned>(*p - a.low) << a.shift) & 0xFFFFu;
                tree[y >> 12] = static_cast<std::uint16_t>(tree[y >> 12] + delta);
                tree[16 + (y >> 8)] = static_cast<std::uint16_t>(tree[16 + (y >> 8)] + delta);
            }
        };
        // The column counts lose row out and gain row in, in one pass.
        auto move_row = [&](int out, int in) {
            const std::uint16_t* p = a.copy + static_cast<std::ptrdiff_t>(out) * n_cols + in_lo;
            const std::uint16_t* q = a.copy + static_cast<std::ptrdiff_t>(in) * n_cols + in_lo;
            std::uint16_t* tree = column(in_lo);
            for (int c = in_lo; c <= in_hi; ++c, ++p, ++q, tree += kTreeCounters) {
                const unsigned y = (static_cast<unsigned>(*p - a.low) << a.shift) & 0xFFFFu;
                const unsigned z = (static_cast<unsigned>(*q - a.low) << a.shift) & 0xFFFFu;
                --tree[y >> 12];
                --tree[16 + (y >> 8)];
                ++tree[z >> 12];
                ++tree[16 + (z >> 8)];
            }
        };
        int top = std::max(0, region.row_from - row_before);
        int bottom = std::min(n_rows - 1, region.row_from + row_after);
        for (int r = top; r <= bottom; ++r) change_row(r, 1);
        for (int r = region.row_from;; ++r) {
            const int rows_in = bottom - top + 1;
            // A column enters the band's counts. Its list of band offsets is brought to
            // this row's rows when the band is the one it was made for and the rows moved
            // down by at most two in all (reading one value a row); otherwise the column is
            // read whole. The list stays as it is until the column leaves.
            auto enter = [&](int c, unsigned first) {
                BandList& list = a.lists[c - in_lo];
                std::uint16_t* base =
                    a.band_lists + static_cast<std::size_t>(c - in_lo) * a.list_capacity;
                const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(c) * n_rows;
                const int dropped = top - list.top, added = bottom - list.bottom;
                if (list.band == static_cast<int>(first) && dropped >= 0 && added >= 0 &&
                    dropped + added <= 2) {
                    // The rows above top were hits at the list's front when in the band.
                    for (int t = list.top; t < top; ++t)
                        if (static_cast<unsigned>(a.high_columns[at + t] - first) < buckets)
                            ++list.start, --list.size;
                    if (list.start + list.size + added + static_cast<int>(kListPad) >
                        a.list_capacity) {
                        std::memmove(base, base + list.start, sizeof *base * list.size);
                        list.start = 0;
                    }
                    std::uint16_t* entries = base + list.start;
                    for (int t = list.bottom + 1; t <= bottom; ++t) {
                        const unsigned h = a.high_columns[at + t] - first;
                        if (h < buckets)
                            entries[list.size++] =
                                static_cast<std::uint16_t>(h << 8 | a.low_columns[at + t]);
                    }
                    pad_list(entries, list.size, buckets);
                } else {
                    list.band = static_cast<int>(first);
                    list.start = 0;
                    list.size = scan(a.high_columns + at + top, a.low_columns + at + top, rows_in,
                                     first, buckets, base);
                }
                list.top = top;
                list.bottom = bottom;
                band_apply(base + list.start, list.size, buckets, a.band_trees, 1);
            };
            auto leave = [&](int c) {
                const BandList& list = a.lists[c - in_lo];
                band_apply(a.band_lists + static_cast<std::size_t>(c - in_lo) * a.list_capacity +
                               list.start,
                           list.size, buckets, a.band_trees, minus_one);
            };
            int lo = std::max(0, s0 - col_before), hi = std::min(n_cols - 1, s0 + col_after);
            std::memset(window, 0, sizeof window);
            for (int c = lo; c <= hi; ++c) tree_move(window, column(c), nullptr);
            unsigned first = 256;  // no band yet in this row
            for (int c = s0;; ++c) {
                unsigned rank = a.rule->rank(rows_in * (hi - lo + 1));
                const unsigned d0 = find_bin16(window, rank);
                const unsigned bucket = d0 * 16 + find_bin16(window + 16 + d0 * 16, rank);
                unsigned y = bucket << 8;
                if (a.fine) {
                    if (bucket - first >= buckets) {
                        // Centre the band on the bucket and count it afresh. Its first
                        // bucket is a multiple of a quarter band, so that the rows below
                        // mostly find the band their columns' lists were made for; the
                        // band the next columns' lists hold (the row above's) is kept when
                        // the bucket lies at least a quarter band inside it.
                        const unsigned quarter = buckets / 4;
                        first = std::min(
                            (bucket > buckets / 2 ? bucket - buckets / 2 : 0) / quarter * quarter,
                            256 - buckets);
                        for (const int j : {hi + 1, hi})
                            if (j <= in_hi && a.lists[j - in_lo].band >= 0 &&
                                bucket - static_cast<unsigned>(a.lists[j - in_lo].band) - quarter <
                                    buckets - 2 * quarter) {
                                first = static_cast<unsigned>(a.lists[j - in_lo].band);
                                break;
                            }
                        clear_trees(a.band_trees, buckets + 1);
                        for (int j = lo; j <= hi; ++j) enter(j, first);
                    }
                    const unsigned at = bucket - first;
                    const unsigned d2 = find_bin16(a.band_trees + at * 16, rank);
                    y |= d2 * 16 +
                         find_bin16(a.band_trees + buckets * 16 + 16 + at * 256 + d2 * 16, rank);
                }
                const auto result = static_cast<std::uint16_t>(a.low + (y >> a.shift));
                const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(r) * n_cols + c;
                if (a.threshold->accepts(a.copy[at], result)) a.image[at] = result;
                if (c == s1) break;
                // Slide one column right.
                const bool leaves = c - col_before >= 0, enters = c + 1 + col_after < n_cols;
                tree_move(window, enters ? column(hi + 1) : nullptr, leaves ? column(lo) : nullptr);
                if (a.fine) {
                    // The values of the column entering kAhead pixels on that its list
                    // reads (the row above the window and the bottom one) are fetched now:
                    // one column's rows lie n_rows bytes from the next one's.
                    constexpr int kAhead = 6;
                    if (hi + 1 + kAhead < n_cols) {
                        const std::ptrdiff_t ahead =
                            static_cast<std::ptrdiff_t>(hi + 1 + kAhead) * n_rows;
                        __builtin_prefetch(a.high_columns + ahead + std::max(0, top - 1));
                        __builtin_prefetch(a.high_columns + ahead + bottom);
                        __builtin_prefetch(a.low_columns + ahead + bottom);
                    }
                }
                if (a.fine && first < 256) {
                    // Leaving first: the entering column may take its list.
                    if (leaves) leave(lo);
                    if (enters) enter(hi + 1, first);
                }
                lo += leaves;
                hi += enters;
            }
            if (r == region.row_to) break;
            // Move the column counts down one row.
            const bool drops = r + 1 - row_before > top, gains = r + 1 + row_after < n_rows;
            if (drops && gains)
                move_row(top++, ++bottom);
            else if (drops)
                change_row(top++, minus_one);
            else if (gains)
                change_row(++bottom, 1);
        }
        for (int r = top; r <= bottom; ++r) change_row(r, minus_one);  // zero for the next strip
        s0 = s1 + 1;
    }
}

void coarse_fine_plain(const CoarseFineArgs& a) {
    coarse_fine_body<false>(a);
}

#if defined(__x86_64__) || defined(__i386__)
__attribute__((target("avx2"))) void coarse_fine_avx2(const CoarseFineArgs& a) {
    coarse_fine_body<true>(a);
}
#endif

// The coarse-to-fine path over the region; false (nothing written) for windows of 65536
// cells or more, whose counts do not fit its 16-bit counters.
bool filter_rectangle_coarse_fine(std::uint16_t* image, const std::uint16_t* copy, int n_rows,
                                  int n_cols, int width, int height, const RankRule& rule,
                                  const Threshold& threshold, const FilterRegion& region,
                                  const ValueBins& bins) {
    const int window_rows = std::min(height, n_rows), window_cols = std::min(width, n_cols);
    if (static_cast<long long>(window_rows) * window_cols >= 65536) return false;
    const std::size_t pixels = static_cast<std::size_t>(n_rows) * static_cast<std::size_t>(n_cols);
    const int shift = 16 - bins.bits;
    const bool fine = bins.bits > 8;
    // The scaled values column by column (only the band needs them) as planes of high
    // and low bytes, padded for the last 64-byte read.
    // They are read a column at a time across the whole width: in 2 MiB pages where the
    // system offers them, as the column histograms.
    ColumnStorage<std::uint8_t> high(fine ? pixels + 64 : 0), low(fine ? pixels + 64 : 0);
    constexpr int kTile = 32;
    if (fine)
        for (int r0 = 0; r0 < n_rows; r0 += kTile)
            for (int c0 = 0; c0 < n_cols; c0 += kTile) {
                const int r1 = std::min(n_rows, r0 + kTile), c1 = std::min(n_cols, c0 + kTile);
                for (int c = c0; c < c1; ++c)
                    for (int r = r0; r < r1; ++r) {
                        const unsigned y =
                            static_cast<unsigned>(copy[static_cast<std::size_t>(r) * n_cols + c] -
                                                  bins.low)
                            << shift;
                        high.data()[static_cast<std::size_t>(c) * n_rows + r] =
                            static_cast<std::uint8_t>(y >> 8);
                        low.data()[static_cast<std::size_t>(c) * n_rows + r] =
                            static_cast<std::uint8_t>(y);
                    }
            }
    // The lists of band offsets hold a column's rows twice over (moved to their start
    // when full), and take strips narrower than kCoarseFineStripOutputs for very tall windows.
    const int list_capacity = 2 * window_rows + 3 * static_cast<int>(kListPad);
    const auto list_columns =
        static_cast<int>(kBandListBytes / (sizeof(std::uint16_t) * list_capacity));
    const int strip_outputs =
        fine ? std::clamp(list_columns - (window_cols - 1), 1, kCoarseFineStripOutputs)
             : kCoarseFineStripOutputs;
    const int strip_cols = std::min(n_cols, strip_outputs + width - 1);
    std::vector<std::uint16_t> columns(static_cast<std::size_t>(strip_cols) * kTreeCounters, 0);
    const unsigned buckets = band_buckets(window_rows);
    std::vector<std::uint16_t> band_trees(fine ? (buckets + 1) * kTreeCounters : 0);
    std::vector<std::uint16_t> band_lists(
        fine ? static_cast<std::size_t>(strip_cols) * static_cast<std::size_t>(list_capacity) : 0);
    std::vector<BandList> lists(fine ? static_cast<std::size_t>(strip_cols) : 0);
    const CoarseFineArgs args{image,
                              copy,
                              high.data(),
                              low.data(),
                              columns.data(),
                              band_trees.data(),
                              buckets,
                              band_lists.data(),
                              lists.data(),
                              list_capacity,
                              strip_outputs,
                              n_rows,
                              n_cols,
                              width,
                              height,
                              &rule,
                              &threshold,
                              region,
                              bins.low,
                              shift,
                              fine};
#if defined(__x86_64__) || defined(__i386__)
    if (processor_has_avx2_lanes()) {
        coarse_fine_avx2(args);
        return true;
    }
#endif
    coarse_fine_plain(args);
    return true;
}
#else
bool filter_rectangle_coarse_fine(std::uint16_t*, const std::uint16_t*, int, int, int, int,
                                  const RankRule&, const Threshold&, const FilterRegion&,
                                  const ValueBins&) {
    return false;
}
#endif

// The percentile filter on the full rectangle by a histogram path. Returns false when
// the path cannot take this window (column path: a window too wide for its memory bound
// or taller than 65535 rows).
bool filter_rectangle_rank(std::uint16_t* image, const std::uint16_t* copy, int n_rows, int n_cols,
                           int width, int height, const RankRule& rule, const Threshold& threshold,
                           const FilterRegion& region, RankPath path) {
    if (path == RankPath::selection_network ||
        (path == RankPath::automatic &&
         static_cast<long long>(width) * height <= kNetworkAutoCells))
        if (filter_rectangle_network(image, copy, n_rows, n_cols, width, height, rule, threshold,
                                     region))
            return true;
    const std::size_t pixels = static_cast<std::size_t>(n_rows) * static_cast<std::size_t>(n_cols);
    const ValueBins bins = value_bins(copy, pixels);
    const bool short_window = height <= kRowBeforeCoarseFine && bins.bits > 8;
    if (path == RankPath::coarse_fine || (path == RankPath::automatic && !short_window))
        if (filter_rectangle_coarse_fine(image, copy, n_rows, n_cols, width, height, rule,
                                         threshold, region, bins))
            return true;
    if (path == RankPath::automatic || path == RankPath::selection_network ||
        path == RankPath::coarse_fine)
        path = height <= kRowHistogramMaxHeight[bins.levels - 1] ? RankPath::row_histogram
                                                                 : RankPath::column_histogram;
    if (path == RankPath::column_histogram && height < 65536) {
        const std::size_t counter_bytes = height < 256 ? 1 : 2;
        const int strip = column_strip_width(n_cols, width, bins, counter_bytes);
        if (strip > 0) {
            if (height < 256)
                filter_rectangle_columns_for<std::uint8_t>(image, copy, n_rows, n_cols, width,
                                                           height, rule, threshold, region, bins,
                                                           strip);
            else
                filter_rectangle_columns_for<std::uint16_t>(image, copy, n_rows, n_cols, width,
                                                            height, rule, threshold, region, bins,
                                                            strip);
            return true;
        }
    }
    filter_rectangle_rows_any(image, copy, n_rows, n_cols, width, height, rule, threshold, region);
    return true;
}

}  // namespace

void allow_vector_lanes(bool allowed) noexcept {
    vector_lanes_allowed.store(allowed, std::memory_order_relaxed);
}

int run_image_filter(std::uint16_t* image, int n_rows, int n_cols, FilterKind kind, double percent,
                     int width, int height, int shape, double threshold_percent,
                     const FilterRegion& region, RankPath path) {
    std::vector<WindowCell> cells;
    const int m = sampling_window_cells(n_cols, width, height, shape, cells);
    if (m < 0) return ZEMATH_ERR_GENERAL;
    if (m == 0) return ZEMATH_OK;
    const bool histogram_forced =
        path == RankPath::row_histogram || path == RankPath::column_histogram ||
        path == RankPath::selection_network || path == RankPath::coarse_fine;
    if (histogram_forced && (kind != FilterKind::percentile || shape != kWindowRectangle))
        return ZEMATH_ERR_GENERAL;
    std::unique_ptr<MathOperatorBase<std::uint16_t>> op;
    if (kind == FilterKind::conserve)
        op = std::make_unique<FilterReserve<std::uint16_t>>();
    else
        op = percentile_operator(percent, m);
    const std::size_t pixels = static_cast<std::size_t>(n_rows) * static_cast<std::size_t>(n_cols);
    const Threshold threshold = make_threshold(image, pixels, threshold_percent);
    const std::vector<std::uint16_t> copy(image, image + pixels);
    // The histograms beat a per-window selection from a 3 x 3 window up (measured); a
    // single cell is the pixel itself. Only the whole rectangle is a union of columns.
    const bool histogram =
        histogram_forced || (path == RankPath::automatic && kind == FilterKind::percentile &&
                             shape == kWindowRectangle && m > 1);
    // The paths write the image as they go and some allocate part-way (the network path's
    // bands take the row path's histograms): a failure then puts the image back from the
    // copy, so that a refused call leaves it untouched.
    try {
        if (histogram)
            filter_rectangle_rank(image, copy.data(), n_rows, n_cols, width, height,
                                  rank_rule(*op, percent, m), threshold, region, path);
        else
            filter_generic(image, copy.data(), n_rows, n_cols, cells, *op, threshold, region);
    } catch (...) {
        std::copy(copy.begin(), copy.end(), image);
        throw;
    }
    return ZEMATH_OK;
}

}  // namespace zemath

using namespace zemath;

namespace {

// The checks shared by both filters, in their documented order. Writes the region with
// -1 ends resolved.
int check_filter_arguments(const unsigned short* image, int n_rows, int n_cols, int width,
                           int height, int row_from, int col_from, int row_to, int col_to,
                           FilterRegion& region) {
    if (!image) return ZEMATH_ERR_NULL_POINTER;
    if (n_rows < 1 || n_cols < 1) return ZEMATH_ERR_SIZE_MISMATCH;
    if (width < 1 || height < 1 || width > n_cols || height > n_rows)
        return ZEMATH_ERR_FILTER_WINDOW;
    if (row_to == -1) row_to = n_rows - 1;
    if (col_to == -1) col_to = n_cols - 1;
    if (row_from < 0 || col_from < 0 || row_from > row_to || col_from > col_to ||
        row_to >= n_rows || col_to >= n_cols)
        return ZEMATH_ERR_SIZE_MISMATCH;
    region = {row_from, col_from, row_to, col_to};
    return ZEMATH_OK;
}

}  // namespace

extern "C" {

ZEMATH_API int zemath_us_percentile_filter(unsigned short* image, int nRows, int nCols,
                                           double dPercent, int nWidth, int nHeight, int nShape,
                                           double dThreshold, int nRowFrom, int nColFrom,
                                           int nRowTo, int nColTo) noexcept {
    FilterRegion region{};
    const int status = check_filter_arguments(image, nRows, nCols, nWidth, nHeight, nRowFrom,
                                              nColFrom, nRowTo, nColTo, region);
    if (status != ZEMATH_OK) return status;
    if (std::isnan(dPercent)) return ZEMATH_ERR_GENERAL;
    return guard_status([&] {
        return run_image_filter(image, nRows, nCols, FilterKind::percentile, dPercent, nWidth,
                                nHeight, nShape, dThreshold, region);
    });
}

ZEMATH_API int zemath_us_conserve_filter(unsigned short* image, int nRows, int nCols, int nWidth,
                                         int nHeight, int nShape, double dThreshold, int nRowFrom,
                                         int nColFrom, int nRowTo, int nColTo) noexcept {
    FilterRegion region{};
    const int status = check_filter_arguments(image, nRows, nCols, nWidth, nHeight, nRowFrom,
                                              nColFrom, nRowTo, nColTo, region);
    if (status != ZEMATH_OK) return status;
    return guard_status([&] {
        return run_image_filter(image, nRows, nCols, FilterKind::conserve, 0.0, nWidth, nHeight,
                                nShape, dThreshold, region);
    });
}

}  // extern "C"
