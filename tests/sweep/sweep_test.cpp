// The bad-argument sweep: every C export of the public headers, called through its real
// prototype with null pointers in turn, bad counts and index pairs, out-of-range option
// codes and special doubles, on caller-legal buffers (no count passed exceeds a buffer).
// Each export runs in a child process with a per-call time limit, so a crash, a
// sanitizer report or a hang is reported with the export's name and arguments. When an
// export returns a negative int status (a refusal), every buffer passed must still hold
// its exact prior bytes.
//
// No per-export code: the export list is written from the headers at build time
// (gen_sweep.py) and the parameter types are deduced from the prototypes. Parameters that
// need structure get shapes from small tables in sweep_harness.hpp, by parameter name.
#include <gtest/gtest.h>

#include "sweep_harness.hpp"

namespace {

using namespace zemath_sweep;

struct Totals {
    int exports = 0;
    long calls = 0;
};
Totals totals;

class Sweep : public testing::TestWithParam<size_t> {};

TEST_P(Sweep, RefusesBadArgumentsWithoutHarm) {
    const Export& e = all_exports()[GetParam()];
    // Its output length follows from the data range over the bin width, which the sweep's
    // doubles cannot keep within its buffers.
    if (std::string(e.name) == "zemath_reducexy_fixing_increbin") GTEST_SKIP();
    const Outcome outcome = sweep_export(e);
    ++totals.exports;
    totals.calls += outcome.calls_made;
    for (const std::string& problem : outcome.problems) ADD_FAILURE() << e.name << ": " << problem;
}

std::vector<size_t> export_indices() {
    std::vector<size_t> out(all_exports().size());
    for (size_t i = 0; i < out.size(); ++i) out[i] = i;
    return out;
}

INSTANTIATE_TEST_SUITE_P(Exports, Sweep, testing::ValuesIn(export_indices()),
                         [](const testing::TestParamInfo<size_t>& param_info) {
                             return all_exports()[param_info.param].name;
                         });

// The header list is not empty and carries every family; a parse that silently finds
// nothing would make the sweep pass vacuously.
TEST(SweepList, EveryHeaderContributesExports) {
    std::vector<std::string> headers;
    for (const Export& e : all_exports())
        if (std::find(headers.begin(), headers.end(), e.header) == headers.end())
            headers.push_back(e.header);
    for (const char* h : {"frame.h", "primitives.h", "search.h", "sort.h", "distributions.h",
                          "random.h", "status.h", "complex.h"})
        EXPECT_NE(std::find(headers.begin(), headers.end(), h), headers.end()) << h;
    EXPECT_GT(all_exports().size(), 100u);
}

// An export with a variable argument list is swept only through the harness's table of
// the arguments it reads; one missing from the table would silently escape the sweep.
TEST(SweepList, EveryVariableArgumentListIsTabled) {
    all_exports();
    EXPECT_TRUE(unlisted_variadic_exports().empty())
        << "no argument list in sweep_harness.hpp for " << unlisted_variadic_exports().front();
    const auto masking = std::find_if(
        all_exports().begin(), all_exports().end(),
        [](const Export& e) { return e.name == "zemath_create_baseline_by_masking_peaks"; });
    ASSERT_NE(masking, all_exports().end());
    EXPECT_EQ(masking->params.size(), 7u);
}

// The harness itself catches what it is meant to catch: a crash on NULL, a loop that
// does not end, and a refusal that wrote its output. Deliberately faulty stand-ins.
int faulty_refusal(double* out, int n) noexcept {
    if (out && n > 0) out[0] = 1.0;
    return n < 5 ? -1 : 0;  // refuses small n after having written
}
int faulty_null(const double* data, int n) noexcept {
    return n == 1 ? static_cast<int>(data[0]) : 0;
}
int faulty_loop(int n, double x) noexcept {
    volatile double sink = x;
    while (n == INT_MIN) sink = sink + 1.0;  // INT_MIN never leaves
    return 0;
}

TEST(SweepHarness, ReportsWritesOnRefusalCrashesAndHangs) {
    const struct {
        Export e;
        const char* expected;
    } cases[] = {
        {describe("faulty_refusal", "test", "out,n", &faulty_refusal), "but wrote out"},
        {describe("faulty_null", "test", "data,n", &faulty_null), "data=NULL"},
        {describe("faulty_loop", "test", "n,x", &faulty_loop), "n=-2147483648"},
    };
    for (const auto& c : cases) {
        Export e = c.e;
        e.seconds_per_call = 1;  // the loop case waits out one limit
        const Outcome outcome = sweep_export(e);
        std::string all;
        for (const std::string& p : outcome.problems) all += p + "\n";
        EXPECT_NE(all.find(c.expected), std::string::npos) << e.name << " reported: " << all;
    }
    // A clean export reports nothing, and every planned call is made.
    const Outcome clean = sweep_export(all_exports().front());
    EXPECT_TRUE(clean.problems.empty());
    EXPECT_EQ(clean.calls_made, clean.calls_planned);
    EXPECT_GT(clean.calls_made, 0);
}

class Summary : public testing::Environment {
  public:
    void TearDown() override {
        if (totals.exports)
            std::printf("sweep: %d exports, %ld calls\n", totals.exports, totals.calls);
    }
};
const auto* const kSummary = testing::AddGlobalTestEnvironment(new Summary);

}  // namespace
