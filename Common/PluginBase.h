#pragma once

#include "Common/InterfaceFactory.h"

#include <AgentInterfacesV3/AMsgQueueServer.h>
#include <BaseSDK/AString.h>

/// The frame that all plug-ins of the agent share: the base class of a plug-in's one server object,
/// and the four functions that a plug-in exports.
///
/// A plug-in derives its server object from the skeletons of the interfaces it serves and from
/// APluginBase, supplies PluginMain, and links this folder with Common/plugin.map. The smallest one
/// is tests/plugins/minimal.
class APluginBase : public INoxInterfaceFactory,
                    public virtual Corvane::AgentInterfacesV3::AMsgQueueServer {
 public:
  APluginBase() = default;
  APluginBase(const APluginBase&) = delete;
  APluginBase& operator=(const APluginBase&) = delete;
  virtual ~APluginBase();

  /// Starts the plug-in's work. Called once, when the message queue is open. At least 1 when the
  /// plug-in runs; below that the object stays and waits to be unloaded. [agent thread]
  virtual int Initialize() = 0;
  /// Asks for consent to be unloaded (`forced` 0) or insists (otherwise). At least 1 when all work
  /// has ended: the object is destroyed next. [agent thread]
  virtual int Uninitialize(unsigned int forced) = 0;
  /// 1 and the attribute's text in `value`, or -1 with `value` left alone. [agent thread]
  virtual int GetAttribute(const char* name, BaseSDK::AString& value) = 0;
};

/// The agent finds these functions by name and calls them from one thread at a time, so they take
/// no lock. No exception leaves them: one that the object throws becomes the result -1.
extern "C" {

/// Supplied by each plug-in: a new server object, owned by the caller; null when there is no memory
/// for it. Only PluginInitialize calls it.
APluginBase* PluginMain();

/// Makes the server object, opens its message queue of number `queue` and initialises it. At least
/// 1 for success, negative otherwise. When an object is there already, 1 at once and nothing done.
int PluginInitialize(int queue);

/// Asks the object to end its work, or makes it (`forced`), and destroys it when it agrees. At
/// least 1 when no object is left: the library may be unloaded then, and initialised again.
int PluginUninitialize(bool forced);

/// An attribute of the object, as APluginBase::GetAttribute; -1 when there is no object.
int PluginGetAttributeV3(const char* name, BaseSDK::AString& value);

}  // extern "C"
