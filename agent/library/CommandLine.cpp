#include "agent/library/CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace NoxAgent {

struct CommandLine::Impl {
  std::unique_ptr<CLI::App> m_Owned;  // null for a command: its parent's owns it
  CLI::App& m_App;
  std::vector<std::unique_ptr<CommandLine>> m_Commands;
  std::vector<std::string>* m_Tail = nullptr;  // where the words behind "--" go
};

namespace {

/// Why the command line cannot be read, and where it is explained.
std::string UsageMessage(const CLI::App& app, const CLI::ParseError& error) {
  const auto used = app.get_subcommands();
  if (!used.empty()) {
    return std::string(error.what()) + "; see " + app.get_name() + ' ' + used.front()->get_name() +
           " --help";
  }
  const bool hasCommands = app.get_require_subcommand_min() > 0;
  const auto unknown = app.remaining();
  const std::string what = unknown.empty() ? error.what()
                                           : std::string("there is no ") +
                                                 (hasCommands ? "command or option" : "option") +
                                                 " \"" + unknown.front() + '"';
  return what + "; see " + app.get_name() + " --help";
}

CommandLine::OptionForm FormOf(const CLI::Option& option) {
  CommandLine::OptionForm form;
  for (const std::string& name : option.get_snames()) {
    form.m_Names.push_back("-" + name);
  }
  for (const std::string& name : option.get_lnames()) {
    form.m_Names.push_back("--" + name);
  }
  if (option.get_items_expected_max() > 0) {
    const std::string type = option.get_type_name();  // with what is checked behind a colon
    form.m_Takes = type.substr(0, type.find(':'));
  }
  return form;
}

// "--option=" has an empty value; to the library it would have the next word.
std::vector<std::string> WithEmptyValues(const std::vector<std::string>& words) {
  std::vector<std::string> all;
  for (const std::string& word : words) {
    const std::size_t end = word.size() - 1;
    if (word.starts_with("--") && word.find('=') == end) {
      all.push_back(word.substr(0, end));
      all.emplace_back();
    } else {
      all.push_back(word);
    }
  }
  return all;
}

}  // namespace

CommandLine::Value& CommandLine::Value::Required() {
  (void)m_Option.required();
  return *this;
}

CommandLine::Value& CommandLine::Value::Takes(const char* name) {
  (void)m_Option.type_name(name);
  return *this;
}

CommandLine::Value& CommandLine::Value::Check(
    std::function<std::string(const std::string&)> check) {
  (void)m_Option.check(std::move(check));
  return *this;
}

CommandLine::Value& CommandLine::Value::Between(long least, long most) {
  (void)m_Option.check(CLI::Range(least, most));
  return *this;
}

CommandLine::CommandLine(std::unique_ptr<Impl> impl) : m_Impl(std::move(impl)) {}

CommandLine::CommandLine(const std::string& name, const std::string& summary) {
  auto app = std::make_unique<CLI::App>(summary, name);
  CLI::App& borrowed = *app;
  m_Impl.reset(new Impl{std::move(app), borrowed, {}});
}

CommandLine::~CommandLine() = default;

CommandLine& CommandLine::Command(const std::string& name, const std::string& summary) {
  (void)m_Impl->m_App.require_subcommand(1)->fallthrough();
  std::unique_ptr<Impl> impl(new Impl{nullptr, *m_Impl->m_App.add_subcommand(name, summary), {}});
  m_Impl->m_Commands.emplace_back(new CommandLine(std::move(impl)));
  return *m_Impl->m_Commands.back();
}

void CommandLine::OnUse(std::function<void()> action) {
  (void)m_Impl->m_App.callback(std::move(action));
}

void CommandLine::Footer(const std::string& text) {
  (void)m_Impl->m_App.footer(text);
}

void CommandLine::Explain(const std::string& text) {
  (void)m_Impl->m_App.footer(text + '\n' + m_Impl->m_App.get_footer());
}

void CommandLine::Version(const std::string& text) {
  (void)m_Impl->m_App.set_version_flag("--version", text);
}

CommandLine::Value CommandLine::Option(const std::string& name, std::string& value,
                                       const std::string& help) {
  return Value(*m_Impl->m_App.add_option(name, value, help));
}

CommandLine::Value CommandLine::Option(const std::string& name, long& value,
                                       const std::string& help) {
  return Value(*m_Impl->m_App.add_option(name, value, help));
}

CommandLine::Value CommandLine::Option(const std::string& name, unsigned& value,
                                       const std::string& help) {
  return Value(*m_Impl->m_App.add_option(name, value, help));
}

CommandLine::Value CommandLine::Option(const std::string& name, std::optional<long>& value,
                                       const std::string& help) {
  return Value(*m_Impl->m_App.add_option(name, value, help));
}

CommandLine::Value CommandLine::Option(const std::string& name, std::vector<std::string>& values,
                                       const std::string& help) {
  // One value each time: what follows is an argument again.
  return Value(*m_Impl->m_App.add_option(name, values, help)->allow_extra_args(false));
}

void CommandLine::Flag(const std::string& name, bool& value, const std::string& help) {
  (void)m_Impl->m_App.add_flag(name, value, help);
}

CommandLine::Value CommandLine::Argument(const std::string& name, std::string& value,
                                         const std::string& help) {
  return Option(name, value, help).Takes("");
}

CommandLine::Value CommandLine::Argument(const std::string& name, long& value,
                                         const std::string& help) {
  return Option(name, value, help).Takes("");
}

CommandLine::Value CommandLine::Argument(const std::string& name, std::optional<long>& value,
                                         const std::string& help) {
  return Option(name, value, help).Takes("");
}

CommandLine::Value CommandLine::Argument(const std::string& name, std::vector<std::string>& values,
                                         const std::string& help) {
  return Value(*m_Impl->m_App.add_option(name, values, help)).Takes("");
}

void CommandLine::Tail(const std::string& name, std::vector<std::string>& values,
                       const std::string& help) {
  m_Impl->m_Tail = &values;
  // The library has no such thing: the words never reach it. Its help shows them as an option.
  Explain("-- " + name + "  " + help + '\n');
}

std::vector<std::string> CommandLine::Commands() const {
  std::vector<std::string> names;
  for (const auto& command : m_Impl->m_Commands) {
    names.push_back(command->m_Impl->m_App.get_name());
  }
  return names;
}

const CommandLine* CommandLine::FindCommand(const std::string& name) const {
  for (const auto& command : m_Impl->m_Commands) {
    if (command->m_Impl->m_App.get_name() == name) {
      return command.get();
    }
  }
  return nullptr;
}

std::vector<CommandLine::OptionForm> CommandLine::Options() const {
  std::vector<OptionForm> forms;
  const CLI::App& app = m_Impl->m_App;
  for (const CLI::Option* const option : app.get_options()) {
    if (!option->get_positional()) {
      forms.push_back(FormOf(*option));
    }
  }
  return forms;
}

std::vector<CommandLine::ArgumentForm> CommandLine::Arguments() const {
  std::vector<ArgumentForm> forms;
  const CLI::App& app = m_Impl->m_App;
  for (const CLI::Option* const option : app.get_options()) {
    if (option->get_positional()) {
      forms.push_back({option->get_name(true), option->get_expected_max() > 1});
    }
  }
  return forms;
}

bool CommandLine::HasTail() const {
  return m_Impl->m_Tail != nullptr;
}

// Hands the words behind "--" to the command that takes them; the words before it name it.
std::vector<std::string> CommandLine::WithoutTail(const std::vector<std::string>& words) {
  const auto mark = std::find(words.begin(), words.end(), "--");
  for (auto word = words.begin(); word != mark; ++word) {
    const CommandLine* const command = FindCommand(*word);
    if (command != nullptr && command->HasTail() && mark != words.end()) {
      *command->m_Impl->m_Tail = {mark + 1, words.end()};
      return {words.begin(), mark};
    }
    if (command != nullptr) {
      break;
    }
  }
  return words;
}

bool CommandLine::Parse(const std::vector<std::string>& words, std::ostream& out) {
  CLI::App& app = m_Impl->m_App;
  try {
    std::vector<std::string> all = WithEmptyValues(WithoutTail(words));
    std::reverse(all.begin(), all.end());  // they are taken from the back
    app.parse(std::move(all));
    return true;
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) {
      throw CommandLineError(UsageMessage(app, error));
    }
    (void)app.exit(error, out, out);
    return false;
  }
}

}  // namespace NoxAgent
