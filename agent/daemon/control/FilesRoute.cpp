#include "agent/daemon/control/FilesRoute.h"

#include "agent/daemon/control/RequestBody.h"
#include "agent/daemon/control/RequestError.h"
#include "agent/daemon/process/AgentLog.h"

#include <cerrno>
#include <cstring>

using BaseSDK::AFileSystem;
using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

Json Describe(const RefusedFolder::Entry& entry) {
  Json json = {{"name", entry.m_Name},
               {"time", entry.m_Time},
               {"mended", !entry.m_Refusal.has_value()},
               {"reason", ""}};
  if (entry.m_Refusal.has_value()) {
    json["reason"] = entry.m_Refusal->m_Reason.ToUtf8();
    json["line"] = entry.m_Refusal->m_Line;
    json["column"] = entry.m_Refusal->m_Column;
  }
  return json;
}

// A name alone, so that no path leads out of the folder.
std::string NameIn(const RequestBody& body) {
  std::string name = body.Text("name").ToUtf8();
  const bool isBad = name.empty() || name == "." || name == ".." ||
                     name.find('/') != std::string::npos || name.find('\0') != std::string::npos;
  if (isBad) {
    throw RequestError(HttpStatus::Unprocessable, "bad-file-name",
                       "\"name\" is to be the name of a file as GET /v1/files lists it");
  }
  return name;
}

RequestError Unknown(const std::string& name) {
  return RequestError(HttpStatus::NotFound, "unknown-file",
                      AString("there is no file \"%1\" there; GET /v1/files lists them")
                          .Arg(AString::FromUtf8(name).Left(200)));
}

void ThrowOn(int error, const std::string& name, const char* what) {
  if (error == ENOENT) {
    throw Unknown(name);
  }
  if (error != 0) {
    throw RequestError(HttpStatus::Unprocessable, "refused",
                       AString("the file \"%1\" cannot be %2: %3")
                           .Arg(AString::FromUtf8(name), what, std::strerror(error)));
  }
}

}  // namespace

FilesRoute::FilesRoute(const TaskStore& store, OperationRoute& operations)
    : m_Store(store), m_Operations(operations) {}

Json FilesRoute::List() const {
  Json refused = Json::List{};
  Json strays = Json::List{};
  if (m_Store.Files() != nullptr) {
    for (const auto& entry : m_Store.Files()->Refused().List()) {
      refused.Append(Describe(entry));
    }
    for (const auto& stray : m_Store.Files()->Strays().List()) {
      strays.Append({{"name", stray.m_Name}, {"reason", stray.m_Reason.ToUtf8()}});
    }
  }
  return {{"refused", refused}, {"strays", strays}};
}

Json FilesRoute::TakeBack(const std::string& body) {
  const std::string name = NameIn(RequestBody(body, {"name"}));
  StoreFileSystem* const files = m_Store.Files();
  if (files == nullptr) {
    throw Unknown(name);
  }
  std::string document;
  FileIdentity identity;
  ThrowOn(files->Refused().Read(name, document, identity), name, "read");
  if (const auto refusal = JudgeDocument(document)) {
    throw RequestError(HttpStatus::Unprocessable, "bad-document", refusal->m_Reason,
                       RequestError::Place{refusal->m_Line, refusal->m_Column});
  }
  const std::string taskId = files->Directory().TaskIdOf(name);
  AFileSystem::Info info;
  if (files->GetInfo(files->Directory().FileOf(taskId).c_str(), info) == 0) {
    throw RequestError(HttpStatus::Conflict, "task-exists",
                       AString("there is a task %1 by now: delete it, or rename the refused file")
                           .Arg(AString::FromUtf8(taskId)));
  }
  Json answer = AddTask(taskId, document);
  ThrowOn(files->Refused().RemoveUnchanged(name, identity), name,
          "removed, although its task was added");
  ALOG(AgentLog(), ALogger::Notice, "FilesRoute",
       AString("Took the refused file %1 back as the task %2")
           .Arg(AString::FromUtf8(name), AString::FromUtf8(taskId)));
  return answer;
}

// Goes through the same checks as if a client had added the task.
Json FilesRoute::AddTask(const std::string& taskId, const std::string& document) {
  Json answer = m_Operations.Perform(
      *m_Operations.PrepareAddTask({{"taskId", taskId}, {"taskXml", document}}, false));
  if (answer.At("result").Long() < 1) {
    throw RequestError(HttpStatus::Internal, "operation-failed",
                       "the scheduler could not store the task; the refused file stays");
  }
  return answer;
}

Json FilesRoute::Remove(const std::string& body) {
  const RequestBody arguments(body, {"name", "from"});
  const std::string name = NameIn(arguments);
  const AString from = arguments.Text("from");
  StoreFileSystem* const files = m_Store.Files();
  if (from != AString("refused") && from != AString("tasks")) {
    throw RequestError(HttpStatus::BadRequest, "mistyped-argument",
                       "\"from\" is to be \"refused\" or \"tasks\"");
  }
  if (files == nullptr) {
    throw Unknown(name);
  }
  if (from == AString("refused")) {
    ThrowOn(files->Refused().Remove(name), name, "removed");
  } else {
    AFileSystem::Info info;
    ThrowOn(files->GetInfo((files->Directory().Path() + "/" + name).c_str(), info), name, "found");
    if (!files->Strays().WhyStray(name).has_value()) {
      throw RequestError(
          HttpStatus::Conflict, "is-a-task",
          AString("the file \"%1\" is a task's: delete the task").Arg(AString::FromUtf8(name)));
    }
    ThrowOn(files->Strays().Remove(name), name, "removed");
  }
  ALOG(AgentLog(), ALogger::Notice, "FilesRoute",
       AString("Removed the file %1 as asked").Arg(AString::FromUtf8(name)));
  return {{"result", 1}};
}

}  // namespace NoxAgent
