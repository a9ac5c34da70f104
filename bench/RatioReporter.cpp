#include "bench/RatioReporter.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace devid_bench {

namespace {

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace

RatioReporter::RatioReporter() : ConsoleReporter(isatty(STDOUT_FILENO) ? OO_ColorTabular : OO_Tabular) {}

void RatioReporter::ReportRuns(const std::vector<Run>& runs)
{
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
        if (run.error_occurred || run.iterations == 0)
            continue;
        std::string name = run.run_name.function_name;
        if (!run.run_name.args.empty())
            name += "/" + run.run_name.args;
        // CPU time: the machine is shared, and waiting for a core is not our cost.
        // An aggregate holds its statistic the same way, per iteration once divided.
        const double seconds = run.cpu_accumulated_time / static_cast<double>(run.iterations);
        const bool median = run.run_type != Run::RT_Iteration && run.aggregate_name == "median";
        if (run.run_type == Run::RT_Iteration || median)
            m_counters[name] = run.counters;
        if (run.run_type == Run::RT_Iteration)
            m_seconds[name].push_back(seconds);
        else if (median)
            m_medians[name] = seconds;
    }
}

double RatioReporter::Seconds(const std::string& name) const
{
    const auto runs = m_seconds.find(name);
    if (runs != m_seconds.end())
        return Median(runs->second);
    const auto median = m_medians.find(name);
    return median != m_medians.end() ? median->second : 0;
}

bool RatioReporter::PrintSummary(std::ostream& out, const std::vector<RatioGoal>& goals) const
{
    bool allMet = true;
    bool header = false;
    for (const RatioGoal& goal : goals) {
        const double measuredSeconds = Seconds(goal.measured);
        const double baselineSeconds = Seconds(goal.baseline);
        if (measuredSeconds <= 0 || baselineSeconds <= 0)
            continue;
        if (!header) {
            out << "\nRatios to their baselines (CPU time, median of repetitions):\n";
            header = true;
        }
        char line[512];
        bool met = false;
        switch (goal.kind) {
        case RatioGoal::TimeRatio: {
            const double ratio = measuredSeconds / baselineSeconds;
            met = ratio <= goal.goal;
            std::snprintf(line, sizeof line, "  %-48s %6.2fx  of %-26s goal <= %.2fx  %s\n", goal.label.c_str(), ratio,
                          goal.baseline.c_str(), goal.goal, met ? "met" : "MISSED");
            break;
        }
        case RatioGoal::Share: {
            const double share = measuredSeconds / baselineSeconds;
            met = share < goal.goal;
            std::snprintf(line, sizeof line, "  %-48s %6.1f%% of %-26s goal <  %.0f%%   %s\n", goal.label.c_str(),
                          share * 100, goal.baseline.c_str(), goal.goal * 100, met ? "met" : "MISSED");
            break;
        }
        case RatioGoal::Throughput: {
            const double ratio = baselineSeconds / measuredSeconds;
            met = ratio >= goal.goal;
            std::snprintf(line, sizeof line, "  %-48s %6.2fx  of %-26s goal >= %.2fx  %s\n", goal.label.c_str(), ratio,
                          goal.baseline.c_str(), goal.goal, met ? "met" : "MISSED");
            break;
        }
        }
        out << line;
        allMet = allMet && met;
    }
    return allMet;
}

bool RatioReporter::PrintSummary(std::ostream& out, const std::vector<MemoryGoal>& goals) const
{
    bool allMet = true;
    bool header = false;
    for (const MemoryGoal& goal : goals) {
        const auto counters = m_counters.find(goal.benchmark);
        if (counters == m_counters.end())
            continue;
        auto value = [&counters](const std::string& name) {
            const auto found = counters->second.find(name);
            return found != counters->second.end() ? static_cast<double>(found->second) : 0.0;
        };
        const double measured = value(goal.counter);
        double limit = goal.budget.empty() ? goal.limitMiB : 0;
        std::string of = goal.budget.empty() ? "" : " (";
        for (const std::string& part : goal.budget) {
            limit += value(part);
            of += (of.size() > 2 ? " + " : "") + part;
        }
        if (!goal.budget.empty())
            of += ")";
        if (measured <= 0 || limit <= 0)
            continue;
        if (!header) {
            out << "\nMemory (MiB):\n";
            header = true;
        }
        const bool met = measured <= limit;
        char line[512];
        std::snprintf(line, sizeof line, "  %-48s %6.1f  of at most %.1f%s  %s\n", goal.label.c_str(), measured, limit,
                      of.c_str(), met ? "met" : "MISSED");
        out << line;
        allMet = allMet && met;
    }
    return allMet;
}

} // namespace devid_bench
