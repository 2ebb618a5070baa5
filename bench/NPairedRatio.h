#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

// Times a piece of work against its floor within one benchmark: every
// iteration runs both, each going first in every other iteration, and the
// ratio reported is the median of the iterations' own ratios. A machine
// whose speed drifts during a run (a shared virtual machine, say) moves
// both sides of one iteration alike, where two separate benchmarks would
// each catch a different stretch of it.
class NPairedRatio {
 public:
  // Runs one iteration; false, and nothing counted, when either side fails.
  template <typename Floor, typename Work>
  bool Run(Floor&& floor, Work&& work) {
    double floorSeconds = 0;
    double workSeconds = 0;
    const bool floorFirst = m_ratios.size() % 2 == 0;
    const bool ran = floorFirst ? Time(floor, &floorSeconds) && Time(work, &workSeconds)
                                : Time(work, &workSeconds) && Time(floor, &floorSeconds);
    if (!ran || floorSeconds <= 0) return false;
    m_floorSeconds += floorSeconds;
    m_workSeconds += workSeconds;
    m_ratios.push_back(workSeconds / floorSeconds);
    return true;
  }

  // Per unit (a file, a call) of which each side did `units` an iteration:
  // floor_us and us, the means, and ratio, the median of the ratios, with
  // ratio_min and ratio_max for the spread.
  void SetCounters(benchmark::State& state, double units) const {
    if (m_ratios.empty() || units <= 0) return;
    const double perUnit = 1e6 / (units * static_cast<double>(m_ratios.size()));
    state.counters["floor_us"] = m_floorSeconds * perUnit;
    state.counters["us"] = m_workSeconds * perUnit;
    std::vector<double> sorted = m_ratios;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t middle = sorted.size() / 2;
    state.counters["ratio"] =
        sorted.size() % 2 == 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
    state.counters["ratio_min"] = sorted.front();
    state.counters["ratio_max"] = sorted.back();
  }

 private:
  template <typename Side>
  static bool Time(Side& side, double* seconds) {
    const auto start = std::chrono::steady_clock::now();
    const bool ok = side();
    *seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return ok;
  }

  double m_floorSeconds = 0;
  double m_workSeconds = 0;
  std::vector<double> m_ratios;
};
