// The moment engine, the descriptive record and its exports (see moments.hpp).
#include "stats/moments.hpp"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <numbers>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/nag/g01.hpp"
#include "platform/nag/g01_summary.hpp"
#include "zemath/status.h"

namespace zemath {

namespace {

// Sum of ln|x| over positive finite |x| as (product of mantissas in [1/2, 1)) times
// 2^(sum of exponents): exact exponents, one rounding per product, no logarithm per point.
class LogSum {
  public:
    void add(double magnitude) {
        std::uint64_t bits;
        std::memcpy(&bits, &magnitude, sizeof bits);
        const int biased = static_cast<int>((bits >> 52) & 0x7ff);
        if (biased == 0 || biased == 0x7ff) {  // subnormal, infinite or NaN: rare, exact log
            extra_ += std::log(magnitude);
            return;
        }
        bits = (bits & 0x800fffffffffffffULL) | (std::uint64_t{1022} << 52);
        double mantissa;
        std::memcpy(&mantissa, &bits, sizeof mantissa);
        exponent_ += biased - 1022;
        product_ *= mantissa;
        // 512 factors in [1/2, 1) stay above 2^-512: renormalise well before underflow.
        if (++pending_ == 512) {
            int shift = 0;
            product_ = std::frexp(product_, &shift);
            exponent_ += shift;
            pending_ = 0;
        }
    }
    double value() const {
        return std::log(product_) + static_cast<double>(exponent_) * std::numbers::ln2 + extra_;
    }

  private:
    double product_ = 1.0;
    long long exponent_ = 0;
    int pending_ = 0;
    double extra_ = 0.0;
};

struct FirstPass {
    int usable = 0, missing = 0, negatives = 0;
    bool zero_seen = false, unit_weights = true;
    double w_sum = 0.0, w2_sum = 0.0, wx_sum = 0.0, wxx_sum = 0.0;
    double first_value = 0.0, first_weight = 1.0;
    double largest = 0.0;  // max |x| over the usable values
    LogSum logs;
};

// The unweighted first pass with its accumulators in locals (no weight, branch-free
// counts), the common case; the same sums in the same order as the weighted form.
FirstPass first_pass_unweighted(std::span<const double> data) {
    FirstPass r;
    LogSum logs;
    double wx_sum = 0.0, wxx_sum = 0.0, largest = 0.0;
    std::size_t usable = 0, negatives = 0;
    bool zero_seen = false;
    for (const double x : data) {
        if (is_missing(x)) continue;
        if (usable == 0) r.first_value = x;
        ++usable;
        wx_sum += x;
        wxx_sum += x * x;
        const double magnitude = std::fabs(x);
        largest = magnitude > largest ? magnitude : largest;  // NaN never replaces it
        negatives += x < 0.0 ? 1 : 0;
        if (x == 0.0)
            zero_seen = true;
        else
            logs.add(magnitude);
    }
    r.usable = static_cast<int>(usable);
    r.missing = static_cast<int>(data.size() - usable);
    r.negatives = static_cast<int>(negatives);
    r.zero_seen = zero_seen;
    r.wx_sum = wx_sum;
    r.wxx_sum = wxx_sum;
    r.largest = largest;
    r.logs = logs;
    r.w_sum = r.w2_sum = r.usable;
    return r;
}

template <bool Weighted>
FirstPass first_pass(std::span<const double> data, const double* weights) {
    if constexpr (!Weighted) return first_pass_unweighted(data);
    FirstPass r;
    for (std::size_t i = 0; i < data.size(); ++i) {
        const double x = data[i];
        double w = 1.0;
        if constexpr (Weighted) {
            w = weights[i];
            if (is_missing(x) || is_missing(w)) {
                ++r.missing;
                continue;
            }
            if (w != 1.0) r.unit_weights = false;
            r.w_sum += w;
            r.w2_sum += w * w;
            r.wx_sum += w * x;
            r.wxx_sum += w * x * x;
        } else {
            if (is_missing(x)) {
                ++r.missing;
                continue;
            }
            r.wx_sum += x;
            r.wxx_sum += x * x;
        }
        if (r.usable == 0) {
            r.first_value = x;
            r.first_weight = w;
        }
        ++r.usable;
        r.largest = std::fmax(r.largest, std::fabs(x));
        if (x < 0.0) ++r.negatives;
        if (x == 0.0)
            r.zero_seen = true;
        else
            r.logs.add(std::fabs(x));
    }
    if constexpr (!Weighted) {
        r.w_sum = r.usable;
        r.w2_sum = r.usable;
    }
    return r;
}

struct SecondPass {
    double s1 = 0.0, abs_sum = 0.0, s2 = 0.0, s3 = 0.0, s4 = 0.0;
};

// Central sums about `centre` of the values times `scale` (a power of two, 1 for data of
// ordinary size): s1 = sum w e, |e| and e^2 with weight w, e^3 with w^1.5 and e^4 with w^2
// (first powers for the back end's flag 4).
template <bool Weighted>
SecondPass second_pass(std::span<const double> data, const double* weights, double centre,
                       double scale, bool first_powers) {
    SecondPass r;
    for (std::size_t i = 0; i < data.size(); ++i) {
        const double x = data[i];
        if (is_missing(x)) continue;
        const double e = x * scale - centre;
        const double e2 = e * e;
        if constexpr (Weighted) {
            const double w = weights[i];
            if (is_missing(w)) continue;
            const double w3 = first_powers ? w : w * std::sqrt(w);
            const double w4 = first_powers ? w : w * w;
            r.s1 += w * e;
            r.abs_sum += w * std::fabs(e);
            r.s2 += w * e2;
            r.s3 += w3 * e2 * e;
            r.s4 += w4 * e2 * e2;
        } else {
            r.s1 += e;
            r.abs_sum += std::fabs(e);
            r.s2 += e2;
            r.s3 += e2 * e;
            r.s4 += e2 * e2;
        }
    }
    return r;
}

// The power of two the central sums are taken at: 1 while the fourth powers of values
// up to `largest` (and n of them summed) stay comfortably inside the double range, else
// the one that brings `largest` to about 1.
double moment_scale(double largest) {
    constexpr double kHigh = 0x1p120, kLow = 0x1p-120;
    if (!(largest > kHigh || (largest < kLow && largest > 0.0)) || !std::isfinite(largest))
        return 1.0;
    return std::ldexp(1.0, -std::ilogb(largest));
}

struct Rescaled {
    double wx = 0.0, wxx = 0.0;
};

template <bool Weighted>
Rescaled rescaled_sums(std::span<const double> data, const double* weights, double scale) {
    Rescaled r;
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (is_missing(data[i])) continue;
        const double x = data[i] * scale;
        double w = 1.0;
        if constexpr (Weighted) {
            w = weights[i];
            if (is_missing(w)) continue;
        }
        r.wx += w * x;
        r.wxx += w * x * x;
    }
    return r;
}

double denominator(int flag, double n, double w_sum, double w2_sum) {
    switch (flag) {
        case 0:
            return n - 1.0;
        case 1:
            return n;
        case 2:
            return w_sum - 1.0;
        case 3:
            return w_sum;
        default:
            return w_sum - w2_sum / w_sum;
    }
}

// Skewness and kurtosis of the bias-adjusted sample formulas (flag 0) from the central
// sums: N = 2 gives neither, N = 3 no kurtosis.
void adjusted_shape(double n, double s3, double s4, double variance, double& skewness,
                    double& kurtosis) {
    skewness = kurtosis = kNanum;
    if (n < 3.0) return;
    const double sd = std::sqrt(variance);
    skewness = n * s3 / ((n - 1.0) * (n - 2.0) * sd * sd * sd);
    if (n < 4.0) return;
    kurtosis = n * (n + 1.0) * s4 / ((n - 1.0) * (n - 2.0) * (n - 3.0) * variance * variance) -
               3.0 * (n - 1.0) * (n - 1.0) / ((n - 2.0) * (n - 3.0));
}

bool known(double v) {
    return !is_missing(v);
}

}  // namespace

int moment_engine(std::span<const double> data, std::span<const double> weights, int flag,
                  MomentSummary& out) {
    out = MomentSummary{};
    if (!weights.empty() && weights.size() != data.size()) return ZEMATH_ERR_WEIGHTS_LENGTH;
    const bool weighted = !weights.empty();
    const FirstPass p =
        weighted ? first_pass<true>(data, weights.data()) : first_pass<false>(data, nullptr);
    out.usable = p.usable;
    out.missing = p.missing;
    out.unit_weights = p.unit_weights;
    if (p.usable == 0) return ZEMATH_ERR_PARAM_RANGE;
    const double n = p.usable;

    // Geometric mean: unweighted; kept deliberately: an even number of negative values
    // gives the geometric mean of the absolute values (hosts rely on it).
    if (p.zero_seen) {
        out.geo_mean = 0.0;
    } else if (p.negatives % 2 == 1) {
        out.geo_mean = kNanum;
    } else {
        const double g = std::exp(p.logs.value() / n);
        out.geo_mean = g < 0.0 ? kNanum : g;
    }
    out.weight_sum = p.w_sum;
    out.uncor_sum_sq = p.wxx_sum;

    if (p.usable == 1) {
        out.mean = p.first_weight == 0.0 ? kNanum : p.first_value;
        out.cor_sum_sq = 0.0;
        out.uncor_sum_sq = p.first_value * p.first_value * p.first_weight;
        out.geo_mean = p.first_value;
        out.variance = out.sd = (flag == 1 || flag == 3) ? 0.0 : kNanum;
        return ZEMATH_OK;
    }
    if (!(p.w_sum != 0.0)) return ZEMATH_OK;  // zero total weight: no mean, nothing central

    // Values so large or so small that their fourth powers (or sums) leave the double range
    // are summed scaled by a power of two, which keeps every digit; the statistics are
    // scaled back (shape statistics need no scaling). The first pass's sums are then
    // formed again from scaled values.
    const double scale = moment_scale(p.largest);
    double rough_mean = p.wx_sum / p.w_sum;
    if (scale != 1.0) {
        const Rescaled r = weighted ? rescaled_sums<true>(data, weights.data(), scale)
                                    : rescaled_sums<false>(data, nullptr, scale);
        rough_mean = r.wx / p.w_sum;  // in scaled units
        out.uncor_sum_sq = r.wxx / scale / scale;
    }
    const bool first_powers = flag == 4;
    const SecondPass s =
        weighted ? second_pass<true>(data, weights.data(), rough_mean, scale, first_powers)
                 : second_pass<false>(data, nullptr, rough_mean, scale, first_powers);
    const double shift = s.s1 / p.w_sum;
    out.mean = (rough_mean + shift) / scale;
    const double s2 = s.s2 - shift * s.s1;
    out.cor_sum_sq = s2 / scale / scale;
    out.mad = s.abs_sum / p.w_sum / scale;
    const double d = denominator(flag, n, p.w_sum, p.w2_sum);
    if (!(d > 0.0)) return ZEMATH_OK;
    const double scaled_variance = s2 / d;
    out.variance = scaled_variance / scale / scale;
    out.sd = std::sqrt(scaled_variance) / scale;
    if (!(scaled_variance != 0.0) || std::isnan(scaled_variance)) return ZEMATH_OK;
    const double sd3 = scaled_variance * std::sqrt(scaled_variance),
                 var2 = scaled_variance * scaled_variance;
    switch (flag) {
        case 0:
            adjusted_shape(n, s.s3, s.s4, scaled_variance, out.skewness, out.kurtosis);
            break;
        case 1:
            out.skewness = s.s3 / (n * sd3);
            out.kurtosis = s.s4 / (n * var2) - 3.0;
            break;
        case 4:
            out.skewness = s.s3 / (d * sd3);
            out.kurtosis = s.s4 / (d * var2) - 3.0;
            break;
        default:
            break;  // flags 2 and 3 define no shape statistics
    }
    return ZEMATH_OK;
}

int basic_summary(std::span<const double> data, std::span<const double> weights, int flag,
                  MomentSummary& out, bool use_back_end) {
    const int status = moment_engine(data, weights, flag, out);
    if (status != ZEMATH_OK || !use_back_end || !(flag == 0 || flag == 4) || !out.unit_weights)
        return status;
    if (out.usable < 2) return status;  // the back end computes no spread from one point
    // The back end works on the usable points only.
    std::vector<double> compact;
    const double* values = data.data();
    if (out.missing > 0) {
        compact.reserve(static_cast<std::size_t>(out.usable));
        for (std::size_t i = 0; i < data.size(); ++i)
            if (!is_missing(data[i]) && (weights.empty() || !is_missing(weights[i])))
                compact.push_back(data[i]);
        values = compact.data();
    }
    int nvalid = 0;
    double mean, sd, skew, kurt, lowest, highest, wsum;
    nag::NagError fail;
    nag::g01aac(out.usable, values, nullptr, &nvalid, &mean, &sd, &skew, &kurt, &lowest, &highest,
                &wsum, &fail);
    // Zero spread, or sums past the double range (the back end does not scale): the
    // engine's values stand.
    if (fail.failed() || !std::isfinite(mean) || !std::isfinite(sd) || !std::isfinite(skew) ||
        !std::isfinite(kurt))
        return status;
    out.mean = mean;
    out.sd = sd;
    out.variance = sd * sd;
    if (flag == 4) {
        out.skewness = skew;  // with unit weights flag 4 is the back end's own definition
        out.kurtosis = kurt;
    } else {
        // The back end divides by n - 1: sum e^3 = skew (n-1) sd^3, sum e^4 = (kurt + 3)(n-1) sd^4.
        const double n = nvalid;
        const double sd3 = sd * sd * sd;
        adjusted_shape(n, skew * (n - 1.0) * sd3, (kurt + 3.0) * (n - 1.0) * sd3 * sd, out.variance,
                       out.skewness, out.kurtosis);
    }
    return status;
}

DescStatResults reset_record(int count) {
    DescStatResults r;
    r.N = r.Missing = count;
    r.Mean = r.SD = r.SEM = r.LCL = r.UCL = r.Variance = r.Sum = r.Skewness = r.Kurtosis = kNanum;
    r.UncorSumSq = r.CorSumSq = r.COV = r.MAD = r.SDx2 = r.SDx3 = r.GeoMean = r.GeoSD = kNanum;
    r.Mode = r.WeightSum = kNanum;
    return r;
}

namespace {

// Mode of the usable, non-NaN values (unweighted): the value with the largest count
// when that count is at least 2; the smallest of several such values.
//
// Method: no sort. Equal values are brought together by a hash of their bits (-0.0
// counted as +0.0, its equal): a first pass hashes every value and counts the values per
// hash bucket (about 4096 values a bucket), a second scatters the bits into their
// buckets, and each bucket is counted in an open-addressing table that stays in cache.
// The result does not depend on the order of the data. A zero mode is -0.0 when a -0.0
// was among the values.
namespace mode_detail {

constexpr std::uint64_t kEmpty = ~std::uint64_t{0};  // a NaN pattern: never a key

inline std::uint64_t key_of(double x) {
    const double v = x == 0.0 ? 0.0 : x;
    std::uint64_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    return bits;
}

// The finaliser of MurmurHash3: every output bit depends on every key bit (integral
// values have long runs of zero bits).
inline std::uint64_t mix(std::uint64_t k) {
    k ^= k >> 33;
    k *= 0xff51afd7ed558ccdULL;
    k ^= k >> 33;
    k *= 0xc4ceb9fe1a85ec53ULL;
    return k ^ (k >> 33);
}

}  // namespace mode_detail

double mode_of(std::span<const double> data, std::span<const double> weights, bool* several) {
    using namespace mode_detail;
    auto usable = [&](std::size_t i) {
        return !is_missing(data[i]) && !std::isnan(data[i]) &&
               (weights.empty() || !is_missing(weights[i]));
    };
    // Buckets: a power of two giving about 8192 values each (at most 2^10 buckets, so
    // that the scatter's staging lines stay in the first-level cache).
    int bucket_bits = 0;
    while (bucket_bits < 10 && (data.size() >> (bucket_bits + 13)) != 0) ++bucket_bits;
    const std::size_t buckets = std::size_t{1} << bucket_bits;
    const int shift = 64 - bucket_bits;
    auto bucket_of = [&](std::uint64_t h) {
        return bucket_bits == 0 ? std::size_t{0} : static_cast<std::size_t>(h >> shift);
    };
    std::vector<std::size_t> start(buckets + 1, 0);
    bool negative_zero = false;
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (!usable(i)) continue;
        negative_zero |= data[i] == 0.0 && std::signbit(data[i]);
        ++start[bucket_of(mix(key_of(data[i]))) + 1];
    }
    std::size_t largest = 0;
    for (std::size_t b = 0; b < buckets; ++b) {
        largest = std::max(largest, start[b + 1]);
        start[b + 1] += start[b];
    }
    const std::size_t m = start[buckets];
    const auto keys = std::make_unique_for_overwrite<std::uint64_t[]>(std::max<std::size_t>(m, 1));
    {
        // Scatter through one staged cache line per bucket: stores to a thousand places
        // at once would miss the cache and the translation buffer on almost every value.
        constexpr std::size_t kLine = 8;
        std::vector<std::size_t> fill(start.begin(), start.end() - 1);
        std::vector<std::uint64_t> staged(buckets * kLine);
        std::vector<std::uint8_t> staged_count(buckets, 0);
        for (std::size_t i = 0; i < data.size(); ++i) {
            if (!usable(i)) continue;
            const std::uint64_t k = key_of(data[i]);
            const std::size_t b = bucket_of(mix(k));
            std::uint64_t* line = staged.data() + b * kLine;
            line[staged_count[b]] = k;
            if (++staged_count[b] == kLine) {
                std::memcpy(keys.get() + fill[b], line, kLine * sizeof k);
                fill[b] += kLine;
                staged_count[b] = 0;
            }
        }
        for (std::size_t b = 0; b < buckets; ++b)
            std::memcpy(keys.get() + fill[b], staged.data() + b * kLine,
                        staged_count[b] * sizeof(std::uint64_t));
    }
    // Open addressing, linear probing, load at most 2/3; indexed by the hash's low bits
    // (the bucket took the high ones).
    std::size_t table_size = 16;
    while (2 * table_size < 3 * largest) table_size *= 2;
    // Keys and repeat counts apart: distinct values (the common case) touch only the keys.
    std::vector<std::uint64_t> slot_key(table_size);
    std::vector<std::uint32_t> repeats(table_size);
    double best = kNanum;
    std::size_t best_count = 1, ties = 0;
    for (std::size_t b = 0; b < buckets; ++b) {
        const std::size_t size = start[b + 1] - start[b];
        if (size < 2) continue;
        std::size_t mask = 15;
        while (2 * (mask + 1) < 3 * size) mask = 2 * mask + 1;
        const auto used = static_cast<std::ptrdiff_t>(mask + 1);
        std::fill(slot_key.begin(), slot_key.begin() + used, kEmpty);
        std::fill(repeats.begin(), repeats.begin() + used, 0u);
        bool repeated = false;
        for (std::size_t i = start[b]; i < start[b + 1]; ++i) {
            const std::uint64_t k = keys[i];
            std::size_t at = static_cast<std::size_t>(mix(k)) & mask;
            while (slot_key[at] != kEmpty && slot_key[at] != k) at = (at + 1) & mask;
            if (slot_key[at] == k) {
                ++repeats[at];
                repeated = true;
            } else {
                slot_key[at] = k;
            }
        }
        if (!repeated) continue;
        for (std::size_t at = 0; at <= mask; ++at) {
            if (repeats[at] == 0) continue;
            const std::size_t count = std::size_t{repeats[at]} + 1;
            double value;
            std::memcpy(&value, &slot_key[at], sizeof value);
            if (count > best_count) {
                best_count = count;
                best = value;
                ties = 1;
            } else if (count == best_count) {
                ++ties;
                best = std::min(best, value);
            }
        }
    }
    if (several != nullptr) *several = ties > 1;
    if (best == 0.0 && negative_zero) best = -0.0;
    return best;
}

// Geometric SD: NANUM with a negative value (or a zero, whose logarithm is -infinity);
// otherwise exp of the SD of the logarithms, same flag, no weights.
double geometric_sd(std::span<const double> data, std::span<const double> weights, int flag) {
    // Any usable value <= 0 (or NaN) settles it before the logarithms are formed.
    for (std::size_t i = 0; i < data.size(); ++i) {
        const double x = data[i];
        if (is_missing(x) || (!weights.empty() && is_missing(weights[i]))) continue;
        if (!(x > 0.0)) return kNanum;
    }
    std::vector<double> logs(data.size());
    for (std::size_t i = 0; i < data.size(); ++i) {
        const double x = data[i];
        if (is_missing(x) || (!weights.empty() && is_missing(weights[i]))) {
            logs[i] = kNanum;
            continue;
        }
        if (!(x > 0.0)) return kNanum;
        logs[i] = std::log(x);
    }
    MomentSummary s;
    if (moment_engine(logs, {}, flag, s) != ZEMATH_OK || !known(s.sd)) return kNanum;
    return std::exp(s.sd);
}

}  // namespace

int describe(std::span<const double> data, std::span<const double> weights, double level, int flag,
             DescStatResults& out, bool* several_modes) {
    out = reset_record(0);
    if (several_modes != nullptr) *several_modes = false;
    MomentSummary s;
    const int status = basic_summary(data, weights, flag, s);
    out.N = s.usable;
    out.Missing = s.missing;
    if (status != ZEMATH_OK) return status;
    out.Mean = s.mean;
    out.SD = s.sd;
    out.Variance = s.variance;
    out.Skewness = s.skewness;
    out.Kurtosis = s.kurtosis;
    out.UncorSumSq = s.uncor_sum_sq;
    out.CorSumSq = s.cor_sum_sq;
    out.MAD = s.mad;
    out.WeightSum = s.weight_sum;
    out.GeoMean = s.geo_mean;
    const bool mean_known = known(s.mean), sd_known = known(s.sd);
    if (mean_known) out.Sum = s.mean * s.weight_sum;
    if (sd_known) {
        out.SDx2 = 2.0 * s.sd;
        out.SDx3 = 3.0 * s.sd;
    }
    const bool classic = flag == 0 || (flag == 4 && s.unit_weights);
    if (classic && sd_known && s.weight_sum != 0.0) out.SEM = s.sd / std::sqrt(s.weight_sum);
    if (mean_known && sd_known && s.mean != 0.0) out.COV = s.sd / s.mean;
    if (classic && mean_known && sd_known && s.weight_sum != 0.0) {
        nag::NagError fail;
        const double t = nag::g01fbc(nag::Nag_TailProbability::Nag_TwoTailConfid, level,
                                     static_cast<double>(s.usable) - 1.0, &fail);
        if (!fail.failed()) {
            const double half_width = t * s.sd / std::sqrt(s.weight_sum);
            out.LCL = s.mean - half_width;
            out.UCL = s.mean + half_width;
        }
    }
    out.GeoSD = geometric_sd(data, weights, flag);
    out.Mode = mode_of(data, weights, several_modes);
    return ZEMATH_OK;
}

}  // namespace zemath

// ---- Exports --------------------------------------------------------------------------

namespace {

using zemath::kNanum;

bool level_ok(double level) {
    return level > 0.0 && level < 1.0;
}
bool flag_ok(int flag) {
    return flag >= 0 && flag <= 4;
}

std::span<const double> weights_span(const double* weights, std::size_t n) {
    return weights != nullptr ? std::span<const double>(weights, n) : std::span<const double>();
}

template <class T>
void put(T* target, T value) {
    if (target != nullptr) *target = value;
}

// Copies the fields selected in opt from `from` into `to`.
void copy_selected(const DescStatOptions& opt, const DescStatResults& from, DescStatResults& to) {
#define ZEMATH_COPY_FIELD(field) \
    if (opt.field) to.field = from.field
    ZEMATH_COPY_FIELD(N);
    ZEMATH_COPY_FIELD(Missing);
    ZEMATH_COPY_FIELD(Mean);
    ZEMATH_COPY_FIELD(SD);
    ZEMATH_COPY_FIELD(SEM);
    ZEMATH_COPY_FIELD(LCL);
    ZEMATH_COPY_FIELD(UCL);
    ZEMATH_COPY_FIELD(Variance);
    ZEMATH_COPY_FIELD(Sum);
    ZEMATH_COPY_FIELD(Skewness);
    ZEMATH_COPY_FIELD(Kurtosis);
    ZEMATH_COPY_FIELD(UncorSumSq);
    ZEMATH_COPY_FIELD(CorSumSq);
    ZEMATH_COPY_FIELD(COV);
    ZEMATH_COPY_FIELD(MAD);
    ZEMATH_COPY_FIELD(SDx2);
    ZEMATH_COPY_FIELD(SDx3);
    ZEMATH_COPY_FIELD(GeoMean);
    ZEMATH_COPY_FIELD(GeoSD);
    ZEMATH_COPY_FIELD(Mode);
    ZEMATH_COPY_FIELD(WeightSum);
#undef ZEMATH_COPY_FIELD
}

// A range (first, last) of 0-based point indices held as doubles: both integral,
// 0 <= first <= last < n.
bool range_ok(double first, double last, unsigned int n) {
    return first >= 0.0 && last >= first && last < static_cast<double>(n) &&
           std::floor(first) == first && std::floor(last) == last;
}

}  // namespace

ZEMATH_API int zemath_desc_stats(const double* data, unsigned int n, DescStatResults* res,
                                 const double* weights, double level, int nMomentDenFlag) noexcept {
    if (data == nullptr || res == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (!level_ok(level)) return ZEMATH_ERR_CONFIDENCE_LEVEL;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    if (!flag_ok(nMomentDenFlag)) return ZEMATH_ERR_PARAM_RANGE;
    return zemath::guard_status([&]() -> int {
        DescStatResults r;
        const int status = zemath::describe(std::span<const double>(data, n),
                                            weights_span(weights, n), level, nMomentDenFlag, r);
        *res = r;
        return status;
    });
}

ZEMATH_API int zemath_basic_summary_stats(int n, const double* data, int* N, double* Mean,
                                          double* SD, double* SE, double* Variance, double* Sum,
                                          double* Skewness, double* Kurtosis, double* UncorSumSq,
                                          double* CorSumSq, double* COV, double* MAD, int* Missing,
                                          double* WeightSum, double* GeoMean, int nMomentDenFlag,
                                          const double* weights) noexcept {
    if (data == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (n < 0) return ZEMATH_ERR_SIZES_DIFFER;
    if (!flag_ok(nMomentDenFlag)) return ZEMATH_ERR_PARAM_RANGE;
    return zemath::guard_status([&]() -> int {
        const auto count = static_cast<std::size_t>(n);
        DescStatResults r;
        // The record's derivation without the mode and geometric SD (not outputs here).
        zemath::MomentSummary s;
        const int status = zemath::basic_summary(std::span<const double>(data, count),
                                                 weights_span(weights, count), nMomentDenFlag, s);
        r = zemath::reset_record(0);
        const bool classic = nMomentDenFlag == 0 || (nMomentDenFlag == 4 && s.unit_weights);
        double se = kNanum, cov = kNanum, sum = kNanum;
        if (status == ZEMATH_OK) {
            if (!zemath::is_missing(s.mean)) sum = s.mean * s.weight_sum;
            if (classic && !zemath::is_missing(s.sd) && s.weight_sum != 0.0)
                se = s.sd / std::sqrt(s.weight_sum);
            if (!zemath::is_missing(s.mean) && !zemath::is_missing(s.sd) && s.mean != 0.0)
                cov = s.sd / s.mean;
        }
        put(N, s.usable);
        put(Missing, s.missing);
        put(Mean, s.mean);
        put(SD, s.sd);
        put(SE, se);
        put(Variance, s.variance);
        put(Sum, sum);
        put(Skewness, s.skewness);
        put(Kurtosis, s.kurtosis);
        put(UncorSumSq, s.uncor_sum_sq);
        put(CorSumSq, s.cor_sum_sq);
        put(COV, cov);
        put(MAD, s.mad);
        put(WeightSum, s.weight_sum);
        put(GeoMean, s.geo_mean);
        return status;
    });
}

ZEMATH_API int zemath_opt_summary_stats(unsigned int n, const double* data, double level,
                                        double* Mode, bool* several_modes, double* GeoSD,
                                        double* LCL, double* UCL, double* SDx2, double* SDx3,
                                        int nMomentDenFlag, const double* weights) noexcept {
    if (data == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (!level_ok(level)) return ZEMATH_ERR_CONFIDENCE_LEVEL;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    if (!flag_ok(nMomentDenFlag)) return ZEMATH_ERR_PARAM_RANGE;
    return zemath::guard_status([&]() -> int {
        DescStatResults r;
        bool several = false;
        const int status =
            zemath::describe(std::span<const double>(data, n), weights_span(weights, n), level,
                             nMomentDenFlag, r, &several);
        put(Mode, r.Mode);
        put(several_modes, several);
        put(GeoSD, r.GeoSD);
        put(LCL, r.LCL);
        put(UCL, r.UCL);
        put(SDx2, r.SDx2);
        put(SDx3, r.SDx3);
        return status;
    });
}

ZEMATH_API int zemath_desc_stats_ex(const double* data, unsigned int n, const double* bounds,
                                    unsigned int nRanges, const DescStatOptions* options,
                                    DescStatResults* out, const double* weights, double level,
                                    int reserved) noexcept {
    (void)reserved;
    if (data == nullptr || bounds == nullptr || options == nullptr || out == nullptr)
        return ZEMATH_ERR_NULL_STATS;
    if (!level_ok(level)) return ZEMATH_ERR_CONFIDENCE_LEVEL;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    if (!flag_ok(options->nMomentDenFlag)) return ZEMATH_ERR_PARAM_RANGE;
    for (unsigned int r = 0; r < nRanges; ++r)
        if (!range_ok(bounds[2 * r], bounds[2 * r + 1], n)) return ZEMATH_ERR_PARAM_RANGE;
    return zemath::guard_status([&]() -> int {
        int first_failure = ZEMATH_OK;
        std::vector<DescStatResults> formed(nRanges);  // written once all are formed
        for (unsigned int r = 0; r < nRanges; ++r) {
            const auto first = static_cast<std::size_t>(bounds[2 * r]);
            const auto count = static_cast<std::size_t>(bounds[2 * r + 1]) - first + 1;
            DescStatResults full;
            const int status = zemath::describe(
                std::span<const double>(data + first, count),
                weights != nullptr ? std::span<const double>(weights + first, count)
                                   : std::span<const double>(),
                level, options->nMomentDenFlag, full);
            DescStatResults selected = zemath::reset_record(-1);
            copy_selected(*options, full, selected);
            formed[r] = selected;
            if (first_failure == ZEMATH_OK) first_failure = status;
        }
        std::copy(formed.begin(), formed.end(), out);
        return first_failure;
    });
}

namespace {

int row_desc(int rows, int columns, const double* matrix, DescStatResults* results,
             const double* weights, double level, int flag, const DescStatOptions* options) {
    int first_failure = ZEMATH_OK;
    const auto width = static_cast<std::size_t>(columns);
    // Every row's record is formed before any is written: a row's statistics allocate,
    // and a failure must leave the caller's records untouched.
    std::vector<DescStatResults> formed(static_cast<std::size_t>(rows));
    for (int r = 0; r < rows; ++r) {
        DescStatResults full;
        const int status = zemath::describe(
            std::span<const double>(matrix + static_cast<std::size_t>(r) * width, width),
            weights_span(weights, width), level, flag, full);
        DescStatResults& out = formed[static_cast<std::size_t>(r)];
        if (options != nullptr) {
            out = zemath::reset_record(-1);
            copy_selected(*options, full, out);
        } else {
            out = full;
        }
        if (first_failure == ZEMATH_OK) first_failure = status;
    }
    std::copy(formed.begin(), formed.end(), results);
    return first_failure;
}

}  // namespace

ZEMATH_API int zemath_row_desc_stats(int rows, int columns, const double* matrix,
                                     DescStatResults* results, const double* weights, double level,
                                     int nMomentDenFlag) noexcept {
    if (matrix == nullptr || results == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (rows < 1 || columns < 1) return ZEMATH_ERR_SIZES_DIFFER;
    if (!level_ok(level)) return ZEMATH_ERR_CONFIDENCE_LEVEL;
    if (!flag_ok(nMomentDenFlag)) return ZEMATH_ERR_PARAM_RANGE;
    return zemath::guard_status([&] {
        return row_desc(rows, columns, matrix, results, weights, level, nMomentDenFlag, nullptr);
    });
}

ZEMATH_API int zemath_row_desc_stats_ex(int rows, int columns, const double* matrix,
                                        const DescStatOptions* options, DescStatResults* results,
                                        const double* weights, double level) noexcept {
    if (matrix == nullptr || options == nullptr || results == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (rows < 1 || columns < 1) return ZEMATH_ERR_SIZES_DIFFER;
    if (!level_ok(level)) return ZEMATH_ERR_CONFIDENCE_LEVEL;
    if (!flag_ok(options->nMomentDenFlag)) return ZEMATH_ERR_PARAM_RANGE;
    return zemath::guard_status([&]() -> int {
        return row_desc(rows, columns, matrix, results, weights, level, options->nMomentDenFlag,
                        options);
    });
}

// ---- Raw sums -------------------------------------------------------------------------

ZEMATH_API double zemath_root_mean_square(const double* data, int n) noexcept {
    if (data == nullptr) return kNanum;
    if (n <= 0) return 0.0;
    double sum = 0.0;
    for (int i = 0; i < n; ++i) sum += data[i] * data[i];
    return std::sqrt(sum / n);
}

ZEMATH_API double zemath_absolute_arithmetic_average(const double* data, int n) noexcept {
    if (data == nullptr) return kNanum;
    if (n <= 0) return 0.0;
    double sum = 0.0;
    for (int i = 0; i < n; ++i) sum += std::fabs(data[i]);
    return sum / n;
}

namespace {

// sum x^power / (n s^power); a negative scale uses the root mean square.
double standardised_raw_moment(const double* data, int n, double scale, int power) {
    if (data == nullptr) return kNanum;
    if (n <= 0) return 0.0;
    const double s = scale < 0.0 ? zemath_root_mean_square(data, n) : scale;
    double sum = 0.0;
    for (int i = 0; i < n; ++i) {
        const double x2 = data[i] * data[i];
        sum += power == 3 ? x2 * data[i] : x2 * x2;
    }
    return sum / (n * std::pow(s, power));
}

}  // namespace

ZEMATH_API double zemath_skewness(const double* data, int n, double scale) noexcept {
    return standardised_raw_moment(data, n, scale, 3);
}

ZEMATH_API double zemath_kurtosis(const double* data, int n, double scale) noexcept {
    return standardised_raw_moment(data, n, scale, 4);
}
