#!/usr/bin/python3
"""Extra reference values for the library's own special functions (the zemath_-prefixed
family), beside the shared grids of gen_special.py.

Writes special_own_ref.inc next to this script, in the format of special_ref.inc:
    REF("name", a0, a1, a2, a3, expected, scale)
with `name` the table name of the function (the test calls zemath_<name>), the expected
value from mpmath at 50 significant digits (RJ at 150, see gen_special.py) evaluated at
exactly the double written, and the error scale (0: relative; otherwise the local
envelope of an oscillating function, so that the error is absolute near its zeros).

The grids sit on the switch points of the own algorithms (src/stats/own_*.cpp): 1.5 (erf,
erfc; Fresnel), 2 (normal law), 0.5/1.5/2.5/10 (ln Gamma), 10 (Gamma), 20 and the zero of
psi (polygamma), a = 10 and x = a + 1 (incomplete gamma), 1 (E1), 50 and the zero of Ei
(E1 at negative x), 4 (Si, Ci), q = e^-pi (theta), 30 and 1 (Bessel I and K), 20 (Kelvin), and the
regions the shared grids leave out: negative r of RJ (principal value), arguments beyond
2^250 (the principal value's rescaling), the far tails, q near 1.
Run: /usr/bin/python3 tests/reference/gen_special_own.py
"""
import math
import os

import mpmath as mp

mp.mp.dps = 50
MPF = mp.mpf
rows = []


def d(v):
    return float(repr(float(v)))


def add(name, args, fn, scale_fn=None):
    args = [d(a) for a in args]
    margs = [MPF(a) for a in args]
    try:
        v = fn(*margs)
    except (ValueError, ZeroDivisionError, OverflowError, mp.libmp.NoConvergence):
        return
    if isinstance(v, mp.mpc):
        v = v.real  # principal values
    if not mp.isfinite(v):
        return
    fv = float(v)
    if fv != 0.0 and (abs(fv) < 2.3e-308 or math.isinf(fv)):
        return
    scale = float(abs(scale_fn(*margs))) if scale_fn is not None else 0.0
    rows.append((name, args + [0.0] * (4 - len(args)), fv, scale))


def around(x, n=3, rel=1e-9):
    return [x * (1 + rel * k) for k in range(-n, n + 1)]


def linspace(lo, hi, n):
    return [lo + (hi - lo) * i / (n - 1) for i in range(n)]


def logspace(lo, hi, n):
    a, b = math.log10(lo), math.log10(hi)
    return [10 ** (a + (b - a) * i / (n - 1)) for i in range(n)]


def switch(x):
    """x, its double neighbours and points a little to each side."""
    return [x, math.nextafter(x, -math.inf), math.nextafter(x, math.inf)] + around(x, 2, 1e-6)


PI = mp.pi

# error function and normal law
for x in switch(1.5) + linspace(1.0, 2.0, 41) + linspace(20, 26.5, 14):
    for s in (1, -1):
        add("erf", [s * x], mp.erf)
        add("erfc", [s * x], mp.erfc)
for x in switch(2.0) + linspace(1.5, 2.5, 41) + linspace(30, 38.4, 15):
    for s in (1, -1):
        add("cumul_normal", [s * x], mp.ncdf)
        add("cumul_normal_complem", [s * x], lambda t: mp.ncdf(-t))

# gamma family
for x in sum((switch(v) for v in (0.5, 1.5, 2.5, 10.0)), []) + [1 + 1e-12, 1 - 1e-12, 2 + 1e-13, 2 - 1e-13]:
    add("log_gamma", [x], mp.loggamma)
for x in switch(10.0) + [-1e-300, -1e-10, -0.5, -0.9999999, -1 - 1e-12, -1 + 1e-12, -20.5 + 1e-9,
                         171.6, 1e-300, 1e-10] + linspace(-3.9, 12, 80):
    if x <= 0 and x == math.floor(x):
        continue
    add("gamma", [x], mp.gamma)
x0 = float(mp.findroot(mp.digamma, 1.46))
for k in range(7):
    for x in switch(20.0) + switch(19.5) + [1e-8, 0.3, 1e5, -0.5, -2.25, -7.75]:
        add("real_polygamma", [x, k], lambda t, kk, k=k: mp.psi(k, t))
for x in [x0, x0 + 1e-12, x0 - 1e-10, x0 + 1e-5, x0 + 0.2499, x0 - 0.2499, x0 + 0.2501, x0 - 0.2501] + linspace(1.2, 1.7, 51):
    add("real_polygamma", [x, 0], lambda t, kk: mp.psi(0, t))
for a in switch(10.0) + [0.5, 3.0, 9.5, 30.0, 150.0, 2e4, 1e5]:
    for x in [a + 1, math.nextafter(a + 1, 0), math.nextafter(a + 1, math.inf), a, 0.9 * a, 1.1 * a, 0.5 * a, 2 * a]:
        add("incomplete_gamma", [a, x], lambda aa, t: mp.gammainc(aa, 0, t, regularized=True))
# The continued fraction's slow and its terminating cases: small shapes near x = 1 (where Q
# is still a sizeable part of P), integer shapes (the fraction ends after a steps).
for a in [1e-10, 0.01, 0.5, 1.0, 2.0, 7.0, 40.0]:
    for x in [a + 1, a + 1.5, 3 * a + 2, 30.0 + a]:
        add("incomplete_gamma", [a, x], lambda aa, t: mp.gammainc(aa, 0, t, regularized=True))

# exponential, sine and cosine integrals
y0 = float(mp.findroot(mp.ei, 0.3725))
for x in switch(1.0) + linspace(0.5, 3.0, 51) + [745.0, 740.0]:
    add("exp_integral", [x], mp.e1)
for y in switch(50.0) + [y0, y0 * (1 + 1e-13), y0 + 0.0999, y0 - 0.0999, y0 + 0.1001, y0 - 0.1001, 709.7, 300.0] \
        + linspace(0.2, 0.6, 41) + linspace(40, 60, 21):
    add("exp_integral", [-y], lambda t: -mp.ei(-t))

def ci_env(x):
    return 1 / x if x > 0.5 else 0

for x in switch(4.0) + linspace(3.0, 5.0, 41) + [1e16, 1e17]:
    add("sin_integral", [x], mp.si)
    add("sin_integral", [-x], mp.si)
    add("cos_integral", [x], mp.ci, ci_env)

# Fresnel
for x in switch(1.5) + linspace(1.2, 2.0, 41) + [1e4 + 0.3, 123456.789, 1e14, 3e15]:
    for s in (1, -1):
        add("fresnel_s", [s * x], mp.fresnels)
        add("fresnel_c", [s * x], mp.fresnelc)

# Carlson: principal values, rescaled arguments, x near y
def rj_scaled(x, y, z, r):
    """RJ (principal value for r < 0, the real part of mpmath's value) at 150 digits,
    with the arguments first scaled by a power of 2 to unit size (RJ is homogeneous of
    degree -3/2): at extreme scales mpmath's principal value does not follow the
    homogeneity (its real part at 1e-150 is off by orders of magnitude)."""
    with mp.workdps(150):
        e = int(mp.floor(mp.log(max(abs(x), abs(y), abs(z), abs(r)), 2)))
        k = mp.mpf(2) ** (-e)
        return mp.re(mp.elliprj(x * k, y * k, z * k, r * k)) * k ** mp.mpf(1.5)

for r in (-0.25, -1.0, -3.0, -1e-5, -1e5):
    for (x, y, z) in [(0.5, 1.0, 1.5), (0.0, 1.0, 2.0), (2.0, 3.0, 4.0), (1e-3, 1.0, 1e3), (1.0, 1.0, 1.0)]:
        add("elliptic_integral_rj", [x, y, z, r], rj_scaled)
for (x, y, z, r) in [(1e300, 2e300, 3e300, 1e300), (1e-300, 2e-300, 3e-300, 1e-300), (1e305, 1e305, 1e305, 2e305),
                     (1e-150, 1e-150, 2e-150, -1e-150), (1e150, 1e150, 2e150, -1e150)]:
    add("elliptic_integral_rj", [x, y, z, r], rj_scaled)


def rj_equal(x, y, z, p):
    """RJ(x, x, x, p) = 3/(x - p) (RC(x, p) - 1/sqrt(x)), the closed form of the degenerate
    case (p > 0): at extreme
    ratios of x to p mpmath's elliprj is unreliable (it returns +inf for RJ(1,1,1,1e-200))."""
    with mp.workdps(100):
        return 3 / (x - p) * (mp.re(mp.elliprc(x, p)) - 1 / mp.sqrt(x))


for (x, p) in [(1e200, 1e-100), (1.0, 1e-200), (1e-200, 1e100), (2.0, 3.0)]:
    add("elliptic_integral_rj", [x, x, x, p], rj_equal)
for (x, y) in [(1.0, 1.0 + 1e-12), (1.0, 1.0 - 1e-12), (1e300, 1e-300), (1e-300, 1e300), (3.0, 1e-9)]:
    add("elliptic_integral_rc", [x, y], mp.elliprc)
    add("elliptic_integral_rc", [x, -y], lambda a, b: mp.re(mp.elliprc(a, b)))
for (x, y, z) in [(1e300, 1e300, 1e-300), (0.0, 1e300, 1e300), (1.0, 1.0, 1.0), (1e-300, 1e-300, 1.0)]:
    add("elliptic_integral_rf", [x, y, z], mp.elliprf)
    add("elliptic_integral_rd", [x, y, z], mp.elliprd)

# modified Bessel functions: the switch points 30 (I: series, Hankel expansion; K: trapezoid
# rule, Hankel expansion) and 1 (K: series, trapezoid rule), and points on either side
bx = switch(30.0) + switch(1.0) + linspace(0.5, 1.5, 21) + linspace(25, 40, 31) + [36.0, 37.0, 38.0, 85.0, 90.0, 95.0, 1e3, 1e5]
for x in bx:
    add("bessel_i0_scaled", [x], lambda t: mp.exp(-abs(t)) * mp.besseli(0, t))
    add("bessel_i1_scaled", [-x], lambda t: mp.exp(-abs(t)) * mp.besseli(1, t))
    add("bessel_k0", [x], lambda t: mp.besselk(0, t))
    add("bessel_k1", [x], lambda t: mp.besselk(1, t))
    add("bessel_k0_scaled", [x], lambda t: mp.exp(t) * mp.besselk(0, t))
    add("bessel_k1_scaled", [x], lambda t: mp.exp(t) * mp.besselk(1, t))
    if x <= 713:
        add("bessel_i1", [x], lambda t: mp.besseli(1, t))
    for nu in (-3, -2, -1, 1, 2, 3):
        v = MPF(nu) / 4
        if x < 700:
            add("bessel_i_nu", [x, nu], lambda t, n, v=v: mp.besseli(v, t))
        add("bessel_k_nu", [x, nu], lambda t, n, v=v: mp.besselk(v, t))
        add("bessel_i_nu_scaled", [x, nu], lambda t, n, v=v: mp.exp(-t) * mp.besseli(v, t))
        add("bessel_k_nu_scaled", [x, nu], lambda t, n, v=v: mp.exp(t) * mp.besselk(v, t))

# Kelvin: the switch point 20 (double-double series, Hankel expansions), the far range
def ber_env(x):
    return abs(mp.besseli(0, abs(x) * mp.expjpi(MPF(1) / 4)))


def ker_env(x):
    return abs(mp.besselk(0, x * mp.expjpi(MPF(1) / 4)))


for x in switch(20.0) + linspace(17, 23, 25) + [1e-300, 1e-8, 49.0]:
    add("kelvin_ber", [x], lambda t: mp.ber(0, t), ber_env)
    add("kelvin_bei", [-x], lambda t: mp.bei(0, t), ber_env)
for x in switch(20.0) + linspace(17, 23, 25) + [1e-300, 1e-8, 300.5, 777.7, 999.0]:
    add("kelvin_ker", [x], lambda t: mp.ker(0, t), ker_env)
    add("kelvin_kei", [x], lambda t: mp.kei(0, t), ker_env)

# theta
qs = [math.exp(-math.pi), math.nextafter(math.exp(-math.pi), 0), math.nextafter(math.exp(-math.pi), 1),
      0.3, 0.9999, 1 - 1e-6, 1e-300]
for k in range(5):
    j = 4 if k in (0, 4) else k
    for q in qs:
        for x in linspace(-1.0, 1.0, 21) + [0.123, 1e12 + 0.375, -37.25]:
            add("jacobian_theta", [k, x, q], lambda kk, t, qq, j=j: mp.jtheta(j, PI * t, qq),
                lambda kk, t, qq: mp.jtheta(3, 0, qq))

path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "special_own_ref.inc")
with open(path, "w") as out:
    out.write("// Generated by gen_special_own.py (mpmath, 50 digits). Do not edit.\n")
    for name, args, value, scale in rows:
        a = ", ".join(repr(float(v)) for v in args)
        out.write(f'REF("{name}", {a}, {value!r}, {scale!r})\n')
print(len(rows), "rows written to", path)
