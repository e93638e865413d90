#!/usr/bin/python3
"""Reference values for the central continuous distributions (normal, Student's t,
chi-square, F, beta, gamma, exponential, Cauchy, Laplace, log-normal, Weibull) and the
utility helpers incbeta, prob, invprob and Ftable.

Writes distributions_central_ref.inc next to this script:
    REF(fn, a0, a1, a2, tail, expected)      one export call fn(a0[, a1[, a2]][, tail])
    REF_UTIL(fn, a0, a1, a2, expected)       one utility helper call
Both are X-macro lists; the tests define the macros.

Where the values come from
- Inputs. The evaluation points of the cdfs are placed at target tail probabilities
  1e-300 .. 0.5 in both tails, using SciPy's ppf/isf (SciPy is only used to place points:
  any double is a valid input, and the expected value is computed at exactly that double).
  Parameters span 1e-3 .. 1e6 where the law allows it (Student's t needs df >= 1).
- Expected values: mpmath (arbitrary precision, 60 significant digits) rounded to the
  nearest double:
    normal              mpmath.ncdf / erfc / erf, density by its formula;
    t, F, beta          the regularised incomplete beta I_x(a, b) by its continued fraction
                        (DLMF 8.17.22, modified Lentz), on the side x < (a+1)/(a+b+2) and by
                        symmetry I_x(a,b) = 1 - I_{1-x}(b,a) otherwise, the small tail
                        evaluated directly (mpmath's own betainc does not converge for
                        parameters near 1e6, so it only cross-checks this one below);
    chi-square, gamma   the regularised incomplete gamma P(a, x) by its series (DLMF 8.7.1
                        form) for x < a + 1 and Q(a, x) by Legendre's continued fraction
                        (DLMF 8.9.2) otherwise, cross-checked against mpmath.gammainc;
    densities           their closed forms (DLMF 5 log-gamma for the normalisations);
    deviates            the root of cdf(x) = p solved to 45 digits with a bracketed Newton
                        iteration on log cdf (log x as the variable), the cdf as above.
  Values below 1e-300 or above the double range are not written (the accuracy claim is
  for normal doubles); exact zeros are kept.
Run: /usr/bin/python3 tests/reference/gen_distributions_central.py
"""
import math
import os
import sys

import mpmath as mp
import numpy as np
from scipy import stats

mp.mp.dps = 60
MPF = mp.mpf

TARGETS = [1e-300, 1e-250, 1e-200, 1e-100, 1e-50, 1e-20, 1e-10, 1e-5, 1e-3, 0.05, 0.25, 0.5]
# Lower-tail probabilities p close to 1 for the deviates (p = 1 - q rounded to a double).
NEAR_ONE = [0.75, 0.95, 1 - 1e-5, 1 - 1e-10, 1 - 2.0 ** -50]

SMALLEST = 1e-300


# ---- incomplete beta and gamma ---------------------------------------------------------

def _cf_eval(coef, maxit=10 ** 7):
    """1/(1 + c1/(1 + c2/(1 + ...))) by the modified Lentz method, coef(k) = c_k."""
    tiny = MPF(2) ** (-mp.mp.prec * 4)
    eps = MPF(2) ** (-mp.mp.prec + 8)
    f = tiny
    c = tiny
    d = MPF(0)
    for i in range(1, maxit):
        an = MPF(1) if i == 1 else coef(i - 1)
        d = 1 + an * d
        if d == 0:
            d = tiny
        c = 1 + an / c
        if c == 0:
            c = tiny
        d = 1 / d
        delta = c * d
        f *= delta
        if i > 2 and abs(delta - 1) < eps:
            return f
    raise RuntimeError("continued fraction did not converge")


def _ibeta_cf(a, b, x, y):
    def coef(k):
        if k % 2 == 0:
            m = k // 2
            return m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m))
        m = (k - 1) // 2
        return -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1))
    log_front = (a * mp.log(x) + b * mp.log(y) - mp.log(a)
                 - (mp.loggamma(a) + mp.loggamma(b) - mp.loggamma(a + b)))
    return mp.exp(log_front) * _cf_eval(coef)


def ibeta(a, b, x, y=None):
    """(I_x(a,b), 1 - I_x(a,b)); y = 1 - x may be passed exactly."""
    a, b, x = MPF(a), MPF(b), MPF(x)
    y = 1 - x if y is None else MPF(y)
    if x == 0:
        return MPF(0), MPF(1)
    if y == 0:
        return MPF(1), MPF(0)
    if x < (a + 1) / (a + b + 2):
        p = _ibeta_cf(a, b, x, y)
        return p, 1 - p
    q = _ibeta_cf(b, a, y, x)
    return 1 - q, q


def beta_density(a, b, x, y=None):
    """Beta density at x; y = 1 - x may be passed exactly."""
    a, b, x = MPF(a), MPF(b), MPF(x)
    log_y = mp.log1p(-x) if y is None else mp.log(MPF(y))
    return mp.exp((a - 1) * mp.log(x) + (b - 1) * log_y
                  - (mp.loggamma(a) + mp.loggamma(b) - mp.loggamma(a + b)))


def igamma(a, x):
    """(P(a, x), Q(a, x))."""
    a, x = MPF(a), MPF(x)
    if x == 0:
        return MPF(0), MPF(1)
    eps = MPF(2) ** (-mp.mp.prec + 4)
    if x < a + 1:
        term = 1 / a
        total = term
        n = 0
        while True:
            n += 1
            term *= x / (a + n)
            total += term
            if term < total * eps:
                break
            if n > 10 ** 8:
                raise RuntimeError("gamma series did not converge")
        p = total * mp.exp(a * mp.log(x) - x - mp.loggamma(a))
        return p, 1 - p
    tiny = MPF(2) ** (-mp.mp.prec * 4)
    bb = x + 1 - a
    c = 1 / tiny
    d = 1 / bb
    h = d
    i = 1
    while True:
        an = -i * (i - a)
        bb += 2
        d = an * d + bb
        if d == 0:
            d = tiny
        c = bb + an / c
        if c == 0:
            c = tiny
        d = 1 / d
        delta = d * c
        h *= delta
        if abs(delta - 1) < eps:
            break
        i += 1
        if i > 10 ** 8:
            raise RuntimeError("gamma continued fraction did not converge")
    q = mp.exp(-x + a * mp.log(x) - mp.loggamma(a)) * h
    return 1 - q, q


def gamma_density(a, x):
    a, x = MPF(a), MPF(x)
    return mp.exp((a - 1) * mp.log(x) - x - mp.loggamma(a))


def self_check():
    """The series and continued fractions against mpmath's own functions where those
    converge (small parameters)."""
    for a, b, x in [(2, 3, 0.3), (0.5, 0.5, 0.01), (1e-3, 1, 0.5), (10, 0.5, 0.9),
                    (50, 70, 0.4), (1e-3, 1e-3, 0.5), (3, 200, 0.05)]:
        p, q = ibeta(a, b, x)
        r = mp.betainc(a, b, 0, x, regularized=True)
        rc = mp.betainc(a, b, x, 1, regularized=True)
        assert abs(p - r) <= abs(r) * MPF(10) ** -45, (a, b, x)
        assert abs(q - rc) <= abs(rc) * MPF(10) ** -45, (a, b, x)
    for a, x in [(2, 3), (5, 1), (0.5, 0.01), (1e-3, 2), (30, 50), (30, 10), (100, 170)]:
        p, q = igamma(a, x)
        r = mp.gammainc(a, 0, x, regularized=True)
        rc = mp.gammainc(a, x, mp.inf, regularized=True)
        assert abs(p - r) <= abs(r) * MPF(10) ** -45, (a, x)
        assert abs(q - rc) <= abs(rc) * MPF(10) ** -45, (a, x)


# ---- deviates --------------------------------------------------------------------------

def solve_positive(tail_of, density_of, target, increasing, x0=None):
    """x > 0 with tail_of(x) = target, tail_of monotone (increasing or decreasing in x),
    density_of(x) = |d tail_of / dx|. Newton on log tail in s = log x inside a bracket."""
    target = MPF(target)
    log_target = mp.log(target)
    sign = 1 if increasing else -1

    def g(s):
        v = tail_of(mp.exp(s))
        if v <= 0:
            return -mp.inf * sign
        return (mp.log(v) - log_target) * sign   # increasing in s

    def dg(s):
        x = mp.exp(s)
        v = tail_of(x)
        return density_of(x) * x / v

    s = MPF(math.log(x0)) if (x0 is not None and x0 > 0 and math.isfinite(x0)) else MPF(0)
    lo = hi = None
    gs = g(s)
    step = MPF(1)
    # Bracket; a root outside the double range (|log x| > 800) is reported as 0 or inf,
    # which the writer drops.
    while True:
        if gs < 0:
            lo = s
            if hi is not None:
                break
            if s > 800:
                return mp.inf
            s2 = s + step
        else:
            hi = s
            if lo is not None:
                break
            if s < -800:
                return MPF(0)
            s2 = s - step
        step *= 2
        s = s2
        gs = g(s)
    s = (lo + hi) / 2 if x0 is None else (lo if abs(g(lo)) < abs(g(hi)) else hi)
    for _ in range(400):
        gs = g(s)
        if gs == 0:
            return mp.exp(s)
        if gs < 0:
            lo = s
        else:
            hi = s
        d = dg(s)
        new = s - gs / d if d > 0 and mp.isfinite(d) else (lo + hi) / 2
        if not (lo < new < hi):
            new = (lo + hi) / 2
        if abs(new - s) < MPF(10) ** -48 * max(1, abs(s)):
            return mp.exp(new)
        s = new
        if hi - lo < MPF(10) ** -50 * max(1, abs(s)):
            return mp.exp(s)
    raise RuntimeError("no convergence")


def quantile_positive(pair, density, p, x0):
    """x with P(X <= x) = p for a law on (0, inf); pair(x) = (lower, upper)."""
    p = MPF(p)
    if p <= 0.5:
        return solve_positive(lambda x: pair(x)[0], density, p, True, x0)
    return solve_positive(lambda x: pair(x)[1], density, 1 - p, False, x0)


# ---- output ----------------------------------------------------------------------------

rows = []
util_rows = []
counts = {}


def fmt(v):
    v = float(v)
    if v == 0:
        return "0.0"
    r = repr(v)
    if "e" not in r and "." not in r and "inf" not in r:
        r += ".0"
    return r


def usable(v, exact_zero):
    v = float(v)
    return (v == 0 and exact_zero) or (SMALLEST <= abs(v) < 1.7e308)


def add(fn, args, tail, expected, exact_zero=False):
    """exact_zero: an expected 0 is the exact value (the median of a symmetric law), not a
    deviate or probability below the double range."""
    if not usable(expected, exact_zero):
        return
    args = list(args) + [0.0] * (3 - len(args))
    rows.append("REF(%s, %s, %s, %s, %d, %s)" % (fn, fmt(args[0]), fmt(args[1]), fmt(args[2]),
                                                tail, fmt(expected)))
    counts[fn] = counts.get(fn, 0) + 1


def add_util(fn, args, expected, exact_zero=False):
    if not usable(expected, exact_zero):
        return
    args = list(args) + [0.0] * (3 - len(args))
    util_rows.append("REF_UTIL(%s, %s, %s, %s, %s)" % (fn, fmt(args[0]), fmt(args[1]),
                                                     fmt(args[2]), fmt(expected)))
    counts[fn] = counts.get(fn, 0) + 1


def finite_double(v):
    try:
        v = float(v)
    except (TypeError, ValueError, OverflowError):
        return None
    return v if math.isfinite(v) else None


def points_from(ppf, isf, lo=-math.inf, hi=math.inf, extra=()):
    """Evaluation points at the target probabilities in both tails."""
    pts = set()
    with np.errstate(all="ignore"):
        for t in TARGETS:
            for v in (ppf(t), isf(t)):
                v = finite_double(v)
                if v is not None and lo < v < hi:
                    pts.add(v)
    pts.update(extra)
    return sorted(pts)


# ---- normal ----------------------------------------------------------------------------

def normal_tails(x):
    x = MPF(x)
    return {1: mp.ncdf(-x), 2: mp.ncdf(x), 3: mp.erfc(abs(x) / mp.sqrt(2)),
            4: mp.erf(abs(x) / mp.sqrt(2))}


def normal_quantile(p):
    p = MPF(p)
    if p == 0.5:
        return MPF(0)
    dens = lambda x: mp.npdf(x)
    if p < 0.5:
        return -solve_positive(lambda x: mp.ncdf(-x), dens, p, False, 1.0)
    return solve_positive(lambda x: mp.ncdf(-x), dens, 1 - p, False, 1.0)


def gen_normal():
    xs = points_from(stats.norm.ppf, stats.norm.isf,
                     extra=[0.0, 1e-300, -1e-300, 1e-10, -1e-10, 0.3, 1.96, 8.3, -8.3, 37.5,
                            -37.5])
    for x in xs:
        tails = normal_tails(x)
        for tail in (1, 2, 3, 4):
            add("normcdf", [x], tail, tails[tail], exact_zero=(x == 0 and tail == 4))
    for p in TARGETS + NEAR_ONE:
        add("norminv", [p], 0, normal_quantile(p), exact_zero=(p == 0.5))
    for mu, sigma in [(0.0, 1.0), (3.0, 1e-3), (-1e3, 1e6), (5e2, 2.5), (1e-3, 1e3)]:
        for z in [0, 0.5, -0.5, 3, -3, 10, -20, 30, -36, 37.5, -37.6]:
            x = mu + z * sigma
            xm = MPF(x)
            dens = mp.exp(-((xm - mu) / sigma) ** 2 / 2) / (mp.sqrt(2 * mp.pi) * sigma)
            add("normpdf", [x, mu, sigma], 0, dens)
    for z in [-37.5, -20.0, -1.0, 0.0, 2.5, 8.0, 38.0]:
        add_util("prob", [z], mp.ncdf(z))
    for p in [1e-300, 1e-20, 0.025, 0.5, 0.975, 1 - 1e-10]:
        add_util("invprob", [p], normal_quantile(p), exact_zero=(p == 0.5))


# ---- Student's t -----------------------------------------------------------------------

def t_two_sided(t, df):
    """(P(|T| >= |t|), P(|T| <= |t|))."""
    t, df = abs(MPF(t)), MPF(df)
    t2 = t * t
    x = df / (df + t2)
    y = t2 / (df + t2)
    beyond, within = ibeta(df / 2, MPF(0.5), x, y)
    return beyond, within


def t_density_abs(t, df):
    """Density of |T| at t >= 0 (twice the t density)."""
    t, df = MPF(t), MPF(df)
    logc = (mp.loggamma((df + 1) / 2) - mp.loggamma(df / 2) - mp.log(mp.pi * df) / 2)
    return 2 * mp.exp(logc - (df + 1) / 2 * mp.log1p(t * t / df))


def t_tails(t, df):
    beyond, within = t_two_sided(t, df)
    small = beyond / 2
    lower = small if t < 0 else 1 - small
    upper = 1 - small if t < 0 else small
    if t == 0:
        lower = upper = MPF(0.5)
    return {1: upper, 2: lower, 3: beyond, 4: within}


def t_deviate(p, df, tail):
    p = MPF(p)
    dens = lambda x: t_density_abs(x, df)
    beyond = lambda x: t_two_sided(x, df)[0]
    within = lambda x: t_two_sided(x, df)[1]
    x0 = None
    if tail == 3:
        return solve_positive(beyond, dens, p, False, x0)
    if tail == 4:
        return solve_positive(within, dens, p, True, x0)
    # one-sided: tail 2 lower P(T <= t) = p, tail 1 upper P(T >= t) = p = lower at -t;
    # solved on the smaller tail so that 1 - p is never formed from a tiny p.
    sign = 1 if tail == 2 else -1
    if p == 0.5:
        return MPF(0)
    if p < 0.5:
        return -sign * solve_positive(beyond, dens, 2 * p, False, x0)
    return sign * solve_positive(beyond, dens, 2 * (1 - p), False, x0)


def gen_t():
    # 31.5, 32.5 and 199 .. 201: the double path's switch points (b = df/2 at 16 and 100)
    for df in [1.0, 1.5, 2.0, 3.0, 4.5, 10.0, 30.0, 31.5, 32.5, 100.0, 199.0, 200.0, 201.0, 1e3,
               1e4, 1e5, 1e6]:
        xs = points_from(lambda q: stats.t.ppf(q, df), lambda q: stats.t.isf(q, df),
                         extra=[0.0, 1e-300, 1e-100, 1e-10, -1e-3, 2.0])
        for x in xs:
            tails = t_tails(x, df)
            for tail in (1, 2):
                add("tcdf", [x, df], tail, tails[tail])
            if x >= 0 or x in (-1e-3,):
                for tail in (3, 4):
                    add("tcdf", [x, df], tail, tails[tail], exact_zero=(x == 0))
        for p in TARGETS[:-1] + [0.3] + NEAR_ONE:
            add("tinv", [p, df], 2, t_deviate(p, df, 2), exact_zero=(p == 0.5))
        for p in [1e-300, 1e-50, 1e-5, 0.01, 0.4, 0.9]:
            add("tinv", [p, df], 1, t_deviate(p, df, 1))
        for p in [1e-300, 1e-100, 1e-10, 0.05, 0.5, 0.99, 1 - 1e-12]:
            add("tinv", [p, df], 3, t_deviate(p, df, 3))
        for p in [1e-300, 1e-10, 0.5, 0.95, 1 - 1e-10]:
            add("tinv", [p, df], 4, t_deviate(p, df, 4))


# ---- chi-square and gamma --------------------------------------------------------------

def gen_chi2():
    # 1.998, 31.5, 32.5 and 1999 .. 2001: the double path's switch points (a = df/2 at 1,
    # 16 and 1000)
    for df in [1e-3, 0.1, 0.5, 1.0, 1.998, 2.0, 3.0, 7.5, 30.0, 31.5, 32.5, 100.0, 1e3, 1999.0,
               2000.0, 2001.0, 1e4, 1e5, 1e6]:
        xs = points_from(lambda q: stats.chi2.ppf(q, df), lambda q: stats.chi2.isf(q, df),
                         lo=0.0, extra=[df])
        for x in xs:
            lower, upper = igamma(MPF(df) / 2, MPF(x) / 2)
            add("chi2cdf", [x, df], 1, upper)
            add("chi2cdf", [x, df], 2, lower)
        pair = lambda x: igamma(MPF(df) / 2, x / 2)
        dens = lambda x: gamma_density(MPF(df) / 2, x / 2) / 2
        for p in TARGETS + NEAR_ONE:
            with np.errstate(all="ignore"):
                x0 = finite_double(stats.chi2.ppf(p, df))
            add("chi2inv", [p, df], 0, quantile_positive(pair, dens, p, x0))


def gen_gamma():
    for a, b in [(1e-3, 1.0), (0.1, 2.0), (0.5, 1.0), (1.0, 1e-3), (2.5, 0.37), (10.0, 1.0),
                 (100.0, 1e3), (1e4, 1.0), (1e6, 0.5), (3.0, 1e-150), (0.7, 1e150),
                 # the double path's switch points: shapes 1, 16 and 1000
                 (0.999, 1.0), (15.9, 2.0), (16.0, 0.5), (999.0, 1.0), (1000.0, 3.0),
                 (1000.5, 1.0)]:
        xs = points_from(lambda q: stats.gamma.ppf(q, a, scale=b),
                         lambda q: stats.gamma.isf(q, a, scale=b), lo=0.0, extra=[a * b])
        for x in xs:
            lower, upper = igamma(a, MPF(x) / b)
            add("gamcdf", [x, a, b], 1, upper)
            add("gamcdf", [x, a, b], 2, lower)
            add("gampdf", [x, a, b], 0, gamma_density(a, MPF(x) / b) / b)
        pair = lambda x: igamma(a, x / b)
        dens = lambda x: gamma_density(a, x / b) / b
        for p in TARGETS + NEAR_ONE:
            with np.errstate(all="ignore"):
                x0 = finite_double(stats.gamma.ppf(p, a, scale=b))
            add("gaminv", [p, a, b], 0, quantile_positive(pair, dens, p, x0))


# ---- F and beta ------------------------------------------------------------------------

def f_pair(f, d1, d2):
    f, d1, d2 = MPF(f), MPF(d1), MPF(d2)
    num = d1 * f
    return ibeta(d1 / 2, d2 / 2, num / (num + d2), d2 / (num + d2))


def f_density(f, d1, d2):
    f, d1, d2 = MPF(f), MPF(d1), MPF(d2)
    z = d1 * f / (d1 * f + d2)
    # dz/df = d1 d2 / (d1 f + d2)^2
    return beta_density(d1 / 2, d2 / 2, z) * d1 * d2 / (d1 * f + d2) ** 2


F_PAIRS = [(1e-3, 1.0), (1.0, 1e-3), (0.5, 0.5), (1.0, 1.0), (2.0, 10.0), (5.0, 20.0),
           (10.0, 3.0), (30.0, 30.0), (100.0, 1e3), (1e3, 1e6), (1e6, 1e6), (1e6, 1.0),
           (1.0, 1e6), (3.5, 1e5),
           # the double path's switch points: shapes 16 and 100
           (31.8, 32.2), (200.0, 200.0), (201.0, 5.0)]


def gen_f():
    for d1, d2 in F_PAIRS:
        xs = points_from(lambda q: stats.f.ppf(q, d1, d2), lambda q: stats.f.isf(q, d1, d2),
                         lo=0.0, extra=[1.0])
        for x in xs:
            lower, upper = f_pair(x, d1, d2)
            add("fcdf", [x, d1, d2], 1, upper)
            add("fcdf", [x, d1, d2], 2, lower)
        pair = lambda x: f_pair(x, d1, d2)
        dens = lambda x: f_density(x, d1, d2)
        for p in TARGETS + NEAR_ONE:
            with np.errstate(all="ignore"):
                x0 = finite_double(stats.f.ppf(p, d1, d2))
            add("finv", [p, d1, d2], 0, quantile_positive(pair, dens, p, x0))
    # Lower tails below 1e-300, where the deviate's start must not come from an iterative
    # inverse (one took minutes there).
    for p, d1, d2 in [(1e-306, 11.34, 8.0), (2.2250738585072014e-308, 3.7121092391726429, 1e10),
                      (1e-305, 0.5, 3.0)]:
        pair = lambda x: f_pair(x, d1, d2)
        dens = lambda x: f_density(x, d1, d2)
        add("finv", [p, d1, d2], 0, quantile_positive(pair, dens, p, None))
    # Ftable: the upper-tail quantile P(F > f) = p for integer degrees of freedom.
    for d1, d2 in [(1, 1), (2, 10), (5, 20), (10, 3), (30, 30), (1, 1000)]:
        pair = lambda x: f_pair(x, d1, d2)
        dens = lambda x: f_density(x, d1, d2)
        for p in [1e-300, 1e-10, 0.01, 0.05, 0.5, 0.95, 1 - 1e-10]:
            with np.errstate(all="ignore"):
                x0 = finite_double(stats.f.isf(p, d1, d2))
            add_util("Ftable", [p, d1, d2], quantile_positive(pair, dens, 1 - MPF(p), x0)
                     if p > 0.5 else solve_positive(lambda x: pair(x)[1], dens, p, False, x0))


BETA_PAIRS = [(1e-3, 1e-3), (1e-3, 1.0), (1.0, 1e-3), (0.5, 0.5), (1.0, 1.0), (2.0, 3.0),
              (10.0, 0.5), (0.5, 10.0), (50.0, 70.0), (1e3, 1e3), (1e4, 20.0), (1e6, 1e6),
              (1e6, 1.0), (1.0, 1e6), (1e-3, 1e6), (1e6, 1e-3),
              # the double path's switch points: shapes 16 and 100
              (0.5, 15.9), (16.0, 16.0), (15.9, 100.0), (100.0, 100.0), (100.5, 3.0),
              (0.01, 100.0)]


def gen_beta():
    for a, b in BETA_PAIRS:
        xs = points_from(lambda q: stats.beta.ppf(q, a, b), lambda q: stats.beta.isf(q, a, b),
                         lo=0.0, hi=1.0, extra=[0.5, a / (a + b)])
        for x in xs:
            lower, upper = ibeta(a, b, x)
            add("betacdf", [x, a, b], 1, upper)
            add("betacdf", [x, a, b], 2, lower)
            add("betapdf", [x, a, b], 0, beta_density(a, b, x))
        lower_at_half = ibeta(a, b, 0.5)[0]
        for p in TARGETS + NEAR_ONE:
            p = MPF(p)
            # x = I^-1(p), solved in x when the root lies below 1/2 and in y = 1 - x above,
            # so that the small one of x and 1 - x carries all its digits; the smaller tail
            # (p or 1 - p, both exact here) is the one matched.
            lower = lambda v: ibeta(a, b, v)[0]
            upper = lambda v: ibeta(a, b, v)[1]
            dens = lambda v: beta_density(a, b, v)
            if p <= lower_at_half:
                x = (solve_positive(lower, dens, p, True) if p <= 0.5
                     else solve_positive(upper, dens, 1 - p, False))
            else:
                # in y: I_x(a,b) = 1 - I_y(b,a)
                y_lower = lambda v: ibeta(a, b, 1 - v, v)[1]   # P(X >= 1 - v), rising in v
                y_upper = lambda v: ibeta(a, b, 1 - v, v)[0]
                y_dens = lambda v: beta_density(a, b, 1 - v, v)
                y = (solve_positive(y_lower, y_dens, 1 - p, True) if p > 0.5
                     else solve_positive(y_upper, y_dens, p, False))
                x = 1 - y
            add("betainv", [float(p), a, b], 0, x)
    for a, b, x in [(2.0, 3.0, 0.3), (0.5, 0.5, 1e-10), (1e3, 1e3, 0.47), (1e6, 1e6, 0.5001)]:
        add_util("incbeta", [x, a, b], ibeta(a, b, x)[0])


# ---- in-house densities and the log-normal and Weibull laws ----------------------------

def gen_in_house():
    for mu in [1e-3, 1.0, 7.5, 1e6]:
        for t in [0.0, 1e-10, 0.5, 1.0, 10.0, 100.0, 690.0]:
            x = t / mu
            add("exppdf", [x, mu], 0, MPF(mu) * mp.exp(-MPF(x) * mu))
    for a, b in [(0.0, 1.0), (-3.0, 1e-3), (1e3, 1e6)]:
        for k in [0, 0.5, -0.5, 3, -3, 1e3, -1e10, 1e100, 1e150]:
            x = a + k * b
            d = MPF(x) - a
            add("cauchypdf", [x, a, b], 0, MPF(b) / (mp.pi * (d * d + MPF(b) ** 2)))
    for mu, b in [(0.0, 1.0), (2.0, 1e-3), (-5e2, 1e6)]:
        for k in [0, 0.5, -3, 30, -300, 690]:
            x = mu + k * b
            add("lappdf", [x, mu, b], 0, mp.exp(-abs(MPF(x) - mu) / b) / (2 * MPF(b)))
    for mu, sigma in [(0.0, 1.0), (2.0, 0.25), (-3.0, 1e-3), (10.0, 5.0), (600.0, 1.0),
                      (0.0, 15.0)]:
        # z = 0 is left out: there x = e^mu rounded to a double, and the confidence
        # probability P(|Z| <= |z|) has relative condition number |ln x| / (sigma |z|) in x,
        # about 1e16, which no evaluation from a double x can meet.
        for z in [-37.5, -30, -20, -8, -1, -1e-3, 0.5, 3, 10, 25, 37.5]:
            lx = mu + z * sigma
            if abs(lx) > 700:
                continue
            x = float(mp.exp(lx))
            zz = (mp.log(MPF(x)) - mu) / sigma
            add("lognpdf", [x, mu, sigma], 0,
                mp.exp(-zz * zz / 2) / (mp.sqrt(2 * mp.pi) * sigma * MPF(x)))
            tails = normal_tails(zz)
            for tail in (1, 2, 3, 4):
                add("logncdf", [x, mu, sigma], tail, tails[tail])
        for p in TARGETS + NEAR_ONE:
            q = normal_quantile(p)
            add("logninv", [p, mu, sigma], 0, mp.exp(q * sigma + mu))
    for a, b in [(1.0, 1.0), (2.5, 0.5), (1e-3, 3.0), (1e3, 1e-3), (1.0, 1e6), (7.0, 40.0),
                 (1e100, 2.0)]:
        am, bm = MPF(a), MPF(b)
        xs = set()
        for t in TARGETS:
            for surv in (t, 1 - t):
                # x = a (-ln(surv))^(1/b) places the cdf at 1 - surv
                v = finite_double(am * (-mp.log(MPF(surv))) ** (1 / bm)) if surv < 1 else None
                if v is not None and v > 0:
                    xs.add(v)
        for x in sorted(xs):
            u = (MPF(x) / am) ** bm
            add("wblcdf", [x, a, b], 0, -mp.expm1(-u))
            add("wblpdf", [x, a, b], 0, bm / MPF(x) * u * mp.exp(-u))
        for p in TARGETS + NEAR_ONE:
            add("wblinv", [p, a, b], 0, am * (-mp.log1p(-MPF(p))) ** (1 / bm))


def main():
    self_check()
    for gen in (gen_normal, gen_t, gen_chi2, gen_gamma, gen_f, gen_beta, gen_in_house):
        gen()
        print(gen.__name__, "done", file=sys.stderr, flush=True)
    write_inc("gen_distributions_central.py", "distributions_central_ref.inc",
              "REF(fn, a0, a1, a2, tail, expected); REF_UTIL(fn, a0, a1, a2, expected)")


def write_inc(script, name, layout):
    """Writes the rows gathered so far to `name` beside this script, headed by the
    generator's name and versions, the row layout and the counts per function."""
    out = os.path.join(os.path.dirname(os.path.abspath(__file__)), name)
    with open(out, "w") as f:
        f.write("// Generated by %s (mpmath %s, %d digits; SciPy %s places the points). "
                "Do not edit.\n" % (script, mp.__version__, mp.mp.dps,
                                    __import__("scipy").__version__))
        f.write("// %s\n" % layout)
        f.write("// Counts: %s\n" % ", ".join("%s %d" % kv for kv in sorted(counts.items())))
        for r in rows + util_rows:
            f.write(r + "\n")
    print("wrote", out, len(rows), "+", len(util_rows), "rows", file=sys.stderr)


if __name__ == "__main__":
    main()
