"""Distribution functions over arrays of random arguments, against the scipy.special
functions that compute the same value (lower tails). Our scalar exports are mapped over
the arrays by bench/table/loops.c (one indirect call per value: a nanosecond or two, and
one ctypes call per array); the peer ufuncs loop in C as well.

Arguments (fixed seed), spread over the documented domain, in two sets per law:
  tails  the probability level P is log-uniform in [1e-300, 0.5] and lands on either
         tail with equal odds; x is the law's quantile at that level;
  body   x is the law's quantile at p uniform in (0, 1).
(quantiles computed once by SciPy, untimed; arguments where SciPy gives no finite
quantile are dropped). Degrees of freedom, shapes and scales are log-uniform over [1, 1e6]
(t) or [1e-3, 1e6] (chi-square, gamma, beta). The deviates take p = P on the lower tail
or 1 - P' (P' log-uniform in [1e-16, 0.5]) on the upper one (tails), or p uniform (body).
The non-central t takes df log-uniform in [1, 1e6], |delta| log-uniform in [1e-3, 1e4]
with a random sign, and t = delta + z (1 + |delta| / sqrt(df)) with z standard normal.
Outputs are compared (`checked`): a note reports values differing beyond 1e-9 relative and
the worst. Values below the normal range carry fewer than 53 bits and are compared to within
1e-9 DBL_MIN; a deviate below the normal range is our documented refusal (NANUM, status
301) where the peer returns a subnormal or 0. Where SciPy's own function is known to be
wrong (50-digit mpmath at the worst and at random disagreeing arguments: ours within 1e-15
there, SciPy off), the check is narrowed to the arguments where SciPy is right, and the
row's note says what is left out and by how much SciPy errs there.
"""
import warnings

import numpy as np
from scipy import special, stats

from runner import Row, address, close, loops, ptr, rng

FAMILY = "distributions"
N = 20_000
DBL_MIN = 2.2250738585072014e-308
NANUM = -1.23456789e-300


def checked(rtol, trusted=None):
    """close(rtol) over the values at the arguments where `trusted` (a boolean mask over the
    row's arrays; None: all) is true, values below the normal range compared to within
    rtol DBL_MIN, and our NANUM where the peer's deviate is below the normal range counted
    as agreement (the deviates refuse those with status 301)."""
    def check(ours, peer):
        a, b = np.asarray(ours, dtype=float), np.asarray(peer, dtype=float)
        keep = np.ones(a.shape, dtype=bool) if trusted is None else np.asarray(trusted)
        keep = keep & ~((a == NANUM) & (np.abs(b) < DBL_MIN))
        return close(rtol, atol=rtol * DBL_MIN)(a[keep], b[keep])
    return check


def log_uniform(g, lo, hi, n):
    return np.exp(g.uniform(np.log(lo), np.log(hi), n))


def draw_x(g, law, kind, n):
    """Quantiles of the frozen law (array parameters of length n) for the set `kind`."""
    if kind == "tails":
        level = 10.0 ** g.uniform(-300, np.log10(0.5), n)
        upper = g.random(n) < 0.5
        return np.where(upper, law.isf(level), law.ppf(level))
    return law.ppf(g.random(n))


def draw_p(g, kind, n):
    if kind == "tails":
        lower = 10.0 ** g.uniform(-300, np.log10(0.5), n)
        upper = 1 - 10.0 ** g.uniform(-16, np.log10(0.5), n)
        return np.where(g.random(n) < 0.5, lower, upper)
    return g.random(n)


def rows():
    warnings.filterwarnings("ignore", category=RuntimeWarning)
    L = loops()
    g = rng(FAMILY)
    out = np.empty(N)
    po = ptr(out)
    keep = []  # arrays whose addresses the rows hold

    def arr(a):
        a = np.ascontiguousarray(a, dtype=np.float64)
        keep.append(a)
        return ptr(a)

    def finite(*cols):
        ok = np.all([np.isfinite(c) for c in cols], axis=0)
        return [np.ascontiguousarray(c[ok][:N]) for c in cols]

    def mapped(f, n, *ptrs, tail=2):
        if len(ptrs) == 1 and tail is None:
            return lambda: (L.bench_map_p(f, ptrs[0], po, n), out[:n])[1]
        fn = {1: L.bench_map_x_tail, 2: L.bench_map_xa_tail, 3: L.bench_map_xab_tail}[len(ptrs)]
        return lambda: (fn(f, *ptrs, tail, po, n), out[:n])[1]

    M = 2 * N  # draws before dropping non-finite quantiles
    for kind in ("tails", "body"):
        label = f"2e4 {kind}"
        (x,) = finite(draw_x(g, stats.norm, kind, M))
        yield Row(FAMILY, "normcdf", label, mapped(address("normcdf"), len(x), arr(x)),
                  lambda x=x: special.ndtr(x), "peer: scipy.special.ndtr", check=checked(1e-9))
        p = draw_p(g, kind, N)
        yield Row(FAMILY, "norminv", label, mapped(address("norminv"), N, arr(p), tail=None),
                  lambda p=p: special.ndtri(p), "peer: scipy.special.ndtri", check=checked(1e-9))

        df = log_uniform(g, 1, 1e6, M)
        t, df_t = finite(draw_x(g, stats.t(df), kind, M), df)
        yield Row(FAMILY, "tcdf", label, mapped(address("tcdf"), len(t), arr(t), arr(df_t)),
                  lambda t=t, df_t=df_t: special.stdtr(df_t, t), "peer: scipy.special.stdtr",
                  check=checked(1e-9))
        p = draw_p(g, kind, len(df_t))
        yield Row(FAMILY, "tinv", label, mapped(address("tinv"), len(p), arr(p), arr(df_t)),
                  lambda p=p, df_t=df_t: special.stdtrit(df_t, p),
                  "peer: scipy.special.stdtrit; checked to 1e-8 where p and 1 - p >= 1e-100: "
                  "stdtrit's root search stops within about 3e-9 (df < 100), and below 1e-100 "
                  "it stops at |t| = 1e100 or errs by up to 1.6 relative (mpmath: ours within "
                  "1e-15 there)", check=checked(1e-8, np.minimum(p, 1 - p) >= 1e-100))

        df = log_uniform(g, 1e-3, 1e6, M)
        xc, df_c = finite(draw_x(g, stats.chi2(df), kind, M), df)
        yield Row(FAMILY, "chi2cdf", label,
                  mapped(address("chi2cdf"), len(xc), arr(xc), arr(df_c)),
                  lambda xc=xc, df_c=df_c: special.chdtr(df_c, xc),
                  "peer: scipy.special.chdtr; checked where df < 1e5: Cephes' igam errs by up "
                  "to 4e-9 beyond (mpmath: ours within 1e-16 there)",
                  check=checked(1e-9, df_c < 1e5))

        a, b = log_uniform(g, 1e-3, 1e6, M), log_uniform(g, 1e-3, 1e6, M)
        xg, ag, bg = finite(draw_x(g, stats.gamma(a, scale=b), kind, M), a, b)
        yield Row(FAMILY, "gamcdf", label,
                  mapped(address("gamcdf"), len(xg), arr(xg), arr(ag), arr(bg)),
                  lambda xg=xg, ag=ag, bg=bg: special.gammainc(ag, xg / bg),
                  "peer: scipy.special.gammainc(a, x / b); checked where x / b is a normal "
                  "double and a < 1e5: a subnormal x / b loses its digits before gammainc sees "
                  "it (SciPy off by up to 2e-2 there) and Cephes' igam errs by up to 5e-8 at "
                  "a near 1e6 (mpmath: ours within 1e-16 at both)",
                  check=checked(1e-9, (xg / bg >= DBL_MIN) & (ag < 1e5)))

        a, b = log_uniform(g, 1e-3, 1e6, M), log_uniform(g, 1e-3, 1e6, M)
        xb, ab, bb = finite(draw_x(g, stats.beta(a, b), kind, M), a, b)
        yield Row(FAMILY, "betacdf", label,
                  mapped(address("betacdf"), len(xb), arr(xb), arr(ab), arr(bb)),
                  lambda xb=xb, ab=ab, bb=bb: special.betainc(ab, bb, xb),
                  "peer: scipy.special.betainc; checked to 1e-8 where a < 1e5 and not both "
                  "x >= 0.99 and b < 0.1: Cephes' incbet errs by up to 5e-9 at shapes near 1e6 "
                  "and by up to 2e-2 next to x = 1 with a small b (mpmath: ours within 1e-15 "
                  "there)", check=checked(1e-8, ((bb >= 0.1) | (xb < 0.99)) & (ab < 1e5)))

    # Non-central t (lower tail; the loop's int argument is maxiter).
    m = 2_000
    df = log_uniform(g, 1, 1e6, m)
    delta = log_uniform(g, 1e-3, 1e4, m) * np.where(g.random(m) < 0.5, -1, 1)
    tn = delta + g.standard_normal(m) * (1 + np.abs(delta) / np.sqrt(df))
    f = address("nctcdf")
    ptn, pdfn, pdn = arr(tn), arr(df), arr(delta)
    yield Row(FAMILY, "nctcdf", "2e3 random",
              lambda: (L.bench_map_xab_tail(f, ptn, pdfn, pdn, 1000, po, m), out[:m])[1],
              lambda: special.nctdtr(df, delta, tn),
              "peer: scipy.special.nctdtr (cdflib); checked to 1e-6 where |delta| < 1: at larger "
              "|delta| cdflib's series errs from 1e-6 to a factor 24 (and gives 0 for 1.4e-30); "
              "mpmath (|delta| < 40): ours within 1.3e-15 there",
              rounds=3, check=checked(1e-6, np.abs(delta) < 1))

    # Studentized range (a double integral per value; the loop's int argument is the
    # number of groups r). Degrees of freedom log-uniform in [1, 1e3], q uniform in
    # (0.2, 8), p uniform in (0.01, 0.99). The peer, scipy.stats.studentized_range, is
    # slow itself (numerical integration per value, a root search per deviate), hence the
    # small counts.
    for r in (3, 10):
        m = 200
        v = log_uniform(g, 1, 1e3, m)
        q = g.uniform(0.2, 8.0, m)
        f = address("srangecdf")
        yield Row(FAMILY, "srangecdf", f"2e2 r={r}", mapped(f, m, arr(q), arr(v), tail=r),
                  lambda q=q, v=v, r=r: stats.studentized_range.cdf(q, r, v),
                  "peer: scipy.stats.studentized_range.cdf (slow); checked to 1e-7 relative or "
                  "1e-15 absolute: SciPy's quadrature meets an absolute tolerance (3.5e-7 "
                  "relative at 5.3e-10; mpmath: ours within 4e-16 there)", rounds=1,
                  check=close(1e-7, atol=1e-15))
        m = 20
        vi = v[:m]
        p = g.uniform(0.01, 0.99, m)
        f = address("srangeinv")
        yield Row(FAMILY, "srangeinv", f"2e1 r={r}", mapped(f, m, arr(p), arr(vi), tail=r),
                  lambda p=p, vi=vi, r=r: stats.studentized_range.ppf(p, r, vi),
                  "peer: scipy.stats.studentized_range.ppf (slow)", rounds=1, check=close(1e-6))

    # The remaining central deviates, the F law and the non-central laws (drawn from a
    # generator of their own, so that the rows above keep their arguments).
    def plain(name, n, *cols):
        """Our export `name` (two to four doubles and the status) over the columns."""
        loop = {2: L.bench_map_pa, 3: L.bench_map_pab, 4: L.bench_map_pabc}[len(cols)]
        f, ptrs = address(name), [arr(c) for c in cols]
        return lambda: (loop(f, *ptrs, po, n), out[:n])[1]

    g = rng(FAMILY, 1)
    for kind in ("tails", "body"):
        label = f"2e4 {kind}"
        df = log_uniform(g, 1e-3, 1e6, N)
        p = draw_p(g, kind, N)
        yield Row(FAMILY, "chi2inv", label, plain("chi2inv", N, p, df),
                  lambda p=p, df=df: 2 * special.gammaincinv(df / 2, p),
                  "peer: 2 scipy.special.gammaincinv(df/2, p); deviates below the normal range "
                  "(df < 2 and small p) are our NANUM with status 301", check=checked(1e-9))
        a, b = log_uniform(g, 1e-3, 1e6, N), log_uniform(g, 1e-3, 1e6, N)
        p = draw_p(g, kind, N)
        yield Row(FAMILY, "gaminv", label, plain("gaminv", N, p, a, b),
                  lambda p=p, a=a, b=b: special.gammaincinv(a, p) * b,
                  "peer: scipy.special.gammaincinv(a, p) b; deviates below the normal range "
                  "(a < 1 and small p) are our NANUM with status 301", check=checked(1e-9))
        a, b = log_uniform(g, 1e-3, 1e6, N), log_uniform(g, 1e-3, 1e6, N)
        p = draw_p(g, kind, N)
        yield Row(FAMILY, "betainv", label, plain("betainv", N, p, a, b),
                  lambda p=p, a=a, b=b: special.betaincinv(a, b, p),
                  "peer: scipy.special.betaincinv; checked to 1e-8 where 0.1 <= a < 1e3, "
                  "b < 1e3 and p and 1 - p >= 1e-5: beyond, betaincinv returns 1.1e-16 for "
                  "deviates near 1 (a >= 1e4, tiny p) and errs by up to 3e-6 in the body at "
                  "a < 0.1 or b >= 1e3 (mpmath: ours within 3e-16 there)",
                  check=checked(1e-8, (a >= 0.1) & (a < 1e3) & (b < 1e3)
                                & (np.minimum(p, 1 - p) >= 1e-5)))
        d1, d2 = log_uniform(g, 0.1, 1e6, M), log_uniform(g, 0.1, 1e6, M)
        xf, d1f, d2f = finite(draw_x(g, stats.f(d1, d2), kind, M), d1, d2)
        yield Row(FAMILY, "fcdf", label,
                  mapped(address("fcdf"), len(xf), arr(xf), arr(d1f), arr(d2f)),
                  lambda xf=xf, d1f=d1f, d2f=d2f: special.fdtr(d1f, d2f, xf),
                  "peer: scipy.special.fdtr; checked to 1e-8 where df2 >= 1 and df1 < 1e5: "
                  "at df2 < 1 and large f fdtr returns 1 for values down to 0.78 and errs by up "
                  "to 0.36 (mpmath: ours within 2e-15 there)",
                  check=checked(1e-8, (d2f >= 1) & (d1f < 1e5)))
        p = draw_p(g, kind, len(xf))
        yield Row(FAMILY, "finv", label, plain("finv", len(p), p, d1f, d2f),
                  lambda p=p, d1f=d1f, d2f=d2f: special.fdtri(d1f, d2f, p),
                  "peer: scipy.special.fdtri; checked to 1e-8 where 1 <= df1, df2 < 1e5 and "
                  "p and 1 - p >= 1e-5: beyond, fdtri errs by up to 4e-8 in the body and is "
                  "wrong in every digit far in the tails (mpmath: ours within 1e-15 there)",
                  check=checked(1e-8, (np.minimum(p, 1 - p) >= 1e-5) & (d1f >= 1) & (d2f >= 1)
                                & (d1f < 1e5) & (d2f < 1e5)))

    # Non-central chi-square, F and beta (lower tails) at their quantiles of uniform levels:
    # degrees of freedom and shapes log-uniform in [1, 1e3] ([0.5, 500] for the beta
    # shapes), the non-centrality log-uniform in [1e-3, 1e3]. The beta law's peer is the F
    # law's at f = b x / (a (1 - x)) with 2a and 2b degrees of freedom (SciPy has no
    # non-central beta).
    m = 2_000
    df, lam = log_uniform(g, 1, 1e3, 2 * m), log_uniform(g, 1e-3, 1e3, 2 * m)
    xc, dfc, lamc = [c[:m] for c in finite(stats.ncx2.ppf(g.random(2 * m), df, lam), df, lam)]
    yield Row(FAMILY, "ncchi2cdf", "2e3 random", plain("ncchi2cdf", len(xc), xc, dfc, lamc),
              lambda: special.chndtr(xc, dfc, lamc), "peer: scipy.special.chndtr (cdflib)",
              rounds=3, check=checked(1e-9))
    d1, d2, lam = (log_uniform(g, 1, 1e3, 2 * m), log_uniform(g, 1, 1e3, 2 * m),
                   log_uniform(g, 1e-3, 1e3, 2 * m))
    xn, d1n, d2n, lamn = [c[:m] for c in
                          finite(stats.ncf.ppf(g.random(2 * m), d1, d2, lam), d1, d2, lam)]
    yield Row(FAMILY, "ncfcdf", "2e3 random", plain("ncfcdf", len(xn), xn, d1n, d2n, lamn),
              lambda: special.ncfdtr(d1n, d2n, lamn, xn),
              "peer: scipy.special.ncfdtr (cdflib); checked to 1e-3: cdflib sums the Poisson "
              "mixture to 1e-4 relative and errs by up to 8.5e-4 (mpmath: ours within 1.2e-15 "
              "there)", rounds=3, check=checked(1e-3))
    a, b, lam = (log_uniform(g, 0.5, 500, 2 * m), log_uniform(g, 0.5, 500, 2 * m),
                 log_uniform(g, 1e-3, 1e3, 2 * m))
    fb = stats.ncf.ppf(g.random(2 * m), 2 * a, 2 * b, lam)
    xb, ab, bb, lamb = finite(a * fb / (a * fb + b), a, b, lam)
    inside = (xb > 0) & (xb < 1)
    xb, ab, bb, lamb = [np.ascontiguousarray(c[inside][:m]) for c in (xb, ab, bb, lamb)]
    yield Row(FAMILY, "ncbetacdf", "2e3 random", plain("ncbetacdf", len(xb), xb, ab, bb, lamb),
              lambda: special.ncfdtr(2 * ab, 2 * bb, lamb, bb * xb / (ab * (1 - xb))),
              "peer: scipy.special.ncfdtr(2a, 2b, lambda, b x / (a (1 - x))) (cdflib); checked "
              "to 1e-3: cdflib sums the Poisson mixture to 1e-4 relative and errs by up to "
              "8.8e-4 (mpmath: ours within 1.1e-15 there)", rounds=3, check=checked(1e-3))
