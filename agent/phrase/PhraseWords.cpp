#include "agent/phrase/PhraseWords.h"

#include "agent/phrase/PhraseParts.h"
#include "agent/phrase/PhraseValues.h"

#include <algorithm>
#include <cctype>

namespace NoxAgent {

namespace {

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char character) {
    return static_cast<char>(std::tolower(character));
  });
  return text;
}

bool IsBlank(char character) {
  return character == ' ' || character == '\t' || character == '\n';
}

// What quotes hold is one word, even an empty one.
std::vector<std::string> SplitAtBlanks(const std::string& text) {
  std::vector<std::string> words;
  char quote = '\0';
  bool isWord = false;
  for (const char character : text) {
    const bool isMark = quote == '\0' ? character == '\'' || character == '"' : character == quote;
    if (quote == '\0' && IsBlank(character)) {
      isWord = false;
      continue;
    }
    if (!isWord) {
      words.emplace_back();
      isWord = true;
    }
    if (isMark) {
      quote = quote == '\0' ? character : '\0';
    } else {
      words.back() += character;
    }
  }
  return words;
}

bool IsNumber(const std::string& word) {
  return !word.empty() && word.find_first_not_of(DecimalDigits) == std::string::npos;
}

// Whether the words are one value: "10 min", "1 h 30 min" up to its "1 h 30", "2:30 pm".
bool IsContinued(const std::string& value, const std::string& word) {
  const std::string length = value.substr(0, value.find_last_not_of(DecimalDigits) + 1);
  const bool endsInNumber = length.size() < value.size();
  if (IsLengthUnit(word)) {
    return endsInNumber && (length.empty() || IsLength(length));
  }
  if (word == "am" || word == "pm") {
    return IsNumber(value) || IsClock(value);
  }
  const bool beginsWithNumber = word.find_first_of(DecimalDigits) == 0;
  return IsLength(value) && beginsWithNumber && (IsNumber(word) || IsLength(word));
}

}  // namespace

PhraseWords::PhraseWords(const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    if (!m_Plain.empty() && m_Plain.back() == "cron") {
      Add(argument);
      continue;
    }
    for (const std::string& word : SplitAtBlanks(argument)) {
      Join(word);
    }
  }
}

void PhraseWords::Join(const std::string& word) {
  const std::string plain = LowerCase(word);
  if (!BelongsToLast(plain)) {
    Add(word);
    return;
  }
  m_Plain.back() += plain;
  m_Written.back() += " " + word;
}

bool PhraseWords::BelongsToLast(const std::string& plain) const {
  if (m_Plain.empty()) {
    return false;
  }
  const std::string& last = m_Plain.back();
  return last.ends_with(',') || plain.starts_with(',') ||
         IsContinued(last.substr(last.rfind(',') + 1), plain.substr(0, plain.find(',')));
}

void PhraseWords::Add(const std::string& word) {
  m_Plain.push_back(LowerCase(word));
  m_Written.push_back(word);
}

std::string PhraseWords::Marked(std::size_t word) const {
  std::string text;
  for (std::size_t i = 0; i < m_Written.size(); ++i) {
    const std::string written = i == word ? "[" + m_Written[i] + "]" : m_Written[i];
    text += (i == 0 ? "" : " ") + written;
  }
  return text;
}

std::string PhraseWords::Text() const {
  return Marked(m_Written.size());
}

}  // namespace NoxAgent
