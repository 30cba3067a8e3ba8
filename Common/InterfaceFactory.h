#pragma once

#include <BaseSDK/AGuid.h>
#include <BaseSDK/UUID.h>

/// The part of a plug-in's server object that the agent finds through the attribute
/// "InterfaceFactory". Exactly three slots in this order, no destructor slot and no data: the agent
/// calls it through a bare address.
class INoxInterfaceFactory {
 public:
  /// Identifiers as plain bytes. `object` is always written: the interface, or null with a result
  /// below 0. The interface is borrowed and lives as long as the server object. [agent thread]
  virtual int QueryInterface(const UUID& interfaceId, void*& object) = 0;
  /// The same for identifiers of the kit; 0 when found. [agent thread]
  virtual int QueryInterface(const BaseSDK::AGuid& interfaceId, void*& object) = 0;
  /// Generation of the plug-in frame. [agent thread]
  virtual int GetVersion() = 0;

 protected:
  ~INoxInterfaceFactory() = default;
};
