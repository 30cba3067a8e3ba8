#include "agent/handler/system/WaitClock.h"

namespace NoxHandler {

const WaitClock& WaitClock::Usual() {
  static const WaitClock System;
  return System;
}

}  // namespace NoxHandler
