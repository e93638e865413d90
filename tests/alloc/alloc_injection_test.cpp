// Allocation-failure injection: this test program replaces the global allocation
// functions, which the library's containers (NRVec, NRMat), its platform layer and the
// standard containers all go through, with ones that fail at a chosen allocation (and, by
// wrapping malloc at link time, the storage of Eigen's dynamic matrices). Every
// export of the public headers is first called with ordinary arguments while counting
// its allocations; then, for each k up to that count, called again with the k-th
// allocation failing. The call must either recover (return what the uninjected call
// returned) or return its documented failure value (-19 for an int status, NANUM for a
// double) with every buffer untouched. Run under the sanitize preset, LeakSanitizer
// checks that no failure path leaks. The release library is untouched: only this test
// program carries the replacement.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "sweep_harness.hpp"

namespace {

// Armed only around the export's call, so the test's own allocations never count.
struct Injection {
    bool armed = false;
    long count = 0;     // allocations made while armed
    long fail_at = -1;  // 1-based allocation to fail, -1 for none
};
Injection injection;

// Blocks allocated while tracking is on and not yet released, and the over-aligned
// allocations among them: which blocks an export hands out, and through which functions.
struct Tracking {
    bool on = false;
    int aligned = 0;
    int from_malloc = 0;  // through the wrapped malloc family (Eigen's storage)
    int live = 0;
    void* blocks[256] = {};
};
Tracking tracking;

void track(void* block, std::size_t alignment, bool from_malloc = false) noexcept {
    if (!tracking.on || block == nullptr) return;
    if (alignment > alignof(std::max_align_t)) ++tracking.aligned;
    if (from_malloc) ++tracking.from_malloc;
    if (tracking.live < 256) tracking.blocks[tracking.live++] = block;
}

void untrack(void* block) noexcept {
    for (int i = 0; i < tracking.live; ++i)
        if (tracking.blocks[i] == block) tracking.blocks[i] = tracking.blocks[--tracking.live];
}

// Set once an export has allocated under the count or the tracking: the first-call test
// needs a process in which none has.
bool counted_before = false;

// True when this allocation is the one to fail; counts it while armed.
bool fails_now() noexcept {
    counted_before = counted_before || injection.armed || tracking.on;
    return injection.armed && ++injection.count == injection.fail_at;
}

}  // namespace

// Eigen's dynamic matrices take their storage from malloc, not from the allocation
// functions below. This program is linked with the library's objects and with
// --wrap=malloc,calloc,realloc,free (tests/CMakeLists.txt), so that every such call of the
// library comes here and takes its turn in the same count; the real functions are
// reached as __real_*. The C++ runtime, FFTW and qhull are shared libraries: their own
// malloc calls are not wrapped (the C++ runtime's go through operator new below).
extern "C" {
void* __real_malloc(std::size_t);
void* __real_calloc(std::size_t, std::size_t);
void* __real_realloc(void*, std::size_t);
void __real_free(void*);

void* __wrap_malloc(std::size_t bytes) {
    if (fails_now()) return nullptr;
    void* block = __real_malloc(bytes);
    track(block, 0, true);
    return block;
}
void* __wrap_calloc(std::size_t count, std::size_t bytes) {
    if (fails_now()) return nullptr;
    void* block = __real_calloc(count, bytes);
    track(block, 0, true);
    return block;
}
void* __wrap_realloc(void* block, std::size_t bytes) {
    if (fails_now()) return nullptr;  // the block stays as it was, as realloc's failure leaves it
    untrack(block);
    void* moved = __real_realloc(block, bytes);
    track(moved ? moved : block, 0, true);
    return moved;
}
void __wrap_free(void* block) {
    untrack(block);
    __real_free(block);
}
}

namespace {

void* allocate(std::size_t bytes, std::size_t alignment) noexcept {
    if (fails_now()) return nullptr;
    if (bytes == 0) bytes = 1;
    void* block = nullptr;
    if (alignment <= alignof(std::max_align_t))
        block = __real_malloc(bytes);
    else if (posix_memalign(&block, alignment, bytes) != 0)
        block = nullptr;
    track(block, alignment);
    return block;
}

void release_block(void* block) noexcept {
    untrack(block);
    __real_free(block);
}

void* allocate_or_throw(std::size_t bytes, std::size_t alignment) {
    void* block = allocate(bytes, alignment);
    if (!block) throw std::bad_alloc();
    return block;
}

}  // namespace

void* operator new(std::size_t n) {
    return allocate_or_throw(n, 0);
}
void* operator new[](std::size_t n) {
    return allocate_or_throw(n, 0);
}
void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
    return allocate(n, 0);
}
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept {
    return allocate(n, 0);
}
void* operator new(std::size_t n, std::align_val_t a) {
    return allocate_or_throw(n, static_cast<std::size_t>(a));
}
void* operator new[](std::size_t n, std::align_val_t a) {
    return allocate_or_throw(n, static_cast<std::size_t>(a));
}
void* operator new(std::size_t n, std::align_val_t a, const std::nothrow_t&) noexcept {
    return allocate(n, static_cast<std::size_t>(a));
}
void* operator new[](std::size_t n, std::align_val_t a, const std::nothrow_t&) noexcept {
    return allocate(n, static_cast<std::size_t>(a));
}
void operator delete(void* p) noexcept {
    release_block(p);
}
void operator delete[](void* p) noexcept {
    release_block(p);
}
void operator delete(void* p, std::size_t) noexcept {
    release_block(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    release_block(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
    release_block(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
    release_block(p);
}
void operator delete(void* p, std::align_val_t) noexcept {
    release_block(p);
}
void operator delete[](void* p, std::align_val_t) noexcept {
    release_block(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
    release_block(p);
}
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept {
    release_block(p);
}

namespace {

using namespace zemath_sweep;

// Exports whose documented allocation failure is another value than -19 / NANUM.
struct FailureValue {
    const char* name;
    int64_t status;
};
const FailureValue kFailureValues[] = {
    {"theMergeSort", 0},  // 0 with the records untouched
    {"theQuickSort", 0},
    {"zemath_tmovavg", -1},                     // "an averaging pass fails"
    {"zemath_adjave_smooth", -9},               // -9 on any failure
    {"zemath_triangulation_reduce", -1},        // -1 when it cannot triangulate
    {"zemath_percentiles_distribution", -166},  // its allocation-failure code
};

struct Outcome {
    long sites = 0;      // allocations the call reaches
    long failed = 0;     // injections answered with the failure value
    long recovered = 0;  // injections the export worked around
    std::vector<std::string> problems;
};

struct Buffers {
    std::vector<std::unique_ptr<unsigned char[]>> now, before;
};

// In the curve fill, abscissae (by their usual parameter names) keep the ascending run,
// so that the curve families accept the data.
bool is_abscissa(const std::string& name) {
    return name == "x" || name == "pX" || name == "xnew" || name == "X";
}

// The curve fill with, in every int buffer, 64 as its first element (an in/out count of
// points) and every ninth ordinate missing: the paths that drop missing points.
constexpr int kCountedCurve = 4;

template <int N>
void first_int(unsigned char* bytes) {
    reinterpret_cast<int*>(bytes)[0] = N;
}
constexpr size_t kDoubles = kBufferBytes / sizeof(double);
// Every ninth value from the fifth on missing.
void with_missing(unsigned char* bytes) {
    double* d = reinterpret_cast<double*>(bytes);
    for (size_t i = 4; i < kDoubles; i += 9) d[i] = NANUM;
}
// A buffer's content set over its fill mode, by parameter (NULL: the fill mode's alone).
using Fill = void (*)(unsigned char*);
using Fills = std::vector<Fill>;

std::vector<Arg> materialize(const Export& e, const Call& c, Buffers& b, const Fills& fills) {
    std::vector<Arg> args = c.args;
    b.now.resize(e.params.size());
    b.before.resize(e.params.size());
    for (size_t i = 0; i < e.params.size(); ++i) {
        if (args[i].buffer < 0) continue;
        if (!b.now[i]) {
            b.now[i].reset(new unsigned char[kBufferBytes]);
            b.before[i].reset(new unsigned char[kBufferBytes]);
        }
        const bool curve = c.fill_mode == 3 || c.fill_mode == kCountedCurve;
        e.params[i].fill(b.now[i].get(),
                         curve ? (is_abscissa(e.params[i].name) ? 0 : 3) : c.fill_mode);
        if (c.fill_mode == kCountedCurve) {
            if (e.params[i].fill == fill_typed<int>)
                first_int<64>(b.now[i].get());
            else if (e.params[i].fill == fill_typed<double> && !is_abscissa(e.params[i].name))
                with_missing(b.now[i].get());
        }
        if (i < fills.size() && fills[i]) fills[i](b.now[i].get());
        std::memcpy(b.before[i].get(), b.now[i].get(), kBufferBytes);
        args[i].p = b.now[i].get();
    }
    return args;
}

void release(const Export& e, const std::vector<Arg>& args) {
    for (size_t i = 0; i < e.params.size(); ++i)
        if (args[i].buffer >= 0 && e.params[i].release) e.params[i].release(args[i].p);
}

// A call the test makes: its arguments, the contents set over the fill mode, and what
// runs uncounted ahead of it (before, when given: state the export reads, a cache, set the
// same way for the counted call and each injected one).
struct Planned {
    Call call;
    Fills fills;
    void (*before)() = nullptr;
    bool shaped = false;  // from the table of legal shapes
};

struct CallRun {
    Result result;
    long count = 0;  // allocations the call made (up to the failed one)
};

// The planned call on fresh buffers, its fail_at-th allocation failing (-1: none). The
// caller reads the buffers, then releases what records received.
CallRun run_planned(const Export& e, const Planned& p, Buffers& b, std::vector<Arg>& args,
                    long fail_at) {
    args = materialize(e, p.call, b, p.fills);
    if (p.before) p.before();
    injection = {true, 0, fail_at};
    const Result r = e.call(args);
    const long count = injection.count;
    injection.armed = false;
    return {r, count};
}

int64_t failure_value(const Export& e) {
    for (const FailureValue& f : kFailureValues)
        if (e.name == f.name) return f.status;
    return ZEMATH_ERR_ALLOC;
}

bool is_failure(const Export& e, const Result& r) {
    return r.is_status ? r.status == failure_value(e) : r.is_real && r.real == NANUM;
}

enum class Answer { Failed, Recovered, Wrong };

// An injected call (allocation k failed) against the uninjected one: the failure value with
// every buffer untouched (or as documented), or what the uninjected call returned.
Answer judge(const Export& e, const Call& c, const Result& plain, const Result& r, const Buffers& b,
             const std::vector<Arg>& args, long k, std::vector<std::string>& problems) {
    const bool same = r.is_status ? r.status == plain.status
                                  : !r.is_real || r.real == plain.real ||
                                        (std::isnan(r.real) && std::isnan(plain.real));
    if (is_failure(e, r) && !is_failure(e, plain)) {
        for (size_t i = 0; i < e.params.size(); ++i)
            if (args[i].buffer >= 0 &&
                std::memcmp(b.before[i].get(), b.now[i].get(), kBufferBytes) != 0 &&
                !(r.is_status &&
                  documented_write(e.name, static_cast<int>(r.status), e.params[i].name)))
                problems.push_back("allocation " + std::to_string(k) + " failed and " +
                                   e.params[i].name + " was written: " + describe(e, c));
        return Answer::Failed;
    }
    if (same) return Answer::Recovered;
    problems.push_back("allocation " + std::to_string(k) + " failed: returned " +
                       (r.is_status ? std::to_string(r.status) : std::to_string(r.real)) +
                       " instead of the failure value: " + describe(e, c));
    return Answer::Wrong;
}

// Every allocation of a call in turn. A warm-up call comes first, uncounted: what an export
// allocates on its first call only (a table built on first use, a cache's own storage) is
// not allocated again, so the count is that of the calls injected below; the first calls
// are failed in fresh processes (FirstCallAllocationsFailCleanly).
Outcome inject(const Export& e, const Planned& p) {
    Outcome out;
    Buffers b;
    std::vector<Arg> args;
    run_planned(e, p, b, args, -1);
    release(e, args);
    const CallRun plain = run_planned(e, p, b, args, -1);
    out.sites = plain.count;
    release(e, args);
    for (long k = 1; k <= out.sites; ++k) {
        const CallRun r = run_planned(e, p, b, args, k);
        switch (judge(e, p.call, plain.result, r.result, b, args, k, out.problems)) {
            case Answer::Failed:
                ++out.failed;
                break;
            case Answer::Recovered:
                ++out.recovered;
                break;
            case Answer::Wrong:
                break;
        }
        release(e, args);
    }
    return out;
}

// Integers that differ by position, in order of appearance.
Call by_position(const Export& e, int fill_mode, const std::vector<int64_t>& pattern) {
    Call c = baseline(e, 8, 0.5, fill_mode);
    size_t next = 0;
    for (size_t i = 0; i < e.params.size(); ++i)
        if (e.params[i].kind == Kind::Integer && next < pattern.size())
            c.args[i].i = std::min(pattern[next++], e.params[i].max);
    return c;
}

// ---- Legal shapes. The generic argument sets leave some exports at their argument
// checks (an in/out count read from a buffer, a record to fill, an option code, ranges
// and groups, a callback) or on a path that needs no storage (a curve without missing
// points). Each export here gets calls its header makes legal; every one of them is known
// to allocate, and a shape that reaches no allocation fails the test (the export's path
// changed, or the shape no longer passes its checks).

struct Setting {
    enum What { Value, Content, Pointer, Null } what;
    const char* param;
    double value = 0.0;       // an integer, boolean or double argument
    Fill fill = nullptr;      // a buffer's content over the fill mode's
    void* pointer = nullptr;  // a fixed read-only input (a callback, a record, a table)
};
Setting value(const char* param, double v) {
    return {Setting::Value, param, v};
}
Setting content(const char* param, Fill f) {
    return {Setting::Content, param, 0.0, f};
}
Setting pointer(const char* param, const void* p) {
    return {Setting::Pointer, param, 0.0, nullptr, const_cast<void*>(p)};
}
Setting null(const char* param) {
    return {Setting::Null, param};
}

struct LegalShape {
    const char* name;
    int fill_mode;  // of every buffer: 3 a curve with peaks over ascending abscissae
    std::vector<Setting> settings;
    void (*before)() = nullptr;  // run uncounted ahead of each call
};

// The FFT plan cache holds the transforms of the last eight kinds and lengths: eight
// filters of other lengths push out every plan the shapes use, so that the counted call
// and each injected one plan afresh (the cache's entry, the planning buffers).
void evict_fft_plans() {
    static double in[16], out[16];
    for (int n = 3; n < 11; ++n) zemsp_fft_filter_smoothing(n, in, out, 1.0);
}

void descending(unsigned char* bytes) {
    double* d = reinterpret_cast<double*>(bytes);
    for (size_t i = 0; i < kDoubles; ++i) d[i] = 100.0 - 0.5 * static_cast<double>(i);
}
void uneven(unsigned char* bytes) {
    double* d = reinterpret_cast<double*>(bytes);
    for (size_t i = 0; i < kDoubles; ++i) {
        const double x = static_cast<double>(i);
        d[i] = x + 0.02 * x * x;
    }
}

// Scattered nodes: an 8 x 8 grid, jittered so that its Delaunay triangulation is unique,
// and targets inside its hull.
void grid_x(unsigned char* bytes) {
    double* d = reinterpret_cast<double*>(bytes);
    for (size_t i = 0; i < 64; ++i) d[i] = static_cast<double>(i % 8) + 0.013 * ((i * 7) % 5);
}
void grid_y(unsigned char* bytes) {
    double* d = reinterpret_cast<double*>(bytes);
    for (size_t i = 0; i < 64; ++i) d[i] = static_cast<double>(i / 8) + 0.011 * ((i * 3) % 7);
}
void exact_grid_x(unsigned char* bytes) {
    double* d = reinterpret_cast<double*>(bytes);
    for (size_t i = 0; i < 64; ++i) d[i] = static_cast<double>(i % 8);
}
void exact_grid_y(unsigned char* bytes) {
    double* d = reinterpret_cast<double*>(bytes);
    for (size_t i = 0; i < 64; ++i) d[i] = static_cast<double>(i / 8);
}
// Grid columns whose x differ in the last bits, in an order against their y: the nodes'
// tolerance clusters are out of exact order and get sorted.
void ragged_grid_x(unsigned char* bytes) {
    double* d = reinterpret_cast<double*>(bytes);
    for (size_t i = 0; i < 64; ++i)
        d[i] = static_cast<double>(i % 8) + 1e-13 * static_cast<double>((i * 5) % 7);
}
// Shapes for the paths the plain grid misses. A rectangle whose left side lies at 1e-25:
// its corners are cocircular, so the in-circle test goes to its exact evaluation, and the
// differences across it are inexact even in the exact predicates' wide type (expansions
// of two components). The ragged grid with its last node on its first: a duplicate whose
// merging leaves the tolerance clusters out of exact order.
void tiny_side_x(unsigned char* bytes) {
    double* d = reinterpret_cast<double*>(bytes);
    for (size_t i = 0; i < 4; ++i) d[i] = i % 2 == 0 ? 1e-25 : 1.0;
}
void rectangle_y(unsigned char* bytes) {
    double* d = reinterpret_cast<double*>(bytes);
    for (size_t i = 0; i < 4; ++i) d[i] = i < 2 ? 0.0 : 1.0;
}
void ragged_duplicate_x(unsigned char* bytes) {
    ragged_grid_x(bytes);
    double* d = reinterpret_cast<double*>(bytes);
    d[63] = d[0];
}
void duplicate_grid_y(unsigned char* bytes) {
    exact_grid_y(bytes);
    double* d = reinterpret_cast<double*>(bytes);
    d[63] = d[0];
}
// An image wider than a buffer holds (200 x 330 pixels), restored ahead of each call:
// with a window of 330 x 200 cells, too many for the coarse-to-fine path's counters and
// lower than 256 rows, the column histograms with 8-bit column counters.
std::vector<unsigned short> wide_image(200 * 330);
void restore_wide_image() {
    for (size_t i = 0; i < wide_image.size(); ++i)
        wide_image[i] = static_cast<unsigned short>(i * 7);
}
void inner(unsigned char* bytes) {
    double* d = reinterpret_cast<double*>(bytes);
    for (size_t i = 0; i < 16; ++i) d[i] = 1.3 + 0.37 * static_cast<double>(i);
}
void half(unsigned char* bytes) {
    reinterpret_cast<double*>(bytes)[0] = 0.5;
}

const double kScales[] = {2.0, 5.0};
// 40000 points (more than a buffer holds), a read-only input.
const std::vector<double> kManyPoints = [] {
    std::vector<double> v(40000);
    for (size_t i = 0; i < v.size(); ++i) v[i] = std::sin(0.001 * static_cast<double>(i * i));
    return v;
}();
void with_nan(unsigned char* bytes) {
    reinterpret_cast<double*>(bytes)[10] = NAN;
}
// Every quartile, without interpolation: the five-number summary's path.
const QuantileOptions kFiveNumbers{5, 0, true, true, true, true, true, true, true, true, true};
const double kPercents[] = {0.0, 10.0, 25.0, 50.0, 75.0, 90.0, 100.0};
const double kRanges[] = {0.0, 31.0, 32.0, 63.0, 5.0, 40.0};
const int kGroups[64] = {0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0,
                         1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1,
                         2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0};
const double kWeights[64] = {1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1,
                             2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2,
                             3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1};
DescStatOptions every_statistic() {
    DescStatOptions o;
    std::memset(&o, 1, sizeof o);  // every selection true
    o.nMomentDenFlag = 0;
    return o;
}
const DescStatOptions kEveryStatistic = every_statistic();

double integrand(double x, void*) {
    return std::exp(-x * x);
}

// A small triangulation (a 3 x 3 grid, jittered so that it is unique) and a contour
// record whose one level lies below every node.
struct SampleMesh {
    Triangulation t{};
    TriContourLevel below{-10.0, 0, nullptr};  // every node above: the boundary is one ring
    TriContour contour{1, &below};
    // The record flattened, for the rebuild from arrays.
    std::vector<double> xyz;
    std::vector<int> tri, edge, boundary;
    // The unit square with its centre, z = y: at level 0.5 an open line across it from
    // edge to edge, and a closed ring inside.
    Triangulation square{};
    double open_x[2] = {0.0, 1.0}, open_y[2] = {0.5, 0.5};
    double ring_x[3] = {0.2, 0.4, 0.3}, ring_y[3] = {0.6, 0.6, 0.8};
    TriContourLine lines[2] = {{2, 0, open_x, open_y}, {3, 1, ring_x, ring_y}};
    TriContourLevel across{0.5, 2, lines};
    TriContour crossing{1, &across};
    // The same open line drawn the other way.
    double back_x[2] = {1.0, 0.0};
    TriContourLine back_line{2, 0, back_x, open_y};
    TriContourLevel back_level{0.5, 1, &back_line};
    TriContour back{1, &back_level};
    SampleMesh() {
        const double x[] = {0, 1, 2.1, 0.1, 1.05, 2, 0, 0.95, 2.05};
        const double y[] = {0, 0.1, 0, 1, 1.05, 0.9, 2, 2.1, 1.95};
        const double z[] = {1, 2, 3, 2, 5, 3, 1, 2, 1};
        zemath_triangulation_init(&t);
        zemath_triangulation(9, x, y, z, &t, 0);
        xyz.resize(3 * static_cast<size_t>(t.nodes));
        tri.resize(6 * static_cast<size_t>(t.triangles));
        edge.resize(3 * static_cast<size_t>(t.edges));
        boundary.resize(static_cast<size_t>(t.boundaryCount));
        zemath_triangulation_to_array(&t, xyz.data(), tri.data(), edge.data(), boundary.data());
        const double sx[] = {0, 1, 1, 0, 0.5}, sy[] = {0, 0, 1, 1, 0.5};
        zemath_triangulation_init(&square);
        zemath_triangulation(5, sx, sy, sy, &square, 0);
    }
    ~SampleMesh() {
        zemath_triangulation_free(&t);
        zemath_triangulation_free(&square);
    }
};
const SampleMesh& sample_mesh() {
    static const SampleMesh mesh;  // built outside the injection, kept for the run
    return mesh;
}

std::vector<LegalShape> legal_shapes() {
    const SampleMesh& mesh = sample_mesh();
    const std::vector<Setting> peaks{content("pnSize", first_int<64>), value("nFlags", 3)};
    auto with = [](std::vector<Setting> base, std::initializer_list<Setting> more) {
        base.insert(base.end(), more);
        return base;
    };
    return {
        {"zemath_percentiles",
         3,
         {value("n", 64), pointer("percents", kPercents), value("nPercents", 7),
          value("nInterpolate", 2), pointer("weights", kWeights)}},
        {"zemath_desc_stats_ex",
         3,
         {value("n", 64), pointer("bounds", kRanges), value("nRanges", 3),
          pointer("options", &kEveryStatistic), value("level", 0.95), null("weights")}},
        // Enough points for the percentiles to be bracketed from a sample.
        {"zemath_percentiles",
         0,
         {value("n", static_cast<double>(kManyPoints.size())), pointer("data", kManyPoints.data()),
          pointer("percents", kPercents), value("nPercents", 7), value("nInterpolate", 2),
          null("weights")}},
        {"zemath_bin_width", 3, {value("n", 64), value("method", 0), value("nInterpolate", 0)}},
        {"zemath_get_percentiles_data",
         3,
         {value("n", 64), pointer("groups", kGroups), value("nGroups", 4),
          pointer("percents", kPercents), value("nPercents", 7), value("nInterpolate", 0),
          null("weights")}},
        {"zemath_get_percentiles_data",
         3,
         {value("n", 64), pointer("groups", kGroups), value("nGroups", 3),
          pointer("percents", kPercents), value("nPercents", 7), value("nInterpolate", 0),
          pointer("weights", kWeights)}},
        // Beyond 1024 passes and 2^26 point updates: the passes at once in the frequency domain.
        {"zemath_binomial_smooth",
         3,
         {value("nSize", 64), value("nEndMode", 0), value("nPasses", 1 << 21)}},
        // The other end modes' transforms (periodic, two mirrored ones), planned afresh.
        {"zemath_binomial_smooth",
         3,
         {value("nSize", 64), value("nEndMode", 1), value("nPasses", 1 << 21)},
         evict_fft_plans},
        {"zemath_binomial_smooth",
         3,
         {value("nSize", 64), value("nEndMode", 2), value("nPasses", 1 << 21)},
         evict_fft_plans},
        {"zemath_binomial_smooth",
         3,
         {value("nSize", 64), value("nEndMode", 3), value("nPasses", 1 << 21)},
         evict_fft_plans},
        {"zemsp_fft_filter_smoothing",
         3,
         {value("nSize", 64), value("dCutoff", 5.0)},
         evict_fft_plans},
        {"zemath_cwt",
         3,
         {value("nSize", 64), pointer("pScales", kScales), value("nScales", 2),
          value("nWavelet", 1), value("dParam", 6.0)},
         evict_fft_plans},
        {"zemath_find_peaks_1st_derivative", 3,
         with(peaks, {value("bSmoothDerivative", 1), value("nSGPoints", 7), value("nSGOrder", 2)})},
        {"zemath_find_peaks_1st_derivative", 3,
         with(peaks, {value("bSmoothDerivative", 0), content("pX", descending)})},
        {"zemath_find_peaks_by_search_window", 3,
         with(peaks, {value("dWindowWidth", 1.0), value("dMinHeight", 0.0)})},
        {"zemath_find_peaks_by_search_window", 3,
         with(peaks,
              {value("dWindowWidth", 3.0), value("dMinHeight", 0.0), content("pX", uneven)})},
        {"zemath_pick_peaks", 3,
         with(peaks, {value("dMinHeight", 0.0), value("dMinProminence", 0.1),
                      value("nMinDistance", 2), content("pX", descending)})},
        {"zemath_find_peaks_by_local_maximum", 3,
         with(peaks, {value("nHalf", 2), content("pX", descending)})},
        {"zemath_find_peaks_by_local_maximum", 3,
         with(peaks, {value("nHalf", 2), content("pY", with_nan)})},
        {"zemath_find_local_extremes", 3,
         with(peaks, {value("nHalf", 2), content("pX", descending)})},
        {"zemath_find_peaks_2nd_derivative", 3, with(peaks, {value("nHalf", 2)})},
        {"zemsp_find_peaks_2nd_derivative", 3,
         with(peaks, {value("nHalf", 2), value("nSGPoints", 7), value("nSGOrder", 2)})},
        {"zemath_test_peaks_by_height",
         3,
         {content("pnPeaks", first_int<16>), value("dMinHeight", 0.5)}},
        {"zemath_calc_peak_moments",
         3,
         {value("nSize", 64), null("pBase"), value("nFirst", 2), value("nLast", 60)}},
        {"zemath_calc_peak_moments_ex",
         3,
         {value("nSize", 64), null("pBase"), value("nFirst", 2), value("nLast", 60),
          value("nMethod", 1)}},
        {"zemath_y_form_x",
         3,
         {value("nSize", 64), value("dX", 3.3), value("bSorted", 0), value("bEvenlySpaced", 0)}},
        {"zemath_yatasymt", 3, {value("nSize", 64), value("nSide", 1), value("nPoints", 16)}},
        {"zemath_emd_get_zero_crossing", 3, {value("nSize", 64), content("pY", with_missing)}},
        {"zemath_rainflow_cycles",
         3,
         {value("n", 64), value("hysteresis", 0.1), value("residue_mode", 0),
          value("capacity", 64)}},
        {"zemath_rainflow_cycles",
         3,
         {value("n", 64), value("hysteresis", 0.1), value("residue_mode", 1),
          value("capacity", 64)}},
        {"zemath_reducexy_n_points",
         3,
         {value("n", 64), value("points_per_group", 8), value("method", 3)}},
        {"reduce_xy_get_sampling_data",
         3,
         {value("n", 64), value("sampling_size", 8), value("method", 3)}},
        {"get_sampling_window_offset",
         0,
         {value("nCols", 16), value("nWidth", 5), value("nHeight", 5), value("nShape", 1),
          value("capacity", 99)}},
        {"zemath_function_integral_on_new_romberg",
         0,
         {pointer("f", reinterpret_cast<void*>(&integrand)), null("pContext"), value("dFrom", 0.0),
          value("dTo", 1.0), value("dTolerance", 1e-12), value("nMaxLevels", 20)}},
        {"integralKS",
         0,
         {pointer("f", &sweep_integrand_info), value("x1", 0.0), value("x2", INFINITY)}},
        {"zemath_find_baseline_part_by_small_curvature2",
         3,
         {value("nSize", 64), value("dFraction", 0.2), value("nSGPoints", 7),
          value("nSGOrder", 2)}},
        // Many targets: sorted and swept once (a fallback to bisection when storage fails).
        {"zemath_array_find_indices", 0, {value("n", 64), value("ntargets", 2000)}},
        {"zemath_interpolate",
         3,
         {value("n", 64), value("nnew", 2000), content("xnew", descending), value("method", 0),
          value("outside", 0)}},
        // Windows beyond the sorted window's limit: the balanced tree.
        {"zemath_median_filter",
         3,
         {value("nSize", 400), value("nHalf", 60), value("dPercent", 50.0), value("nEndMode", 0),
          value("bPercentileMethod", 0)}},
        // Records of a width without a fixed-size path: sorted through an index.
        {"theMergeSort", 0, {value("first", 0), value("last", 60), value("width", 20)}},
        {"theQuickSort", 0, {value("first", 0), value("last", 60), value("width", 20)}},
        {"zemath_loess_xUnevenly",
         3,
         {value("nSize", 64), value("nMethod", 1), value("nDegreeFlag", 1), content("pSpan", half),
          value("bShowProgress", 0)}},
        {"zemath_loess_xEvenly",
         3,
         {value("nSize", 64), value("nMethod", 0), value("nDegreeFlag", 0), content("pSpan", half),
          value("bShowProgress", 0)}},
        // The image filter's paths: the selection network (small window), the column
        // histograms (a window taller than the row path takes), the generic path (a circle),
        // and the largest-value operator.
        {"zemath_us_percentile_filter",
         0,
         {value("nRows", 48), value("nCols", 48), value("dPercent", 50.0), value("nWidth", 3),
          value("nHeight", 3), value("nShape", 0), value("dThreshold", 0.0), value("nRowFrom", 0),
          value("nColFrom", 0), value("nRowTo", -1), value("nColTo", -1)}},
        {"zemath_us_percentile_filter",
         0,
         {value("nRows", 64), value("nCols", 64), value("dPercent", 30.0), value("nWidth", 5),
          value("nHeight", 41), value("nShape", 0), value("dThreshold", 0.0), value("nRowFrom", 0),
          value("nColFrom", 0), value("nRowTo", -1), value("nColTo", -1)}},
        // Windows of 65536 cells and more: the column histograms, with 16-bit column
        // counters (256 rows, the whole buffer) and 8-bit ones (the wide image); a region
        // of 2 x 2 pixels keeps the calls short.
        {"zemath_us_percentile_filter",
         0,
         {value("nRows", 256), value("nCols", 256), value("dPercent", 50.0), value("nWidth", 256),
          value("nHeight", 256), value("nShape", 0), value("dThreshold", 0.0), value("nRowFrom", 0),
          value("nColFrom", 0), value("nRowTo", 1), value("nColTo", 1)}},
        {"zemath_us_percentile_filter",
         0,
         {pointer("image", wide_image.data()), value("nRows", 200), value("nCols", 330),
          value("dPercent", 50.0), value("nWidth", 330), value("nHeight", 200), value("nShape", 0),
          value("dThreshold", 0.0), value("nRowFrom", 0), value("nColFrom", 0), value("nRowTo", 1),
          value("nColTo", 1)},
         restore_wide_image},
        {"zemath_us_percentile_filter",
         0,
         {value("nRows", 32), value("nCols", 32), value("dPercent", 200.0), value("nWidth", 5),
          value("nHeight", 5), value("nShape", 1), value("dThreshold", 0.0), value("nRowFrom", 0),
          value("nColFrom", 0), value("nRowTo", -1), value("nColTo", -1)}},
        {"zemath_us_percentile_filter",
         0,
         {value("nRows", 32), value("nCols", 32), value("dPercent", 50.0), value("nWidth", 5),
          value("nHeight", 5), value("nShape", 1), value("dThreshold", 0.0), value("nRowFrom", 0),
          value("nColFrom", 0), value("nRowTo", -1), value("nColTo", -1)}},
        {"zemath_triangulation",
         0,
         {value("n", 64), content("x", grid_x), content("y", grid_y),
          value("options", ZEMATH_TRI_ENGINE)}},
        // The engine's triangles of an exact grid are refused (ties): the built-in build
        // runs after the engine.
        {"zemath_triangulation",
         0,
         {value("n", 64), content("x", exact_grid_x), content("y", exact_grid_y),
          value("options", ZEMATH_TRI_ENGINE)}},
        {"zemath_triangulation",
         0,
         {value("n", 64), content("x", ragged_grid_x), content("y", exact_grid_y),
          value("options", 0)}},
        {"zemath_triangulation",
         0,
         {value("n", 4), content("x", tiny_side_x), content("y", rectangle_y),
          value("options", 0)}},
        {"zemath_triangulation",
         0,
         {value("n", 64), content("x", ragged_duplicate_x), content("y", duplicate_grid_y),
          value("options", 0)}},
        // Enough points for the radix sort of the duplicate search.
        {"zemath_xy_remove_duplicates",
         0,
         {value("n", 4096), value("nMethod", 0), value("dTol", 0.5)}},
        // A negative hysteresis: the loads counted as they stand.
        {"Rainflow_Matrix",
         3,
         {value("nSize", 64), value("nBins", 8), value("dHysteresis", -1.0),
          value("nResidueMode", 0), value("nClassMode", 0)}},
        // Both tests of normality, with the data in descending order.
        {"zemath_shapiro_wilk_test",
         0,
         {value("n", 64), content("data", descending), value("method", 0)}},
        {"zemath_shapiro_wilk_test",
         0,
         {value("n", 64), content("data", descending), value("method", 1)}},
        // Missing values: the summary's compacted copy, the average's zeros.
        {"zemath_basic_summary_stats",
         3,
         {value("n", 64), content("data", with_missing), value("nMomentDenFlag", 0),
          null("weights")}},
        {"zemath_adj_average",
         3,
         {value("nSize", 64), content("pIn", with_missing), value("nLeft", 2), value("nRight", 2),
          value("nMissingAsZero", 1)}},
        {"zemath_quantiles",
         3,
         {value("n", 64), pointer("opt", &kFiveNumbers), null("percents"), value("nPercents", 0),
          null("results"), null("weights")}},
        {"zemath_tri_natural_neighbor_interpolate",
         0,
         {value("nd", 64), content("xd", grid_x), content("yd", grid_y), value("nt", 16),
          content("xt", inner), content("yt", inner), value("options", 0)}},
        {"zemath_xyz_examine_data_ex",
         0,
         {value("n", 64), content("x", exact_grid_x), content("y", exact_grid_y),
          value("dXTol", 0.01), value("dYTol", 0.01), value("bRemoveDuplicates", 0),
          value("nMethod", 0)}},
        {"zemath_triangulation_supplementary_area",
         0,
         {pointer("t", &mesh.t), pointer("contour", &mesh.contour),
          value("options", ZEMATH_TRI_AREA_ABOVE)}},
        {"zemath_triangulation_supplementary_area",
         0,
         {pointer("t", &mesh.square), pointer("contour", &mesh.crossing),
          value("options", ZEMATH_TRI_AREA_ABOVE)}},
        {"zemath_triangulation_supplementary_area",
         0,
         {pointer("t", &mesh.square), pointer("contour", &mesh.back),
          value("options", ZEMATH_TRI_AREA_ABOVE)}},
        {"zemath_array_to_triangulation",
         0,
         {value("nodes", mesh.t.nodes), pointer("xyz", mesh.xyz.data()),
          value("triangles", mesh.t.triangles), pointer("tri", mesh.tri.data()),
          value("edges", mesh.t.edges), pointer("edge", mesh.edge.data()),
          value("boundaryCount", mesh.t.boundaryCount), pointer("boundary", mesh.boundary.data())}},
    };
}

// The call of a legal shape: the baseline with the shape's settings; names a shape gives
// that the export does not have are reported.
Call shaped_call(const Export& e, const LegalShape& s, Fills& fills) {
    Call c = baseline(e, 64, 0.5, s.fill_mode);
    fills.assign(e.params.size(), nullptr);
    for (const Setting& set : s.settings) {
        size_t i = 0;
        while (i < e.params.size() && e.params[i].name != set.param) ++i;
        if (i == e.params.size()) {
            ADD_FAILURE() << e.name << " has no parameter " << set.param;
            continue;
        }
        Arg& a = c.args[i];
        switch (set.what) {
            case Setting::Value:
                a.i = static_cast<int64_t>(set.value);
                a.d = set.value;
                break;
            case Setting::Content:
                fills[i] = set.fill;
                break;
            case Setting::Pointer:
                a = Arg{};
                a.p = set.pointer;
                a.buffer = -2;
                break;
            case Setting::Null:
                a = Arg{};
                break;
        }
    }
    return c;
}

// The calls each export is given: the argument sets (large counts and doubles, small ones,
// and integers that differ by position: an index range 2..16 over records of 8 bytes, a
// table of 16 entries; a curve of 64 points with small windows, orders and option codes
// over data with peaks and valleys, also with 64 in its int buffers and missing
// ordinates), then its legal shapes when the table is given.
std::vector<Planned> planned_calls(const Export& e, const std::vector<LegalShape>* shapes) {
    const std::vector<int64_t> range{2, 16, 8, 1, 0, 0, 0, 0}, curve{64, 2, 1, 0, 0, 0, 0, 0},
        curve_options{64, 3, 2, 1, 1, 1, 1, 1}, resample{64, 16, 1, 0, 0, 0, 0, 0},
        few{64, 3, 0, 0, 0, 0, 0, 0};
    std::vector<Planned> out;
    for (const Call& c :
         {baseline(e, 64, 0.5, 0), baseline(e, 8, 2.0, 0), by_position(e, 0, range),
          by_position(e, 2, range), baseline(e, 64, 0.5, 3), by_position(e, 3, curve),
          by_position(e, 3, curve_options), by_position(e, 3, resample), by_position(e, 2, few),
          by_position(e, kCountedCurve, curve)})
        out.push_back({c, {}, nullptr, false});
    if (shapes) {
        for (const LegalShape& s : *shapes) {
            if (e.name != s.name) continue;
            Planned p;
            p.call = shaped_call(e, s, p.fills);
            p.before = s.before;
            p.shaped = true;
            out.push_back(std::move(p));
        }
    }
    return out;
}

// ---- First calls. An export may allocate on its first call in a process only (a table
// built on first use, a cache's own storage); the warm-up in inject() keeps those out of
// its count, so they are failed here, each in a fresh process forked from this one, which
// has called no export: this test runs before every other test of the program.

// A hash of the data buffers after a call (records hold addresses, which differ).
uint64_t output_hash(const Export& e, const Buffers& b, const std::vector<Arg>& args) {
    uint64_t h = 1469598103934665603ull;
    for (size_t i = 0; i < e.params.size(); ++i) {
        if (args[i].buffer < 0 || e.params[i].kind == Kind::Record) continue;
        const unsigned char* bytes = b.now[i].get();
        for (size_t j = 0; j < kBufferBytes; ++j) h = (h ^ bytes[j]) * 1099511628211ull;
    }
    return h;
}

// Runs body in a child forked from this process, under an alarm, then LeakSanitizer's
// check; returns the lines it reported, and a line for a child that died, hung or was
// ended by a sanitizer report.
std::vector<std::string> in_child(unsigned seconds, const std::function<void(int)>& body) {
    int fds[2];
    if (pipe(fds) != 0) return {"could not set up the child process"};
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        close(fds[0]);
        alarm(seconds);
        body(fds[1]);
        if (__lsan_do_recoverable_leak_check && __lsan_do_recoverable_leak_check() != 0)
            send(fds[1], "leak reported by LeakSanitizer");
        close(fds[1]);
        _exit(0);
    }
    close(fds[1]);
    std::string text;
    char chunk[4096];
    for (ssize_t got; child > 0 && (got = read(fds[0], chunk, sizeof chunk)) > 0;)
        text.append(chunk, static_cast<size_t>(got));
    close(fds[0]);
    std::vector<std::string> lines;
    std::stringstream in(text);
    for (std::string line; std::getline(in, line);)
        if (!line.empty()) lines.push_back(line);
    int wstatus = 0;
    if (child < 0 || waitpid(child, &wstatus, 0) != child)
        lines.push_back("could not run the child process");
    else if (WIFSIGNALED(wstatus))
        lines.push_back(WTERMSIG(wstatus) == SIGALRM
                            ? "no return within " + std::to_string(seconds) + " s"
                            : "died with signal " + std::to_string(WTERMSIG(wstatus)));
    else if (WEXITSTATUS(wstatus) != 0)
        lines.push_back("a sanitizer report ended the child");
    return lines;
}

// A planned call's first call in a process against its second.
struct FirstCall {
    size_t index = 0;  // in planned_calls
    long first = 0, later = 0;
    Result plain;  // the first call's answer and outputs
    uint64_t hash = 0;
    bool deterministic = true;  // the second call wrote the same outputs
};

std::string encode(const FirstCall& f) {
    uint64_t real_bits;
    std::memcpy(&real_bits, &f.plain.real, sizeof real_bits);
    std::ostringstream o;
    o << "call " << f.index << ' ' << f.first << ' ' << f.later << ' ' << f.plain.is_status << ' '
      << f.plain.status << ' ' << f.plain.is_real << ' ' << real_bits << ' ' << f.hash << ' '
      << f.deterministic;
    return o.str();
}

bool decode(const std::string& line, FirstCall& f) {
    std::istringstream in(line);
    std::string word;
    uint64_t real_bits = 0;
    if (!(in >> word) || word != "call") return false;
    in >> f.index >> f.first >> f.later >> f.plain.is_status >> f.plain.status >> f.plain.is_real >>
        real_bits >> f.hash >> f.deterministic;
    std::memcpy(&f.plain.real, &real_bits, sizeof real_bits);
    return !in.fail();
}

// The planned calls of e in a child: the argument sets, then the legal shapes (whose
// sample mesh is triangulated here, after the argument sets' first calls).
const Planned& planned_in_child(const Export& e, size_t index, std::vector<LegalShape>& shapes,
                                std::vector<Planned>& planned) {
    planned = planned_calls(e, nullptr);
    if (index >= planned.size()) {
        shapes = legal_shapes();
        planned = planned_calls(e, &shapes);
    }
    return planned[index];
}

TEST(AllocationFailure, FirstCallAllocationsFailCleanly) {
    if (counted_before) GTEST_FAIL() << "an export was called before: run this test first";
    long calls_with_first_allocations = 0, injected = 0, failed = 0, recovered = 0;
    std::string exports_listed;
    for (const Export& e : all_exports()) {
        // One child per export: each planned call made twice, counted.
        std::vector<FirstCall> measured;
        const size_t plain_calls = planned_calls(e, nullptr).size();
        for (const std::string& line : in_child(20 * e.seconds_per_call, [&](int fd) {
                 std::vector<LegalShape> shapes;
                 std::vector<Planned> planned;
                 for (size_t i = 0;; ++i) {
                     if (i == plain_calls)
                         planned_in_child(e, i, shapes, planned);
                     else if (i == 0)
                         planned = planned_calls(e, nullptr);
                     if (i >= planned.size()) break;
                     FirstCall f;
                     f.index = i;
                     Buffers b;
                     std::vector<Arg> args;
                     const CallRun first = run_planned(e, planned[i], b, args, -1);
                     f.first = first.count;
                     f.plain = first.result;
                     f.hash = output_hash(e, b, args);
                     release(e, args);
                     if (f.first == 0) continue;  // nothing allocated: nothing first-only
                     const CallRun later = run_planned(e, planned[i], b, args, -1);
                     f.later = later.count;
                     f.deterministic = output_hash(e, b, args) == f.hash;
                     release(e, args);
                     if (f.first != f.later) send(fd, encode(f));
                 }
             })) {
            FirstCall f;
            if (decode(line, f))
                measured.push_back(f);
            else
                ADD_FAILURE() << e.name << ": " << line;
        }
        if (!measured.empty()) exports_listed += " " + e.name;
        // Each allocation of each such first call failed in a fresh child; then the next
        // call must answer as an uninjected first call did.
        for (const FirstCall& f : measured) {
            ++calls_with_first_allocations;
            for (long k = 1; k <= f.first; ++k) {
                ++injected;
                for (const std::string& line : in_child(3 * e.seconds_per_call, [&](int fd) {
                         std::vector<LegalShape> shapes;
                         std::vector<Planned> planned;
                         const Planned& p = planned_in_child(e, f.index, shapes, planned);
                         Buffers b;
                         std::vector<Arg> args;
                         std::vector<std::string> problems;
                         const CallRun r = run_planned(e, p, b, args, k);
                         const Answer a = judge(e, p.call, f.plain, r.result, b, args, k, problems);
                         release(e, args);
                         send(fd, a == Answer::Failed ? "answer failed" : "answer recovered");
                         const CallRun next = run_planned(e, p, b, args, -1);
                         if (!(next.result.status == f.plain.status &&
                               (next.result.real == f.plain.real ||
                                (std::isnan(next.result.real) && std::isnan(f.plain.real)))) ||
                             (f.deterministic && output_hash(e, b, args) != f.hash))
                             problems.push_back("allocation " + std::to_string(k) +
                                                " of the first call failed, and the next call "
                                                "answered otherwise than a first call: " +
                                                describe(e, p.call));
                         release(e, args);
                         for (const std::string& problem : problems)
                             send(fd, "first call: " + problem);
                     })) {
                    if (line == "answer failed")
                        ++failed;
                    else if (line == "answer recovered")
                        ++recovered;
                    else
                        ADD_FAILURE() << e.name << ": " << line;
                }
            }
        }
    }
    std::printf(
        "alloc: first calls: %ld calls allocate on the first call only (%s); %ld injected "
        "failures: %ld failure values, %ld recovered\n",
        calls_with_first_allocations, exports_listed.c_str(), injected, failed, recovered);
}

TEST(AllocationFailure, EveryAllocationOfEveryExportFailsCleanly) {
    long exports_reaching = 0, sites = 0, failed = 0, recovered = 0, shapes_run = 0;
    const std::vector<LegalShape> shapes = legal_shapes();
    for (const Export& e : all_exports()) {
        long reached = 0;
        for (const Planned& p : planned_calls(e, &shapes)) {
            const Outcome o = inject(e, p);
            if (p.shaped) {
                ++shapes_run;
                EXPECT_GT(o.sites, 0)
                    << "no allocation under the legal shape " << describe(e, p.call);
            }
            reached += o.sites;
            sites += o.sites;
            failed += o.failed;
            recovered += o.recovered;
            for (const std::string& problem : o.problems) ADD_FAILURE() << problem;
        }
        if (reached) {
            ++exports_reaching;
            std::printf("alloc: %-28s %ld allocation sites reached\n", e.name.c_str(), reached);
        }
    }
    std::printf(
        "alloc: %ld exports allocate; %ld injected failures: %ld failure values, %ld recovered\n",
        exports_reaching, sites, failed, recovered);
    // The families that allocate working storage are reached (a harness that counts
    // nothing would pass vacuously).
    EXPECT_EQ(shapes_run, static_cast<long>(shapes.size())) << "a legal shape names no export";
    EXPECT_GE(exports_reaching, 5);
    EXPECT_GT(failed, 0);
}

// The arrays a record hands to the caller come from the counted allocation functions
// (else no injection could fail them) and go back through them on release: every array
// the record holds is among the blocks still live after the build, no other block is, and
// none is after the free function.
TEST(AllocationFailure, RecordArraysComeFromTheCountedAllocator) {
    const SampleMesh& mesh = sample_mesh();
    const double x[] = {0, 1, 2.1, 0.1, 1.05, 2, 0, 0.95, 2.05};
    const double y[] = {0, 0.1, 0, 1, 1.05, 0.9, 2, 2.1, 1.95};
    const double z[] = {1, 2, 3, 2, NANUM, 3, 1, 2, 1};  // the middle node missing: a hole
    Triangulation t{};
    TriContour areas{};
    struct Case {
        const char* what;
        std::function<int()> build;                        // the call, counted
        std::function<std::vector<const void*>()> arrays;  // the record's arrays after it
        std::function<void()> free;
    };
    const Case cases[] = {
        {"triangulation with a missing-z pass",
         [&] {
             return zemath_triangulation(9, x, y, z, &t,
                                         ZEMATH_TRI_KEEP_MISSING_Z | ZEMATH_TRI_MISSING_Z_PASS);
         },
         [&] {
             EXPECT_GT(t.holeCount, 0);
             return std::vector<const void*>{
                 t.x, t.y, t.z, t.tri, t.edge, t.boundary, t.neighbor, t.holeIndex, t.holeValue};
         },
         [&] { zemath_triangulation_free(&t); }},
        {"supplementary areas",
         [&] {
             return zemath_triangulation_supplementary_area(&mesh.t, &mesh.contour, &areas,
                                                            ZEMATH_TRI_AREA_ABOVE);
         },
         [&] {
             std::vector<const void*> arrays{areas.levels};
             for (int l = 0; l < areas.levelCount; ++l) {
                 arrays.push_back(areas.levels[l].line);
                 for (int k = 0; k < areas.levels[l].lineCount; ++k)
                     arrays.insert(arrays.end(),
                                   {areas.levels[l].line[k].x, areas.levels[l].line[k].y});
             }
             EXPECT_GE(arrays.size(), 4u);
             return arrays;
         },
         [&] { zemath_tri_contour_free(&areas); }},
    };
    for (const Case& c : cases) {
        tracking = Tracking{};
        tracking.on = true;
        const int status = c.build();
        tracking.on = false;
        ASSERT_EQ(status, 0) << c.what;
        const Tracking built = tracking;
        const std::vector<const void*> arrays = c.arrays();
        const std::vector<const void*> live(built.blocks, built.blocks + built.live);
        for (const void* a : arrays) {
            EXPECT_NE(a, nullptr) << c.what;
            EXPECT_NE(std::find(live.begin(), live.end(), a), live.end())
                << c.what << ": an array from another allocator";
        }
        EXPECT_EQ(static_cast<size_t>(built.live), arrays.size()) << c.what;
        c.free();  // releases are followed whether or not tracking is on
        EXPECT_EQ(tracking.live, 0) << c.what << ": blocks left after the free function";
    }
}

// The FFT's working buffers (aligned for its vector code) are counted too, and released
// within the call.
TEST(AllocationFailure, FftBuffersComeFromTheCountedAllocator) {
    std::vector<double> in(96), out(96), scales{2.0, 5.0}, re(2 * 96), im(2 * 96);
    for (size_t i = 0; i < in.size(); ++i) in[i] = std::sin(0.3 * static_cast<double>(i));
    const std::pair<const char*, std::function<int()>> calls[] = {
        {"fft filter", [&] { return zemsp_fft_filter_smoothing(96, in.data(), out.data(), 4.0); }},
        {"wavelet transform",
         [&] { return zemath_cwt(in.data(), 96, scales.data(), 2, 1, 6.0, re.data(), im.data()); }},
    };
    for (const auto& [what, call] : calls) {
        ASSERT_EQ(call(), 0) << what;  // the plans cached before counting
        tracking = Tracking{};
        tracking.on = true;
        const int status = call();
        tracking.on = false;
        EXPECT_EQ(status, 0) << what;
        EXPECT_GE(tracking.aligned, 1) << what << ": no aligned buffer through the allocator";
        EXPECT_EQ(tracking.live, 0) << what << ": a buffer outlived the call";
    }
    // After the shapes' eviction the call plans afresh inside the count: the two planning
    // buffers besides the spectrum's, and the new cache entry is the one block it keeps.
    evict_fft_plans();
    tracking = Tracking{};
    tracking.on = true;
    const int status = zemsp_fft_filter_smoothing(96, in.data(), out.data(), 4.0);
    tracking.on = false;
    EXPECT_EQ(status, 0);
    EXPECT_GE(tracking.aligned, 3);
    EXPECT_EQ(tracking.live, 1);
}

// Eigen's dynamic matrices reach the count through the wrapped malloc (else no injection
// could fail them, and the guards' bad_alloc path would go untested), and are released
// within the call.
TEST(AllocationFailure, EigenStorageComesThroughTheCount) {
    std::vector<double> x(40), y(40), coef(4), smooth(40);
    for (size_t i = 0; i < x.size(); ++i) {
        x[i] = 0.1 * static_cast<double>(i);
        y[i] = std::cos(x[i]);
    }
    const std::pair<const char*, std::function<int()>> calls[] = {
        {"polynomial fit",
         [&] { return zemath_polynomial_fit(x.data(), y.data(), 40, 3, coef.data()); }},
        {"Savitzky-Golay smoothing",
         [&] { return zemath_savitsky_golay(y.data(), smooth.data(), 40, 4, 4, 2, 0, 0); }},
    };
    for (const auto& [what, call] : calls) {
        tracking = Tracking{};
        tracking.on = true;
        const int status = call();
        tracking.on = false;
        EXPECT_EQ(status, 0) << what;
        EXPECT_GE(tracking.from_malloc, 1) << what << ": Eigen's storage was not counted";
        EXPECT_EQ(tracking.live, 0) << what << ": a block outlived the call";
    }
}

}  // namespace
