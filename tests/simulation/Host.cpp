#include "tests/simulation/Host.h"

#include "tests/simulation/Disk.h"

namespace Simulation {

using BaseSDK::AGuid;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::INoxScheduledTaskHandler;
using Corvane::AgentInterfacesV3::TASK_HANDLER_DECLINED;

const char* Name(Manner manner) {
  static constexpr const char* Names[] = {
      "accepts",     "accepts the old way",  "accepts by an error",
      "declines",    "declines the old way", "is missing",
      "takes hours", "reports failure",      "kills"};
  return Names[static_cast<std::size_t>(manner)];
}

/// One opening of a handler; released by its client.
class Host::Handler : public INoxScheduledTaskHandler {
 public:
  Handler(Host& host, const std::string& handlerId) : m_Host(host), m_HandlerId(handlerId) {
    ++m_Host.m_OpenHandlers;
  }
  virtual ~Handler() { --m_Host.m_OpenHandlers; }

  long RunTasksEx(const AString& batch) override {
    const Manner manner = m_Host.m_Manners[m_HandlerId];
    m_Host.m_Observer.OnBatch(m_HandlerId, batch.ToUtf8(), manner);
    switch (manner) {
      case Manner::AcceptsOldWay:
      case Manner::DeclinesOldWay:
        return 0;
      case Manner::AcceptsByError:
        return -1;
      case Manner::Declines:
        return TASK_HANDLER_DECLINED;
      default:
        return 1;
    }
  }

  long RunTasks(const AString&) override {
    const Manner manner = m_Host.m_Manners[m_HandlerId];
    return manner == Manner::DeclinesOldWay   ? TASK_HANDLER_DECLINED
           : manner == Manner::AcceptsByError ? -5
                                              : 1;
  }

  long Release() override {
    delete this;
    return 0;
  }
  int ObjectDebugInfo(AString&) override { return 0; }
  int NotifyObject(long, long, const AString&) override { return 0; }

 private:
  Host& m_Host;
  const std::string m_HandlerId;
};

Host::Host(Observer& observer) : m_Observer(observer), m_Before(AHost::Replace(this)) {}

Host::~Host() {
  (void)AHost::Replace(m_Before);
}

long Host::Subscribe(const AString&, const long*, unsigned) {
  return 1;
}

long Host::PostNotification(long code, const AString& text) {
  if (!m_Observer.IsDead()) {
    m_Observer.OnPosted(code, text.ToUtf8());
  }
  return 1;
}

AString Host::GetConfigString(const AString&, const AString& key, const AString&) {
  return key == L"task_storage_path" ? AString(Disk::Directory) : AString(Disk::Extension);
}

long Host::OpenObject(const AString& classId, const AGuid&, unsigned long, void*& object) {
  const std::string handlerId = classId.ToUtf8();
  const auto found = m_Manners.find(handlerId);
  object = nullptr;
  if (m_Observer.IsDead()) {
    return -1;
  }
  if (found == m_Manners.end() || found->second == Manner::IsMissing) {
    m_Observer.OnMissing(handlerId);
    return -1;
  }
  object = static_cast<INoxScheduledTaskHandler*>(new Handler(*this, handlerId));
  return 1;
}

}  // namespace Simulation
