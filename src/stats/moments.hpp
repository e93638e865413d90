// The moment engine and the descriptive-statistics record.
//
// Method: two passes over the caller's data, no copy and no sort. Pass 1 counts usable
// points (value and weight not NANUM) and sums w, w^2, w x, w x^2, the negatives and
// ln|x| (kept exactly as a product of binary mantissas and a sum of exponents, so no
// logarithm per point). Pass 2 sums the central moments about the pass-1 mean and
// refines the mean by the mean deviation (the corrected two-pass algorithm), which keeps
// 13+ significant digits of mean and standard deviation on the NIST StRD univariate sets.
// Skewness and kurtosis by the moment-denominator flag: 0 the bias-adjusted sample
// formulas, 1 the population moments, 4 the back end's divisor W - sum w^2 / W,
// 2 and 3 none. The mode, the geometric SD and the confidence limits of the mean are
// derived afterwards (the mode sorts a copy).
// Failure codes: -151 no usable point, -174 weights of another length than the data.
#pragma once

#include <span>

#include "zemath/statistics.h"

namespace zemath {

struct MomentSummary {
    int usable = 0;
    int missing = 0;
    bool unit_weights = true;  // no weights, or every usable weight is 1
    double mean = NANUM, variance = NANUM, sd = NANUM, skewness = NANUM, kurtosis = NANUM;
    double uncor_sum_sq = NANUM, cor_sum_sq = NANUM, mad = NANUM, weight_sum = NANUM;
    double geo_mean = NANUM;
};

// The engine alone. weights is empty (all 1) or as long as data. flag 0..4.
int moment_engine(std::span<const double> data, std::span<const double> weights, int flag,
                  MomentSummary& out);

// The engine, with mean, SD, skewness and kurtosis taken from the back end's summary
// routine g01aac for flag 0 or 4 with unit weights when use_back_end is set (the values
// agree with the engine's to rounding; flag 0's skewness and kurtosis are converted to
// the bias-adjusted formulas).
int basic_summary(std::span<const double> data, std::span<const double> weights, int flag,
                  MomentSummary& out, bool use_back_end = true);

// The whole record: basic summary, then SEM, confidence limits at `level`, Sum, COV,
// SDx2, SDx3, GeoSD and Mode. The record is reset to NANUM (counts 0) first.
// several_modes (optional) tells whether several values share the largest count.
int describe(std::span<const double> data, std::span<const double> weights, double level, int flag,
             DescStatResults& out, bool* several_modes = nullptr);

// A record with every double NANUM and both counts set to `count`.
DescStatResults reset_record(int count);

}  // namespace zemath
