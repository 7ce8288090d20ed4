// The main function of every benchmark program: runs all benchmarks, several times in random order, and
// prints for each goal how the two sides compare in this run. Absolute times mean little on a machine that
// others use, too.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace vastra::bench {

// One goal: the time of `ours` divided by the time of `peer`, each the name of a benchmark, must be at most
// `limit`; with `faster` the other way round: `peer` must need at least `limit` times as long as `ours`.
struct CGoal {
  std::string text;
  std::vector<std::string> ours, peers;  // in pairs; with several pairs the geometric mean counts
  double limit;
  bool faster;
};

// Collects the times of all repetitions and prints the usual table.
class CGatherer : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs)
      if (run.run_type == Run::RT_Iteration) m_times[run.run_name.str()].push_back(run.GetAdjustedRealTime());
    ConsoleReporter::ReportRuns(runs);
  }

  // Median over the repetitions, in nanoseconds or whatever unit the benchmark reports in; NaN if it did not
  // run.
  double Median(const std::string& name) const {
    const auto found = m_times.find(name);
    if (found == m_times.end()) return std::nan("");
    std::vector<double> times = found->second;
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
  }

 private:
  std::map<std::string, std::vector<double>> m_times;
};

inline void PrintGoal(const CGatherer& times, const CGoal& goal) {
  double logarithms = 0;
  for (std::size_t i = 0; i < goal.ours.size(); ++i) {
    const double ratio = times.Median(goal.ours[i]) / times.Median(goal.peers[i]);
    logarithms += std::log(goal.faster ? 1 / ratio : ratio);
  }
  const double ratio = std::exp(logarithms / static_cast<double>(goal.ours.size()));
  if (std::isnan(ratio)) return;
  const bool met = goal.faster ? ratio >= goal.limit : ratio <= goal.limit;
  std::printf("%-64s %7.2f x   (goal: %s %g x)%s\n", goal.text.c_str(), ratio,
              goal.faster ? "at least" : "at most", goal.limit, met ? "" : "   MISSED");
}

inline int RunWithGoals(int argc, char** argv, const std::vector<CGoal>& goals) {
  std::vector<char*> args(argv, argv + argc);
  char repetitions[] = "--benchmark_repetitions=5", mixed[] = "--benchmark_enable_random_interleaving=true",
       minimum[] = "--benchmark_min_time=0.1";
  args.insert(args.begin() + 1, {repetitions, mixed, minimum});
  int count = static_cast<int>(args.size());
  benchmark::Initialize(&count, args.data());
  if (benchmark::ReportUnrecognizedArguments(count, args.data())) return 1;
  CGatherer gatherer;
  benchmark::RunSpecifiedBenchmarks(&gatherer);
  std::printf("\n");
  for (const CGoal& goal : goals) PrintGoal(gatherer, goal);
  return 0;
}

}  // namespace vastra::bench
