#include "model/LocalTime.h"

#include "Common/Long32.h"

#include <ctime>

namespace Nox {

long Now() {
  return Clamp32(std::time(nullptr));
}

}  // namespace Nox
