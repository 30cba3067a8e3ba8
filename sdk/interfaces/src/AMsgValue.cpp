#include <AgentInterfacesV3/AMsgValue.h>

#include <cstddef>

namespace Corvane::AgentInterfacesV3 {

const char* NameOf(AMsgType type) {
  static constexpr const char* Names[] = {"Long", "ULong", "Bool", "String", "StringMap"};
  return Names[static_cast<std::size_t>(type)];
}

}  // namespace Corvane::AgentInterfacesV3
