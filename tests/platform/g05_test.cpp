// Back-end generators: what the exports never reach. The table generator set up once and
// then generating from its reference vector, and the refusals behind the exports (NaN
// parameters, bad modes, reference vectors too short or set up for other arguments), each
// leaving the outputs untouched.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>
#include <vector>

#include "platform/nag/g05.hpp"

using namespace zemath::nag;

TEST(G05, SetUpOnceThenGenerateAndRefusals) {
    constexpr auto init = Nag_ModeRNG::Nag_InitializeReference;
    constexpr auto generate = Nag_ModeRNG::Nag_GenerateFromReference;
    G05State state;
    g05kcc(1, state);
    NagError fail;
    const double p[] = {0.25, 0.0, 0.75}, c[] = {4.0, 1.2, 1.2, 1.0}, mu[] = {1.0, -1.0, 0.0};
    const int nr = g05mzc_reference_size(3), nrm = g05lzc_reference_size(3);
    std::vector<double> r(nr), blank(nr, 0.0), rm(nrm);
    auto table = [&](Nag_ModeRNG mode, int ip1, int n, int* out, double* ref, int size) {
        g05mzc(mode, ip1, p, 3, Nag_TableType::Nag_PDF, n, out, state, ref, size, &fail);
    };
    std::vector<int> sample(40000);
    table(init, 7, 0, nullptr, r.data(), nr);
    table(generate, 7, 40000, sample.data(), r.data(), nr);
    ASSERT_EQ(fail.code, 0);
    const auto sevens = std::count(sample.begin(), sample.end(), 7);
    EXPECT_EQ(sevens + std::count(sample.begin(), sample.end(), 9), 40000);  // P(8) = 0
    EXPECT_NEAR(sevens / 40000.0, 0.25, 0.01);                               // 4.6 sd
    g05lzc(init, 2, mu, c, 2, nullptr, state, rm.data(), nrm, &fail);
    ASSERT_EQ(fail.code, 0);

    double x[4] = {-9, -9, -9, -9}, spare[32];
    int k[4] = {-9, -9, -9, -9};
    std::fill(spare, spare + 32, -9.0);
    const std::vector<std::tuple<const char*, std::function<void()>, int>> refusals = {
        {"table: other first value", [&] { table(generate, 8, 4, k, r.data(), nr); },
         NE_INCOMPAT_PARAM},
        {"table: vector one short",
         [&] { table(Nag_ModeRNG::Nag_InitializeAndGenerate, 7, 4, k, r.data(), nr - 1); },
         NE_INCOMPAT_PARAM},
        {"table: vector never set up", [&] { table(generate, 7, 4, k, blank.data(), nr); },
         NE_INCOMPAT_PARAM},
        {"table: bad mode", [&] { table(static_cast<Nag_ModeRNG>(-1), 7, 4, k, spare, 32); },
         NE_BAD_PARAM},
        {"multivariate normal: factor of dimension 2 used for 3",
         [&] { g05lzc(generate, 3, mu, nullptr, 3, x, state, rm.data(), nrm, &fail); },
         NE_INCOMPAT_PARAM},
        {"multivariate normal: bad mode",
         [&] { g05lzc(static_cast<Nag_ModeRNG>(7), 2, mu, c, 2, x, state, spare, 32, &fail); },
         NE_BAD_PARAM},
        {"g05lac NaN mean", [&] { g05lac(NAN, 1.0, 4, x, state, &fail); }, NE_REAL},
        {"g05lgc NaN bound", [&] { g05lgc(0.0, NAN, 4, x, state, &fail); }, NE_REAL},
        {"g05lfc NaN shape", [&] { g05lfc(NAN, 1.0, 4, x, state, &fail); }, NE_REAL},
        {"g05mkc NaN mean", [&] { g05mkc(NAN, 4, k, state, &fail); }, NE_REAL},
        {"g05lac n 0", [&] { g05lac(0.0, 1.0, 0, x, state, &fail); }, NE_INT_ARG_LT},
        {"g05nac n 0", [&] { g05nac(k, 0, state, &fail); }, NE_INT_ARG_LT},
    };
    for (const auto& [name, call, code] : refusals) {
        call();
        EXPECT_EQ(fail.code, code) << name;
        EXPECT_EQ(std::count(x, x + 4, -9.0) + std::count(k, k + 4, -9), 8) << name;
        EXPECT_EQ(std::count(spare, spare + 32, -9.0), 32) << name;
    }
}
