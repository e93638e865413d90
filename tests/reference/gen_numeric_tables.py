#!/usr/bin/python3
"""Writes numeric_tables_ref.inc: the constant tables of src/platform/numeric, and
reference values for the kernels built on them.

Oracle: mpmath at 40 significant digits, independent of the library.
  - Gauss-Legendre rules of 6, 12 and 20 points: the positive nodes (roots of P_n,
    by mpmath.polyroots-free Newton iteration from the Chebyshev estimates) and their
    weights 2 / ((1 - x^2) P_n'(x)^2), largest node first, each rounded once to double;
  - Stirling's error ln k! - ((k + 1/2) ln k - k + ln(2 pi)/2) at k = 0..15 (0 at k = 0);
  - checks: ln k! (mpmath.loggamma(k + 1)) and Stirling's error at integer and
    non-integer k across the table's end and the series' ranges.
The library's tables carry these digits; a test compares them entry by entry.
Run: /usr/bin/python3 tests/reference/gen_numeric_tables.py > tests/reference/numeric_tables_ref.inc
"""
import mpmath as mp

mp.mp.dps = 40


def legendre_rule(n):
    nodes = []
    for i in range(1, n // 2 + 1):
        x = mp.cos(mp.pi * (i - mp.mpf(1) / 4) / (n + mp.mpf(1) / 2))
        for _ in range(100):
            p = mp.legendre(n, x)
            dp = n * (x * p - mp.legendre(n - 1, x)) / (x * x - 1)
            step = p / dp
            x -= step
            if abs(step) < mp.mpf(10) ** -38:
                break
        dp = n * (x * mp.legendre(n, x) - mp.legendre(n - 1, x)) / (x * x - 1)
        nodes.append((x, 2 / ((1 - x * x) * dp * dp)))
    return nodes


def stirling_error(k):
    k = mp.mpf(k)
    if k == 0:
        return mp.mpf(0)
    return mp.loggamma(k + 1) - ((k + mp.mpf(1) / 2) * mp.log(k) - k + mp.log(2 * mp.pi) / 2)


def d(v):
    return repr(float(v))


print("// Written by tests/reference/gen_numeric_tables.py (mpmath, 40 digits). Do not edit.")
for n in (6, 12, 20):
    rule = legendre_rule(n)
    print(f"constexpr double kRefGaussNode{n}[] = {{{', '.join(d(x) for x, _ in rule)}}};")
    print(f"constexpr double kRefGaussWeight{n}[] = {{{', '.join(d(w) for _, w in rule)}}};")
print("constexpr double kRefStirlingError[] = {"
      + ", ".join(d(stirling_error(k)) for k in range(16)) + "};")
ks = [0, 1, 2, 10, 15, 15.5, 16, 20.25, 35, 36, 79.5, 81, 127, 128, 129, 500, 501, 1e4, 1e6, 1e9]
print("// {k, ln k!, Stirling's error at k}")
print("constexpr double kRefLogFactorial[][3] = {")
for k in ks:
    kk = mp.mpf(k)
    print(f"    {{{d(kk)}, {d(mp.loggamma(kk + 1))}, {d(stirling_error(kk))}}},")
print("};")
# ln v in two parts: {v, ln v rounded, ln v minus that rounded}
print("constexpr double kRefLogTwoPart[][3] = {")
for v in [1e-300, 0.1, 0.75, 0.7500000000000001, 1.0 - 2.0 ** -53, 1.0 + 2.0 ** -52,
          1.4999999999999998, 1.5, 2.0, 3.0, 7.123456789, 16.5, 1e300]:
    ln = mp.log(mp.mpf(v))
    hi = float(ln)
    print(f"    {{{d(v)}, {d(hi)}, {d(ln - mp.mpf(hi))}}},")
print("};")
# Gamma(a) for 0 < a <= 32: {a, Gamma(a)}
print("constexpr double kRefGammaModerate[][2] = {")
for a in [1e-3, 0.1, 0.5, 1.0, 1.5, 2.5, 7.3, 15.9, 15.999999999999998, 16.0, 16.5, 31.9, 32.0]:
    print(f"    {{{d(a)}, {d(mp.gamma(mp.mpf(a)))}}},")
print("};")
# The gamma deviance (x - a) - a ln(x / a): {a, x, value}; both sides of Loader's 10% band
print("constexpr double kRefGammaDeviance[][3] = {")
for a, x in [(1.0, 1.0), (16.0, 16.5), (100.0, 81.9), (100.0, 81.7), (100.0, 122.1),
             (100.0, 122.3), (1000.0, 1e-300), (3.5, 750.0), (1000.0, 1000.0000000000001)]:
    A, X = mp.mpf(a), mp.mpf(x)
    print(f"    {{{d(a)}, {d(x)}, {d(X - A - A * mp.log(X / A))}}},")
print("};")
