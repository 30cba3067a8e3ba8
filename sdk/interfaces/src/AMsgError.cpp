#include <AgentInterfacesV3/AMsgError.h>

#include <cstddef>

namespace Corvane::AgentInterfacesV3 {
namespace {

constexpr AMsgErrorInfo Infos[] = {
    {AMsgError::UnknownInterface, "unknown-interface", "The object does not serve the interface."},
    {AMsgError::UnknownOperation, "unknown-operation", "The interface has no such operation."},
    {AMsgError::MissingArgument, "missing-argument", "An argument that is required is not there."},
    {AMsgError::MistypedArgument, "mistyped-argument",
     "An argument has another type than the operation's, or is out of its range."},
    {AMsgError::UnexpectedArgument, "unexpected-argument",
     "The operation takes no argument of that name."},
    {AMsgError::OperationFailed, "operation-failed",
     "The operation was called and ended in an exception."},
    {AMsgError::NoObject, "no-object", "No object is bound to the message queue."},
    {AMsgError::QueueClosed, "queue-closed", "The message queue takes no requests."},
};

constexpr std::size_t IndexOf(AMsgError code) {
  return static_cast<std::size_t>(code) - static_cast<std::size_t>(Infos[0].m_Code);
}

constexpr bool IsInOrder() {
  for (std::size_t index = 0; index < std::size(Infos); ++index) {
    if (IndexOf(Infos[index].m_Code) != index) {
      return false;
    }
  }
  return true;
}
static_assert(IsInOrder(), "InfoOf finds an entry by its code");

}  // namespace

std::span<const AMsgErrorInfo> MsgErrors() {
  return Infos;
}

const AMsgErrorInfo& InfoOf(AMsgError code) {
  return Infos[IndexOf(code)];
}

}  // namespace Corvane::AgentInterfacesV3
