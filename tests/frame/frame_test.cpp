// Frame exports: NaN/infinity/missing-value functions, the bridge records and their
// release, the scan behind sum and minmax, the export guard and the status texts.
#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/nag/nag.hpp"
#include "zemath.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kMax = std::numeric_limits<double>::max();
constexpr unsigned kUntouched = 77u;

}  // namespace

TEST(Nanum, IsTheDocumentedBitPattern) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(NANUM), 0x81AA74FE1C132C0Eull);
    EXPECT_TRUE(std::isfinite(NANUM));
    EXPECT_TRUE(zemath::is_missing(NANUM));
    EXPECT_FALSE(zemath::is_missing(kNaN));  // NaN is never missing
}

TEST(CheckNan, FlagsAndCounts) {
    const double data[] = {1.0, kNaN, NANUM, -kNaN, kInf};
    unsigned flags[5];
    EXPECT_EQ(zemath_check_nan(data, 5, flags, 5), 2);
    EXPECT_EQ(std::vector<unsigned>(flags, flags + 5), (std::vector<unsigned>{0, 1, 0, 1, 0}));
}

TEST(CheckInfinity, FlagsBothSignsButNotNanOrDblMax) {
    const double data[] = {kInf, -kInf, kNaN, kMax, -kMax, NANUM};
    unsigned flags[6];
    EXPECT_EQ(zemath_check_infinity(data, 6, flags, 6), 2);
    EXPECT_EQ(std::vector<unsigned>(flags, flags + 6), (std::vector<unsigned>{1, 1, 0, 0, 0, 0}));
}

TEST(CheckFlags, RefusalsReturnZeroAndWriteNothing) {
    const double data[] = {kNaN, kInf, kNaN, kInf, 1.0};
    using Fn = int (*)(const double*, int, unsigned*, int);
    for (Fn fn : {Fn{zemath_check_nan}, Fn{zemath_check_infinity}}) {
        unsigned flags[5] = {kUntouched, kUntouched, kUntouched, kUntouched, kUntouched};
        EXPECT_EQ(fn(data, 5, flags, 4), 0);  // n differs from nflags
        EXPECT_EQ(fn(nullptr, 5, flags, 5), 0);
        EXPECT_EQ(fn(data, 5, nullptr, 5), 0);
        EXPECT_EQ(fn(data, 0, flags, 0), 0);
        EXPECT_EQ(fn(data, -3, flags, -3), 0);
        for (unsigned f : flags) EXPECT_EQ(f, kUntouched);
    }
}

TEST(ReplaceNan, TurnsNanIntoNanumSoTheSumSkipsIt) {
    std::vector<double> data = {1.0, kNaN, 2.0, kNaN};
    EXPECT_TRUE(
        std::isnan(zemath_d_sum(data.data(), 4, nullptr, nullptr, nullptr, nullptr, nullptr)));
    EXPECT_EQ(zemath_check_replace_nan_with_missing_value(data.data(), 4), 2);
    EXPECT_EQ(data[1], NANUM);
    EXPECT_EQ(data[3], NANUM);
    int count = -1;
    EXPECT_EQ(zemath_d_sum(data.data(), 4, nullptr, nullptr, nullptr, nullptr, &count), 3.0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(zemath_check_replace_nan_with_missing_value(nullptr, 4), 0);
    EXPECT_EQ(zemath_check_replace_nan_with_missing_value(data.data(), 0), 0);
}

TEST(RemoveMissing, CompactsPairsInOrder) {
    double x[] = {1.0, NANUM, 3.0, 4.0, kNaN};
    double y[] = {4.0, 5.0, NANUM, 7.0, 8.0};
    int kept[5] = {-9, -9, -9, -9, -9};
    EXPECT_EQ(zemath_1d_remove_missingvalue(x, y, 5, NANUM, kept), 3);
    EXPECT_EQ(x[0], 1.0);
    EXPECT_EQ(y[0], 4.0);
    EXPECT_EQ(x[1], 4.0);
    EXPECT_EQ(y[1], 7.0);
    EXPECT_TRUE(std::isnan(x[2]));  // NaN is data, not missing: the pair is kept
    EXPECT_EQ(y[2], 8.0);
    EXPECT_EQ(kept[0], 0);
    EXPECT_EQ(kept[1], 3);
    EXPECT_EQ(kept[2], 4);
    EXPECT_EQ(kept[3], -9);
}

TEST(RemoveMissing, NanIsNotMissingAndOptionalIndex) {
    double x[] = {kNaN, 2.0};
    double y[] = {1.0, -1.0};
    EXPECT_EQ(zemath_1d_remove_missingvalue(x, y, 2, NANUM, nullptr), 2);
    EXPECT_EQ(zemath_1d_remove_missingvalue(x, y, 2, -1.0, nullptr), 1);  // caller's marker
}

TEST(RemoveMissing, Refusals) {
    double x[] = {NANUM}, y[] = {1.0};
    EXPECT_EQ(zemath_1d_remove_missingvalue(nullptr, y, 1, NANUM, nullptr), -1);
    EXPECT_EQ(zemath_1d_remove_missingvalue(x, nullptr, 1, NANUM, nullptr), -1);
    EXPECT_EQ(zemath_1d_remove_missingvalue(x, y, 0, NANUM, nullptr), -1);
    EXPECT_EQ(x[0], NANUM);
}

TEST(Sum, ScanRulesAndOptionalOutputs) {
    const double data[] = {2.0, 1.0, NANUM, 1.0, 2.0};
    double mn = 9, mx = 9;
    int imn = 9, imx = 9, count = 9;
    EXPECT_EQ(zemath_d_sum(data, 5, &mn, &mx, &imn, &imx, &count), 6.0);
    EXPECT_EQ(mn, 1.0);
    EXPECT_EQ(mx, 2.0);
    EXPECT_EQ(imn, 1);  // first occurrence on ties
    EXPECT_EQ(imx, 0);
    EXPECT_EQ(count, 4);
    EXPECT_EQ(zemath_d_sum(data, 5, nullptr, nullptr, nullptr, nullptr, nullptr), 6.0);
}

TEST(Sum, EmptyOrAllMissingWritesZerosAndMinusOne) {
    const double missing[] = {NANUM, NANUM};
    for (int n : {0, -4, 2}) {
        double mn = 9, mx = 9;
        int imn = 9, imx = 9, count = 9;
        EXPECT_EQ(zemath_d_sum(missing, n, &mn, &mx, &imn, &imx, &count), 0.0);
        EXPECT_EQ(mn, 0.0);
        EXPECT_EQ(mx, 0.0);
        EXPECT_EQ(imn, -1);
        EXPECT_EQ(imx, -1);
        EXPECT_EQ(count, 0);
    }
    int count = 9;
    EXPECT_EQ(zemath_d_sum(nullptr, 3, nullptr, nullptr, nullptr, nullptr, &count), 0.0);
    EXPECT_EQ(count, 0);
}

TEST(Sum, InfinitiesAreOrdinaryValues) {
    const double data[] = {1.0, -kInf, kInf};
    double mn, mx;
    EXPECT_TRUE(std::isnan(zemath_d_sum(data, 3, &mn, &mx, nullptr, nullptr, nullptr)));
    EXPECT_EQ(mn, -kInf);
    EXPECT_EQ(mx, kInf);
}

TEST(MinMax, RangeIndicesAndMissingCount) {
    const double data[] = {5.0, NANUM, -1.0, 3.0, 9.0, -1.0, NANUM};
    int imn = 9, imx = 9;
    EXPECT_EQ(zemath_d_minmax(data, 0, 6, &imn, &imx), 2);
    EXPECT_EQ(imn, 2);
    EXPECT_EQ(imx, 4);
    EXPECT_EQ(zemath_d_minmax(data, 3, 3, &imn, &imx), 0);
    EXPECT_EQ(imn, 3);
    EXPECT_EQ(imx, 3);
    EXPECT_EQ(zemath_d_minmax(data, 6, 6, &imn, &imx), 1);  // only a missing point
    EXPECT_EQ(imn, -1);
    EXPECT_EQ(imx, -1);
    imn = imx = 9;
    EXPECT_EQ(zemath_d_minmax(data, 4, 2, &imn, &imx), 0);  // first > last
    EXPECT_EQ(imn, -1);
    EXPECT_EQ(imx, -1);
}

TEST(MinMax, RefusalsWriteNothing) {
    const double data[] = {1.0};
    int imn = 9, imx = 9;
    EXPECT_EQ(zemath_d_minmax(nullptr, 0, 0, &imn, &imx), -1);
    EXPECT_EQ(zemath_d_minmax(data, -1, 0, &imn, &imx), -1);
    EXPECT_EQ(imn, 9);
    EXPECT_EQ(imx, 9);
    EXPECT_EQ(zemath_d_minmax(data, 0, 0, nullptr, nullptr), 0);
}

TEST(BridgeRecords, CommWordsMoveWithTheDocumentedCorrespondence) {
    zemath_Comm lib{};
    for (int w = 0; w < ZEMATH_COMM_WORDS; ++w) lib.word[w].i = 100 + w;
    comm_struct nag{};
    ASSERT_EQ(copy_comm_to_nag(&lib, &nag), 0);
    for (int w = 0; w <= 16; ++w) EXPECT_EQ(nag.word[w].i, 100 + w);
    for (int w = 17; w <= 20; ++w) EXPECT_EQ(nag.word[w + 2].i, 100 + w);  // 17-20 -> 19-22
    EXPECT_EQ(nag.word[17].i, 121);                                        // 21 -> 17
    EXPECT_EQ(nag.word[18].i, 122);                                        // 22 -> 18
    zemath_Comm back{};
    ASSERT_EQ(copy_comm_to_zemath(&back, &nag), 0);
    for (int w = 0; w < ZEMATH_COMM_WORDS; ++w) EXPECT_EQ(back.word[w].i, 100 + w);
    EXPECT_EQ(copy_comm_to_nag(nullptr, &nag), -11);
    EXPECT_EQ(copy_comm_to_zemath(&back, nullptr), -11);
}

TEST(BridgeRecords, SplineWordsOneToOne) {
    double knots[2], coeffs[3];
    zemath_Spline lib{7, knots, coeffs, 3, 4};
    Nag_Spline nag{};
    ASSERT_EQ(copy_spline_to_nag(&lib, &nag), 0);
    EXPECT_EQ(nag.n, 7);
    EXPECT_EQ(nag.lamda, knots);
    EXPECT_EQ(nag.c, coeffs);
    EXPECT_EQ(nag.init2, 4);
    zemath_Spline back{};
    ASSERT_EQ(copy_spline_to_zemath(&back, &nag), 0);
    EXPECT_EQ(back.c, coeffs);
    EXPECT_EQ(back.init1, 3);
    EXPECT_EQ(copy_spline_to_nag(&lib, nullptr), -11);
    EXPECT_EQ(copy_spline_to_zemath(nullptr, &nag), -11);
}

// The release functions free exactly the back-end allocated words and null them; the
// sanitizer run checks there is neither a leak nor a double free.
TEST(BridgeRecords, ReleaseFunctionsFreeAndNullTheirWords) {
    using zemath::nag::x04bbc;
    zemath_Spline spline{3, static_cast<double*>(x04bbc(24)), static_cast<double*>(x04bbc(24)), 0,
                         0};
    zemath_free_spline_struct(&spline);
    EXPECT_EQ(spline.lamda, nullptr);
    EXPECT_EQ(spline.c, nullptr);
    EXPECT_EQ(spline.n, 3);
    zemath_free_spline_struct(&spline);  // already released: nothing happens
    zemath_free_spline_struct(nullptr);

    zemath_2dSpline s2{2,
                       static_cast<double*>(x04bbc(8)),
                       2,
                       static_cast<double*>(x04bbc(8)),
                       static_cast<double*>(x04bbc(8)),
                       0,
                       0};
    zemath_free_2dSpline_struct(&s2);
    EXPECT_EQ(s2.lamda, nullptr);
    EXPECT_EQ(s2.mu, nullptr);
    EXPECT_EQ(s2.c, nullptr);

    zemath_Comm comm{};
    comm.word[14].i = 42;  // an integer word is not released
    for (int w : {15, 16, 18, 19, 21, 22}) comm.word[w].p = x04bbc(16);
    zemath_free_comm_struct(&comm);
    for (int w : {15, 16, 18, 19, 21, 22}) EXPECT_EQ(comm.word[w].p, nullptr);
    EXPECT_EQ(comm.word[14].i, 42);
    zemath_free_comm_struct(nullptr);

    zemath_free(x04bbc(100));
    zemath_free(nullptr);
}

TEST(ExportGuard, AllocationFailuresBecomeTheFailureValue) {
    using namespace zemath;
    EXPECT_EQ(guard_status([]() -> int { throw kAllocFailure; }), ZEMATH_ERR_ALLOC);
    EXPECT_EQ(guard_status([]() -> int { throw std::bad_alloc(); }), -19);
    EXPECT_EQ(guard_status([] { return 3; }), 3);
    EXPECT_EQ(guard_value([]() -> double { throw kAllocFailure; }), NANUM);
    EXPECT_EQ(guard_value([] { return 2.5; }), 2.5);
    bool ran = false;
    guard_void([&] {
        ran = true;
        throw std::bad_alloc();
    });
    EXPECT_TRUE(ran);
}

TEST(StatusString, NamesEveryListedCodeAndNothingElse) {
    struct Listed {
        int value;
        const char* text;
        bool backend;
    };
#define ZEMATH_LISTED(name, value, text) {name, text, false},
#define ZEMATH_LISTED_BACKEND(name, value, text) {name, text, true},
    const Listed listed[] = {ZEMATH_STATUS_CODES(ZEMATH_LISTED)
                                 ZEMATH_BACKEND_STATUS_CODES(ZEMATH_LISTED_BACKEND)};
#undef ZEMATH_LISTED
#undef ZEMATH_LISTED_BACKEND
    std::set<std::string> texts;
    for (const Listed& code : listed) {
        const std::string expected = std::string(code.backend ? "back end: " : "") + code.text;
        EXPECT_EQ(zemath_status_string(code.value), expected) << code.value;
        EXPECT_TRUE(texts.insert(expected).second) << "two codes share the text " << expected;
        EXPECT_EQ(code.backend, code.value > 0) << code.value;
    }
    // Every other number in the span the codes use is unknown.
    int named = 0;
    for (int value = -1000; value <= 1000; ++value)
        named += std::string(zemath_status_string(value)) != "unknown status";
    EXPECT_EQ(named, static_cast<int>(std::size(listed)));
    EXPECT_STREQ(zemath_status_string(INT_MIN), "unknown status");
    // The condition names are the numbers of the codes they stand for.
#define ZEMATH_ALIAS_CHECK(alias, name) EXPECT_EQ(int(alias), int(name)) << #alias;
    ZEMATH_STATUS_ALIASES(ZEMATH_ALIAS_CHECK)
#undef ZEMATH_ALIAS_CHECK
    EXPECT_EQ(ZEMATH_ERR_NULL_POINTER, -11);
    EXPECT_EQ(ZEMATH_ERR_ALLOC, -19);
}

TEST(Complex, ModulusAvoidsOverflowAndGuardsMissing) {
    EXPECT_EQ(cabsz(d_complex{3.0, -4.0}), 5.0);
    EXPECT_DOUBLE_EQ(cabsz(d_complex{1e300, 1e300}), 1.4142135623730951e300);
    EXPECT_EQ(cabsz(d_complex{1.0, NANUM}), NANUM);
}
