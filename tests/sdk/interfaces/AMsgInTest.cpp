#include <AgentInterfacesV3/AMsgIn.h>

#include <gtest/gtest.h>

namespace {

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AString;

TEST(AMsgIn, HoldsTypedArgumentsByName) {
  AMsgReply reply;
  AMsgIn request("INoxTaskScheduler", "EnableTask", reply);
  request.Set("taskIds", AString("a:b")).Set("enable", true);

  EXPECT_EQ(request.Interface(), "INoxTaskScheduler");
  EXPECT_EQ(request.Operation(), "EnableTask");
  ASSERT_NE(request.Find("taskIds"), nullptr);
  EXPECT_EQ(std::get<AString>(*request.Find("taskIds")), "a:b");
  ASSERT_NE(request.Find("enable"), nullptr);
  EXPECT_EQ(TypeOf(*request.Find("enable")), AMsgType::Bool);
  EXPECT_EQ(request.Find("Enable"), nullptr);
}

TEST(AMsgIn, SettingAnArgumentAgainReplacesIt) {
  AMsgReply reply;
  AMsgIn request("I", "O", reply);
  request.Set("a", 1L).Set("a", 2UL);
  EXPECT_EQ(request.Arguments().size(), 1U);
  EXPECT_EQ(std::get<unsigned long>(*request.Find("a")), 2UL);
}

TEST(AMsgValue, TypesFollowTheAlternatives) {
  EXPECT_EQ(TypeOf(AMsgValue(-1L)), AMsgType::Long);
  EXPECT_EQ(TypeOf(AMsgValue(1UL)), AMsgType::ULong);
  EXPECT_EQ(TypeOf(AMsgValue(false)), AMsgType::Bool);
  EXPECT_EQ(TypeOf(AMsgValue("text")), AMsgType::String);
  EXPECT_EQ(TypeOf(AMsgValue(AStringMap())), AMsgType::StringMap);
  EXPECT_STREQ(NameOf(AMsgType::Long), "Long");
  EXPECT_STREQ(NameOf(AMsgType::StringMap), "StringMap");
}

TEST(AMsgReply, IsOpenThenAResultOrAnError) {
  AMsgReply reply;
  EXPECT_FALSE(reply.IsAnswered());
  EXPECT_FALSE(reply.IsError());

  reply.SetResult(-1, {{"taskId", AString("x")}});
  EXPECT_TRUE(reply.IsAnswered());
  EXPECT_FALSE(reply.IsError());
  EXPECT_EQ(reply.Result(), -1);
  EXPECT_EQ(reply.Out().size(), 1U);
}

TEST(AMsgReply, AnErrorReplacesAResultAndTheOtherWayRound) {
  AMsgReply reply;
  reply.SetResult(1, {{"taskId", AString("x")}});
  reply.SetError(AMsgError::NoObject, "nobody");
  EXPECT_TRUE(reply.IsError());
  EXPECT_EQ(reply.ErrorCode(), AMsgError::NoObject);
  EXPECT_EQ(reply.ErrorText(), "nobody");
  EXPECT_EQ(reply.Result(), 0);
  EXPECT_TRUE(reply.Out().empty());

  reply.SetResult(1, {});
  EXPECT_FALSE(reply.IsError());
  EXPECT_TRUE(reply.ErrorText().IsEmpty());
}

}  // namespace
