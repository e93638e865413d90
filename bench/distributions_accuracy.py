#!/usr/bin/python3
"""Worst relative error of the distribution functions, of Boost.Math evaluating in double
and of GSL, against mpmath (40 digits or more), on the arguments the benchmarks time.

    build/release/bench/distributions_bench --dump=/tmp/dist_dump.txt
    build/release/bench/distributions_other_bench --dump=/tmp/dist_other_dump.txt
    build/release/bench/distributions_noncentral_bench --dump=/tmp/dist_nc_dump.txt
    /usr/bin/python3 bench/distributions_accuracy.py DUMP [count]

A dump line is the function's name, its arguments (three or four) and four values: ours,
Boost-in-double, GSL (NaN where GSL has no such function) and Boost's default policy.
Up to `count` lines per function are compared.

References:
  central cdfs     mpmath ncdf, gammainc, betainc (t and F through betainc);
  central deviates roots of the mpmath cdf found by the secant method from the value under
                   test (40 digits, so the start does not bias the root);
  binomial         P(X <= k) = I_(1-p)(n-k, k+1), P(X > k) = I_p(k+1, n-k) (mpmath betainc)
                   up to n = 20000; beyond, where betainc's series does not converge, the
                   point probabilities summed outward from k by the exact ratio of consecutive
                   ones (the other tail as 1 minus that sum); P(X = k) = C(n, k) p^k (1-p)^(n-k);
  Poisson          P(X <= k) = Q(k+1, lambda), P(X > k) = P(k+1, lambda) (mpmath gammainc),
                   P(X = k) = e^-lambda lambda^k / k!;
  hypergeometric   the point probabilities summed outward from k (the tail on k's side of
                   the mode; the other as 1 minus it), each from the previous one by the exact
                   ratio (m-j)(l-j) / ((j+1)(N-m-l+j+1)), the first from binomial coefficients
                   (exact integers up to populations of 5000, mpmath log-gamma beyond);
  non-central      the Poisson-weighted series of tests/reference/gen_distributions_other.py
                   (t: Guenther's series with the precision raised by the digits it cancels;
                   chi-square, beta, F: mixtures of gammainc / betainc at 50 digits).

Reported per function and per side (ours, Boost-in-double, GSL): the worst relative error
(below the normal range: the absolute error in units of DBL_MIN), the arguments where it
occurs, and the count of answers that are non-finite, or zero where the reference is a
normal double (each such answer also counts as an error of 1).
"""
import math
import os
import sys
from fractions import Fraction

import mpmath as mp

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests",
                                "reference"))
import gen_distributions_other as other  # noqa: E402  (the non-central series)

DPS = 40
mp.mp.dps = DPS


def t_cdf(t, df):
    t, df = mp.mpf(t), mp.mpf(df)
    half = mp.betainc(df / 2, mp.mpf(1) / 2, 0, df / (df + t * t), regularized=True) / 2
    return half if t < 0 else 1 - half


def f_cdf(f, d1, d2):
    f, d1, d2 = mp.mpf(f), mp.mpf(d1), mp.mpf(d2)
    if d1 * f <= d2:
        return mp.betainc(d1 / 2, d2 / 2, 0, d1 * f / (d1 * f + d2), regularized=True)
    # x = d1 f / (d1 f + d2) near 1 would round to 1 at the working precision (f = 1e81):
    # the upper tail from 1 - x = d2 / (d1 f + d2) instead.
    return 1 - mp.betainc(d2 / 2, d1 / 2, 0, d2 / (d1 * f + d2), regularized=True)


CDF = {
    "normcdf": lambda x, a, b: mp.ncdf(x),
    "tcdf": lambda x, a, b: t_cdf(x, a),
    "chi2cdf": lambda x, a, b: mp.gammainc(mp.mpf(a) / 2, 0, mp.mpf(x) / 2, regularized=True),
    "gamcdf": lambda x, a, b: mp.gammainc(a, 0, mp.mpf(x) / b, regularized=True),
    "betacdf": lambda x, a, b: mp.betainc(a, b, 0, x, regularized=True),
    "fcdf": lambda x, a, b: f_cdf(x, a, b),
}
INVERSE_OF = {"norminv": "normcdf", "tinv": "tcdf", "chi2inv": "chi2cdf", "gaminv": "gamcdf",
              "betainv": "betacdf", "finv": "fcdf"}


# ---- discrete laws ------------------------------------------------------------------------

def binomial_tails(k, n, p):
    k, n = int(k), int(n)
    if k >= n:
        return mp.mpf(1), mp.mpf(0)
    p = mp.mpf(p)
    if n <= 20000:
        lower = mp.betainc(n - k, k + 1, 0, 1 - p, regularized=True)
        upper = mp.betainc(k + 1, n - k, 0, p, regularized=True)
        return lower, upper
    # mpmath's betainc (a hypergeometric series) does not converge at such shapes: the point
    # probabilities summed outward from k, each from the previous one by the exact ratio.
    q = 1 - p
    mode = int((n + 1) * p)
    negligible = mp.mpf(10) ** (-DPS - 5)

    def walk(j, step):
        term = mp.binomial(n, j) * p**j * q**(n - j)
        total = term
        while 0 <= j + step <= n:
            term *= (n - j) * p / ((j + 1) * q) if step > 0 else j * q / ((n - j + 1) * p)
            j += step
            total += term
            if (j > mode if step > 0 else j < mode) and term < negligible * total:
                break
        return total

    if k <= mode:
        lower = walk(k, -1)
        return lower, 1 - lower
    upper = walk(k + 1, +1)
    return 1 - upper, upper


def binomial_point(k, n, p):
    k, n, p = int(k), int(n), mp.mpf(p)
    return mp.binomial(n, k) * p**k * (1 - p)**(n - k)


def poisson_tails(k, lam):
    a, lam = int(k) + 1, mp.mpf(lam)
    return (mp.gammainc(a, lam, mp.inf, regularized=True),
            mp.gammainc(a, 0, lam, regularized=True))


def poisson_point(k, lam):
    k, lam = int(k), mp.mpf(lam)
    return mp.exp(k * mp.log(lam) - lam - mp.loggamma(k + 1))


def hypergeometric_tails(k, m, N, l):
    """P(X <= k), P(X > k) for X the marked items in a sample of l from N with m marked."""
    k, m, N, l = int(k), int(m), int(N), int(l)
    lo, hi = max(0, m + l - N), min(m, l)
    if k >= hi:
        return mp.mpf(1), mp.mpf(0)
    mode = min(max((m + 1) * (l + 1) // (N + 2), lo), hi)
    exact = N <= 5000

    def first(j):
        if exact:
            return Fraction(math.comb(m, j) * math.comb(N - m, l - j), math.comb(N, l))
        return mp.exp(mp.loggamma(m + 1) - mp.loggamma(j + 1) - mp.loggamma(m - j + 1)
                      + mp.loggamma(N - m + 1) - mp.loggamma(l - j + 1)
                      - mp.loggamma(N - m - l + j + 1) - mp.loggamma(N + 1)
                      + mp.loggamma(l + 1) + mp.loggamma(N - l + 1))

    def ratio_up(j):  # P(j+1) / P(j)
        return Fraction((m - j) * (l - j), (j + 1) * (N - m - l + j + 1))

    def walk(start, step, stop):
        term = first(start)
        total = term
        negligible = mp.mpf(10) ** (-DPS - 5)
        j = start
        while j != stop:
            if step > 0:
                r = ratio_up(j)
            else:
                r = 1 / ratio_up(j - 1)
            term = term * r if exact else term * mp.mpf(r.numerator) / r.denominator
            j += step
            total += term
            beyond_mode = j > mode if step > 0 else j < mode
            if not exact and beyond_mode and term < negligible * total:
                break
        return mp.mpf(total.numerator) / total.denominator if exact else total

    if k <= mode:
        lower = walk(k, -1, lo)
        return lower, 1 - lower
    upper = walk(k + 1, +1, hi)
    return 1 - upper, upper


def lower_upper(tails, index):
    return lambda *a: tails(*a)[index]


# ---- non-central laws -----------------------------------------------------------------------

def ncf_lower(f, d1, d2, lam):
    mp.mp.dps = 50
    F, D1, D2 = mp.mpf(f), mp.mpf(d1), mp.mpf(d2)
    return other.ncbeta_lower_mp(D1 * F / (D1 * F + D2), D1 / 2, D2 / 2, mp.mpf(lam))


def ncbeta_lower(x, a, b, lam):
    mp.mp.dps = 50
    return other.ncbeta_lower_mp(mp.mpf(x), mp.mpf(a), mp.mpf(b), mp.mpf(lam))


DIRECT = {
    "binocdf": lower_upper(binomial_tails, 0),
    "binocdf_upper": lower_upper(binomial_tails, 1),
    "binocdf_limit": lower_upper(binomial_tails, 0),
    "binocdf_limit_upper": lower_upper(binomial_tails, 1),
    "binopdf": binomial_point,
    "poisscdf": lambda k, lam: poisson_tails(k, lam)[0],
    "poisscdf_upper": lambda k, lam: poisson_tails(k, lam)[1],
    "poisspdf": lambda k, lam, _unused=0: poisson_point(k, lam),
    "hygecdf": lower_upper(hypergeometric_tails, 0),
    "hygecdf_upper": lower_upper(hypergeometric_tails, 1),
    "nctcdf": other.nct_lower,
    "ncchi2cdf": other.ncchi2_lower,
    "ncfcdf": ncf_lower,
    "ncbetacdf": ncbeta_lower,
}
NO_GSL = {"nctcdf", "ncchi2cdf", "ncfcdf", "ncbetacdf"}
# The arguments each dumped function takes (the dump writes at least three).
ARITY = {"poisscdf": 2, "poisscdf_upper": 2, "poisspdf": 2}


def reference(fn, args, start):
    mp.mp.dps = DPS
    if fn in DIRECT:
        value = DIRECT[fn](*args[:ARITY.get(fn, len(args))])
        mp.mp.dps = DPS
        return +value
    if fn in CDF:
        return CDF[fn](*args)
    cdf = CDF[INVERSE_OF[fn]]
    u, v, w = args
    p = mp.mpf(u)
    x0 = mp.mpf(start)
    # The second secant point below the start: a beta deviate may sit next to 1.
    return mp.findroot(lambda x: cdf(x, v, w) - p, (x0, x0 * (1 - mp.mpf(10) ** -9)),
                       solver="secant", tol=mp.mpf(10) ** -36, maxsteps=200)


DBL_MIN = mp.mpf(2.2250738585072014e-308)


def wrong_zero(got, ref):
    """A non-finite answer, or 0 where the reference is a normal double."""
    return not math.isfinite(got) or (got == 0 and abs(ref) >= DBL_MIN)


def rel(got, ref):
    """Relative error; below the normal range, absolute in units of DBL_MIN."""
    if wrong_zero(got, ref):
        return 1.0
    return float(abs(mp.mpf(got) - ref) / max(abs(ref), DBL_MIN))


def number(v):
    return repr(int(v)) if v == int(v) and abs(v) < 2**53 else repr(v)


def main():
    path = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 10**9
    sides = ("ours", "boost-d", "gsl")
    worst = {}
    seen = {}
    for line in open(path):
        fields = line.split()
        fn = fields[0]
        args = [float(x) for x in fields[1:-4]]
        ours, boostd, gsl, boost = map(float, fields[-4:])
        seen[fn] = seen.get(fn, 0) + 1
        if seen[fn] > count:
            continue
        start = None
        if fn in INVERSE_OF:
            start = next((s for s in (boost, ours, boostd) if math.isfinite(s) and s != 0), None)
            if start is None or (fn == "betainv" and start == 1.0):
                continue  # a beta deviate within half an ulp of 1 is 1 for all (no finite root)
        try:
            ref = reference(fn, args, start)
        except Exception:  # no root found: leave the point out
            continue
        if not mp.isfinite(ref):
            continue
        entry = worst.setdefault(fn, {"n": 0, "err": [0.0] * 3, "at": [""] * 3, "bad": [0] * 3})
        for k, got in enumerate((ours, boostd, gsl)):
            if k == 2 and fn in NO_GSL:
                continue
            e = rel(got, ref)
            if wrong_zero(got, ref):
                entry["bad"][k] += 1
            if e > entry["err"][k]:
                entry["err"][k] = e
                entry["at"][k] = "(" + ", ".join(number(a) for a in args) + ")"
        entry["n"] += 1
    print(f"{'function':15s} {'cases':>5s} " + " ".join(f"{s:>9s}" for s in sides)
          + "  bad (ours/boost-d/gsl)")
    for fn, e in worst.items():
        errs = [f"{x:9.2e}" for x in e["err"]]
        bad = [str(b) for b in e["bad"]]
        if fn in NO_GSL:
            errs[2], bad[2] = f"{'-':>9s}", "-"
        print(f"{fn:15s} {e['n']:5d} {' '.join(errs)}  {'/'.join(bad)}")
    print("\nworst at (arguments in the export's order):")
    for fn, e in worst.items():
        for k, side in enumerate(sides):
            if e["at"][k] and not (k == 2 and fn in NO_GSL):
                print(f"  {fn:15s} {side:8s} {e['err'][k]:9.2e} at {e['at'][k]}")


if __name__ == "__main__":
    main()
