// Frame exports: NaN, infinity and missing-value handling, the bridge-record copies
// and releases. The double scans (zemath_d_sum, zemath_d_minmax) are stamped with the
// typed primitives in primitives.cpp.
#include "zemath/frame.h"

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/nag/nag.hpp"

using namespace zemath;

namespace {

bool flag_arguments_ok(const double* data, int n, const unsigned int* flags, int nflags) {
    return data && flags && n == nflags && n >= 1;
}

// Library words 17-20 are back-end words 19-22, library words 21-22 back-end words
// 17-18; words 0-16 map one to one.
constexpr int comm_word_to_nag(int lib_word) {
    if (lib_word >= 17 && lib_word <= 20) return lib_word + 2;
    if (lib_word >= 21) return lib_word - 4;
    return lib_word;
}

}  // namespace

extern "C" {

ZEMATH_API int zemath_check_nan(const double* data, int n, unsigned int* flags,
                                int nflags) noexcept {
    if (!flag_arguments_ok(data, n, flags, nflags)) return 0;
    int found = 0;
    for (int i = n - 1; i >= 0; --i) {  // visited last to first
        flags[i] = is_nan(data[i]) ? 1u : 0u;
        found += static_cast<int>(flags[i]);
    }
    return found;
}

ZEMATH_API int zemath_check_infinity(const double* data, int n, unsigned int* flags,
                                     int nflags) noexcept {
    if (!flag_arguments_ok(data, n, flags, nflags)) return 0;
    int found = 0;
    for (int i = 0; i < n; ++i) {
        flags[i] = is_infinite(data[i]) ? 1u : 0u;
        found += static_cast<int>(flags[i]);
    }
    return found;
}

ZEMATH_API int zemath_check_replace_nan_with_missing_value(double* data, int n) noexcept {
    if (!data || n <= 0) return 0;
    int replaced = 0;
    for (int i = 0; i < n; ++i)
        if (is_nan(data[i])) {
            data[i] = kNanum;
            ++replaced;
        }
    return replaced;
}

ZEMATH_API int zemath_1d_remove_missingvalue(double* x, double* y, unsigned int n, double missing,
                                             int* kept_index) noexcept {
    if (!x || !y || n == 0) return ZEMATH_ERR_GENERAL;
    unsigned int kept = 0;
    for (unsigned int i = 0; i < n; ++i) {
        if (x[i] == missing || y[i] == missing) continue;
        x[kept] = x[i];
        y[kept] = y[i];
        if (kept_index) kept_index[kept] = static_cast<int>(i);
        ++kept;
    }
    return static_cast<int>(kept);
}

ZEMATH_API int copy_comm_to_nag(zemath_Comm* lib, comm_struct* nag) noexcept {
    if (!lib || !nag) return ZEMATH_ERR_NULL_POINTER;
    for (int w = 0; w < ZEMATH_COMM_WORDS; ++w) nag->word[comm_word_to_nag(w)] = lib->word[w];
    return ZEMATH_OK;
}

ZEMATH_API int copy_comm_to_zemath(zemath_Comm* lib, comm_struct* nag) noexcept {
    if (!lib || !nag) return ZEMATH_ERR_NULL_POINTER;
    for (int w = 0; w < ZEMATH_COMM_WORDS; ++w) lib->word[w] = nag->word[comm_word_to_nag(w)];
    return ZEMATH_OK;
}

ZEMATH_API int copy_spline_to_nag(zemath_Spline* lib, Nag_Spline* nag) noexcept {
    if (!lib || !nag) return ZEMATH_ERR_NULL_POINTER;
    nag->n = lib->n;
    nag->lamda = lib->lamda;
    nag->c = lib->c;
    nag->init1 = lib->init1;
    nag->init2 = lib->init2;
    return ZEMATH_OK;
}

ZEMATH_API int copy_spline_to_zemath(zemath_Spline* lib, Nag_Spline* nag) noexcept {
    if (!lib || !nag) return ZEMATH_ERR_NULL_POINTER;
    lib->n = nag->n;
    lib->lamda = nag->lamda;
    lib->c = nag->c;
    lib->init1 = nag->init1;
    lib->init2 = nag->init2;
    return ZEMATH_OK;
}

ZEMATH_API void zemath_free(void* block) noexcept {
    nag::x04bdc(&block);
}

ZEMATH_API void zemath_free_spline_struct(zemath_Spline* spline) noexcept {
    if (!spline) return;
    nag::nag_free(spline->c);      // coefficients first,
    nag::nag_free(spline->lamda);  // then the knots
}

ZEMATH_API void zemath_free_2dSpline_struct(zemath_2dSpline* spline) noexcept {
    if (!spline) return;
    nag::nag_free(spline->c);
    nag::nag_free(spline->lamda);
    nag::nag_free(spline->mu);
}

ZEMATH_API void zemath_free_comm_struct(zemath_Comm* comm) noexcept {
    if (!comm) return;
    for (int w : {15, 16, 18, 19, 21, 22}) nag::x04bdc(&comm->word[w].p);
}

}  // extern "C"
