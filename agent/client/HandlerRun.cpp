#include "agent/client/HandlerRun.h"

#include "agent/client/LocalTime.h"

#include <BaseSDK/AString.h>

#include <iterator>

namespace NoxAgent {

namespace {

using Texts = std::map<std::string, std::string>;

/// In the order of the phases.
constexpr const char* PhaseNames[] = {"waiting", "running", "ended", "none"};

std::string TextIn(const Texts& run, const char* key) {
  const auto found = run.find(key);
  return found == run.end() ? "" : found->second;
}

std::optional<long> NumberIn(const Texts& run, const char* key) {
  const std::string text = TextIn(run, key);
  return text.empty() ? std::nullopt : std::optional(BaseSDK::AString::FromUtf8(text).ToLong(10));
}

std::string At(const char* preposition, const std::optional<long>& moment) {
  return moment ? std::string(" ") + preposition + " " + LocalTimeText(*moment) : "";
}

std::string Because(const std::string& reason) {
  return (reason.empty() ? "" : ": " + reason) + ".";
}

Json OrNull(const std::string& text) {
  return text.empty() ? Json() : Json(text);
}

}  // namespace

std::optional<HandlerRun> ReadHandlerRun(const std::optional<Texts>& answer) {
  if (!answer) {
    return std::nullopt;
  }
  const std::string phase = TextIn(*answer, "state");
  for (std::size_t i = 0; i < std::size(PhaseNames); ++i) {
    if (phase == PhaseNames[i]) {
      return HandlerRun{static_cast<HandlerRun::Phase>(i),
                        NumberIn(*answer, "start"),
                        NumberIn(*answer, "end"),
                        NumberIn(*answer, "pid"),
                        TextIn(*answer, "result"),
                        TextIn(*answer, "reason"),
                        NumberIn(*answer, "queued"),
                        NumberIn(*answer, "skipped"),
                        TextIn(*answer, "skipReason"),
                        !TextIn(*answer, "final").empty(),
                        NumberIn(*answer, "number").value_or(0),
                        NumberIn(*answer, "runs").value_or(0),
                        NumberIn(*answer, "skips").value_or(0)};
    }
  }
  return std::nullopt;
}

std::string HandlerRun::ReasonAgainst(const std::string& state) const {
  if (state == "Skipped") {
    return m_SkipReason;
  }
  return m_Phase == Phase::Ended && m_Result != "Ok" ? m_Reason : "";
}

std::vector<std::string> HandlerRun::Sentences() const {
  std::vector<std::string> sentences;
  if (m_Phase == Phase::Running) {
    const std::string process = m_Pid ? ", as process " + std::to_string(*m_Pid) : "";
    sentences.push_back("A run is under way" + At("since", m_Start) + process + ".");
  }
  if (m_Phase == Phase::Waiting) {
    sentences.push_back(m_Start ? "The run" + At("of", m_Start) + " goes on with another attempt" +
                                      Because(m_Reason)
                                : "A run waits to be started" + Because(m_Reason));
  }
  if (m_Phase == Phase::Ended && m_Result != "Ok") {
    const std::string final =
        m_IsFinal ? " It is not tried again: the scheduler was told that it is finished." : "";
    sentences.push_back("Its run" + At("of", m_Start) + " failed" + Because(m_Reason) + final);
  }
  if (m_Queued) {
    sentences.push_back("Its next run has been waiting for the end of that one" +
                        At("since", m_Queued) + ".");
  }
  if (m_Skipped) {
    sentences.push_back("Its start" + At("at", m_Skipped) + " was left out" +
                        Because(m_SkipReason));
  }
  return sentences;
}

Json ToJson(const std::optional<HandlerRun>& run) {
  if (!run) {
    return {};
  }
  return {{"state", PhaseNames[static_cast<std::size_t>(run->m_Phase)]},
          {"start", run->m_Start},
          {"end", run->m_End},
          {"pid", run->m_Pid},
          {"result", run->m_Result},
          {"reason", OrNull(run->m_Reason)},
          {"queued", run->m_Queued},
          {"skipped", run->m_Skipped},
          {"skipReason", OrNull(run->m_SkipReason)},
          {"final", run->m_IsFinal}};
}

}  // namespace NoxAgent
