#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace NoxAgent {

/// A grammar that is written down as text, so that what parses a language is also what is shown to
/// people. A rule is a name and its alternatives:
///
///     WHEN   RULE [and WHEN]
///     RULE   now | daily at CLOCK
///
/// Lower-case words stand for themselves. Upper-case ones are other rules or else terminals: words
/// of a kind, which `Terminal` recognises. `[...]` may be left out, `|` separates alternatives, and
/// `(...)` groups. `CLOCK=end` is a CLOCK that a match calls "end"; it is shown as CLOCK.
///
/// A rule must not begin with itself. Constant after it is made; any thread may ask.
class Grammar {
 public:
  struct Rule {
    const char* m_Name;
    const char* m_Text;
  };
  /// Whether the word is of the terminal's kind.
  using Terminal = std::function<bool(const std::string& terminal, const std::string& word)>;

  /// The first rule is that of the whole.
  Grammar(const std::vector<Rule>& rules, Terminal terminal);
  ~Grammar();

  /// What a match found, in the order of the words: every word by its label, which is the word
  /// itself, a terminal's name, or what stands behind its "=".
  struct Capture {
    std::string m_Label;
    std::size_t m_Word;  ///< from 0
  };
  struct Outcome {
    bool m_IsWhole = false;
    std::vector<Capture> m_Captures;  ///< of a match of all words
    /// How many words can be understood from the beginning on; the one behind them cannot.
    std::size_t m_Understood = 0;
    /// What could stand there: words and names of terminals, each once, in the grammar's order.
    std::vector<std::string> m_Expected;
    bool m_CouldEnd = false;  ///< the words could also end there
  };
  Outcome Match(const std::vector<std::string>& words) const;

  /// The text as people read it, without labels.
  static std::string Shown(const char* text);

 private:
  struct Node;
  class Reader;
  class Matcher;

  std::vector<std::pair<std::string, std::unique_ptr<Node>>> m_Rules;
  Terminal m_Terminal;
};

}  // namespace NoxAgent
