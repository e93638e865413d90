// The Boost.Math policy of the distribution substitutes that are written over Boost:
// every error condition is ignored (the result is NaN, infinity or a clamped value), so
// nothing throws and the caller inspects the value instead. Argument checks happen in
// the substitute before Boost is called; what Boost could still report is a series or
// continued fraction that did not converge, which shows up as a non-finite value.
// Internal to src/platform/nag: Boost types never leave it.
//
// Include this before any other Boost header. Some Boost internals still instantiate
// the default (throwing) policy; their exception classes carry default visibility, which
// would export their type information from the library. Nothing is thrown across the
// library's boundary, so they are declared without it here: the linker keeps the most
// constraining visibility, and the names stay inside the library.
#pragma once

#include <boost/config.hpp>
#undef BOOST_SYMBOL_VISIBLE
#define BOOST_SYMBOL_VISIBLE

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
