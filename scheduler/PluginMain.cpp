#include "scheduler/TaskSchedulerObject.h"

#include <new>

APluginBase* PluginMain() {
  return new (std::nothrow) TaskSchedulerObject_i;
}
