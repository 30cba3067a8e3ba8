#pragma once

#include <cstdint>
#include <span>

namespace Corvane::AgentInterfacesV3 {

/// Why a request was not answered with a result. The codes have the top bits 10 and lie apart from
/// the codes of the file routines (0x8005....). Except for OperationFailed, the object that was
/// asked has not been touched.
enum class AMsgError : std::uint32_t {
  UnknownInterface = 0x80060001,
  UnknownOperation = 0x80060002,
  MissingArgument = 0x80060003,
  MistypedArgument = 0x80060004,
  UnexpectedArgument = 0x80060005,
  OperationFailed = 0x80060006,
  NoObject = 0x80060007,
  QueueClosed = 0x80060008,
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
