#pragma once

#include "agent/document/DocumentSource.h"
#include "agent/document/TaskDocumentProblem.h"

#include <string>
#include <vector>

namespace NoxAgent {

/// Collects what the checks of one document find; each check is given the list.
class ProblemList {
 public:
  /// The texts are those of TaskDocumentProblem, in UTF-8.
  void Add(TaskDocumentSeverity severity, TextPlace place, const std::string& message,
           const std::string& effect, const std::string& mend);
  /// Add with the severity Warning.
  void Warn(TextPlace place, const std::string& message, const std::string& effect,
            const std::string& mend);

  /// All problems in the order of their places; those of one place in the order in which they were
  /// added. Empties the list.
  std::vector<TaskDocumentProblem> Take();

 private:
  std::vector<TaskDocumentProblem> m_Problems;
};

}  // namespace NoxAgent
