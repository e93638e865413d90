#!/usr/bin/python3
"""Reference values of the non-central t, beta and F lower tails around the switch points of
their double evaluations (platform/numeric/noncentral_t.cpp, noncentral_beta.cpp):

  t     |delta| up to and past the double path's limit 40, df up to and past 2000 (the
        double incomplete beta's shape limit 1000), both signs of t and delta (the one-sign
        forms and the mixed-sign ones, t < 0 < delta down to where the series cancels),
        points from the far lower tail to the far upper one; plus arguments drawn as the
        non-central benchmark draws them (fixed seed).
  beta  lambda up to and past the double path's limit 1600, shapes near 1000 and tiny,
        x across the body, far lower tail and near 1; plus benchmark-like draws.
  F     the same through x = df1 f / (df1 f + df2) (formed here exactly).

Every value is a 50-digit mpmath series (60 for the t rows, raised by the digits a
mixed-sign t series cancels): the non-central t's Poisson-weighted incomplete beta series of
both parities, the beta and F mixtures; the central terms by downward recurrence
I_x(s, b) = I_x(s + 1, b) + d(s), d(s) = d(s + 1) (s + 1)/(x (s + b)), from one mpmath
betainc and one closed-form d at the top index L + 60 sqrt(L) + 100 (positive additions
only; the recurrence's rounding at 50 digits stays below 1e-45 over the few thousand
steps), the Poisson weights by their ratios from e^-L. Values below 1e-300 are left out.

Writes tests/reference/noncentral_double_ref.inc: {x, p1, p2, p3, P, body}; t rows use
(t, df, delta), beta rows (x, a, b, lambda), F rows (f, df1, df2, lambda); body = 1 where
the double evaluation is expected to answer (every parameter inside its range, one-sign
series, starting shape below 900, P above 1e-250 and, for beta and F, not rounding to 1:
there the complement's prefactor can leave the double range and the kernel declines).
Run: /usr/bin/python3 tests/reference/gen_noncentral_double.py   (a few minutes)
"""
import math
import os
import random
import sys

import mpmath as mp



def betainc_top(a, b, x):
    try:
        return mp.betainc(a, b, 0, x, regularized=True)
    except ValueError:  # mpmath's series trouble near x = 1
        return 1 - mp.betainc(b, a, 0, 1 - x, regularized=True)


def central_chain(a0, b, x, jmax):
    """[I_x(a0 + j, b) for j = 0..jmax] by downward recurrence from the top."""
    vals = [None] * (jmax + 1)
    v = betainc_top(a0 + jmax, b, x)
    vals[jmax] = v
    s = a0 + jmax - 1
    d = mp.exp(s * mp.log(x) + b * mp.log1p(-x) + mp.loggamma(s + b) - mp.loggamma(s + 1)
               - mp.loggamma(b))
    for j in range(jmax - 1, -1, -1):
        v = v + d
        vals[j] = v
        s = a0 + j - 1
        if j > 0:
            d = d * (s + 1) / (x * (s + b))
    return vals


def mixture(lam, a, b, x):
    """sum_j e^-(lam/2) (lam/2)^j / j! I_x(a + j, b), x, a, b, lam as mpf."""
    half = lam / 2
    jmax = int(half + 60 * mp.sqrt(half + 1) + 100)
    cs = central_chain(a, b, x, jmax)
    total, w = mp.mpf(0), mp.exp(-half)
    for j in range(jmax + 1):
        if j > 0:
            w = w * half / j
        total += w * cs[j]
    return total


def ncdf(z):
    return mp.erfc(-z / mp.sqrt(2)) / 2


def nct_series(t, df, delta, dps):
    mp.mp.dps = dps
    T, V, D = mp.mpf(t), mp.mpf(df), mp.mpf(delta)
    flip = T < 0
    if flip:
        T, D = -T, -D
    x = T * T / (T * T + V)
    b = V / 2
    L = D * D / 2
    jmax = int(L + 60 * mp.sqrt(L + 1) + 100)
    A = central_chain(mp.mpf(1) / 2, b, x, jmax)
    B = central_chain(mp.mpf(1), b, x, jmax)
    total, pj = mp.mpf(0), mp.exp(-L)
    qj = D * pj / (mp.sqrt(2) * mp.gamma(mp.mpf(3) / 2))
    for j in range(jmax + 1):
        if j > 0:
            pj = pj * L / j
            qj = qj * L / (j + mp.mpf(1) / 2)
        total += pj * A[j] + qj * B[j]
    value = ncdf(-D) + total / 2
    return 1 - value if flip else value


def nct_lower(t, df, delta):
    first = nct_series(t, df, delta, 60)
    if first <= 0:
        return mp.mpf(0)
    lost = max(0, int(-mp.log10(first)))
    return nct_series(t, df, delta, 60 + lost) if lost > 5 else first


def ncbeta_lower_mp(x, a, b, lam):
    return mixture(lam, a, b, x)


OUT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "noncentral_double_ref.inc")


def d(x):
    x = float(x)
    return "0.0" if x == 0.0 else repr(x)


def nct_body(t, df, delta):
    L = delta * delta / 2
    top = L + 9 * math.sqrt(L + 1) + 5
    one_sign = (t > 0 and delta >= 0) or (t < 0 and delta <= 0)
    return int(abs(delta) <= 36 and df <= 2000 and top < 900 and one_sign)


def t_rows():
    rows = []
    for df in [1.0, 3.7, 30.0, 1999.0, 2001.0]:
        for delta in [-39.0, -12.5, -2.0, 0.0, 0.7, 3.0, 12.5, 39.0, 40.5]:
            sd = 1 + abs(delta) / math.sqrt(df)
            ts = {delta - 8 * sd, delta - 3 * sd, delta - sd, delta, delta + sd, delta + 3 * sd,
                  delta + 10 * sd, -0.5, 0.5, 1e-3, -1e-3}
            for t in sorted(ts):
                # t < 0 < delta past the series' floor: there the routine integrates (the
                # double series declines), and the series would need hundreds of digits.
                if t == 0.0 or (t < 0 < delta and delta > 3.0):
                    continue
                v = nct_lower(t, df, delta)
                if v < mp.mpf("1e-300"):
                    continue
                rows.append((t, df, delta, v, nct_body(t, df, delta) and v > mp.mpf("1e-250")))
    # As the benchmark draws them.
    rng = random.Random(20240611)
    for _ in range(100):
        spread = -4 + 8 * rng.random()
        df = 1000.0 ** rng.random()
        delta = -5 + 15 * rng.random()
        t = delta + spread * (1 + abs(delta) / math.sqrt(df))
        v = nct_lower(t, df, delta)
        if v < mp.mpf("1e-300"):
            continue
        rows.append((t, df, delta, v, nct_body(t, df, delta) and v > mp.mpf("1e-250")))
    return rows


def beta_body(a, b, lam, v):
    h = lam / 2
    top = h + 9 * math.sqrt(h + 1) + 5
    return int(lam <= 1600 and b <= 1000 and a + top < 900 and v > mp.mpf("1e-250")
               and float(v) < 1.0)


def beta_rows():
    rows = []
    for a, b in [(0.5, 0.5), (3.0, 1.0), (1e-6, 4.0), (40.0, 999.0), (700.0, 2.5), (2.0, 1001.0)]:
        for lam in [0.3, 45.0, 400.0, 1590.0, 1610.0]:
            for x in [1e-200, 1e-9, 0.02, 0.5, 0.93, 0.999, 1 - 1e-9]:
                mp.mp.dps = 50
                v = ncbeta_lower_mp(mp.mpf(x), mp.mpf(a), mp.mpf(b), mp.mpf(lam))
                if v < mp.mpf("1e-300"):
                    continue
                rows.append((x, a, b, lam, v, beta_body(a, b, lam, v)))
    rng = random.Random(20240612)
    for _ in range(60):
        a, b = 100.0 ** rng.random(), 100.0 ** rng.random()
        lam = 0.1 * 1000.0 ** rng.random()
        x = 1 / (1 + math.exp(-(-4 + 8 * rng.random())))
        mp.mp.dps = 50
        v = ncbeta_lower_mp(mp.mpf(x), mp.mpf(a), mp.mpf(b), mp.mpf(lam))
        if v >= mp.mpf("1e-300"):
            rows.append((x, a, b, lam, v, beta_body(a, b, lam, v)))
    return rows


def f_value(fv, df1, df2, lam):
    mp.mp.dps = 50
    F, D1, D2 = mp.mpf(fv), mp.mpf(df1), mp.mpf(df2)
    return ncbeta_lower_mp(D1 * F / (D1 * F + D2), D1 / 2, D2 / 2, mp.mpf(lam))


def f_rows():
    rows = []
    for df1, df2 in [(1.0, 1.0), (2.0, 20.0), (0.3, 1999.0), (1999.0, 7.0), (60.0, 2003.0)]:
        for lam in [0.3, 45.0, 400.0, 1590.0, 1610.0]:
            for fv in [1e-30, 1e-5, 0.1, 0.9, 1.0 + lam / df1, 3.0 * (1.0 + lam / df1), 1e4]:
                v = f_value(fv, df1, df2, lam)
                if v < mp.mpf("1e-300"):
                    continue
                rows.append((fv, df1, df2, lam, v, beta_body(df1 / 2, df2 / 2, lam, v)))
    rng = random.Random(20240613)
    for _ in range(60):
        df1, df2 = 100.0 ** rng.random(), 100.0 ** rng.random()
        lam = 0.1 * 1000.0 ** rng.random()
        fv = (1 + lam / df1) * math.exp((-4 + 8 * rng.random()) / 2)
        v = f_value(fv, df1, df2, lam)
        if v >= mp.mpf("1e-300"):
            rows.append((fv, df1, df2, lam, v, beta_body(df1 / 2, df2 / 2, lam, v)))
    return rows


def main():
    lines = ["// Generated by gen_noncentral_double.py; do not edit.", "#pragma once", "",
             "// Non-central t (t, df, delta), beta (x, a, b, lambda) and F (f, df1, df2, lambda)",
             "// lower tails: {arguments, P, body}; t rows leave the fourth argument 0.",
             "struct NoncentralDoubleRow { double x, p1, p2, p3, p; int body; };"]
    for name, rows in [("kNoncentralTDouble", t_rows), ("kNoncentralBetaDouble", beta_rows),
                       ("kNoncentralFDouble", f_rows)]:
        got = rows()
        lines.append("inline constexpr NoncentralDoubleRow %s[] = {" % name)
        for r in got:
            args = list(r[:-2]) + ([0.0] if len(r) == 5 else [])
            lines.append("    {%s, %s, %d}," % (", ".join(d(a) for a in args), mp.nstr(r[-2], 20),
                                                int(r[-1])))
        lines.append("};")
        print(name, len(got), "rows", file=sys.stderr)
    with open(OUT, "w") as fh:
        fh.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
