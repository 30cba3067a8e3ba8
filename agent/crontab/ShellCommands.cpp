#include "agent/crontab/ShellCommands.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace NoxAgent {

namespace {

class ShellReader {
 public:
  explicit ShellReader(std::string_view line) : m_Line(line) {}

  std::vector<std::vector<std::string>> Read() {
    while (m_At < m_Line.size()) {
      TakeNext();
    }
    EndCommand();
    return std::move(m_Commands);
  }

 private:
  void TakeNext() {
    switch (const char character = m_Line[m_At++]) {
      case '\'':
        AddUpTo('\'');
        break;
      case '"':
        AddUpTo('"');
        break;
      case '\\':
        Add(m_Line.substr(m_At++, 1));
        break;
      case '`':
        m_At = std::min(m_Line.find('`', m_At), m_Line.size() - 1) + 1;
        m_IsInWord = true;
        break;
      case '$':
        TakeDollar();
        break;
      case '<':
      case '>':
        TakeRedirection();
        break;
      case ' ':
      case '\t':
        EndWord();
        break;
      case ';':
      case '&':
      case '|':
      case '(':
      case ')':
      case '\n':
        EndCommand();
        break;
      default:
        Add({&character, 1});
    }
  }

  void AddUpTo(char quote) {
    m_IsInWord = true;
    for (; m_At < m_Line.size() && m_Line[m_At] != quote; ++m_At) {
      if (quote == '"' && m_Line[m_At] == '\\' && m_At + 1 < m_Line.size()) {
        ++m_At;
      }
      m_Word += m_Line[m_At];
    }
    ++m_At;
  }

  void Add(std::string_view text) {
    m_Word += text;
    m_IsInWord = true;
  }

  // Up to the closing bracket; brackets in quotes are counted too.
  void TakeDollar() {
    Add("$");
    int depth = 0;
    while (m_At < m_Line.size() && (depth > 0 || m_Line[m_At] == '(')) {
      depth += m_Line[m_At] == '(' ? 1 : m_Line[m_At] == ')' ? -1 : 0;
      ++m_At;
      if (depth == 0) {
        return;
      }
    }
  }

  // The number before it belongs to it, and so does the next word.
  void TakeRedirection() {
    const bool isNumber = std::all_of(m_Word.begin(), m_Word.end(),
                                      [](unsigned char digit) { return std::isdigit(digit) != 0; });
    if (isNumber) {
      m_Word.clear();
      m_IsInWord = false;
    }
    EndWord();
    while (m_At < m_Line.size() && (m_Line[m_At] == '>' || m_Line[m_At] == '<' ||
                                    m_Line[m_At] == '&' || m_Line[m_At] == '|')) {
      ++m_At;
    }
    m_IsTarget = true;
  }

  void EndWord() {
    if (m_IsInWord && !m_IsTarget) {
      m_Words.push_back(m_Word);
    }
    m_IsTarget = m_IsTarget && !m_IsInWord;
    m_Word.clear();
    m_IsInWord = false;
  }

  void EndCommand() {
    EndWord();
    m_IsTarget = false;
    if (!m_Words.empty()) {
      m_Commands.push_back(std::move(m_Words));
    }
    m_Words.clear();
  }

  const std::string_view m_Line;
  std::size_t m_At = 0;
  std::string m_Word;
  bool m_IsInWord = false;
  bool m_IsTarget = false;  ///< the next word is that of a redirection
  std::vector<std::string> m_Words;
  std::vector<std::vector<std::string>> m_Commands;
};

}  // namespace

std::vector<std::vector<std::string>> ListShellCommands(std::string_view line) {
  return ShellReader(line).Read();
}

}  // namespace NoxAgent
