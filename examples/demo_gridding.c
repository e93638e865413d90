/* Gridding demo: examines a small XYZ survey, triangulates it, and grids it by kriging
 * and by natural-neighbour interpolation. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "zemath.h"

#ifndef ZEMATH_SAMPLE_XYZ
#define ZEMATH_SAMPLE_XYZ "examples/data/sample_xyz.dat"
#endif

enum { MAX_XYZ = 256, GRID_NX = 6, GRID_NY = 5 };

static int load_xyz(const char* path, double* x, double* y, double* z) {
    FILE* f = fopen(path, "r");
    char line[256];
    int n = 0;
    if (!f) return -1;
    while (n < MAX_XYZ && fgets(line, sizeof line, f)) {
        char ztext[64];
        if (line[0] == '#') continue;
        if (sscanf(line, "%lf %lf %63s", &x[n], &y[n], ztext) != 3) continue;
        z[n] = strcmp(ztext, "missing") == 0 ? NANUM : atof(ztext);
        ++n;
    }
    fclose(f);
    return n;
}

static void summary(const char* name, const double* g, int count) {
    double lo = 0, hi = 0, sum = 0;
    int used = 0, i;
    for (i = 0; i < count; ++i) {
        if (g[i] == NANUM) continue;
        if (used == 0 || g[i] < lo) lo = g[i];
        if (used == 0 || g[i] > hi) hi = g[i];
        sum += g[i];
        ++used;
    }
    printf("%-27s: %d of %d cells, z %.2f .. %.2f, mean %.3f\n", name, used, count, lo, hi,
           used ? sum / used : 0.0);
}

/* Supplementary area on a small mesh with z = x over [0, 2] x [0, 1]: the contour line
 * x = 0.5 at level 0.5 is closed along the boundary around the part above the level. */
static void demo_supplementary_area(void) {
    const double gx[6] = {0, 1, 2, 0, 1, 2}, gy[6] = {0, 0, 0, 1, 1, 1};
    double lx[2] = {0.5, 0.5}, ly[2] = {0.0, 1.0}, area = 0;
    TriContourLine line = {2, 0, lx, ly};
    TriContourLevel level = {0.5, 1, &line};
    TriContour contour = {1, &level}, rings;
    Triangulation t;
    int status, k;
    zemath_triangulation_init(&t);
    zemath_tri_contour_init(&rings);
    status = zemath_construct_triangulation(2, 3, gx, gy, gx, &t, 0);
    if (status == 0)
        status =
            zemath_triangulation_supplementary_area(&t, &contour, &rings, ZEMATH_TRI_AREA_ABOVE);
    if (status == 0 && rings.levelCount == 1 && rings.levels[0].lineCount == 1) {
        const TriContourLine* r = &rings.levels[0].line[0];
        for (k = 0; k < r->count; ++k) /* shoelace */
            area += r->x[k] * r->y[(k + 1) % r->count] - r->x[(k + 1) % r->count] * r->y[k];
        printf("area above z = 0.5         : 1 ring of %d points, area %.2f (of 2)\n", r->count,
               area / 2);
    } else {
        printf("supplementary area         : status %d\n", status);
    }
    zemath_tri_contour_free(&rings);
    zemath_triangulation_free(&t);
}

void demo_gridding(void) {
    static double x[MAX_XYZ], y[MAX_XYZ], z[MAX_XYZ];
    double gx[GRID_NX], gy[GRID_NY], grid[GRID_NX * GRID_NY], xt[GRID_NX * GRID_NY],
        yt[GRID_NX * GRID_NY];
    double xmin, xstep, xmax, ymin, ystep, ymax;
    int nvar = 0, category, i, j, status;
    Triangulation t;
    int n = load_xyz(ZEMATH_SAMPLE_XYZ, x, y, z);
    if (n < 1) {
        printf("gridding: cannot read %s\n", ZEMATH_SAMPLE_XYZ);
        return;
    }
    printf("XYZ sample                 : %d points\n", n);
    category = zemath_xyz_examine_data(29, x, y, z, 1e-8, 1e-8, &nvar, &xmin, &xstep, &xmax, &ymin,
                                       &ystep, &ymax, true, 0);
    printf("grid stations only         : category %d (1 = sparse), %d points, steps %g x %g\n",
           category, nvar, xstep, ystep);
    category = zemath_xyz_examine_data(n, x, y, z, 1e-8, 1e-8, &nvar, NULL, NULL, NULL, NULL, NULL,
                                       NULL, true, 0);
    printf("with the spot heights      : category %d (2 = random)\n", category);

    zemath_triangulation_init(&t);
    status = zemath_triangulation(n, x, y, z, &t, 0);
    printf(
        "triangulation              : status %d, %d nodes, %d triangles, %d edges, %d on the "
        "hull\n",
        status, t.nodes, t.triangles, t.edges, t.boundaryCount);
    zemath_triangulation_free(&t);

    for (i = 0; i < GRID_NX; ++i) gx[i] = 100 + 10 * i;
    for (j = 0; j < GRID_NY; ++j) gy[j] = 200 + 10 * j;
    for (j = 0; j < GRID_NY; ++j)
        for (i = 0; i < GRID_NX; ++i) xt[j * GRID_NX + i] = gx[i], yt[j * GRID_NX + i] = gy[j];
    /* Kriging needs distinct points: the station measured twice is merged (mean). */
    nvar = zemath_xyz_remove_duplicates(n, x, y, z, 0, 1e-8, 1e-8, 0);
    status = zemath_2d_kriging_grid(nvar, x, y, z, 2, 1.0, 1.5, GRID_NX, gx, GRID_NY, gy, grid, 0);
    if (status == 0)
        summary("kriging 6x5 grid", grid, GRID_NX * GRID_NY);
    else
        printf("kriging                    : status %d\n", status);
    status =
        zemath_tri_natural_neighbor_interpolate(nvar, x, y, z, GRID_NX * GRID_NY, xt, yt, grid, 0);
    if (status == 0) summary("natural neighbours 6x5 grid", grid, GRID_NX * GRID_NY);
    demo_supplementary_area();
}
