"""Special functions of the script table over arrays of arguments, against scipy.special
on the same arrays and, where GSL has the function with the same prototype, against GSL
called through the very same C loop as ours (bench/table/special_loops.c: one indirect call
per value, one ctypes call per array; the SciPy ufuncs loop in C as well). Boost.Math,
header-only, is set beside both in bench/special_bench.cpp.

Arguments (fixed seed), 2e4 per row, uniform over the ranges of bench/special_bench.cpp:
the Bessel, Kelvin and sine/cosine-integral rows on (0.01, 60) (Kelvin ber/bei to 48), Airy
on (-30, 30), the error and normal functions on (-3, 3) (the normal tail on (-12, -2)), the
gamma family and the Carlson integrals on (0.01, 40); the incomplete gamma P(a, x) at the
shapes 0.5, 5, 50, 500 and 5000, x uniform over max(a - 8 sqrt(a), a / 100) ..
a + 8 sqrt(a) + 4 (the body and both tails); the inverse error functions on their open
domains. Outputs are compared: a note reports values differing beyond 1e-9 relative
(1e-12 absolute for the oscillating functions, near their zeros).
"""
import ctypes
import ctypes.util
import warnings

import numpy as np
from scipy import special

from runner import VP, Row, address, c_double, c_int, c_long, close, loops, ptr, rng

FAMILY = "special"
N = 20_000

_gsl = None


def gsl():
    """libgsl with its error handler off (GSL aborts on a domain error otherwise), or None."""
    global _gsl
    if _gsl is None:
        try:
            ctypes.CDLL(ctypes.util.find_library("gslcblas") or "libgslcblas.so",
                        mode=ctypes.RTLD_GLOBAL)
            _gsl = ctypes.CDLL(ctypes.util.find_library("gsl") or "libgsl.so")
            _gsl.gsl_set_error_handler_off.restype = VP
            _gsl.gsl_set_error_handler_off()
        except OSError:
            _gsl = False
    return _gsl or None


def gsl_address(name):
    lib = gsl()
    if lib is None:
        return None
    return ctypes.cast(getattr(lib, name), VP).value


def special_loops():
    L = loops()
    if not hasattr(L, "_special_ready"):
        L.bench_special_x.argtypes = [VP, VP, VP, c_long]
        L.bench_special_xy.argtypes = [VP, VP, VP, VP, c_long]
        L.bench_special_xk.argtypes = [VP, VP, c_int, VP, c_long]
        L.bench_special_kx.argtypes = [VP, c_int, VP, VP, c_long]
        L.bench_special_xyz.argtypes = [VP, VP, VP, VP, VP, c_long]
        L.bench_special_xyzr.argtypes = [VP, VP, VP, VP, VP, VP, c_long]
        for f in ("x", "xy", "xk", "kx", "xyz", "xyzr"):
            getattr(L, f"bench_special_{f}").restype = None
        L._special_ready = True
    return L


def rows():
    warnings.filterwarnings("ignore", category=RuntimeWarning)
    L = special_loops()
    g = rng(FAMILY)
    out = np.empty(N)
    po = ptr(out)
    keep = []

    def arr(a):
        a = np.ascontiguousarray(a, dtype=np.float64)
        keep.append(a)
        return a, ptr(a)

    def uniform(lo, hi):
        return arr(g.uniform(lo, hi, N))

    def x_call(f, px):
        return lambda: (L.bench_special_x(f, px, po, N), out)[1]

    def xy_call(f, pa, pb):
        return lambda: (L.bench_special_xy(f, pa, pb, po, N), out)[1]

    def xk_call(f, px, k):
        return lambda: (L.bench_special_xk(f, px, k, po, N), out)[1]

    relative = close(1e-9)
    oscillating = close(1e-9, 1e-12)

    def pair(name, x, px, peer, peer_note, gsl_name=None, check=relative, ours=None, gsl_call=None):
        """Our row against SciPy, then (if GSL has it) against GSL through the same loop."""
        mine = ours or x_call(address(name), px)
        yield Row(FAMILY, name, "2e4", mine, lambda: peer(x), peer_note, check=check)
        if gsl_name is not None and gsl() is not None:
            theirs = gsl_call or x_call(gsl_address(gsl_name), px)
            yield Row(FAMILY, f"{name} (vs GSL)", "2e4", mine, theirs, f"peer: {gsl_name}",
                      check=check)

    wide, pwide = uniform(0.01, 60.0)
    kelvin, pkelvin = uniform(0.01, 48.0)
    airy_x, pairy = uniform(-30.0, 30.0)
    unit, punit = uniform(-3.0, 3.0)
    tail, ptail = uniform(-12.0, -2.0)
    gx, pgx = uniform(0.01, 40.0)

    # Airy: SciPy computes Ai, Ai', Bi, Bi' in one call.
    yield from pair("airy_ai", airy_x, pairy, lambda x: special.airy(x)[0],
                    "peer: scipy.special.airy (all four functions per call)",
                    check=oscillating, gsl_call=xk_call(gsl_address("gsl_sf_airy_Ai"), pairy, 0)
                    if gsl() else None, gsl_name="gsl_sf_airy_Ai")
    yield from pair("airy_bi", airy_x, pairy, lambda x: special.airy(x)[2],
                    "peer: scipy.special.airy (all four functions per call)", check=oscillating,
                    gsl_call=xk_call(gsl_address("gsl_sf_airy_Bi"), pairy, 0) if gsl() else None,
                    gsl_name="gsl_sf_airy_Bi")
    # Bessel functions of integer order and their scaled forms.
    for name, peer, gname, check in (
            ("bessel_j0", special.j0, "gsl_sf_bessel_J0", oscillating),
            ("bessel_j1", special.j1, "gsl_sf_bessel_J1", oscillating),
            ("bessel_y0", special.y0, "gsl_sf_bessel_Y0", oscillating),
            ("bessel_y1", special.y1, "gsl_sf_bessel_Y1", oscillating),
            ("bessel_i0", special.i0, "gsl_sf_bessel_I0", relative),
            ("bessel_i1", special.i1, "gsl_sf_bessel_I1", relative),
            ("bessel_k0", special.k0, "gsl_sf_bessel_K0", relative),
            ("bessel_k1", special.k1, "gsl_sf_bessel_K1", relative),
            ("bessel_i0_scaled", special.i0e, "gsl_sf_bessel_I0_scaled", relative),
            ("bessel_k1_scaled", special.k1e, "gsl_sf_bessel_K1_scaled", relative)):
        yield from pair(name, wide, pwide, peer, f"peer: scipy.special.{peer.__name__}", gname,
                        check)
    # Fractional orders nu/4: I_{1/4} and K_{1/2} (GSL takes the order first, as a double).
    nu_i, pnu_i = arr(np.full(N, 0.25))
    nu_k, pnu_k = arr(np.full(N, 0.5))
    yield from pair("bessel_i_nu", wide, pwide, lambda x: special.iv(0.25, x),
                    "order 1/4; peer: scipy.special.iv", "gsl_sf_bessel_Inu",
                    ours=xk_call(address("bessel_i_nu"), pwide, 1),
                    gsl_call=xy_call(gsl_address("gsl_sf_bessel_Inu"), pnu_i, pwide) if gsl() else None)
    yield from pair("bessel_k_nu", wide, pwide, lambda x: special.kv(0.5, x),
                    "order 1/2; peer: scipy.special.kv", "gsl_sf_bessel_Knu",
                    ours=xk_call(address("bessel_k_nu"), pwide, 2),
                    gsl_call=xy_call(gsl_address("gsl_sf_bessel_Knu"), pnu_k, pwide) if gsl() else None)
    # Kelvin functions (no GSL form of the same prototype).
    for name, peer in (("kelvin_ber", special.ber), ("kelvin_bei", special.bei)):
        yield from pair(name, kelvin, pkelvin, peer, f"peer: scipy.special.{peer.__name__}",
                        check=oscillating)
    for name, peer in (("kelvin_ker", special.ker), ("kelvin_kei", special.kei)):
        yield from pair(name, wide, pwide, peer, f"peer: scipy.special.{peer.__name__}",
                        check=oscillating)
    # Fresnel integrals (SciPy computes S and C together) and the exponential, sine and
    # cosine integrals (SciPy's sici computes both).
    yield from pair("fresnel_s", unit, punit, lambda x: special.fresnel(x)[0],
                    "peer: scipy.special.fresnel (S and C per call)")
    yield from pair("fresnel_c", unit, punit, lambda x: special.fresnel(x)[1],
                    "peer: scipy.special.fresnel (S and C per call)")
    yield from pair("exp_integral", gx, pgx, special.exp1, "peer: scipy.special.exp1",
                    "gsl_sf_expint_E1")
    yield from pair("sin_integral", wide, pwide, lambda x: special.sici(x)[0],
                    "peer: scipy.special.sici (Si and Ci per call)", "gsl_sf_Si")
    yield from pair("cos_integral", wide, pwide, lambda x: special.sici(x)[1],
                    "peer: scipy.special.sici (Si and Ci per call)", "gsl_sf_Ci",
                    check=oscillating)
    # The normal law and the error functions.
    yield from pair("cumul_normal", unit, punit, special.ndtr, "peer: scipy.special.ndtr")
    yield Row(FAMILY, "cumul_normal tail", "2e4", x_call(address("cumul_normal"), ptail),
              lambda: special.ndtr(tail), "x in (-12, -2); peer: scipy.special.ndtr",
              check=relative)
    yield from pair("erfz", unit, punit, special.erf, "table name erf; peer: scipy.special.erf",
                    "gsl_sf_erf")
    yield from pair("erfcz", unit, punit, special.erfc,
                    "table name erfc; peer: scipy.special.erfc", "gsl_sf_erfc")
    yield from pair("erfcx", unit, punit, special.erfcx, "peer: scipy.special.erfcx")
    ey, pey = uniform(-0.999, 0.999)
    yield from pair("erfinv", ey, pey, special.erfinv, "peer: scipy.special.erfinv")
    cy, pcy = uniform(0.001, 1.999)
    yield from pair("erfcinv", cy, pcy, special.erfcinv, "peer: scipy.special.erfcinv")
    # Carlson's integrals (GSL's take a precision mode: left out).
    y15, _ = arr(np.full(N, 1.5))
    z2, _ = arr(np.full(N, 2.0))
    r3, _ = arr(np.full(N, 3.0))
    yield Row(FAMILY, "elliptic_integral_rf", "2e4",
              lambda: (L.bench_special_xyz(address("elliptic_integral_rf"), pgx, ptr(y15),
                                           ptr(z2), po, N), out)[1],
              lambda: special.elliprf(gx, 1.5, 2.0), "RF(x, 1.5, 2); peer: scipy.special.elliprf",
              check=relative)
    yield Row(FAMILY, "elliptic_integral_rj", "2e4",
              lambda: (L.bench_special_xyzr(address("elliptic_integral_rj"), pgx, ptr(y15),
                                            ptr(z2), ptr(r3), po, N), out)[1],
              lambda: special.elliprj(gx, 1.5, 2.0, 3.0),
              "RJ(x, 1.5, 2, 3); peer: scipy.special.elliprj", check=relative)
    # The gamma family.
    yield from pair("gammaz", gx, pgx, special.gamma, "table name gamma; peer: scipy.special.gamma",
                    "gsl_sf_gamma")
    yield from pair("log_gamma", gx, pgx, special.gammaln, "peer: scipy.special.gammaln",
                    "gsl_sf_lngamma")
    yield from pair("real_polygamma k=0", gx, pgx, special.psi, "digamma; peer: scipy.special.psi",
                    "gsl_sf_psi", ours=xk_call(address("real_polygamma"), pgx, 0))
    yield from pair("real_polygamma k=3", gx, pgx, lambda x: special.polygamma(3, x),
                    "peer: scipy.special.polygamma", "gsl_sf_psi_n",
                    ours=xk_call(address("real_polygamma"), pgx, 3),
                    gsl_call=(lambda: (L.bench_special_kx(gsl_address("gsl_sf_psi_n"), 3, pgx, po,
                                                          N), out)[1]) if gsl() else None)
    # The incomplete gamma P(a, x) at five shapes.
    for a in (0.5, 5.0, 50.0, 500.0, 5000.0):
        lo, hi = max(a - 8 * np.sqrt(a), a / 100), a + 8 * np.sqrt(a) + 4
        x, px = uniform(lo, hi)
        shape, pshape = arr(np.full(N, a))
        yield from pair(f"incomplete_gamma a={a:g}", x, px,
                        lambda x, a=a: special.gammainc(a, x),
                        f"x in ({lo:.3g}, {hi:.3g}); peer: scipy.special.gammainc",
                        "gsl_sf_gamma_inc_P", check=close(1e-9, 1e-300),
                        ours=xy_call(address("incomplete_gamma"), pshape, px),
                        gsl_call=xy_call(gsl_address("gsl_sf_gamma_inc_P"), pshape, px)
                        if gsl() else None)
