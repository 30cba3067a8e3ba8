#include "agent/client/Completion.h"

#include "agent/phrase/PhraseGrammar.h"
#include "agent/phrase/PhraseReader.h"

#include <algorithm>

namespace NoxAgent {

namespace {

using Words = std::vector<std::string>;
using OptionForm = CommandLine::OptionForm;

// The words before the one to be completed.
class Beginning {
 public:
  Beginning(const CommandLine& line, CommandContext& context) : m_Line(line), m_Context(context) {}

  void Take(const std::string& word) {
    if (m_IsTail) {
      return;
    }
    if (m_Pending) {
      TakeValue(*m_Pending, word);
      m_Pending.reset();
    } else if (word == "--" && m_Command != nullptr && m_Command->HasTail()) {
      m_IsTail = true;
    } else if (word.rfind('-', 0) == 0 && word.size() > 1) {
      TakeOption(word);
    } else if (m_Command == nullptr) {
      m_Command = m_Line.FindCommand(word);
      m_IsUnknown = m_IsUnknown || m_Command == nullptr;
    } else {
      m_Arguments.push_back(word);
    }
  }

  /// Behind the "--" of a command that takes what follows as it is.
  bool IsTail() const { return m_IsTail; }

  bool IsUnknown() const { return m_IsUnknown; }
  const CommandLine* Command() const { return m_Command; }
  /// The option whose value comes next.
  const std::optional<OptionForm>& Pending() const { return m_Pending; }

  std::vector<OptionForm> Options() const {
    std::vector<OptionForm> options = m_Line.Options();
    if (m_Command != nullptr) {
      const auto more = m_Command->Options();
      options.insert(options.end(), more.begin(), more.end());
    }
    return options;
  }

  std::optional<OptionForm> FindOption(const std::string& name) const {
    for (const OptionForm& option : Options()) {
      const auto& names = option.m_Names;
      if (std::find(names.begin(), names.end(), name) != names.end()) {
        return option;
      }
    }
    return std::nullopt;
  }

  /// What the next argument is called; empty when there can be none.
  std::string Argument() const {
    const auto arguments = m_Command->Arguments();
    if (m_Arguments.size() < arguments.size()) {
      return arguments[m_Arguments.size()].m_Name;
    }
    return arguments.empty() || !arguments.back().m_IsMany ? "" : arguments.back().m_Name;
  }

  /// The words of the command's last argument that are there already.
  Words LastArgument() const {
    const std::size_t before = m_Command->Arguments().size() - 1;
    return {m_Arguments.begin() + static_cast<std::ptrdiff_t>(std::min(before, m_Arguments.size())),
            m_Arguments.end()};
  }

 private:
  void TakeOption(const std::string& word) {
    const std::size_t equals = word.find('=');
    const auto option = FindOption(word.substr(0, equals));
    if (!option || option->m_Takes.empty()) {
      return;
    }
    if (equals == std::string::npos) {
      m_Pending = option;
    } else {
      TakeValue(*option, word.substr(equals + 1));
    }
  }

  void TakeValue(const OptionForm& option, const std::string& value) const {
    if (option.m_Names.back() == "--socket") {
      m_Context.m_Socket = value;
    }
    if (option.m_Names.back() == "--runtime-dir") {
      m_Context.m_RuntimeDirectory = value;
    }
  }

  const CommandLine& m_Line;
  CommandContext& m_Context;
  const CommandLine* m_Command = nullptr;
  std::optional<OptionForm> m_Pending;
  Words m_Arguments;
  bool m_IsTail = false;
  bool m_IsUnknown = false;
};

Words TaskIds(const CommandContext& context) {
  try {
    return context.Agent().TaskIds();
  } catch (const CommandError&) {
    return {};
  } catch (const JsonError&) {
    return {};
  }
}

// What may stand for an option or argument whose value has this name.
Words ValuesOf(const std::string& name, const CommandContext& context) {
  if (name == "FILE" || name == "PATH") {
    return {":files"};
  }
  if (name == "DIR") {
    return {":directories"};
  }
  if (name == "FORMAT") {
    return {"crontab"};
  }
  if (name == "KIND") {
    return {"0", "1", "2", "4", "5", "6", "7", "10"};
  }
  if (name == "STATE") {
    return {"Ok", "Failed"};
  }
  Words values = name == "ID" || name == "TASK" ? TaskIds(context) : Words();
  if (name == "TASK") {
    values.emplace_back(":files");
  }
  return values;
}

// The words that may come next in a schedule; a kind of words offers some of them.
Words WordsOfSchedule(const Words& before) {
  Words words;
  for (const std::string& name : ExpectedBehind(before)) {
    const PhraseTerminal* const terminal = FindPhraseTerminal(name);
    if (terminal == nullptr) {
      words.push_back(name);
    } else {
      words.insert(words.end(), terminal->m_Proposals.begin(), terminal->m_Proposals.end());
    }
  }
  return words;
}

Words NamesOf(const std::vector<OptionForm>& options) {
  Words names;
  for (const OptionForm& option : options) {
    for (const std::string& name : option.m_Names) {
      if (std::find(names.begin(), names.end(), name) == names.end()) {
        names.push_back(name);
      }
    }
  }
  return names;
}

void Print(const Words& values, const std::string& begin, std::ostream& out) {
  for (const std::string& value : values) {
    if (value.rfind(':', 0) == 0 || value.rfind(begin, 0) == 0) {
      out << value << '\n';
    }
  }
}

}  // namespace

void Complete(const CommandLine& line, const std::vector<std::string>& words,
              CommandContext& context) {
  Beginning beginning(line, context);
  const std::string last = words.empty() ? "" : words.back();
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    beginning.Take(words[i]);
  }
  if (beginning.IsUnknown()) {
    return;
  }
  const std::size_t equals = last.find('=');
  if (beginning.IsTail()) {
    Print({":files"}, last, context.m_Out);
  } else if (const auto& pending = beginning.Pending()) {
    Print(ValuesOf(pending->m_Takes, context), last, context.m_Out);
  } else if (last.rfind("--", 0) == 0 && equals != std::string::npos) {
    const auto option = beginning.FindOption(last.substr(0, equals));
    Print(ValuesOf(option ? option->m_Takes : "", context), last.substr(equals + 1), context.m_Out);
  } else if (last.rfind('-', 0) == 0) {
    Print(NamesOf(beginning.Options()), last, context.m_Out);
  } else if (beginning.Command() == nullptr) {
    Print(line.Commands(), last, context.m_Out);
  } else if (beginning.Argument() == "WHEN") {
    Print(WordsOfSchedule(beginning.LastArgument()), last, context.m_Out);
  } else {
    Print(ValuesOf(beginning.Argument(), context), last, context.m_Out);
  }
}

}  // namespace NoxAgent
