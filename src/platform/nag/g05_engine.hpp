// The engine and the basic variates under every g05 generator, kept inline so that the
// generation loops compile into one piece.
//
// Engine: xoshiro256++ (Blackman and Vigna 2019), period 2^256 - 1, whose four words are
// the G05State seed array. Uniforms take the top 53 bits. Normal and exponential
// variates: 256-layer ziggurats (Marsaglia and Tsang 2000) drawing the layer, the sign
// and the abscissa from disjoint bits of one 64-bit word (Doornik 2005), with tables
// whose right end r is solved to closure at first use. Gamma: Marsaglia and Tsang
// (2000), with G(a) = G(a + 1) U^(1/a) for a < 1 kept in logarithms. Log-factorials come
// from platform/numeric/stirling.hpp.
#pragma once

#include <cmath>
#include <cstdint>

#include "platform/nag/g05.hpp"

namespace zemath::nag::rng {

// Fast engine copy: the hot loops keep the four words in registers and write them back.
class Engine {
  public:
    explicit Engine(G05State& state) : state_(state) {
        for (int i = 0; i < 4; ++i) s_[i] = state.iseed[i];
    }
    ~Engine() {
        for (int i = 0; i < 4; ++i) state_.iseed[i] = s_[i];
    }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    std::uint64_t next() {
        const std::uint64_t result = rotl(s_[0] + s_[3], 23) + s_[0];
        const std::uint64_t t = s_[1] << 17;
        s_[2] ^= s_[0];
        s_[3] ^= s_[1];
        s_[1] ^= s_[2];
        s_[0] ^= s_[3];
        s_[2] ^= t;
        s_[3] = rotl(s_[3], 45);
        return result;
    }

    // Uniform on [0, 1) in steps of 2^-53.
    double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
    // Uniform on the open interval (0, 1): midpoints of the 2^53 steps, so logarithms and
    // quotients never meet 0 or 1.
    double uniform_open() { return (static_cast<double>(next() >> 11) + 0.5) * 0x1.0p-53; }

    // Uniform integer in [0, range), 1 <= range <= 2^32, without bias (Lemire 2019).
    std::uint64_t bounded(std::uint64_t range) {
        if (range == (std::uint64_t{1} << 32)) return next() >> 32;
        std::uint64_t product = (next() >> 32) * range;
        std::uint32_t low = static_cast<std::uint32_t>(product);
        if (low < range) {
            const std::uint32_t threshold =
                static_cast<std::uint32_t>((std::uint64_t{1} << 32) % range);
            while (low < threshold) {
                product = (next() >> 32) * range;
                low = static_cast<std::uint32_t>(product);
            }
        }
        return product >> 32;
    }

  private:
    static std::uint64_t rotl(std::uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }
    G05State& state_;
    std::uint64_t s_[4];
};

// Ziggurat of 256 layers of equal area under an unnormalised decreasing density f on
// [0, inf): x[0] = v / f(r) (the base strip, tail included), x[1] = r, x[i+1] =
// f^-1(v / x[i] + f(x[i])), x[256] = 0; y[i] = f(x[i]).
struct Ziggurat {
    double x[257];
    double y[257];
    double r;
};
const Ziggurat& normal_ziggurat();       // f(x) = exp(-x^2 / 2)
const Ziggurat& exponential_ziggurat();  // f(x) = exp(-x)

inline double normal(Engine& eng, const Ziggurat& z) {
    for (;;) {
        const std::uint64_t bits = eng.next();
        const int layer = static_cast<int>(bits & 0xff);
        const bool negative = (bits >> 8) & 1;
        const double u = static_cast<double>(bits >> 11) * 0x1.0p-53;
        const double x = u * z.x[layer];
        if (x < z.x[layer + 1]) return negative ? -x : x;
        if (layer == 0) {
            // Tail beyond r: Marsaglia's exponential rejection.
            double tx, ty;
            do {
                tx = -std::log(eng.uniform_open()) / z.r;
                ty = -std::log(eng.uniform_open());
            } while (ty + ty < tx * tx);
            return negative ? -(z.r + tx) : z.r + tx;
        }
        const double y = z.y[layer] + eng.uniform() * (z.y[layer + 1] - z.y[layer]);
        if (y < std::exp(-0.5 * x * x)) return negative ? -x : x;
    }
}

inline double exponential(Engine& eng, const Ziggurat& z) {
    double shift = 0.0;  // the tail beyond r is r plus a fresh exponential (memorylessness)
    for (;;) {
        const std::uint64_t bits = eng.next();
        const int layer = static_cast<int>(bits & 0xff);
        const double u = static_cast<double>(bits >> 11) * 0x1.0p-53;
        const double x = u * z.x[layer];
        if (x < z.x[layer + 1]) return shift + x;
        if (layer == 0) {
            shift += z.r;
            continue;
        }
        const double y = z.y[layer] + eng.uniform() * (z.y[layer + 1] - z.y[layer]);
        if (y < std::exp(-x)) return shift + x;
    }
}

// Gamma(shape, 1) by Marsaglia and Tsang for shape >= 1; set up once per shape.
class GammaSampler {
  public:
    explicit GammaSampler(double shape)
        : small_(shape < 1.0),
          inv_shape_(1.0 / shape),
          d_((small_ ? shape + 1.0 : shape) - 1.0 / 3.0),
          c_(1.0 / std::sqrt(9.0 * d_)) {}

    double operator()(Engine& eng, const Ziggurat& zn) const {
        if (!small_) return core(eng, zn);
        // G(a) = G(a + 1) U^(1/a): underflows to 0 for tiny a where the law puts its mass
        // below the smallest double.
        const double g = core(eng, zn);
        return g * std::exp(std::log(eng.uniform_open()) * inv_shape_);
    }

    // ln G, exact also where G itself underflows (beta variates from tiny shapes).
    double log_of_draw(Engine& eng, const Ziggurat& zn) const {
        const double g = core(eng, zn);
        return small_ ? std::log(g) + std::log(eng.uniform_open()) * inv_shape_ : std::log(g);
    }

  private:
    double core(Engine& eng, const Ziggurat& zn) const {
        for (;;) {
            const double z = normal(eng, zn);
            double v = 1.0 + c_ * z;
            if (v <= 0.0) continue;
            v = v * v * v;
            const double u = eng.uniform_open();
            const double z2 = z * z;
            // Squeeze accepts about 98% of candidates without a logarithm.
            if (u < 1.0 - 0.0331 * z2 * z2) return d_ * v;
            if (std::log(u) < 0.5 * z2 + d_ * (1.0 - v + std::log(v))) return d_ * v;
        }
    }
    bool small_;
    double inv_shape_;
    double d_;
    double c_;
};

}  // namespace zemath::nag::rng

namespace zemath::nag {

// The common first check of every generator: a count below 1, then a null output.
template <class T>
inline bool bad_count(int n, T x[], NagError* fail) {
    if (n < 1) {
        fail->set(NE_INT_ARG_LT);
        return true;
    }
    if (x == nullptr) {
        fail->set(NE_BAD_PARAM);
        return true;
    }
    return false;
}

// What a mode asks for: building the reference vector, generating from it, or both.
struct ModeSteps {
    bool set_up;
    bool generate;
};

inline ModeSteps mode_steps(Nag_ModeRNG mode) {
    return {mode == Nag_ModeRNG::Nag_InitializeReference ||
                mode == Nag_ModeRNG::Nag_InitializeAndGenerate,
            mode == Nag_ModeRNG::Nag_GenerateFromReference ||
                mode == Nag_ModeRNG::Nag_InitializeAndGenerate};
}

// Sets the error code; true, so that a check reads `if (bad && refuse(fail, code)) return;`.
inline bool refuse(NagError* fail, int code) {
    fail->set(code);
    return true;
}

}  // namespace zemath::nag
