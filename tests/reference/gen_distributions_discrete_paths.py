#!/usr/bin/python3
"""Reference values for the discrete laws at the switch points of their evaluation paths.

Writes tests/reference/distributions_discrete_paths_ref.inc (C++ initialiser tables). Every
value is computed here with mpmath at 60 significant digits, independently of the library:

  binomial density   C(n,k) p^k q^(n-k) from mpmath log-gamma, where k / (n p) or
                     (n-k) / (n q) lies on either side of 3/4, 3/2 and 3 (where the
                     deviance's logarithm changes its power of two), far out (k/np = 1e-3,
                     1e3) and deep in both tails (probabilities 1e-250 .. 1e-305); n on both
                     sides of 64, and tails within 1/64 of the mean at counts up to 2^31 - 1.
  binomial tails     the Poisson-limit regime (n from 1000 to 2^31 - 1, n p up to 50): both
                     tails by summing point probabilities outward from k by the exact ratio
                     of consecutive terms, each tail summed itself (no complement), with k on
                     both sides of the mean and the median and far out; and every k at counts
                     up to 31, p from 1e-300 to 1 - 2^-53, both tails the exact sums of all
                     the point probabilities.
  Poisson density    e^-lambda lambda^k / k! from mpmath log-gamma at the same ratios k/lambda,
                     and deep in both tails.
  hypergeometric     C(m,k) C(N-m,l-k) / C(N,l) from mpmath log-gamma and both tails summed
                     outward from k by the exact ratio, with k at and beside the median and
                     the mode (where the routine takes the tail across the mode), for
                     populations from 40 to 2^31 - 1.

Inputs are doubles written with 17 significant digits; mpmath reads them back exactly.
Run: /usr/bin/python3 tests/reference/gen_distributions_discrete_paths.py (about a minute).
"""
import math
import os

import mpmath as mp

OUT = os.path.join(os.path.dirname(os.path.abspath(__file__)),
                   "distributions_discrete_paths_ref.inc")
mp.mp.dps = 60
EPS = mp.mpf(10) ** -55
INT_MAX = 2147483647


def d(x):
    """A Python float as a C++ literal that reads back exactly."""
    x = float(x)
    if x == 0.0:
        return "0.0"
    r = repr(x)
    return r if ("e" in r or "." in r) else r + ".0"


def binomial_pmf(k, n, p):
    P = mp.mpf(p)
    return mp.exp(mp.loggamma(n + 1) - mp.loggamma(k + 1) - mp.loggamma(n - k + 1) +
                  k * mp.log(P) + (n - k) * mp.log1p(-P))


def poisson_pmf(k, lam):
    L = mp.mpf(lam)
    return mp.exp(k * mp.log(L) - L - mp.loggamma(k + 1))


def sum_from(first, k, lo, hi, ratio_up, ratio_down):
    """P(X <= k), P(X > k) from P(k) = first, summing each tail outward by the exact ratios."""
    lower = mp.mpf(0)
    t = first
    j = k
    while j >= lo:
        lower += t
        if t < EPS * lower and j < k - 2:
            # only stop where the terms fall (below k on the far side of the mode they do)
            nxt = t * ratio_down(j)
            if nxt <= t:
                break
        t = t * ratio_down(j) if j > lo else 0
        j -= 1
    upper = mp.mpf(0)
    if k < hi:
        t = first * ratio_up(k)
        j = k + 1
        while j <= hi:
            upper += t
            if t < EPS * upper and j > k + 2:
                nxt = t * ratio_up(j)
                if nxt <= t:
                    break
            t = t * ratio_up(j) if j < hi else 0
            j += 1
    return lower, upper


def binomial_density_rows():
    rows = []
    cases = []
    for n in (63, 64, 65, 200, 5000, 123457, 10000000, INT_MAX):
        for p in (0.3, 0.01, 0.97):
            mean, qmean = n * p, n * (1 - p)
            for r in (0.74, 0.75, 0.76, 1.49, 1.5, 1.51, 2.99, 3.01, 0.374, 0.376):
                cases.append((int(round(mean * r)), n, p))
                cases.append((n - int(round(qmean * r)), n, p))
            cases.append((int(round(mean * 1e-3)), n, p))
            cases.append((min(n, int(round(mean * 1e3))), n, p))
    # Deep tails: the probability between 1e-250 and 1e-305 (the deviance in the hundreds).
    # With counts of 1e8 .. 2^31 - 1 such tails lie within 1/64 of the mean (s = (k - n p) /
    # (k + n p) small), where the deviance's cube term is formed in double.
    for n, p in ((2000, 0.5), (100000, 0.2), (1000000, 0.01), (50000, 0.999), (100000000, 0.5),
                 (INT_MAX, 0.3), (INT_MAX, 0.9999)):
        P = mp.mpf(p)
        mean = n * p
        for target in (-575, -690, -700):
            for side in (-1, 1):
                # bisect for k with ln pmf near the target on this side of the mean
                lo, hi = (0, int(mean)) if side < 0 else (int(mean), n)
                for _ in range(60):
                    mid = (lo + hi) // 2
                    v = mp.log(binomial_pmf(mid, n, P))
                    if (v > target) == (side < 0):
                        hi = mid
                    else:
                        lo = mid
                    if hi - lo <= 1:
                        break
                cases.append((lo if side > 0 else hi, n, p))
    seen = set()
    for k, n, p in cases:
        if not (0 <= k <= n) or (k, n, p) in seen:
            continue
        seen.add((k, n, p))
        v = float(binomial_pmf(k, n, p))
        if v < 2.2250738585072014e-308:
            continue
        rows.append((k, n, p, v))
    return rows


def binomial_tail_rows():
    rows = []
    for n in (1000, 1001, 54321, 1000000, 30000000, 989784036, INT_MAX):
        for mean in (0.01, 0.7, 3.3, 17.0, 49.9):
            p = mean / n
            P = mp.mpf(p)
            Q = 1 - P
            sd = math.sqrt(mean)
            ks = {0, 1, int(mean), int(mean) + 1, max(0, int(mean) - 1),
                  int(round(mean + 8 * sd)) + 1, int(round(mean + 25 * sd)) + 3,
                  max(0, int(round(mean - 6 * sd)))}
            for k in sorted(ks):
                if k > n:
                    continue
                first = binomial_pmf(k, n, P)
                lower, upper = sum_from(first, k, 0, n,
                                        lambda j: (n - j) * P / ((j + 1) * Q),
                                        lambda j: j * Q / ((n - j + 1) * P))
                rows.append((k, n, p, float(lower), float(upper), float(first)))
    return rows


def binomial_small_count_rows():
    """Every k at counts up to 31 (the routine sums point probabilities up to 30 trials where p
    and 1 - p are at least 1e-10), p on both sides of that limit and across (0, 1): both tails
    as exact sums of all the point probabilities."""
    rows = []
    for n in (1, 2, 7, 16, 29, 30, 31):
        for p in (1e-300, 1e-10, 9.9e-11, 1e-4, 0.1, 1 / 3, 0.5, 0.9, 0.9999, 1 - 1e-10,
                  1 - 9.9e-11, 1 - 2.0 ** -53):
            P = mp.mpf(p)
            Q = 1 - P
            terms = [mp.binomial(n, j) * P ** j * Q ** (n - j) for j in range(n + 1)]
            for k in range(n + 1):
                lower, upper = mp.fsum(terms[:k + 1]), mp.fsum(terms[k + 1:])
                rows.append((k, n, p, float(lower), float(upper), float(terms[k])))
    return rows


def poisson_density_rows():
    rows = []
    cases = []
    for lam in (120.0, 777.7, 10000.0, 2.5e6, 3.0e8):
        for r in (0.74, 0.75, 0.76, 1.49, 1.5, 1.51, 2.99, 3.01, 0.374, 0.376, 1e-3, 1.0):
            k = int(round(lam * r))
            if k <= INT_MAX:
                cases.append((k, lam))
    for lam in (150.0, 5000.0, 3.0e8, 1.9e9):
        for target in (-575, -690, -700):
            for side in (-1, 1):
                lo, hi = (0, int(lam)) if side < 0 else (int(lam), min(INT_MAX, int(lam) * 20 + 1000))
                while hi - lo > 1:
                    mid = (lo + hi) // 2
                    v = mp.log(poisson_pmf(mid, lam))
                    if (v > target) == (side < 0):
                        hi = mid
                    else:
                        lo = mid
                cases.append((lo if side > 0 else hi, lam))
    seen = set()
    for k, lam in cases:
        if (k, lam) in seen:
            continue
        seen.add((k, lam))
        v = float(poisson_pmf(k, lam))
        if v < 2.2250738585072014e-308:
            continue
        rows.append((k, lam, v))
    return rows


def hypergeometric_rows():
    rows = []
    for N, m, l in ((40, 13, 17), (1000, 500, 501), (1000, 30, 900), (100000, 49999, 50001),
                    (100000, 3000, 70000), (10000000, 2500000, 2000), (INT_MAX, 1000, 2000000),
                    (INT_MAX, 2147000000, 900)):
        lowest, highest = max(0, m + l - N), min(m, l)

        def lnc(a, b):
            return mp.loggamma(a + 1) - mp.loggamma(b + 1) - mp.loggamma(a - b + 1)

        mode = int(math.floor((m + 1) * (l + 1) / (N + 2)))
        mean = l * m / N
        sd = math.sqrt(l * m * (N - l) * (N - m) / (N * N * (N - 1)))
        ks = {mode - 2, mode - 1, mode, mode + 1, mode + 2, int(mean), int(mean) + 1,
              int(round(mean - 5 * sd)), int(round(mean + 5 * sd))}
        for k in sorted(ks):
            if not (lowest <= k <= highest):
                continue
            first = mp.exp(lnc(m, k) + lnc(N - m, l - k) - lnc(N, l))
            lower, upper = sum_from(
                first, k, lowest, highest,
                lambda x: mp.mpf((m - x) * (l - x)) / ((x + 1) * (N - m - l + x + 1)),
                lambda x: mp.mpf(x * (N - m - l + x)) / ((m - x + 1) * (l - x + 1)))
            rows.append((k, m, N, l, float(lower), float(upper), float(first)))
    return rows


def main():
    out = ["// Generated by tests/reference/gen_distributions_discrete_paths.py (mpmath, 60 digits).",
           "// Do not edit by hand.",
           "#pragma once",
           "",
           "namespace ref_discrete_paths {",
           "struct BinomialDensity { int k; int n; double p; double point; };",
           "struct BinomialTails { int k; int n; double p; double lower; double upper; double point; };",
           "struct PoissonDensity { int k; double lambda; double point; };",
           "struct HypergeometricTails { int k; int m; int n; int l; double lower; double upper; "
           "double point; };"]

    def table(name, typ, rows, fmt):
        out.append(f"inline constexpr {typ} {name}[] = {{")
        for r in rows:
            out.append("    {" + ", ".join(fmt(r)) + "},")
        out.append("};")

    table("kBinomialDensity", "BinomialDensity", binomial_density_rows(),
          lambda r: [str(r[0]), str(r[1]), d(r[2]), d(r[3])])
    table("kBinomialTails", "BinomialTails", binomial_tail_rows(),
          lambda r: [str(r[0]), str(r[1]), d(r[2]), d(r[3]), d(r[4]), d(r[5])])
    table("kBinomialSmallCount", "BinomialTails", binomial_small_count_rows(),
          lambda r: [str(r[0]), str(r[1]), d(r[2]), d(r[3]), d(r[4]), d(r[5])])
    table("kPoissonDensity", "PoissonDensity", poisson_density_rows(),
          lambda r: [str(r[0]), d(r[1]), d(r[2])])
    table("kHypergeometricTails", "HypergeometricTails", hypergeometric_rows(),
          lambda r: [str(r[0]), str(r[1]), str(r[2]), str(r[3]), d(r[4]), d(r[5]), d(r[6])])
    out.append("}  // namespace ref_discrete_paths")
    with open(OUT, "w") as fh:
        fh.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
