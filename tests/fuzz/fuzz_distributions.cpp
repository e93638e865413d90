// Fuzz target: every distribution function with fuzzed arguments and tail codes. The
// documented contract is checked on each call: status 0 with a finite or infinite value
// (probabilities in [0, 1]), or a failure status; NANUM only with a failure status
// (except the deliberate quiet NANUM of the Weibull functions and finv).
#include <algorithm>
#include <cmath>

#include "fuzz_input.hpp"
#include "zemath.h"

using zemath_fuzz::Input;
using zemath_fuzz::require;

namespace {

enum Kind { kProbability, kDensity, kDeviate };

// A group count over the whole int range, log-uniform: i modulo 31 picks the binary order
// of magnitude (2 to 2^31 - 1), i's higher bits the value within it. Counts below 2 (the
// refused ones, the int edges among them) pass unchanged. The range law's cost does not grow
// with the count (about 15 ms at most per call past 100 groups), so each input stays bounded.
int groups(int i) {
    if (i < 2) return i;
    const unsigned order = static_cast<unsigned>(i) % 31u;  // 2^order .. 2^(order + 1) - 1
    const unsigned base = 1u << order;
    const unsigned offset = (static_cast<unsigned>(i) >> 5) % base;
    return static_cast<int>(std::max(base + offset, 2u));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(38);
    const double a = in.real(), b = in.real(), c = in.real(), d = in.real();
    const int i = in.integer(), j = in.integer(), k = in.integer(), tail = in.pick(7) - 1;
    int status = -12345;
    int* st = in.byte() % 8 ? &status : nullptr;
    double v = 0.0;
    Kind kind = kProbability;
    switch (which) {
        case 0:
            v = normcdf(a, tail, st);
            break;
        case 1:
            v = norminv(a, st), kind = kDeviate;
            break;
        case 2:
            v = normpdf(a, b, c, st), kind = kDensity;
            break;
        case 3:
            v = tcdf(a, b, tail, st);
            break;
        case 4:
            v = tinv(a, b, tail, st), kind = kDeviate;
            break;
        case 5:
            v = chi2cdf(a, b, tail, st);
            break;
        case 6:
            v = chi2inv(a, b, st), kind = kDeviate;
            break;
        case 7:
            v = fcdf(a, b, c, tail, st);
            break;
        case 8:
            v = finv(a, b, c, st), kind = kDeviate;
            break;
        case 9:
            v = betacdf(a, b, c, tail, st);
            break;
        case 10:
            v = betainv(a, b, c, st), kind = kDeviate;
            break;
        case 11:
            v = betapdf(a, b, c, st), kind = kDensity;
            break;
        case 12:
            v = gamcdf(a, b, c, tail, st);
            break;
        case 13:
            v = gaminv(a, b, c, st), kind = kDeviate;
            break;
        case 14:
            v = gampdf(a, b, c, st), kind = kDensity;
            break;
        case 15:
            v = exppdf(a, b, st), kind = kDensity;
            break;
        case 16:
            v = cauchypdf(a, b, c, st), kind = kDensity;
            break;
        case 17:
            v = lappdf(a, b, c, st), kind = kDensity;
            break;
        case 18:
            v = lognpdf(a, b, c, st), kind = kDensity;
            break;
        case 19:
            v = logncdf(a, b, c, tail, st);
            break;
        case 20:
            v = logninv(a, b, c, st), kind = kDeviate;
            break;
        case 21:
            v = wblpdf(a, b, c, st), kind = kDensity;
            break;
        case 22:
            v = wblcdf(a, b, c, st);
            break;
        case 23:
            v = wblinv(a, b, c, st), kind = kDeviate;
            break;
        case 24:
            v = binocdf(i, j, a, tail, st);
            break;
        case 25:
            v = binopdf(i, j, a, st);
            break;
        case 26:
            v = poisscdf(i, a, tail, st);
            break;
        case 27:
            v = poisspdf(i, a, st);
            break;
        case 28:
            v = hygecdf(i, j, k, in.integer(), tail, st);
            break;
        case 29:
            v = nctcdf(a, b, c, i, st);
            break;
        case 30:
            v = ncchi2cdf(a, b, c, st);
            break;
        case 31:
            v = ncfcdf(a, b, c, d, st);
            break;
        case 32:
            v = ncbetacdf(a, b, c, d, st);
            break;
        case 33:
            v = bivarnormcdf(a, b, c, st);
            break;
        case 34:
            v = srangecdf(a, b, groups(i), st);
            break;
        case 35:
            v = srangeinv(a, b, groups(i), st), kind = kDeviate;
            break;
        case 36:
            v = lambertW(a, i % 3 - 1, j & 1, st), kind = kDeviate;
            break;
        default:
            v = cabsz(d_complex{a, b}), kind = kDensity;
            break;
    }
    if (!st || which == 37) return 0;
    require(status != -12345);  // the status pointer is always written
    if (status == 0 && v != NANUM) {
        require(!std::isnan(v));
        if (kind == kProbability) require(v >= 0.0 && v <= 1.0);
        if (kind == kDensity) require(v >= 0.0);
    }
    if (status != 0 && status != 424) require(v == NANUM || which == 27);  // poisspdf: 0.0
    return 0;
}
