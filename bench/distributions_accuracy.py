#!/usr/bin/python3
"""Worst relative error of the central distribution functions, of Boost.Math evaluating in
double and of GSL, against mpmath (40 digits), on the arguments distributions_bench times.

    build/release/bench/distributions_bench --dump=/tmp/dist_dump.txt
    /usr/bin/python3 bench/distributions_accuracy.py /tmp/dist_dump.txt [count]

The deviates' references are roots of the mpmath cdf found by the secant method from the
value under test (40 digits, so the start does not bias the root). A non-finite value where
the reference is finite counts as an error of 1.
"""
import math
import sys

import mpmath as mp

mp.mp.dps = 40


def t_cdf(t, df):
    t, df = mp.mpf(t), mp.mpf(df)
    half = mp.betainc(df / 2, mp.mpf(1) / 2, 0, df / (df + t * t), regularized=True) / 2
    return half if t < 0 else 1 - half


def f_cdf(f, d1, d2):
    f, d1, d2 = mp.mpf(f), mp.mpf(d1), mp.mpf(d2)
    return mp.betainc(d1 / 2, d2 / 2, 0, d1 * f / (d1 * f + d2), regularized=True)


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


def reference(fn, u, v, w, start):
    if fn in CDF:
        return CDF[fn](u, v, w)
    cdf = CDF[INVERSE_OF[fn]]
    p = mp.mpf(u)
    x0 = mp.mpf(start)
    # The second secant point below the start: a beta deviate may sit next to 1.
    return mp.findroot(lambda x: cdf(x, v, w) - p, (x0, x0 * (1 - mp.mpf(10) ** -9)),
                       solver="secant", tol=mp.mpf(10) ** -36, maxsteps=200)


def rel(got, ref):
    if not math.isfinite(got):
        return 1.0
    return float(abs(mp.mpf(got) - ref) / max(abs(ref), mp.mpf(2.2250738585072014e-308)))


def main():
    path = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 10**9
    worst = {}
    seen = {}
    for line in open(path):
        fields = line.split()
        fn = fields[0]
        u, v, w, ours, boostd, gsl, boost = map(float, fields[1:])
        seen[fn] = seen.get(fn, 0) + 1
        if seen[fn] > count:
            continue
        start = next((s for s in (boost, ours, boostd) if math.isfinite(s) and s != 0), None)
        if start is None or (fn == "betainv" and start == 1.0):
            continue  # a beta deviate within half an ulp of 1 is 1 for all (no finite-precision root)
        try:
            ref = reference(fn, u, v, w, start)
        except Exception:  # no root found: leave the point out
            continue
        entry = worst.setdefault(fn, [0.0, 0.0, 0.0, 0, ""])
        for k, got in enumerate((ours, boostd, gsl)):
            e = rel(got, ref) if not (k == 2 and math.isnan(gsl)) else 0.0
            if e > entry[k]:
                entry[k] = e
                if k == 0:
                    entry[4] = f"({u!r}, {v!r}, {w!r})"
        entry[3] += 1
    print(f"{'function':10s} {'cases':>6s} {'ours':>10s} {'boost-d':>10s} {'gsl':>10s}  ours worst at")
    for fn, (o, b, g, n, where) in worst.items():
        print(f"{fn:10s} {n:6d} {o:10.2e} {b:10.2e} {g:10.2e}  {where}")


if __name__ == "__main__":
    main()
