#!/usr/bin/python3
"""Reference values of the non-central t lower tail at large non-centralities (|delta| from 40
to 1e4) and degrees of freedom from 1 to 1e10, at the bulk (t = delta), a few and many
standard deviations out, and where the lower tail nears the double range.

Every value is P(T <= t) = E[Phi(t S - delta)], S = sqrt(chi2_v / v), integrated in
y = ln S with mpmath's tanh-sinh rule at 40 digits over the density of Y,
    f(y) = exp(ln 2 + k ln k - k - ln Gamma(k) - k (e^(2y) - 1 - 2y)),  k = v/2
(e^(2y) - 1 - 2y from its own series for small y), the range cut in panels at the density's
mode (width 1/sqrt(2v), out to where the density falls below 1e-60 of its mode), at the
step of Phi, y0 = ln(delta/t) (width 1/|delta|), each doubling outwards, and densely about
the integrand's own mode. With --verify each row is integrated twice, the second time with
every panel halved, and a row whose two values differ by more than 1e-22 relative is left
out (and reported). The integrand is scaled to a peak of 1 before mp.quad sees it (its
refinement stops on an absolute error of 10^-40; unscaled, rows of 1e-100 kept only 10 to
13 digits).
`--check` also compares the integral with the Poisson series of gen_distributions_other.py (an independent method) at |delta| <= 40.

Writes tests/reference/noncentral_t_large_delta_ref.inc: {t, df, delta, P(T <= t)}.
With --scale: the rows where the integral over the scale law runs that the grid above leaves
out, into noncentral_t_scale_ref.inc: either side of its switches (|delta| = 40, df = 1e5,
df = 1e10), non-integer df near 1 (where the density's s^(df - 1) is not smooth at
s = 0) at large |delta|, and random arguments over df in [1, 1e10], |delta| in [40, 1e4] or
df above 1e5 with any delta, with t placed for lower tails of 1e-3 .. 1e-250 and upper tails
of 1e-5 .. 1e-15 (by bisection on a double normal approximation, so the values spread; the
rows keep whatever the integral gives). Rows are kept down to 1e-300.
With --verify-sample K: every K-th row of the grid above integrated twice (the second time
every panel halved), reporting the largest relative difference (writes nothing).
With --huge-t: t from -1e50 to -DBL_MAX by the closed form of the law's far lower tail (the
scale law's cdf a power there; see nct_huge_t), and t from -1e10 to -1e50 by the integral of
the scale law's incomplete gamma function (nct_large_t, checked against itself on halved
panels), into noncentral_t_huge_t_ref.inc.
Run: /usr/bin/python3 tests/reference/gen_noncentral_t_large_delta.py  (a quarter of an hour;
     REF_PROCS=2 for two processes)
     /usr/bin/python3 tests/reference/gen_noncentral_t_large_delta.py --huge-t
"""
import math
import os
import random
import sys

import mpmath as mp

MPF = mp.mpf
VERIFY = '--verify' in sys.argv


def deviance(u):
    """e^u - 1 - u."""
    if abs(u) > MPF('0.01'):
        return mp.expm1(u) - u
    total, term, n = MPF(0), u, 1
    while True:
        n += 1
        term = term * u / n
        total += term
        if abs(term) <= abs(total) * MPF(10) ** -50:
            return total


def log_integrand(y, df, t, delta):
    """ln of the integrand in floating point (up to a constant): places breaks only."""
    if abs(y) > 300:
        return -math.inf
    c = t * math.exp(y) - delta
    log_phi = math.log(0.5 * math.erfc(-c / math.sqrt(2))) if c > -30 else \
        -0.5 * c * c - math.log(-c) - 0.5 * math.log(2 * math.pi)
    u = 2 * y
    dev = math.expm1(u) - u if abs(u) > 1e-3 else u * u / 2 + u ** 3 / 6 + u ** 4 / 24
    return log_phi - df / 2 * dev


def breaks(df, t, delta, refine):
    v = float(df)
    k = v / 2
    w = 1 / math.sqrt(2 * v)
    # The density in y falls as e^(v y) on the left and e^(-k e^(2y)) on the right.
    lo = -(150.0 / v + 30 * w)
    hi = 0.5 * math.log1p(150.0 / k) + 30 * w
    pts = {lo, hi, 0.0}
    d = w
    while d < max(-lo, hi):
        pts.update((d, -d, 0.5 * d, -0.5 * d, 0.75 * d, -0.75 * d))
        d *= 2
    if t != 0 and delta / t > 0:
        y0 = math.log(delta / t)
        ws = 1 / abs(delta)
        d = ws / 8
        while d < 2 * (hi - lo):
            pts.update((y0 + d, y0 - d, y0 + 0.5 * d, y0 - 0.5 * d))
            d *= 2
        pts.add(y0)
    # The integrand's own mode (between the two where its mass lies far in a tail of
    # either factor), found in floating point, with dense breaks around it.
    grid = sorted(p for p in pts if lo <= p <= hi)
    best = max(range(len(grid)), key=lambda i: log_integrand(grid[i], df, t, delta))
    a, b = grid[max(best - 1, 0)], grid[min(best + 1, len(grid) - 1)]
    for _ in range(200):
        m1, m2 = a + (b - a) * 0.382, a + (b - a) * 0.618
        if log_integrand(m1, df, t, delta) < log_integrand(m2, df, t, delta):
            a = m1
        else:
            b = m2
    mode = 0.5 * (a + b)
    h = 1e-3 * max(abs(b - a), 1e-7) + 1e-9
    width = w
    for h in [w / 50, 1 / (50 * abs(delta)), w / 5]:
        curve = (log_integrand(mode + h, df, t, delta) - 2 * log_integrand(mode, df, t, delta)
                 + log_integrand(mode - h, df, t, delta)) / (h * h)
        if curve < 0:
            width = min(width, 1 / math.sqrt(-curve))
    pts.update(mode + width * j / 4 for j in range(-80, 81))
    d = 20 * width
    while d < hi - lo:
        pts.update((mode + d, mode - d))
        d *= 2
    pts = sorted(p for p in pts if lo <= p <= hi)
    if refine:
        pts = sorted(set(pts) | {(a + b) / 2 for a, b in zip(pts, pts[1:])})
    return pts


def nct(t, df, delta, refine=False):
    with mp.workdps(40):
        T, D, k = MPF(t), MPF(delta), MPF(df) / 2
        c0 = mp.log(2) + k * mp.log(k) - k - mp.loggamma(k)

        def f(y):
            return mp.exp(c0 - k * deviance(2 * y)) * mp.ncdf(T * mp.exp(y) - D)

        # mp.quad ends a panel's refinement on an absolute error below 10^-40: the integrand
        # is scaled to a peak of 1 first, or a result of 1e-100 would keep only a few digits.
        pts = [MPF(p) for p in breaks(df, t, delta, refine)]
        peak = max(f(p) for p in pts)
        if peak == 0:
            return MPF(0)
        return peak * mp.quad(lambda y: f(y) / peak, pts)


def rows():
    out = []
    for delta in [41.0, -300.0, 2e3, 1e4, -1e4]:
        for df in [1.0, 300.0, 2e3, 1e5, 1e6, 1e10]:
            sd = math.sqrt(1 + delta * delta / (2 * df))
            if df < 5:
                ts = [delta * math.exp(z) for z in [-2, 0, 2]]
            else:
                ts = [delta + z * sd for z in [-8, 0, 8]]
            out.extend((t, df, delta) for t in ts)
    # The far lower tail (30 standard deviations) at the largest non-centrality.
    out.extend((1e4 - 30 * math.sqrt(1 + 1e8 / (2 * df)), df, 1e4) for df in [2e4, 1e8])
    return out


def line(p):
    t, df, delta = p
    r = nct(t, df, delta)
    if not (r > MPF(10) ** -300):
        return None
    r2 = nct(t, df, delta, refine=True) if VERIFY else r
    if abs(r2 - r) > MPF(10) ** -22 * abs(r):
        print(f"left out, quadrature unsettled at {p}: {r} vs {r2}", flush=True)
        return None
    return f"    {{{t!r}, {df!r}, {delta!r}, {mp.nstr(r, 20, min_fixed=1, max_fixed=0)}}},"


def scale_rows():
    """Switch points, non-integer df near 1, and seeded random arguments (see the docstring)."""
    out = []
    above40 = math.nextafter(40.0, 41.0)
    for df in [1.0, 7.5, 2000.0, 3e4]:
        for delta in [above40, -above40]:
            sd = math.sqrt(1 + delta * delta / (2 * df))
            out.extend((delta + z * sd, df, delta) for z in [-6.0, 0.0, 4.0])
    above1e5 = math.nextafter(1e5, 2e5)
    for delta in [0.5, -3.0, 39.0]:
        out.extend((delta + z * math.sqrt(1 + delta * delta / 2e5), above1e5, delta)
                   for z in [-9.0, 1.0])
    out.extend([(9990.0, 1e10, 1e4), (-1e4 - 1.0, 1e10, -1e4)])
    for df in [1.0000001, 1.18, 1.5, 2.5]:
        for delta in [60.0, -250.0, 4e3]:
            for ratio in [0.3, 1.0, 5.0]:
                out.append((delta * ratio, df, delta))
    rng = random.Random(20261125)
    targets = [-3, -10, -30, -100, -250]  # log10 of the lower tail
    uppers = [-5, -10, -15]  # log10 of the upper tail
    while len(out) < 100:
        if rng.random() < 0.5:
            df = math.exp(rng.uniform(0.0, math.log(1e10)))
            delta = math.exp(rng.uniform(math.log(40.0), math.log(1e4)))
        else:
            df = math.exp(rng.uniform(math.log(1e5), math.log(1e10)))
            delta = math.exp(rng.uniform(math.log(1e-3), math.log(1e4)))
        if rng.random() < 0.5:
            delta = -delta
        tail = rng.choice(targets + uppers)
        t = place(df, delta, tail, tail in uppers)
        if t is not None:
            out.append((t, df, delta))
    return out


def place(df, delta, log10_tail, upper):
    """t where a normal approximation of T (mean delta, spread sqrt(1 + delta^2 / (2 df)),
    widened in the tails by the scale law's skew) puts the given tail; None when the
    bisection fails. Only spreads the rows: each row's value is the integral's."""
    sd = math.sqrt(1 + delta * delta / (2 * df))
    target = log10_tail * math.log(10)

    def log_tail(z):
        x = z / math.sqrt(2)
        return math.log(0.5 * math.erfc(x)) if x < 25 else -z * z / 2 - math.log(z * math.sqrt(2 * math.pi))

    lo, hi = 0.0, 60.0
    for _ in range(200):
        mid = 0.5 * (lo + hi)
        if log_tail(mid) > target:
            lo = mid
        else:
            hi = mid
    z = lo if upper else -lo
    t = delta + z * sd
    return t if math.isfinite(t) and t != 0 else None


def scale_line(p):
    t, df, delta = p
    r = nct(t, df, delta)
    if not (r > MPF(10) ** -300):
        return None
    if VERIFY:
        r2 = nct(t, df, delta, refine=True)
        if abs(r2 - r) > MPF(10) ** -22 * abs(r):
            print(f"left out, quadrature unsettled at {p}: {r} vs {r2}", flush=True)
            return None
    return f"    {{{t!r}, {df!r}, {delta!r}, {mp.nstr(r, 20, min_fixed=1, max_fixed=0)}}},"


def verify_one(p):
    r, r2 = nct(*p), nct(*p, refine=True)
    return p, r, (abs(r2 - r) / r if r > 0 else MPF(0))


def nct_huge_t(t, df, delta):
    """P(T <= t) for t <= -1e50: with x = |Z + delta|/|t| < 1e-46 the scale law's cdf is
    P(k, k x^2) = (k x^2)^k / Gamma(k + 1) (1 + O(k x^2)), so P(T <= t) = k^k / Gamma(k + 1)
    |t|^-df M, M = integral_0^inf w^df phi(w + delta) dw = e^(-delta^2/4) Gamma(df + 1)
    D_(-df-1)(delta) / sqrt(2 pi) (DLMF 12.5.1, the parabolic cylinder function), at 40 digits."""
    with mp.workdps(40):
        T, V, D = MPF(t), MPF(df), MPF(delta)
        k = V / 2
        m = mp.exp(-D * D / 4) * mp.gamma(V + 1) * mp.pcfd(-V - 1, D) / mp.sqrt(2 * mp.pi)
        return mp.exp(k * mp.log(k) - mp.loggamma(k + 1) - V * mp.log(-T)) * m


def nct_large_t(t, df, delta, refine=False):
    """P(T <= t) for t < 0 as the integral over W = -(Z + delta) of the scale law's cdf,
        P(T <= t) = integral_0^inf P(k, k w^2 / t^2) phi(w + delta) dw,  k = df/2,
    with mpmath's regularized incomplete gamma function (no power form), tanh-sinh at 40
    digits on panels at the mode w* of w^df phi(w + delta) +- (1, 2, 4, ..., 64) widths
    1/sqrt(1 + df/w*^2) and at w*/2, w*/4, ..., w*/256; with refine every panel halved. The
    integrand is scaled to its value at w* first (quad's refinement ends on an absolute error)."""
    with mp.workdps(40):
        T, V, D = MPF(t), MPF(df), MPF(delta)
        k = V / 2
        root = mp.sqrt(D * D + 4 * V)
        mode = 2 * V / (D + root) if D >= 0 else (root - D) / 2
        width = 1 / mp.sqrt(1 + V / mode ** 2)

        def g(w):
            return mp.gammainc(k, 0, k * w * w / (T * T), regularized=True) * mp.npdf(w + D)

        pts = {MPF(0), mode}
        for j in range(7):
            pts.update((mode + width * 2 ** j, mode - width * 2 ** j))
        pts.update(mode / 2 ** j for j in range(1, 9))
        pts = sorted(p for p in pts if p >= 0)
        if refine:
            pts = sorted(set(pts) | {(a + b) / 2 for a, b in zip(pts, pts[1:])})
        peak = g(mode)
        if peak == 0:
            return MPF(0)
        return peak * (mp.quad(lambda w: g(w) / peak, pts) +
                       mp.quad(lambda w: g(w) / peak, [pts[-1], mp.inf]))


def huge_t_rows():
    out = []
    for t in [-1e50, -3e120, -1e200, -1.7976931348623157e308]:
        for df in [1.0, 1.5, 2.0, 3.0, 6.0]:
            for delta in [-1e4, -100.0, -1.3, 0.0, 5.0, 40.0]:
                out.append((t, df, delta))
    # From t = -1e10 to -1e50 (the power form's range below the closed form's), by the
    # integral of the incomplete gamma function, and arguments where a scan found the
    # halving towards 0 slow (0.03 to 0.09 ms).
    for t in [-1e10, -3.7e13, -1e20, -2.5e35]:
        for df in [1.0, 2.5, 7.0, 30.0]:
            for delta in [-1e4, -1517.859, -100.0, -1.3, 0.0, 5.0, 30.0]:
                out.append((t, df, delta))
    out += [(-3.9649041766575373e+49, 4.415079045161226, -1517.8593271189252),
            (-5.506782187887416e+49, 2.568598716223527, -1847.3019821971461),
            (-1e30, 1.5, -3000.0), (-1e20, 3.0, 2.0), (-1e60, 2.0, -30.0),
            (-1.7976931348623157e308, 1.0, 1.0), (-1.7976931348623157e308, 1.0, -1.0),
            (-1e10, 1.0, 1e-3), (-1e10, 1.0, -1e-3), (-1e10, 60.0, -1e4)]
    return out


def huge_t_line(p):
    t = p[0]
    if t > -1e50:
        r = nct_large_t(*p)
        check = nct_large_t(*p, refine=True)
        if r > 0 and abs(check / r - 1) > MPF(10) ** -25:
            print("refused (panels disagree):", p, mp.nstr(r, 25), mp.nstr(check, 25))
            return None
    else:
        r = nct_huge_t(*p)
    if not (r > MPF(10) ** -300):
        return None
    t, df, delta = p
    return f"    {{{t!r}, {df!r}, {delta!r}, {mp.nstr(r, 20, min_fixed=1, max_fixed=0)}}},"


def check():
    sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
    import gen_distributions_other as other
    for t, df, delta in [(30.0, 1e4, 38.0), (45.0, 10.0, 38.0), (-1.0, 4.0, 38.0), (2.0, 1e6, -5.0),
                         (36.0, 1.0, 38.0), (80.0, 100.0, 38.0)]:
        a = other.nct_lower(t, df, delta)
        b = nct(t, df, delta)
        print(t, df, delta, mp.nstr(a, 25), mp.nstr(b, 25), mp.nstr(abs(a - b) / a, 3))


def main():
    if '--check' in sys.argv:
        check()
        return
    if '--huge-t' in sys.argv:
        lines = [v for v in map(huge_t_line, huge_t_rows()) if v is not None]
        out = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'noncentral_t_huge_t_ref.inc')
        with open(out, 'w') as fh:
            fh.write('// Generated by tests/reference/gen_noncentral_t_large_delta.py --huge-t; '
                     'do not edit.\n')
            fh.write('// {t, df, delta, P(T <= t)}\n')
            fh.write('\n'.join(lines) + '\n')
        print(f"{len(lines)} rows -> {out}")
        return
    import multiprocessing
    procs = int(os.environ.get('REF_PROCS', '1'))
    if '--verify-sample' in sys.argv:
        step = int(sys.argv[sys.argv.index('--verify-sample') + 1])
        with multiprocessing.Pool(procs) as pool:
            done = pool.map(verify_one, rows()[::step], chunksize=1)
        for p, r, d in done:
            print(p, mp.nstr(r, 20), mp.nstr(d, 3), flush=True)
        print('largest relative difference', mp.nstr(max(d for _, _, d in done), 3))
        return
    if '--scale' in sys.argv:
        with multiprocessing.Pool(procs) as pool:
            lines = [v for v in pool.map(scale_line, scale_rows(), chunksize=1) if v is not None]
        out = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'noncentral_t_scale_ref.inc')
        with open(out, 'w') as fh:
            fh.write('// Generated by tests/reference/gen_noncentral_t_large_delta.py --scale; '
                     'do not edit.\n')
            fh.write('// {t, df, delta, P(T <= t)}\n')
            fh.write('\n'.join(lines) + '\n')
        print(f"{len(lines)} rows -> {out}")
        return
    with multiprocessing.Pool(procs) as pool:
        lines = [v for v in pool.map(line, rows(), chunksize=1) if v is not None]
    out = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'noncentral_t_large_delta_ref.inc')
    with open(out, 'w') as fh:
        fh.write('// Generated by tests/reference/gen_noncentral_t_large_delta.py; do not edit.\n')
        fh.write('// {t, df, delta, P(T <= t)}\n')
        fh.write('\n'.join(lines) + '\n')
    print(f"{len(lines)} rows -> {out}")


if __name__ == '__main__':
    main()
