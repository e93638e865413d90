// Planar Delaunay triangulation of distinct points: the built-in sweep build and the
// triangle-list mesh shared by the builds.
//
// Method: the points are taken in lexicographic (x, then y) order. The first collinear
// run and the first point off its line form a fan; every later point lies outside the
// current hull and is joined to the chain of hull edges it sees, found by walking the hull
// from the previous point (which is always on the hull and visible), then the new
// triangles are legalised by Lawson flips from a stack. Signs come from the exact
// predicates (predicates.hpp). Expected O(n log n) for the sort plus O(n) amortised hull
// walking; flips per point are O(1) on average for random data.
// Failure: status 3 when every point is collinear, 2 on an internal inconsistency.
// References: C. L. Lawson, "Software for C1 surface interpolation" (1977); the sweep
// order follows A. Zalik's sweep-hull idea with x-sorted insertion.
#pragma once

#include <span>
#include <vector>

namespace zemath {

struct Mesh {
    std::vector<int> v;          // 3 per triangle, counter-clockwise
    std::vector<int> nb;         // 3 per triangle: across (v0,v1), (v1,v2), (v2,v0); -1 on the hull
    std::vector<int> hull_next;  // per node: next hull node counter-clockwise, -1 if interior
    int triangles() const { return static_cast<int>(v.size() / 3); }
};

// Builds the Delaunay triangulation of the points, which must be distinct and sorted
// lexicographically. Returns 0, 3 (all collinear) or 2 (internal failure).
int build_sweep(std::span<const double> x, std::span<const double> y, Mesh& mesh);

// Fills nb and hull_next from v (triangles counter-clockwise) by matching edges. False
// when an edge is shared by more than two triangles or used twice in one direction, or
// the hull is not one closed loop through node 0, or the counts break Euler's relation.
bool link_mesh(int nodes, Mesh& mesh);

// Triangle holding (px, py) by walking from triangle start, or -1 outside the hull.
// Exact orientation tests; start is updated to the last triangle visited.
int locate(const Mesh& mesh, std::span<const double> x, std::span<const double> y, double px,
           double py, int& start);

}  // namespace zemath
