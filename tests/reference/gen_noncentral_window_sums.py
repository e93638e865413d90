#!/usr/bin/python3
"""Reference values of the non-central beta, F and chi-square lower tails at non-centralities
from 4e7 to 1e9, far in the lower tail: results from 1e-4 down through the subnormal range to 0
(both sides of half the smallest subnormal), shapes from 1e5 down to the smallest subnormal.

Method: the Poisson mixture sum_j w_j C_j, w_j = e^-h h^j / j!, h = lambda/2, with the central
terms C_j = I_x(a + j, b) (beta, F) or P(a + j, y) (chi-square, a = df/2, y = x/2), every term
counted one by one, but only over the window of indices whose terms matter:

1. Indices outside [h - 47 sqrt(h), h + 47 sqrt(h)] (the upper end moved up until the bound
   holds, for small h) are dropped with a proven bound: C_j <= 1, and the weights beyond either
   end total at most w_e r / (1 - r), r = h / (e + 1) above and e / h below (the ratios of
   consecutive weights fall), below e^-1100: far below 2^-1075 and below 1e-40 of any sum
   written here (the bound is computed and checked for each row).
2. Inside, a double-precision pass in logarithms (numpy) runs the central terms' exact
   recurrence from the top end downwards, C_j = C_(j+1) + d_j with
       beta:        d_j = x^s y^b / (s B(s, b)),  s = a + j,  d_j = d_(j+1) (s + 1) / (x (s + b)),
       chi-square:  d_j = y^s e^-y / Gamma(s + 1),            d_j = d_(j+1) (s + 1) / y,
   (positive additions only), starting from one mpmath evaluation at the top end, and the
   weights by log-gamma. Its terms are good to about 1e-5 relative (log-gamma's rounding at
   indices near 5e8), ample to find the indices whose terms lie above e^-115 (1e-50) of the
   largest; the rest, at most 94 sqrt(h) e^-115 of the largest together, is dropped (checked
   for each row), and the pass's sum must agree with the final one within 1e-4 relative.
3. Over that window the same recurrence runs in mpmath at 40 digits from one incomplete beta
   or gamma at its top index (gen_distributions_central.py's continued fractions and series;
   the beta's at 20 more digits and as many again as b is small, since past the switch point
   the central term is 1 minus its complement, evaluated twice, 20 digits apart, and required to
   agree within 1e-38), the weights by their ratios from one log-gamma evaluation, each term
   added one by one.

This takes a few seconds per row at lambda 1e9, where summing every index from 14 sqrt(h)
above the mean (gen_noncentral_beta_huge_lambda.py) took many minutes; `--check` compares the
two on rows at lambda 1e4 to 1e6, and the chi-square with gen_noncentral_chi2_huge_lambda.py
(agreement within 1e-34, and within 1e-26 of the latter's 32-digit sums, in the runs made);
it also integrates the density, an independent method (the chi-square's Bessel form, the beta's
confluent hypergeometric form, mpmath's quadrature over the last 120 e-folds below x), on eight
rows at lambda 4e7 to 6e8 with results from 1e-6 to 1e-317 (agreement within 6e-32).

Points: from random scans (lambda log-uniform in [4e7, 1e9], shapes log-uniform from 5e-324 to
1e5, x placed by a Chernoff exponent so that results spread from 1e-320 to 1e-3), spread over
kinds of result (normal, just above the bottom of the normal range, subnormal, 0) and of shape
(ordinary, small, below 1e-290); points made just below and just above half the smallest
subnormal; the points of earlier scans where a call took over a millisecond (results from
8e-65 to 0, shapes down to 5e-324); and chi-square points near lambda 2000 where the strided
sum's check of its stride fires (x far below the mean, df large beside lambda: the sum starts
far below its largest terms).

Writes tests/reference/noncentral_window_sums_ref.inc: {kind, p0, p1, p2, lambda, P} with
kind 0 chi-square (x, df, 0, lambda), 1 beta (x, a, b, lambda), 2 F (f, df1, df2, lambda).
Values below 2^-1075 are written as 0, others as the nearest double (subnormal ones included),
the 20-digit value beside.
Run: /usr/bin/python3 tests/reference/gen_noncentral_window_sums.py   (about five minutes;
     REF_PROCS=2 for two processes)
     /usr/bin/python3 tests/reference/gen_noncentral_window_sums.py --check
"""
import math
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import mpmath as mp  # noqa: E402
import numpy as np  # noqa: E402
from scipy.special import gammaln  # noqa: E402

import gen_distributions_central as central  # noqa: E402

MPF = mp.mpf
DPS = 40
# Terms below e^-WINDOW_DROP of the largest are left out of the 40-digit sum.
WINDOW_DROP = 115.0
SPAN = 47.0


def beta_start(a, b, x, y, s):
    """(I_x(s, b), d(s)) at 40 digits; the complement side at as many more digits as b is
    small (1 - I_y(b, s) cancels down to about b there)."""
    extra = 20 + max(0, int(-mp.log10(b)))
    values = []
    for dps in (DPS + extra, DPS + extra + 20):
        with mp.workdps(dps):
            p, _ = central.ibeta(s, b, x, y)
            log_beta = mp.loggamma(s) + mp.loggamma(b) - mp.loggamma(s + b)
            d = mp.exp(s * mp.log(x) + b * mp.log(y) - mp.log(s) - log_beta)
            values.append((p, d))
    (p1, d1), (p2, d2) = values
    with mp.workdps(DPS + extra):
        if not (abs(p1 - p2) <= abs(p2) * MPF(10) ** -(DPS - 2) and
                abs(d1 - d2) <= abs(d2) * MPF(10) ** -(DPS - 2)):
            raise RuntimeError(f"central term at s = {s} did not settle")
    return +p2, +d2


def gamma_start(a, y, s):
    """(P(s, y), d(s)) at 40 digits."""
    with mp.workdps(DPS + 10):
        p, _ = central.igamma(s, y)
        d = mp.exp(s * mp.log(y) - y - mp.loggamma(s + 1))
    return +p, +d


class Mixture:
    """One law: its central start, its recurrence's ratios in double logarithms, and its
    40-digit step."""

    def __init__(self, kind, a, b, x, y, h):
        self.kind, self.a, self.b, self.x, self.y, self.h = kind, a, b, x, y, h

    def start(self, j):
        s = self.a + j
        if self.kind == 0:
            return gamma_start(self.a, self.y, s)
        return beta_start(self.a, self.b, self.x, self.y, s)

    def log_ratios(self, js):
        """ln(d_j / d_(j+1)) for the indices js, in double."""
        s = float(self.a) + js.astype(np.float64)
        if self.kind == 0:
            return np.log((s + 1.0) / float(self.y))
        # (s + 1) / (x (s + b)) = (1 + (1 - b) / (s + b)) / x
        b = float(self.b)
        log_x = math.log1p(-float(self.y)) if float(self.y) < 0.5 else math.log(float(self.x))
        return np.log1p((1.0 - b) / (s + b)) - log_x


def weight_tail_bound(h, lo, hi):
    """Upper bound on sum_{j < lo} w_j + sum_{j > hi} w_j (natural log), from the weights'
    falling ratios."""
    def log_w(j):
        return -h + j * mp.log(h) - mp.loggamma(j + 1)
    with mp.workdps(30):
        h = MPF(h)
        parts = []
        r = h / (hi + 2)
        parts.append(log_w(hi + 1) - mp.log(1 - r))
        if lo > 0:
            r = (lo - 1) / h
            parts.append(log_w(lo - 1) - mp.log(1 - r))
        return float(mp.log(sum(mp.exp(p) for p in parts)))


def window_sum(mix):
    """The mixture summed at 40 digits over its window; returns (value, diagnostics)."""
    h = float(mix.h)
    lo = max(0, int(h - SPAN * math.sqrt(h)))
    hi = int(h + SPAN * math.sqrt(h)) + 1
    outside = weight_tail_bound(mix.h, lo, hi)
    while outside > -1100.0:  # small h: the weights' upper tail is wider than a Gaussian's
        hi += int(5 * math.sqrt(h)) + 1
        outside = weight_tail_bound(mix.h, lo, hi)
    # The double pass: central terms from the top downwards, in logarithms.
    c_top, d_top = mix.start(hi)
    js = np.arange(hi - 1, lo - 1, -1, dtype=np.int64)
    log_d = float(mp.log(d_top)) + np.cumsum(mix.log_ratios(js))
    log_c = np.logaddexp.accumulate(np.concatenate(([float(mp.log(c_top))], log_d)))
    all_js = np.concatenate(([hi], js))
    log_w = -h + all_js * math.log(h) - gammaln(all_js + 1.0)
    log_t = log_w + log_c
    peak = float(np.max(log_t))
    keep = np.nonzero(log_t >= peak - WINDOW_DROP)[0]
    w_hi, w_lo = int(all_js[keep[0]]), int(all_js[keep[-1]])
    dropped = peak - WINDOW_DROP + math.log(len(all_js))
    # A window that reaches the span's ends leaves terms out that only the weights bound: such
    # a row must lie below 2^-1075 by that bound (checked by the caller).
    open_ends = keep[0] == 0 or (keep[-1] == len(all_js) - 1 and lo > 0)
    # The 40-digit pass over [w_lo, w_hi].
    c, d = mix.start(w_hi)
    with mp.workdps(DPS):
        hm = MPF(mix.h)
        w = mp.exp(-hm + w_hi * mp.log(hm) - mp.loggamma(w_hi + 1))
        total = w * c
        inv_h = 1 / hm
        if mix.kind == 0:
            num = mix.a + w_hi           # s + 1 for s = a + j, j = w_hi - 1
            for j in range(w_hi - 1, w_lo - 1, -1):
                d = d * num / mix.y
                num -= 1
                c += d
                w = w * (j + 1) * inv_h
                total += w * c
        else:
            num = mix.a + w_hi
            den = mix.x * (mix.a + mix.b + (w_hi - 1))
            for j in range(w_hi - 1, w_lo - 1, -1):
                d = d * num / den
                num -= 1
                den -= mix.x
                c += d
                w = w * (j + 1) * inv_h
                total += w * c
        log_total = float(mp.log(total)) if total > 0 else -math.inf
    return total, {
        "window": (w_lo, w_hi), "terms": w_hi - w_lo + 1, "outside": outside,
        "open_ends": bool(open_ends),
        "dropped": dropped, "log_total": log_total, "double_estimate": float(
            np.logaddexp.reduce(log_t)),
    }


def mixture(row):
    kind, p0, p1, p2, lam = row
    with mp.workdps(DPS + 400):
        h = MPF(lam) / 2
        if kind == 0:
            return Mixture(0, MPF(p1) / 2, None, None, MPF(p0) / 2, h)
        if kind == 1:
            x = MPF(p0)
            return Mixture(1, MPF(p1), MPF(p2), x, 1 - x, h)
        num, den = MPF(p1) * MPF(p0), MPF(p1) * MPF(p0) + MPF(p2)
        return Mixture(2, MPF(p1) / 2, MPF(p2) / 2, num / den, MPF(p2) / den, h)


def reference(row):
    total, info = window_sum(mixture(row))
    # Dropped parts: the weights outside the proven span and the window's tail, each below
    # 1e-40 of the sum, or of 2^-1075 where the sum is smaller.
    floor = max(info["log_total"], -1075 * math.log(2))
    if info["open_ends"]:
        if not max(info["log_total"], info["outside"], info["dropped"]) < floor - 10:
            raise RuntimeError(f"the window reaches the span's ends for {row}: {info}")
        return MPF(0), info
    if info["outside"] > floor - 92 or info["dropped"] > floor - 92:
        raise RuntimeError(f"dropped parts not negligible for {row}: {info}")
    if info["log_total"] > -math.inf and abs(info["double_estimate"] - info["log_total"]) > 1e-4:
        raise RuntimeError(f"double pass disagrees for {row}: {info}")
    return total, info


# {kind, x or f, a or df1, b or df2 (0 for the chi-square), lambda}: picked from the scans.
ROWS = [
    (1, 0.9999989271284884, 3.510066773431827e-255, 3.481098449815506e-25, 40070224.960829444),  # above 1e-60; a shape below 1e-20
    (1, 0.9999984966119339, 2.634954501363958e-122, 9.145252192994855e-76, 213589574.1722901),  # 1e-60 .. 1e-150; a shape below 1e-20
    (1, 0.9999983416159332, 1.3365985171597033e-118, 6.85704885204572e-162, 151630269.6412247),  # 1e-150 .. 1e-230; a shape below 1e-20
    (1, 0.999995974283566, 6.600319591889417e-91, 1.1983073615703328e-60, 215963055.499467),  # 1e-230 .. 1e-280; a shape below 1e-20
    (1, 0.9999980186552273, 6.279529226138882e-139, 1.0239160511454667e-202, 194073128.82292387),  # 1e-280 .. 2.2e-308; a shape below 1e-20
    (1, 0.9999994743584751, 3.4914948971007317e-302, 2.791358688419374e-172, 992400838.3840717),  # 1e-280 .. 2.2e-308; a below 1e-290
    (1, 0.9999992473136448, 3.291397488493144e-128, 1.0725874452261353e-227, 566980503.374504),  # subnormal; a shape below 1e-20
    (1, 0.9999687761516917, 0.1425572714090025, 2.6900509212166197e-07, 45772663.97055111),  # subnormal; shapes 1 .. 1e5
    (1, 0.9999956237554017, 3.60456937365321e-222, 5.354572910173579e-190, 127576702.0822024),  # subnormal; a shape below 1e-20
    (1, 0.9999964932398382, 3.8918834378881713e-137, 1.8265558095346922e-22, 392268756.0411333),  # subnormal; a shape below 1e-20
    (1, 0.9999963344946904, 5.577316730649552e-265, 5.8141616571683715e-192, 391025727.6810829),  # 0, bound above 2^-1075; a shape below 1e-20
    (1, 0.9999957009290817, 8.496377840597362e-246, 1.24857572731436e-310, 142170619.8331754),  # 0, bound above 2^-1075; b below 1e-290
    (1, 0.99997391614577, 3.478232271319208e-48, 65.44595855928745, 77111571.70456862),  # 0, bound below 2^-1075; a shape below 1e-20
    (2, 1.2301245922511728e+172, 5.131289506183483e-165, 23333.51887842665, 71974621.04621555),  # above 1e-60; a shape below 1e-20
    (2, 5.871447740655025e+306, 3.935377316979165e-300, 20.71383780778967, 728976355.2214432),  # 1e-60 .. 1e-150; a below 1e-290
    (2, 4.86794731226739e+34, 3.1318984822373784e-29, 18.83504204902068, 72875234.68576275),  # 1e-150 .. 1e-230; a shape below 1e-20
    (2, 1.1434352028088564e-96, 1.522895556090624e-142, 2.1908319583765103e-244, 90371390.92060904),  # 1e-230 .. 1e-280; a shape below 1e-20
    (2, 2.206219327599114e+184, 1.984338851032719e-197, 1.1963926371306872e-18, 448065862.01004046),  # 1e-280 .. 2.2e-308; a shape below 1e-20
    (2, 1.4178982077508323e+153, 2.176247528415903e-298, 1.0269327085653093e-150, 214115852.73604086),  # 1e-280 .. 2.2e-308; a below 1e-290
    (2, 0.06043258030927004, 0.285114542818005, 5.380101842433239e-07, 45772663.97055111),  # subnormal; shapes 1 .. 1e5
    (2, 1.4871047717651512e+31, 2.9178915857917233e-28, 0.0788515668644249, 79475965.5823455),  # subnormal; a shape below 1e-20
    (2, 2.0928541453208936e+157, 1.7728722246557513e-149, 33454.25925942982, 489340135.1706425),  # subnormal; a shape below 1e-20
    (2, 3.3944386189281304e+37, 7.20913874730642e-222, 1.0709145820347159e-189, 127576702.0822024),  # subnormal; a shape below 1e-20
    (2, 1.0876724640107173e-50, 1.513385965483792e-24, 2.4970155636578692e-79, 91853966.10589823),  # 0, bound above 2^-1075; a shape below 1e-20
    (2, 2.8450078059720236e-261, 2.1251802332587073e-29, 1.0287061611124192e-294, 55087803.438309155),  # 0, bound above 2^-1075; b below 1e-290
    (2, 2.3370765314459725e+52, 2.4266605381500067e-197, 1.6019352946578014e-150, 527708141.5066295),  # 0, bound below 2^-1075; a shape below 1e-20
    (1, 0.999927776675815, 11.475898211735743, 16014.825304076607, 514877130.40688246),  # 1e-60 .. 1e-150; shapes 1 .. 1e5
    (1, 0.9999656643891588, 40.99958893154762, 109.9854971176078, 60447596.636144154),  # 1e-280 .. 2.2e-308; shapes 1 .. 1e5
    (1, 0.9999828720745183, 16.681755812118457, 6.01964910893982, 87804802.36616121),  # subnormal; shapes 1 .. 1e5
    (1, 0.9999793676903074, 2045.7591066055024, 3312.468489802285, 580979573.5553429),  # subnormal; shapes 1 .. 1e5
    (2, 9535670.198415957, 10.256618074099196, 1089.3109204490383, 185193462.19663692),  # 1e-60 .. 1e-150; shapes 1 .. 1e5
    (2, 17.15732608518135, 92986.58077128, 20.462243190643882, 116441992.71322376),  # 1e-280 .. 2.2e-308; shapes 1 .. 1e5
    (2, 167.49102603110745, 31710.55741857491, 23.472973468887258, 361674236.42280686),  # subnormal; shapes 1 .. 1e5
    (2, 20933313.80646951, 1.1241883284159944, 241.10947262312112, 220529343.66478992),  # subnormal; shapes 1 .. 1e5
    (0, 109009589.0794092, 6.856211512793802e-226, 0.0, 109305603.69836879),  # above 1e-60; df below 1e-20
    (0, 271263518.2995063, 3.0683285048362513e-134, 0.0, 272288414.6909283),  # 1e-150 .. 1e-230; df below 1e-20
    (0, 424115061.5497161, 1.95326396029086e-223, 0.0, 425652085.091971),  # 1e-280 .. 2.2e-308; df below 1e-20
    (0, 75809684.5056008, 9.382411375200255e-182, 0.0, 76474187.63618898),  # subnormal; df below 1e-20
    (0, 106514225.40297367, 1.22989279e-315, 0.0, 107307021.2564708),  # subnormal; df below 1e-290
    (0, 138767923.71685797, 1.5803545812039805e-187, 0.0, 139678800.10380244),  # 0, bound above 2^-1075; df below 1e-20
    (0, 88774449.03967617, 7.057317802363466e-58, 0.0, 89507998.11480698),  # 0, bound below 2^-1075; df below 1e-20
    # Points of earlier scans (lambda 1e6 to 1e9) where a call took over a millisecond.
    (1, 0.999996601002773, 0.0003847953718608772, 2.9146729165023713e-08, 394689176.04912406),
    (1, 0.9999958550528991, 1.8316903262910553e-149, 2.0374153299291817e-94, 225503889.03723878),
    (1, 0.9999996755220244, 9.09024964e-316, 2.3078393209548603e-256, 462749929.4697151),
    (1, 0.999998200207341, 1.1539032122761127e-19, 9.516746399688399e-08, 210624854.3575254),
    (1, 0.999999754732514, 1.4451822940766953e-132, 1.1901656425942208e-18, 829651186.8005294),
    (1, 0.9999993576489533, 4.1034205054705595e-299, 3.653192828590482e-119, 99752715.40455376),
    (1, 0.9999926504678471, 0.0028554751198051035, 0.015942710660416814, 198707638.42953065),
    (1, 0.9999606870876742, 11487.82512717989, 648.2648757672988, 108301521.55840951),
    (1, 0.9999971621914885, 3.6662656813136874e-225, 4.573716106356894e-145, 273564757.4330625),
    (1, 0.9999956210238719, 1.244290135e-315, 2.023099333367336e-129, 186685010.9880527),
    (1, 0.9999996590340744, 2e-323, 7.241440713281236e-308, 137905938.85520104),
    (1, 0.999967256744287, 0.12109621170535968, 636.5650785587038, 131770960.91808948),
    (1, 0.9999820712185349, 4.291565923052401e-09, 2.2682554955293173e-05, 82124193.57414299),
    (1, 0.9999956310853432, 8.713864323091371e-190, 1.5440520956141606e-140, 337884482.46364284),
    (1, 0.999997745466634, 1.672883093128466e-293, 6.885601828317036e-165, 615865385.4073926),
    (1, 0.9999947723771628, 2.4868805789827746e-72, 1.0946187347813e-310, 272567193.6595424),
    (2, 22.284746550245732, 0.0007695907437217544, 5.8293458330047425e-08, 394689176.04912406),
    (2, 1.2887823180295739e+176, 6.868182590712215e-184, 5.451427461627087e-13, 217556651.00197995),
    (2, 9.518943023663065e+279, 2.560804275891508e-294, 5.127101901070202e-20, 583239771.3323328),
    (2, 4.582430177948878e+17, 2.3078064245522254e-19, 1.9033492799376798e-07, 210624854.3575254),
    (2, 3.806178515499816e+259, 3.1107658755745886e-285, 1.3959055505166475e-31, 239558645.01949173),
    (2, 6.287127925885255e+287, 5.012511770717709e-303, 2.4743962478528896e-20, 135215305.25146008),
    (2, 24.52288323460354, 134.9013590303086, 0.01666387835731208, 281895489.19298196),
    (2, 6294.6924797489055, 381.02198310906493, 6.862618265112814, 521392524.0504462),
    (2, 6.282843380320484e-05, 2.134434986242116e-12, 1.043689253198051e-21, 174966572.30794185),
    (2, 1.75691955544418e+22, 1.0671754934548176e-294, 7.274531352792782e-278, 41893748.7328054),
    (2, 1.0746553450578194e+22, 4e-323, 1.4482881426562472e-307, 137905938.85520104),
    (2, 0.5552891803888211, 1202.5033609413565, 0.005176163076560284, 191900316.4729961),
    (2, 606696.8450434045, 0.12253175635737718, 0.12102035847303416, 914170725.7455924),
    (2, 4.719691743718979e-44, 2.8804572705145077e-218, 5.365560867673241e-267, 366086608.20060366),
    (2, 7.04446318946425e+102, 5.98107692e-315, 1.281383241532558e-217, 252048036.84670174),
    (2, 2.436911663898269e-24, 3.8468341186359377e-277, 1.0336813049271603e-306, 836294257.7526181),
    # Results from 1e-4 to 1e-30.
    (1, 0.9999998919017374, 1.351148240924835e-160, 2.3777341106357918e-05, 236863209.0022052),
    (2, 1.6279517433964788e+162, 2.70229648184967e-160, 4.7554682212715836e-05, 236863209.0022052),
    (1, 0.9998658560082996, 1932.7437841247242, 26818.881062566423, 428156524.89542115),
    (2, 311477.8342175572, 60.85521204398087, 3.102047886299418, 871337573.2273449),
    (1, 0.9999667448152991, 793.1216513011083, 9496.885267868316, 612077299.9608167),
    (2, 833.6243981007033, 92306.87853507548, 2724.3005335001603, 94466749.10732059),
    (1, 0.999999547173787, 13.130232579824641, 6.567444128135936, 110419157.22658579),
    (0, 42471724.6203859, 5.756264046009946, 0.0, 42544211.50832962),
    (0, 927245121.7392347, 0.019750976667139434, 0.0, 927467942.561906),
    # Just below and just above half the smallest subnormal (1.56e-324, 1.55e-324, 2.8e-324).
    (1, 0.9999823661153817, 16.681755812118457, 6.01964910893982, 87804802.36616121),
    (2, 20917743.443749733, 1.1241883284159944, 241.10947262312112, 220529343.66478992),
    (1, 0.9999823797540317, 16.681755812118457, 6.01964910893982, 87804802.36616121),
    # The chi-square with ordinary degrees of freedom.
    (0, 598211467.133435, 30000.0, 0.0, 600000000.0),
    (0, 948770016.3881239, 2500.0, 0.0, 950000000.0),
    # The chi-square where the stride's check fires: the sum starts far below its largest terms
    # (x far under the mean, df large beside lambda near 2000) and visits nodes near u = 0.
    (0, 177.79038663855025, 350.5157690011968, 0.0, 2001.4393321696248),
    (0, 221.60074017651965, 376.07292175937334, 0.0, 2047.7901548278096),
    (0, 446.47256865932826, 819.209554717241, 0.0, 2098.777503266614),
]


def format_line(row, r):
    kind, p0, p1, p2, lam = row
    value = 0.0 if r < MPF(2) ** -1075 else float(r)
    note = mp.nstr(r, 20) if r > 0 else "below 2^-1089"
    return f"    {{{kind}, {p0!r}, {p1!r}, {p2!r}, {lam!r}, {value!r}}},  // {note}"


def line(row):
    r, _ = reference(row)
    return format_line(row, r)


def check():
    """The window sums beside the sums over every index of the existing generators."""
    import time
    import gen_noncentral_beta_huge_lambda as nbeta
    import gen_noncentral_chi2_huge_lambda as nchi2
    beta_rows = [
        (1, 0.9, 2.5, 5.0, 1e4), (2, 3.0, 1e3, 20.0, 2e5), (1, 0.99999, 1e-20, 1e-8, 1e6),
        (1, 0.9997, 40.0, 0.3, 1e6), (2, 2.9e303, 1e-300, 3.0, 3e5),
    ]
    chi_rows = [(0, 2e3, 3.0, 0.0, 1e4), (0, 9.6e5, 1e-10, 0.0, 1e6), (0, 1.08e6, 1e5, 0.0, 1e6)]
    worst = 0.0
    for row in beta_rows + chi_rows:
        t0 = time.time()
        ours, info = reference(row)
        t1 = time.time()
        kind, p0, p1, p2, lam = row
        slow = nchi2.ncchi2(p0, p1, lam) if kind == 0 else nbeta.reference(row)
        t2 = time.time()
        with mp.workdps(DPS):
            err = abs(ours - slow) / slow
        worst = max(worst, float(err))
        print(f"{row}: {mp.nstr(ours, 25)} vs {mp.nstr(slow, 25)} rel {mp.nstr(err, 3)} "
              f"({info['terms']} terms, {t1 - t0:.1f} s vs {t2 - t1:.1f} s)", flush=True)
    print(f"worst relative difference {worst:.2e}")


def log_density(t, mix):
    """ln of the law's density at t (40 digits): the chi-square's Bessel form
    e^-((t + lambda)/2) (t/lambda)^(df/4 - 1/2) I_(df/2 - 1)(sqrt(lambda t)) / 2 (in x, here with
    t = x), the beta's confluent form e^-h t^(a-1) (1 - t)^(b-1) 1F1(a + b; a; h t) / B(a, b)."""
    h = mix.h
    if mix.kind == 0:
        lam, k = 2 * h, 2 * mix.a
        return (-(t + lam) / 2 + (k / 4 - MPF(1) / 2) * mp.log(t / lam) - mp.log(2) +
                mp.log(mp.besseli(k / 2 - 1, mp.sqrt(lam * t))))
    a, b = mix.a, mix.b
    return (-h + (a - 1) * mp.log(t) + (b - 1) * mp.log1p(-t) + mp.log(mp.hyp1f1(a + b, a, h * t))
            - (mp.loggamma(a) + mp.loggamma(b) - mp.loggamma(a + b)))


def by_quadrature(row):
    """The lower tail as the integral of the density (mpmath's tanh-sinh quadrature) over
    [x - 120/g, x], g = d ln f / dx at x (far in the lower tail the density falls at least that
    fast below x, so the rest is below e^-120 of the integral's scale): a method independent of
    the mixture."""
    mix = mixture(row)
    with mp.workdps(DPS):
        x = 2 * mix.y if mix.kind == 0 else mix.x
        top = log_density(x, mix)
        slope = mp.diff(lambda t: log_density(t, mix), x)
        width = 120 / slope
        nodes = [x - width * w for w in (1, 0.6, 0.35, 0.2, 0.1, 0.05, 0.02, 0.005, 0)]
        return mp.exp(top) * mp.quad(lambda t: mp.exp(log_density(t, mix) - top), nodes)


QUADRATURE_ROWS = [
    (0, 42471724.6203859, 5.756264046009946, 0.0, 42544211.50832962),
    (0, 598211467.133435, 30000.0, 0.0, 600000000.0),
    (0, 75809684.5056008, 9.382411375200255e-182, 0.0, 76474187.63618898),
    (1, 0.999999547173787, 13.130232579824641, 6.567444128135936, 110419157.22658579),
    (1, 0.9999828720745183, 16.681755812118457, 6.01964910893982, 87804802.36616121),
    (1, 0.9999793676903074, 2045.7591066055024, 3312.468489802285, 580979573.5553429),
    (1, 0.9999998919017374, 1.351148240924835e-160, 2.3777341106357918e-05, 236863209.0022052),
    (2, 833.6243981007033, 92306.87853507548, 2724.3005335001603, 94466749.10732059),
]


def check_quadrature():
    """The window sums beside the density's integral at lambda 4e7 to 6e8."""
    worst = 0.0
    for row in QUADRATURE_ROWS:
        ours, _ = reference(row)
        other = by_quadrature(row)
        with mp.workdps(DPS):
            err = abs(ours - other) / other
        worst = max(worst, float(err))
        print(f"{row}: {mp.nstr(ours, 25)} vs {mp.nstr(other, 25)} rel {mp.nstr(err, 3)}",
              flush=True)
    print(f"worst relative difference {worst:.2e}")


def main():
    if '--check' in sys.argv:
        check()
        check_quadrature()
        return
    import multiprocessing
    procs = int(os.environ.get('REF_PROCS', '1'))
    with multiprocessing.Pool(procs) as pool:
        lines = pool.map(line, ROWS, chunksize=1)
    out = os.path.join(os.path.dirname(os.path.abspath(__file__)),
                       'noncentral_window_sums_ref.inc')
    with open(out, 'w') as fh:
        fh.write('// Generated by tests/reference/gen_noncentral_window_sums.py; do not edit.\n')
        fh.write('// {kind (0 chi-square, 1 beta, 2 F), x or f, df or a or df1, 0 or b or df2, '
                 'lambda, P(X <= x), 0 below 2^-1075}\n')
        fh.write('\n'.join(lines) + '\n')
    print(f"{len(lines)} rows -> {out}")


if __name__ == '__main__':
    main()
