#include "tests/scheduler/EventWatch.h"

#include <BaseSDK/AEvent.h>

#include <utility>

namespace {

std::function<void()> eventWatch;

}  // namespace

EventWatch::EventWatch(std::function<void()> watch) {
  eventWatch = std::move(watch);
}

EventWatch::~EventWatch() {
  eventWatch = nullptr;
}

// The linker sends the scheduler's calls here (--wrap).
extern "C" {

int __real__ZN7BaseSDK6AEvent3SetEv(BaseSDK::AEvent* event);
int __wrap__ZN7BaseSDK6AEvent3SetEv(BaseSDK::AEvent* event);

int __wrap__ZN7BaseSDK6AEvent3SetEv(BaseSDK::AEvent* event) {
  if (eventWatch) {
    eventWatch();
  }
  return __real__ZN7BaseSDK6AEvent3SetEv(event);
}

}  // extern "C"
