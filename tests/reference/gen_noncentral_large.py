#!/usr/bin/python3
"""Reference values of the non-central chi-square, beta and F lower tails at large degrees of
freedom and shapes (up to the laws' limits: chi-square degrees of freedom 1e10, F 8e9, beta
shapes 4e9), with x near the mean (where the mixtures' central terms sit in the body of
their laws) and a few standard deviations out, and non-centralities from subnormal to 1e4.

Every value is a 60-digit mpmath sum of the Poisson mixture sum_j w_j C(j), w_j = e^-h h^j
/ j!, h = lambda/2, over the weights above 1e-40; the central terms C(j) = I_x(a + j, b)
(beta, F) or P(a + j, y) (chi-square) by the downward recurrences
I_x(s, b) = I_x(s + 1, b) + x^s y^b / (s B(s, b)) and P(s, y) = P(s + 1, y) + y^s e^-y /
Gamma(s + 1) (positive additions) from one incomplete beta or gamma at the top index
(gen_distributions_central.py's continued fractions and series at 60 digits). The F rows'
x = df1 f / (df1 f + df2) and 1 - x are formed exactly from the double f.

Writes tests/reference/noncentral_large_ref.inc: {kind, {p0, p1, p2, p3}, P} with kind 0 chi-square
(x, df, lambda, 0), 1 beta (x, a, b, lambda), 2 F (f, df1, df2, lambda).
Also (--nct) the non-central t at df from 1e6 to 1e300 by the integral over its scale law, into
tests/reference/noncentral_t_huge_df_ref.inc: {t, df, delta, P}.
Run: /usr/bin/python3 tests/reference/gen_noncentral_large.py   (a few minutes)
     /usr/bin/python3 tests/reference/gen_noncentral_large.py --nct
     /usr/bin/python3 tests/reference/gen_noncentral_large.py --check path/to/libzemath.so
         (times a built library's calls on the table's rows and compares them with it)
"""
import ctypes
import math
import os
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import mpmath as mp  # noqa: E402

import gen_distributions_central as central  # noqa: E402

mp.mp.dps = 60
MPF = mp.mpf


def weights(lam):
    """[(j, w_j)] for the Poisson weights above 1e-40 (none below it matter at 1e-17)."""
    h = MPF(lam) / 2
    if h == 0:
        return [(0, MPF(1))]
    j0 = int(h)
    out = []
    span = int(60 * math.sqrt(float(h)) + 100)
    for j in range(max(0, j0 - span), j0 + span):
        w = mp.exp(-h + j * mp.log(h) - mp.loggamma(j + 1))
        if w < MPF(10) ** -40:
            if j > j0:
                break
            continue
        out.append((j, w))
    return out


def ncbeta(a, b, x, y, lam):
    a, b = MPF(a), MPF(b)
    js = weights(lam)
    jmax = js[-1][0]
    v, _ = central.ibeta(a + jmax, b, x, y)
    vals = {jmax: v}
    lnx, lny = mp.log(x), mp.log(y)
    for j in range(jmax - 1, -1, -1):
        s = a + j
        v = v + mp.exp(s * lnx + b * lny + mp.loggamma(s + b) - mp.loggamma(s + 1) - mp.loggamma(b))
        vals[j] = v
    return sum(w * vals[j] for j, w in js)


def ncchi2(x, df, lam):
    a, y = MPF(df) / 2, MPF(x) / 2
    js = weights(lam)
    jmax = js[-1][0]
    v, _ = central.igamma(a + jmax, y)
    vals = {jmax: v}
    lny = mp.log(y)
    for j in range(jmax - 1, -1, -1):
        s = a + j
        v = v + mp.exp(s * lny - y - mp.loggamma(s + 1))
        vals[j] = v
    return sum(w * vals[j] for j, w in js)


def ncf(f, d1, d2, lam):
    num = MPF(d1) * MPF(f)
    den = num + MPF(d2)
    return ncbeta(MPF(d1) / 2, MPF(d2) / 2, num / den, MPF(d2) / den, lam)


LAMBDAS = [0.0, 1e-3, 1.0, 30.0, 1000.0, 1e4]


def rows():
    """(kind, args): x near the mean, z standard deviations out."""
    out = []
    for df in [1e3, 3e3, 1e5, 1e8, 1e10]:
        for lam in LAMBDAS:
            sd = math.sqrt(2 * df + 4 * lam)
            for z in [-6, 0, 6]:
                out.append((0, (df + lam + z * sd, df, lam, 0.0)))
    for a, b in [(1e3, 1e3), (1e4, 1e4), (1e6, 1e6), (1e8, 1e8), (4e9, 4e9), (3, 1e6), (3, 1e9),
                 (1e6, 3), (1e9, 3), (1e5, 1e9)]:
        for lam in LAMBDAS:
            # The mean and spread of the mixture's bulk: shape a + lambda/2.
            ah = a + lam / 2
            m = ah / (ah + b)
            sd = math.sqrt(ah * b / ((ah + b) ** 2 * (ah + b + 1)))
            for z in [-6, 0, 6]:
                x = m + z * sd
                if 0 < x < 1:
                    out.append((1, (x, a, b, lam)))
    for d1, d2 in [(1e4, 1e4), (1e8, 1e8), (8e9, 8e9), (5, 8e9), (8e9, 5), (2e3, 1e9)]:
        for lam in LAMBDAS + [1.4015357800167431e-309]:
            sd = math.sqrt(2 / d1 + 2 / d2 + 4 * lam / d1 ** 2)
            for z in [-5, 0, 5]:
                out.append((2, (math.exp(z * sd) * (1 + lam / d1), d1, d2, lam)))
    return out


def reference(kind, p):
    if kind == 0:
        return ncchi2(p[0], p[1], p[2])
    if kind == 1:
        x = MPF(p[0])
        return ncbeta(p[1], p[2], x, 1 - x, p[3])
    return ncf(*p)


def check(path):
    """Times a built library's calls on the table's rows (best of three) and compares."""
    lib = ctypes.CDLL(path)
    fns = {}
    for kind, name, k in [(0, 'ncchi2cdf', 3), (1, 'ncbetacdf', 4), (2, 'ncfcdf', 4)]:
        fn = getattr(lib, name)
        fn.restype = ctypes.c_double
        fn.argtypes = [ctypes.c_double] * k + [ctypes.POINTER(ctypes.c_int)]
        fns[kind] = (name, fn, k)
    table = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'noncentral_large_ref.inc')
    worst = {}
    for line in open(table):
        if not line.startswith('    {'):
            continue
        vals = [float(v) for v in line.strip().strip('{},').split(',')]
        kind, p, r = int(vals[0]), vals[1:5], vals[5]
        name, fn, k = fns[kind]
        times = []
        for _ in range(3):
            st = ctypes.c_int(-7)
            t0 = time.perf_counter()
            v = fn(*p[:k], ctypes.byref(st))
            times.append((time.perf_counter() - t0) * 1e3)
        ms = min(times)
        e = abs(v - r) / r if st.value == 0 else float('nan')
        w = worst.setdefault(name, [0.0, 0.0, 0])
        if st.value == 0:
            w[0] = max(w[0], e)
        else:
            w[2] += 1
        w[1] = max(w[1], ms)
        flag = '  <<<' if not (e <= 1e-13) or ms > 3 else ''
        print(f"{name}{tuple(p[:k])} {v:.17g} st {st.value} {ms:.3f} ms ref {r:.17g} "
              f"rel {e:.2e}{flag}", flush=True)
    for name, (e, ms, refused) in worst.items():
        print(f"{name}: worst rel {e:.2e}, worst time {ms:.3f} ms, refused {refused}")


def ref_line(row):
    kind, p = row
    r = reference(kind, p)
    if not (MPF(10) ** -300 < r):
        return None
    args = ', '.join(repr(float(v)) for v in p)
    return f"    {{{kind}, {{{args}}}, {mp.nstr(r, 20, min_fixed=1, max_fixed=0)}}},"


def nct(t, df, delta):
    """P(T <= t) = E[Phi(t S - delta)], S = sqrt(chi2_df / df), at 40 digits: in y = ln S =
    z / (2 sqrt(k)), k = df/2, the density 2 k^k e^(2ky - k e^(2y)) / Gamma(k) as
    exp(ln 2 + ln(k / (2 pi))/2 - mu(k) - k (e^(2y) - 1 - 2y)) (mu Stirling's error term, its
    series ample for k >= 5e5; e^(2y) - 1 - 2y by its own series for small y), integrated over
    z in [-40, 40] with panels refined around the step of Phi at t S = delta."""
    with mp.workdps(40):
        T, D, k = MPF(t), MPF(delta), MPF(df) / 2
        c0 = mp.log(2) + mp.log(k / (2 * mp.pi)) / 2 - (1 / (12 * k) - 1 / (360 * k ** 3))
        sk = mp.sqrt(k)

        def g(y):
            u = 2 * y
            if abs(u) > 0.01:
                return mp.expm1(u) - u
            total, term, n = 0, u, 1
            while True:
                n += 1
                term = term * u / n
                total += term
                if abs(term) < abs(total) * MPF(10) ** -45:
                    return total

        def f(z):
            y = z / (2 * sk)
            return mp.exp(c0 - k * g(y)) / (2 * sk) * mp.ncdf(T * mp.expm1(y) + (T - D))

        pts = set(float(v) for v in mp.linspace(-40, 40, 41))
        if T != 0 and D / T > 0:
            z0, w = mp.log(D / T) * 2 * sk, 2 * sk / abs(T)
            pts.update(float(z0 + w * j / 2) for j in range(-30, 31) if -40 < z0 + w * j / 2 < 40)
        return mp.quad(f, sorted(pts))


def nct_rows():
    out = []
    for df in [1e6, 1e8, 1e10, 1e12, 1e20, 1e300]:
        for delta in [0.0, 1.0, -30.0, 100.0] + ([1e4] if df >= 1e20 else []):
            sd = math.sqrt(1 + delta * delta / (2 * df))
            out.extend((delta + z * sd, df, delta) for z in [-6, 0, 6])
    return out


def nct_line(p):
    return f"    {{{', '.join(repr(float(v)) for v in p)}, {mp.nstr(nct(*p), 20, min_fixed=1, max_fixed=0)}}},"


def write_table(line_of, rows_in, name, option, layout):
    """Evaluates the rows on two processes and writes the table next to this script."""
    import multiprocessing
    with multiprocessing.Pool(2) as pool:
        lines = [v for v in pool.map(line_of, rows_in, chunksize=1) if v is not None]
    out = os.path.join(os.path.dirname(os.path.abspath(__file__)), name)
    with open(out, 'w') as fh:
        fh.write(f'// Generated by tests/reference/gen_noncentral_large.py{option}; do not edit.\n')
        fh.write(f'// {layout}\n')
        fh.write('\n'.join(lines) + '\n')
    print(f"{len(lines)} rows -> {out}")


def main():
    if len(sys.argv) > 1 and sys.argv[1] == '--nct':
        write_table(nct_line, nct_rows(), 'noncentral_t_huge_df_ref.inc', ' --nct',
                    '{t, df, delta, P(T <= t)}')
        return
    if len(sys.argv) > 2 and sys.argv[1] == '--check':
        check(sys.argv[2])
        return
    write_table(ref_line, rows(), 'noncentral_large_ref.inc', '',
                '{kind (0 chi-square, 1 beta, 2 F), {p0, p1, p2, p3}, lower tail}')


if __name__ == '__main__':
    main()
