// A plug-in for tests of the agent: it serves the scheduler's and the handler's interfaces without
// doing their work, remembers what it was told, and holds on, fails or refuses as its configuration
// and the requests say. Its report lists what it was told, a line each.
#include "Common/PluginBase.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandlerTable.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler_impl.h>
#include <AgentInterfacesV3/INoxTaskScheduler_impl.h>
#include <AgentSDK/APluginMgr.h>
#include <AgentSDK/NTracker.h>
#include <BaseSDK/AMutex.h>
#include <BaseSDK/AText.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AGuid;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace {

AString Setting(const char* key) {
  return AgentSDK::APluginMgr().GetConfigString("Configuration", key, "(none)");
}

}  // namespace

class RecordingObject_i : public INoxTaskScheduler_impl,
                          public INoxScheduledTaskHandler_impl,
                          public APluginBase {
 public:
  // "fail" and "refuse" are switches; "subscribe" is a list of codes; the rest is only read.
  int Initialize() override {
    const bool fail = BaseSDK::AText::StrToBool(Setting("fail"));
    m_Refuse = BaseSDK::AText::StrToBool(Setting("refuse"));
    m_Hold = Setting("hold");
    Record("path " + Setting("task_storage_path"));
    Record("extension " + Setting("task_file_extension"));
    std::vector<AString> list;
    std::vector<long> codes;
    BaseSDK::AText::StrToVector(Setting("subscribe"), ",", list);
    for (const AString& code : list) {
      codes.push_back(code.ToLong());
    }
    // On a thread of its own: the agent has to find out who asks.
    std::thread([&codes] {
      (void)AgentSDK::NTracker::Subscribe("Recording", codes.data(),
                                          static_cast<unsigned>(codes.size()));
    }).join();
    return fail ? -1 : 1;
  }
  int Uninitialize(unsigned int) override { return m_Refuse ? -1 : 1; }
  int GetAttribute(const char*, AString&) override { return -1; }
  int GetVersion() override { return 3; }
  int QueryInterface(const UUID&, void*&) override { return -1; }
  int QueryInterface(const AGuid&, void*&) override { return -1; }

  long CallMethod(const AMsgIn* request) override {
    return request->Interface() == INoxScheduledTaskHandlerTable.m_Name
               ? INoxScheduledTaskHandler_impl::CallMethod(request)
               : INoxTaskScheduler_impl::CallMethod(request);
  }

  int ObjectDebugInfo(AString& report) override {
    AMutexGuard guard(m_Lock);
    report = m_Report;
    return 1;
  }
  int NotifyObject(long kind, long code, const AString& text) override {
    static const std::thread::id first = std::this_thread::get_id();
    Record(AString("kind %1 code %2 text %3%4")
               .Arg(AString().SetNum(kind, 'd'), AString().SetNum(code, 'd'), text,
                    std::this_thread::get_id() == first ? "" : " on another thread"));
    return 0;
  }

  int AgentStart() override { return Record("AgentStart"); }
  int AgentStop() override { return Record("AgentStop"); }
  int AgentRefresh() override { return Record("AgentRefresh"); }
  int AgentQuery() override { return 1; }
  int AgentQueryUnload() override { return 0; }
  int AgentInstall() override { return 0; }
  int AgentUninstall() override { return 0; }
  int AgentUpgrade() override { return 0; }

  long AddTask(const AString& taskId, const AString& taskXml, AString& newTaskId) override {
    newTaskId = taskId.IsEmpty() ? AString("invented") : taskId;
    AMutexGuard guard(m_Lock);
    m_Documents[newTaskId] = taskXml;
    return 1;
  }
  // Posts what it did.
  long DeleteTask(const AString& taskId) override {
    return AgentSDK::NTracker::PostNotification(101, taskId);
  }
  // The ID "hold" does not come back before somebody opens the pipe "hold" for writing; the ID
  // "throw" throws.
  long GetTaskXML(const AString& taskId, AString& taskXml) override {
    if (taskId == AString("hold")) {
      Record("holding");
      (void)::close(::open(m_Hold.ToUtf8().c_str(), O_RDONLY | O_CLOEXEC));
      return 1;
    }
    if (taskId == AString("throw")) {
      throw std::runtime_error("thrown by the plug-in");
    }
    AMutexGuard guard(m_Lock);
    const auto found = m_Documents.find(taskId);
    if (found == m_Documents.end()) {
      return -1;
    }
    taskXml = found->second;
    return 1;
  }
  // Handles are trusted blindly: a wrong one ends the process.
  long FindFirstTask(unsigned long& handle, AString& taskId) override {
    AMutexGuard guard(m_Lock);
    handle = ++m_LastHandle;
    m_Open.insert(handle);
    taskId = "first";
    return 1;
  }
  long FindNextTask(unsigned long handle, AString& taskId) override {
    AMutexGuard guard(m_Lock);
    if (!m_Open.contains(handle)) {
      std::abort();
    }
    taskId = "next";
    return 1;
  }
  long FindClose(unsigned long handle) override {
    AMutexGuard guard(m_Lock);
    if (m_Open.erase(handle) != 1) {
      std::abort();
    }
    m_Report += AString("closed; %1 open\n")
                    .Arg(AString().SetNum(static_cast<unsigned long>(m_Open.size()), 'u'));
    return 0;
  }
  long RefreshTaskList() override { return 1; }
  // Gives the setting of that name.
  long SetRunState(const AString& taskId, const AString& runState) override {
    Record("state of " + taskId + ": " + runState +
           "; setting: " + Setting(taskId.ToUtf8().c_str()));
    return 0;
  }
  long GetTaskAttributes(const AString& taskId, AStringMap& attributes,
                         const AStringMap* inputAttributes) override {
    attributes.emplace("t0", taskId);
    attributes.emplace(
        "inputs", inputAttributes == nullptr
                      ? AString("none")
                      : AString().SetNum(static_cast<unsigned long>(inputAttributes->size()), 'u'));
    return 1;
  }
  long EnableTask(const AString& taskIds, bool enable) override {
    Record(AString(enable ? "enable " : "disable ") + taskIds);
    return 1;
  }

  long RunTasks(const AString& batch) override { return Record("run " + batch); }
  long RunTasksEx(const AString& batch) override { return Record("run " + batch); }

 private:
  int Record(const AString& line) {
    AMutexGuard guard(m_Lock);
    m_Report += line + "\n";
    return 1;
  }

  bool m_Refuse = false;  // constant once initialised, as the next
  AString m_Hold;
  BaseSDK::AMutex m_Lock;
  AString m_Report NOX_GUARDED_BY(m_Lock);
  std::map<AString, AString> m_Documents NOX_GUARDED_BY(m_Lock);
  std::set<unsigned long> m_Open NOX_GUARDED_BY(m_Lock);
  unsigned long m_LastHandle NOX_GUARDED_BY(m_Lock) = 0;
};

APluginBase* PluginMain() {
  return new RecordingObject_i;
}
