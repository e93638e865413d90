#!/usr/bin/python3
"""Reference values of the non-central chi-square, beta and F far lower tails: on both sides of
the point where they leave the double range (half the smallest subnormal, 2^-1075), at
non-centralities 2001 to 1e5, and a few points further in (F tails, small b at non-centralities
near 1e9).

The points are placed with this script's own Chernoff exponent (mpmath, 50 digits):
    chi-square  min_w  w x/2 - (f/2) ln(1 + w) - (lambda/2) w/(1 + w)
    beta        min_p  -a ln(1 + p) - (lambda/2) p/(1 + p) - b ln(1 - p x/(1 - x)),
solved for x by bisection at the exponents -680 (a normal double above 1e-300), -735 and -744
(subnormal results or 0, summed by the routines), -750 (just past the cut) and -3000. The
value at each point is the Poisson mixture summed term by term (gen_noncentral_chi2_huge_lambda.py,
gen_noncentral_beta_huge_lambda.py: every term above 1e-40 of the sum), so the exponent only
places the points and never enters an expected value. Values below 2^-1075 are written as 0.
Beside them, points at non-centralities up to 1e9 where summing the mixture at 40 digits would
take hours (the slowest calls found by random scans), written as 0 where this script's own
exponent, an upper bound on ln P in exact arithmetic, lies below ln 2^-1075 (asserted).

Writes tests/reference/noncentral_far_tails_ref.inc:
    {kind, p0, p1, p2, lambda, P}, kind 0 chi-square (x, df, -, lambda), 1 beta (x, a, b,
    lambda), 2 F (f, df1, df2, lambda).
Run: REF_PROCS=2 /usr/bin/python3 tests/reference/gen_noncentral_far_tails.py  (a few minutes)
"""
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import mpmath as mp  # noqa: E402

import gen_noncentral_beta_huge_lambda as nbeta  # noqa: E402
import gen_noncentral_chi2_huge_lambda as nchi2  # noqa: E402

MPF = mp.mpf
TARGETS = (-680, -735, -744, -750, -3000)


def chi2_exponent(x, f, lam):
    x, f, lam = MPF(x), MPF(f), MPF(lam)
    u = (f + mp.sqrt(f * f + 4 * x * lam)) / (2 * x)
    if u <= 1:
        return MPF(0)
    w = u - 1
    return w * x / 2 - f / 2 * mp.log1p(w) - lam / 2 * w / (1 + w)


def beta_exponent(r, a, b, lam):
    """The exponent at x = r / (1 + r)."""
    r, a, b, h = MPF(r), MPF(a), MPF(b), MPF(lam) / 2
    c = b * r - a - h
    if c >= 0:
        return MPF(0)
    qa, qb = r * (a + b), 2 * b * r + h * r + a * r - a
    p = (-qb + mp.sqrt(qb * qb - 4 * qa * c)) / (2 * qa)
    return -a * mp.log1p(p) - h * p / (1 + p) - b * mp.log(1 - p * r)


def solve(g, lo, hi, target):
    """Bisection in the logarithm for g(v) = target, g increasing on [lo, hi]."""
    lo, hi = mp.log(lo), mp.log(hi)
    for _ in range(200):
        mid = (lo + hi) / 2
        if g(mp.exp(mid)) < target:
            lo = mid
        else:
            hi = mid
    return mp.exp(lo)


def rows():
    out = []
    with mp.workdps(50):
        for lam in (2001.0, 1e5):
            for df in (1.0, 1e3):
                for target in TARGETS:
                    x = solve(lambda v: chi2_exponent(v, df, lam), MPF(10) ** -300, df + lam, target)
                    out.append((0, float(x), df, 0.0, lam))
            for a, b in ((2.5, 5.0), (300.0, 40.0), (0.5, 2000.0)):
                for target in TARGETS:
                    r = solve(lambda v: beta_exponent(v, a, b, lam), MPF(10) ** -300,
                              (a + lam / 2) / b, target)
                    x = float(r / (1 + r))
                    out.append((1, x, a, b, lam))
                    # The F law at df1 f / df2 = r.
                    out.append((2, float(r * b / a), 2 * a, 2 * b, lam))
    # F far lower tails where an x rounded to double cost up to 4e-12 (the law's condition
    # number in x reaches thousands there).
    out += [(2, 188.8470322479009, 6.863312821245728, 950.9560347680087, 5239.288972774002),
            (2, 0.4263525787656665, 6653.555012445426, 1285.8111599901206, 4447.629969525614),
            (2, 469.20299923651646, 2.5026689951345027, 738.1247655661044, 7488.817155886847),
            (2, 0.9860687180345881, 13547262.782975826, 1681163150.5750387, 5.964013223226257)]
    # Small b at huge non-centralities, where the central terms fall like e^(-s y) and the
    # largest term lies far from a guess that takes them as a parabola about the switch.
    out += [(1, 0.9999997747923581, 13446.081465937767, 0.002458061148640459, 972379255.561053),
            (1, 0.999999467724563, 77.88212977174331, 0.07639469871852378, 958334904.5574741),
            (2, 2025.2832702189944, 19.091003280548108, 0.005478719589699227, 981125129.7685835),
            # and x within 1e-8 of 1, where the central terms' lower side is not the double
            # incomplete beta's (an expansion in 1/s takes it).
            (1, 0.9999999982356719, 10.55, 0.01619, 5.08e8),
            (1, 0.9999999477941787, 0.027042716425419205, 0.5, 791758674.9267029),
            (2, 52319910911.078316, 65.991733475884, 0.0038332466271449924, 994551489.4862112),
            (1, 0.9999999, 2.5, 0.01, 1e5)]
    return out


# Far lower tails at huge non-centralities: {kind, p0, p1, p2, lambda}.
PROVEN_ZERO = [
    (1, 0.8397020904357568, 0.20185474304837236, 1.3339497510823966, 12290.129031600512),
    (1, 0.9999970332267847, 308.58, 237.54, 9.63e8),
    (1, 0.99985, 5000.0, 50000.0, 1e9),
    (1, 0.9999454094603164, 7671.42348917763, 3607.608178612444, 783072173.148476),
    (2, 27.255, 10291.4, 11.52, 5.55e8),
    (2, 5856747104.0, 0.002239, 556.92, 5.98e8),
    (2, 964.65, 263.47, 2.72, 9.48e8),
    (0, 773469.9, 0.001976, 0.0, 1037123.3),
    (0, 54099.9, 0.0011, 0.0, 3.43e7),
    (0, 67767746.34129897, 69531365.77630731, 0.0, 2.149683931463758),
]


# A huge f beside the smallest df2 (1 - x = 5e-438 leaves the double range; once gave 1):
# there P(X <= x) = P(V/2 >= U y / (2x)), V/2 ~ Gamma(b), and with b = df2/2 = 5e-324 and
# u = U y / (2x) near 1e-428, Q(b, u) = 1 - u^b / Gamma(1 + b) = b (-ln u - gamma) to a
# relative O(b), so P = b (-gamma - ln(y / (2x)) - E[ln U]), E[ln U] = ln m - v / (2 m^2) to
# a relative 1e-18 (m = df1 + lambda, v = 2 df1 + 4 lambda: U's mean and variance). (The
# mixture summed at 40 digits cannot resolve a lower side 1e-321 below 1.)
LIMIT_ROWS = [(2, 2.2535402901289257e+108, 97361.36179066765, 1e-323, 900418354.819508)]


def limit_line(row):
    kind, f, df1, df2, lam = row
    with mp.workdps(50):
        b = MPF(df2) / 2
        ratio = MPF(df2) / (MPF(df1) * MPF(f))  # y / x
        m, v = MPF(df1) + lam, 2 * MPF(df1) + 4 * MPF(lam)
        p = b * (-mp.euler - mp.log(ratio / 2) - (mp.log(m) - v / (2 * m * m)))
    return f"    {{{kind}, {f!r}, {df1!r}, {df2!r}, {lam!r}, {float(p)!r}}},  // {mp.nstr(p, 6)}"


def proven_zero_line(row):
    kind, p0, p1, p2, lam = row
    with mp.workdps(50):
        if kind == 0:
            g = chi2_exponent(p0, p1, lam)
        elif kind == 1:
            g = beta_exponent(MPF(p0) / (1 - MPF(p0)), p1, p2, lam)
        else:
            g = beta_exponent(MPF(p1) * MPF(p0) / MPF(p2), p1 / 2, p2 / 2, lam)
        assert g < -1075 * mp.log(2), row
    return f"    {{{kind}, {p0!r}, {p1!r}, {p2!r}, {lam!r}, 0.0}},  // below e^{mp.nstr(g, 6)}"


def reference(row):
    kind, p0, p1, p2, lam = row
    if kind == 0:
        return nchi2.ncchi2(p0, p1, lam)
    return nbeta.reference((kind, p0, p1, p2, lam))


def line(row):
    r = reference(row)
    kind, p0, p1, p2, lam = row
    value = 0.0 if r < MPF(2) ** -1075 else float(r)
    return f"    {{{kind}, {p0!r}, {p1!r}, {p2!r}, {lam!r}, {value!r}}},  // {mp.nstr(r, 6)}"


def main():
    import multiprocessing
    procs = int(os.environ.get('REF_PROCS', '1'))
    with multiprocessing.Pool(procs) as pool:
        lines = pool.map(line, rows(), chunksize=1)
    lines += [limit_line(row) for row in LIMIT_ROWS]
    lines += [proven_zero_line(row) for row in PROVEN_ZERO]
    out = os.path.join(os.path.dirname(os.path.abspath(__file__)),
                       'noncentral_far_tails_ref.inc')
    with open(out, 'w') as fh:
        fh.write('// Generated by tests/reference/gen_noncentral_far_tails.py; do not edit.\n')
        fh.write('// {kind (0 chi-square, 1 beta, 2 F), x or f, df or a or df1, b or df2, lambda, '
                 'P(X <= x), 0 below 2^-1075}\n')
        fh.write('\n'.join(lines) + '\n')
    print(f"{len(lines)} rows -> {out}")


if __name__ == '__main__':
    main()
