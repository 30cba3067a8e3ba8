#include "tests/support/scheduler/TestScheduler.h"

#include <BaseSDK/ADateTime.h>

namespace TestSupport {

using BaseSDK::ADateTime;
using BaseSDK::AString;

namespace {

constexpr const char* Extension = ".vsk";
constexpr const wchar_t* TimeFormat = L"%Y-%m-%d %H:%M:%S";

constexpr long AgentStarted = 0;
constexpr long PolicyRefreshStarted = 1;

AString Wide(const std::string& text) {
  return AString::FromUtf8(text);
}

}  // namespace

TestScheduler::TestScheduler(const char* zone, const std::string& now) : m_Zone(zone) {
  Clock().Start(Local(now));
  m_Host.SetConfig(L"Configuration", L"task_storage_path", Wide(m_Directory.Path().string()));
  m_Host.SetConfig(L"Configuration", L"task_file_extension", Extension);
  m_Host.AddHandler(TaskXml::HandlerId, m_Handler);
}

TestScheduler::~TestScheduler() {
  Stop();
}

bool TestScheduler::Start() {
  m_Object = std::make_unique<TaskSchedulerObject_i>();
  const bool started = m_Object->Initialize() >= 1;
  Clock().Settle();
  return started;
}

void TestScheduler::Stop() {
  if (m_Object != nullptr) {
    (void)m_Object->Uninitialize(1);
    m_Object = nullptr;
  }
}

void TestScheduler::Notify(long kind, long code, const std::string& text) {
  (void)m_Object->NotifyObject(kind, code, Wide(text));
  Clock().Settle();
}

void TestScheduler::OpenGate() {
  Notify(AgentStarted);
}

void TestScheduler::CloseGate() {
  Notify(PolicyRefreshStarted);
}

long TestScheduler::AddTask(const std::string& id, const TaskXml& document) {
  return AddTask(id, document.Utf8());
}

long TestScheduler::AddTask(const std::string& id, const std::string& document) {
  AString newId;
  const long result = m_Object->AddTask(Wide(id), Wide(document), newId);
  Clock().Settle();
  return result;
}

std::string TestScheduler::AddUnnamedTask(const TaskXml& document) {
  AString newId;
  const long result = m_Object->AddTask(AString(), document.Text(), newId);
  Clock().Settle();
  return result >= 1 ? newId.ToUtf8() : std::string();
}

long TestScheduler::DeleteTask(const std::string& id) {
  const long result = m_Object->DeleteTask(Wide(id));
  Clock().Settle();
  return result;
}

long TestScheduler::EnableTask(const std::string& ids, bool enable) {
  const long result = m_Object->EnableTask(Wide(ids), enable);
  Clock().Settle();
  return result;
}

long TestScheduler::SetRunState(const std::string& id, const std::string& state) {
  return m_Object->SetRunState(Wide(id), Wide(state));
}

std::string TestScheduler::Report() {
  AString report;
  (void)m_Object->ObjectDebugInfo(report);
  return report.ToUtf8();
}

std::string TestScheduler::Attribute(const std::string& id, const std::string& name) {
  TaskSchedulerObject_i::AttributeMap attributes;
  (void)m_Object->GetTaskAttributes(Wide(id), attributes, nullptr);
  const auto found = attributes.find(Wide(name));
  return found != attributes.end() ? found->second.ToUtf8() : std::string();
}

long TestScheduler::Local(const std::string& time) {
  return ADateTime(Wide(time)).GetTime();
}

std::string TestScheduler::Show(long time) {
  return ADateTime(time).ToString(TimeFormat).ToUtf8();
}

void TestScheduler::RunUntil(const std::string& time) {
  Clock().RunUntil(Local(time));
}

void TestScheduler::RunFor(long seconds) {
  Clock().RunFor(std::int64_t{seconds} * 1000);
}

std::vector<std::string> TestScheduler::Batches() const {
  std::vector<std::string> batches;
  for (const FakeHandler::Call& call : m_Handler.Calls()) {
    if (call.m_Operation == "RunTasksEx") {
      batches.push_back(call.m_Batch.ToUtf8());
    }
  }
  return batches;
}

std::vector<std::string> TestScheduler::TimedBatches() const {
  std::vector<std::string> batches;
  for (const FakeHandler::Call& call : m_Handler.Calls()) {
    if (call.m_Operation == "RunTasksEx") {
      batches.push_back(Show(call.m_Time) + ' ' + call.m_Batch.ToUtf8());
    }
  }
  return batches;
}

bool TestScheduler::HasFile(const std::string& id) const {
  return m_Directory.Has(id + Extension);
}

std::string TestScheduler::FileText(const std::string& id) const {
  return m_Directory.Read(id + Extension);
}

std::vector<std::string> TestScheduler::Files() const {
  std::vector<std::string> ids;
  for (const std::string& name : m_Directory.Names()) {
    const std::size_t end = name.rfind(Extension);
    if (end != std::string::npos) {
      ids.push_back(name.substr(0, end));
    }
  }
  return ids;
}

}  // namespace TestSupport
