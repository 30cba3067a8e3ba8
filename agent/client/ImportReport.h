#pragma once

#include "agent/client/CrontabImport.h"
#include "agent/library/Json.h"

#include <ostream>
#include <string>
#include <vector>

namespace NoxAgent {

/// What became of a crontab's lines, for people and in JSON. Local time (TZ).
class ImportReport {
 public:
  /// `lines` must outlive the object. `wasDry`: nothing was added; `isEnabled`: the tasks run.
  ImportReport(const std::vector<ImportedLine>& lines, bool wasDry, bool isEnabled)
      : m_Lines(lines), m_WasDry(wasDry), m_IsEnabled(isEnabled) {}

  bool HasRefusals() const { return CountOf<CronRefusal>() > 0; }
  /// A table of the tasks, refusals and notes, the proof of each task, and how many lines there are
  /// of each kind.
  void Print(std::ostream& out) const;
  Json ToJson() const;

 private:
  template <typename Content>
  std::size_t CountOf() const;
  std::string StateOf(const ImportedTask& task) const;
  void PrintTasks(std::ostream& out) const;
  void PrintRefusalsAndNotes(std::ostream& out) const;
  void PrintProof(std::ostream& out) const;
  void PrintSummary(std::ostream& out) const;

  const std::vector<ImportedLine>& m_Lines;
  const bool m_WasDry;
  const bool m_IsEnabled;
};

template <typename Content>
std::size_t ImportReport::CountOf() const {
  std::size_t count = 0;
  for (const ImportedLine& line : m_Lines) {
    count += std::holds_alternative<Content>(line.m_Content) ? 1U : 0U;
  }
  return count;
}

}  // namespace NoxAgent
