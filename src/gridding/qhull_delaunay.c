/* Delaunay triangles of planar points through the reentrant convex-hull engine.
 *
 * Kept in C and self-contained: the engine reports errors by longjmp to a jmp_buf in its
 * own record, so every engine call of this file runs under a setjmp taken here, in a C
 * frame with no destructors to skip; the engine never reaches exit(), never writes to the
 * process's streams (its output and error stream is a small memory stream whose overflow
 * is discarded), and its memory is released on every path. */
#define _POSIX_C_SOURCE 200809L
#include <setjmp.h>
#include <stdio.h>
#include <string.h>

#include <libqhull_r/qhull_ra.h>

int zemath_qhull_delaunay(int n, double* points, int extra_setting, int* tri, int capacity,
                          int* count);

/* points: 2 n coordinates (x, y per point), modified by the engine's scaling. Writes up to
 * capacity triangles (three point indices each, in the engine's order) to tri and their
 * number to *count. Returns 0, a positive engine error code, -1 when the triangles do not
 * fit or a stream could not be opened. */
int zemath_qhull_delaunay(int n, double* points, int extra_setting, int* tri, int capacity,
                          int* count) {
    qhT engine;
    qhT* qh = &engine;
    char sink[512];
    char options[64];
    volatile int status = 0;
    volatile int written = 0;
    int curlong = 0, totlong = 0;
    FILE* stream = fmemopen(sink, sizeof sink, "w");
    if (stream == NULL) return -1;
    /* Delaunay of the points lifted to the paraboloid, triangulated output, with the
     * point at infinity above the centroid of the lifted points. */
    strcpy(options, extra_setting ? "qhull d Qt Qz Qbb" : "qhull d Qt Qz");
    qh_zero(qh, stream);
    status = qh_new_qhull(qh, 2, n, points, False, options, stream, stream);
    if (status == 0) {
        qh->NOerrexit = False;
        if (setjmp(qh->errexit) == 0) {
            facetT* facet;
            FORALLfacets {
                vertexT *vertex, **vertexp;
                int k = 0;
                if (facet->upperdelaunay) continue;
                if (written >= capacity) {
                    status = -1;
                    break;
                }
                FOREACHvertex_(facet->vertices) {
                    if (k < 3) tri[3 * written + k] = qh_pointid(qh, vertex->point);
                    ++k;
                }
                if (k != 3) {
                    status = -1;
                    break;
                }
                ++written;
            }
        } else {
            status = qh->last_errcode > 0 ? qh->last_errcode : -1;
        }
    }
    qh->NOerrexit = False;
    if (setjmp(qh->errexit) == 0) {
        qh_freeqhull(qh, !qh_ALL);
        qh_memfreeshort(qh, &curlong, &totlong);
    } else if (status == 0) {
        status = -1;
    }
    fclose(stream);
    *count = written;
    return status;
}
