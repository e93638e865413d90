// Boost.Math's default error policy for the back end: nothing in Boost.Math may throw.
// The routines pass their own non-throwing policy explicitly, but some code paths inside
// Boost do not take it (the root finders behind ibeta_inv and gamma_p_inv report "no root"
// through the default policy, and would otherwise throw std::runtime_error subclasses and
// export Boost's exception type information from the shared library). Evaluation errors
// (an iteration cap reached) set errno = EDOM, which the routines read as reduced accuracy.
//
// Boost's internal consistency assertions are off as well: in a build without NDEBUG they
// abort the process on degenerate but valid arguments (ibeta's series asserts a positive
// derivative that underflows for shapes near the smallest double), and a library that
// never crashes cannot let them.
//
// Include this before any Boost header, in every source file that uses Boost.Math, so that
// all of them agree on the default policy. Macros only: no Boost type appears here.
#pragma once

#define BOOST_MATH_DOMAIN_ERROR_POLICY ignore_error
#define BOOST_MATH_POLE_ERROR_POLICY ignore_error
#define BOOST_MATH_OVERFLOW_ERROR_POLICY ignore_error
#define BOOST_MATH_UNDERFLOW_ERROR_POLICY ignore_error
#define BOOST_MATH_DENORM_ERROR_POLICY ignore_error
#define BOOST_MATH_ROUNDING_ERROR_POLICY ignore_error
#define BOOST_MATH_EVALUATION_ERROR_POLICY errno_on_error
#define BOOST_MATH_INDETERMINATE_RESULT_ERROR_POLICY ignore_error
#define BOOST_DISABLE_ASSERTS
