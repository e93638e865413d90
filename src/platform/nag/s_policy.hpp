// The Boost.Math policy of the special-function substitutes: the platform's one policy
// (nothing throws; failures show as non-finite values) with double arithmetic throughout.
// Boost's default promotes double arguments to long double, which costs a factor 3 to 10
// in time on x86-64 for a gain below the double rounding that the results are returned
// in; evaluated in double, the functions stay within a few ulps.
#pragma once

#include "platform/numeric/boost_policy.hpp"

namespace zemath::nag::detail {

using SpecialPolicy =
    boost::math::policies::normalise<numeric::BoostPolicy,
                                     boost::math::policies::promote_double<false>>::type;

}  // namespace zemath::nag::detail
