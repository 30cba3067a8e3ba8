#pragma once

#include "agent/document/DocumentSource.h"
#include "agent/document/TaskDocumentProblem.h"

#include <string>
#include <vector>

namespace NoxAgent {

/// Collects what the checks of one document find.
class ProblemList {
 public:
  /// The texts are those of TaskDocumentProblem, in UTF-8.
  void Add(TaskDocumentSeverity severity, TextPlace place, const std::string& message,
           const std::string& effect, const std::string& mend);
  void Warn(TextPlace place, const std::string& message, const std::string& effect,
            const std::string& mend);

  /// In the order of their places; problems of one place stay in the order in which they were
  /// added.
  std::vector<TaskDocumentProblem> Take();

 private:
  std::vector<TaskDocumentProblem> m_Problems;
};

}  // namespace NoxAgent
