#pragma once

#include <BaseSDK/AString.h>

#include <memory>

namespace BaseSDK {

/// A parsed XML 1.0 document, read through XPath 1.0 selections.
///
/// Only well-formed documents parse, by the grammar of XML 1.0 in its fifth edition. On top of it:
/// - Nothing may be declared within the document: a document type declaration with an internal
///   subset ("[...]", even an empty one) is refused.
/// - Nothing outside the text is ever read. A document type declaration may refer to an external
///   subset, but no entities beside the predefined five are known: a reference to any other one is
///   refused, even where the external subset could declare it.
/// - Size and nesting are bounded (see the constants).
///
/// What the grammar leaves to the reader:
/// - Versions 1.1, 1.2, ... are read as 1.0, which is what the fifth edition asks for; others are
///   refused.
/// - Any well-formed name of an encoding is accepted, and none is obeyed: the text was decoded
///   before it came here. A byte order mark at its beginning is left out.
/// - Nothing is validated, and prefixes of names need not be declared as namespaces.
///
/// A thread keeps the ASCII document that it read last, if that is no longer than 64 KiB. The same
/// text, and the markup of an element of it, are not read again: they share what was read.
///
/// A document object belongs to one thread at a time. One that was moved from may be assigned,
/// parsed again or destroyed.
class AXmlDoc {
 public:
  static constexpr std::size_t MaxDepth = 100;               ///< elements within each other
  static constexpr std::size_t MaxBytes = 16 * 1024 * 1024;  ///< of the text's UTF-8 form

  /// Where and why the last Parse stopped. Line and column count from 1, the column in characters;
  /// both are 0 when the error has no place (the document is too large) or there is none.
  struct AXmlError {
    AString m_Message;
    unsigned m_Line = 0;
    unsigned m_Column = 0;
  };

  AXmlDoc();
  /// As Parse on an empty document.
  explicit AXmlDoc(const AString& text);
  AXmlDoc(AXmlDoc&&) noexcept;
  AXmlDoc& operator=(AXmlDoc&&) noexcept;
  ~AXmlDoc();

  /// Replaces the document. After a failure the document is empty and selects nothing.
  bool Parse(const AString& text);
  bool IsParsed() const;
  const AXmlError& Error() const;

  /// The first node in document order that `xpath` selects: the value of an attribute or of a
  /// text() node, entities resolved; for an element its whole markup exactly as written, with white
  /// space, attribute order and entities. Empty when nothing is selected, the document did not
  /// parse, or `xpath` is not an expression that selects nodes.
  AString SelectSingleNode(const AString& xpath) const;

  /// Selects all nodes for Read; false when there are none. Ends an earlier selection.
  bool Find(const AString& xpath);
  /// Goes to the next node of the selection, at first to the first one; false after the last.
  bool Read();
  /// The current node as SelectSingleNode gives it; empty before the first and after the last Read.
  AString GetValue() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> m_Impl;
};

}  // namespace BaseSDK
