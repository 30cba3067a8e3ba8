#include "agent/handler/run/RunGroups.h"

#include "agent/handler/Log.h"
#include "agent/handler/job/JobError.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr std::string_view Ending = ".run";
constexpr std::size_t MostOfId = 100;
constexpr std::size_t MostOfToken = 8;

// For the eyes of administrators the task comes first. The system takes no line ends in such names.
std::string NameOf(const AString& taskId, const std::string& token) {
  constexpr std::string_view Plain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.@";
  std::string name = taskId.ToUtf8().substr(0, MostOfId);
  std::replace_if(
      name.begin(), name.end(),
      [&](char character) { return Plain.find(character) == std::string_view::npos; }, '_');
  return name + "." + token.substr(0, MostOfToken) + std::string(Ending);
}

}  // namespace

RunGroups::RunGroups(const AString& path) : m_Path(path.ToUtf8()) {
  if (!m_Path.empty()) {
    RemoveThoseOfEarlierAgents();
  }
}

void RunGroups::RemoveThoseOfEarlierAgents() const {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(m_Path, error)) {
    if (entry.path().native().ends_with(Ending)) {
      (void)ControlGroup::Remove(entry.path());
    }
  }
}

void RunGroups::RemoveThoseOfEndedRuns() {
  std::erase_if(m_Made, [](const auto& made) {
    return made.second.expired() && ControlGroup::Remove(made.first);
  });
}

std::shared_ptr<ControlGroup> RunGroups::Make(const AString& taskId, const std::string& token,
                                              const ProcessLimits& limits) {
  if (m_Path.empty() || !limits.HasThoseOfGroup()) {
    return nullptr;
  }
  RemoveThoseOfEndedRuns();
  const std::string path = m_Path + "/" + NameOf(taskId, token);
  try {
    auto group = std::make_shared<ControlGroup>(path, limits);
    m_Made[path] = group;
    return group;
  } catch (const JobError& error) {
    ALOG(HandlerLog(), ALogger::Warning, HandlerSource,
         AString("Task '%1': no control group for its run, so its limits are of each process by "
                 "itself: %2")
             .Arg(taskId, error.Message()));
    return nullptr;
  }
}

}  // namespace NoxHandler
