#pragma once

#include <AgentInterfacesV3/INoxObject.h>

namespace Corvane::AgentInterfacesV3 {

/// An object's part in the agent's life, as the agent sees it.
class INoxVeskClientAgent : public virtual INoxObject {
 public:
  virtual int AgentStart() = 0;
  virtual int AgentStop() = 0;
  virtual int AgentRefresh() = 0;
  virtual int AgentQuery() = 0;
  virtual int AgentQueryUnload() = 0;
  virtual int AgentInstall() = 0;
  virtual int AgentUninstall() = 0;
  virtual int AgentUpgrade() = 0;

  static const BaseSDK::AGuid& GetIID();

 protected:
  ~INoxVeskClientAgent() = default;
};

}  // namespace Corvane::AgentInterfacesV3
