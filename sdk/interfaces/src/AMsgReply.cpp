#include <AgentInterfacesV3/AMsgReply.h>

#include <utility>

namespace Corvane::AgentInterfacesV3 {

void AMsgReply::SetResult(long result, AMsgArguments out) {
  m_State = State::Result;
  m_Result = result;
  m_Out = std::move(out);
  m_Text.Clear();
}

void AMsgReply::SetError(AMsgError code, BaseSDK::AString text) {
  m_State = State::Error;
  m_Result = 0;
  m_Out.clear();
  m_Code = code;
  m_Text = std::move(text);
}

}  // namespace Corvane::AgentInterfacesV3
