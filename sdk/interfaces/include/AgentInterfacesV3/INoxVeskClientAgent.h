#pragma once

#include <AgentInterfacesV3/INoxObject.h>

namespace Corvane::AgentInterfacesV3 {

/// The agent calls these to tell an object of the turns of the agent's life. Objects that need not
/// know of them do not serve this interface; NotifyObject of INoxObject tells of more, and tells
/// every object. [any thread]
class INoxVeskClientAgent : public virtual INoxObject {
 public:
  /// The agent has started, and all plug-ins are loaded. 1.
  virtual int AgentStart() = 0;
  /// The agent is about to stop; plug-ins are unloaded next. 1.
  virtual int AgentStop() = 0;
  /// The agent's policy has been refreshed: configuration is worth reading again. 1.
  virtual int AgentRefresh() = 0;
  /// Whether the object works: 1 when it does.
  virtual int AgentQuery() = 0;
  /// Whether the object would consent to being unloaded: 0 when it would not.
  virtual int AgentQueryUnload() = 0;
  /// The agent has been installed. 0.
  virtual int AgentInstall() = 0;
  /// The agent is about to be removed. 0.
  virtual int AgentUninstall() = 0;
  /// The agent has been upgraded. 0.
  virtual int AgentUpgrade() = 0;

  /// The identifier of this interface, as CIGetObjectInterface takes it.
  static const BaseSDK::AGuid& GetIID();

 protected:
  ~INoxVeskClientAgent() = default;
};

}  // namespace Corvane::AgentInterfacesV3
