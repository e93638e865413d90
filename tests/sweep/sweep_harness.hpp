// The sweep's machinery, shared by the bad-argument sweep and the allocation-failure
// injection test: the export list written from the public headers, the parameter
// classification from the real prototypes, the planned calls and a child-process runner.
#pragma once
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "sweep_exports.inc"
#include "zemath/string_array.hpp"

extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));

namespace zemath_sweep {

// Every buffer holds this many bytes: with counts at most kMaxCount, a count times a
// record width or a dimension squared stays inside (99 * 99 doubles = 78 KB).
constexpr size_t kBufferBytes = 128 * 1024;
constexpr int kMaxCount = 99;
// Generous enough for the slowest legitimate call under the sanitizers (the studentized
// range deviate takes up to 4 s in the deep tail in a release build); a loop that does
// not end is caught all the same.
constexpr unsigned kSecondsPerCall = 20;

enum class Kind {
    Data,
    Text,
    VoidOut,
    Function,
    Record,
    Integer,
    Floating,
    Complex,
    Boolean,
    Other
};

// One argument value, wide enough for every parameter type the headers use.
struct Arg {
    int64_t i = 0;
    double d = 0.0;
    d_complex z{0.0, 0.0};
    void* p = nullptr;
    int buffer = -1;  // index of the buffer p points into, -1 for none
};

struct Result {
    bool is_status = false;  // a signed int return: negative means refused
    int64_t status = 0;
    bool is_real = false;  // a double return
    double real = 0.0;
};

struct Param {
    std::string name;
    Kind kind = Kind::Other;
    bool is_signed = false;
    bool narrow = false;  // integer narrower than int: its extremes are no count
    int64_t min = 0;
    int64_t max = 0;
    void (*fill)(unsigned char*, int mode) = nullptr;  // typed content of its buffer
    void (*release)(void*) = nullptr;                  // frees what a record received
};

struct Export {
    std::string name;
    std::string header;
    std::vector<Param> params;
    std::function<Result(const std::vector<Arg>&)> call;
    unsigned seconds_per_call = kSecondsPerCall;
};

// ---- Buffer contents by element type: mode 0 an ascending run, mode 1 special values
// (modes 2 and 3 differ for floating types only: a constant 1/16, and a curve with peaks,
// valleys and a trend, which the peak, baseline and decomposition families need to get
// past their first steps).

const double kSpecials[] = {NAN,     INFINITY, -INFINITY, NANUM, -0.0, 0.0, DBL_MAX, -DBL_MAX,
                            DBL_MIN, 4.9e-324, -4.9e-324, 1.0,   -1.0, 0.5, 1e300,   -1e-300};
constexpr size_t kSpecialCount = sizeof kSpecials / sizeof kSpecials[0];

// Floats receive the doubles clamped: a double beyond the float range becomes infinity
// instead of an undefined conversion.
float to_float(double d) {
    if (d > FLT_MAX) return INFINITY;
    if (d < -FLT_MAX) return -INFINITY;
    return static_cast<float>(d);
}

void fill_bytes(unsigned char* bytes, int mode) {
    for (size_t i = 0; i < kBufferBytes; ++i)
        bytes[i] = static_cast<unsigned char>(mode == 0 ? i * 7 : 0xA5);
}

template <class T>
void fill_typed(unsigned char* bytes, int mode) {
    T* data = reinterpret_cast<T*>(bytes);
    const size_t n = kBufferBytes / sizeof(T);
    for (size_t i = 0; i < n; ++i) {
        if constexpr (std::is_same_v<T, d_complex>) {
            data[i] = mode == 0 ? d_complex{0.25 * static_cast<double>(i) - 2.0, 1.0}
                                : d_complex{kSpecials[i % kSpecialCount],
                                            kSpecials[(i + 3) % kSpecialCount]};
        } else if constexpr (std::is_floating_point_v<T>) {
            // Mode 2: every value 1/16, a probability table of 16 entries summing to 1.
            const double t = static_cast<double>(i);
            const double v = mode == 0   ? 0.25 * t - 2.0
                             : mode == 2 ? 0.0625
                             : mode == 3
                                 ? std::sin(0.7 * t) * (1.0 + 0.3 * std::sin(0.05 * t)) + 0.02 * t
                                 : kSpecials[i % kSpecialCount];
            if constexpr (std::is_same_v<T, float>)
                data[i] = to_float(v);
            else
                data[i] = static_cast<T>(v);
        } else if constexpr (std::is_same_v<T, char>) {
            data[i] = i + 1 == n ? '\0' : static_cast<char>('a' + i % 26);
        } else if constexpr (std::is_integral_v<T>) {
            const T extremes[] = {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(),
                                  T(0), T(1), static_cast<T>(-1)};
            data[i] = mode == 0 ? static_cast<T>(i) : extremes[i % 5];
        }
    }
}

void fill_zero(unsigned char* bytes, int) {
    std::memset(bytes, 0, kBufferBytes);
}

// Records that may receive library-allocated arrays are released after each call.
template <class V>
void release_record(void* record) {
    if constexpr (std::is_same_v<V, zemath_Spline>)
        zemath_free_spline_struct(static_cast<zemath_Spline*>(record));
    else if constexpr (std::is_same_v<V, zemath_2dSpline>)
        zemath_free_2dSpline_struct(static_cast<zemath_2dSpline*>(record));
    else if constexpr (std::is_same_v<V, zemath_Comm>)
        zemath_free_comm_struct(static_cast<zemath_Comm*>(record));
    else if constexpr (std::is_same_v<V, Triangulation>)
        zemath_triangulation_free(static_cast<Triangulation*>(record));
    else if constexpr (std::is_same_v<V, TriContour>)
        zemath_tri_contour_free(static_cast<TriContour*>(record));
    else if constexpr (std::is_same_v<V, CStringArray>)
        static_cast<CStringArray*>(record)->~CStringArray();  // all-zero is its empty state
}

template <class T>
Param classify() {
    Param p;
    if constexpr (std::is_pointer_v<T>) {
        using V = std::remove_cv_t<std::remove_pointer_t<T>>;
        if constexpr (std::is_function_v<V>) {
            p.kind = Kind::Function;
        } else if constexpr (std::is_void_v<V>) {
            p.kind = std::is_const_v<std::remove_pointer_t<T>> ? Kind::Data : Kind::VoidOut;
            p.fill = fill_bytes;
        } else if constexpr (std::is_same_v<V, char>) {
            p.kind = Kind::Text;
            p.fill = fill_typed<char>;
        } else if constexpr (std::is_arithmetic_v<V> || std::is_same_v<V, d_complex>) {
            p.kind = Kind::Data;
            p.fill = fill_typed<V>;
        } else {
            // Records (complete or opaque) and arrays of pointers: all words zero is the
            // legal empty shape.
            p.kind = Kind::Record;
            p.fill = fill_zero;
            p.release = release_record<V>;
        }
    } else if constexpr (std::is_same_v<T, bool>) {
        p.kind = Kind::Boolean;
    } else if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) {
        using I = typename std::conditional_t<std::is_enum_v<T>, std::underlying_type<T>,
                                              std::type_identity<T>>::type;
        p.kind = Kind::Integer;
        p.is_signed = std::is_signed_v<I>;
        p.narrow = sizeof(I) < sizeof(int);
        p.min = static_cast<int64_t>(std::numeric_limits<I>::min());
        p.max = sizeof(I) >= 8 ? INT64_MAX : static_cast<int64_t>(std::numeric_limits<I>::max());
    } else if constexpr (std::is_floating_point_v<T>) {
        p.kind = Kind::Floating;
    } else if constexpr (std::is_same_v<T, d_complex>) {
        p.kind = Kind::Complex;
    }
    return p;
}

template <class T>
T make(const Arg& a) {
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<T>(a.p);
    } else if constexpr (std::is_same_v<T, bool>) {
        return a.i != 0;
    } else if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) {
        return static_cast<T>(a.i);
    } else if constexpr (std::is_same_v<T, float>) {
        return to_float(a.d);
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(a.d);
    } else if constexpr (std::is_same_v<T, d_complex>) {
        return a.z;
    } else {
        return T{};
    }
}

template <class R, class... P, size_t... I>
Result invoke(R (*f)(P...), const std::vector<Arg>& a, std::index_sequence<I...>) {
    Result r;
    if constexpr (std::is_void_v<R>) {
        f(make<P>(a[I])...);
    } else {
        const R value = f(make<P>(a[I])...);
        if constexpr (std::is_integral_v<R> && std::is_signed_v<R> && !std::is_same_v<R, bool>) {
            r.is_status = true;
            r.status = value;
        } else if constexpr (std::is_floating_point_v<R>) {
            r.is_real = true;
            r.real = static_cast<double>(value);
        }
    }
    return r;
}

std::vector<std::string> split_names(const std::string& names) {
    std::vector<std::string> out;
    std::stringstream in(names);
    for (std::string item; std::getline(in, item, ',');) out.push_back(item);
    return out;
}

template <class R, class... P>
Export describe(const char* name, const char* header, const char* names, R (*f)(P...)) {
    Export e{name, header, {classify<P>()...}, {}};
    const std::vector<std::string> parsed = split_names(names);
    for (size_t i = 0; i < e.params.size(); ++i)
        e.params[i].name = i < parsed.size() ? parsed[i] : "arg" + std::to_string(i);
    e.call = [f](const std::vector<Arg>& a) {
        return invoke(f, a, std::index_sequence_for<P...>{});
    };
    return e;
}

// ---- Exports with a variable argument list. The prototype gives only the fixed
// parameters, so each such export is listed here with the arguments it reads, in order,
// and is called through a fixed-argument stand-in that passes them on. A variable
// argument list missing from this table is reported by the sweep's own test.
template <auto F, class R, class... P>
R pass_on(P... p) noexcept {
    return F(p...);
}

struct VariadicEntry {
    const char* name;
    Export (*make)(const char* header);
};

const VariadicEntry kVariadicExports[] = {
    {"zemath_create_baseline_by_masking_peaks",
     [](const char* header) {
         return describe("zemath_create_baseline_by_masking_peaks", header,
                         "nSize,pX,pY,nOutSize,pBaseX,pBaseY,nFlags",
                         &pass_on<&zemath_create_baseline_by_masking_peaks, int, int, const double*,
                                  const double*, int, double*, double*, int>);
     }},
};

// Names of the exports with a variable argument list that the table above lacks.
std::vector<std::string>& unlisted_variadic_exports() {
    static std::vector<std::string> names;
    return names;
}

void add_variadic(std::vector<Export>& out, const char* name, const char* header) {
    for (const VariadicEntry& v : kVariadicExports)
        if (std::string(v.name) == name) {
            out.push_back(v.make(header));
            return;
        }
    unlisted_variadic_exports().push_back(name);
}

const std::vector<Export>& all_exports() {
    static const std::vector<Export> list = [] {
        std::vector<Export> out;
#define ZEMATH_SWEEP_EXPORT(fn, header, names) out.push_back(describe(#fn, header, names, &fn));
#define ZEMATH_SWEEP_VARIADIC(fn, header, names) add_variadic(out, #fn, header);
#include "sweep_exports.inc"
#undef ZEMATH_SWEEP_VARIADIC
#undef ZEMATH_SWEEP_EXPORT
        return out;
    }();
    return list;
}

// ---- Shapes for parameters that need structure, by parameter name.

// Untyped writable pointers: comparison callbacks get real comparison functions over
// one-byte keys (legal for any record width), blocks to release get only NULL (any other
// pointer would be freed). Any other void* is a data buffer.
// A host integrand for the context of the function table's integral row.
inline double sweep_integrand(void*, double x) {
    return std::exp(-x * x);
}
inline KSFInfo sweep_integrand_info = {sweep_integrand, nullptr};
inline KSFInfo sweep_no_integrand = {nullptr, nullptr};

std::vector<void*> void_pointer_shapes(const std::string& name) {
    if (name == "context") return {nullptr, &sweep_no_integrand, &sweep_integrand_info};
    if (name == "compare")
        return {nullptr, reinterpret_cast<void*>(&Compare_BYTE_Ascend),
                reinterpret_cast<void*>(&Compare_char_Descend)};
    if (name == "block") return {nullptr};
    return {};
}

// Exports whose negative int results are not refusals, with the reason.
struct Exception {
    const char* name;
    const char* reason;
};
const Exception kNegativeIsNotRefusal[] = {
    {"zemath_i_get_vector_inc", "-1 and -2 report a decreasing run; -1 writes the outputs"},
    {"zemath_d_get_vector_inc", "-1 and -2 report a decreasing run; -1 writes the outputs"},
    {"Compare_char_Ascend", "a comparison result"},
    {"Compare_char_Descend", "a comparison result"},
    {"Compare_BYTE_Ascend", "a comparison result"},
    {"Compare_BYTE_Descend", "a comparison result"},
    {"Compare_short_Ascend", "a comparison result"},
    {"Compare_short_Descend", "a comparison result"},
    {"Compare_WORD_Ascend", "a comparison result"},
    {"Compare_WORD_Descend", "a comparison result"},
    {"Compare_int_Ascend", "a comparison result"},
    {"Compare_int_Descend", "a comparison result"},
    {"Compare_UINT_Ascend", "a comparison result"},
    {"Compare_UINT_Descend", "a comparison result"},
    {"Compare_float_Ascend", "a comparison result"},
    {"Compare_float_Descend", "a comparison result"},
    {"Compare_double_Ascend", "a comparison result"},
    {"Compare_double_Descend", "a comparison result"},
};

// Failures whose header documents that outputs are written (reset to NANUM first, a
// count of what was needed, a partial result): (export, status, output) with the reason.
struct DocumentedWrite {
    const char* name;
    int status;
    const char* output;  // a parameter name, or "*" for every output
    const char* reason;
};
const DocumentedWrite kDocumentedWrites[] = {
    {"zemath_confidence_levels_for_mean", -151, "*", "entries from a bad level on are NANUM"},
    {"zemath_confidence_levels_for_variance", -151, "*", "lower and upper set to NANUM first"},
    {"zemath_two_sample_confidence_levels_for_mean", -151, "*", "entries set to NANUM first"},
    {"zemath_row_quantiles", -151, "*", "a failing row's outputs are NANUM"},
    {"zemath_row_quantiles_ex", -151, "*", "a failing row's outputs are NANUM"},
    {"zemath_row_ttest2", -165, "*", "a failing row's outputs are NANUM"},
    {"zemath_basic_summary_stats", -151, "*", "outputs written on the no-usable-point failure"},
    {"zemath_opt_summary_stats", -151, "*", "outputs written on the no-usable-point failure"},
    {"zemath_desc_stats", -151, "res", "the record is reset when no point is usable"},
    {"zemath_quantiles", -108, "res", "the record is reset first"},
    {"zemath_quantiles", -156, "res", "the record is reset first"},
    {"zemath_quantiles", -158, "res", "the record is reset first"},
    {"zemath_range", -158, "res", "doubles NANUM and indices -1 when no value is usable"},
    {"zemath_shapiro_wilk_test", -110, "res", "W and P start as NANUM"},
    {"zemath_shapiro_wilk_test", -165, "res", "W and P start as NANUM"},
    {"zemath_find_array_step", -18, "step", "the step is set to 0"},
    {"zemath_find_array_step", -32, "step", "the step is set to 0"},
    {"zemath_find_array_step_stat_ex", -32, "*", "step and count are still written"},
    {"zemath_sampling_resolution", -32, "step", "the mean increment is written"},
    {"zemath_xyz_examine_data_pro", -1, "rec", "the category, -1 included, is kept in the record"},
    {"zemath_rainflow_cycles", -25, "n_cycles", "the number of cycles needed is reported"},
    {"zemath_empirical_mode_decomposition", -106, "*", "IMFs, count and residue reached"},
    {"zemath_empirical_mode_decomposition", -109, "*", "IMFs, count and residue reached"},
    // Storage exhausted (-19) part way through.
    {"zemath_row_quantiles", -19, "*", "rows before the failing one keep their results"},
    {"zemath_row_quantiles_ex", -19, "*", "rows before the failing one keep their results"},
    {"zemath_row_desc_stats_ex", -19, "*", "rows before the failing one keep their results"},
    {"zemath_empirical_mode_decomposition", -19, "*", "IMF rows already stored stay written"},
    {"zemath_quantiles", -19, "res", "the record is reset first"},
    {"zemath_shapiro_wilk_test", -19, "res", "W and P start as NANUM"},
    {"zemath_shapiro_wilk_test_AS181", -19, "*", "W and pw are 1 on failure"},
    {"zemath_xyz_examine_data_pro", -19, "rec", "the record fills as the examination proceeds"},
};

bool documented_write(const std::string& name, int status, const std::string& output) {
    for (const DocumentedWrite& w : kDocumentedWrites)
        if (name == w.name && status == w.status &&
            (std::string(w.output) == "*" || output == w.output))
            return true;
    return false;
}

// Exports whose buffer lengths follow from value arguments (a range of integers), which
// the sweep cannot keep within its buffers: their integers take only small values.
const Exception kValueSizedBuffers[] = {
    {"zemath_frequency_count_i", "counts holds highest - lowest + 1 values"},
};

bool value_sized(const std::string& name) {
    for (const Exception& e : kValueSizedBuffers)
        if (name == e.name) return true;
    return false;
}

bool negative_is_refusal(const std::string& name) {
    for (const Exception& e : kNegativeIsNotRefusal)
        if (name == e.name) return false;
    return true;
}

// ---- The calls of one export.

// One planned call: per parameter, which value (a pointer choice or a scalar) and the
// fill mode of every buffer.
struct Call {
    std::vector<Arg> args;
    int fill_mode = 0;
};

bool has_pointer(const Export& e) {
    for (const Param& p : e.params)
        if (p.kind == Kind::Data || p.kind == Kind::Text || p.kind == Kind::VoidOut ||
            p.kind == Kind::Record || p.kind == Kind::Function)
            return true;
    return false;
}

// The values one parameter takes in turn (pointers: buffer index as i, or p for a shape).
std::vector<Arg> variants(const Export& e, const Param& p) {
    std::vector<Arg> out;
    auto scalar = [&](int64_t v) {
        Arg a;
        a.i = v;
        out.push_back(a);
    };
    switch (p.kind) {
        case Kind::Data:
        case Kind::Text:
        case Kind::Record:
            out.push_back(Arg{});  // NULL
            break;
        case Kind::VoidOut: {
            const std::vector<void*> shapes = void_pointer_shapes(p.name);
            if (shapes.empty()) {
                out.push_back(Arg{});
            } else {
                for (void* s : shapes) {
                    Arg a;
                    a.p = s;
                    a.buffer = -2;  // a fixed shape, no buffer
                    out.push_back(a);
                }
            }
            break;
        }
        case Kind::Function:
            out.push_back(Arg{});
            break;
        case Kind::Integer: {
            if (value_sized(e.name)) {
                for (int64_t v : {0, 1, 2, 3, 17}) scalar(std::min<int64_t>(v, p.max));
                break;
            }
            const int64_t counts[] = {0, 1, 2, 3, 17, 64, kMaxCount};
            for (int64_t v : counts) scalar(std::min(v, p.max));
            if (p.is_signed) {
                scalar(-1);
                scalar(p.min);
            }
            // Values larger than any buffer only where no count can reach one: exports
            // without pointers, and the top of a narrow unsigned type (a value, not a count).
            if (!has_pointer(e) || (p.narrow && !p.is_signed)) scalar(p.max);
            break;
        }
        case Kind::Floating:
            for (double d : kSpecials) {
                Arg a;
                a.d = d;
                out.push_back(a);
            }
            break;
        case Kind::Complex:
            for (double d : kSpecials) {
                Arg a;
                a.z = {d, 0.5};
                out.push_back(a);
                a.z = {0.5, d};
                out.push_back(a);
            }
            break;
        case Kind::Boolean:
            scalar(0);
            scalar(1);
            break;
        case Kind::Other:
            out.push_back(Arg{});
            break;
    }
    return out;
}

bool is_buffer(const Param& p) {
    return p.kind == Kind::Data || p.kind == Kind::Text || p.kind == Kind::Record ||
           (p.kind == Kind::VoidOut && p.fill != nullptr);
}

// The base of every variation: buffers everywhere, counts `count`, doubles `real`.
Call baseline(const Export& e, int64_t count, double real, int fill_mode) {
    Call c;
    c.fill_mode = fill_mode;
    for (size_t i = 0; i < e.params.size(); ++i) {
        const Param& p = e.params[i];
        Arg a;
        if (p.kind == Kind::VoidOut) {
            const std::vector<void*> shapes = void_pointer_shapes(p.name);
            if (shapes.empty()) {
                a.buffer = static_cast<int>(i);
            } else {
                a.p = shapes.back();
                a.buffer = -2;
            }
        } else if (is_buffer(p)) {
            a.buffer = static_cast<int>(i);
        }
        a.i = p.kind == Kind::Boolean ? 1 : std::min<int64_t>(count, p.max);
        a.d = real;
        a.z = {real, -real};
        c.args.push_back(a);
    }
    return c;
}

std::vector<Call> plan(const Export& e) {
    std::vector<Call> calls;
    struct Base {
        int64_t count;
        double real;
        int fill;
    };
    for (const Base& b : {Base{8, 0.5, 0}, Base{8, 2.0, 1}, Base{1, -3.0, 0}, Base{64, 1e-3, 0}}) {
        const Call base = baseline(e, b.count, b.real, b.fill);
        calls.push_back(base);
        for (size_t i = 0; i < e.params.size(); ++i) {
            for (const Arg& v : variants(e, e.params[i])) {
                Call c = base;
                c.args[i] = v;
                if (is_buffer(e.params[i])) c.args[i].buffer = -1;  // the NULL variant
                calls.push_back(c);
            }
        }
    }
    // Every pointer NULL at once.
    Call none = baseline(e, 8, 0.5, 0);
    for (size_t i = 0; i < e.params.size(); ++i)
        if (is_buffer(e.params[i]) || e.params[i].kind == Kind::VoidOut) none.args[i] = Arg{};
    calls.push_back(none);
    // Pairs of integers: inverted and out-of-range index pairs, counts against sizes.
    const int64_t pair_values[] = {0, 1, 2, 64, -1, INT_MIN};
    for (size_t i = 0; i < e.params.size(); ++i) {
        for (size_t j = i + 1; j < e.params.size(); ++j) {
            const Param& pi = e.params[i];
            const Param& pj = e.params[j];
            if (pi.kind != Kind::Integer || pj.kind != Kind::Integer) continue;
            if (value_sized(e.name)) continue;
            for (int64_t vi : pair_values) {
                for (int64_t vj : pair_values) {
                    if ((vi < 0 && !pi.is_signed) || (vj < 0 && !pj.is_signed)) continue;
                    Call c = baseline(e, 8, 0.5, 0);
                    c.args[i].i = std::max(std::min(vi, pi.max), pi.min);
                    c.args[j].i = std::max(std::min(vj, pj.max), pj.min);
                    calls.push_back(c);
                }
            }
        }
    }
    return calls;
}

std::string describe_double(double d) {
    if (d == NANUM) return "NANUM";
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", d);
    return text;
}

std::string describe(const Export& e, const Call& c) {
    std::string out = e.name + "(";
    for (size_t i = 0; i < e.params.size(); ++i) {
        const Param& p = e.params[i];
        const Arg& a = c.args[i];
        out += (i ? ", " : "") + p.name + "=";
        switch (p.kind) {
            case Kind::Data:
            case Kind::Text:
            case Kind::Record:
            case Kind::VoidOut:
            case Kind::Function:
                out += a.buffer >= 0 ? (c.fill_mode ? "specials" : "buffer")
                                     : (a.p ? "shape" : "NULL");
                break;
            case Kind::Integer:
            case Kind::Boolean:
                out += std::to_string(a.i);
                break;
            case Kind::Floating:
                out += describe_double(a.d);
                break;
            case Kind::Complex:
                out += "{" + describe_double(a.z.re) + ", " + describe_double(a.z.im) + "}";
                break;
            case Kind::Other:
                out += "{}";
                break;
        }
    }
    return out + ")";
}

// Shared between the child that calls and the parent that reports.
struct Progress {
    volatile int current_call;
    volatile int calls_made;
};

void send(int fd, const std::string& line) {
    const std::string text = line + "\n";
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t k = write(fd, text.data() + written, text.size() - written);
        if (k <= 0) return;
        written += static_cast<size_t>(k);
    }
}

// Runs in the child: every planned call, each under an alarm, the refusal check after it.
[[noreturn]] void run_calls(const Export& e, const std::vector<Call>& calls, Progress* progress,
                            int report_fd) {
    const size_t n = e.params.size();
    std::vector<std::unique_ptr<unsigned char[]>> buffers(n);
    std::vector<std::unique_ptr<unsigned char[]>> before(n);
    for (size_t i = 0; i < n; ++i) {
        if (!is_buffer(e.params[i])) continue;
        buffers[i].reset(new unsigned char[kBufferBytes]);
        before[i].reset(new unsigned char[kBufferBytes]);
    }
    const bool check_refusals = negative_is_refusal(e.name);
    for (size_t k = 0; k < calls.size(); ++k) {
        std::vector<Arg> args = calls[k].args;
        for (size_t i = 0; i < n; ++i) {
            if (args[i].buffer < 0) continue;
            e.params[i].fill(buffers[i].get(), calls[k].fill_mode);
            std::memcpy(before[i].get(), buffers[i].get(), kBufferBytes);
            args[i].p = buffers[i].get();
        }
        progress->current_call = static_cast<int>(k);
        alarm(e.seconds_per_call);
        const Result r = e.call(args);
        alarm(0);
        progress->calls_made = static_cast<int>(k) + 1;
        if (r.is_status && r.status < 0 && check_refusals) {
            for (size_t i = 0; i < n; ++i) {
                if (args[i].buffer < 0) continue;
                if (std::memcmp(before[i].get(), buffers[i].get(), kBufferBytes) != 0 &&
                    !documented_write(e.name, r.status, e.params[i].name))
                    send(report_fd, "refused with " + std::to_string(r.status) + " but wrote " +
                                        e.params[i].name + ": " + describe(e, calls[k]));
            }
        }
        for (size_t i = 0; i < n; ++i)
            if (args[i].buffer >= 0 && e.params[i].release) e.params[i].release(args[i].p);
    }
    if (__lsan_do_recoverable_leak_check && __lsan_do_recoverable_leak_check() != 0)
        send(report_fd, "leak reported by LeakSanitizer");
    close(report_fd);
    _exit(0);
}

// What one export's sweep found: the problems (empty when none) and the calls made.
struct Outcome {
    std::vector<std::string> problems;
    int calls_made = 0;
    int calls_planned = 0;
};

Outcome sweep_export(const Export& e) {
    Outcome out;
    const std::vector<Call> calls = plan(e);
    out.calls_planned = static_cast<int>(calls.size());
    void* shared =
        mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    int pipe_fds[2];
    if (shared == MAP_FAILED || pipe(pipe_fds) != 0) {
        out.problems.push_back("could not set up the child process");
        return out;
    }
    auto* progress = static_cast<Progress*>(shared);
    progress->current_call = -1;
    progress->calls_made = 0;
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        close(pipe_fds[0]);
        run_calls(e, calls, progress, pipe_fds[1]);
    }
    close(pipe_fds[1]);
    std::string reports;
    char chunk[4096];
    for (ssize_t got; child > 0 && (got = read(pipe_fds[0], chunk, sizeof chunk)) > 0;)
        reports.append(chunk, static_cast<size_t>(got));
    close(pipe_fds[0]);
    int wstatus = 0;
    if (child < 0 || waitpid(child, &wstatus, 0) != child) {
        out.problems.push_back("could not run the child process");
        munmap(shared, sizeof(Progress));
        return out;
    }
    out.calls_made = progress->calls_made;
    const int at = progress->current_call;
    const std::string call_text =
        " in call " + std::to_string(at) + ": " +
        (at >= 0 && at < out.calls_planned ? describe(e, calls[static_cast<size_t>(at)]) : "");
    if (WIFSIGNALED(wstatus)) {
        const int sig = WTERMSIG(wstatus);
        out.problems.push_back(sig == SIGALRM
                                   ? "no return within " + std::to_string(e.seconds_per_call) +
                                         " s" + call_text
                                   : "died with signal " + std::to_string(sig) + call_text);
    } else if (WEXITSTATUS(wstatus) != 0) {
        out.problems.push_back("a sanitizer report ended the child" + call_text);
    } else if (out.calls_made != out.calls_planned) {
        out.problems.push_back("the child stopped early" + call_text);
    }
    std::stringstream lines(reports);
    for (std::string line; std::getline(lines, line);)
        if (!line.empty()) out.problems.push_back(line);
    munmap(shared, sizeof(Progress));
    return out;
}

}  // namespace zemath_sweep
