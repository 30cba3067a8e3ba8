#include "scheduler/TaskSchedulerObject.h"

APluginBase* PluginMain() {
  try {
    return new TaskSchedulerObject_i;
  } catch (...) {
    return nullptr;
  }
}
