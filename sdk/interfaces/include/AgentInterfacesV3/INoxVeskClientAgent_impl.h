#pragma once

#include <AgentInterfacesV3/INoxObject_impl.h>

namespace Corvane::AgentInterfacesV3 {

/// The skeleton of INoxVeskClientAgent, an object's part in the agent's life.
class INoxVeskClientAgent_impl : public virtual INoxObject_impl {
 public:
  INoxVeskClientAgent_impl();
  ~INoxVeskClientAgent_impl() override;

  long CallMethod(const AMsgIn* request) override;

  virtual int AgentStart() = 0;
  virtual int AgentStop() = 0;
  virtual int AgentRefresh() = 0;
  virtual int AgentQuery() = 0;        ///< 1 when the object works
  virtual int AgentQueryUnload() = 0;  ///< 0 when the object would not consent
  virtual int AgentInstall() = 0;
  virtual int AgentUninstall() = 0;
  virtual int AgentUpgrade() = 0;
};

}  // namespace Corvane::AgentInterfacesV3
