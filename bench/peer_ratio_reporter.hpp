// The closing table of the distribution benchmarks: per function, the CPU time per call of
// ours and of each peer measured in the same run (the machine may be shared, so CPU time, not
// wall time), and the ratio of ours to the faster double-precision peer present. A bench
// registers "<prefix><name>_zemath" and one benchmark per peer suffix ("_boost" for Boost.Math
// with its long double internals, "_boostd" in double, "_gsl"); a peer a function lacks is
// printed as nan and left out of the ratio.
#pragma once

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace zemath_bench {

struct PeerColumn {
    const char* suffix;   // of the benchmark's name
    const char* heading;  // of the column
    bool double_peer;     // counted in the ratio
};

inline const PeerColumn kBoostLongDouble{"_boost", "boost ns", false};
inline const PeerColumn kBoostDouble{"_boostd", "boost-d ns", true};
inline const PeerColumn kGsl{"_gsl", "gsl ns", true};

class PeerRatioReporter : public benchmark::ConsoleReporter {
  public:
    PeerRatioReporter(std::vector<std::string> names, std::string prefix,
                      std::vector<PeerColumn> peers, int name_width = 10)
        : names_(std::move(names)),
          prefix_(std::move(prefix)),
          peers_(std::move(peers)),
          width_(name_width) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& r : runs) times_[r.benchmark_name()] = r.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\n%-*s %10s", width_, "function", "zemath ns");
        for (const PeerColumn& p : peers_) std::printf(" %10s", p.heading);
        std::printf(" %8s\n", "ratio");
        for (const std::string& name : names_) {
            const double ours = time(name, "_zemath");
            if (std::isnan(ours)) continue;
            double best = std::numeric_limits<double>::quiet_NaN();
            std::printf("%-*s %10.1f", width_, name.c_str(), ours);
            for (const PeerColumn& p : peers_) {
                const double t = time(name, p.suffix);
                std::printf(" %10.1f", t);
                if (p.double_peer && !std::isnan(t))
                    best = std::isnan(best) ? t : std::fmin(best, t);
            }
            std::printf(" %8.2f\n", ours / best);
        }
    }

  private:
    double time(const std::string& name, const char* suffix) const {
        const auto it = times_.find(prefix_ + name + suffix);
        return it == times_.end() ? std::numeric_limits<double>::quiet_NaN() : it->second;
    }

    std::vector<std::string> names_;
    std::string prefix_;
    std::vector<PeerColumn> peers_;
    int width_;
    std::map<std::string, double> times_;
};

// The names of a bench's call table, in its order.
template <class Calls>
std::vector<std::string> call_names(const Calls& calls) {
    std::vector<std::string> names;
    for (const auto& c : calls) names.emplace_back(c.name);
    return names;
}

}  // namespace zemath_bench
