#include "bench/FigureTable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <limits>

namespace Workbench {
namespace {

enum class Measure { Cpu, Wall, Bytes };

/// One row of the table. A limit that is empty is none.
struct Row {
  const char* m_Work;
  Measure m_Measure;
  const char* m_Figure;
  const char* m_Limit;
};

const std::vector<Row> Rows = {
    {"next run: daily", Measure::Cpu, "NextRun/Daily", "PlainNextRun/Daily"},
    {"next run: Monday to Friday", Measure::Cpu, "NextRun/MondayToFriday",
     "PlainNextRun/MondayToFriday"},
    {"next run: the 31st", Measure::Cpu, "NextRun/On31", "PlainNextRun/On31"},
    {"next run: first Monday", Measure::Cpu, "NextRun/OnFirstMonday", "PlainNextRun/OnFirstMonday"},
    {"next run: 29 February", Measure::Cpu, "NextRun/On29February", "PlainNextRun/On29February"},
    {"next run: 30 February (never)", Measure::Cpu, "NextRun/On30February",
     "PlainNextRun/On30February"},
    {"due test: daily, kept answer", Measure::Cpu, "DueTest/Daily", "TwoComparisons"},
    {"due test: daily, no kept answer", Measure::Cpu, "DueTestWithNoKeptAnswer", "TwoComparisons"},
    {"due test: once, ran in 2020", Measure::Cpu, "DueTest/OnceAndRan", "TwoComparisons"},
    {"due test: 30 February, ran in 2005", Measure::Cpu, "DueTest/On30FebruaryAndRan",
     "TwoComparisons"},
    {"a task from its document", Measure::Cpu, "BuildTask", "ParseDocument"},
    {"load of 10 task files", Measure::Cpu, "LoadAndPass/10", "ReadAndParseFiles/10"},
    {"load of 100", Measure::Cpu, "LoadAndPass/100", "ReadAndParseFiles/100"},
    {"load of 1,000", Measure::Cpu, "LoadAndPass/1000", "ReadAndParseFiles/1000"},
    {"load of 10,000", Measure::Cpu, "LoadAndPass/10000", "ReadAndParseFiles/10000"},
    {"load of 100,000", Measure::Cpu, "LoadAndPass/100000", "ReadAndParseFiles/100000"},
    {"pass over 10 tasks, none due", Measure::Cpu, "LoadAndPass/10:pass", "WalkOverStructs/10"},
    {"pass over 100", Measure::Cpu, "LoadAndPass/100:pass", "WalkOverStructs/100"},
    {"pass over 1,000", Measure::Cpu, "LoadAndPass/1000:pass", "WalkOverStructs/1000"},
    {"pass over 10,000", Measure::Cpu, "LoadAndPass/10000:pass", "WalkOverStructs/10000"},
    {"pass over 100,000", Measure::Cpu, "LoadAndPass/100000:pass", "WalkOverStructs/100000"},
    {"a task in memory", Measure::Bytes, "MemoryOfTasks:bytes_each",
     "MemoryOfPlainTasks:bytes_each"},
    {"the agent without tasks, resident", Measure::Bytes, "ListTasks/0:agent_bytes", ""},
    {"the agent with 10,000, resident", Measure::Bytes, "ListTasks/10000:agent_bytes", ""},
    {"1,000 tasks due: to the handler", Measure::Wall, "DueSecondToHandler/1000",
     "AppendRecords/1000"},
    {"1,000 tasks due: until all recorded", Measure::Wall, "DueSecondToHandler/1000:recorded",
     "AppendRecords/1000"},
    {"one task due: to the handler", Measure::Wall, "DueSecondToHandler/1", "TickOfTheClock"},
    {"one run registered", Measure::Wall, "RegisterRun", ""},
    {"noxctl list of 10,000 tasks", Measure::Wall, "ListTasks/10000",
     "LinesThroughSocketPair/10000"},
    {"1,000 adds on one connection", Measure::Wall, "AddOverConnection", "WriteFilesAndFlushOnce"},
    {"1,000 runs of noxctl add (100, times 10)", Measure::Wall, "AddByClient",
     "WriteFilesAndFlushOnce"},
    {"check of 14,000 triggers", Measure::Cpu, "CheckManyTriggers/14000", ""},
    {"the zone, made anew", Measure::Cpu, "MakingOfTheZone", ""},
    {"the zone, looked at", Measure::Cpu, "LookAtTheZone", ""},
};

std::string WithUnit(double figure, double scale, const char* unit) {
  const double scaled = figure * scale;
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), scaled < 10 ? "%.1f %s" : "%.0f %s", scaled, unit);
  return text.data();
}

std::string FigureText(double figure, Measure measure) {
  if (std::isnan(figure)) {
    return "none";
  }
  if (measure == Measure::Bytes) {
    return figure < 1e5 ? WithUnit(figure, 1, "B") : WithUnit(figure, 1e-6, "MB");
  }
  if (figure < 1e-6) {
    return WithUnit(figure, 1e9, "ns");
  }
  if (figure < 1e-3) {
    return WithUnit(figure, 1e6, "us");
  }
  return figure < 1 ? WithUnit(figure, 1e3, "ms") : WithUnit(figure, 1, "s");
}

std::string RatioText(double ratio) {
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), ratio < 10 ? "%.1f" : "%.0f", ratio);
  return std::isnan(ratio) ? "" : text.data();
}

const char* MeasureText(Measure measure) {
  return measure == Measure::Cpu ? "CPU" : measure == Measure::Wall ? "wall" : "memory";
}

void PrintLine(const char* work, const char* measure, const std::string& figure,
               const std::string& limit, const std::string& ratio) {
  std::array<char, 160> line{};
  std::snprintf(line.data(), line.size(), "| %-40s | %-6s | %8s | %8s | %7s |\n", work, measure,
                figure.c_str(), limit.c_str(), ratio.c_str());
  std::cout << line.data();
}

}  // namespace

void FigureTable::ReportRuns(const std::vector<Run>& runs) {
  std::vector<Run> single;
  for (const Run& run : runs) {
    if (run.run_type != Run::RT_Iteration) {
      continue;  // a mean or a deviation of those that came before
    }
    single.push_back(run);
    if (run.error_occurred) {
      continue;
    }
    const std::string& arguments = run.run_name.args;
    const std::string name =
        run.run_name.function_name + (arguments.empty() ? "" : "/" + arguments);
    const bool isCpu = run.run_name.time_type.empty();
    Keep(name, (isCpu ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime()) /
                   benchmark::GetTimeUnitMultiplier(run.time_unit));
    for (const auto& [counter, value] : run.counters) {
      Keep(name + ":" + counter, value);
    }
  }
  if (!single.empty()) {
    ConsoleReporter::ReportRuns(single);
  }
}

void FigureTable::Keep(const std::string& name, double figure) {
  const auto [best, isNew] = m_Best.try_emplace(name, figure);
  best->second = std::min(best->second, figure);
}

double FigureTable::FigureOf(const std::string& name) const {
  const auto figure = m_Best.find(name);
  return figure == m_Best.end() ? std::numeric_limits<double>::quiet_NaN() : figure->second;
}

void FigureTable::Finalize() {
  std::cout << "\nThe best of all repetitions:\n\n";
  PrintLine("work", "kind", "measured", "limit", "ratio");
  PrintLine("---", "---", "---:", "---:", "---:");
  for (const Row& row : Rows) {
    const double figure = FigureOf(row.m_Figure);
    const double limit = FigureOf(row.m_Limit);
    if (!std::isnan(figure)) {
      PrintLine(row.m_Work, MeasureText(row.m_Measure), FigureText(figure, row.m_Measure),
                FigureText(limit, row.m_Measure), RatioText(figure / limit));
    }
  }
}

}  // namespace Workbench
