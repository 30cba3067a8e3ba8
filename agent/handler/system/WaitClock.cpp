#include "agent/handler/system/WaitClock.h"

namespace NoxHandler {

const WaitClock& WaitClock::Usual() {
  static const WaitClock usual;
  return usual;
}

}  // namespace NoxHandler
