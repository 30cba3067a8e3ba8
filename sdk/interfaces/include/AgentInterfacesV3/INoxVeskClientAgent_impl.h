#pragma once

#include <AgentInterfacesV3/INoxObject_impl.h>

namespace Corvane::AgentInterfacesV3 {

/// The skeleton of INoxVeskClientAgent, for objects that want to hear of the agent's life.
/// INoxVeskClientAgent.h says when each operation is called.
class INoxVeskClientAgent_impl : public virtual INoxObject_impl {
 public:
  INoxVeskClientAgent_impl();
  ~INoxVeskClientAgent_impl() override;

  /// Answers requests for this interface, and hands those for the interfaces it derives from on to
  /// their skeletons.
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
