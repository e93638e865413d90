// The Boost.Math policy of the distribution substitutes that are written over Boost:
// every error condition is ignored (the result is NaN, infinity or a clamped value), so
// nothing throws and the caller inspects the value instead. Argument checks happen in
// the substitute before Boost is called; what Boost could still report is a series or
// continued fraction that did not converge, which shows up as a non-finite value.
// Internal to src/platform/nag: Boost types never leave it.
//
// Some Boost internals ignore an explicitly passed policy and use the default one; the
// build (CMakeLists.txt) makes that default non-throwing for every translation unit, and
// this header checks that it did. With nothing thrown, no Boost exception type
// information is exported from the library either.
#pragma once

#if !defined(BOOST_MATH_DOMAIN_ERROR_POLICY) || !defined(BOOST_MATH_EVALUATION_ERROR_POLICY) || \
    !defined(BOOST_DISABLE_ASSERTS)
#error "build zeMath through its CMakeLists.txt: Boost.Math's error policy must be set"
#endif

#include <boost/math/policies/policy.hpp>

namespace zemath::nag::detail {

using QuietPolicy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::ignore_error>,
    boost::math::policies::pole_error<boost::math::policies::ignore_error>,
    boost::math::policies::overflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::underflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::denorm_error<boost::math::policies::ignore_error>,
    boost::math::policies::evaluation_error<boost::math::policies::ignore_error>,
    boost::math::policies::rounding_error<boost::math::policies::ignore_error>,
    boost::math::policies::indeterminate_result_error<boost::math::policies::ignore_error>>;

}  // namespace zemath::nag::detail
