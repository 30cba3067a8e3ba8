#pragma once

#include "agent/document/TaskDocumentProblem.h"

#include <BaseSDK/AString.h>

#include <optional>

namespace NoxAgent {

/// A task document in ASCII alone. It says the same; every character beyond ASCII becomes a numeric
/// character reference.
///
/// The scheduler cuts the file of a new task at as many bytes as the document has characters, so a
/// document with characters beyond ASCII would lose its end. Therefore every document goes through
/// here before the scheduler gets it.
class AsciiDocument {
 public:
  /// `xml` need not be well formed: whatever is wrong is passed on as it stands. A byte order mark
  /// at the beginning is left out.
  explicit AsciiDocument(const BaseSDK::AString& xml);

  /// The document in ASCII; empty when there is a problem.
  const BaseSDK::AString& Text() const { return m_Text; }

  /// The first character that XML cannot write as a reference where it stands (in a name, a
  /// comment, a CDATA section, a processing instruction, a document type) or that XML does not know
  /// at all (an invalid byte of the file). Always an Error; nothing when Text() is good.
  const std::optional<TaskDocumentProblem>& Problem() const { return m_Problem; }

 private:
  BaseSDK::AString m_Text;
  std::optional<TaskDocumentProblem> m_Problem;
};

}  // namespace NoxAgent
