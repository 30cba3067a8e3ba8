#include "tests/fuzz/FuzzTarget.h"

#include <BaseSDK/ALogConfig.h>
#include <VirtualTime/VirtualClock.h>
#include <VirtualTime/Zone.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  static const VirtualTime::Zone zone("UTC0");
  BaseSDK::ALogConfig::SetDefaultLevel(BaseSDK::ALogger::Error);
  VirtualTime::VirtualClock::Instance().Start(Fuzz::StartTime);
  return 0;
}

namespace Fuzz {

void Require(bool holds, const char* rule) {
  if (!holds) {
    (void)std::fprintf(stderr, "does not hold: %s\n", rule);
    std::abort();
  }
}

BaseSDK::AString Text(const std::uint8_t* data, std::size_t size) {
  return BaseSDK::AString::FromUtf8({reinterpret_cast<const char*>(data), size});
}

}  // namespace Fuzz
