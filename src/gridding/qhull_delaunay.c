/* Delaunay triangles of planar points through the reentrant convex-hull engine.
 *
 * Kept in C and self-contained: the engine reports errors by longjmp to a jmp_buf in its
 * own record, so every engine call of this file runs under a setjmp taken here, in a C
 * frame with no destructors to skip; the engine never reaches exit(), never writes to the
 * process's streams (its output and error stream is a sink, see open_sink), and its
 * memory is released on every path.
 *
 * Method: the lower hull of the points lifted to the paraboloid, the points joggled (QJ:
 * each moved at random by some 3e4 units of rounding of the largest coordinate, about
 * 1e-11 of it, with a fixed seed, retried with larger moves on a precision error) so that
 * no facet merging is needed. With merging (the engine's default) degenerate input
 * (cocircular points, points on or near lines or flat curves) costs at least quadratic
 * time: about 26 s for 16000 points on a circle, 29 s for 16000 on two parallel lines,
 * 6 s for 16000 points within 1e-14 of a line, 19 s for 16000 on y = 1e-6 x^2; without
 * merging and without joggling (Q0) the last of these still takes over 20 s. Joggled,
 * every input measured (those, grids, collinear runs, two close parallel lines, points
 * within 1e-14 of a line at 1e9) takes one to three times the time of uniform points:
 * 0.3 to 1 s for 20000 points against 0.35 s for uniform ones, single-threaded on a
 * loaded machine. The triangles are those of the joggled points, so they are only a
 * candidate: the caller checks them exactly against the given points and takes the
 * built-in method's whenever they are not the unique Delaunay triangulation (or the
 * engine failed). In general position they are: on 194 random sets of 4 to 2e5 points,
 * with and without Qbb, every time.
 * Failure codes: a positive engine code (3 for a precision error), -1 when the triangles
 * do not fit or no stream could be opened. */
#define _POSIX_C_SOURCE 200809L
#include <setjmp.h>
#include <stdio.h>
#include <string.h>

#include <libqhull_r/qhull_ra.h>

int zemath_qhull_delaunay(int n, double* points, int extra_setting, int* tri, int capacity,
                          int* count);

/* Memory streams (fmemopen) are POSIX; where they are missing (or when built with
 * ZEMATH_QHULL_NO_FMEMOPEN) the null device serves, else an anonymous temporary file. */
#if !defined(ZEMATH_QHULL_NO_FMEMOPEN) &&                                                       \
    (defined(__linux__) || defined(__GLIBC__) || defined(__FreeBSD__) || defined(__NetBSD__) || \
     defined(__OpenBSD__) || defined(__DragonFly__) || defined(__CYGWIN__))
#define ZEMATH_QHULL_FMEMOPEN 1
#endif

/* The stream the engine writes its output and error reports to: the library never
 * prints, so hosts must never see them. A memory stream over buffer (its overflow is
 * discarded), else the null device, else a temporary file; NULL only when none can be
 * opened (the build then reports failure and the built-in method runs). */
static FILE* open_sink(char* buffer, size_t size) {
#ifdef ZEMATH_QHULL_FMEMOPEN
    FILE* const memory = fmemopen(buffer, size, "w");
    if (memory != NULL) return memory;
#else
    (void)buffer;
    (void)size;
#endif
    {
#ifdef _WIN32
        FILE* const device = fopen("NUL", "w");
#else
        FILE* const device = fopen("/dev/null", "w");
#endif
        return device != NULL ? device : tmpfile();
    }
}

/* The engine run proper, writing to stream (see zemath_qhull_delaunay). A function of
 * its own: the one that takes the setjmp, so that compilers keep it apart from the
 * stream's opening. */
static int run_engine(FILE* stream, int n, double* points, int extra_setting, int* tri,
                      int capacity, int* count) {
    qhT engine;
    qhT* qh = &engine;
    char options[64];
    volatile int status = 0;
    volatile int written = 0;
    int curlong = 0, totlong = 0;
    /* Delaunay of the joggled points lifted to the paraboloid (see the opening block):
     * every facet is a triangle. */
    strcpy(options, extra_setting ? "qhull d QJ Qbb" : "qhull d QJ");
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
    *count = written;
    return status;
}

/* points: 2 n coordinates (x, y per point), modified by the engine's scaling. Writes up to
 * capacity triangles (three point indices each, in the engine's order) to tri and their
 * number to *count. Returns 0, a positive engine error code, -1 when the triangles do not
 * fit or a stream could not be opened. */
int zemath_qhull_delaunay(int n, double* points, int extra_setting, int* tri, int capacity,
                          int* count) {
    char sink[512];
    int status;
    FILE* const stream = open_sink(sink, sizeof sink);
    *count = 0;
    if (stream == NULL) return -1;
    status = run_engine(stream, n, points, extra_setting, tri, capacity, count);
    fclose(stream);
    return status;
}
