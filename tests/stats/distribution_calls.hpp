// Helpers shared by the distribution tests (stats and platform): every distribution export
// behind one uniform call, and the worst-error record of the reference comparisons.
#pragma once

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <string>

#include "zemath/distributions.h"

namespace dist_test {

// clang-format off
enum class Fn {
    normcdf, norminv, normpdf, tcdf, tinv, chi2cdf, chi2inv, fcdf, finv, betacdf, betainv,
    betapdf, gamcdf, gaminv, gampdf, exppdf, cauchypdf, lappdf, lognpdf, logncdf, logninv,
    wblpdf, wblcdf, wblinv, binocdf, binopdf, poisscdf, poisspdf, hygecdf, nctcdf, ncchi2cdf,
    ncfcdf, ncbetacdf, bivarnormcdf, srangecdf, srangeinv, lambertW
};

inline const char* name(Fn fn) {
    static const char* const names[] = {
        "normcdf", "norminv", "normpdf", "tcdf", "tinv", "chi2cdf", "chi2inv", "fcdf", "finv",
        "betacdf", "betainv", "betapdf", "gamcdf", "gaminv", "gampdf", "exppdf", "cauchypdf",
        "lappdf", "lognpdf", "logncdf", "logninv", "wblpdf", "wblcdf", "wblinv", "binocdf",
        "binopdf", "poisscdf", "poisspdf", "hygecdf", "nctcdf", "ncchi2cdf", "ncfcdf",
        "ncbetacdf", "bivarnormcdf", "srangecdf", "srangeinv", "lambertW"};
    return names[static_cast<int>(fn)];
}

// Up to four arguments in the export's order; integer arguments are passed as doubles.
inline double call(Fn fn, const double* a, int tail, int* s) {
    const auto i = [a](int k) { return static_cast<int>(a[k]); };
    switch (fn) {
        case Fn::normcdf: return normcdf(a[0], tail, s);
        case Fn::norminv: return norminv(a[0], s);
        case Fn::normpdf: return normpdf(a[0], a[1], a[2], s);
        case Fn::tcdf: return tcdf(a[0], a[1], tail, s);
        case Fn::tinv: return tinv(a[0], a[1], tail, s);
        case Fn::chi2cdf: return chi2cdf(a[0], a[1], tail, s);
        case Fn::chi2inv: return chi2inv(a[0], a[1], s);
        case Fn::fcdf: return fcdf(a[0], a[1], a[2], tail, s);
        case Fn::finv: return finv(a[0], a[1], a[2], s);
        case Fn::betacdf: return betacdf(a[0], a[1], a[2], tail, s);
        case Fn::betainv: return betainv(a[0], a[1], a[2], s);
        case Fn::betapdf: return betapdf(a[0], a[1], a[2], s);
        case Fn::gamcdf: return gamcdf(a[0], a[1], a[2], tail, s);
        case Fn::gaminv: return gaminv(a[0], a[1], a[2], s);
        case Fn::gampdf: return gampdf(a[0], a[1], a[2], s);
        case Fn::exppdf: return exppdf(a[0], a[1], s);
        case Fn::cauchypdf: return cauchypdf(a[0], a[1], a[2], s);
        case Fn::lappdf: return lappdf(a[0], a[1], a[2], s);
        case Fn::lognpdf: return lognpdf(a[0], a[1], a[2], s);
        case Fn::logncdf: return logncdf(a[0], a[1], a[2], tail, s);
        case Fn::logninv: return logninv(a[0], a[1], a[2], s);
        case Fn::wblpdf: return wblpdf(a[0], a[1], a[2], s);
        case Fn::wblcdf: return wblcdf(a[0], a[1], a[2], s);
        case Fn::wblinv: return wblinv(a[0], a[1], a[2], s);
        case Fn::binocdf: return binocdf(i(0), i(1), a[2], tail, s);
        case Fn::binopdf: return binopdf(i(0), i(1), a[2], s);
        case Fn::poisscdf: return poisscdf(i(0), a[1], tail, s);
        case Fn::poisspdf: return poisspdf(i(0), a[1], s);
        case Fn::hygecdf: return hygecdf(i(0), i(1), i(2), i(3), tail, s);
        case Fn::nctcdf: return nctcdf(a[0], a[1], a[2], i(3), s);
        case Fn::ncchi2cdf: return ncchi2cdf(a[0], a[1], a[2], s);
        case Fn::ncfcdf: return ncfcdf(a[0], a[1], a[2], a[3], s);
        case Fn::ncbetacdf: return ncbetacdf(a[0], a[1], a[2], a[3], s);
        case Fn::bivarnormcdf: return bivarnormcdf(a[0], a[1], a[2], s);
        case Fn::srangecdf: return srangecdf(a[0], a[1], i(2), s);
        case Fn::srangeinv: return srangeinv(a[0], a[1], i(2), s);
        case Fn::lambertW: return lambertW(a[0], i(1), i(2), s);
    }
    return NAN;
}
// clang-format on

inline std::string at(std::initializer_list<double> args) {
    std::string s;
    for (double a : args) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "%s%.17g", s.empty() ? "(" : ", ", a);
        s += buf;
    }
    return s + ")";
}

// Largest relative error over a table and where it was; values below the normal range are
// compared absolutely (their relative accuracy is not representable), NaN counts as worst.
struct Worst {
    double error = 0.0;
    int count = 0;
    std::string where;
    double add(double got, double want, const std::string& args) {
        const double d = std::fabs(got - want);
        const double e =
            std::fabs(want) < DBL_MIN ? (d <= 4 * DBL_MIN ? 0.0 : 1.0) : d / std::fabs(want);
        ++count;
        if (where.empty() || !(e <= error)) {
            error = std::isnan(e) ? INFINITY : e;
            where = args;
        }
        return e;
    }
    double report(const std::string& name) const {
        std::printf("[accuracy] %-24s %5d cases, worst relative error %.2e at %s\n", name.c_str(),
                    count, error, where.c_str());
        return error;
    }
};

}  // namespace dist_test
