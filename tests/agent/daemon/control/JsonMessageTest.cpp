#include "agent/daemon/control/JsonMessage.h"

#include "agent/daemon/control/RequestError.h"
#include "agent/library/Json.h"

#include <AgentInterfacesV3/INoxObjectTable.h>
#include <AgentInterfacesV3/INoxTaskSchedulerTable.h>

#include <gtest/gtest.h>

using BaseSDK::AString;
using namespace Corvane::AgentInterfacesV3;
namespace NoxAgent {
namespace {

const JsonMessage::Operation& Operation(const char* name) {
  const auto* const found = INoxTaskSchedulerTable.FindOperation(name);
  return found != nullptr ? *found : *INoxObjectTable.FindOperation(name);
}

struct Decoded {
  explicit Decoded(const char* operation, const std::string& body) {
    JsonMessage::Decode(JsonMessage::ParseObject(body), Operation(operation), m_Request);
  }
  AMsgReply m_Reply;
  AMsgIn m_Request{"I", "O", m_Reply};
};

std::string ErrorOf(const char* operation, const std::string& body) {
  try {
    const Decoded decoded(operation, body);
    return "(none)";
  } catch (const RequestError& error) {
    EXPECT_EQ(error.Status(), HttpStatus::BadRequest);
    return error.Code() + ": " + error.what();
  }
}

TEST(JsonMessage, DecodesEveryType) {
  const Decoded notify("NotifyObject", R"({"kind":-2147483648,"code":2147483647,"text":"\u00e9"})");
  EXPECT_EQ(std::get<long>(*notify.m_Request.Find("kind")), -2147483647L - 1);
  EXPECT_EQ(std::get<long>(*notify.m_Request.Find("code")), 2147483647);
  EXPECT_EQ(std::get<AString>(*notify.m_Request.Find("text")), AString(L"\u00e9"));
  const Decoded enable("EnableTask", R"({"taskIds":"a:b","enable":false})");
  EXPECT_FALSE(std::get<bool>(*enable.m_Request.Find("enable")));
  const Decoded attributes("GetTaskAttributes", R"({"taskId":"a","attributes":{"k":"v"}})");
  EXPECT_EQ(std::get<AStringMap>(*attributes.m_Request.Find("attributes")),
            (AStringMap{{"k", "v"}}));
  EXPECT_EQ(attributes.m_Request.Find("inputAttributes"), nullptr);
}

TEST(JsonMessage, AnEmptyBodyIsAnEmptyObject) {
  const Decoded refresh("RefreshTaskList", "");
  EXPECT_TRUE(refresh.m_Request.Arguments().empty());
}

TEST(JsonMessage, LeavesHandlesToTheirTokens) {
  const Decoded next("FindNextTask", R"({"handle":"abc"})");
  EXPECT_EQ(next.m_Request.Find("handle"), nullptr);
  EXPECT_EQ(JsonMessage::DecodeToken(Json{{"handle", "abc"}}, "handle"), "abc");
  EXPECT_EQ(JsonMessage::DecodeToken(Json::Object{}, "handle"), "");
  EXPECT_EQ(JsonMessage::DecodeToken(Json{{"handle", 0}}, "handle"), "");
  EXPECT_THROW((void)JsonMessage::DecodeToken(Json{{"handle", 135678912}}, "handle"), RequestError);
}

TEST(JsonMessage, NamesWhatIsWrongWithAnArgument) {
  const std::string whole =
      "mistyped-argument: the argument \"kind\" is to be a whole number from -2147483648 to "
      "2147483647";
  const struct {
    const char* m_Operation;
    const char* m_Body;
    std::string m_Error;
  } rows[] = {
      {"DeleteTask", "{}", "missing-argument: DeleteTask needs the argument \"taskId\""},
      {"DeleteTask", R"({"taskId":5})",
       "mistyped-argument: the argument \"taskId\" is to be a string"},
      {"DeleteTask", R"({"taskId":null})",
       "mistyped-argument: the argument \"taskId\" is to be a string"},
      {"DeleteTask", R"({"taskId":"a","force":1})",
       "unexpected-argument: DeleteTask takes no argument \"force\""},
      {"AddTask", R"({"taskId":"a","taskXml":"b","newTaskId":"c"})",
       "unexpected-argument: AddTask takes no argument \"newTaskId\""},
      {"EnableTask", R"({"taskIds":"a","enable":1})",
       "mistyped-argument: the argument \"enable\" is to be true or false"},
      {"GetTaskAttributes", R"({"taskId":"a","attributes":{"k":1}})",
       "mistyped-argument: the argument \"attributes\" is to be an object whose values are "
       "strings"},
      {"GetTaskAttributes", R"({"taskId":"a","attributes":"k"})",
       "mistyped-argument: the argument \"attributes\" is to be an object whose values are "
       "strings"},
      {"NotifyObject", R"({"kind":1.5,"code":0,"text":""})", whole},
      {"NotifyObject", R"({"kind":"1","code":0,"text":""})", whole},
      {"NotifyObject", R"({"kind":2147483648,"code":0,"text":""})", whole},
      {"NotifyObject", R"({"kind":-2147483649,"code":0,"text":""})", whole},
      {"NotifyObject", R"({"kind":18446744073709551615,"code":0,"text":""})", whole},
      {"NotifyObject", R"({"kind":1e3,"code":0,"text":""})", whole},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ErrorOf(row.m_Operation, row.m_Body), row.m_Error) << row.m_Body;
  }
}

TEST(JsonMessage, RefusesWhatIsNoObject) {
  const std::string deep(1000000, '[');
  for (const std::string& body :
       {std::string("nonsense"), std::string("{"), std::string("[]"), std::string("\"x\""),
        std::string("{\"a\":\"\xFF\"}"), std::string("{\"a\":\"\\ud800\"}"), std::string(3, '\0'),
        std::string("{} {}"), std::string(R"({"a":[[[[[[1]]]]]]})"), deep}) {
    const std::string error = ErrorOf("RefreshTaskList", body);
    EXPECT_EQ(error.find("bad-json: "), 0U) << body.substr(0, 40);
    EXPECT_EQ(error.find("exception"), std::string::npos) << "in the library's words: " << error;
  }
}

TEST(JsonMessage, EncodesAnAnswerWithoutItsHandle) {
  AMsgReply reply;
  reply.SetResult(-1, {{"handle", 135678912UL}, {"taskId", AString("a\"\n")}});
  EXPECT_EQ(JsonMessage::Dump(JsonMessage::Encode(Operation("FindFirstTask"), reply)),
            R"({"out":{"taskId":"a\"\n"},"result":-1})");
  reply.SetResult(1, {{"attributes", AStringMap{{"t0", "a"}}}});
  EXPECT_EQ(JsonMessage::Dump(JsonMessage::Encode(Operation("GetTaskAttributes"), reply)),
            R"({"out":{"attributes":{"t0":"a"}},"result":1})");
}

TEST(JsonMessage, BytesThatAreNoTextDoNotBreakTheAnswer) {
  AMsgReply reply;
  reply.SetResult(1, {{"taskId", AString::FromUtf8("a\xFF"
                                                   "b")}});
  EXPECT_EQ(JsonMessage::Dump(JsonMessage::Encode(Operation("FindNextTask"), reply)),
            "{\"out\":{\"taskId\":\"a\xEF\xBF\xBD"
            "b\"},\"result\":1}");
}

}  // namespace
}  // namespace NoxAgent
