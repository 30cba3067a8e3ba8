#pragma once

#include "XmlTree.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace BaseSDK {

/// A well-formed document as it was read. It never changes after that, so documents may share it.
class XmlReading {
 public:
  /// Where and why a text is no such document.
  struct Failure {
    std::string m_Message;
    std::size_t m_Offset = 0;
  };

  /// `text` is UTF-8 without a byte order mark.
  explicit XmlReading(std::string text) : m_Text(std::move(text)) {}
  XmlReading(const XmlReading&) = delete;  // the tree borrows from the text
  XmlReading& operator=(const XmlReading&) = delete;

  /// To be called once, before anything else. False when it is no such document.
  bool Read(std::size_t maxDepth, Failure& failure);

  const std::string& Text() const { return m_Text; }
  const XmlTree& Tree() const { return m_Tree; }

 private:
  const std::string m_Text;
  XmlTree m_Tree;
};

/// A document: all of a reading, or an element in it that counts as a document of its own.
struct XmlPart {
  static XmlPart Whole(std::shared_ptr<const XmlReading> reading);

  /// What the thread read last, or an element of it, if this is its text; without a reading
  /// otherwise. `text` is ASCII.
  ///
  /// One after the other who has to do with a document reads it, and takes it apart into elements
  /// that are read as documents: all of them need one reading.
  static XmlPart Recall(std::string_view text);
  /// Lets the thread keep this reading for Recall in place of the one before, unless it is large.
  static void Keep(std::shared_ptr<const XmlReading> reading);

  std::shared_ptr<const XmlReading> m_Reading;  ///< null: none
  std::string_view m_Text;                      ///< in the reading
  XmlTree::Range m_Nodes;
};

}  // namespace BaseSDK
