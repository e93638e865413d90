// Fuzz target: the random samplers with fuzzed counts, parameters and tables. A success
// fills exactly the n outputs (the guard element after them stays untouched); a refusal
// writes nothing.
#include <algorithm>
#include <cstring>

#include "fuzz_input.hpp"
#include "zemath.h"

using zemath_fuzz::data_or_null;
using zemath_fuzz::Input;
using zemath_fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(22);
    const int n = in.count(64);
    const double a = in.real(), b = in.real(), c = in.real();
    const int i = in.integer(), j = in.integer(), k = in.integer();
    constexpr double kGuard = 12345.678;
    std::vector<double> out(static_cast<size_t>(n > 0 ? n : 0) + 1, kGuard);
    std::vector<int> iout(out.size(), -424242);
    double* o = in.byte() % 16 ? out.data() : nullptr;
    int* io = in.byte() % 16 ? iout.data() : nullptr;
    int status = 0;
    switch (which) {
        case 0:
            status = normrnd(o, n, a, b);
            break;
        case 1:
            status = unifrnd(o, n, a, b);
            break;
        case 2:
            status = exprnd(o, n, a);
            break;
        case 3:
            status = betarnd(o, n, a, b);
            break;
        case 4:
            status = gamrnd(o, n, a, b);
            break;
        case 5:
            status = chi2rnd(o, n, i);
            break;
        case 6:
            status = trnd(o, n, i);
            break;
        case 7:
            status = frnd(o, n, i, j);
            break;
        case 8:
            status = caurnd(o, n, a, b);
            break;
        case 9:
            status = lognrnd(o, n, a, b);
            break;
        case 10:
            status = lgsrnd(o, n, a, b);
            break;
        case 11:
            status = wblrnd(o, n, a, b);
            break;
        case 12:
            status = trirnd(o, n, a, b, c);
            break;
        case 13:
            status = binornd(io, n, i, a);
            break;
        case 14:
            status = geornd(io, n, a);
            break;
        case 15:
            status = nbinrnd(io, n, i, a);
            break;
        case 16:
            status = poissrnd(io, n, a);
            break;
        case 17:
            status = hygernd(io, n, i % 1000, j % 1000, k % 1000);
            break;
        case 18:
            status = unidrnd(io, n, i, j);
            break;
        case 19: {
            const int table_size = in.count(32);
            std::vector<double> table = in.reals(table_size);
            if (in.byte() & 1) {  // a legal table now and then
                std::fill(table.begin(), table.end(), table.empty() ? 0.0 : 1.0 / table.size());
            }
            status = disrnd(io, n, data_or_null(table), table_size, i, in.pick(3));
            break;
        }
        case 20: {
            const int dimension = in.count(6);
            const int dims = dimension > 0 ? dimension : 0;
            std::vector<double> mean = in.reals(dimension);
            std::vector<double> cov = in.reals(dims * dims);
            if (in.byte() & 1)
                for (int r = 0; r < dims; ++r)
                    for (int s = 0; s < dims; ++s)
                        cov[static_cast<size_t>(r * dims + s)] = r == s ? 1.0 : 0.0;
            const int samples = n > 0 ? std::max(1, n / std::max(dims, 1)) : n;
            std::vector<double> many(static_cast<size_t>(std::max(samples, 0) * dims) + 1, kGuard);
            status = mvnrnd(many.data(), samples, dimension, data_or_null(mean), data_or_null(cov));
            require(many.back() == kGuard);
            if (status != 0)
                require(std::count(many.begin(), many.end(), kGuard) ==
                        static_cast<long>(many.size()));
            return 0;
        }
        default: {
            if (o && n > 0) {
                out[0] = a;
                out[static_cast<size_t>(n - 1)] = b;
            }
            const std::vector<double> before = out;
            status = permrnd(o, n);
            // Byte comparison: the end values may be NaN.
            if (status != 0)
                require(std::memcmp(out.data(), before.data(), out.size() * sizeof(double)) == 0);
            require(out.back() == kGuard);
            // On success every value lies between the two ends (none overflows).
            if (status == 0 && n > 1) {
                const double lo = std::min(a, b), hi = std::max(a, b);
                for (int m = 0; m < n; ++m)
                    require(out[static_cast<size_t>(m)] >= lo && out[static_cast<size_t>(m)] <= hi);
            }
            return 0;
        }
    }
    require(out.back() == kGuard && iout.back() == -424242);
    if (status != 0) {
        require(std::count(out.begin(), out.end(), kGuard) == static_cast<long>(out.size()));
        require(std::count(iout.begin(), iout.end(), -424242) == static_cast<long>(iout.size()));
    }
    return 0;
}
