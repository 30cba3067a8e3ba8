#include "agent/crontab/CrontabAssignment.h"

#include "agent/crontab/CrontabWords.h"

#include <string>

namespace NoxAgent {

namespace {

bool IsQuote(char character) {
  return character == '"' || character == '\'';
}

std::string_view WithoutBlanks(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(CrontabBlanks);
  return begin == std::string_view::npos
             ? std::string_view()
             : text.substr(begin, text.find_last_not_of(CrontabBlanks) - begin + 1);
}

// Takes the name off the text; nothing when it is not closed.
std::optional<std::string_view> TakeName(std::string_view& text) {
  const bool isQuoted = !text.empty() && IsQuote(text[0]);
  const std::size_t begin = isQuoted ? 1 : 0;
  const std::size_t end =
      isQuoted ? text.find(text[0], 1) : text.find_first_of(std::string(CrontabBlanks) + "=");
  if (end == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view name = text.substr(begin, end - begin);
  text.remove_prefix(end + begin);
  return name;
}

bool IsVariableName(std::string_view name) {
  constexpr std::string_view Letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";
  return !name.empty() && Letters.find(name[0]) != std::string_view::npos &&
         name.find_first_not_of(std::string(Letters) + "0123456789") == std::string_view::npos;
}

std::string NoteOn(std::string_view name, std::string_view value) {
  if (name == "MAILTO" && !value.empty()) {
    return "nothing is mailed: what commands put out is in the task's output file and in the log";
  }
  if (name == "RANDOM_DELAY" && value != "0") {
    return "no start is delayed: each task runs at its minute";
  }
  if (name == "LOGNAME") {
    return "left out: it is always the name of the command's user";
  }
  return {};
}

}  // namespace

std::optional<std::variant<CrontabSetting, CronRefusal>> ReadAssignment(std::string_view line) {
  std::string_view rest = WithoutBlanks(line);
  const auto name = TakeName(rest);
  rest = WithoutBlanks(rest);
  if (!name || rest.empty() || rest[0] != '=') {
    return std::nullopt;
  }
  const std::string written(*name);
  if (!IsVariableName(*name)) {
    return CronRefusal{"\"" + written + "\" is no name for a variable",
                       "begin it with a letter, and have only letters, digits and \"_\" in it"};
  }
  std::string_view value = WithoutBlanks(rest.substr(1));
  if (!value.empty() && IsQuote(value[0])) {
    const std::size_t end = value.find(value[0], 1);
    if (end != value.size() - 1) {
      return CronRefusal{"the value of " + written +
                             (end == std::string_view::npos ? " has a quote that is not closed"
                                                            : " goes on behind its closing quote"),
                         "put the other kind of quotes around all of the value"};
    }
    value = value.substr(1, end - 1);
  }
  return CrontabSetting{written, std::string(value), NoteOn(*name, value)};
}

}  // namespace NoxAgent
