// FFT filter substitute on FFTW 3 (double precision).
//
// Method: the real signal is transformed with a real-to-complex plan (any length; FFTW
// picks mixed-radix, Rader or Bluestein algorithms, O(n log n)), each bin multiplied by
// the window's gain, and transformed back (complex-to-real) with the 1/n scaling.
// Windows are rectangular (gains 0 or 1). Signals with mirrored or odd ends are filtered
// the same way in the basis of their symmetric extension, by FFTW's real even and odd
// transforms (DCT-I, DCT-II/III, DST-I), which need no complex storage. Accuracy: the transforms'
// rounding, about eps * log2(n) relative to the signal's norm.
//
// Plans: made with FFTW_ESTIMATE (no timing runs) on scratch arrays of FFTW's alignment and
// executed with FFTW's new-array functions on the caller's arrays (copied only when their
// alignment differs) or on per-call buffers, so one plan serves any number of threads at once.
// Recently used plans are kept in a process-wide cache, least recently used out first: at most
// kCachedPlans transform kinds and lengths whose lengths sum to at most kCachedLength (the plans'
// tables are O(n) each, so the cache holds at most about 50 MB); longer transforms are planned
// per call. The cache is emptied, and its plans destroyed, when the
// library is unloaded. FFTW's planner is not reentrant: every plan is made and destroyed under
// one process-wide lock, while executing a plan is thread-safe.
//
// Failure codes: -151 bad argument, -19 allocation or planning failure. Reference: M.
// Frigo, S. G. Johnson, "The design and implementation of FFTW3", Proc. IEEE 93 (2005) 216-231.
#include "platform/fft/fft_filter.hpp"

#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <mutex>

#include "core/allocate.hpp"
#include "zemath/status.h"

namespace zemath {
namespace {

std::mutex& planner_lock() {
    static std::mutex lock;  // FFTW's planner shares state between threads
    return lock;
}

// FFTW's SIMD codelets want 16 bytes (32 with AVX); 64 serves every instruction set, so a
// buffer from here is aligned as the plans' scratch arrays were.
constexpr std::size_t kFftwAlignment = 64;

// Through the library's allocation pair rather than fftw_malloc, so that an allocation-failure
// test reaches these buffers (FFTW's planner allocates its own tables with malloc, out of
// that test's reach).
struct Buffer {
    void* p;
    explicit Buffer(std::size_t bytes)
        : p(bytes > 0 ? raw_alloc_aligned(bytes, kFftwAlignment) : nullptr) {}
    ~Buffer() { raw_free_aligned(p, kFftwAlignment); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
};

// The transforms a cached entry can hold: a forward and a backward plan, out-of-place.
enum class PlanKind { real, even_whole, even_half, odd_whole, complex };

struct PlanPair {
    PlanKind kind;
    int n;
    fftw_plan forward = nullptr, backward = nullptr;
    PlanPair(PlanKind k, int size) : kind(k), n(size) {}
    PlanPair(const PlanPair&) = delete;
    PlanPair& operator=(const PlanPair&) = delete;
    ~PlanPair() {
        std::lock_guard<std::mutex> guard(planner_lock());
        if (forward != nullptr) fftw_destroy_plan(forward);
        if (backward != nullptr) fftw_destroy_plan(backward);
    }
};

// Makes both plans of an entry on scratch arrays (FFTW_ESTIMATE reads neither); false when
// FFTW cannot allocate or plan.
bool make_plans(PlanPair& plans) {
    const auto size = static_cast<std::size_t>(plans.n);
    const bool complex = plans.kind == PlanKind::complex;
    const std::size_t a_bytes = (complex ? sizeof(fftw_complex) : sizeof(double)) * size;
    const std::size_t b_bytes = plans.kind == PlanKind::real ? sizeof(fftw_complex) * (size / 2 + 1)
                                : complex                    ? sizeof(fftw_complex) * size
                                                             : sizeof(double) * size;
    Buffer a(a_bytes), b(b_bytes);
    if (a.p == nullptr || b.p == nullptr) return false;
    auto* ra = static_cast<double*>(a.p);
    auto* rb = static_cast<double*>(b.p);
    auto* ca = static_cast<fftw_complex*>(a.p);
    auto* cb = static_cast<fftw_complex*>(b.p);
    const int n = plans.n;
    const unsigned keep = FFTW_ESTIMATE | FFTW_PRESERVE_INPUT;
    const unsigned spend = FFTW_ESTIMATE | FFTW_DESTROY_INPUT;
    std::lock_guard<std::mutex> guard(planner_lock());
    switch (plans.kind) {
        case PlanKind::real:
            plans.forward = fftw_plan_dft_r2c_1d(n, ra, cb, keep);
            plans.backward = fftw_plan_dft_c2r_1d(n, cb, ra, spend);
            break;
        case PlanKind::complex:
            plans.forward = fftw_plan_dft_1d(n, ca, cb, FFTW_FORWARD, keep);
            plans.backward = fftw_plan_dft_1d(n, ca, cb, FFTW_BACKWARD, keep);
            break;
        default: {
            fftw_r2r_kind forward_kind = FFTW_REDFT00, backward_kind = FFTW_REDFT00;
            if (plans.kind == PlanKind::even_half) {
                forward_kind = FFTW_REDFT10;
                backward_kind = FFTW_REDFT01;
            } else if (plans.kind == PlanKind::odd_whole) {
                forward_kind = backward_kind = FFTW_RODFT00;
            }
            plans.forward = fftw_plan_r2r_1d(n, ra, rb, forward_kind, keep);
            plans.backward = fftw_plan_r2r_1d(n, rb, ra, backward_kind, spend);
            break;
        }
    }
    return plans.forward != nullptr && plans.backward != nullptr;
}

// Entries kept, and their summed lengths: plans with their tables take roughly 20 bytes
// per point (measured about 15 to 25 MB at a million points), so the cache stays below
// about 50 MB.
constexpr std::size_t kCachedPlans = 8;
constexpr int kCachedLength = 1 << 21;

// Plans by kind and length, most recently used last. Entries are shared: a plan evicted
// while another thread executes it lives until that thread lets it go.
class PlanCache {
  public:
    std::shared_ptr<const PlanPair> get(PlanKind kind, int n) {
        if (n > kCachedLength) return fresh(kind, n);
        std::lock_guard<std::mutex> guard(lock_);
        for (std::size_t k = 0; k < entries_.size(); ++k) {
            if (entries_[k]->kind == kind && entries_[k]->n == n) {
                std::rotate(entries_.begin() + static_cast<std::ptrdiff_t>(k),
                            entries_.begin() + static_cast<std::ptrdiff_t>(k) + 1, entries_.end());
                return entries_.back();
            }
        }
        auto plans = fresh(kind, n);  // planned under the cache lock: one thread plans a size
        if (plans == nullptr) return nullptr;
        while (!entries_.empty() &&
               (entries_.size() >= kCachedPlans || cached_length_ + n > kCachedLength)) {
            cached_length_ -= entries_.front()->n;
            entries_.erase(entries_.begin());
        }
        entries_.push_back(plans);  // room reserved: cannot throw after the erase
        cached_length_ += n;
        return plans;
    }

    PlanCache() {
        planner_lock();  // made first, so that it outlives the cache's plans at unload
        entries_.reserve(kCachedPlans);
    }

  private:
    static std::shared_ptr<const PlanPair> fresh(PlanKind kind, int n) {
        auto plans = std::make_shared<PlanPair>(kind, n);
        if (!make_plans(*plans)) return nullptr;
        return plans;
    }

    std::mutex lock_;
    std::vector<std::shared_ptr<const PlanPair>> entries_;
    int cached_length_ = 0;  // summed lengths of the entries, at most kCachedLength
};

// The plans for a transform, or null when FFTW cannot allocate or plan (std::bad_alloc
// from the cache's own bookkeeping reaches the export's guard).
std::shared_ptr<const PlanPair> plans_for(PlanKind kind, int n) {
    static PlanCache cache;  // destroyed, with its plans, when the library is unloaded
    return cache.get(kind, n);
}

// A caller's array can be handed to a plan made on FFTW's own arrays when its alignment
// is the same.
bool plan_aligned(const void* p) {
    return fftw_alignment_of(static_cast<double*>(const_cast<void*>(p))) == 0;
}

}  // namespace

int fft_filter_window(int n, int type, double cutoff, double interval, double upper_cutoff,
                      int keep_mean, std::span<double> window) {
    if (n < 1 || type < kFftLowPass || type > kFftBandBlock) return ZEMATH_ERR_PARAM_RANGE;
    if (!(cutoff >= 0.0) || !(interval > 0.0)) return ZEMATH_ERR_PARAM_RANGE;
    const bool band = type == kFftBandPass || type == kFftBandBlock;
    if (band && !(upper_cutoff >= 0.0)) return ZEMATH_ERR_PARAM_RANGE;
    const int bins = n / 2 + 1;
    if (window.size() < static_cast<std::size_t>(bins)) return ZEMATH_ERR_PARAM_RANGE;
    const double resolution = 1.0 / (static_cast<double>(n) * interval);
    for (int k = 0; k < bins; ++k) {
        const double f = k * resolution;
        bool keep = false;
        switch (type) {
            case kFftLowPass:
                keep = f < cutoff;
                break;
            case kFftHighPass:
                keep = f >= cutoff;
                break;
            case kFftBandPass:
                keep = f >= cutoff && f < upper_cutoff;
                break;
            default:
                keep = !(f >= cutoff && f < upper_cutoff);
                break;
        }
        window[static_cast<std::size_t>(k)] = keep ? 1.0 : 0.0;
    }
    if (keep_mean != 0) window[0] = 1.0;
    return ZEMATH_OK;
}

int fft_fft_filter(int n, double* data, std::span<const double> window) {
    return fft_fft_filter(n, data, data, window);
}

int fft_fft_filter(int n, const double* in, double* out, std::span<const double> window) {
    if (n < 1 || in == nullptr || out == nullptr ||
        window.size() < static_cast<std::size_t>(n / 2 + 1))
        return ZEMATH_ERR_PARAM_RANGE;
    const auto size = static_cast<std::size_t>(n), bins = size / 2 + 1;
    const auto plans = plans_for(PlanKind::real, n);
    if (plans == nullptr) return ZEMATH_ERR_ALLOC;
    // The spectrum always has a buffer of its own; the signal only when the caller's
    // arrays are not aligned as the plans' were.
    const bool direct_in = plan_aligned(in), direct_out = plan_aligned(out);
    Buffer spectrum(sizeof(fftw_complex) * bins);
    Buffer staging(direct_in && direct_out ? 0 : sizeof(double) * size);
    if (spectrum.p == nullptr || (staging.p == nullptr && !(direct_in && direct_out)))
        return ZEMATH_ERR_ALLOC;
    auto* c = static_cast<fftw_complex*>(spectrum.p);
    auto* r = static_cast<double*>(staging.p);
    if (!direct_in) std::memcpy(r, in, size * sizeof(double));
    // The forward plan preserves its input: the caller's array is only read.
    fftw_execute_dft_r2c(plans->forward, direct_in ? const_cast<double*>(in) : r, c);
    const double scale = 1.0 / static_cast<double>(n);
    for (std::size_t k = 0; k < bins; ++k) {
        const double g = window[k] * scale;
        c[k][0] *= g;
        c[k][1] *= g;
    }
    fftw_execute_dft_c2r(plans->backward, c, direct_out ? out : r);
    if (!direct_out) std::memcpy(out, r, size * sizeof(double));
    return ZEMATH_OK;
}

int fft_symmetric_filter(int n, double* data, FftSymmetry symmetry, std::span<const double> gains) {
    const int least = symmetry == FftSymmetry::whole_even ? 2 : 1;
    if (n < least || data == nullptr || gains.size() < static_cast<std::size_t>(n))
        return ZEMATH_ERR_PARAM_RANGE;
    const auto size = static_cast<std::size_t>(n);
    Buffer a(sizeof(double) * size), b(sizeof(double) * size);
    if (a.p == nullptr || b.p == nullptr) return ZEMATH_ERR_ALLOC;
    auto* x = static_cast<double*>(a.p);
    auto* coefficients = static_cast<double*>(b.p);
    double factor = 2.0 * (n - 1);  // the transform pair multiplies by this
    PlanKind kind = PlanKind::even_whole;
    if (symmetry == FftSymmetry::half_even) {
        kind = PlanKind::even_half;
        factor = 2.0 * n;
    } else if (symmetry == FftSymmetry::whole_odd) {
        kind = PlanKind::odd_whole;
        factor = 2.0 * (n + 1.0);
    }
    const auto plans = plans_for(kind, n);
    if (plans == nullptr) return ZEMATH_ERR_ALLOC;
    std::memcpy(x, data, size * sizeof(double));
    fftw_execute_r2r(plans->forward, x, coefficients);
    for (std::size_t k = 0; k < size; ++k) coefficients[k] *= gains[k] / factor;
    fftw_execute_r2r(plans->backward, coefficients, x);
    std::memcpy(data, x, size * sizeof(double));
    return ZEMATH_OK;
}

int fft_complex(std::span<const std::complex<double>> in, std::span<std::complex<double>> out,
                bool inverse) {
    const std::size_t n = in.size();
    if (n == 0) return ZEMATH_OK;
    Buffer a(sizeof(fftw_complex) * n), b(sizeof(fftw_complex) * n);
    if (a.p == nullptr || b.p == nullptr) return ZEMATH_ERR_ALLOC;
    auto* ia = static_cast<fftw_complex*>(a.p);
    auto* ob = static_cast<fftw_complex*>(b.p);
    const auto plans = plans_for(PlanKind::complex, static_cast<int>(n));
    if (plans == nullptr) return ZEMATH_ERR_ALLOC;
    std::memcpy(ia, in.data(), n * sizeof(fftw_complex));
    fftw_execute_dft(inverse ? plans->backward : plans->forward, ia, ob);
    const double scale = inverse ? 1.0 / static_cast<double>(n) : 1.0;
    for (std::size_t k = 0; k < n; ++k)
        out[k] = std::complex<double>(ob[k][0] * scale, ob[k][1] * scale);
    return ZEMATH_OK;
}

}  // namespace zemath
