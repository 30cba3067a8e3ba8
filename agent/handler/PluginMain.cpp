#include <new>

#include "agent/handler/CommandHandlerObject.h"

APluginBase* PluginMain() {
  return new (std::nothrow) CommandHandlerObject_i;
}
