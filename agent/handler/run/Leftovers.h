#pragma once

#include <chrono>

namespace NoxHandler {

class RunRecords;

/// Deals with the runs that an agent left behind when it was killed.
struct Leftovers {
  /// Ends the processes of all recorded runs, deletes the records, and returns when the processes
  /// are gone. They get TERM, and KILL when `grace` has passed. When processes cannot be ended even
  /// so, their record stays and an error is logged.
  static void End(RunRecords& records, std::chrono::milliseconds grace);
};

}  // namespace NoxHandler
