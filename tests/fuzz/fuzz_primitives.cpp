// Fuzz target: the typed primitives and frame scans on arrays exactly as long as their
// counts, with the documented results checked where they are cheap to state.
#include <cmath>

#include "fuzz_input.hpp"
#include "zemath.h"

using zemath_fuzz::data_or_null;
using zemath_fuzz::Input;
using zemath_fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(12);
    const int n = in.count(512);
    std::vector<double> data = in.reals(n);
    double* d = in.byte() % 16 ? data_or_null(data) : nullptr;
    switch (which) {
        case 0: {
            double mn = 0, mx = 0;
            int imin = 0, imax = 0, used = 0;
            const double sum = zemath_d_sum(d, n, &mn, &mx, &imin, &imax, &used);
            require(used >= 0 && used <= (n > 0 ? n : 0));
            require(used > 0 || (sum == 0.0 && imin == -1 && imax == -1));
            break;
        }
        case 1: {
            const int first = in.count(n), last = in.count(n);
            int imin = -5, imax = -5;
            const int missing =
                zemath_d_minmax(d, first, last > n - 1 ? n - 1 : last, &imin, &imax);
            require(missing >= -1);
            if (imin >= 0) require(imin >= first && imin < n);
            break;
        }
        case 2: {
            double variance = 0;
            int count = 0;
            zemath_d_mean_variance(d, n, &variance, &count);
            require(count >= 0 && count <= (n > 0 ? n : 0));
            break;
        }
        case 3: {
            const unsigned first = static_cast<unsigned>(in.count(n)),
                           end = static_cast<unsigned>(in.count(n));
            std::vector<double> out(data.size());
            const double marker = in.real();
            zemath_d_cumulative_sum(d, first, end <= data.size() ? end : 0, data_or_null(out),
                                    in.byte() & 1 ? &marker : nullptr);
            break;
        }
        case 4: {
            const int bins = in.count(64);
            std::vector<unsigned> counts(static_cast<size_t>(bins > 0 ? bins : 0));
            const int status =
                zemath_d_frequency_count(d, n, data_or_null(counts), bins, in.real(), in.real());
            require(status == 0 || status == -1);
            break;
        }
        case 5: {
            double fraction = -1;
            const double mode =
                zemath_d_find_most(d, n, static_cast<unsigned>(in.integer()), &fraction);
            require(mode == NANUM || (fraction >= 0.0 && fraction <= 1.0) || std::isnan(fraction));
            break;
        }
        case 6:
            zemath_d_stretch(d, n, in.real(), in.real(), in.real(), in.real());
            break;
        case 7: {
            double first = 0, last = 0, inc = 0;
            const int r = zemath_d_get_vector_inc(n, d, in.real(), &first, &last, &inc);
            require(r >= -2 && r <= 2);
            break;
        }
        case 8: {
            std::vector<unsigned> flags(data.size());
            const int nans = zemath_check_nan(d, n, data_or_null(flags), n);
            require(nans >= 0 && nans <= (n > 0 ? n : 0));
            zemath_check_infinity(d, n, data_or_null(flags), n);
            zemath_check_replace_nan_with_missing_value(d, n);
            break;
        }
        case 9: {
            std::vector<double> y = in.reals(n);
            std::vector<int> kept(data.size());
            const int k = zemath_1d_remove_missingvalue(d, data_or_null(y),
                                                        static_cast<unsigned>(n > 0 ? n : 0),
                                                        in.real(), data_or_null(kept));
            require(k <= (n > 0 ? n : 0));
            break;
        }
        case 10: {
            std::vector<unsigned short> u = in.values<unsigned short>(n);
            const unsigned short low = in.raw<unsigned short>(), high = in.raw<unsigned short>();
            int imin = 0, imax = 0;
            zemath_us_minmax_in_range(data_or_null(u), n, low, high, nullptr, &imin, &imax);
            double variance = 0;
            int count = 0;
            zemath_us_mean_variance(data_or_null(u), n, nullptr, &variance, &count);
            zemath_us_stretch(data_or_null(u), n, low, high, in.raw<unsigned short>(),
                              in.raw<unsigned short>());
            break;
        }
        default: {
            std::vector<float> f = in.values<float>(n);
            float mn = 0, mx = 0;
            int imin = 0, imax = 0;
            zemath_f_sum(data_or_null(f), n, &mn, &mx, &imin, &imax);
            zemath_f_stretch(data_or_null(f), n, in.raw<float>(), in.raw<float>(), in.raw<float>(),
                             in.raw<float>());
            std::vector<d_complex> z(data.size());
            for (size_t i = 0; i < z.size(); ++i) z[i] = {data[i], in.real()};
            zemath_z_minmax(data_or_null(z), 0, n - 1, nullptr, &imin, &imax);
            break;
        }
    }
    return 0;
}
