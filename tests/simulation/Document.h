#pragma once

#include "tests/proof/PlainSchedule.h"
#include "tests/simulation/Random.h"

#include <optional>
#include <string>
#include <vector>

namespace Simulation {

/// The text of a RunTime element, taken apart.
struct RunEntry {
  std::string m_Time;   ///< "2005-03-01 08:00:00"
  std::string m_State;  ///< the rest, such as "Ok"

  /// Only the first word counts, and a missing one.
  bool IsFinished() const {
    const std::string word = m_State.substr(0, m_State.find(' '));
    return word.empty() || word == "Ok";
  }
  /// What a load takes for the last run; -1 when it is not finished.
  long LastRun() const;
  bool operator==(const RunEntry&) const = default;
};

/// What a task file says about a document that was handed in once.
struct FileState {
  bool m_Enabled = true;
  std::optional<RunEntry> m_Entry;
};

/// A task document as a caller wrote it, and what its schedule means by the plain rules.
class Document {
 public:
  /// Draws one around the moment `now`; a few are broken. `number` makes its text its own.
  Document(Random& random, int number, long now);
  /// Daily at noon of the local day of `now`, run by `handler`: what every day must see.
  static Document Canary(int number, long now, const std::string& handler);

  const std::string& Text() const { return m_Text; }
  int Number() const { return m_Number; }
  const std::string& Handler() const { return m_Handler; }
  /// Whether nothing but day starts comes of it: no repetitions.
  bool IsSimple() const;

  /// What a file with this text says, if it is this document, as given or rewritten around its
  /// history; empty when it is anything else.
  std::optional<FileState> Match(const std::string& fileText) const;
  /// Whether the text is what a write of the document may leave that was cut short.
  bool IsCutShort(const std::string& fileText) const;
  PlainSchedule::TaskAnswer Evaluate(long lastRun, long now) const;

 private:
  explicit Document(int number) : m_Number(number) {}

  void Compose(Random& random);
  void Break(Random& random);
  void MakeTriggers();

  int m_Number;
  std::string m_Text;
  std::string m_Handler;
  std::string m_HandlerMarkup;   ///< as a rewrite copies it; empty when the document is broken
  std::string m_ScheduleMarkup;  ///< the same
  bool m_Enabled = true;
  std::optional<RunEntry> m_Entry;
  std::vector<PlainSchedule::Rule> m_Rules;
  std::vector<PlainSchedule::Trigger> m_Triggers;
};

/// The class identifiers that tasks name.
const std::vector<std::string>& HandlerIds();

std::optional<RunEntry> ParseEntry(const std::string& text);

}  // namespace Simulation
