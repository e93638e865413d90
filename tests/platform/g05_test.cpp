// Back-end generators: the non-repeatable initialisation, the set-up / generate modes of
// the two routines with a reference vector, and the checks the exports never reach
// (NaN parameters, bad modes, short reference vectors), each leaving outputs untouched.
#include <gtest/gtest.h>

#include <boost/math/distributions/normal.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "platform/nag/g05.hpp"
#include "stats/goodness_of_fit.hpp"

using namespace zemath::nag;

namespace {

G05State fresh() {
    G05State state;
    g05kcc(1, state);
    return state;
}

}  // namespace

TEST(G05Initialisation, ReplacesThePrefilledSeedAndNeverRepeats) {
    G05State state;
    EXPECT_EQ(state.igen, 1);
    EXPECT_EQ(state.iseed[0], 1762543u);
    EXPECT_EQ(state.iseed[3], 742355u);
    g05kcc(1, state);
    EXPECT_NE(state.iseed[0], 1762543u);
    const G05State other = fresh();
    EXPECT_FALSE(std::equal(state.iseed, state.iseed + 4, other.iseed));
    // Generating advances the state: a second batch from one state differs from the first.
    NagError fail;
    double a[16], b[16];
    g05lgc(0.0, 1.0, 16, a, state, &fail);
    g05lgc(0.0, 1.0, 16, b, state, &fail);
    EXPECT_FALSE(std::equal(a, a + 16, b));
}

TEST(G05TableGenerator, SetUpOnceThenGenerate) {
    const double p[] = {0.25, 0.0, 0.75};
    const int nr = g05mzc_reference_size(3);
    EXPECT_EQ(nr, 13);  // ceil(1.4 * 3 + 8)
    EXPECT_EQ(g05mzc_reference_size(10), 22);
    std::vector<double> r(nr, -1.0);
    G05State state = fresh();
    NagError fail;
    int x[4] = {-9, -9, -9, -9};
    g05mzc(Nag_ModeRNG::Nag_InitializeReference, 7, p, 3, Nag_TableType::Nag_PDF, 0, nullptr, state,
           r.data(), nr, &fail);
    ASSERT_EQ(fail.code, 0);
    std::vector<int> sample(40000);
    g05mzc(Nag_ModeRNG::Nag_GenerateFromReference, 7, nullptr, 3, Nag_TableType::Nag_PDF, 40000,
           sample.data(), state, r.data(), nr, &fail);
    ASSERT_EQ(fail.code, 0);
    const auto sevens = std::count(sample.begin(), sample.end(), 7);
    const auto nines = std::count(sample.begin(), sample.end(), 9);
    EXPECT_EQ(sevens + nines, 40000);  // 8 has probability 0
    EXPECT_NEAR(sevens / 40000.0, 0.25, 0.01);

    // Generating with other arguments than the set-up, or from a short vector, is refused.
    g05mzc(Nag_ModeRNG::Nag_GenerateFromReference, 8, nullptr, 3, Nag_TableType::Nag_PDF, 4, x,
           state, r.data(), nr, &fail);
    EXPECT_EQ(fail.code, NE_INCOMPAT_PARAM);
    g05mzc(Nag_ModeRNG::Nag_InitializeAndGenerate, 7, p, 3, Nag_TableType::Nag_PDF, 4, x, state,
           r.data(), nr - 1, &fail);
    EXPECT_EQ(fail.code, NE_INCOMPAT_PARAM);
    std::vector<double> blank(nr, 0.0);
    g05mzc(Nag_ModeRNG::Nag_GenerateFromReference, 7, nullptr, 3, Nag_TableType::Nag_PDF, 4, x,
           state, blank.data(), nr, &fail);
    EXPECT_EQ(fail.code, NE_INCOMPAT_PARAM);
    EXPECT_EQ(std::count(x, x + 4, -9), 4);
}

TEST(G05MultivariateNormal, ModesShareOneFactor) {
    const double c[] = {4.0, 1.2, 1.2, 1.0};
    const double mu[] = {1.0, -1.0};
    const int nr = g05lzc_reference_size(2);
    std::vector<double> r(nr);
    G05State state = fresh();
    NagError fail;
    g05lzc(Nag_ModeRNG::Nag_InitializeReference, 2, mu, c, 2, nullptr, state, r.data(), nr, &fail);
    ASSERT_EQ(fail.code, 0);
    constexpr int n = 50000;
    std::vector<double> first(n);
    double cross = 0.0;
    for (int i = 0; i < n; ++i) {
        double x[2];
        g05lzc(Nag_ModeRNG::Nag_GenerateFromReference, 2, mu, nullptr, 2, x, state, r.data(), nr,
               &fail);
        ASSERT_EQ(fail.code, 0);
        first[i] = x[0];
        cross += (x[0] - mu[0]) * (x[1] - mu[1]);
    }
    const auto ks = gof::kolmogorov_smirnov(
        first, [](double v) { return boost::math::cdf(boost::math::normal(1.0, 2.0), v); });
    EXPECT_GE(ks.p_value, gof::kGofLevel) << ks.detail;
    EXPECT_NEAR(cross / n, 1.2, 0.05);  // standard error about 0.0105

    // A factor set up for another dimension is refused.
    double x[3] = {-9, -9, -9};
    const double mu3[] = {0, 0, 0};
    g05lzc(Nag_ModeRNG::Nag_GenerateFromReference, 3, mu3, nullptr, 3, x, state, r.data(), 10,
           &fail);
    EXPECT_EQ(fail.code, NE_INCOMPAT_PARAM);
    EXPECT_EQ(std::count(x, x + 3, -9.0), 3);
}

TEST(G05Refusals, ChecksBehindTheExports) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    G05State state = fresh();
    NagError fail;
    double x[4] = {-9, -9, -9, -9};
    int k[4] = {-9, -9, -9, -9};
    double r[32];
    std::fill(r, r + 32, -9.0);
    g05lac(nan, 1.0, 4, x, state, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
    g05lgc(0.0, nan, 4, x, state, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
    g05lfc(nan, 1.0, 4, x, state, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
    g05lac(0.0, 1.0, 0, x, state, &fail);
    EXPECT_EQ(fail.code, NE_INT_ARG_LT);
    g05mkc(nan, 4, k, state, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
    g05nac(k, 0, state, &fail);
    EXPECT_EQ(fail.code, NE_INT_ARG_LT);
    g05lzc(static_cast<Nag_ModeRNG>(7), 2, x, x, 2, x, state, r, 32, &fail);
    EXPECT_EQ(fail.code, NE_BAD_PARAM);
    const double table[] = {0.5, 0.5};
    g05mzc(static_cast<Nag_ModeRNG>(-1), 0, table, 2, Nag_TableType::Nag_PDF, 4, k, state, r, 32,
           &fail);
    EXPECT_EQ(fail.code, NE_BAD_PARAM);
    EXPECT_EQ(std::count(x, x + 4, -9.0), 4);
    EXPECT_EQ(std::count(k, k + 4, -9), 4);
    EXPECT_EQ(std::count(r, r + 32, -9.0), 32);
}

TEST(G05Permutation, ShufflesInPlace) {
    G05State state = fresh();
    NagError fail;
    std::vector<int> index(1000);
    std::iota(index.begin(), index.end(), 0);
    g05nac(index.data(), 1000, state, &fail);
    ASSERT_EQ(fail.code, 0);
    std::vector<int> sorted(index);
    std::sort(sorted.begin(), sorted.end());
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(sorted[i], i);
    int fixed = 0;
    for (int i = 0; i < 1000; ++i) fixed += index[i] == i;
    EXPECT_LT(fixed, 10);  // expected 1 fixed point; 10 or more has probability ~1e-7
}
