#!/usr/bin/python3
"""Where the double incomplete beta kernel (platform/numeric/incomplete_beta.cpp) takes Temme's
uniform expansion: the series it sums, term by term in 50 digits, and reference values on both
sides of the switch.

1. The series. For both shapes at least 250 the kernel sums t_n = d_n w0^n J_n (the pairs of
   its loop, d_n the coefficients of gen_incomplete_beta_temme.py, J_n by the kernel's own
   two-term recurrence from J_0 = (sqrt(pi)/4) erfcx(sqrt f), J_1 = 2^-3/2), stopping at the
   first pair below 2^-56 of the sum, at most 20 terms. Here the same terms are formed in 50
   digits out to n = 40 (d_n by DiDonato and Morris's recurrences) over a grid of h = min/max
   in [1e-4, 1] (12 values), both orders of the shapes, the smaller shape m from 250 to 1e9 (9
   values) and s = f w0^2 (w0^2 = 1/(m (1 + h)), f the summed deviances) from 1e-6 to 0.2,
   where f <= 700. Then the same for the expansion beside a shape 1/2 (the large shape l from
   500 to 1e6, z = -(l - 1/4) ln v from 1e-6 to 700, terms out to n = 60). Printed and written to
   incomplete_beta_temme_terms.txt: per s, the most terms the stopping rule takes, the largest
   part of the series it leaves out (the terms after the stop out to n = 40, over the sum) and
   the largest ratio |t_(n+2) / t_n| after the stop, worst over the grid.
2. Reference rows BETA_SWITCH(a, b, x, lower, upper): I_x(a, b) and its complement at points
   on both sides of the switch (s = 0.055 and 0.065 beside kTemmeSettles = 0.06, and 0.02,
   0.085, 0.095, 0.15; the smaller shape 249 and 250), below and above the mean, by gen_distributions_central.py's continued
   fraction at 60 digits (imported; 1 - x exact), rounded to doubles. The points x are placed
   by solving f(x) = s / w0^2 in mpmath, then rounded; the expected values are at that double.
   Written to incomplete_beta_temme_switch_ref.inc.
Run: /usr/bin/python3 tests/reference/gen_incomplete_beta_temme_switch.py
"""
import os
import sys

import mpmath as mp

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import gen_distributions_central as central  # noqa: E402
import gen_incomplete_beta_temme as temme  # noqa: E402

MPF = mp.mpf
HERE = os.path.dirname(os.path.abspath(__file__))
MAX_TERMS = 40
KERNEL_TERMS = 20
STOP = MPF(2) ** -56


def series_terms(h, sign, f, w0, d):
    """The kernel's terms t_1 .. t_MAX_TERMS (t_0 = J_0 apart) and J_0, in mp arithmetic."""
    e0 = 2 / mp.sqrt(mp.pi)
    e1 = MPF(2) ** MPF(-1.5)
    z0 = mp.sqrt(f)
    j0 = (MPF(1) / 2 / e0) * mp.exp(f) * mp.erfc(z0)
    j1 = e1
    terms = [d[0] * w0 * j1]
    first = j0
    z, z2 = z0 / (2 * e1), 2 * f
    w, znm1, zn = w0, z, z2
    for n in range(2, MAX_TERMS + 1, 2):
        j0 = e1 * znm1 + (n - 1) * j0
        j1 = e1 * zn + n * j1
        znm1 *= z2
        zn *= z2
        w *= w0
        terms.append(d[n - 1] * w * j0)
        w *= w0
        terms.append(d[n] * w * j1)
    return first, terms


def survey():
    """Per s: most terms taken, largest part left out, largest ratio after the stop."""
    temme.TERMS = MAX_TERMS
    hs = [MPF(v) for v in ("1e-4", "1e-3", "0.01", "0.05", "0.1", "0.2", "0.3", "0.45", "0.6",
                           "0.75", "0.9", "1")]
    ms = [MPF(v) for v in ("250", "400", "700", "1e3", "2e3", "5e3", "1e4", "1e6", "1e9")]
    svals = ["1e-6", "1e-3", "0.01", "0.03", "0.05", "0.06", "0.07", "0.08", "0.09", "0.12",
             "0.15", "0.2"]
    coeffs = {}
    for h in hs:
        for sign in (1, -1):
            d = temme.coefficients_by_recurrence(h, sign)
            d[0] = sign * (1 - h) / 3
            coeffs[(h, sign)] = d
    lines = ["s = f w0^2  terms taken (most)  left out / sum (largest)  |t_(n+2)/t_n| after"
             " the stop (largest)"]
    for sv in svals:
        s = MPF(sv)
        most, left_worst, ratio_worst, failed, cases = 0, MPF(0), MPF(0), 0, 0
        for (h, sign), d in coeffs.items():
            for m in ms:
                w0 = 1 / mp.sqrt(m * (1 + h))
                f = s / w0 ** 2
                if f > 700:
                    continue
                cases += 1
                first, terms = series_terms(h, sign, f, w0, d)
                total = first + terms[0]
                stop = None
                for k in range(1, MAX_TERMS // 2 + 1):
                    pair = terms[2 * k - 1] + terms[2 * k] if 2 * k < len(terms) else None
                    if pair is None:
                        break
                    total += pair
                    if abs(terms[2 * k - 1]) + abs(terms[2 * k]) <= STOP * abs(total):
                        stop = 2 * k
                        break
                if stop is None or stop > KERNEL_TERMS:
                    failed += 1
                    continue
                most = max(most, stop)
                rest = mp.fsum(abs(t) for t in terms[stop + 1:])
                left_worst = max(left_worst, rest / abs(total))
                for n in range(stop + 1, len(terms) - 2):
                    if terms[n] != 0:
                        ratio_worst = max(ratio_worst, abs(terms[n + 2] / terms[n]))
        lines.append("%-10s  %4d%s  %24s  %24s" % (
            sv, most, " (%d of %d points need more than %d)" % (failed, cases, KERNEL_TERMS)
            if failed else " (of %d points)" % cases,
            mp.nstr(left_worst, 3), mp.nstr(ratio_worst, 3)))
    return lines


def half_shape_coefficients(count):
    """d_1 .. d_count of the expansion at the shape 1/2: c_n = 1/(2n + 1)!, d_n = -c_n/2 +
    (1/n) sum_i (i/2 - n) c_i d_(n-i)."""
    c, d = [], []
    for n in range(1, count + 1):
        c.append(1 / mp.factorial(2 * n + 1))
        acc = mp.fsum((MPF(i) / 2 - n) * c[i - 1] * d[n - i - 1] for i in range(1, n))
        d.append(-c[n - 1] / 2 + acc / n)
    return d


def half_shape_survey():
    """The kernel's expansion beside a shape 1/2 (l >= 500, z = -(l - 1/4) ln v <= 700): the
    terms d_n J_n out to n = 60, the kernel's stop (first term below 2^-56 of the sum, at most
    30), the largest ratio |t_(n+1) / t_n| after it and the largest part left out."""
    d = half_shape_coefficients(60)
    most, left_worst, ratio_worst, failed, cases = 0, MPF(0), MPF(0), 0, 0
    for l in (MPF(500), MPF(2000), MPF(10) ** 4, MPF(10) ** 5, MPF(10) ** 6):
        nu = l - MPF(1) / 4
        for z in (MPF("1e-6"), MPF("0.01"), MPF("0.5"), MPF(5), MPF(50), MPF(200), MPF(700)):
            cases += 1
            log_v = -z / nu
            e = mp.exp(-z)
            q = mp.erfc(mp.sqrt(z))
            r = e * mp.sqrt(z) / mp.sqrt(mp.pi)
            step, t2 = 1 / (4 * nu * nu), log_v * log_v / 4
            j, total, t, bp2n = q, q, MPF(1), MPF(1) / 2
            terms = []
            for n in range(1, 61):
                j = (bp2n * (bp2n + 1) * j + (z + bp2n + 1) * r * t) * step
                bp2n += 2
                t *= t2
                terms.append(d[n - 1] * j)
            stop = None
            for n, dj in enumerate(terms, 1):
                total += dj
                if abs(dj) <= STOP * abs(total):
                    stop = n
                    break
            if stop is None or stop > 30:
                failed += 1
                continue
            most = max(most, stop)
            left_worst = max(left_worst, mp.fsum(abs(v) for v in terms[stop:]) / abs(total))
            for n in range(stop, len(terms) - 1):
                if terms[n - 1] != 0:
                    ratio_worst = max(ratio_worst, abs(terms[n] / terms[n - 1]))
    return ["", "Beside a shape 1/2 (l 500 .. 1e6, z 1e-6 .. 700; the kernel stops at the first "
            "term below 2^-56 of the sum, at most 30):",
            "terms taken (most) %d, not settled %d of %d, left out / sum (largest) %s, "
            "|t_(n+1)/t_n| after the stop (largest) %s" % (most, failed, cases,
                                                          mp.nstr(left_worst, 3),
                                                          mp.nstr(ratio_worst, 3))]


def deviance_sum(a, b, x):
    n = a + b
    return a * mp.log(a / (n * x)) + b * mp.log(b / (n * (1 - x)))


def point_at(a, b, s, below):
    """x below (or above) the mean with f(x) = s / w0^2, w0^2 = 1 / (m (1 + h))."""
    m, big = min(a, b), max(a, b)
    target = s * m * (1 + m / big)
    mean = a / (a + b)
    lo, hi = (mean * MPF(10) ** -30, mean) if below else (mean, 1 - (1 - mean) * MPF(10) ** -30)
    return mp.findroot(lambda x: deviance_sum(a, b, x) - target, (lo, hi), solver="illinois")


def rows():
    out = []
    pairs = [(250.0, 250.0), (250.0, 1e4), (3e4, 250.0), (249.0, 5e3), (249.0, 249.0),
             (600.0, 600.0), (1e3, 1e3), (2e3, 8e3), (5e3, 5e3), (2e3, 2e6)]
    for a, b in pairs:
        A, B = MPF(a), MPF(b)
        for s in ("0.02", "0.055", "0.065", "0.085", "0.095", "0.15"):
            for below in (True, False):
                x = float(point_at(A, B, MPF(s), below))
                if not (0 < x < 1):
                    continue
                lower, upper = central.ibeta(A, B, MPF(x), 1 - MPF(x))
                vals = [float(lower), float(upper)]
                out.append("BETA_SWITCH(%s, %s, %s, %s, %s)" % tuple(
                    central.fmt(v) for v in [a, b, x] + vals))
    return out


def main():
    mp.mp.dps = 50
    lines = survey() + half_shape_survey()
    print("\n".join(lines))
    with open(os.path.join(HERE, "incomplete_beta_temme_terms.txt"), "w") as f:
        f.write("Temme's expansion in the double incomplete beta kernel: the series it sums, in 50 "
                "digits\n(gen_incomplete_beta_temme_switch.py; grid: h 1e-4 .. 1 both orders, "
                "smaller shape 250 .. 1e9, f <= 700;\nthe kernel stops at the first pair below "
                "2^-56 of the sum, at most 20 terms; left out = terms after the stop\nout to n = "
                "40).\n")
        f.write("\n".join(lines) + "\n")
    mp.mp.dps = 60
    out = rows()
    with open(os.path.join(HERE, "incomplete_beta_temme_switch_ref.inc"), "w") as f:
        f.write("// Generated by gen_incomplete_beta_temme_switch.py (mpmath %s, 60 digits). Do "
                "not edit.\n// BETA_SWITCH(a, b, x, lower, upper)\n" % mp.__version__)
        f.write("\n".join(out) + "\n")
    print("wrote", len(out), "rows", file=sys.stderr)


if __name__ == "__main__":
    main()
