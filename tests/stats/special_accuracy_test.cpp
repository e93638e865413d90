// Accuracy of the special functions of the script table against the 50-digit mpmath
// references of tests/reference/gen_special.py (and gen_special_switch.py: the switch
// points of the double evaluations of Airy, ln Gamma, Si and Ci), each case called through the
// table by name (lookup, then the dispatcher), so that the row, its signature code and the function
// are checked together. The error is relative, or relative to the local envelope for oscillating
// functions (absolute near their zeros). The worst error per function is printed; the committed
// table is tests/reference/special_worst_errors.txt.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <string>

#include "zemath/function_table.h"

namespace {

struct RefCase {
    const char* name;
    double args[4];
    double expected;
    double scale;
};

#define REF(name, a0, a1, a2, a3, expected, scale) {name, {a0, a1, a2, a3}, expected, scale},
const RefCase kCases[] = {
#include "reference/special_ref.inc"
#include "reference/special_switch_ref.inc"
};
#undef REF

constexpr double kTolerance = 1e-13;

struct Worst {
    double error = 0.0;
    int cases = 0;
    RefCase at{};
    double got = 0.0;
};

double call_by_name(const char* name, const double* args) {
    unsigned long row = 0;
    std::string copy(name);
    if (zemath_KS_functions(1, copy.data(), &row, nullptr, nullptr) < 0) return NAN;
    double a[10] = {args[0], args[1], args[2], args[3]};
    double result = NAN;
    if (zemath_KS_functions(2, nullptr, &row, a, &result) != 0) return NAN;
    return result;
}

TEST(SpecialAccuracy, EveryReferenceValueWithin1e13) {
    std::map<std::string, Worst> worst;
    for (const RefCase& c : kCases) {
        const double got = call_by_name(c.name, c.args);
        const double denom = std::fmax(std::fabs(c.expected), c.scale);
        const double error = denom == 0.0 ? std::fabs(got) : std::fabs(got - c.expected) / denom;
        Worst& w = worst[c.name];
        ++w.cases;
        if (w.cases == 1 || !(error <= w.error)) w = {error, w.cases, c, got};
        EXPECT_LE(error, kTolerance)
            << c.name << "(" << c.args[0] << ", " << c.args[1] << ", " << c.args[2] << ", "
            << c.args[3] << ") = " << got << ", expected " << c.expected;
    }
    std::printf("%-22s %6s %10s  %s\n", "function", "cases", "worst", "at (args)");
    for (const auto& [fn, w] : worst)
        std::printf("%-22s %6d %10.3e  (%.17g, %.17g, %.17g, %.17g)%s\n", fn.c_str(), w.cases,
                    w.error, w.at.args[0], w.at.args[1], w.at.args[2], w.at.args[3],
                    w.at.scale > std::fabs(w.at.expected) ? " envelope" : "");
    EXPECT_EQ(worst.size(), 45u) << "every special-function row has reference values";
}

}  // namespace
