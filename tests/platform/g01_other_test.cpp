// Back-end routines of the non-central and discrete distributions, the bivariate normal,
// the studentized range and Lambert W: accuracy against the mpmath tables of
// tests/reference/distributions_other_ref.inc, the reference sheet's check values,
// identities between the outputs, and the failure codes.
//
// Worst relative errors measured on the reference grid (the tests print them):
//   g01bjc binomial   P(X<=k) 1.5e-14  P(X>k) 1.4e-14  P(X=k) 1.5e-14   (n up to 1e6)
//   g01bkc Poisson    P(X<=k) 2.8e-14  P(X>k) 1.9e-15  P(X=k) 2.8e-14   (lambda up to 1e6)
//   g01blc hypergeom. P(X<=k) 6.3e-14  P(X>k) 6.0e-14  P(X=k) 6.3e-14   (N up to 1e6)
//   g01gbc non-central t 2.5e-14, g01gcc chi-square 4.4e-16, g01gdc F 6.8e-15,
//   g01gec beta 2.6e-14, g01hac bivariate normal 5.7e-15, g01emc studentized range
//   4.5e-15 (absolute 2.9e-15), c05bac Lambert W 2.7e-16; values down to 1e-300.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <string>

#include "platform/nag/c05.hpp"
#include "platform/nag/g01.hpp"
#include "reference/distributions_other_ref.inc"

namespace {

using namespace zemath::nag;

// Largest relative error over a table; values below the normal range are compared
// absolutely (their relative accuracy is not representable).
struct Worst {
    explicit Worst(const char* label) : name(label) {}
    const char* name;
    double error = 0.0;
    std::string where;
    void add(double got, double want, const std::string& at) {
        double e;
        if (std::fabs(want) < DBL_MIN)
            e = std::fabs(got - want) <= 4 * DBL_MIN ? 0.0 : 1.0;
        else
            e = std::fabs(got - want) / std::fabs(want);
        if (!(e <= error)) {  // NaN counts as the worst
            error = std::isnan(e) ? INFINITY : e;
            where = at;
        }
    }
    ~Worst() { std::printf("[accuracy] %-28s worst relative error %.2e at %s\n", name, error, where.c_str()); }
};

std::string at(std::initializer_list<double> args) {
    std::string s = "(";
    for (double a : args) {
        char buf[40];
        std::snprintf(buf, sizeof buf, "%.17g", a);
        if (s.size() > 1) s += ", ";
        s += buf;
    }
    return s + ")";
}

constexpr double kEps = DBL_EPSILON;
constexpr double kTarget = 1e-13;  // the library's accuracy target for distributions

TEST(G01Discrete, BinomialAgainstReference) {
    Worst lower{"g01bjc P(X<=k)"}, upper{"g01bjc P(X>k)"}, point{"g01bjc P(X=k)"};
    for (const auto& r : ref_other::kBinomial) {
        NagError fail;
        double plek = -1, pgtk = -1, peqk = -1;
        g01bjc(r.n, r.p, r.k, &plek, &pgtk, &peqk, &fail);
        ASSERT_EQ(fail.code, 0) << at({double(r.k), double(r.n), r.p});
        const std::string where = at({double(r.k), double(r.n), r.p});
        lower.add(plek, r.lower, where);
        upper.add(pgtk, r.upper, where);
        point.add(peqk, r.point, where);
    }
    EXPECT_LE(lower.error, kTarget);
    EXPECT_LE(upper.error, kTarget);
    EXPECT_LE(point.error, kTarget);
}

TEST(G01Discrete, PoissonAgainstReference) {
    Worst lower{"g01bkc P(X<=k)"}, upper{"g01bkc P(X>k)"}, point{"g01bkc P(X=k)"};
    for (const auto& r : ref_other::kPoisson) {
        NagError fail;
        double plek = -1, pgtk = -1, peqk = -1;
        g01bkc(r.lambda, r.k, &plek, &pgtk, &peqk, &fail);
        ASSERT_EQ(fail.code, 0);
        const std::string where = at({double(r.k), r.lambda});
        lower.add(plek, r.lower, where);
        upper.add(pgtk, r.upper, where);
        point.add(peqk, r.point, where);
    }
    EXPECT_LE(lower.error, kTarget);
    EXPECT_LE(upper.error, kTarget);
    EXPECT_LE(point.error, kTarget);
}

TEST(G01Discrete, HypergeometricAgainstReference) {
    Worst lower{"g01blc P(X<=k)"}, upper{"g01blc P(X>k)"}, point{"g01blc P(X=k)"};
    for (const auto& r : ref_other::kHypergeometric) {
        NagError fail;
        double plek = -1, pgtk = -1, peqk = -1;
        g01blc(r.n, r.l, r.m, r.k, &plek, &pgtk, &peqk, &fail);
        ASSERT_EQ(fail.code, 0);
        const std::string where = at({double(r.k), double(r.m), double(r.n), double(r.l)});
        lower.add(plek, r.lower, where);
        upper.add(pgtk, r.upper, where);
        point.add(peqk, r.point, where);
    }
    EXPECT_LE(lower.error, kTarget);
    EXPECT_LE(upper.error, kTarget);
    EXPECT_LE(point.error, kTarget);
}

// The reference sheet's worked examples, to the five digits it gives.
TEST(G01Discrete, SheetExamples) {
    struct Row { int n; double p; int k; double plek, pgtk, peqk; };
    for (const Row& r : {Row{4, 0.5, 2, 0.68750, 0.31250, 0.37500},
                         Row{19, 0.44, 13, 0.99138, 0.00862, 0.01939},
                         Row{100, 0.75, 67, 0.04460, 0.95540, 0.01700},
                         Row{2000, 0.33, 700, 0.97251, 0.02749, 0.00312}}) {
        NagError fail;
        double a, b, c;
        g01bjc(r.n, r.p, r.k, &a, &b, &c, &fail);
        EXPECT_NEAR(a, r.plek, 5e-6);
        EXPECT_NEAR(b, r.pgtk, 5e-6);
        EXPECT_NEAR(c, r.peqk, 5e-6);
    }
    struct PRow { double lambda; int k; double plek, pgtk, peqk; };
    for (const PRow& r : {PRow{0.75, 3, 0.99271, 0.00729, 0.03321}, PRow{9.2, 12, 0.86074, 0.13926, 0.07755},
                          PRow{34, 25, 0.06736, 0.93264, 0.02140}, PRow{175, 175, 0.52009, 0.47991, 0.03014}}) {
        NagError fail;
        double a, b, c;
        g01bkc(r.lambda, r.k, &a, &b, &c, &fail);
        EXPECT_NEAR(a, r.plek, 5e-6);
        EXPECT_NEAR(b, r.pgtk, 5e-6);
        EXPECT_NEAR(c, r.peqk, 5e-6);
    }
    struct HRow { int n, l, m, k; double plek, pgtk, peqk; };
    for (const HRow& r : {HRow{10, 2, 5, 1, 0.77778, 0.22222, 0.55556}, HRow{40, 10, 3, 2, 0.98785, 0.01215, 0.13664},
                          HRow{155, 35, 122, 22, 0.01101, 0.98899, 0.00779},
                          HRow{1000, 444, 500, 220, 0.42429, 0.57571, 0.04913}}) {
        NagError fail;
        double a, b, c;
        g01blc(r.n, r.l, r.m, r.k, &a, &b, &c, &fail);
        EXPECT_NEAR(a, r.plek, 5e-6);
        EXPECT_NEAR(b, r.pgtk, 5e-6);
        EXPECT_NEAR(c, r.peqk, 5e-6);
    }
}

// A discrete cdf is the running sum of its point probabilities, and the tails add to 1.
TEST(G01Discrete, CdfIsRunningSumOfPmf) {
    const auto check = [](auto call, int lo, int hi, const char* what) {
        double running = 0.0;
        for (int k = lo; k <= hi; ++k) {
            NagError fail;
            double plek, pgtk, peqk;
            call(k, &plek, &pgtk, &peqk, &fail);
            ASSERT_EQ(fail.code, 0) << what << " k=" << k;
            running += peqk;
            EXPECT_NEAR(plek, running, 1e-14 * std::max(running, 1e-300) + 1e-300) << what << " k=" << k;
            EXPECT_NEAR(plek + pgtk, 1.0, 4 * kEps) << what << " k=" << k;
        }
    };
    check([](int k, double* a, double* b, double* c, NagError* f) { g01bjc(40, 0.3, k, a, b, c, f); }, 0, 40,
          "binomial");
    check([](int k, double* a, double* b, double* c, NagError* f) { g01bkc(7.5, k, a, b, c, f); }, 0, 60,
          "poisson");
    check([](int k, double* a, double* b, double* c, NagError* f) { g01blc(60, 25, 18, k, a, b, c, f); }, 0,
          18, "hypergeometric");
}

TEST(G01Discrete, DegenerateAndEdgeLaws) {
    NagError fail;
    double a = -1, b = -1, c = -1;
    g01bjc(10, 0.0, 0, &a, &b, &c, &fail);
    EXPECT_EQ(fail.code, 0);
    EXPECT_EQ(a, 1.0);
    EXPECT_EQ(b, 0.0);
    EXPECT_EQ(c, 1.0);
    g01bjc(10, 1.0, 9, &a, &b, &c, &fail);
    EXPECT_EQ(a, 0.0);
    EXPECT_EQ(b, 1.0);
    EXPECT_EQ(c, 0.0);
    g01bjc(0, 0.3, 0, &a, &b, &c, &fail);
    EXPECT_EQ(a, 1.0);
    EXPECT_EQ(b, 0.0);
    EXPECT_EQ(c, 1.0);
    // Null outputs are skipped; the others are the same as in a full call.
    g01bjc(30, 0.3, 11, &a, &b, &c, &fail);
    double only = -1.0;
    g01bjc(30, 0.3, 11, nullptr, &only, nullptr, &fail);
    EXPECT_EQ(only, b);
    g01bkc(4.5, 6, &a, &b, &c, &fail);
    g01bkc(4.5, 6, &only, nullptr, nullptr, &fail);
    EXPECT_EQ(only, a);
    g01blc(7, 0, 3, 0, &a, &b, &c, &fail);  // empty sample
    EXPECT_EQ(fail.code, 0);
    EXPECT_EQ(a, 1.0);
    EXPECT_EQ(b, 0.0);
}

TEST(G01Discrete, FailureCodesLeaveOutputs) {
    struct Case { int code; int which; int n; double p; int k; };
    // which: 0 binomial (n, p, k), 1 Poisson (lambda = p, k)
    for (const Case& c : {Case{NE_INT_ARG_LT, 0, -1, 0.5, 0}, Case{NE_REAL_ARG_LT, 0, 5, -0.1, 0},
                          Case{NE_REAL_ARG_GT, 0, 5, 1.5, 0}, Case{NE_REAL, 0, 5, NAN, 0},
                          Case{NE_INT_ARG_LT, 0, 5, 0.5, -1}, Case{NE_INT_ARG_GT, 0, 5, 0.5, 6},
                          Case{NE_REAL_ARG_LE, 1, 0, 0.0, 1}, Case{NE_REAL_ARG_LE, 1, 0, -2.0, 1},
                          Case{NE_REAL, 1, 0, NAN, 1}, Case{NE_REAL_ARG_GT, 1, 0, INFINITY, 1},
                          Case{NE_INT_ARG_LT, 1, 0, 3.0, -1}}) {
        NagError fail;
        double a = 7, b = 7, d = 7;
        if (c.which == 0)
            g01bjc(c.n, c.p, c.k, &a, &b, &d, &fail);
        else
            g01bkc(c.p, c.k, &a, &b, &d, &fail);
        EXPECT_EQ(fail.code, c.code) << c.which << " " << c.n << " " << c.p << " " << c.k;
        EXPECT_EQ(a, 7);
        EXPECT_EQ(b, 7);
        EXPECT_EQ(d, 7);
    }
    struct HCase { int code; int n, l, m, k; };
    for (const HCase& c : {HCase{NE_INT_ARG_LT, -1, 0, 0, 0}, HCase{NE_INT_ARG_GT, 5, 6, 1, 0},
                           HCase{NE_INT_ARG_GT, 5, 2, 6, 0}, HCase{NE_INT_ARG_LT, 5, -1, 2, 0},
                           HCase{NE_INT_ARG_LT, 10, 8, 5, 2},  // k below l - (n - m) = 3
                           HCase{NE_INT_ARG_GT, 10, 3, 5, 4}}) {
        NagError fail;
        double a = 7, b = 7, d = 7;
        g01blc(c.n, c.l, c.m, c.k, &a, &b, &d, &fail);
        EXPECT_EQ(fail.code, c.code) << c.n << " " << c.l << " " << c.m << " " << c.k;
        EXPECT_EQ(a, 7);
    }
}

// ------------------------------------------------------------------ non-central laws

TEST(G01NonCentral, AgainstReference) {
    {
        Worst w{"g01gbc non-central t"};
        for (const auto& r : ref_other::kNonCentralT) {
            NagError fail;
            const double v = g01gbc(r.x, r.a, r.b, 0.0, 100, &fail);
            ASSERT_EQ(fail.code, 0) << at({r.x, r.a, r.b});
            w.add(v, r.value, at({r.x, r.a, r.b}));
        }
        EXPECT_LE(w.error, kTarget);
    }
    {
        Worst w{"g01gcc non-central chi2"};
        for (const auto& r : ref_other::kNonCentralChi2) {
            NagError fail;
            const double v = g01gcc(r.x, r.a, r.b, 0.0, 100, &fail);
            ASSERT_EQ(fail.code, 0) << at({r.x, r.a, r.b});
            w.add(v, r.value, at({r.x, r.a, r.b}));
        }
        EXPECT_LE(w.error, kTarget);
    }
    {
        Worst w{"g01gec non-central beta"};
        for (const auto& r : ref_other::kNonCentralBeta) {
            NagError fail;
            const double v = g01gec(r.x, r.a, r.b, r.c, 0.0, 100, &fail);
            ASSERT_EQ(fail.code, 0) << at({r.x, r.a, r.b, r.c});
            w.add(v, r.value, at({r.x, r.a, r.b, r.c}));
        }
        EXPECT_LE(w.error, kTarget);
    }
    {
        Worst w{"g01gdc non-central F"};
        for (const auto& r : ref_other::kNonCentralF) {
            NagError fail;
            const double v = g01gdc(r.x, r.a, r.b, r.c, 0.0, 100, &fail);
            ASSERT_EQ(fail.code, 0) << at({r.x, r.a, r.b, r.c});
            w.add(v, r.value, at({r.x, r.a, r.b, r.c}));
        }
        EXPECT_LE(w.error, kTarget);
    }
}

TEST(G01NonCentral, SheetChecksAndLimits) {
    NagError fail;
    EXPECT_NEAR(g01gbc(2.0, 10, 1.0, 0, 50, &fail), 0.80761156253038, 1e-13);
    EXPECT_NEAR(g01gbc(-1.0, 4, 0.5, 0, 50, &fail), 0.086149569036563, 1e-14);
    EXPECT_NEAR(g01gcc(8.0, 4, 2.0, 0, 50, &fail), 0.74510103425501, 1e-13);
    EXPECT_NEAR(g01gdc(2.0, 3, 12, 1.5, 0, 50, &fail), 0.68583309097454, 1e-13);
    EXPECT_NEAR(g01gec(0.4, 2, 3, 1.0, 0, 50, &fail), 0.42946121234784, 1e-13);
    // t = 0 reduces to Phi(-delta); infinite variables give the limits.
    EXPECT_NEAR(g01gbc(0.0, 7, 1.5, 0, 50, &fail), 0.5 * std::erfc(1.5 / std::sqrt(2.0)), 1e-15);
    EXPECT_EQ(g01gbc(-INFINITY, 7, 1.5, 0, 50, &fail), 0.0);
    EXPECT_EQ(g01gbc(INFINITY, 7, 1.5, 0, 50, &fail), 1.0);
    EXPECT_EQ(g01gcc(INFINITY, 3, 1, 0, 50, &fail), 1.0);
    EXPECT_EQ(g01gcc(0.0, 3, 1, 0, 50, &fail), 0.0);
    EXPECT_EQ(g01gec(1.0, 3, 1, 2, 0, 50, &fail), 1.0);
    EXPECT_EQ(fail.code, 0);
    // lambda = 0 is the central law: chi-square with 2 df is 1 - e^(-x/2).
    EXPECT_NEAR(g01gcc(3.0, 2, 0.0, 0, 50, &fail), -std::expm1(-1.5), 1e-15);
}

TEST(G01NonCentral, FailureCodes) {
    struct Case { int code; double value; };
    NagError f;
    const Case cases[] = {
        {NE_REAL_ARG_LT, (g01gbc(1, 0.5, 0, 0, 50, &f), double(f.code))},
        {NE_INT_ARG_LT, (g01gbc(1, 5, 0, 0, 0, &f), double(f.code))},
        {NE_REAL, (g01gbc(NAN, 5, 0, 0, 50, &f), double(f.code))},
        {NE_REAL_ARG_GT, (g01gbc(1, 5, INFINITY, 0, 50, &f), double(f.code))},
        {NE_REAL_ARG_LT, (g01gcc(-1, 5, 0, 0, 50, &f), double(f.code))},
        {NE_REAL_ARG_LE, (g01gcc(1, 0, 1, 0, 50, &f), double(f.code))},
        {NE_REAL_ARG_LT, (g01gcc(1, 2, -1, 0, 50, &f), double(f.code))},
        {NE_INT_ARG_LT, (g01gcc(1, 2, 1, 0, -3, &f), double(f.code))},
        {NE_REAL_ARG_LE, (g01gdc(1, 2, 0, 1, 0, 50, &f), double(f.code))},
        {NE_REAL_ARG_LT, (g01gdc(-1, 2, 3, 1, 0, 50, &f), double(f.code))},
        {NE_REAL_ARG_GT, (g01gec(1.5, 2, 3, 1, 0, 50, &f), double(f.code))},
        {NE_REAL_ARG_LE, (g01gec(0.5, -2, 3, 1, 0, 50, &f), double(f.code))},
        {NE_REAL, (g01gec(0.5, 2, NAN, 1, 0, 50, &f), double(f.code))},
        {NE_REAL_ARG_GT, (g01gec(0.5, 2, 3, INFINITY, 0, 50, &f), double(f.code))},
    };
    for (const Case& c : cases) EXPECT_EQ(c.value, c.code);
}

// ------------------------------------------------------------------ bivariate normal

TEST(G01Bivariate, AgainstReference) {
    Worst w{"g01hac bivariate normal"};
    for (const auto& r : ref_other::kBivariateNormal) {
        NagError fail;
        const double v = g01hac(r.x, r.a, r.b, &fail);
        ASSERT_EQ(fail.code, 0);
        w.add(v, r.value, at({r.x, r.a, r.b}));
        // Symmetric in x and y.
        EXPECT_EQ(v, g01hac(r.a, r.x, r.b, &fail)) << at({r.x, r.a, r.b});
    }
    EXPECT_LE(w.error, 1e-13);
}

TEST(G01Bivariate, LimitsAndCodes) {
    NagError fail;
    EXPECT_NEAR(g01hac(0, 0, 0.5, &fail), 1.0 / 3.0, 1e-15);
    EXPECT_NEAR(g01hac(1, -0.5, -0.3, &fail), 0.23203606826855, 1e-14);
    EXPECT_NEAR(g01hac(1.5, 2, 0.9, &fail), 0.93072725351264, 1e-14);
    const double phi1 = 0.5 * std::erfc(-1.0 / std::sqrt(2.0));
    EXPECT_NEAR(g01hac(1.0, 2.0, 1.0, &fail), phi1, 2e-16);              // rho = 1: Phi(min)
    EXPECT_NEAR(g01hac(1.0, INFINITY, 0.3, &fail), phi1, 2e-16);         // y = +inf: Phi(x)
    EXPECT_EQ(g01hac(-INFINITY, 2.0, 0.3, &fail), 0.0);
    EXPECT_EQ(g01hac(-1.0, 0.5, -1.0, &fail), 0.0);                      // x <= -y
    EXPECT_NEAR(g01hac(1.0, 1.0, -1.0, &fail), 2 * phi1 - 1, 1e-15);     // Phi(x) + Phi(y) - 1
    EXPECT_EQ(fail.code, 0);
    g01hac(0, 0, 1.0000001, &fail);
    EXPECT_EQ(fail.code, NE_REAL_ARG_GT);
    g01hac(NAN, 0, 0.1, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
}

// ------------------------------------------------------------------ studentized range

TEST(G01Srange, AgainstReference) {
    Worst rel{"g01emc studentized range"};
    double worst_abs = 0.0;
    for (const auto& r : ref_other::kStudentizedRange) {
        NagError fail;
        const double v = g01emc(r.q, r.v, r.r, &fail);
        ASSERT_EQ(fail.code, 0) << at({r.q, r.v, double(r.r)});
        rel.add(v, r.value, at({r.q, r.v, double(r.r)}));
        worst_abs = std::max(worst_abs, std::fabs(v - r.value));
    }
    std::printf("[accuracy] g01emc worst absolute error %.2e\n", worst_abs);
    EXPECT_LE(rel.error, kTarget);
}

TEST(G01Srange, ChecksRoundTripAndCodes) {
    NagError fail;
    EXPECT_NEAR(g01emc(3.877, 10, 3, &fail), 0.95001, 5e-6);
    EXPECT_NEAR(g01emc(4.0, 20, 5, &fail), 0.93041, 5e-6);
    EXPECT_NEAR(g01fmc(0.95, 20, 3, &fail), 3.5779, 5e-5);
    EXPECT_EQ(g01emc(0.0, 20, 5, &fail), 0.0);
    EXPECT_EQ(g01emc(-1.0, 20, 5, &fail), 0.0);
    EXPECT_EQ(g01emc(INFINITY, 20, 5, &fail), 1.0);
    // The deviate reproduces the probability it was given, and the probability's deviate
    // returns the starting q.
    for (double p : {0.01, 0.1, 0.5, 0.9, 0.95, 0.99, 0.999}) {
        for (double v : {1.0, 5.0, 20.0, 300.0}) {
            for (int r : {2, 3, 10, 50}) {
                const double q = g01fmc(p, v, r, &fail);
                ASSERT_EQ(fail.code, 0) << p << " " << v << " " << r;
                EXPECT_NEAR(g01emc(q, v, r, &fail), p, 1e-13 + 1e-12 * p) << p << " " << v << " " << r;
                const double back = g01fmc(g01emc(q, v, r, &fail), v, r, &fail);
                EXPECT_NEAR(back, q, 1e-11 * q) << p << " " << v << " " << r;
            }
        }
    }
    g01emc(1.0, 10, 1, &fail);
    EXPECT_EQ(fail.code, NE_INT_ARG_LT);
    g01emc(1.0, 0.5, 3, &fail);
    EXPECT_EQ(fail.code, NE_REAL_ARG_LT);
    g01emc(NAN, 5, 3, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
    g01fmc(0.0, 5, 3, &fail);
    EXPECT_EQ(fail.code, NE_REAL_ARG_LE);
    g01fmc(1.0, 5, 3, &fail);
    EXPECT_EQ(fail.code, NE_REAL_ARG_GE);
}

// ------------------------------------------------------------------ Lambert W

TEST(C05Lambert, AgainstReference) {
    Worst w{"c05bac Lambert W"};
    for (const auto& r : ref_other::kLambertW) {
        NagError fail;
        const double v = c05bac(r.x, r.branch, r.offset != 0, &fail);
        ASSERT_EQ(fail.code, 0) << at({r.x, double(r.branch), double(r.offset)});
        w.add(v, r.value, at({r.x, double(r.branch), double(r.offset)}));
    }
    EXPECT_LE(w.error, 8 * kEps);
}

TEST(C05Lambert, SheetChecksIdentityAndCodes) {
    NagError fail;
    EXPECT_NEAR(c05bac(0.5, 0, false, &fail), 0.351734, 5e-7);
    EXPECT_NEAR(c05bac(7e7, 0, false, &fail), 15.3339, 5e-5);
    EXPECT_NEAR(c05bac(-0.2, -1, false, &fail), -2.5426413577735, 1e-13);
    EXPECT_NEAR(c05bac(1e-4, 0, true, &fail), -0.97686286557442, 1e-14);
    EXPECT_EQ(c05bac(0.0, 0, true, &fail), -1.0);
    EXPECT_EQ(c05bac(0.0, -1, true, &fail), -1.0);
    // w e^w = x across both branches; offsets just either side of the series/Newton
    // switch agree with the identity too.
    for (double x : {-0.36, -0.2, -1e-3, 1e-8, 0.3, 2.0, 50.0, 1e5}) {
        const double w0 = c05bac(x, 0, false, &fail);
        // w e^w carries w's relative error times (1 + w).
        EXPECT_NEAR(w0 * std::exp(w0), x, 4 * kEps * std::fabs(x) * (1 + std::fabs(w0))) << x;
        if (x < 0) {
            const double w1 = c05bac(x, -1, false, &fail);
            EXPECT_NEAR(w1 * std::exp(w1), x, 4 * kEps * std::fabs(x) * (1 + std::fabs(w1))) << x;
            EXPECT_LE(w1, -1.0);
        }
    }
    double previous = -1.0;
    for (double dx = 1e-12; dx < 1.0; dx *= 1.7) {  // monotone in dx on the principal branch
        const double w = c05bac(dx, 0, true, &fail);
        EXPECT_GT(w, previous) << dx;
        previous = w;
    }
    c05bac(1.0, 1, false, &fail);
    EXPECT_EQ(fail.code, NE_INT);
    c05bac(-0.5, 0, false, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
    c05bac(0.0, -1, false, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
    c05bac(0.37, -1, true, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
    c05bac(-1e-3, 0, true, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
    c05bac(NAN, 0, false, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
    c05bac(INFINITY, 0, false, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
}

}  // namespace
