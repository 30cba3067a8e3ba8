#include "agent/daemon/control/TaskBorder.h"

#include "agent/daemon/control/ReplyValue.h"
#include "agent/daemon/control/RequestError.h"
#include "agent/daemon/control/TaskIdCheck.h"
#include "agent/document/AsciiDocument.h"
#include "agent/document/TaskDocumentCheck.h"

#include <AgentInterfacesV3/InterfaceIds.h>
#include <BaseSDK/AText.h>
#include <BaseSDK/AXmlDoc.h>

#include <algorithm>
#include <ctime>

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;
using Corvane::AgentInterfacesV3::AMsgReply;

namespace NoxAgent {
namespace {

constexpr std::size_t MaxRunStateLength = 64;

AString TextOf(const AMsgIn& request, std::string_view name) {
  const auto* const value = request.Find(name);
  const AString* const text = value != nullptr ? std::get_if<AString>(value) : nullptr;
  return text != nullptr ? *text : AString();
}

AString HandlerOf(const AString& document) {
  return BaseSDK::AXmlDoc(document).SelectSingleNode("//HandlerCLSID/text()");
}

void CheckTaskIds(const AString& taskIds, const AString& extension) {
  std::vector<AString> list;
  BaseSDK::AText::StrToVector(taskIds, ":", list);
  if (list.empty()) {
    list.emplace_back();
  }
  for (const AString& taskId : list) {
    CheckTaskId(taskId, extension);
  }
}

// The state becomes the last word of an element's text.
void CheckRunState(const AString& runState) {
  const std::wstring& text = runState.Str();
  const bool good = !text.empty() && text.size() <= MaxRunStateLength &&
                    std::all_of(text.begin(), text.end(), [](wchar_t character) {
                      const bool markup = character == L'<' || character == L'>' ||
                                          character == L'&' || character == L'"' ||
                                          character == L'\'';
                      return character > L' ' && character < 0x7F && !markup;
                    });
  if (!good) {
    throw RequestError(HttpStatus::Unprocessable, "bad-run-state",
                       AString("the run state \"%1\" is to be one word of up to 64 ASCII "
                               "characters, without blanks and markup")
                           .Arg(runState.Left(80)));
  }
}

RequestError RefusalOf(const TaskDocumentProblem& problem) {
  const bool bad = problem.m_Severity == TaskDocumentSeverity::Error;
  AString message = problem.m_Message;
  for (const AString& part : {problem.m_Effect, problem.m_Mend}) {
    message += part.IsEmpty() ? AString() : "; " + part;
  }
  return RequestError(HttpStatus::Unprocessable, bad ? "bad-document" : "never-runs", message,
                      RequestError::Place{problem.m_Line, problem.m_Column});
}

// Where the element's start tag stands, if it is written plainly.
RequestError::Place PlaceOf(const AString& document, const AString& tag) {
  const std::size_t found = document.Find(tag);
  RequestError::Place place{1, 1};
  for (std::size_t index = 0; found != AString::npos && index < found; ++index) {
    const bool newLine = document[index] == L'\n';
    place.m_Line += newLine ? 1 : 0;
    place.m_Column = newLine ? 1 : place.m_Column + 1;
  }
  return place;
}

}  // namespace

TaskBorder::TaskBorder(const Plugins& plugins) : m_Plugins(plugins) {}

std::vector<TaskDocumentProblem> TaskBorder::Check(Plugin& scheduler, AMsgIn& request,
                                                   bool force) const {
  if (request.Interface() != "INoxTaskScheduler") {
    return {};
  }
  const AString configured = scheduler.Config().Peek("task_file_extension");
  const AString extension = configured.IsEmpty() ? AString(".vsk") : configured;
  if (request.Operation() == "AddTask") {
    if (const AString taskId = TextOf(request, "taskId"); !taskId.IsEmpty()) {
      CheckTaskId(taskId, extension);
    }
    return CheckDocument(request, force);
  }
  if (request.Find("taskId") != nullptr) {
    CheckTaskId(TextOf(request, "taskId"), extension);
  }
  if (request.Find("taskIds") != nullptr) {
    CheckTaskIds(TextOf(request, "taskIds"), extension);
  }
  if (request.Find("runState") != nullptr) {
    CheckRunState(TextOf(request, "runState"));
  }
  return {};
}

std::vector<TaskDocumentProblem> TaskBorder::CheckDocument(AMsgIn& request, bool force) const {
  const AString document = TextOf(request, "taskXml");
  std::vector<TaskDocumentProblem> problems =
      CheckTaskDocument(document, static_cast<long>(std::time(nullptr)));
  const auto worst = std::max_element(
      problems.begin(), problems.end(),
      [](const auto& left, const auto& right) { return left.m_Severity < right.m_Severity; });
  if (worst != problems.end() &&
      (worst->m_Severity == TaskDocumentSeverity::Error ||
       (worst->m_Severity == TaskDocumentSeverity::NeverRuns && !force))) {
    throw RefusalOf(*worst);
  }
  const AsciiDocument ascii(document);
  if (ascii.Problem().has_value()) {
    throw RefusalOf(*ascii.Problem());
  }
  if (!force) {
    CheckHandler(document);
  }
  request.Set("taskXml", ascii.Text());
  return problems;
}

AString TaskBorder::ProblemOfJob(const AMsgIn& request, const AMsgReply& reply) const {
  if (request.Interface() != "INoxTaskScheduler" || request.Operation() != "AddTask" ||
      reply.Result() < 1) {
    return AString();
  }
  const auto handler = m_Plugins.FindClass(HandlerOf(TextOf(request, "taskXml")));
  if (handler == nullptr || !handler->Serves(Corvane::AgentInterfacesV3::IID_INoxCommandHandler)) {
    return AString();
  }
  AMsgReply answer;
  AMsgIn question("INoxCommandHandler", "CheckJob", answer);
  question.Set("taskId", Out<AString>(reply, "newTaskId"));
  handler->Send(question);
  return Out<AString>(answer, "problem");
}

void TaskBorder::CheckHandler(const AString& document) const {
  const AString classId = HandlerOf(document);
  const std::shared_ptr<Plugin> handler = m_Plugins.FindClass(classId);
  const auto place = PlaceOf(document, "<HandlerCLSID");
  if (handler == nullptr) {
    throw RequestError(HttpStatus::Unprocessable, "never-runs",
                       AString("no plug-in has the handler \"%1\"; the task's runs would be lost; "
                               "give the identifier that the handler's documentation names")
                           .Arg(classId),
                       place);
  }
  if (!handler->Serves(Corvane::AgentInterfacesV3::IID_INoxScheduledTaskHandler)) {
    throw RequestError(HttpStatus::Unprocessable, "never-runs",
                       AString("the plug-in %1, which \"%2\" stands for, does not run tasks; the "
                               "task's runs would be lost")
                           .Arg(handler->Name(), classId),
                       place);
  }
}

}  // namespace NoxAgent
