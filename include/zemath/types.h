/* zeMath: shared types, the export macro and the missing-value marker. */
#ifndef ZEMATH_TYPES_H
#define ZEMATH_TYPES_H

#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#if defined(_WIN32)
#if defined(ZEMATH_BUILDING)
#define ZEMATH_API __declspec(dllexport)
#else
#define ZEMATH_API __declspec(dllimport)
#endif
#else
#define ZEMATH_API __attribute__((visibility("default")))
#endif

/* Every export is declared non-throwing for C++ callers: an export that let an exception
 * out would terminate instead of unwinding into C frames. Empty in C. */
#ifdef __cplusplus
#define ZEMATH_NOEXCEPT noexcept
#else
#define ZEMATH_NOEXCEPT
#endif

#ifdef __cplusplus
#define ZEMATH_EXTERN_C_BEGIN extern "C" {
#define ZEMATH_EXTERN_C_END }
#else
#define ZEMATH_EXTERN_C_BEGIN
#define ZEMATH_EXTERN_C_END
#endif

/* The missing-value marker: an ordinary finite double (bit pattern 0x81AA74FE1C132C0E)
 * that never occurs in measured data. A value equal to it (ordered IEEE equality) is
 * missing; NaN never equals it and so is never missing. */
#define NANUM (-1.23456789e-300)

/* A complex number: real part, then imaginary part. */
typedef struct d_complex {
    double re;
    double im;
} d_complex;

/* One machine word of a bridge record: an integer or a pointer, pointer-sized. */
typedef union zemath_word {
    intptr_t i;
    void* p;
} zemath_word;

/* Spline record handed to callers: word 0 the knot count, word 1 the knot array,
 * word 2 the coefficient array (both allocated by the library), words 3-4 internal. */
typedef struct zemath_Spline {
    intptr_t n;
    double* lamda;
    double* c;
    intptr_t init1;
    intptr_t init2;
} zemath_Spline;

/* 2-D spline record: words 1 and 3 the two knot arrays, word 4 the coefficients. */
typedef struct zemath_2dSpline {
    intptr_t nx;
    double* lamda;
    intptr_t ny;
    double* mu;
    double* c;
    intptr_t init1;
    intptr_t init2;
} zemath_2dSpline;

/* Communication record of 23 words handed to callers; words 15, 16, 18, 19, 21 and 22
 * may hold arrays allocated by the library. */
#define ZEMATH_COMM_WORDS 23
typedef struct zemath_Comm {
    zemath_word word[ZEMATH_COMM_WORDS];
} zemath_Comm;

/* The numerical back end's own records, mirrored by the two above. Their layout is
 * private to the library; callers only pass pointers to them. */
typedef struct Nag_Spline Nag_Spline;
typedef struct comm_struct comm_struct;

#endif /* ZEMATH_TYPES_H */
