#pragma once

#include <AgentInterfacesV3/AMsgError.h>
#include <AgentInterfacesV3/AMsgValue.h>

namespace Corvane::AgentInterfacesV3 {

/// What becomes of one request: nothing yet, a result with the out arguments, or an error. The
/// sender makes it and reads it once the request has been sent; the answering side sets it. One
/// thread at a time.
class AMsgReply {
 public:
  /// Answers with the operation's result and its out and inout arguments. Replaces an error.
  void SetResult(long result, AMsgArguments out);
  /// Answers with an error; `text` names what is wrong and where. Replaces a result.
  void SetError(AMsgError code, BaseSDK::AString text);

  bool IsAnswered() const { return m_State != State::Open; }
  bool IsError() const { return m_State == State::Error; }

  /// The operation's result; 0 unless answered with one.
  long Result() const { return m_Result; }
  /// The out and inout arguments; empty unless answered with a result. A negative result comes with
  /// them too.
  const AMsgArguments& Out() const { return m_Out; }
  /// REQUIRES: IsError().
  AMsgError ErrorCode() const { return m_Code; }
  /// Empty unless IsError().
  const BaseSDK::AString& ErrorText() const { return m_Text; }

 private:
  enum class State { Open, Result, Error };

  State m_State = State::Open;
  long m_Result = 0;
  AMsgArguments m_Out;
  AMsgError m_Code = AMsgError::OperationFailed;
  BaseSDK::AString m_Text;
};

}  // namespace Corvane::AgentInterfacesV3
