// The central distribution exports behind one uniform call (up to three double arguments,
// a tail code and the status pointer), for the table-driven tests.
#pragma once

#include <cmath>

#include "zemath/distributions.h"

namespace dist_test {

// clang-format off
enum class Fn {
    normcdf, norminv, normpdf, tcdf, tinv, chi2cdf, chi2inv, fcdf, finv, betacdf, betainv,
    betapdf, gamcdf, gaminv, gampdf, exppdf, cauchypdf, lappdf, lognpdf, logncdf, logninv,
    wblpdf, wblcdf, wblinv
};

inline double call(Fn fn, const double* a, int tail, int* s) {
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
    }
    return NAN;
}
// clang-format on

}  // namespace dist_test
