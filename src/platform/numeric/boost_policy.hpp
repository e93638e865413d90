// The one Boost.Math policy of the platform layer, and the watch that reads what it reports.
//
// Domain, pole, overflow, underflow, denormal, rounding and indeterminate-result errors
// are ignored (the result is NaN, infinity or a clamped value): every routine checks its
// arguments before Boost is called, so these can only come from valid but extreme
// arguments, and the routine inspects the value. An evaluation error (a series, continued
// fraction or root finder stopped at its iteration cap) sets errno = EDOM, which an
// ErrnoWatch turns into the routine's reduced-accuracy code; the caller's errno is
// restored. This is also the build-wide default (CMakeLists.txt) for the Boost internals
// that ignore an explicitly passed policy; this header checks that the build set it.
// Nothing throws, so no Boost exception type is exported from the library either.
// Internal to src/platform: Boost types never leave it.
#pragma once

#if !defined(BOOST_MATH_DOMAIN_ERROR_POLICY) || !defined(BOOST_MATH_EVALUATION_ERROR_POLICY) || \
    !defined(BOOST_DISABLE_ASSERTS)
#error "build zeMath through its CMakeLists.txt: Boost.Math's error policy must be set"
#endif

#include <boost/math/policies/policy.hpp>

#include <cerrno>

namespace zemath::numeric {

using BoostPolicy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::ignore_error>,
    boost::math::policies::pole_error<boost::math::policies::ignore_error>,
    boost::math::policies::overflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::underflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::denorm_error<boost::math::policies::ignore_error>,
    boost::math::policies::evaluation_error<boost::math::policies::errno_on_error>,
    boost::math::policies::rounding_error<boost::math::policies::ignore_error>,
    boost::math::policies::indeterminate_result_error<boost::math::policies::ignore_error>>;

// The proof that nothing Boost.Math raises can throw, for this policy and for the default
// one its internals fall back on: a try/catch around a Boost call would be dead code.
static_assert(boost::math::policies::is_noexcept_error_policy<BoostPolicy>::value,
              "the platform's Boost.Math policy must never throw");
static_assert(
    boost::math::policies::is_noexcept_error_policy<boost::math::policies::policy<>>::value,
    "Boost.Math's default policy must never throw (set in CMakeLists.txt)");

// Boost's evaluation-error flag over one routine call; the caller's errno comes back.
class ErrnoWatch {
  public:
    ErrnoWatch() : saved_(errno) { errno = 0; }
    ~ErrnoWatch() { errno = saved_; }
    ErrnoWatch(const ErrnoWatch&) = delete;
    ErrnoWatch& operator=(const ErrnoWatch&) = delete;
    bool reduced() const { return errno == EDOM; }

  private:
    int saved_;
};

}  // namespace zemath::numeric
