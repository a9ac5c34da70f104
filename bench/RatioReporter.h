// Console output of Google Benchmark plus, at the end, each measurement as a
// ratio to the baseline that ran beside it, checked against its goal.
#ifndef DEVID_BENCH_RATIOREPORTER_H
#define DEVID_BENCH_RATIOREPORTER_H

#include <benchmark/benchmark.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace devid_bench {

struct RatioGoal {
    enum Kind {
        /// measured time / baseline time, at most `goal`.
        TimeRatio,
        /// measured time / baseline time as a share, below `goal`.
        Share,
        /// baseline time / measured time (items per second against the baseline's), at least `goal`.
        Throughput
    };
    std::string label;
    std::string measured;
    std::string baseline;
    Kind kind;
    double goal;
};

/// A memory figure (a counter of one benchmark, in MiB) against its limit: the
/// sum of other counters of the same benchmark, or `limitMiB` when none are named.
struct MemoryGoal {
    std::string label;
    std::string benchmark;
    std::string counter;
    std::vector<std::string> budget;
    double limitMiB;
};

class RatioReporter : public benchmark::ConsoleReporter {
public:
    /// Colours only on a terminal, so that saved output stays plain text.
    RatioReporter();
    void ReportRuns(const std::vector<Run>& runs) override;

    /// One line per goal whose two benchmarks both ran; returns false when a goal is missed.
    bool PrintSummary(std::ostream& out, const std::vector<RatioGoal>& goals) const;
    /// The same for memory goals whose counters were reported (and are not 0).
    bool PrintSummary(std::ostream& out, const std::vector<MemoryGoal>& goals) const;

private:
    /// Median CPU seconds per iteration of a benchmark; 0 when it did not run.
    double Seconds(const std::string& name) const;

    /// CPU seconds per iteration, one entry per repetition, by benchmark name
    /// without its options ("IdentifyFirstInstance/files:200").
    std::map<std::string, std::vector<double>> m_seconds;
    /// The same from "median" aggregates, when only aggregates are reported.
    std::map<std::string, double> m_medians;
    /// The counters of the last repetition, or of the median, of each benchmark.
    std::map<std::string, benchmark::UserCounters> m_counters;
};

} // namespace devid_bench

#endif
