#include "agent/handler/job/Words.h"

#include <sstream>

namespace NoxHandler {

namespace {

// Reads the text character by character; a word is there once it has a character or a quote.
class WordReader {
 public:
  std::optional<std::vector<std::string>> Read(std::string_view text) {
    for (const char character : text) {
      Take(character);
    }
    if (m_Escaped || m_Quote != '\0') {
      return std::nullopt;
    }
    EndWord();
    return std::move(m_Words);
  }

 private:
  void Take(char character) {
    if (m_Escaped) {
      m_Escaped = false;
      Add(character);
    } else if (character == '\\' && m_Quote != '\'') {
      m_Escaped = true;
    } else if (m_Quote != '\0') {
      TakeQuoted(character);
    } else if (character == '\'' || character == '"') {
      m_Quote = character;
      m_InWord = true;
    } else if (character == ' ' || character == '\t') {
      EndWord();
    } else {
      Add(character);
    }
  }

  void TakeQuoted(char character) {
    if (character == m_Quote) {
      m_Quote = '\0';
    } else {
      Add(character);
    }
  }

  void Add(char character) {
    m_Word += character;
    m_InWord = true;
  }

  void EndWord() {
    if (m_InWord) {
      m_Words.push_back(std::move(m_Word));
    }
    m_Word.clear();
    m_InWord = false;
  }

  std::vector<std::string> m_Words;
  std::string m_Word;
  char m_Quote = '\0';
  bool m_InWord = false;
  bool m_Escaped = false;
};

bool NeedsQuotes(const std::string& word) {
  return word.empty() || word.find_first_of(" \t'\"\\") != std::string::npos;
}

std::string Quoted(const std::string& word) {
  if (word.find('\'') == std::string::npos) {
    return "'" + word + "'";
  }
  std::string quoted = "\"";
  for (const char character : word) {
    quoted += character == '"' || character == '\\' ? "\\" : "";
    quoted += character;
  }
  return quoted + "\"";
}

}  // namespace

std::optional<std::vector<std::string>> SplitWords(std::string_view text) {
  return WordReader().Read(text);
}

std::string JoinWords(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    text += (text.empty() ? "" : " ") + (NeedsQuotes(word) ? Quoted(word) : word);
  }
  return text;
}

std::vector<BaseSDK::AString> BlankSeparated(const BaseSDK::AString& text) {
  std::vector<BaseSDK::AString> words;
  std::istringstream stream(text.ToUtf8());
  for (std::string word; stream >> word;) {
    words.push_back(BaseSDK::AString::FromUtf8(word));
  }
  return words;
}

bool HasOuterBlanks(std::string_view text) {
  constexpr std::string_view Blanks = " \t";
  return !text.empty() && (Blanks.find(text.front()) != std::string_view::npos ||
                           Blanks.find(text.back()) != std::string_view::npos);
}

}  // namespace NoxHandler
