// Boost.Math's default error policy is set for the whole build by CMakeLists.txt
// (compile definitions), so that every translation unit agrees on it: nothing in
// Boost.Math may throw or assert, and evaluation errors set errno = EDOM, which the
// routines read as reduced accuracy. This header only checks that the build set it.
#pragma once

#if !defined(BOOST_MATH_DOMAIN_ERROR_POLICY) || !defined(BOOST_MATH_EVALUATION_ERROR_POLICY) || \
    !defined(BOOST_DISABLE_ASSERTS)
#error "build zeMath through its CMakeLists.txt: Boost.Math's error policy must be set"
#endif
