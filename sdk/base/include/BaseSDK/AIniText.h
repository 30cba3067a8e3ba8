#pragma once

#include <BaseSDK/AString.h>

#include <stdexcept>
#include <vector>

namespace BaseSDK {

/// An INI text: a line that cannot be read, or a value that whoever reads it finds bad.
/// what() is "FILE:LINE: message".
class AIniError : public std::runtime_error {
 public:
  explicit AIniError(const AString& message) : std::runtime_error(message.ToUtf8()) {}
};

/// An INI file in memory: sections of "key = value" lines, each with its place, so that whoever
/// reads a value can say where a bad one stands. Lines that begin with ";" or "#" are comments. A
/// value is the rest of its line, white space around it removed; nothing in it is special.
class AIniText {
 public:
  struct Entry {
    AString m_Key;
    AString m_Value;
    unsigned m_Line = 0;  ///< from 1
  };
  struct Section {
    AString m_Name;
    unsigned m_Line = 0;
    std::vector<Entry> m_Entries;
  };

  /// `fileName` is only for the errors. Throws AIniError for a line that is none of the above, a
  /// key outside a section, a section or key that is there twice, a character that is not text.
  AIniText(const AString& fileName, const AString& text);

  const AString& FileName() const { return m_FileName; }
  const std::vector<Section>& Sections() const { return m_Sections; }
  AIniError ErrorAt(unsigned line, const AString& message) const;

 private:
  void ReadLine(const AString& line, unsigned number);
  void ReadSection(const AString& line, unsigned number);
  void ReadEntry(const AString& line, unsigned number);

  AString m_FileName;
  std::vector<Section> m_Sections;
};

}  // namespace BaseSDK
