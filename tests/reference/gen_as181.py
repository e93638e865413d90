#!/usr/bin/python3
"""Writes as181_ref.inc: W and p-value of algorithm AS 181 (Royston 1982) evaluated
directly from its published formulas in double precision, beside R's shapiro.test()
(algorithm AS R94) on the same samples.

Formulas (independent of the library's single-precision code):
  normal scores m_i, i = 1..n/2: the approximation of AS 177.3 (Royston 1982), Blom-type
    probabilities (i - eps_i) / (n + gam_i) with the published eps, gam, delta1, delta2,
    lambda (lambda_i = lambda_4 + bb / (i + d) from i = 4) and the small-sample
    correction for i <= 7, converted with scipy.stats.norm.ppf;
  coefficients (n > 6): a_i proportional to 2 m_i for i >= 2; a_1^2 = g(n - 1) for
    n <= 20 and g(n) beyond, g(n) = Gamma((n + 1) / 2) / (sqrt(2) Gamma(n / 2 + 1)) (Shapiro
    and Wilk's approximation, evaluated here with scipy.special.gammaln rather than the
    algorithm's Stirling form); normalised so that the sum of squares over both halves is 1;
  n <= 6: Shapiro and Wilk's tabled coefficients;
  W = (sum a_i (x_(n+1-i) - x_(i)))^2 / sum (x - mean)^2;
  p-value: n >= 7, y = (1 - W)^lambda normal with mean exp(poly) and sd exp(poly) in
    u = ln n - 3 (n <= 20) or ln n - 5 (the published polynomials), upper tail by
    scipy.stats.norm.sf; n = 3 exact; 4 <= n <= 6 the published polynomials in
    ln((W - eps) / (1 - W)).
Samples: normal, uniform and exponential, values rounded to 4 decimals and then to single
precision (the algorithm's working precision), sizes 3 to 2000.
The last column, R's W (AS R94 with the exact-style a_1, a_2 polynomials), shows the
published AS 181's own departure at large n: its a_1 from g(n) is far larger than the
optimal one beyond about 50 points (0.178 against 0.103 at n = 1000), which lowers W.
Run: /usr/bin/python3 tests/reference/gen_as181.py > tests/reference/as181_ref.inc
"""
import math
import subprocess

import numpy as np
from scipy import special, stats

EPS = [0.419885, 0.450536, 0.456936, 0.468488]
DL1 = [0.112063, 0.121770, 0.239299, 0.215159]
DL2 = [0.080122, 0.111348, -0.211867, -0.115049]
GAM = [0.474798, 0.469051, 0.208597, 0.259784]
LAM = [0.282765, 0.304856, 0.407708, 0.414093]
BB, DD = -0.283833, -0.106136
CC1 = [9.5, 28.7, 1.9, 0.0, -7.0, -6.2, -1.6]
CC2 = [-6195.0, -9569.0, -6728.0, -17614.0, -8278.0, -3570.0, 1075.0]
CC3 = [9.338e4, 1.7516e5, 4.1040e5, 2.1576e6, 2.376e6, 2.065e6, 2.065e6]
EXACT = {3: [math.sqrt(0.5)], 4: [0.6869, 0.1678], 5: [0.6647, 0.2412],
         6: [0.6431, 0.2806, 0.0875]}
WA = [0.118898, 0.133414, 0.327907]
WB = [-0.37542, -0.492145, -1.124332, -0.199422]
WC = [-3.15805, 0.729399, 3.01855, 1.558776]
WD = [0.480385, 0.318828, 0.0, -0.0241665, 0.00879701, 0.002989646]
WE = [-1.91487, -1.37888, -0.04183209, 0.1066339, -0.03513666, -0.01504614]
WF = [-3.73538, -1.015807, -0.331885, 0.1773538, -0.01638782, -0.03215018, 0.003852646]
SMALL_C1 = [[-1.26233, 1.87969, 0.0649583, -0.0475604, -0.0139682],
            [-2.28135, 2.26186, 0.0, 0.0, -0.00865763],
            [-3.30623, 2.76287, -0.83484, 1.20857, -0.507590]]
SMALL_C2 = [[-0.287696, 1.78953, -0.180114], [-1.63638, 5.60924, -3.63738, 1.08439],
            [-5.991908, 21.04575, -24.58061, 13.78661, -2.835295]]
UNL, UNH = [-3.8, -3.0, -1.0], [8.6, 5.8, 5.4]


def poly(c, x):
    return sum(ci * x ** k for k, ci in enumerate(c))


def correction(i, n):
    if i > 7 or (i != 4 and n > 20) or (i == 4 and n > 40):
        return 0.0
    an = 1.0 / (n * n)
    return (CC1[i - 1] + an * (CC2[i - 1] + an * CC3[i - 1])) * 1e-6


def normal_scores(n):
    s = []
    for i in range(1, n // 2 + 1):
        k = min(i, 4) - 1
        lam = LAM[k] if i <= 3 else LAM[3] + BB / (i + DD)
        e1 = (i - EPS[k]) / (n + GAM[k])
        e2 = e1 ** lam
        s.append(e1 + e2 * (DL1[k] + e2 * DL2[k]) / n - correction(i, n))
    return -stats.norm.ppf(np.array(s))


def coefficients(n):
    if n <= 6:
        return np.array(EXACT[n])
    m = normal_scores(n)
    nn = n - 1 if n <= 20 else n
    a1sq = math.exp(special.gammaln((nn + 1) / 2) - special.gammaln(nn / 2 + 1)) / math.sqrt(2)
    rest = 4.0 * np.sum(m[1:] ** 2)  # sum of (2 m_i)^2 over i >= 2, one half
    # a_1^2 = a1sq after scaling: a1*^2 / (2 a1*^2 + 2 rest) = a1sq.
    a1star_sq = a1sq * 2 * rest / (1 - 2 * a1sq)
    scale = math.sqrt(2 * a1star_sq + 2 * rest)
    a = 2 * m / scale
    a[0] = math.sqrt(a1star_sq) / scale
    return a


def as181(x):
    x = np.sort(np.asarray(x, dtype=np.float64))
    n = len(x)
    a = coefficients(n)
    half = n // 2
    w = np.sum(a * (x[::-1][:half] - x[:half])) ** 2 / np.sum((x - x.mean()) ** 2)
    w = min(w, 1.0)
    if w >= 1.0:
        return w, 1.0
    if n > 6:
        if n <= 20:
            u = math.log(n) - 3
            lam, ybar, sdy = poly(WA, u), math.exp(poly(WB, u)), math.exp(poly(WC, u))
        else:
            u = math.log(n) - 5
            lam, ybar, sdy = poly(WD, u), math.exp(poly(WE, u)), math.exp(poly(WF, u))
        return w, float(stats.norm.sf(((1 - w) ** lam - ybar) / sdy))
    eps = a[0] ** 2 / (1 - 1 / n)
    if w <= eps:
        return w, 0.0
    six_pi = 6 / math.pi
    if n == 3:
        return w, six_pi * (math.atan(math.sqrt(w / (1 - w))) - math.pi / 3)
    k = n - 4
    un = math.log((w - eps) / (1 - w))
    if un < UNL[k]:
        return w, 0.0
    if un < 1.4:
        eu3 = math.exp(poly(SMALL_C1[k], un))
    elif un > UNH[k]:
        return w, 1.0
    else:
        eu3 = math.exp(math.exp(poly(SMALL_C2[k], math.log(un))))
    ww = (eu3 + 0.75) / (1 + eu3)
    return w, six_pi * (math.atan(math.sqrt(ww / (1 - ww))) - math.pi / 3)


def r_shapiro_w(x):
    text = " ".join(repr(float(v)) for v in x) + "\n"
    script = ("x <- scan(file('stdin'), quiet = TRUE);"
              "cat(sprintf('%.17g', shapiro.test(x)$statistic))")
    out = subprocess.run(["Rscript", "-e", script], input=text, capture_output=True, text=True,
                         check=True)
    return float(out.stdout)


rng = np.random.default_rng(181)
print("// Generated by tests/reference/gen_as181.py; do not edit.")
print("// {{data}, W and p of AS 181's formulas in double precision, W of AS R94 (R)}")
for n in [3, 4, 5, 6, 7, 11, 20, 21, 50, 100, 250, 500, 1000, 2000]:
    for kind in ["normal", "uniform", "exponential"]:
        if kind == "normal":
            x = rng.normal(10.0, 2.0, n)
        elif kind == "uniform":
            x = rng.uniform(0.0, 1.0, n)
        else:
            x = rng.exponential(1.0, n)
        x = np.round(x, 4).astype(np.float32)
        if np.ptp(x) == 0:
            continue
        w, p = as181(x.astype(np.float64))
        values = ", ".join(f"{float(v):.9g}" for v in x)
        print(f"{{{{{values}}}, {w:.17g}, {p:.17g}, {r_shapiro_w(x.astype(np.float64)):.17g}}},")
