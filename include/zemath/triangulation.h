/* zeMath: planar Delaunay triangulation of scattered XYZ data, the triangulation of
 * gridded data, and the evaluators over a triangulation.
 *
 * A Triangulation record is owned by the caller; every array in it is allocated by the
 * library and released only by zemath_triangulation_free. Initialise a record with
 * zemath_triangulation_init (or zero-fill it) before its first build; every build frees
 * the record first, so a failed build leaves it empty (valid 0). Records may be built
 * and read from several threads at once as long as each thread uses its own record. A
 * build or interpolation needs up to about 40 kB of the calling thread's stack (about
 * 15 kB unless some nonzero coordinates are of magnitude above 1e75 or below 1e-64: the
 * exact in-circle test's expansions), which every default thread stack holds.
 *
 * Option bits (the unsigned options argument of the builds and of the boundary query):
 *   0x10000  keep nodes whose z is NANUM (x and y must still be usable)
 *   0x20000  after building, run the missing-z pass (hole rings, see below)
 *   0x40000  triangulate in normalised coordinates (x and y divided by their ranges);
 *            without it the normalised nodes are scaled back first, so the mesh is the
 *            Delaunay triangulation of the stored node coordinates
 *   0x80000  boundary output in forward (counter-clockwise) order; default clockwise
 *   0x100000 build with the convex-hull engine instead of the built-in method
 *   0x200000 the same, with the engine's last-coordinate scaling (Qbb) switched on
 * Unknown bits are ignored. */
#ifndef ZEMATH_TRIANGULATION_H
#define ZEMATH_TRIANGULATION_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

enum zemath_triangulation_option {
    ZEMATH_TRI_KEEP_MISSING_Z = 0x10000,
    ZEMATH_TRI_MISSING_Z_PASS = 0x20000,
    ZEMATH_TRI_NORMALISED = 0x40000,
    ZEMATH_TRI_BOUNDARY_FORWARD = 0x80000,
    ZEMATH_TRI_ENGINE = 0x100000,
    ZEMATH_TRI_ENGINE_SCALED = 0x200000
};

/* The triangulation record. Invariants after a successful build: every triangle's three
 * edges are in edge; an edge with flag 1 has exactly one adjacent triangle; neighbor is
 * symmetric; triangles are counter-clockwise. */
typedef struct Triangulation {
    int valid;         /* 0 after init/free, 1 once a build succeeded */
    double* x;         /* node x (sorted by x, missing values and duplicates removed) */
    double* y;         /* node y */
    double* z;         /* node z */
    int nodes;         /* number of nodes */
    int triangles;     /* number of triangles */
    int* tri;          /* 6 per triangle: vertices a, b, c (counter-clockwise), then the edge
                          indices of (a,b), (b,c), (c,a) */
    int edges;         /* number of edges */
    int* edge;         /* 3 per edge: node a < node b, boundary flag (1 hull or grid border) */
    int boundaryCount; /* number of boundary nodes */
    int* boundary;     /* boundary node indices, counter-clockwise from node 0 */
    int holeCount;     /* length of holeIndex and holeValue (missing-z pass only) */
    int* holeIndex;    /* hole rings: node indices of each ring, each ring closed by -1 */
    double* holeValue; /* for each holeIndex entry, the triangle index (as a double) on
                          the data side of the ring edge that starts at that node; NANUM
                          for the -1 closing entries */
    int* neighbor;     /* 3 per triangle: triangle across (a,b), (b,c), (c,a), or -1 */
} Triangulation;

/* Zero-fills the record (no release: use zemath_triangulation_free on a built record). */
ZEMATH_API void zemath_triangulation_init(Triangulation* t) ZEMATH_NOEXCEPT;

/* Releases every array of the record, then zero-fills it. NULL is ignored. */
ZEMATH_API void zemath_triangulation_free(Triangulation* t) ZEMATH_NOEXCEPT;

/* Delaunay triangulation of x, y, z[0..n-1] (inputs not modified). Nodes are sorted by
 * x (then y); nodes whose x or y is NANUM, NaN or infinite are dropped, and those whose z
 * is NANUM unless 0x10000 (a NaN z is kept); duplicates within 1e-8 of the x and y ranges
 * collapse to one (z averaged over the non-missing values). The built-in method inserts
 * the nodes one at a time and restores the Delaunay property by edge flips, with exact
 * orientation and in-circle signs, so nearly collinear and cocircular inputs still give
 * a valid triangulation. Where the Delaunay triangulation is not unique (four or more
 * cocircular nodes, as on a grid) the tie is decided by inserting the nodes in x (then
 * y) order from the hull edges they see, unless that order needs more than 8 log2 n
 * edge flips per node (nodes in convex position met along their curve; grids whose
 * columns hold more than about 16 log2 n nodes): the nodes are then inserted in a fixed
 * pseudo-random order (a function of the node indices, so the same input always gives
 * the same record) and the tie is decided by that order. Edges and triangles are listed
 * node by node in x order, around each node counter-clockwise from its hull edge or, inside the
 * mesh, from its neighbour of smallest index. The engine build (0x100000 / 0x200000) runs the
 * convex-hull engine on slightly joggled nodes and keeps its triangles only when they
 * are, checked exactly on the given nodes, the unique Delaunay triangulation of all of
 * them. Otherwise the built-in method builds the record: when the engine fails, when its
 * triangles miss a node or are not Delaunay (nearly collinear or nearly cocircular
 * nodes), when there is a tie (four or more cocircular nodes on an empty circle, as on a
 * grid: the tie is then decided as above), with fewer than 4 nodes or all nodes on one
 * line (the engine is not run then), and with coordinates whose magnitudes no power of 2
 * brings near 1. The record is thus the same with and without the engine options; they
 * only cost time (the engine takes about 0.1 s per 1e4 nodes, several times the built-in
 * method, on degenerate input as on uniform nodes). The
 * missing-z pass chains the edges between triangles with and without a missing vertex
 * z (and the hull edges of the latter) into closed rings, stored as described in the
 * record.
 * Returns 0; -1 when out, x, y or z is NULL; -2 when n < 3 or fewer than 3 usable
 * distinct nodes remain; -130 when all usable nodes are collinear; -19 out of memory. */
ZEMATH_API int zemath_triangulation(int n, const double* x, const double* y, const double* z,
                                    Triangulation* out, unsigned int options) ZEMATH_NOEXCEPT;

/* Triangulation of gridded nodes (rows * cols each, row-major, node (i, j) at index
 * i * cols + j, taken as given): per node the row edge (i,j)-(i,j+1), the column edge
 * (i,j)-(i+1,j) and the diagonal (i+1,j)-(i,j+1), so every cell is split along the same
 * diagonal into (i,j),(i,j+1),(i+1,j) and (i,j+1),(i+1,j+1),(i+1,j). Edges on the
 * first/last row or column are flagged 1. A 1-by-n grid has edges but no triangles.
 * Returns 0; -1 NULL; -2 rows or cols below 1 or rows * cols below 3; -19. */
ZEMATH_API int zemath_construct_triangulation(int rows, int cols, const double* x, const double* y,
                                              const double* z, Triangulation* out,
                                              unsigned int options) ZEMATH_NOEXCEPT;

/* Boundary nodes: -1 when t is NULL or not valid; when count, bx, by or bz is NULL,
 * returns boundaryCount without writing (size query); else writes *count and the x, y, z
 * of the boundary nodes (boundaryCount each), clockwise unless option 0x80000, and
 * returns 0. */
ZEMATH_API int zemath_triangulation_boundary(const Triangulation* t, int* count, double* bx,
                                             double* by, double* bz,
                                             unsigned int options) ZEMATH_NOEXCEPT;

/* Flattens the record: xyz (nodes by 3: x, y, z per row), tri (6 per triangle), edge
 * (3 per edge), boundary (boundaryCount). False when t is NULL or not valid or an output
 * is NULL (nothing written). */
ZEMATH_API bool zemath_triangulation_to_array(const Triangulation* t, double* xyz, int* tri,
                                              int* edge, int* boundary) ZEMATH_NOEXCEPT;

/* Rebuilds a record from flattened arrays (copied; out is freed first): valid 1,
 * neighbor and hole fields empty. False, with out left empty, when out or a needed array
 * is NULL, a count is negative or nodes < 1, or an index is out of range. */
ZEMATH_API bool zemath_array_to_triangulation(int nodes, const double* xyz, int triangles,
                                              const int* tri, int edges, const int* edge,
                                              int boundaryCount, const int* boundary,
                                              Triangulation* out) ZEMATH_NOEXCEPT;

/* Linear value at (x, y): the first triangle in storage order that holds the point (edges
 * included) gives (|C2| z0 + |C0| z1 + |C1| z2) / |D|, the weights deliberately rotated by
 * one vertex against barycentric weights (at vertex P0 the value is z1): kept because
 * hosts rely on it. When D is exactly 0 the undivided sum is returned. True and *z
 * written when a triangle holds the point; false for NULL t or z, no triangle, or a
 * record without triangles. */
ZEMATH_API bool zemath_Triangulation_value(const Triangulation* t, double x, double y,
                                           double* z) ZEMATH_NOEXCEPT;

/* Barycentric linear interpolation at x, y[0..n-1] into z[0..n-1] by walking across
 * neighbours from the triangle of the previous point (edge tests with tolerance 1e-8).
 * Points outside the mesh, or in a triangle with a NANUM vertex z, get NANUM. z may not
 * alias x or y. Returns 0; -15 n < 1; -11 NULL; -37 the record has no neighbor array. */
ZEMATH_API int zemath_tri_contour_interpolate(int n, const double* x, const double* y, double* z,
                                              const Triangulation* t) ZEMATH_NOEXCEPT;

/* Linear interpolation of the scattered data (xd, yd, zd)[0..nd-1] at the targets
 * (xt, yt)[0..nt-1] into zt: the data are triangulated (built-in method, options as for
 * zemath_triangulation), each target located by a walk and interpolated with barycentric
 * weights. Targets outside the convex hull, NaN targets and targets in a triangle with a
 * NANUM vertex get NANUM. Returns 0, or the codes of zemath_triangulation (-1 NULL data
 * or targets, -2, -130, -19); -15 when nt < 1. */
ZEMATH_API int zemath_tri_linear_interpolate(int nd, const double* xd, const double* yd,
                                             const double* zd, int nt, const double* xt,
                                             const double* yt, double* zt,
                                             unsigned int options) ZEMATH_NOEXCEPT;

/* Natural-neighbour (Sibson) interpolation of the scattered data at the targets, through
 * the Delaunay triangulation: the weights are the areas the target's Voronoi cell takes
 * from its natural neighbours. Exact at the data points, linear along the hull, NANUM
 * outside the hull or when a natural neighbour's z is NANUM. Codes as
 * zemath_tri_linear_interpolate. */
ZEMATH_API int zemath_tri_natural_neighbor_interpolate(int nd, const double* xd, const double* yd,
                                                       const double* zd, int nt, const double* xt,
                                                       const double* yt, double* zt,
                                                       unsigned int options) ZEMATH_NOEXCEPT;

/* Reduced Delaunay mesh of the scattered data: nodes are prepared as for
 * zemath_triangulation (options 0), then a subset is grown greedily from the hull nodes
 * of the data (every k-th one when there are more than option) and the extreme nodes in
 * x and y: in each round the nodes with the largest vertical error against the
 * linear surface of the current subset's triangulation (nodes outside its hull first)
 * join it, up to half the subset's size at a time, until it holds at least option nodes
 * (the seeds alone may exceed it slightly) or the surface reproduces every node within
 * 1e-12 of the z range. The record holds the Delaunay triangulation of the subset. Returns 0;
 * -1 when out, x, y or z is NULL, n < 3, option < 3, or the data cannot be triangulated
 * (too few usable nodes, all collinear, out of memory). */
ZEMATH_API int zemath_triangulation_reduce(int n, const double* x, const double* y, const double* z,
                                           Triangulation* out, int option) ZEMATH_NOEXCEPT;

/* ---- Contour records and the supplementary areas ------------------------------------
 *
 * A TriContour holds level lines over a triangulation: levelCount levels, each with
 * its level value and lineCount polylines in x-y. A line has count points (x[k], y[k]);
 * closed is 1 for a closed ring (the last point joins the first and is not repeated) and
 * 0 for an open line, whose two ends lie on the triangulation's boundary. A caller may
 * fill a record with its own arrays to pass it in; a record filled by the library (the
 * output of zemath_triangulation_supplementary_area) owns arrays allocated by the
 * library and is released only by zemath_tri_contour_free. All-zero is the empty record
 * (zemath_tri_contour_init). */
typedef struct TriContourLine {
    int count;  /* number of points */
    int closed; /* 1 closed ring, 0 open line (both ends on the boundary) */
    double* x;  /* count x */
    double* y;  /* count y */
} TriContourLine;

typedef struct TriContourLevel {
    double level;         /* the level value */
    int lineCount;        /* number of lines at this level */
    TriContourLine* line; /* lineCount lines */
} TriContourLevel;

typedef struct TriContour {
    int levelCount;          /* number of levels */
    TriContourLevel* levels; /* levelCount levels */
} TriContour;

/* Option of zemath_triangulation_supplementary_area: areas where the field is above
 * the level. It is the only kind made; a call without it is refused with -2 (kept so:
 * hosts pass it to select the kind). */
enum { ZEMATH_TRI_AREA_ABOVE = 0x10000 };

/* Zero-fills a contour record (no release). NULL is ignored. */
ZEMATH_API void zemath_tri_contour_init(TriContour* c) ZEMATH_NOEXCEPT;

/* Releases every array of a contour record filled by the library, then zero-fills it.
 * NULL is ignored. Never pass a record holding the caller's own arrays. */
ZEMATH_API void zemath_tri_contour_free(TriContour* c) ZEMATH_NOEXCEPT;

/* Supplementary areas: closes the contour lines of each level along the boundary of t
 * into closed rings around the parts of the hull where the linear field (the node z of
 * t) is above the level. Per level, the ends of the open lines are placed on the
 * boundary (the nearest boundary edge, within 1e-6 of the extent of the nodes); the
 * boundary arcs between consecutive ends, taken counter-clockwise, alternate between
 * above and below the level, an arc being above when the sum of (z - level) over the
 * boundary nodes inside it is positive (for an arc inside one edge: z interpolated at
 * its middle); each ring joins open lines, each run from the end where an above arc
 * stops to the end where the next one starts, with the above arcs' boundary nodes, so it
 * runs counter-clockwise around the area above the level (shoelace area positive). A
 * level without open lines gets the whole boundary as one ring when the boundary is
 * above the level. Closed lines are copied unchanged. Boundary nodes whose z is NANUM
 * count for nothing in the sums.
 * out receives levelCount levels with the same level values, every line closed (closed
 * 1, last point not repeated); lines appear per level as the closed input lines first,
 * then the rings, then the whole boundary. out may be the same record as contour. On
 * success out's previous arrays (a record filled by the library, or all zero) are
 * released and replaced; on any failure out is left as it was.
 * Checks come in this order: the pointers and t (-1), the option (-2), then the
 * contents of contour (-1). Returns 0; -1 when t, contour or out is NULL, t is not
 * valid or has no usable
 * boundary (fewer than 3 nodes, an index out of range), or contour is inconsistent
 * (a negative count, a NULL array, a non-finite level or coordinate, an open line with
 * fewer than 2 points or a closed one with fewer than 3, an open end off the boundary,
 * ends whose arcs do not alternate between above and below); -2 when options lacks
 * 0x10000; -19 out of memory. */
ZEMATH_API int zemath_triangulation_supplementary_area(const Triangulation* t,
                                                       const TriContour* contour, TriContour* out,
                                                       unsigned int options) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_TRIANGULATION_H */
