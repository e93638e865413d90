// The studentized range deviate against the 20-digit mpmath probabilities of the reference
// grid (reference/gen_distributions_other.py): each row's probability, rounded to double,
// must give back its q. A change dp moves the deviate by dp / (q P'(q)) relative, so the
// bound is the probability's own accuracy (1e-14 relative, twice the grid's worst) plus
// p's rounding, over q P'(q) (by a central difference of the routine).
#include <gtest/gtest.h>

#include <cmath>

#include "platform/nag/g01.hpp"
#include "reference/distributions_other_ref.inc"

namespace {

using zemath::nag::NagError;

TEST(G01SrangeDeviate, GivesBackTheReferenceQ) {
    int checked = 0;
    for (const auto& row : ref_other::kStudentizedRange) {
        if (!(row.value > 1e-300 && row.value < 1.0)) continue;
        SCOPED_TRACE(testing::Message()
                     << "q = " << row.q << ", v = " << row.v << ", r = " << row.r);
        NagError fail;
        const double q = zemath::nag::g01fmc(row.value, row.v, row.r, &fail);
        ASSERT_EQ(fail.code, 0);
        // q P'(q), by a central difference of the routine.
        const double h = 1e-5 * row.q;
        const double up = zemath::nag::g01emc(row.q + h, row.v, row.r, &fail);
        const double down = zemath::nag::g01emc(row.q - h, row.v, row.r, &fail);
        const double sensitivity = row.q * (up - down) / (2.0 * h);
        if (!(sensitivity > 1e-3 * row.value)) continue;  // flat: q is ill-determined by p
        ++checked;
        EXPECT_LE(std::fabs(q - row.q) / row.q,
                  1e-15 + (1e-14 + 1.2e-16) * row.value / sensitivity);
    }
    EXPECT_GT(checked, 30);
}

}  // namespace
