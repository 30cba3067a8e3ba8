#pragma once

#include <string>
#include <vector>

namespace NoxAgent {

/// The words of a schedule, from the arguments of a command line or from one text. Blanks separate
/// words, quotes keep them together, the argument behind "cron" is one word, a number has its unit
/// with it ("10 min", "1 h 30 min", "2 pm"), and a list its next part ("mon, wed").
class PhraseWords {
 public:
  explicit PhraseWords(const std::vector<std::string>& arguments);

  /// As the grammar has them: lower-case, without blanks.
  const std::vector<std::string>& Plain() const { return m_Plain; }
  /// The words as they were written, with [...] around one of them.
  std::string Marked(std::size_t word) const;
  const std::string& Written(std::size_t word) const { return m_Written[word]; }
  /// The words as they were written.
  std::string Text() const;

 private:
  void Add(const std::string& word);
  void Join(const std::string& word);
  bool BelongsToLast(const std::string& plain) const;

  std::vector<std::string> m_Plain, m_Written;
};

}  // namespace NoxAgent
