// Two functions of the C library, found before the library's own because they are the executable's.
#include "Timeline.h"

#include <sys/select.h>

#include <cstdint>
#include <ctime>

using VirtualTime::Timeline;

extern "C" {

std::time_t time(std::time_t* result) noexcept {
  const std::time_t now = Timeline::Instance().WallSeconds();
  if (result != nullptr) {
    *result = now;
  }
  return now;
}

int select(int count, fd_set* readable, fd_set* writable, fd_set* exceptional, timeval* timeout) {
  Timeline& timeline = Timeline::Instance();
  const bool waitsForDescriptors =
      readable != nullptr || writable != nullptr || exceptional != nullptr;
  if (waitsForDescriptors || timeout == nullptr || !timeline.IsStarted()) {
    timespec limit{};
    if (timeout != nullptr) {
      limit = {timeout->tv_sec, timeout->tv_usec * 1000};
    }
    return pselect(count, readable, writable, exceptional, timeout != nullptr ? &limit : nullptr,
                   nullptr);
  }
  timeline.Sleep(std::int64_t{timeout->tv_sec} * 1000 + (timeout->tv_usec + 999) / 1000);
  *timeout = {};  // what was left of it, as the system tells
  return 0;
}

}  // extern "C"
