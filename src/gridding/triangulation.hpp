// Internal pieces of the triangulation shared with the scattered-data interpolators.
#pragma once

#include <vector>

#include "gridding/delaunay.hpp"
#include "zemath/triangulation.h"

namespace zemath {

struct Nodes {
    std::vector<double> x, y, z;
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
