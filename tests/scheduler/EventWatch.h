#pragma once

#include <functional>

/// Sees every AEvent::Set of the scheduler's while it lives, before it takes effect, on the setting
/// thread and with its locks. One at a time.
class EventWatch {
 public:
  explicit EventWatch(std::function<void()> watch);
  EventWatch(const EventWatch&) = delete;
  EventWatch& operator=(const EventWatch&) = delete;
  ~EventWatch();
};
