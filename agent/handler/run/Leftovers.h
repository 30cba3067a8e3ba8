#pragma once

#include <chrono>

namespace NoxHandler {

class RunRecords;

/// What an agent that was killed has left running.
struct Leftovers {
  /// Ends the processes of all recorded runs and deletes the records. Returns when they are gone:
  /// TERM, KILL once `grace` has passed, and then a moment more. A record stays when its processes
  /// could not be ended, which is logged as an error.
  static void End(RunRecords& records, std::chrono::milliseconds grace);
};

}  // namespace NoxHandler
