#include "agent/handler/CommandHandlerObject.h"

#include <new>

APluginBase* PluginMain() {
  return new (std::nothrow) NoxHandler::CommandHandlerObject_i;
}
