// Shapiro-Wilk kernels: AS R94 in double precision, AS 181 in single precision.
// Constants are those of the published algorithms (see shapiro_wilk.hpp).
#include "platform/nag/shapiro_wilk.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/util/probability.hpp"

namespace zemath::numeric {

namespace {

// c[0] + c[1] x + ... + c[nord-1] x^(nord-1), in the published evaluation order.
template <class T>
T poly(const T* c, int nord, T x) {
    T result = c[0];
    if (nord > 1) {
        T p = x * c[nord - 1];
        for (int j = nord - 2; j > 0; --j) p = (p + c[j]) * x;
        result += p;
    }
    return result;
}

}  // namespace

int as_r94(const double* x, std::size_t n, double* a, std::size_t na, double* w, double* pw) {
    static constexpr double kSmall = 1e-19;  // the published "small": zero range, order slack
    static constexpr double g[2] = {-2.273, 0.459};
    static constexpr double c1[6] = {0.0, 0.221157, -0.147981, -2.07119, 4.434685, -2.706056};
    static constexpr double c2[6] = {0.0, 0.042981, -0.293762, -1.752461, 5.682633, -3.582633};
    static constexpr double c3[4] = {0.544, -0.39978, 0.025054, -6.714e-4};
    static constexpr double c4[4] = {1.3822, -0.77857, 0.062767, -0.0020322};
    static constexpr double c5[4] = {-1.5861, -0.31082, -0.083751, 0.0038915};
    static constexpr double c6[3] = {-0.4803, -0.082676, 0.0030302};
    static constexpr double kSixOverPi = 1.90985931710274;    // 6 / pi
    static constexpr double kPiOverThree = 1.04719755119660;  // asin(sqrt(3/4))

    *pw = 1.0;
    if (n < 3) return 1;
    const std::size_t half = n / 2;
    if (na < half) return 3;
    const double an = static_cast<double>(n);

    if (n == 3) {
        a[0] = std::sqrt(0.5);
    } else {
        const double an25 = an + 0.25;
        double summ2 = 0.0;
        for (std::size_t i = 0; i < half; ++i) {
            a[i] = util::invprob((static_cast<double>(i + 1) - 0.375) / an25);
            summ2 += a[i] * a[i];
        }
        summ2 *= 2.0;
        const double ssumm2 = std::sqrt(summ2);
        const double rsn = 1.0 / std::sqrt(an);
        const double a1 = poly(c1, 6, rsn) - a[0] / ssumm2;
        std::size_t first_scaled;
        double fac;
        if (n > 5) {
            first_scaled = 2;
            const double a2 = -a[1] / ssumm2 + poly(c2, 6, rsn);
            fac = std::sqrt((summ2 - 2.0 * (a[0] * a[0]) - 2.0 * (a[1] * a[1])) /
                            (1.0 - 2.0 * (a1 * a1) - 2.0 * (a2 * a2)));
            a[1] = a2;
        } else {
            first_scaled = 1;
            fac = std::sqrt((summ2 - 2.0 * (a[0] * a[0])) / (1.0 - 2.0 * (a1 * a1)));
        }
        a[0] = a1;
        for (std::size_t i = first_scaled; i < half; ++i) a[i] /= -fac;
    }

    const double range = x[n - 1] - x[0];
    if (!(range >= kSmall)) return 6;
    // Coefficient of sorted point i: -a for the lower half, +a for the upper, 0 in the middle.
    auto coefficient = [&](std::size_t i) {
        const std::size_t mirror = n - 1 - i;
        if (i < mirror) return -a[i];
        if (i > mirror) return a[mirror];
        return 0.0;
    };
    double previous = x[0] / range;
    double sx = previous;
    double sa = coefficient(0);
    for (std::size_t i = 1; i < n; ++i) {
        const double xi = x[i] / range;
        if (previous - xi > kSmall) return 7;
        sx += xi;
        sa += coefficient(i);
        previous = xi;
    }
    const int indicator = n > 5000 ? 2 : 0;

    // W as the squared correlation of data and coefficients, through W1 = 1 - W.
    sa /= an;
    sx /= an;
    double ssa = 0.0, ssx = 0.0, sax = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const double asa = coefficient(i) - sa;
        const double xsx = x[i] / range - sx;
        ssa += asa * asa;
        ssx += xsx * xsx;
        sax += asa * xsx;
    }
    const double ssassx = std::sqrt(ssa * ssx);
    const double w1 = (ssassx - sax) * (ssassx + sax) / (ssa * ssx);
    *w = 1.0 - w1;

    if (n == 3) {  // exact distribution of W for three points
        *pw = std::max(0.0, kSixOverPi * (std::asin(std::sqrt(*w)) - kPiOverThree));
        return indicator;
    }
    double y = std::log(w1);
    const double log_n = std::log(an);
    double mean, sd;
    if (n <= 11) {
        const double gamma = poly(g, 2, an);
        if (y >= gamma) {
            *pw = kSmall;  // beyond the approximation's support: p is effectively 0
            return indicator;
        }
        y = -std::log(gamma - y);
        mean = poly(c3, 4, an);
        sd = std::exp(poly(c4, 4, an));
    } else {
        mean = poly(c5, 4, log_n);
        sd = std::exp(poly(c6, 3, log_n));
    }
    *pw = util::prob(-(y - mean) / sd);  // upper tail, computed directly
    return indicator;
}

// ---- AS 181 (single precision, as published) ---------------------------------------

namespace {

// AS 66: normal tail area; upper selects 1 - Phi(z).
float alnorm(float x, bool upper) {
    constexpr float con = 1.28f, ltone = 7.0f, utzero = 18.66f;
    constexpr float p = 0.398942280444f, q = 0.39990348504f, r = 0.398942280385f;
    constexpr float a1 = 5.75885480458f, a2 = 2.62433121679f, a3 = 5.92885724438f;
    constexpr float b1 = -29.8213557807f, b2 = 48.6959930692f;
    constexpr float c1 = -3.8052e-8f, c2 = 3.98064794e-4f, c3 = -0.151679116635f,
                    c4 = 4.8385912808f, c5 = 0.742380924027f, c6 = 3.99019417011f;
    constexpr float d1 = 1.00000615302f, d2 = 1.98615381364f, d3 = 5.29330324926f,
                    d4 = -15.1508972451f, d5 = 30.789933034f;
    bool up = upper;
    float z = x;
    if (z < 0.0f) {
        up = !up;
        z = -z;
    }
    float result;
    if (z <= ltone || (up && z <= utzero)) {
        const float y = 0.5f * z * z;
        if (z > con) {
            result =
                r * std::exp(-y) /
                (z + c1 +
                 d1 / (z + c2 + d2 / (z + c3 + d3 / (z + c4 + d4 / (z + c5 + d5 / (z + c6))))));
        } else {
            result = 0.5f - z * (p - q * y / (y + a1 + b1 / (y + a2 + b2 / (y + a3))));
        }
    } else {
        result = 0.0f;
    }
    return up ? result : 1.0f - result;
}

// AS 111: normal deviate; 0 with fault 1 outside (0, 1).
float ppnd(float prob, int* fault) {
    constexpr float split = 0.42f;
    constexpr float a0 = 2.506628f, a1 = -18.61500f, a2 = 41.39120f, a3 = -25.44106f;
    constexpr float b1 = -8.473511f, b2 = 23.08337f, b3 = -21.06224f, b4 = 3.130829f;
    constexpr float c0 = -2.787189f, c1 = -2.297965f, c2 = 4.850141f, c3 = 2.321213f;
    constexpr float d1 = 3.543889f, d2 = 1.637068f;
    *fault = 0;
    const float q = prob - 0.5f;
    if (std::fabs(q) <= split) {
        const float r = q * q;
        return q * (((a3 * r + a2) * r + a1) * r + a0) /
               ((((b4 * r + b3) * r + b2) * r + b1) * r + 1.0f);
    }
    float r = q > 0.0f ? 1.0f - prob : prob;
    if (r <= 0.0f) {
        *fault = 1;
        return 0.0f;
    }
    r = std::sqrt(-std::log(r));
    const float value = (((c3 * r + c2) * r + c1) * r + c0) / ((d2 * r + d1) * r + 1.0f);
    return q < 0.0f ? -value : value;
}

// AS 177.3 correction term.
float correc(int i, int n) {
    constexpr float c1[7] = {9.5f, 28.7f, 1.9f, 0.0f, -7.0f, -6.2f, -1.6f};
    constexpr float c2[7] = {-6195.0f, -9569.0f, -6728.0f, -17614.0f, -8278.0f, -3570.0f, 1075.0f};
    constexpr float c3[7] = {9.338e4f, 1.7516e5f, 4.1040e5f, 2.1576e6f,
                             2.376e6f, 2.065e6f,  2.065e6f};
    constexpr float mic = 1e-6f, c14 = 1.9e-5f;
    if (i * n == 4) return c14;
    if (i < 1 || i > 7) return 0.0f;
    if (i != 4 && n > 20) return 0.0f;
    if (i == 4 && n > 40) return 0.0f;
    float an = static_cast<float>(n);
    an = 1.0f / (an * an);
    return (c1[i - 1] + an * (c2[i - 1] + an * c3[i - 1])) * mic;
}

// AS 177.3: approximate expected normal order statistics s[0..n2-1] (positive for the
// largest values).
int nscor2(float* s, int n, int n2) {
    constexpr float eps[4] = {0.419885f, 0.450536f, 0.456936f, 0.468488f};
    constexpr float dl1[4] = {0.112063f, 0.121770f, 0.239299f, 0.215159f};
    constexpr float dl2[4] = {0.080122f, 0.111348f, -0.211867f, -0.115049f};
    constexpr float gam[4] = {0.474798f, 0.469051f, 0.208597f, 0.259784f};
    constexpr float lam[4] = {0.282765f, 0.304856f, 0.407708f, 0.414093f};
    constexpr float bb = -0.283833f, d = -0.106136f, b1 = 0.5641896f;
    if (n2 > n / 2) return 3;
    if (n <= 1) return 1;
    int fault = n > 2000 ? 2 : 0;
    s[0] = b1;
    if (n == 2) return fault;
    const float an = static_cast<float>(n);
    const int k = std::min(3, n2);
    for (int i = 1; i <= k; ++i) {
        const float e1 = (static_cast<float>(i) - eps[i - 1]) / (an + gam[i - 1]);
        const float e2 = std::pow(e1, lam[i - 1]);
        s[i - 1] = e1 + e2 * (dl1[i - 1] + e2 * dl2[i - 1]) / an - correc(i, n);
    }
    for (int i = 4; i <= n2; ++i) {
        const float ai = static_cast<float>(i);
        const float l1 = lam[3] + bb / (ai + d);
        const float e1 = (ai - eps[3]) / (an + gam[3]);
        const float e2 = std::pow(e1, l1);
        s[i - 1] = e1 + e2 * (dl1[3] + e2 * dl2[3]) / an - correc(i, n);
    }
    for (int i = 0; i < n2; ++i) {
        int deviate_fault = 0;
        s[i] = -ppnd(s[i], &deviate_fault);
    }
    return fault;
}

}  // namespace

int as181_coefficients(float* a, int n, int n2, float* eps) {
    constexpr float rsqrt2 = 0.70710678f;
    if (n <= 2) return 1;
    if (n / 2 != n2) return 3;
    if (n > 2000) return 2;
    const float an = static_cast<float>(n);
    if (n <= 6) {
        static constexpr float exact4[2] = {0.6869f, 0.1678f};
        static constexpr float exact5[2] = {0.6647f, 0.2412f};
        static constexpr float exact6[3] = {0.6431f, 0.2806f, 0.0875f};
        if (n == 3) a[0] = rsqrt2;
        if (n == 4) std::copy(exact4, exact4 + 2, a);
        if (n == 5) std::copy(exact5, exact5 + 2, a);
        if (n == 6) std::copy(exact6, exact6 + 3, a);
    } else {
        nscor2(a, n, n2);
        float sastar = 0.0f;
        for (int j = 1; j < n2; ++j) sastar += a[j] * a[j];
        sastar *= 8.0f;
        const float nn = static_cast<float>(n <= 20 ? n - 1 : n);
        const float a1sq = std::exp(
            std::log(6.0f * nn + 7.0f) - std::log(6.0f * nn + 13.0f) +
            0.5f * (1.0f + (nn - 2.0f) * std::log(nn + 1.0f) - (nn - 1.0f) * std::log(nn + 2.0f)));
        const float a1star = sastar / (1.0f / a1sq - 2.0f);
        sastar = std::sqrt(sastar + 2.0f * a1star);
        a[0] = std::sqrt(a1star) / sastar;
        for (int j = 1; j < n2; ++j) a[j] = 2.0f * a[j] / sastar;
    }
    *eps = a[0] * a[0] / (1.0f - 1.0f / an);
    return 0;
}

int as181_w(const float* x, int n, float ssq, const float* a, int n2, float eps, float* w,
            float* pw) {
    static constexpr float wa[3] = {0.118898f, 0.133414f, 0.327907f};
    static constexpr float wb[4] = {-0.37542f, -0.492145f, -1.124332f, -0.199422f};
    static constexpr float wc[4] = {-3.15805f, 0.729399f, 3.01855f, 1.558776f};
    static constexpr float wd[6] = {0.480385f,   0.318828f,   0.0f,
                                    -0.0241665f, 0.00879701f, 0.002989646f};
    static constexpr float we[6] = {-1.91487f,  -1.37888f,    -0.04183209f,
                                    0.1066339f, -0.03513666f, -0.01504614f};
    static constexpr float wf[7] = {-3.73538f,    -1.015807f,   -0.331885f,  0.1773538f,
                                    -0.01638782f, -0.03215018f, 0.003852646f};
    static constexpr float unl[3] = {-3.8f, -3.0f, -1.0f};
    static constexpr float unh[3] = {8.6f, 5.8f, 5.4f};
    static constexpr int nc1[3] = {5, 5, 5};
    static constexpr int nc2[3] = {3, 4, 5};
    static constexpr float c1[3][5] = {{-1.26233f, 1.87969f, 0.0649583f, -0.0475604f, -0.0139682f},
                                       {-2.28135f, 2.26186f, 0.0f, 0.0f, -0.00865763f},
                                       {-3.30623f, 2.76287f, -0.83484f, 1.20857f, -0.507590f}};
    static constexpr float c2[3][5] = {{-0.287696f, 1.78953f, -0.180114f, 0.0f, 0.0f},
                                       {-1.63638f, 5.60924f, -3.63738f, 1.08439f, 0.0f},
                                       {-5.991908f, 21.04575f, -24.58061f, 13.78661f, -2.835295f}};
    constexpr float pi6 = 1.90985932f, stqr = 1.04719755f;
    *pw = 1.0f;
    *w = 1.0f;
    if (n <= 2) return 1;
    if (n / 2 != n2) return 3;
    if (n > 2000) return 2;
    float sum = 0.0f;
    for (int i = 0; i < n2; ++i) sum += a[i] * (x[n - 1 - i] - x[i]);
    *w = sum * sum / ssq;
    if (*w >= 1.0f) {
        *w = 1.0f;
        return 0;
    }
    if (n > 6) {
        const float an = static_cast<float>(n);
        float lambda, ybar, sdy;
        if (n <= 20) {
            const float u = std::log(an) - 3.0f;
            lambda = poly(wa, 3, u);
            ybar = std::exp(poly(wb, 4, u));
            sdy = std::exp(poly(wc, 4, u));
        } else {
            const float u = std::log(an) - 5.0f;
            lambda = poly(wd, 6, u);
            ybar = std::exp(poly(we, 6, u));
            sdy = std::exp(poly(wf, 7, u));
        }
        const float y = std::pow(1.0f - *w, lambda);
        *pw = alnorm((y - ybar) / sdy, true);
        return 0;
    }
    if (*w <= eps) {
        *pw = 0.0f;
        return 0;
    }
    if (n == 3) {
        *pw = pi6 * (std::atan(std::sqrt(*w / (1.0f - *w))) - stqr);
        return 0;
    }
    const int n3 = n - 4;  // 0, 1, 2 for n = 4, 5, 6
    const float un = std::log((*w - eps) / (1.0f - *w));
    if (un < unl[n3]) {
        *pw = 0.0f;
        return 0;
    }
    float eu3;
    if (un < 1.4f) {
        eu3 = std::exp(poly(c1[n3], nc1[n3], un));
    } else {
        if (un > unh[n3]) return 0;  // beyond the approximation: p stays 1
        eu3 = std::exp(std::exp(poly(c2[n3], nc2[n3], std::log(un))));
    }
    const float ww = (eu3 + 0.75f) / (1.0f + eu3);
    *pw = pi6 * (std::atan(std::sqrt(ww / (1.0f - ww))) - stqr);
    return 0;
}

}  // namespace zemath::numeric
