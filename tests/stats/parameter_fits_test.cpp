// Gamma and Weibull fits with confidence limits, against mpmath references
// (tests/reference/gen_parameter_fits.py), and their refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "zemath.h"

namespace {

struct FitCase {
    int law;
    double level;
    std::vector<double> data;
    double first, first_lower, first_upper, second, second_lower, second_upper;
};

const std::vector<FitCase> kCases = {
#include "reference/parameter_fits_ref.inc"
};

using FitFn = int (*)(const double*, unsigned int, double, double*, double*, double*, double*,
                      double*, double*);
constexpr FitFn kFit[] = {zemath_confidence_limit_Gamma, zemath_confidence_limit_Wbl};

TEST(ParameterFits, EstimatesAndLimitsMatchTheReference) {
    ASSERT_EQ(kCases.size(), 16u);
    for (const FitCase& c : kCases) {
        double out[6];
        ASSERT_EQ(kFit[c.law](c.data.data(), static_cast<unsigned>(c.data.size()), c.level, &out[0],
                              &out[1], &out[2], &out[3], &out[4], &out[5]),
                  0);
        const double want[6] = {c.first,  c.first_lower,  c.first_upper,
                                c.second, c.second_lower, c.second_upper};
        for (int k = 0; k < 6; ++k)
            EXPECT_NEAR(out[k], want[k], 2e-14 * std::fabs(want[k]))
                << "law " << c.law << " level " << c.level << " output " << k << " n "
                << c.data.size();
    }
}

TEST(ParameterFits, MissingValuesAreSkippedAndOutputsOptional) {
    const FitCase& c = kCases[0];
    std::vector<double> gappy = c.data;
    gappy.insert(gappy.begin() + 2, NANUM);
    gappy.push_back(NANUM);
    for (int law = 0; law < 2; ++law) {
        double a = 0, b = 0, full_a = 0, full_b = 0;
        ASSERT_EQ(kFit[law](gappy.data(), static_cast<unsigned>(gappy.size()), 0.95, &a, nullptr,
                            nullptr, nullptr, nullptr, &b),
                  0);
        ASSERT_EQ(kFit[law](c.data.data(), static_cast<unsigned>(c.data.size()), 0.95, &full_a,
                            nullptr, nullptr, nullptr, nullptr, &full_b),
                  0);
        EXPECT_EQ(a, full_a);
        EXPECT_EQ(b, full_b);
    }
}

TEST(ParameterFits, RefusalsLeaveOutputsUntouched) {
    const double good[] = {1.0, 2.0, 4.0};
    const double zero[] = {1.0, 0.0, 4.0};
    const double negative[] = {1.0, -2.0, 4.0};
    const double nan[] = {1.0, NAN, 4.0};
    const double inf[] = {1.0, INFINITY, 4.0};
    const double same[] = {3.0, 3.0, NANUM, 3.0};
    const double one[] = {3.0, NANUM};
    struct Refusal {
        const double* data;
        unsigned n;
        double level;
        int code;
    };
    const Refusal refusals[] = {
        {nullptr, 3, 0.95, ZEMATH_ERR_NULL_STATS},
        {good, 3, 0.0, ZEMATH_ERR_CONFIDENCE_LEVEL},
        {good, 3, 1.0, ZEMATH_ERR_CONFIDENCE_LEVEL},
        {good, 3, NAN, ZEMATH_ERR_CONFIDENCE_LEVEL},
        {good, 0x80000000u, 0.95, ZEMATH_ERR_SIZES_DIFFER},
        {zero, 3, 0.95, ZEMATH_ERR_PARAM_RANGE},
        {negative, 3, 0.95, ZEMATH_ERR_PARAM_RANGE},
        {nan, 3, 0.95, ZEMATH_ERR_PARAM_RANGE},
        {inf, 3, 0.95, ZEMATH_ERR_PARAM_RANGE},
        {same, 4, 0.95, ZEMATH_ERR_TOO_FEW_DATA},
        {one, 2, 0.95, ZEMATH_ERR_TOO_FEW_DATA},
        {good, 0, 0.95, ZEMATH_ERR_TOO_FEW_DATA},
    };
    for (int law = 0; law < 2; ++law)
        for (const Refusal& r : refusals) {
            double out[6] = {7, 7, 7, 7, 7, 7};
            EXPECT_EQ(kFit[law](r.data, r.n, r.level, &out[0], &out[1], &out[2], &out[3], &out[4],
                                &out[5]),
                      r.code)
                << "law " << law << " n " << r.n;
            for (double v : out) EXPECT_EQ(v, 7.0);
        }
}

}  // namespace
