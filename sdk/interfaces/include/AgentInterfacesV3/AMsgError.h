#pragma once

#include <cstdint>
#include <span>

namespace Corvane::AgentInterfacesV3 {

/// Why a request was not answered with a result. The codes have the top bits 10 and lie apart from
/// the codes of the file routines (0x8005....). Only after OperationFailed may the object have
/// changed: every other error comes before the operation is called.
enum class AMsgError : std::uint32_t {
  UnknownInterface = 0x80060001,    ///< the object does not serve the interface
  UnknownOperation = 0x80060002,    ///< the interface has no such operation
  MissingArgument = 0x80060003,     ///< one that is not optional is not there
  MistypedArgument = 0x80060004,    ///< one has another type, or is out of its range
  UnexpectedArgument = 0x80060005,  ///< the operation takes none of that name
  OperationFailed = 0x80060006,     ///< the operation ended in an exception, or left no answer
  NoObject = 0x80060007,            ///< no object is bound to the queue
  QueueClosed = 0x80060008,         ///< the host has closed the queue
};

/// An error as users and other programs see it.
struct AMsgErrorInfo {
  AMsgError m_Code;
  const char* m_Name;     ///< for programs, such as "missing-argument"
  const char* m_Meaning;  ///< one sentence for people
};

/// Every error, in the order of the codes.
std::span<const AMsgErrorInfo> MsgErrors();

/// The entry of `code` in MsgErrors.
const AMsgErrorInfo& InfoOf(AMsgError code);

}  // namespace Corvane::AgentInterfacesV3
