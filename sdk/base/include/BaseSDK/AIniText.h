#pragma once

#include <BaseSDK/AString.h>

#include <stdexcept>
#include <vector>

namespace BaseSDK {

/// An error in an INI text: a line that cannot be read, or a value that its reader finds bad.
/// what() is "FILE:LINE: message". The class itself quotes names of sections and keys, never a
/// value nor a line that has none: others may be told of an error than those who may read the file.
class AIniError : public std::runtime_error {
 public:
  explicit AIniError(const AString& message) : std::runtime_error(message.ToUtf8()) {}
};

/// An INI file in memory: sections of "key = value" lines, each with its place, so that the
/// reader of a value can say where a bad one stands. Lines that begin with ";" or "#" are comments.
/// A value is the rest of its line, white space around it removed; nothing in it is special.
class AIniText {
 public:
  /// One line "key = value".
  struct Entry {
    AString m_Key;
    AString m_Value;
    unsigned m_Line = 0;  ///< from 1
  };
  /// A line "[Name]" and the entries that follow it.
  struct Section {
    AString m_Name;
    unsigned m_Line = 0;
    std::vector<Entry> m_Entries;  ///< no key is there twice
  };

  /// `fileName` is only for the errors. A byte order mark at the beginning is left out. Throws
  /// AIniError for a line that is none of the above, a key outside a section, a section or key that
  /// is there twice, a control character, or bytes that are not UTF-8.
  AIniText(const AString& fileName, const AString& text);

  const AString& FileName() const { return m_FileName; }
  /// In the order of the text, as are the entries of each section.
  const std::vector<Section>& Sections() const { return m_Sections; }
  /// Makes the error for a value in that line that the caller finds bad. The caller throws it.
  AIniError ErrorAt(unsigned line, const AString& message) const;

 private:
  void ReadLine(const AString& line, unsigned number);
  void ReadSection(const AString& line, unsigned number);
  void ReadEntry(const AString& line, unsigned number);

  AString m_FileName;
  std::vector<Section> m_Sections;
};

}  // namespace BaseSDK
