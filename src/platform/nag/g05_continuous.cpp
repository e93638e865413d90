// g05l*: continuous random variates.
//
// Methods (all exact in distribution up to the 53-bit resolution of the uniforms):
//   normal, log-normal      256-layer ziggurat (g05_engine.hpp)
//   exponential, Weibull    exponential ziggurat; Weibull as (b E)^(1/a)
//   gamma, chi-square       Marsaglia and Tsang (2000); chi-square(k) = 2 Gamma(k/2)
//   beta                    X / (X + Y) of two gammas, in logarithms when a shape is
//                           below 1 so that tiny shapes do not give 0/0
//   Student's t, F          normal over root chi-square / df; ratio of scaled chi-squares
//   uniform, triangular,
//   Cauchy, logistic        inversion of the distribution function
//   multivariate normal     x = mu + A z with A = V diag(sqrt(lambda)) from the symmetric
//                           eigen-decomposition of the covariance (robust for singular,
//                           positive semi-definite matrices)
#include <Eigen/Dense>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <vector>

#include "platform/nag/g05_engine.hpp"

namespace zemath::nag {

namespace {

using rng::Engine;

bool finite(double v) {
    return std::isfinite(v);
}

bool all_finite(std::initializer_list<double> values) {
    for (double v : values) {
        if (!std::isfinite(v)) return false;
    }
    return true;
}

// Scales a finite interval whose width overflows: the draw is made on [a/2, b/2] and
// doubled, which stays inside [a, b].
struct Halving {
    double factor = 1.0;
    explicit Halving(double a, double b) {
        if (!finite(b - a)) factor = 2.0;
    }
};

}  // namespace

void g05lac(double xmu, double var, int n, double x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (!all_finite({xmu, var}) && refuse(fail, NE_REAL)) return;
    if (var < 0.0 && refuse(fail, NE_REAL_ARG_LT)) return;
    const double sd = std::sqrt(var);
    const auto& zn = rng::normal_ziggurat();
    Engine eng(state);
    for (int i = 0; i < n; ++i) x[i] = xmu + sd * rng::normal(eng, zn);
}

// ln X is normal with mean xmu and variance var: the normal draws, exponentiated.
void g05lkc(double xmu, double var, int n, double x[], G05State& state, NagError* fail) {
    g05lac(xmu, var, n, x, state, fail);
    if (fail->failed()) return;
    for (int i = 0; i < n; ++i) x[i] = std::exp(x[i]);
}

void g05lfc(double a, double b, int n, double x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (!all_finite({a, b}) && refuse(fail, NE_REAL)) return;
    if ((a <= 0.0 || b <= 0.0) && refuse(fail, NE_REAL_ARG_LE)) return;
    const rng::GammaSampler gamma(a);
    const auto& zn = rng::normal_ziggurat();
    Engine eng(state);
    for (int i = 0; i < n; ++i) x[i] = b * gamma(eng, zn);
}

void g05lcc(int df, int n, double x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (df < 1 && refuse(fail, NE_INT_ARG_LT)) return;
    const rng::GammaSampler gamma(0.5 * df);
    const auto& zn = rng::normal_ziggurat();
    Engine eng(state);
    for (int i = 0; i < n; ++i) x[i] = 2.0 * gamma(eng, zn);
}

void g05lbc(int df, int n, double x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (df < 1 && refuse(fail, NE_INT_ARG_LT)) return;
    const rng::GammaSampler gamma(0.5 * df);
    const double half_df = 0.5 * df;
    const auto& zn = rng::normal_ziggurat();
    Engine eng(state);
    // t = Z / sqrt(chi2 / df) = Z / sqrt(G(df/2) / (df/2)).
    for (int i = 0; i < n; ++i) {
        const double z = rng::normal(eng, zn);
        x[i] = z / std::sqrt(gamma(eng, zn) / half_df);
    }
}

void g05ldc(int df1, int df2, int n, double x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if ((df1 < 1 || df2 < 1) && refuse(fail, NE_INT_ARG_LT)) return;
    const rng::GammaSampler gamma1(0.5 * df1), gamma2(0.5 * df2);
    const double ratio = static_cast<double>(df2) / df1;
    const auto& zn = rng::normal_ziggurat();
    Engine eng(state);
    for (int i = 0; i < n; ++i) {
        const double g1 = gamma1(eng, zn);
        x[i] = ratio * g1 / gamma2(eng, zn);
    }
}

void g05lec(double a, double b, int n, double x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (!all_finite({a, b}) && refuse(fail, NE_REAL)) return;
    if ((a <= 0.0 || b <= 0.0) && refuse(fail, NE_REAL_ARG_LE)) return;
    const rng::GammaSampler ga(a), gb(b);
    const auto& zn = rng::normal_ziggurat();
    Engine eng(state);
    if (a >= 1.0 && b >= 1.0) {
        for (int i = 0; i < n; ++i) {
            const double u = ga(eng, zn);
            x[i] = u / (u + gb(eng, zn));
        }
        return;
    }
    // X / (X + Y) = 1 / (1 + exp(ln Y - ln X)): no 0/0 when both gammas underflow.
    // Shapes below about 1e-307 can send both logarithms to -inf; the law is then
    // Bernoulli at 0 and 1 with P(1) = a / (a + b), its limit as the shapes vanish.
    const double p_one = a / (a + b);
    for (int i = 0; i < n; ++i) {
        const double log_u = ga.log_of_draw(eng, zn);
        const double log_v = gb.log_of_draw(eng, zn);
        if (std::isinf(log_u) && std::isinf(log_v)) {
            x[i] = eng.uniform() < p_one ? 1.0 : 0.0;
            continue;
        }
        x[i] = 1.0 / (1.0 + std::exp(log_v - log_u));
    }
}

void g05lgc(double a, double b, int n, double x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (!all_finite({a, b}) && refuse(fail, NE_REAL)) return;
    if (a > b && refuse(fail, NE_REAL)) return;
    const Halving h(a, b);
    const double lo = a / h.factor, width = b / h.factor - a / h.factor;
    Engine eng(state);
    for (int i = 0; i < n; ++i) x[i] = std::min(h.factor * (lo + width * eng.uniform()), b);
}

void g05lhc(double xmin, double xmed, double xmax, int n, double x[], G05State& state,
            NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (!all_finite({xmin, xmed, xmax}) && refuse(fail, NE_REAL)) return;
    if (!(xmin <= xmed && xmed <= xmax && xmin < xmax) && refuse(fail, NE_REAL)) return;
    // Inversion: F(x) = (x-a)^2 / ((b-a)(c-a)) left of the mode c, 1 - (b-x)^2/((b-a)(b-c))
    // right of it.
    const Halving h(xmin, xmax);
    const double lo = xmin / h.factor, mode = xmed / h.factor, hi = xmax / h.factor;
    const double width = hi - lo, left = mode - lo, right = hi - mode;
    const double split = left / width;
    Engine eng(state);
    for (int i = 0; i < n; ++i) {
        const double u = eng.uniform();
        const double v = u < split ? lo + std::sqrt(u * width * left)
                                   : hi - std::sqrt((1.0 - u) * width * right);
        x[i] = std::clamp(h.factor * v, xmin, xmax);
    }
}

void g05ljc(double a, int n, double x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (!all_finite({a}) && refuse(fail, NE_REAL)) return;
    if (a <= 0.0 && refuse(fail, NE_REAL_ARG_LE)) return;
    const auto& ze = rng::exponential_ziggurat();
    Engine eng(state);
    for (int i = 0; i < n; ++i) x[i] = a * rng::exponential(eng, ze);
}

void g05llc(double xmed, double semiqr, int n, double x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (!all_finite({xmed, semiqr}) && refuse(fail, NE_REAL)) return;
    if (semiqr < 0.0 && refuse(fail, NE_REAL_ARG_LT)) return;
    // The quartiles of the standard Cauchy are -1 and 1, so semiqr is its scale.
    constexpr double pi = 3.14159265358979323846;
    if (semiqr == 0.0) {
        std::fill(x, x + n, xmed);
        return;
    }
    Engine eng(state);
    for (int i = 0; i < n; ++i) x[i] = xmed + semiqr * std::tan(pi * (eng.uniform_open() - 0.5));
}

void g05lmc(double a, double b, int n, double x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (!all_finite({a, b}) && refuse(fail, NE_REAL)) return;
    if ((a <= 0.0 || b <= 0.0) && refuse(fail, NE_REAL_ARG_LE)) return;
    // P(X > x) = exp(-x^a / b), so X^a / b is standard exponential.
    const double inv_a = 1.0 / a;
    const double log_b = std::log(b);
    const auto& ze = rng::exponential_ziggurat();
    Engine eng(state);
    for (int i = 0; i < n; ++i) {
        const double e = rng::exponential(eng, ze);
        const double t = b * e;
        // b E may overflow although its 1/a-th power would not: then take logarithms.
        x[i] = std::isfinite(t) ? std::pow(t, inv_a) : std::exp((log_b + std::log(e)) * inv_a);
    }
}

void g05lnc(double a, double b, int n, double x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (!all_finite({a, b}) && refuse(fail, NE_REAL)) return;
    if (b <= 0.0 && refuse(fail, NE_REAL_ARG_LE)) return;
    Engine eng(state);
    for (int i = 0; i < n; ++i) {
        const double u = eng.uniform_open();
        x[i] = a + b * (std::log(u) - std::log1p(-u));
    }
}

// ---- Multivariate normal ---------------------------------------------------------------

// r layout: r[0] = m, r[1 .. m*m] = A row by row, with A A^T = c.
int g05lzc_reference_size(int m) {
    return m < 1 ? 1 : m > g05lzc_max_dimension ? std::numeric_limits<int>::max() : m * m + 1;
}

namespace {

void set_up_factor(int m, const double c[], int tdc, double r[], NagError* fail) {
    using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    Matrix cov(m, m);
    double largest = 0.0;
    for (int i = 0; i < m; ++i) {
        for (int j = 0; j < m; ++j) {
            const double v = c[static_cast<std::size_t>(i) * tdc + j];
            if (!finite(v)) {
                fail->set(NE_REAL);
                return;
            }
            cov(i, j) = v;
            largest = std::max(largest, std::abs(v));
        }
    }
    // Symmetric to a relative 1e-10 of the largest entry: callers' matrices are often
    // products that are symmetric only to rounding.
    const double symmetry_tolerance = 1e-10 * largest;
    for (int i = 0; i < m; ++i) {
        if (!(cov(i, i) >= 0.0)) {
            fail->set(NE_REAL);
            return;
        }
        for (int j = 0; j < i; ++j) {
            if (std::abs(cov(i, j) - cov(j, i)) > symmetry_tolerance) {
                fail->set(NE_REAL);
                return;
            }
            cov(i, j) = cov(j, i) = 0.5 * (cov(i, j) + cov(j, i));
        }
    }
    Eigen::SelfAdjointEigenSolver<Matrix> eigen(cov);
    if (eigen.info() != Eigen::Success) {
        fail->set(NE_REAL);
        return;
    }
    const auto& lambda = eigen.eigenvalues();  // ascending
    const double scale = std::max(std::abs(lambda(m - 1)), std::abs(lambda(0)));
    // The zero eigenvalues of a singular matrix come out as rounding noise of either
    // sign, of order m eps times the largest. Within this bound they are exactly 0 (so
    // the samples stay in the range of the matrix); below minus it the matrix is
    // indefinite.
    const double rounding_bound = 64.0 * m * std::numeric_limits<double>::epsilon() * scale;
    if (lambda(0) < -rounding_bound) {
        fail->set(NE_REAL);
        return;
    }
    r[0] = m;
    const auto& vectors = eigen.eigenvectors();
    for (int j = 0; j < m; ++j) {
        const double root = lambda(j) <= rounding_bound ? 0.0 : std::sqrt(lambda(j));
        for (int i = 0; i < m; ++i) {
            r[1 + static_cast<std::size_t>(i) * m + j] = vectors(i, j) * root;
        }
    }
}

}  // namespace

void g05lzc_generate(int m, const double xmu[], const double r[], double x[], int count,
                     G05State& state, double z[]) {
    const auto& zn = rng::normal_ziggurat();
    Engine eng(state);
    const double* a = r + 1;
    // x = mu + A z, with z drawn first and the product taken from the top row down.
    for (int k = 0; k < count; ++k) {
        double* out = x + static_cast<std::size_t>(k) * static_cast<std::size_t>(m);
        for (int j = 0; j < m; ++j) z[j] = rng::normal(eng, zn);
        for (int i = 0; i < m; ++i) {
            double sum = 0.0;
            const double* row = a + static_cast<std::size_t>(i) * m;
            for (int j = 0; j < m; ++j) sum += row[j] * z[j];
            out[i] = xmu[i] + sum;
        }
    }
}

void g05lzc(Nag_ModeRNG mode, int m, const double xmu[], const double c[], int tdc, double x[],
            G05State& state, double r[], int nr, NagError* fail) {
    fail->set(NE_NOERROR);
    const auto [set_up, generate] = mode_steps(mode);
    if (!set_up && !generate && refuse(fail, NE_BAD_PARAM)) return;
    if (m < 1 && refuse(fail, NE_INT_ARG_LT)) return;
    if (m > g05lzc_max_dimension && refuse(fail, NE_INT_ARG_GT)) return;
    if (set_up && (c == nullptr || tdc < m) && refuse(fail, NE_INT)) return;
    if (generate && (xmu == nullptr || x == nullptr) && refuse(fail, NE_BAD_PARAM)) return;
    if ((r == nullptr || nr < g05lzc_reference_size(m)) && refuse(fail, NE_INCOMPAT_PARAM)) return;
    if (generate) {
        for (int i = 0; i < m; ++i) {
            if (!finite(xmu[i]) && refuse(fail, NE_REAL)) return;
        }
    }
    if (!set_up && r[0] != m && refuse(fail, NE_INCOMPAT_PARAM)) return;
    if (set_up) {
        set_up_factor(m, c, tdc, r, fail);
        if (fail->failed()) return;
    }
    if (!generate) return;
    std::vector<double> z(static_cast<std::size_t>(m));
    g05lzc_generate(m, xmu, r, x, 1, state, z.data());
}

}  // namespace zemath::nag
