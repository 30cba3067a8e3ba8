#include "tests/sdk/interfaces/RecordingObjects.h"

namespace RecordingObjects {

void Calls::Add(const std::string& call) {
  m_All.push_back(call);
  if (m_Hook) {
    m_Hook();
  }
}

namespace {

std::string Text(const AString& value) {
  return "\"" + value.ToUtf8() + "\"";
}

std::string Text(const AStringMap& value) {
  std::string text = "{";
  for (const auto& [key, entry] : value) {
    text += key.ToUtf8() + "=" + entry.ToUtf8() + ";";
  }
  return text + "}";
}

template <class Value>
std::string Text(Value number) {
  return std::to_string(number);
}

template <class... Values>
std::string Call(const std::string& name, const Values&... values) {
  std::string list;
  ((list += (list.empty() ? "" : ", ") + Text(values)), ...);
  return name + "(" + list + ")";
}

}  // namespace

Scheduler::~Scheduler() {
  if (m_Destroyed != nullptr) {
    ++*m_Destroyed;
  }
}

int Scheduler::ObjectDebugInfo(AString& report) {
  m_Calls.Add(Call("ObjectDebugInfo"));
  report = "the report";
  return 11;
}

int Scheduler::NotifyObject(long kind, long code, const AString& text) {
  m_Calls.Add(Call("NotifyObject", kind, code, text));
  return 12;
}

int Scheduler::AgentStart() {
  m_Calls.Add(Call("AgentStart"));
  return 21;
}

int Scheduler::AgentStop() {
  m_Calls.Add(Call("AgentStop"));
  return 22;
}

int Scheduler::AgentRefresh() {
  m_Calls.Add(Call("AgentRefresh"));
  return 23;
}

int Scheduler::AgentQuery() {
  m_Calls.Add(Call("AgentQuery"));
  return 24;
}

int Scheduler::AgentQueryUnload() {
  m_Calls.Add(Call("AgentQueryUnload"));
  return 25;
}

int Scheduler::AgentInstall() {
  m_Calls.Add(Call("AgentInstall"));
  return 26;
}

int Scheduler::AgentUninstall() {
  m_Calls.Add(Call("AgentUninstall"));
  return 27;
}

int Scheduler::AgentUpgrade() {
  m_Calls.Add(Call("AgentUpgrade"));
  return 28;
}

long Scheduler::AddTask(const AString& taskId, const AString& taskXml, AString& newTaskId) {
  m_Calls.Add(Call("AddTask", taskId, taskXml));
  newTaskId = "new-" + taskId;
  return 31;
}

long Scheduler::DeleteTask(const AString& taskId) {
  m_Calls.Add(Call("DeleteTask", taskId));
  return 32;
}

long Scheduler::GetTaskXML(const AString& taskId, AString& taskXml) {
  m_Calls.Add(Call("GetTaskXML", taskId));
  taskXml = "<Task/>";
  return 33;
}

long Scheduler::FindFirstTask(unsigned long& handle, AString& taskId) {
  m_Calls.Add(Call("FindFirstTask", handle));
  handle = ~0UL;
  taskId = "first";
  return -34;
}

long Scheduler::FindNextTask(unsigned long handle, AString& taskId) {
  m_Calls.Add(Call("FindNextTask", handle));
  taskId = "next";
  return 35;
}

long Scheduler::FindClose(unsigned long handle) {
  m_Calls.Add(Call("FindClose", handle));
  return 36;
}

long Scheduler::RefreshTaskList() {
  m_Calls.Add(Call("RefreshTaskList"));
  return m_RefreshResult;
}

long Scheduler::SetRunState(const AString& taskId, const AString& runState) {
  m_Calls.Add(Call("SetRunState", taskId, runState));
  return 38;
}

long Scheduler::GetTaskAttributes(const AString& taskId, AStringMap& attributes,
                                  const AStringMap* inputAttributes) {
  const AString input(inputAttributes == nullptr ? "null" : Text(*inputAttributes).c_str());
  m_Calls.Add(Call("GetTaskAttributes", taskId, attributes, input));
  attributes.emplace("t0", taskId);
  return 39;
}

long Scheduler::EnableTask(const AString& taskIds, bool enable) {
  m_Calls.Add(Call("EnableTask", taskIds, enable));
  return 40;
}

int Handler::ObjectDebugInfo(AString& report) {
  m_Calls.Add(Call("ObjectDebugInfo"));
  report = "the handler's report";
  return 1;
}

int Handler::NotifyObject(long kind, long code, const AString& text) {
  m_Calls.Add(Call("NotifyObject", kind, code, text));
  return 0;
}

long Handler::RunTasks(const AString& batch) {
  m_Calls.Add(Call("RunTasks", batch));
  return -10000;
}

long Handler::RunTasksEx(const AString& batch) {
  m_Calls.Add(Call("RunTasksEx", batch));
  return 52;
}

int CommandHandler::ObjectDebugInfo(AString& report) {
  m_Calls.Add(Call("ObjectDebugInfo"));
  report = "the command handler's report";
  return 2;
}

int CommandHandler::NotifyObject(long kind, long code, const AString& text) {
  m_Calls.Add(Call("NotifyObject", kind, code, text));
  return 0;
}

long CommandHandler::GetRun(const AString& taskId, AStringMap& run) {
  m_Calls.Add(Call("GetRun", taskId));
  run = {{"state", "running"}};
  return 61;
}

long CommandHandler::CheckJob(const AString& taskId, AString& problem) {
  m_Calls.Add(Call("CheckJob", taskId));
  problem = "no such job";
  return -62;
}

long CommandHandler::PutJob(const AString& taskId, const AString& text, AString& problem) {
  m_Calls.Add(Call("PutJob", taskId, text));
  problem = "a bad job";
  return -63;
}

long CommandHandler::GetJob(const AString& taskId, AString& text, AString& problem) {
  m_Calls.Add(Call("GetJob", taskId));
  text = "a job";
  problem = "none with it";
  return 64;
}

long CommandHandler::DeleteJob(const AString& taskId, AString& problem) {
  m_Calls.Add(Call("DeleteJob", taskId));
  problem = "it stays";
  return -65;
}

long CommandHandler::GetOutput(const AString& taskId, const AString& position, AString& text,
                               AString& next) {
  m_Calls.Add(Call("GetOutput", taskId, position));
  text = "an output";
  next = "behind it";
  return 66;
}

long CommandHandler::StopRun(const AString& taskId) {
  m_Calls.Add(Call("StopRun", taskId));
  return 67;
}

}  // namespace RecordingObjects
