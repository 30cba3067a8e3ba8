#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace Workbench {

/// Shows each benchmark's figures as they come, and in the end a table of what users wait for: each
/// kind of work, the best of its repetitions, the best of its limit's, and the ratio of the two.
class FigureTable : public benchmark::ConsoleReporter {
 public:
  FigureTable() : ConsoleReporter(OO_None) {}

  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  void Keep(const std::string& name, double figure);
  double FigureOf(const std::string& name) const;

  /// Seconds or bytes, by the name of a benchmark or "benchmark:counter".
  std::map<std::string, double> m_Best;
};

}  // namespace Workbench
