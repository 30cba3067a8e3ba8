#pragma once

#include <cstddef>
#include <string_view>

namespace NoxAgent {

/// What separates the words of a crontab line.
constexpr std::string_view CrontabBlanks = " \t";

/// A word and where it stands: its first byte, counted from 1.
struct CrontabWord {
  std::string_view m_Text;
  std::size_t m_Column = 1;
};

/// Takes the words of a line one by one. The text must outlive the object and its words.
class CrontabWords {
 public:
  /// `column` is that of the text's first byte.
  explicit CrontabWords(std::string_view text, std::size_t column = 1)
      : m_Text(text), m_Column(column) {}

  /// The next word; an empty one at the end of the text.
  CrontabWord Next() {
    SkipBlanks();
    const std::size_t length = m_Text.substr(m_At).find_first_of(CrontabBlanks);
    const CrontabWord word{m_Text.substr(m_At, length), m_Column + m_At};
    m_At += word.m_Text.size();
    return word;
  }

  /// All that no Next has taken, from its first word on.
  CrontabWord Rest() {
    SkipBlanks();
    return {m_Text.substr(m_At), m_Column + m_At};
  }

 private:
  void SkipBlanks() {
    const std::size_t next = m_Text.find_first_not_of(CrontabBlanks, m_At);
    m_At = next == std::string_view::npos ? m_Text.size() : next;
  }

  std::string_view m_Text;
  std::size_t m_Column;
  std::size_t m_At = 0;
};

}  // namespace NoxAgent
