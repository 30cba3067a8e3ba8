#pragma once

#include "agent/document/TaskDocumentProblem.h"

#include <BaseSDK/AString.h>

#include <optional>

namespace NoxAgent {

/// A task document in ASCII alone: what it says stays the same, every other character of it becomes
/// a numeric character reference.
///
/// A new task's file is cut at as many bytes as the document has characters, so a document with
/// characters outside ASCII would lose its end. Whoever hands a document to the scheduler sends it
/// through here first.
class AsciiDocument {
 public:
  /// `xml` need not be well formed; what is not is passed on as it stands. A byte order mark at the
  /// beginning is left out.
  explicit AsciiDocument(const BaseSDK::AString& xml);

  /// The document in ASCII. When there is a problem: empty.
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
