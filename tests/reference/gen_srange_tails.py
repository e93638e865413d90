#!/usr/bin/python3
"""Reference values of the studentized range law in both tails, by the other order of
integration: over the range W of r standard normals first,
    P(Q <= q) = P(W <= q S) = integral f_W(w) P(S >= w/q) dw,
    1 - P(Q <= q)           = integral f_W(w) P(S <  w/q) dw,
S = sqrt(chi2_v / v), so that P(S < s) = P(chi2_v < v s^2) is mpmath's regularized lower
incomplete gamma function, and the upper tail is an integral of its own (no 1 - P). The range
density is
    f_W(w) = r (r-1) integral phi(z) phi(z + w) (Phi(z + w) - Phi(z))^(r-2) dz,
whose integrand (z the smallest of the r normals) is log-concave and symmetric about
z = -w/2: it is summed from there outwards, on Gauss-Legendre panels at -w/2 + width *
(0, 1/2, 1, 2, 4, ...), width 1/sqrt of its curvature there (closed form), until it has
fallen by e^-FALL; Phi(z + w) - Phi(z) from the two outer tails by log1p where it is close
to 1. v = infinity is the range law itself (P(S < s) the step at s = 1). The outer integrand
f_W(w) P(S <> w/q) is log-concave as well: its mode is located by bisection on finite
differences of its logarithm, its width from their curvature, and it is summed the same way
(P(S < w/q) is a step of width q / sqrt(2 v) at w = q for large v: the panels start at that
width and double; past v = 1e8, narrower than that, 1 - P is instead the expansion of
E U(q S) about S = 1, see upper_large_v). Each value is computed at two resolutions (12 and
24 nodes per panel); rows whose two values differ by more than 1e-12 relative are reported
and refused (v = 1 at q = 1e9 and beyond are refused so far). Every panel is halved while
its integrand falls by more than e^-DROP across it: at 2^31 - 1 groups the range density's
integrand falls double-exponentially away from its peak, and the doubling panels alone left
the two resolutions 5e-11 apart there (those rows now agree to 1e-13 at 1 - P = 7e-5, 1e-15
and better below).

Upper-tail rows (q, v, r, 1 - P) run from 1e-3 down to 1e-27; the lower-tail rows are P of
many groups at few degrees of freedom, where the range law's step lies in the scale's tail
(there the range-first order has a smooth outer integrand, where the scale-first double
integral of gen_srange_many_groups.py must resolve the step: (60, 6, 1168028) is taken here).
Deviates near p = 1 (q with 1 - P(q) = 1 - p exactly) by Newton's method on these integrals.

Writes tests/reference/srange_tails_ref.inc. 25 digits. Run:
    /usr/bin/python3 tests/reference/gen_srange_tails.py [Q ...]
(about 25 minutes of CPU; rows already in the table are kept, --all recomputes them; with
arguments, only the rows and deviates whose q or p is among them; --check compares the
v = infinity upper-tail rows of many groups with an integral over the largest normal).
"""
import math
import os
import re
import sys

import mpmath as mp

OUT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "srange_tails_ref.inc")
mp.mp.dps = 25
FALL = 80
DROP = 8  # the most ln f may fall across one panel


def upper_normal(z):
    return mp.erfc(z / mp.sqrt(2)) / 2


def log_npdf(z):
    return -z * z / 2 - mp.log(2 * mp.pi) / 2


def log_between(z, w):
    """ln(Phi(z + w) - Phi(z)), z the smaller end; log1p of minus the outer tails near 1."""
    outside = upper_normal(-z) + upper_normal(z + w)
    if outside < mp.mpf("0.25"):
        return mp.log1p(-outside)
    if z >= 0:
        return mp.log(upper_normal(z) - upper_normal(z + w))
    if z + w <= 0:
        return mp.log(upper_normal(-(z + w)) - upper_normal(-z))
    return mp.log(1 - outside)


def gauss(f, a, b, nodes):
    c, h = (a + b) / 2, (b - a) / 2
    return abs(h) * mp.fsum(wt * f(c + h * x) for x, wt in nodes)


def walk(logf, peak, width, nodes, lo=None, hi=None):
    """Integral of exp(logf(x) - logf(peak)) over [lo, hi] (None: unbounded) for a concave
    logf with its maximum at peak; returns (logf(peak), integral). Panels end at peak +-
    width * (1/2, 1, 2, 4, ...), each halved while logf falls by more than DROP across it:
    at 2^31 - 1 groups the range density's integrand falls double-exponentially (ln of
    (Phi(z + w) - Phi(z))^(r-2) goes like -r Phi(-z)), and one panel from e^-5 to e^-1000
    of the peak left 12 and 24 nodes 5e-11 apart."""
    top = logf(peak)

    def f(x):
        return mp.exp(logf(x) - top)

    total = mp.mpf(0)
    for direction, end in ((1, hi), (-1, lo)):
        a, step, k = peak, width / 2, 0
        while True:
            b = a + direction * step
            last = end is not None and (b - end) * direction >= 0
            if last:
                b = end
            capped = False
            while a != b and logf(a) - logf(b) > DROP:
                b, last, capped = a + (b - a) / 2, False, True
            if a != b:
                total += gauss(f, a, b, nodes)
            k += 1
            if last or logf(b) - top < -FALL:
                break
            if k > 400:
                raise RuntimeError("integrand does not fall")
            step = abs(b - a) if capped else max(abs(b - peak), step)
            a = b
    return top, total


def gamma_split(a, x):
    """The regularized incomplete gamma functions (P(a, x), Q(a, x)). Past a = 1e5 (where
    mpmath's series no longer converge at x near a) by Temme's uniform expansion,
        Q = erfc(eta sqrt(a/2)) / 2 + e^(-a eta^2 / 2) / sqrt(2 pi a) (c0 + c1 / a + ...),
    lambda = x/a, eta^2 / 2 = lambda - 1 - ln lambda (eta of the sign of lambda - 1),
    c0 = 1/(lambda-1) - 1/eta, c1 = 1/eta^3 - 1/(lambda-1)^3 - 1/(lambda-1)^2 - 1/(12 (lambda-1))
    (the next term is below 1e-4 / a^2 of the leading one), at 80 digits against the
    cancellations of c0 and c1 near lambda = 1."""
    if a < 10 ** 5:
        return (mp.gammainc(a, 0, x, regularized=True),
                mp.gammainc(a, x, mp.inf, regularized=True))
    with mp.workdps(80):
        a, x = mp.mpf(a), mp.mpf(x)
        d = x / a - 1
        if abs(d) < mp.mpf(10) ** -35:
            c0, c1, eta = mp.mpf(-1) / 3, mp.mpf(-1) / 540, d
        else:
            eta = mp.sign(d) * mp.sqrt(2 * (d - mp.log1p(d)))
            c0 = 1 / d - 1 / eta
            c1 = 1 / eta ** 3 - 1 / d ** 3 - 1 / d ** 2 - 1 / (12 * d)
        rest = mp.exp(-a * eta ** 2 / 2) / mp.sqrt(2 * mp.pi * a) * (c0 + c1 / a)
        upper = mp.erfc(eta * mp.sqrt(a / 2)) / 2 + rest
        lower = mp.erfc(-eta * mp.sqrt(a / 2)) / 2 - rest
    return +lower, +upper


class Range:
    def __init__(self, r, nodes, split):
        self.r, self.nodes, self.split = r, nodes, split
        self.cache = {}

    def log_density(self, w):
        """ln f_W(w)."""
        if w in self.cache:
            return self.cache[w]
        r = self.r

        def logg(z):
            return log_npdf(z) + log_npdf(z + w) + (r - 2) * log_between(z, w)

        z0 = -w / 2
        a = w / 2
        inside = 1 - 2 * upper_normal(a)
        curvature = 2 + (r - 2) * w * mp.npdf(a) / inside
        width = 1 / mp.sqrt(curvature) / self.split
        top, half = walk(logg, z0, width, self.nodes, lo=z0)
        value = mp.log(2 * r * (r - 1)) + top + mp.log(half)
        self.cache[w] = value
        return value


class Law:
    def __init__(self, q, v, r, nodes, split, key):
        self.key = key
        self.q = mp.mpf(q)
        self.v = mp.inf if v == math.inf else mp.mpf(v)
        self.range = Range(r, nodes, split)
        self.nodes, self.split = nodes, split

    def log_scale_below(self, s):
        """ln P(S < s)."""
        return mp.log(gamma_split(self.v / 2, self.v * s * s / 2)[0])

    def log_scale_above(self, s):
        return mp.log(gamma_split(self.v / 2, self.v * s * s / 2)[1])

    def log_tail(self, upper):
        """ln P (upper False) or ln(1 - P) (upper True)."""
        q = self.q
        if self.v == mp.inf:
            lo, hi = (q, None) if upper else (mp.mpf(0), q)
            outer = self.range.log_density
        else:
            lo, hi = mp.mpf(0), None
            part = self.log_scale_below if upper else self.log_scale_above

            def outer(w):
                return self.range.log_density(w) + part(w / q)

        return self.integrate(outer, lo, hi)

    def integrate(self, logf, lo, hi):
        if self.key not in MODES:
            MODES[self.key] = self.locate(logf, lo, hi)
        mode, width = MODES[self.key]
        top, total = walk(logf, mode, width / self.split, self.nodes, lo=lo, hi=hi)
        return top + mp.log(total)

    def locate(self, logf, lo, hi):
        """The mode of the concave logf on [lo, hi] and the local width there."""
        # The mode: bracket [a, b] with logf rising at a and falling at b.
        def slope(x, h):
            return (logf(x + h) - logf(x - h)) / (2 * h)

        # The range's own scale (the outer variable is w, whatever q).
        scale = min(max(self.q, mp.mpf(1)), mp.mpf(20))
        # The width of the step P(S < w/q) at w = q: the finite differences and the first
        # panels must resolve it.
        sharp = self.q / mp.sqrt(2 * self.v) if self.v != mp.inf else mp.inf
        a = lo if lo > 0 else mp.mpf(10) ** -6 * scale
        b = a + min(scale, sharp)
        h = mp.mpf(10) ** -14 * scale
        if slope(a + h, h) <= 0:
            mode = a
        else:
            while slope(b, h) > 0:
                a, b = b, b + 2 * (b - a)
                if hi is not None and b >= hi:
                    b = hi
                    break
            if hi is not None and b >= hi and slope(b - h, h) > 0:
                mode = hi
            else:
                # Down to a tenth of the local width (from the curvature).
                g = min(mp.mpf(10) ** -7 * scale, sharp / 1000)
                for _ in range(300):
                    m = (a + b) / 2
                    if slope(m, h) > 0:
                        a = m
                    else:
                        b = m
                    c = (logf(m + g) - 2 * logf(m) + logf(m - g)) / (g * g)
                    if c < 0 and b - a < mp.mpf("0.1") / mp.sqrt(-c):
                        break
                mode = (a + b) / 2
        # Width: from the curvature, or from the slope at an end point.
        g = min(mp.mpf(10) ** -7 * scale, sharp / 1000)
        c = (logf(mode + g) - 2 * logf(mode) + logf(mode - g)) / (g * g) if mode > lo + g else 0
        s = abs(slope(mode + g if mode == lo else mode - g, h)) if mode in (lo, hi) else 0
        return mode, min(1 / max(mp.sqrt(abs(c)) if c else 0, s, mp.mpf(10) ** -6 / scale), sharp)


MODES = {}
LARGE_V = 10 ** 8


def upper_large_v(q, v, r, nodes, step):
    """1 - P for v >= LARGE_V, where P(S < w/q) is a step narrower than the panels resolve:
    E U(q S), U = 1 - W the range's upper tail, expanded about S = 1,
        sum_k U^(k)(q) q^k E (S - 1)^k / k!,  k <= 4,
    U' = -f_W and its derivatives by central differences (steps 2e-4 and 1e-4 at the two
    resolutions), the moments from
    E S^j = (2/v)^(j/2) Gamma((v+j)/2) / Gamma(v/2) (E (S-1)^k is of order v^-ceil(k/2): the
    terms left out are below 1e-22 of U at v = 1e8 for the q used)."""
    law = Law(q, math.inf, r, nodes, 1, (q, math.inf, r, True, id(nodes)))
    u = mp.exp(law.log_tail(True))
    qq = mp.mpf(q)

    def density(w):
        return mp.exp(law.range.log_density(w))

    derivs = [density(qq)] + [mp.diff(density, qq, n, h=mp.mpf(step)) for n in (1, 2, 3)]
    with mp.workdps(120):
        vv = mp.mpf(v)
        raw = [mp.exp(j * mp.log(2 / vv) / 2 + mp.loggamma((vv + j) / 2) - mp.loggamma(vv / 2))
               for j in range(5)]
        moments = [mp.fsum(mp.binomial(k, j) * raw[j] * (-1) ** (k - j) for j in range(k + 1))
                   for k in range(5)]
    total = u
    for k in range(1, 5):
        total -= derivs[k - 1] * qq ** k * moments[k] / mp.factorial(k)
    return total


def tail(q, v, r, upper):
    """P (or 1 - P when upper) at the finer resolution and the two resolutions' difference."""
    coarse = mp.calculus.quadrature.GaussLegendre(mp.mp).calc_nodes(3, mp.mp.prec)
    fine = mp.calculus.quadrature.GaussLegendre(mp.mp).calc_nodes(4, mp.mp.prec)
    if upper and v != math.inf and v >= LARGE_V:
        a, b = upper_large_v(q, v, r, coarse, "2e-4"), upper_large_v(q, v, r, fine, "1e-4")
        return b, abs(a / b - 1)
    a = Law(q, v, r, coarse, 1, (q, v, r, upper)).log_tail(upper)
    b = Law(q, v, r, fine, 1, (q, v, r, upper)).log_tail(upper)
    return mp.exp(b), abs(mp.expm1(a - b))


# (q, v, r, which): which is "upper" for an upper-tail row, "lower" for a lower-tail one.
CASES = [
    # upper tails, down to 1e-16, few groups and many, v from 1 to 1e15 and infinity
    (11.6, 1e10, 4, "upper"), (11.6, 1.08e15, 4, "upper"), (11.6, math.inf, 4, "upper"),
    (9.0, math.inf, 4, "upper"), (8.0, 30.0, 4, "upper"), (14.0, 30.0, 4, "upper"),
    (40.0, 5.0, 4, "upper"), (1e9, 1.0, 4, "upper"), (1e15, 1.0, 4, "upper"),
    (8.0, math.inf, 2, "upper"), (11.0, 1e4, 2, "upper"), (30.0, 3.0, 2, "upper"),
    (14.0, 1e4, 10, "upper"), (20.0, 20.0, 10, "upper"), (13.0, math.inf, 10, "upper"),
    (10.0, 50.0, 100, "upper"), (16.0, math.inf, 100, "upper"), (60.0, 3.0, 100, "upper"),
    (14.0, 100.0, 1000, "upper"), (17.0, math.inf, 1000, "upper"),
    (14.0, math.inf, 2147483647, "upper"), (18.0, 1e4, 2147483647, "upper"),
    (40.0, 5.0, 2147483647, "upper"),
    # 2^31 - 1 groups at v = 1e6 and infinity: 1 - P from about 1e-3 to 1e-20
    (13.0, math.inf, 2147483647, "upper"), (15.5, math.inf, 2147483647, "upper"),
    (17.0, math.inf, 2147483647, "upper"), (18.5, math.inf, 2147483647, "upper"),
    (13.0, 1e6, 2147483647, "upper"), (14.0, 1e6, 2147483647, "upper"),
    (17.0, 1e6, 2147483647, "upper"), (18.5, 1e6, 2147483647, "upper"),
    # 912 groups near 1 - P = 1e-13, where the range tail's trapezoidal rule once took a level
    # that agreed with the last to 1e-8 while 2.6e-11 off
    (12.7, math.inf, 912, "upper"), (12.8, math.inf, 912, "upper"), (12.8, 1e6, 912, "upper"),
    # many groups at few degrees of freedom, the range law's step in the scale's tail
    (16.0, 3.0, 2147483647, "lower"), (12.0, 5.0, 10000000, "lower"),
    (40.0, 1.0, 1000, "lower"), (60.0, 6.0, 1168028, "lower"),
    (12.5, 1e6, 2147483647, "lower"), (13.0, math.inf, 2147483647, "lower"),
    # the same at P from 2e-6 to 1 - 1e-6, v from 2 to 8 (the step of the range law in the
    # scale law's lower tail; the double integral over the scale first needs its outer panels
    # bisected across that step there)
    (4.0, 8.0, 300000, "lower"), (1e4, 2.0, 1000000, "lower"),
]


# Deviates near p = 1: q with 1 - P(q) = 1 - p exactly, p the double given.
DEVIATES = [(0.9999999999999993, 1.08e15, 4, 11.727), (0.9999999999999993, 1e10, 4, 11.727),
            (0.9999999999999993, math.inf, 4, 11.727)]


def deviate(p, v, r, start):
    """Newton's method on ln(1 - P) from start, with the range density f_W(q) for the
    derivative (that of 1 - P within 1e-9 relative at the degrees of freedom used, so the
    iteration still converges), at the finer resolution."""
    fine = mp.calculus.quadrature.GaussLegendre(mp.mp).calc_nodes(4, mp.mp.prec)
    target = mp.log(1 - mp.mpf(p))
    q = mp.mpf(start)
    for _ in range(12):
        if v != math.inf and v >= LARGE_V:
            log_t = mp.log(upper_large_v(q, v, r, fine, "1e-4"))
        else:
            log_t = Law(q, v, r, fine, 1, (q, v, r, True, "deviate")).log_tail(True)
        if v != math.inf and v < LARGE_V:
            dlog = -mp.diff(lambda x: Law(x, v, r, fine, 1, (x, v, r, True, "d")).log_tail(True),
                            q, h=mp.mpf("1e-6"))
        else:
            dlog = mp.exp(Range(r, fine, 1).log_density(q) - log_t)
        step = (log_t - target) / dlog
        q += step
        print("  deviate", p, v, r, mp.nstr(q, 22), mp.nstr(step, 3), file=sys.stderr, flush=True)
        if abs(step) < mp.mpf(10) ** -19 * q:
            return float(q)
    raise RuntimeError("deviate did not converge")


def computed(case):
    q, v, r, which = case
    value, diff = tail(q, v, r, which == "upper")
    print("srange", q, v, r, which, mp.nstr(value, 20), "convergence", mp.nstr(diff, 3),
          file=sys.stderr, flush=True)
    if diff > mp.mpf(10) ** -12:
        print("  refused: not converged", file=sys.stderr)
        return None
    return float(value)


def kept_rows():
    rows = {}
    if os.path.exists(OUT):
        pattern = re.compile(r"\{([^,{}]+), ([^,{}]+), (\d+), (true|false), ([^,{}]+)\},")
        for line in open(OUT):
            m = pattern.search(line)
            if m:
                v = math.inf if m.group(2) == "INFINITY" else float(m.group(2))
                which = "upper" if m.group(4) == "true" else "lower"
                rows[(float(m.group(1)), v, int(m.group(3)), which)] = float(m.group(5))
    return rows


def upper_by_largest(q, r):
    """1 - P at v = infinity the other way, over the largest of the r normals (a check only):
        r integral phi(u) Phi(u)^(r-1) (1 - (1 - Phi(u - q)/Phi(u))^(r-1)) du,
    the bracket by expm1 and log1p, mpmath's tanh-sinh on fixed breaks a quarter apart from
    below the largest's mode (about sqrt(2 ln r)) to beyond q/2 (where the far tails put the
    mass), the integrand scaled to about 1 there (quad's error target is absolute)."""
    q = mp.mpf(q)
    centre = math.sqrt(2 * math.log(r))

    def f(u):
        below = 1 - upper_normal(u)
        inner = -mp.expm1((r - 1) * mp.log1p(-upper_normal(q - u) / below))
        return r * mp.npdf(u) * mp.exp((r - 1) * mp.log(below)) * inner

    scale = max(f(mp.mpf(centre)), f(q / 2))
    breaks = sorted({-10.0, 0.0, 40.0} | {centre + k / 4 for k in range(-16, 80)})
    return scale * mp.quad(lambda u: f(u) / scale, [mp.mpf(b) for b in breaks if -10 <= b <= 40])


def check():
    """The v = infinity upper-tail rows at many groups against upper_by_largest."""
    for (q, v, r, which), value in kept_rows().items():
        if which == "upper" and v == math.inf and r > 100:
            other = upper_by_largest(q, r)
            print(q, r, value, mp.nstr(other, 20), mp.nstr(abs(other / value - 1), 3))


def main():
    if "--check" in sys.argv:
        check()
        return
    kept = {} if "--all" in sys.argv else kept_rows()
    only = [a for a in sys.argv[1:] if not a.startswith("--")]
    for case in CASES:
        if case in kept or (only and repr(case[0]) not in only):
            continue
        value = computed(case)
        if value is not None:
            kept[case] = value
            write(kept)
    deviates = {}
    for p, v, r, start in DEVIATES:
        if (only and repr(p) not in only) or (p, v, r) in kept_deviates():
            deviates[(p, v, r)] = kept_deviates().get((p, v, r))
            continue
        deviates[(p, v, r)] = deviate(p, v, r, start)
    write(kept, deviates)


def kept_deviates():
    rows = {}
    if os.path.exists(OUT):
        pattern = re.compile(r"\{([^,{}]+), ([^,{}]+), (\d+), ([^,{}]+)\},")
        for line in open(OUT):
            m = pattern.search(line)
            if m and "true" not in line and "false" not in line:
                v = math.inf if m.group(2) == "INFINITY" else float(m.group(2))
                rows[(float(m.group(1)), v, int(m.group(3)))] = float(m.group(4))
    return rows


def write(kept, deviates=None):
    if deviates is None:
        deviates = kept_deviates()
    with open(OUT, "w") as out:
        out.write("// Generated by tests/reference/gen_srange_tails.py; do not edit.\n")
        out.write("// Studentized range tails (upper: 1 - P(Q <= q)) by the range-first integral, "
                  "mpmath 25 digits.\n")
        out.write("#pragma once\nnamespace ref_srange_tails {\n")
        out.write("struct Row { double q; double v; int r; bool upper; double value; };\n")
        out.write("inline constexpr Row kRows[] = {\n")
        for case in CASES:
            if case in kept:
                q, v, r, which = case
                vs = "INFINITY" if v == math.inf else repr(float(v))
                out.write("    {%r, %s, %d, %s, %r},\n"
                          % (q, vs, r, "true" if which == "upper" else "false", kept[case]))
        out.write("};\n")
        out.write("// Deviates: 1 - P(q) = 1 - p exactly.\n")
        out.write("struct Deviate { double p; double v; int r; double q; };\n")
        out.write("inline constexpr Deviate kDeviates[] = {\n")
        for (p, v, r), q in deviates.items():
            if q is not None:
                vs = "INFINITY" if v == math.inf else repr(float(v))
                out.write("    {%r, %s, %d, %r},\n" % (p, vs, r, q))
        out.write("};\n}  // namespace ref_srange_tails\n")


if __name__ == "__main__":
    main()
