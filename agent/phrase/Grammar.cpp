#include "agent/phrase/Grammar.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>
#include <utility>

namespace NoxAgent {

// A choice is one of its parts, a sequence all of them; an option has one part.
struct Grammar::Node {
  enum class Kind { Word, Terminal, Rule, Sequence, Choice, Option };

  explicit Node(Kind kind, std::string name = {}) : m_Kind(kind), m_Name(std::move(name)) {}

  Kind m_Kind;
  std::string m_Name;
  std::string m_Label;
  std::vector<std::unique_ptr<Node>> m_Parts;
};

namespace {

constexpr const char* Marks = "[]()|";

std::vector<std::string> Symbols(const std::string& text) {
  std::vector<std::string> symbols;
  bool joins = false;
  for (const char character : text) {
    const bool isMark = std::string(Marks).find(character) != std::string::npos;
    if (character == ' ' || isMark) {
      joins = false;
      if (isMark) {
        symbols.emplace_back(1, character);
      }
      continue;
    }
    if (!joins) {
      symbols.emplace_back();
    }
    symbols.back() += character;
    joins = true;
  }
  return symbols;
}

}  // namespace

// Makes the nodes of one rule's text.
class Grammar::Reader {
 public:
  Reader(const char* text, const std::vector<Rule>& rules)
      : m_Symbols(Symbols(text)), m_Rules(rules) {}

  std::unique_ptr<Node> Whole() {
    auto node = Choice();
    if (m_At != m_Symbols.size()) {
      throw std::logic_error("a grammar has an unexpected " + m_Symbols[m_At]);
    }
    return node;
  }

 private:
  std::unique_ptr<Node> Choice() {
    auto choice = std::make_unique<Node>(Node::Kind::Choice);
    do {
      choice->m_Parts.push_back(Sequence());
    } while (Takes("|"));
    return choice;
  }

  std::unique_ptr<Node> Sequence() {
    auto sequence = std::make_unique<Node>(Node::Kind::Sequence);
    while (m_At < m_Symbols.size() && m_Symbols[m_At] != "|" && m_Symbols[m_At] != "]" &&
           m_Symbols[m_At] != ")") {
      sequence->m_Parts.push_back(Part());
    }
    return sequence;
  }

  std::unique_ptr<Node> Part() {
    if (Takes("[")) {
      auto option = std::make_unique<Node>(Node::Kind::Option);
      option->m_Parts.push_back(Choice());
      Expect("]");
      return option;
    }
    if (Takes("(")) {
      auto group = Choice();
      Expect(")");
      return group;
    }
    return Symbol(m_Symbols[m_At++]);
  }

  std::unique_ptr<Node> Symbol(const std::string& symbol) const {
    const std::size_t equals = symbol.find('=');
    const std::string name = symbol.substr(0, equals);
    const bool isRule = std::any_of(m_Rules.begin(), m_Rules.end(),
                                    [&name](const Rule& rule) { return name == rule.m_Name; });
    const bool isWord = std::isupper(static_cast<unsigned char>(name.front())) == 0;
    auto node = std::make_unique<Node>(isRule   ? Node::Kind::Rule
                                       : isWord ? Node::Kind::Word
                                                : Node::Kind::Terminal,
                                       name);
    node->m_Label = equals == std::string::npos ? name : symbol.substr(equals + 1);
    return node;
  }

  bool Takes(const char* symbol) {
    const bool takes = m_At < m_Symbols.size() && m_Symbols[m_At] == symbol;
    m_At += takes ? 1 : 0;
    return takes;
  }

  void Expect(const char* symbol) {
    if (!Takes(symbol)) {
      throw std::logic_error(std::string("a grammar lacks a ") + symbol);
    }
  }

  const std::vector<std::string> m_Symbols;
  const std::vector<Rule>& m_Rules;
  std::size_t m_At = 0;
};

// Tries all ways through the grammar; the first one that takes all words wins.
class Grammar::Matcher {
 public:
  Matcher(const Grammar& grammar, const std::vector<std::string>& words)
      : m_Grammar(grammar), m_Words(words) {}

  Outcome Run() {
    m_Outcome.m_IsWhole = Match(*m_Grammar.m_Rules.front().second, 0, [this](std::size_t at) {
      if (at == m_Words.size()) {
        return true;
      }
      Reach(at);
      m_Outcome.m_CouldEnd = m_Outcome.m_CouldEnd || at == m_Outcome.m_Understood;
      return false;
    });
    m_Outcome.m_Captures = std::move(m_Captures);
    return std::move(m_Outcome);
  }

 private:
  using Rest = std::function<bool(std::size_t)>;

  bool Match(const Node& node, std::size_t at, const Rest& rest) {
    switch (node.m_Kind) {
      case Node::Kind::Rule:
        return Match(RuleNamed(node.m_Name), at, rest);
      case Node::Kind::Sequence:
        return MatchFrom(node, 0, at, rest);
      case Node::Kind::Choice:
        return std::any_of(node.m_Parts.begin(), node.m_Parts.end(),
                           [&](const auto& part) { return Match(*part, at, rest); });
      case Node::Kind::Option:
        return Match(*node.m_Parts.front(), at, rest) || rest(at);
      default:
        return MatchWord(node, at, rest);
    }
  }

  bool MatchFrom(const Node& sequence, std::size_t part, std::size_t at, const Rest& rest) {
    if (part == sequence.m_Parts.size()) {
      return rest(at);
    }
    return Match(*sequence.m_Parts[part], at, [&sequence, part, &rest, this](std::size_t next) {
      return MatchFrom(sequence, part + 1, next, rest);
    });
  }

  bool MatchWord(const Node& node, std::size_t at, const Rest& rest) {
    const bool fits = at < m_Words.size() && (node.m_Kind == Node::Kind::Word
                                                  ? m_Words[at] == node.m_Name
                                                  : m_Grammar.m_Terminal(node.m_Name, m_Words[at]));
    if (!fits) {
      Reach(at);
      Expect(node.m_Name, at);
      return false;
    }
    m_Captures.push_back({node.m_Label, at});
    if (rest(at + 1)) {
      return true;
    }
    m_Captures.pop_back();
    return false;
  }

  void Reach(std::size_t at) {
    if (at > m_Outcome.m_Understood) {
      m_Outcome.m_Understood = at;
      m_Outcome.m_Expected.clear();
      m_Outcome.m_CouldEnd = false;
    }
  }

  void Expect(const std::string& name, std::size_t at) {
    auto& expected = m_Outcome.m_Expected;
    if (at == m_Outcome.m_Understood &&
        std::find(expected.begin(), expected.end(), name) == expected.end()) {
      expected.push_back(name);
    }
  }

  const Node& RuleNamed(const std::string& name) const {
    const auto& rules = m_Grammar.m_Rules;
    return *std::find_if(rules.begin(), rules.end(), [&name](const auto& rule) {
              return rule.first == name;
            })->second;
  }

  const Grammar& m_Grammar;
  const std::vector<std::string>& m_Words;
  std::vector<Capture> m_Captures;
  Outcome m_Outcome;
};

Grammar::Grammar(const std::vector<Rule>& rules, Terminal terminal)
    : m_Terminal(std::move(terminal)) {
  for (const Rule& rule : rules) {
    m_Rules.emplace_back(rule.m_Name, Reader(rule.m_Text, rules).Whole());
  }
}

Grammar::~Grammar() = default;

Grammar::Outcome Grammar::Match(const std::vector<std::string>& words) const {
  return Matcher(*this, words).Run();
}

std::string Grammar::Shown(const char* text) {
  std::string shown;
  bool isLabel = false;
  for (const char character : std::string(text)) {
    isLabel = character == '=' || (isLabel && std::isalpha(static_cast<unsigned char>(character)));
    shown += isLabel ? "" : std::string(1, character);
  }
  return shown;
}

}  // namespace NoxAgent
