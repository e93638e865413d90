#!/usr/bin/python3
"""Piecewise rational approximations of the real Lambert W function (both branches).

Every piece has the form  value + P(z) / Q(z)  (Q(0) = 1) in a local variable z, and is
fitted on its interval by linearised least squares (Sanathanan-Koerner iteration) with
Lawson's reweighting towards the minimax error, the linear algebra done in mpmath at 36
digits over W from mpmath.lambertw. Each piece is then checked with its coefficients
rounded to double on a dense grid (401 points, the ends included); the worst error, relative to W, is written
beside each table and is what src/platform/nag/c05.cpp quotes.

Pieces (x the argument, L = ln|x|):
  binades   x in [2^k, 2^(k+1)] (or its negative), z = x - 1.5 * 2^k (exact in double):
            W = value + P/Q.  Principal branch for x in [-1/4, -1/16], lower branch for x in
            [-1/8, -2^-30]; in halves of binades, z = x -+ 1.25 2^k or x -+ 1.75 2^k (exact
            as well), the principal branch for x in [2^-4, 2^20) (of degree 5) and the lower
            branch for x in [-1/4, -1/8].
  zero      principal branch, |x| <= 1/16: W = x - x^2 P(x)/Q(x).
  logs      s = |L| in [2^k, 2^(k+1)]: W = L - R with R = ln|W| = value + P/Q, z = s - 1.5 2^k;
            principal x >= 2^20 (s = L up to 709.8), lower |x| < 2^-30 (s = -L up to 745.2,
            the subnormals included).
Run from the repository root with /usr/bin/python3 (FIT_JOBS worker processes, 2 by
default; about a quarter of an hour).
"""
import os
import sys
from multiprocessing import Pool

import mpmath as mp

mp.mp.dps = 36
E = mp.e
TARGET = 2e-17  # each piece's worst contribution to W's relative error
NODES = 90


def lambw(x, branch):
    return mp.lambertw(x, branch).real


def rfit(fun, lo, hi, deg, rounds=7):
    """Fit g ~ P/Q on [lo, hi]; fun(z) -> (g, weight): minimise max weight * |g - P/Q|."""
    lo, hi = mp.mpf(lo), mp.mpf(hi)
    s = max(abs(lo), abs(hi))
    zs = [(lo + hi) / 2 + (hi - lo) / 2 * mp.cos(mp.pi * (k + mp.mpf(1) / 2) / NODES)
          for k in range(NODES)]
    vals = [fun(z) for z in zs]
    ys = [z / s for z in zs]
    lw = [mp.mpf(1)] * NODES
    qv = [mp.mpf(1)] * NODES
    best = None
    for _ in range(rounds):
        rows, rhs = [], []
        for y, (g, wt), q, l in zip(ys, vals, qv, lw):
            sc = wt / abs(q) * mp.sqrt(l)
            rows.append([sc * y ** i for i in range(deg + 1)] +
                        [-sc * g * y ** j for j in range(1, deg + 1)])
            rhs.append(sc * g)
        try:
            c, _ = mp.qr_solve(mp.matrix(rows), mp.matrix(rhs))
        except ValueError:  # numerically singular: the degree is more than enough
            break
        a = [c[i] for i in range(deg + 1)]
        b = [mp.mpf(1)] + [c[deg + 1 + j] for j in range(deg)]
        qv = [mp.polyval(b[::-1], y) for y in ys]
        err = [abs(wt * (g - mp.polyval(a[::-1], y) / q)) for y, (g, wt), q in zip(ys, vals, qv)]
        e = max(err)
        if best is None or e < best[0]:
            best = (e, [float(ai / s ** i) for i, ai in enumerate(a)],
                    [float(bi / s ** i) for i, bi in enumerate(b)])
        tot = sum(l * er for l, er in zip(lw, err))
        lw = [l * er / tot for l, er in zip(lw, err)]
    return best[1], best[2]


def rat(num, den, z):
    return (mp.polyval([mp.mpf(v) for v in num[::-1]], z) /
            mp.polyval([mp.mpf(v) for v in den[::-1]], z))


def check(piece, lo, hi, points=400):
    """Worst relative error of W with the double coefficients, over [lo, hi] in the
    piece's own variable (the ends included)."""
    worst = mp.mpf(0)
    for i in range(points + 1):
        v = mp.mpf(lo) + (mp.mpf(hi) - lo) * i / points
        got, want = piece["eval"](v)
        worst = max(worst, abs(got / want - 1))
    return float(worst)


MAKERS = {}


def fit_piece(kind, lo, hi, degrees=(6, 7)):
    """The lowest degree that meets TARGET, else the most accurate one; without its
    evaluator (the pieces are fitted in worker processes)."""
    best = None
    for deg in degrees:
        piece = MAKERS[kind](lo, hi, deg)
        piece["err"] = check(piece, lo, hi)
        piece["deg"] = deg
        del piece["eval"]
        if best is None or piece["err"] < best["err"]:
            best = piece
        if piece["err"] <= TARGET:
            best = piece
            break
    print(f"{kind} [{lo}, {hi}] degree {best['deg']} error {best['err']:.1e}",
          file=sys.stderr, flush=True)
    return best


def binade_piece(branch, sign):
    """W on x = sign * [lo, hi] (one binade), z = x - centre."""
    def make(lo, hi, deg):
        c = sign * (lo + hi) / 2
        value = float(lambw(mp.mpf(c), branch))

        def fun(z):
            w = lambw(c + z, branch)
            return w - value, 1 / abs(w)
        zlo, zhi = sorted((sign * lo - c, sign * hi - c))
        num, den = rfit(fun, zlo, zhi, deg)

        def ev(t):  # t = |x|
            z = sign * t - c
            return value + rat(num, den, z), lambw(sign * t, branch)
        return {"centre": c, "value": value, "num": num, "den": den, "eval": ev}
    return make


def zero_piece(lo, hi, deg):
    def fun(x):
        w = lambw(x, 0)
        return (x - w) / (x * x), abs(x * x / w)
    num, den = rfit(fun, lo, hi, deg)

    def ev(x):
        if x == 0:
            x = mp.mpf(10) ** -30
        return x - x * x * rat(num, den, x), lambw(x, 0)
    return {"centre": 0.0, "value": 0.0, "num": num, "den": den, "eval": ev}


def log_piece(branch):
    """s = |ln|x|| in [lo, hi]; W = L - R(s), R = ln|W| = value + P/Q, z = s - centre."""
    def w_of(s):
        return lambw(mp.exp(s), 0) if branch == 0 else lambw(-mp.exp(-s), -1)

    def make(lo, hi, deg):
        c = float(mp.mpf(2) ** mp.floor(mp.log(lo, 2)) * 1.5)
        value = float(mp.log(abs(w_of(mp.mpf(c)))))

        def fun(z):
            w = w_of(c + z)
            return mp.log(abs(w)) - value, 1 / abs(w)
        num, den = rfit(fun, lo - c, hi - c, deg)

        def ev(s):
            s = mp.mpf(s)
            L = s if branch == 0 else -s
            z = s - c
            return L - (value + rat(num, den, z)), w_of(s)
        return {"centre": c, "value": value, "num": num, "den": den, "eval": ev}
    return make


def emit(out, name, pieces, comment):
    deg = max(p["deg"] for p in pieces)
    worst = max(p["err"] for p in pieces)
    out.append(f"// {comment}")
    out.append(f"// Degree {deg}; worst relative error of W over the table {worst:.1e}.")
    out.append(f"inline constexpr LambertPiece {name}[] = {{")
    for p in pieces:
        num = list(p["num"]) + [0.0] * (8 - len(p["num"]))
        den = list(p["den"]) + [0.0] * (8 - len(p["den"]))
        out.append(f"    {{{p['centre']!r}, {p['value']!r},")
        out.append("     {" + ", ".join(repr(v) for v in num) + "},")
        out.append("     {" + ", ".join(repr(v) for v in den) + f"}}}},  // {p['err']:.1e}")
    out.append("};")
    return worst


MAKERS.update({
    "principal": binade_piece(0, 1),
    "principal-negative": binade_piece(0, -1),
    "lower": binade_piece(-1, -1),
    "principal-zero": zero_piece,
    "principal-log": log_piece(0),
    "lower-log": log_piece(-1),
})

# (table name, comment, kind, [(lo, hi), ...], degrees)
TABLES = [
    ("kPrincipalHalves",
     "Principal branch, x in halves of [2^k, 2^(k+1)], k = -4..19 (the common arguments: degree\n"
     "// 5, half the work of a degree-7 piece); z = x - 1.25 2^k or x - 1.75 2^k.",
     "principal", [(m * 2.0 ** k, (m + 0.5) * 2.0 ** k) for k in range(-4, 20) for m in (1.0, 1.5)],
     (5,)),
    ("kPrincipalNegative", "Principal branch, x in [-2^(k+1), -2^k], k = -4, -3; z = x + 1.5 2^k.",
     "principal-negative", [(2.0 ** k, 2.0 ** (k + 1)) for k in (-4, -3)], (6, 7)),
    ("kLowerQuarter", "Lower branch, x in the halves of [-1/4, -1/8]; z = x + 5/32 or x + 7/32.",
     "lower", [(0.125, 0.1875), (0.1875, 0.25)], (6, 7)),
    ("kLowerBinades", "Lower branch, x in [-2^(k+1), -2^k], k = -4 down to -30; z = x + 1.5 2^k.",
     "lower", [(2.0 ** k, 2.0 ** (k + 1)) for k in range(-4, -31, -1)], (6, 7)),
    ("kPrincipalZero", "Principal branch, |x| <= 1/16: W = x - x^2 P(x)/Q(x).",
     "principal-zero", [(-0.0625, 0.0625)], (4, 5, 6, 7)),
    ("kPrincipalLogs", "Principal branch, x >= 2^20: t = ln x in [2^k, 2^(k+1)], k = 3..9; W = t - R.",
     "principal-log", [(max(2.0 ** k, 13.8), min(2.0 ** (k + 1), 709.8)) for k in range(3, 10)],
     (5, 6, 7)),
    ("kLowerLogs", "Lower branch, |x| < 2^-30: s = -ln(-x) in [2^k, 2^(k+1)], k = 4..9; W = -s - R.",
     "lower-log", [(max(2.0 ** k, 20.7), min(2.0 ** (k + 1), 745.2)) for k in range(4, 10)],
     (5, 6, 7)),
]


def main():
    out = ["// Generated by scripts/fit_lambert_pieces.py; do not edit. Each piece:",
           "// W = value + P(z)/Q(z) in the piece's own variable z (see c05.cpp), P and Q of",
           "// degree up to 7 (num, den: coefficients of z^0..z^7, den[0] = 1), zero-padded;",
           "// after each piece its worst relative error of W with these double coefficients.",
           "struct LambertPiece {",
           "    double centre;",
           "    double value;",
           "    double num[8];",
           "    double den[8];",
           "};"]
    jobs = [(kind, lo, hi, degrees) for _, _, kind, spans, degrees in TABLES for lo, hi in spans]
    with Pool(int(os.environ.get("FIT_JOBS", "2"))) as pool:
        fitted = iter(pool.starmap(fit_piece, jobs))
    worst_all = 0.0
    for name, comment, _, spans, _ in TABLES:
        pieces = [next(fitted) for _ in spans]
        worst_all = max(worst_all, emit(out, name, pieces, comment))
        out.append(f"inline constexpr int {name}Degree = {max(p['deg'] for p in pieces)};")
    out.append(f"inline constexpr double kLambertFitError = {worst_all:.1e};  // the worst piece")
    with open("src/platform/nag/c05_pieces.inc", "w") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
