#!/usr/bin/python3
"""Writes gauss_kronrod_ref.inc: the Gauss-Kronrod pairs of 15 and 21 points on [-1, 1]
(the n = 7 and n = 10 Gauss rules with their n + 1 Kronrod extensions).

Oracle: exact rational arithmetic and mpmath at 60 significant digits, independent of
the library.
  - P_n, the Legendre polynomial, with exact rational coefficients (Bonnet's recurrence);
  - the Stieltjes polynomial E_{n+1} = P_{n+1} + sum c_j P_j (j of the parity of n + 1):
    the c_j solve, exactly in fractions, the orthogonality conditions
    integral of E_{n+1} P_n x^k over [-1, 1] = 0 for k = 0..n;
  - the Gauss nodes are the zeros of P_n and the Kronrod nodes the zeros of E_{n+1}, both
    polished by Newton's method in mpmath at 60 digits from mpmath.polyroots estimates;
  - the 2n + 1 Kronrod weights solve the moment equations sum w_i x_i^(2k) = 2 / (2k + 1),
    k = 0..n (the odd moments vanish by symmetry), and the Gauss weights are
    2 / ((1 - x^2) P_n'(x)^2);
  - the script checks that each Kronrod rule integrates x^(3n+1) exactly and stops if
    not.
Each value is rounded once to double. Rows: the non-negative nodes, ascending from 0
(the centre first), with the Kronrod weight and the Gauss weight (0 where the node is a
Kronrod node only).
Run: /usr/bin/python3 tests/reference/gen_gauss_kronrod.py > tests/reference/gauss_kronrod_ref.inc
"""
from fractions import Fraction

import mpmath as mp

mp.mp.dps = 60


def legendre(n):
    """Coefficients of P_n, lowest degree first, as Fractions."""
    p0, p1 = [Fraction(1)], [Fraction(0), Fraction(1)]
    if n == 0:
        return p0
    for k in range(1, n):
        # (k + 1) P_{k+1} = (2k + 1) x P_k - k P_{k-1}
        nxt = [Fraction(0)] * (k + 2)
        for i, c in enumerate(p1):
            nxt[i + 1] += Fraction(2 * k + 1, k + 1) * c
        for i, c in enumerate(p0):
            nxt[i] -= Fraction(k, k + 1) * c
        p0, p1 = p1, nxt
    return p1


def mul(a, b):
    out = [Fraction(0)] * (len(a) + len(b) - 1)
    for i, x in enumerate(a):
        for j, y in enumerate(b):
            out[i + j] += x * y
    return out


def integral(p):
    """Integral over [-1, 1]."""
    return sum(c * Fraction(2, i + 1) for i, c in enumerate(p) if i % 2 == 0)


def add(a, b, scale=Fraction(1)):
    out = [Fraction(0)] * max(len(a), len(b))
    for i, c in enumerate(a):
        out[i] += c
    for i, c in enumerate(b):
        out[i] += scale * c
    return out


def solve_exact(matrix, rhs):
    """Gaussian elimination in fractions."""
    n = len(rhs)
    m = [row[:] + [r] for row, r in zip(matrix, rhs)]
    for col in range(n):
        pivot = next(r for r in range(col, n) if m[r][col] != 0)
        m[col], m[pivot] = m[pivot], m[col]
        for r in range(n):
            if r != col and m[r][col] != 0:
                f = m[r][col] / m[col][col]
                m[r] = [x - f * y for x, y in zip(m[r], m[col])]
    return [m[i][n] / m[i][i] for i in range(n)]


def stieltjes(n):
    pn = legendre(n)
    basis = [j for j in range(n + 1) if (n + 1 - j) % 2 == 0 and j < n + 1]
    lead = legendre(n + 1)
    # Conditions k of the parity that makes E P_n x^k even (the others vanish).
    ks = [k for k in range(n + 1) if (2 * n + 1 + k) % 2 == 0]
    assert len(ks) == len(basis)
    rows, rhs = [], []
    for k in ks:
        xk = [Fraction(0)] * k + [Fraction(1)]
        w = mul(pn, xk)
        rows.append([integral(mul(legendre(j), w)) for j in basis])
        rhs.append(-integral(mul(lead, w)))
    coef = solve_exact(rows, rhs)
    e = lead
    for j, c in zip(basis, coef):
        e = add(e, legendre(j), c)
    return e


def roots(poly):
    """Real zeros in [0, 1), ascending, polished by Newton's method."""
    coeffs = [mp.mpf(c.numerator) / c.denominator for c in reversed(poly)]
    estimates = mp.polyroots(coeffs, maxsteps=400, extraprec=400)
    out = []
    for z in estimates:
        x = mp.re(z)
        for _ in range(60):
            v, dv = mp.polyval(coeffs, x, derivative=True)
            step = v / dv
            x -= step
            if abs(step) < mp.mpf(10) ** -58:
                break
        if x > -mp.mpf(10) ** -50:
            out.append(abs(x) if abs(x) < mp.mpf(10) ** -50 else x)
    return sorted(out)


def pair(n):
    pn = legendre(n)
    gauss = roots(pn)
    kronrod = roots(stieltjes(n))
    nodes = sorted(gauss + kronrod)
    assert len(nodes) == n + 1 and nodes[0] < mp.mpf(10) ** -50  # 0 is a node
    nodes[0] = mp.mpf(0)
    # Moment equations in the non-negative nodes.
    size = n + 1
    a = mp.matrix(size, size)
    b = mp.matrix(size, 1)
    for k in range(size):
        for j, x in enumerate(nodes):
            a[k, j] = (1 if j == 0 else 2) * x ** (2 * k) if not (j == 0 and k > 0) else 0
        b[k] = mp.mpf(2) / (2 * k + 1)
    w = mp.lu_solve(a, b)
    # Exactness check up to degree 3n + 1 (the odd degrees vanish by symmetry).
    for k in range(0, 3 * n + 2, 2):
        s = sum((1 if j == 0 else 2) * w[j] * (x ** k if j else (1 if k == 0 else 0))
                for j, x in enumerate(nodes))
        assert abs(s - mp.mpf(2) / (k + 1)) < mp.mpf(10) ** -45, (n, k)
    coeffs = [mp.mpf(c.numerator) / c.denominator for c in reversed(pn)]
    rows = []
    for j, x in enumerate(nodes):
        is_gauss = any(abs(x - g) < mp.mpf(10) ** -40 for g in gauss)
        wg = mp.mpf(0)
        if is_gauss:
            _, dp = mp.polyval(coeffs, x, derivative=True)
            wg = 2 / ((1 - x * x) * dp * dp)
        rows.append((x, w[j], wg))
    return rows


def d(v):
    return repr(float(v))


print("// Written by tests/reference/gen_gauss_kronrod.py (exact fractions, mpmath 60 digits).")
print("// Do not edit. {node, Kronrod weight, Gauss weight (0: Kronrod node only)}, from 0 up.")
for n, points in ((7, 15), (10, 21)):
    print(f"constexpr double kRefGaussKronrod{points}[][3] = {{")
    for x, wk, wg in pair(n):
        print(f"    {{{d(x)}, {d(wk)}, {d(wg)}}},")
    print("};")
