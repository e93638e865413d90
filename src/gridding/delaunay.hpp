// Planar Delaunay triangulation of distinct points: the built-in build and the
// triangle-list mesh shared by the builds.
//
// Method: three builds over one half-edge structure (per triangle slot the twin slot
// across the edge), all legalising new triangles by Lawson flips with the exact
// predicates (predicates.hpp).
// - Fast build, for points in general position whose hull has at most 4 sqrt(n) nodes:
//   the convex hull (monotone chain) is split into a fan and made Delaunay by flips, the
//   other points are inserted in rounds of random samples (a fixed hash of the index),
//   each round along a Hilbert curve, each point located by a walk from the previous one
//   and split into three. It is accepted only when no exact tie was met; then every step
//   keeps the triangulation strictly Delaunay (below), the Delaunay triangulation is
//   unique, and the result does not depend on the build. A strictly Delaunay
//   triangulation stays so through an insertion when no test ties: the edges at the new
//   point are strongly Delaunay (each has an empty circle with every other point strictly
//   outside: the circle of the split or flipped triangle shrunk onto the new point),
//   which makes them strictly Delaunay in any triangulation; the edges opposite it are
//   tested with their final neighbours; the others keep both their triangles. So no edge
//   is tested again at the end.
// - Rounds build, for a larger hull (points in convex position: along a curve, on a
//   circle) and wherever the sweep gives way: every point in the same random rounds,
//   located by a walk and split into its triangle, split with its side when it lies on
//   one, or joined to the hull edges it sees when outside. Flips only on a definite
//   'inside', so ties are decided by this order. Its triangulation is taken at once when
//   every interior edge is strictly Delaunay (then it is the only Delaunay triangulation,
//   the sweep's too); otherwise the sweep runs and this one is kept only if the sweep
//   gives way.
// - Sweep, for everything else (cocircular points such as grids, collinear hull
//   points): the points are taken in lexicographic (x, then y) order; the first
//   collinear run and the first point off its line form a fan; every later point lies
//   outside the current hull and is joined to the chain of hull edges it sees, found by
//   walking the hull from the previous point. Cocircular ties are decided by this order.
//   It gives way to the rounds build once its flips pass 8 log2 n per point inserted
//   (plus 4096): points in convex position met along their curve make each new point's
//   edges sweep across the fan of the earlier ones (O(n^2) flips), and an exact grid
//   costs about half a column's height per point, so grids whose columns hold more than
//   about 16 log2 n nodes give way too (their ties then decided by the rounds order).
// Expected O(n log n) for the sorts (radix sorts in practice); flips per point are O(1)
// on average for the fast and rounds builds whatever the input (about 3.2 for the fast
// build on uniform random points and on perturbed grids, 2.2 walk steps per point; about
// 3.4 flips and 5 walk steps per point for the rounds build on a parabola), 14 for the
// sweep on uniform random points, whose x order leaves long thin triangles along the
// hull, sqrt(n) / 2 on a square exact grid (below the give-way bound while sqrt(n) <
// 16 log2 n: square grids up to about 65,000 nodes; a 1000 x 1000 grid gave way after 40 s of
// flips on the sweep with a bound eight times larger, and takes 1 s by the rounds build). Nearly
// cocircular input (dense points on a smooth curve) spends most of its time in the exact in-circle
// evaluation. Failure: status 3 when every point is collinear, 2 on an internal inconsistency.
// References: C. L. Lawson, "Software for C1 surface interpolation" (1977); the sweep order follows
// A. Zalik's sweep-hull idea with x-sorted insertion; insertion along a space-filling curve as in
// N. Amenta, S. Choi, G. Rote, "Incremental constructions con BRIO" (2003); expected O(1) flips per
// point in a random insertion order: L. J. Guibas, D. E. Knuth, M. Sharir, "Randomized incremental
// construction of Delaunay and Voronoi diagrams", Algorithmica 7 (1992).
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "core/allocate.hpp"

namespace zemath {

// One triangle in 32 bytes (one cache line holds its corners and links): corners
// counter-clockwise, then per side the half-edge 4 t + slot of the same edge in the
// triangle across (-1 on the hull); aux is unused (0 in the build's ordered copy), spare
// the record walk's.
struct alignas(32) TriangleBlock {
    int v[3];
    int aux;
    int twin[3];
    int spare;
};

// Maps the pages of a block of at least 4 MB about to be written whole, in one system
// call instead of one page fault per 4 kB page as it is first written (the builds' and the
// record's large arrays; measured 3 to 4 % of a build at 1e6 nodes). A hint only: where it
// is not supported the pages are mapped by the writes as before.
void prefault(void* block, std::size_t bytes) noexcept;

// Owner of a block from raw_alloc (released by raw_free, as a record's arrays are).
struct RawFree {
    void operator()(void* block) const noexcept { raw_free(block); }
};
using RawBlock = std::unique_ptr<void, RawFree>;

struct Mesh {
    std::vector<int> v;     // 3 per triangle, counter-clockwise
    std::vector<int> nb;    // 3 per triangle: across (v0,v1), (v1,v2), (v2,v0); -1 on the hull
    std::vector<int> twin;  // per slot 3 t + s: the slot of the same edge in nb's triangle, or -1
    std::vector<int> hull_next;  // per node: next hull node counter-clockwise, -1 if interior
    // Built without neighbours, the fast build leaves its triangles here instead (v, nb
    // and twin empty), ordered by lowest node.
    std::unique_ptr<TriangleBlock[]> blocks;
    int block_count = 0;
    // Storage the build no longer needs (from raw_alloc, spare_bytes long), for the
    // record to take as one of its arrays instead of mapping fresh memory.
    RawBlock spare;
    std::size_t spare_bytes = 0;
    int triangles() const { return blocks ? block_count : static_cast<int>(v.size() / 3); }
};

// Builds the Delaunay triangulation of the points, which must be distinct and sorted
// lexicographically: the fast build, else the rounds build or the sweep (above). Returns 0, 3 (all
// collinear) or 2 (internal failure). Without neighbours, nb is left empty (twin has the same
// links), or the fast build's triangles are left in blocks.
int build_sweep(std::span<const double> x, std::span<const double> y, Mesh& mesh,
                bool neighbours = true);

// Fills nb, twin and hull_next from v (triangles counter-clockwise) by matching edges. False
// when an edge is shared by more than two triangles or used twice in one direction, or
// the hull is not one closed loop through node 0, or the counts break Euler's relation.
bool link_mesh(int nodes, Mesh& mesh);

// Triangle holding (px, py) by walking from triangle start, or -1 outside the hull.
// Exact orientation tests; start is updated to the last triangle visited.
int locate(const Mesh& mesh, std::span<const double> x, std::span<const double> y, double px,
           double py, int& start);

}  // namespace zemath
