// Step detection: the common step of a set of coordinates that lie on a regular grid
// with possibly missing nodes.
//
// Block fit: the sorted values are cut into about sqrt(n) overlapping blocks of at least
// 20 values; in each block the neighbour differences that are not zero (relative test)
// are fitted by one step (mean of d / round(d / min d)), the misfit of every difference
// being its distance from a whole multiple of the step, as a fraction of the step; then
// one step is fitted to the block steps. Mode finder: differences grouped within a
// relative 1e-6 and the most frequent group taken. Gcd finder: Euclid's algorithm on the
// differences with remainders below a relative tolerance counted as zero.
// Failure codes: -18 fewer than 2 values, -32 no common step.
#pragma once

#include <span>
#include <vector>

namespace zemath {

struct StepFit {
    bool ok = false;
    double step = 0.0;
    double misfit = 0.0;  // largest min(r, 1 - r) over the differences
};

// Fits one step to a list of positive differences; the fit fails when some fraction
// r = fmod(d, step) / step lies strictly between fit_tol and 1 - fit_tol.
StepFit fit_step(std::span<const double> differences, double fit_tol);

struct StepResult {
    int status = 0;  // 0, -18 or -32
    double step = 0.0;
    double misfit = 0.0;
};

// Block step finder over values (copied and sorted here); fit_tol below 0 becomes tol.
StepResult find_step(std::span<const double> values, double tol, double fit_tol);

// Neighbour differences of the sorted usable values that pass the relative test
// |b - a| > tol (|a| + |b|).
std::vector<double> nonzero_differences(std::span<const double> values, double tol);

struct DifferenceGroup {
    double mean = 0.0;
    int count = 0;
};

// Differences grouped (ascending) where each lies within a relative 1e-6 of its group's
// first member.
std::vector<DifferenceGroup> difference_groups(std::vector<double> differences);

// Approximate gcd of the differences; 0 when there are none.
double approximate_gcd(std::span<const double> differences, double tol);

}  // namespace zemath
