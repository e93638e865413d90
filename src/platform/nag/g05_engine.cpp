// g05kcc and the read-only tables under the generators: the two ziggurats. Tables are built once,
// at first use (thread-safe static initialisation), and never change afterwards.
#include "platform/nag/g05_engine.hpp"

#include <chrono>
#include <cmath>
#include <random>

namespace zemath::nag {

namespace {

std::uint64_t splitmix64(std::uint64_t& x) {
    std::uint64_t z = (x += 0x9e3779b97f4a7c15ULL);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
}

}  // namespace

void g05kcc(int igen, G05State& state) {
    // 128 bits from the system's entropy source. The getrandom-based device is asked for
    // first: the default device may be a hardware instruction costing tens of
    // microseconds per word, which would dominate short calls.
    std::uint32_t entropy[4] = {0, 0, 0, 0};
    auto fill_from = [&entropy](const char* token) {
        try {
            std::random_device device(token);
            for (auto& word : entropy) word = device();
            return true;
        } catch (...) {
            return false;
        }
    };
    if (!fill_from("getentropy")) {
        // Else the default device; without any, the clocks and the state's address below
        // still differ from call to call.
        fill_from("default");
    }
    const auto wall =
        static_cast<std::uint64_t>(std::chrono::system_clock::now().time_since_epoch().count());
    const auto steady =
        static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    std::uint64_t mix = wall ^ (steady << 1) ^ reinterpret_cast<std::uintptr_t>(&state) ^
                        static_cast<std::uint64_t>(static_cast<std::uint32_t>(igen));
    for (int i = 0; i < 4; ++i) {
        // The previous seed words (the library's pre-filled constants) enter the mix too;
        // they never decide the stream alone.
        mix ^= entropy[i] + state.iseed[i];
        splitmix64(mix);
    }
    std::uint64_t any = 0;
    for (auto& word : state.iseed) {
        word = splitmix64(mix);
        any |= word;
    }
    if (any == 0) state.iseed[0] = 1;  // the one state xoshiro256++ must avoid
    state.igen = igen;
}

namespace rng {

namespace {

// Builds a 256-layer ziggurat for a decreasing f with f(0) = 1, solving for the r at
// which the layers close exactly at the top (x[256] = 0) by bisection in long double.
template <class F, class FInverse, class Tail>
Ziggurat build_ziggurat(F f, FInverse f_inverse, Tail tail, long double lo, long double hi) {
    constexpr int layers = 256;
    // Positive when r is too small (the layers, each of area v, fill the curve early).
    auto closure = [&](long double r, long double* x) {
        const long double v = r * f(r) + tail(r);
        x[0] = v / f(r);
        x[1] = r;
        for (int i = 1; i < layers; ++i) {
            const long double y = v / x[i] + f(x[i]);
            if (y >= 1.0L) return static_cast<long double>(layers - i);
            if (i + 1 < layers)
                x[i + 1] = f_inverse(y);
            else
                return y - 1.0L;
        }
        return 0.0L;
    };
    long double x[layers + 1];
    for (int iteration = 0; iteration < 200 && hi - lo > 0; ++iteration) {
        const long double mid = 0.5L * (lo + hi);
        if (mid <= lo || mid >= hi) break;
        if (closure(mid, x) > 0)
            lo = mid;
        else
            hi = mid;
    }
    closure(hi, x);
    Ziggurat z{};
    for (int i = 0; i < layers; ++i) {
        z.x[i] = static_cast<double>(x[i]);
        z.y[i] = static_cast<double>(f(x[i]));
    }
    z.x[layers] = 0.0;
    z.y[layers] = 1.0;
    z.r = static_cast<double>(x[1]);
    return z;
}

}  // namespace

const Ziggurat& normal_ziggurat() {
    static const Ziggurat table = build_ziggurat(
        [](long double x) { return std::exp(-0.5L * x * x); },
        [](long double y) { return std::sqrt(-2.0L * std::log(y)); },
        [](long double r) {
            // Area of exp(-x^2/2) beyond r: sqrt(pi/2) erfc(r / sqrt 2).
            return std::sqrt(std::acos(-1.0L) / 2.0L) * std::erfc(r / std::sqrt(2.0L));
        },
        3.0L, 4.5L);
    return table;
}

const Ziggurat& exponential_ziggurat() {
    static const Ziggurat table = build_ziggurat(
        [](long double x) { return std::exp(-x); }, [](long double y) { return -std::log(y); },
        [](long double r) { return std::exp(-r); }, 6.0L, 9.0L);
    return table;
}

}  // namespace rng
}  // namespace zemath::nag
