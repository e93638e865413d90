// Rank filters over 16-bit grey images (row-major, n_rows x n_cols): the percentile
// (rank) filter and the conservative smoothing filter, run by one engine that walks a
// window over a rectangular region of interest, reading every window from an unfiltered
// copy so that the result does not depend on the walking order.
//
// Method: windows come from the sampling-window cells (frame/sampling_window.hpp);
// cells outside the image are skipped, so border windows are smaller. The per-window
// operation is an exchangeable operator object (the classes below), which every shape
// and the conservative filter use. The percentile filter on the full rectangle takes
// its order statistic without sorting each window, by one of four exact paths chosen
// from the window size and the value range:
//  - selection network (windows of at most kNetworkAutoCells cells): the comparators of
//    Batcher's odd-even merge sort of the window's cells (K. E. Batcher, "Sorting
//    networks and their applications", AFIPS SJCC 32 (1968)), pruned to those the wanted
//    rank depends on, run on 32 adjacent pixels at once in 16-bit vector lanes (AVX2
//    where the processor has it); each window cell of 32 adjacent pixels is one load.
//    About 3, 11, 23, 41 and 67 ns per pixel for sides 3, 5, 7, 9 and 11 (random 16-bit
//    data), below the histograms up to 11 x 11. Pixels whose window is clipped by the
//    image border take the row path;
//  - coarse-to-fine path (every other rectangle of fewer than 65536 cells, except those
//    of at most kRowBeforeCoarseFine rows over more than 8 bits of values): the values,
//    less the image minimum and scaled to 16 bits, are counted in four radix-16 levels.
//    The top two (16 + 256 bins) come from column histograms of those two levels only
//    (544 bytes a column), moved down one row per output row and added and removed as
//    the window slides, as on the column path below. The lower two levels are counted
//    only for a band of 8 to 64 second-level bins around the rank wanted. Each column
//    keeps the list of its values that fall in the band (from column-major planes of
//    the values' high and low bytes, tested 64 at a time), added to the band's counts
//    when the column enters the window and taken away when it leaves. The list is kept
//    from one output row to the next: while the band stays, the next row only drops the
//    value of the row leaving the column and appends the one entering (two values read
//    per pixel, not the column); band positions are multiples of a quarter band, so that
//    the rows below mostly find the band the lists were made for. When the rank leaves
//    the band, the band is placed around it and recounted from the window's columns.
//    Output columns are taken in strips of up to 512 so that the strip's column
//    histograms stay near the second-level cache. Per pixel: one 272-counter vector
//    update, four searches of 16 counters, two list updates of a few values; the band's
//    width is chosen from the height so that about four values of a column fall in it
//    (uniform data). Data crowded into one second-level bin makes every value of a
//    column count (O(height) per pixel). Measured (CPU time, random 16-bit 2048 x 2048
//    image, busy machine, medians of 3) about 100 to 120 ns per pixel from 13 x 13 to
//    101 x 101, of which about 38 are the top two levels (the same image over 8 bits:
//    no band) and most of the rest the band's counts and searches; against 120 to 155
//    for the row path from 11 rows;
//  - row path (border bands of the network, windows of at most kRowBeforeCoarseFine
//    rows over more than 8 bits of values, and windows of 65536 cells and more up to
//    kRowHistogramMaxHeight rows, 12 to 32 by value range): a
//    window histogram slid along the row (Huang, Yang and Tang, "A fast two-dimensional median
//    filtering algorithm", IEEE Trans. ASSP 27 (1979)): one column leaves and one enters per pixel,
//    O(height) per pixel, the rank found in a four-level radix-16 tree (at most 64 comparisons);
//  - column path (windows of 65536 cells and more, taller than the row path's):
//    column histograms (Perreault and Hebert, "Median filtering in
//    constant time", IEEE Trans. Image Processing 16 (2007)). Each image column keeps
//    the counts of its window-height band of rows, moved down one row per output row
//    (one removal and one addition per column); the window's counts are the sum of its
//    columns', so sliding right adds the entering column's histogram and removes the
//    leaving one's, whatever the window side. The values, less the image minimum and
//    over the bits the image range needs, are counted coarse to fine at up to four
//    levels of 16 bins per bin above (16, 256, 4096, 65536 bins for a full 16-bit
//    range; a narrow range needs fewer and smaller levels). The window keeps the top
//    two levels whole (272 counters added and removed per pixel); a run of 16 bins of a
//    lower level is brought up to date only when the rank falls in it, from the
//    columns that entered and left since it was last used, or summed afresh over the
//    window's columns when that is cheaper. The rank is found with at most 64
//    comparisons. Per pixel the cost does not grow with the window height and grows
//    with the width only through those catch-ups (measured nearly flat from 5 x 5 to
//    101 x 101, bench/image_bench.cpp BM_rank_path).
//    Memory: a column's counts take 2^bits counters at the finest level (64 KiB of
//    8-bit counters for a full 16-bit range and a window below 256 rows, 16-bit
//    counters above), too much to keep for every column of a wide image. The region is
//    therefore walked in vertical strips of output columns whose input columns fit
//    kColumnHistogramBytes (8 MiB); a wider window takes a wider strip, up to
//    kColumnHistogramMaxBytes (64 MiB); a window wider still (over about 900 columns
//    of full-range data, 450 for windows of 256 rows or more) uses the row path. Column histograms
//    are stored run by run (the same run of all strip columns side by side) so that a catch-up
//    reads contiguous memory, in 2 MiB pages where the system offers them.
//  The histogram paths count exact integers (16- or 32-bit window counters by window
//  size) and the network only compares values, so every path gives the operator's result
//  exactly, including clipped border windows and the minimum and maximum filters.
// Failure codes: see image.h.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zemath {

// The per-window operation: values[0..count-1] are the in-image pixels of the window in
// cell order, centre points at the centre pixel.
template <class T>
class MathOperatorBase {
  public:
    virtual ~MathOperatorBase() = default;
    virtual T operate(const T* values, int count, const T* centre) {
        (void)values;
        (void)count;
        (void)centre;
        return T{0};
    }
};

template <class T>
class FilterMax : public MathOperatorBase<T> {
  public:
    T operate(const T* values, int count, const T*) override {
        T best = values[0];  // the first when count is 0 or 1
        for (int i = 1; i < count; ++i) best = std::max(best, values[i]);
        return best;
    }
};

template <class T>
class FilterMin : public MathOperatorBase<T> {
  public:
    T operate(const T* values, int count, const T*) override {
        T best = values[0];
        for (int i = 1; i < count; ++i) best = std::min(best, values[i]);
        return best;
    }
};

// Rank rule of the percentile filter: for a full window (count >= window_size) the value
// of 0-based rank `index`; for a window clipped at the border, rank k' - 1 with
// k' = trunc(percent / 100 x count), or rank 0 when k' is 0.
inline int clipped_rank(int index, int window_size, double percent, int count) {
    if (count >= window_size) return std::min(index, count - 1);
    const double k = static_cast<double>(static_cast<long long>(percent / 100.0 * count));
    if (k <= 0.0) return 0;
    return static_cast<int>(std::min(k, static_cast<double>(count))) - 1;
}

template <class T>
class FilterOrder : public MathOperatorBase<T> {
  public:
    FilterOrder(int index, int window_size, double percent)
        : index_(index), window_size_(window_size), percent_(percent) {
        sorted_.reserve(static_cast<std::size_t>(window_size));
    }
    T operate(const T* values, int count, const T*) override {
        sorted_.assign(values, values + count);  // capacity reserved: no allocation
        const int rank = clipped_rank(index_, window_size_, percent_, count);
        // A selection gives the value the full ascending sort would hold at that rank.
        std::nth_element(sorted_.begin(), sorted_.begin() + rank, sorted_.end());
        return sorted_[static_cast<std::size_t>(rank)];
    }
    int index() const { return index_; }

  private:
    int index_, window_size_;
    double percent_;
    std::vector<T> sorted_;
};

// Conservative smoothing: the centre is clamped into [min, max] of the other values.
template <class T>
class FilterReserve : public MathOperatorBase<T> {
  public:
    T operate(const T* values, int count, const T* centre) override {
        bool any = false;
        bool centre_skipped = false;
        T low{}, high{};
        for (int i = 0; i < count; ++i) {
            // The centre value is left out once (its own cell), by value: equal
            // neighbours still count.
            if (!centre_skipped && values[i] == *centre) {
                centre_skipped = true;
                continue;
            }
            if (!any) {
                low = high = values[i];
                any = true;
            } else {
                low = std::min(low, values[i]);
                high = std::max(high, values[i]);
            }
        }
        if (!any) return *centre;
        if (*centre < low) return low;
        if (*centre > high) return high;
        return *centre;
    }
};

// The engine's arguments after the checks of the exports.
struct FilterRegion {
    int row_from, col_from, row_to, col_to;  // inclusive, inside the image
};

enum class FilterKind { percentile, conserve };

// Which code computes the percentile filter. automatic chooses by window shape, height
// and memory; the others force one path (rectangle windows only for the two histogram
// paths), so that tests can set every path against the operator on the same input.
// selection_network falls back to the row path for windows of more than kNetworkMaxCells,
// coarse_fine to the row or column path for windows of 65536 cells or more.
enum class RankPath {
    automatic,
    generic,
    row_histogram,
    column_histogram,
    selection_network,
    coarse_fine
};

// Selection network path: pixels per vector pass, the largest window it takes, and the
// largest the automatic choice gives it (above, the histograms cost less per pixel;
// measured on 2048 x 2048 random images, bench/image_bench.cpp).
inline constexpr int kNetworkLanes = 32;
inline constexpr long long kNetworkMaxCells = 121;
inline constexpr long long kNetworkAutoCells = 121;

// Window heights up to this take the row path rather than the coarse-to-fine one when
// the value range needs more than 8 bits (CPU time on random 16-bit 2048 x 2048 images,
// medians of 3: row against coarse-to-fine about 119 against 114 ns per pixel at 11 x 11,
// 128 against 109 at 13 x 13 and 153 against 115 at 15 x 15).
inline constexpr int kRowBeforeCoarseFine = 10;

// Windows of 65536 cells and more (beyond the coarse-to-fine path's 16-bit counters):
// heights up to these use the row path, by the levels of counts the image's value
// range needs (up to 4, 8, 12, 16 bits): below them the row path's O(height) updates cost
// less than the column path's fixed per-pixel work, which grows with the levels (measured
// on random 1024 x 1024 images, bench/image_bench.cpp BM_rank_path for 16 bits).
inline constexpr int kRowHistogramMaxHeight[4] = {12, 12, 20, 32};
// Storage of the column histograms of one strip, and the most a very wide window may take.
inline constexpr std::size_t kColumnHistogramBytes = std::size_t{8} << 20;
inline constexpr std::size_t kColumnHistogramMaxBytes = std::size_t{64} << 20;

// Whether the vector paths may use the processor's 256-bit lanes where it has them (the
// default). With false they run their plain-lane code, the code a processor without AVX2
// runs, so that tests can set it against the operator on any machine. Process-wide; for
// tests and benchmarks.
void allow_vector_lanes(bool allowed) noexcept;

// Runs the filter in place. Returns 0, or -1 when the window has a negative cell count
// (unknown shape) or a histogram path is forced on a shape it does not handle.
int run_image_filter(std::uint16_t* image, int n_rows, int n_cols, FilterKind kind, double percent,
                     int width, int height, int shape, double threshold, const FilterRegion& region,
                     RankPath path = RankPath::automatic);

}  // namespace zemath
