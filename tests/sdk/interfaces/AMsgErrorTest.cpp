#include <AgentInterfacesV3/AMsgError.h>
#include <BaseSDK/AResult.h>

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using namespace Corvane::AgentInterfacesV3;

TEST(AMsgError, CodesHaveTheTopBitsOfFailureAndAreNoFileResults) {
  for (const AMsgErrorInfo& info : MsgErrors()) {
    const auto code = static_cast<std::uint32_t>(info.m_Code);
    EXPECT_EQ(code >> 30, 2U) << info.m_Name;
    EXPECT_NE(code & 0xFFFF0000U, BaseSDK::ResultErrnoBase) << info.m_Name;
    EXPECT_EQ(BaseSDK::ErrnoFromResult(code), 0) << info.m_Name;
  }
}

TEST(AMsgError, EveryErrorHasACodeANameAndAMeaningOfItsOwn) {
  std::set<AMsgError> codes;
  std::set<std::string> names;
  std::set<std::string> meanings;
  for (const AMsgErrorInfo& info : MsgErrors()) {
    EXPECT_TRUE(codes.insert(info.m_Code).second) << info.m_Name;
    EXPECT_TRUE(names.insert(info.m_Name).second) << info.m_Name;
    EXPECT_TRUE(meanings.insert(info.m_Meaning).second) << info.m_Name;
  }
}

TEST(AMsgError, IsFoundByItsCode) {
  EXPECT_STREQ(InfoOf(AMsgError::UnknownInterface).m_Name, "unknown-interface");
  EXPECT_STREQ(InfoOf(AMsgError::MistypedArgument).m_Name, "mistyped-argument");
  EXPECT_STREQ(InfoOf(AMsgError::QueueClosed).m_Name, "queue-closed");
}

}  // namespace
