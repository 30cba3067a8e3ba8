#include "agent/crontab/TaskNames.h"

#include "agent/crontab/CommandName.h"

#include <algorithm>
#include <cstddef>

namespace NoxAgent {

namespace {

constexpr std::size_t LongestTaskName = 200;
constexpr std::string_view TaskNameCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
/// Task files have it, so no ID may.
constexpr std::string_view TaskFileExtension = ".vsk";

std::string UsableName(std::string name) {
  std::replace_if(
      name.begin(), name.end(),
      [](char character) { return TaskNameCharacters.find(character) == std::string_view::npos; },
      '-');
  for (std::size_t at = 0; (at = name.find(TaskFileExtension)) != std::string::npos;) {
    name[at] = '-';
  }
  name.erase(0, name.find_first_not_of("-."));
  return name.empty() ? "task" : name;
}

}  // namespace

std::string TaskNames::NameFor(std::string_view command) {
  const std::string name = UsableName(NameOfCommand(command));
  std::string unique = name.substr(0, LongestTaskName);
  for (std::size_t number = 2; !m_Taken.insert(unique).second; ++number) {
    const std::string suffix = "-" + std::to_string(number);
    unique = name.substr(0, LongestTaskName - suffix.size()) + suffix;
  }
  return unique;
}

}  // namespace NoxAgent
