#include "agent/library/Json.h"

#include <gtest/gtest.h>

namespace NoxAgentTest {

using NoxAgent::Json;
using NoxAgent::JsonError;

namespace {

/// Why the text is refused; empty when it is not.
std::string WhyNot(const std::string& text, std::size_t maxDepth = Json::MaxDepth) {
  try {
    (void)Json::Parse(text, maxDepth);
    return {};
  } catch (const JsonError& error) {
    return error.what();
  }
}

TEST(Json, IsWrittenAsItIsRead) {
  const char* const texts[] = {
      "null",
      "true",
      "false",
      "0",
      "-2147483648",
      "4294967295",
      "9223372036854775807",
      "1.5",
      "\"\"",
      R"("line\nbreak \"quoted\" \\ \u0001")",
      "[]",
      "{}",
      R"([1,"two",[3.5],{"four":null}])",
      R"({"a":{"b":[true,{"c":"d"}]},"e":-1})",
  };
  for (const char* const text : texts) {
    EXPECT_EQ(Json::Parse(text).Dump(), text);
    EXPECT_EQ(Json::Parse(Json::Parse(text).Dump(2)), Json::Parse(text)) << text;
  }
}

TEST(Json, IsBuiltFromBraces) {
  const Json value = {{"number", 1}, {"inner", {{"text", "x"}}}, {"list", Json::List{1, true}}};
  EXPECT_EQ(value.Dump(), R"({"inner":{"text":"x"},"list":[1,true],"number":1})");
  EXPECT_EQ(Json(Json::Object{}).Dump(), "{}");
  EXPECT_EQ(Json(std::vector<std::string>{"a", "b"}).Dump(), R"(["a","b"])");
  EXPECT_EQ(Json(std::map<std::string, std::string>{{"a", "b"}}).Dump(), R"({"a":"b"})");
}

TEST(Json, GrowsFromNothing) {
  Json value;
  value["list"].Append(1);
  value["list"].Append("two");
  value["name"] = "n";
  EXPECT_EQ(value.Dump(), R"({"list":[1,"two"],"name":"n"})");
  EXPECT_THROW(value["name"]["deeper"] = 1, JsonError);
  EXPECT_THROW(value.Append(1), JsonError);
}

TEST(Json, AnswersWhatIsThereAndTellsWhatIsMissing) {
  const Json value = Json::Parse(R"({"text":"x","number":7,"truth":true,"list":[1]})");
  EXPECT_EQ(value.At("text").Text(), "x");
  EXPECT_EQ(value.Long("number", 0), 7);
  EXPECT_EQ(value.Long("other", 5), 5);
  EXPECT_EQ(value.Text("other", "fallback"), "fallback");
  EXPECT_EQ(value.Bool("truth", false), true);
  EXPECT_EQ(value.Items("list").size(), 1U);
  EXPECT_TRUE(value.Items("other").empty());
  EXPECT_EQ(value.Find("other"), nullptr);
  EXPECT_EQ(Json(1).Find("other"), nullptr);
  EXPECT_THROW((void)value.At("other"), JsonError);
  EXPECT_THROW((void)value.At("text").Long(), JsonError);
  EXPECT_THROW((void)value.Text("number", ""), JsonError);
  EXPECT_THROW((void)value.At("list").At(1), JsonError);
}

TEST(Json, KeepsWholeNumbersApartFromOthers) {
  EXPECT_TRUE(Json::Parse("1").IsWhole());
  EXPECT_FALSE(Json::Parse("1.0").IsWhole());
  EXPECT_FALSE(Json::Parse("9223372036854775808").IsWhole()) << "beyond 63 bits";
  EXPECT_EQ(Json::Parse("1.5").Number(), 1.5);
  EXPECT_EQ(Json::Parse("2").Number(), 2.0);
  EXPECT_THROW((void)Json::Parse("2147483648").Long(), JsonError);
  EXPECT_EQ(Json::Parse("2147483648").Whole(), 2147483648);
}

TEST(Json, RefusesWhatIsNone) {
  for (const char* const text : {"", " ", "{", "[1,]", "{\"a\":1,}", "{a:1}", "'a'", "nul", "1 2",
                                 "{\"a\":1}}", "\"\x80\"", "// c\n1", "[01]", "\"\t\""}) {
    EXPECT_NE(WhyNot(text), "") << text;
  }
}

TEST(Json, BoundsTheDepth) {
  EXPECT_EQ(WhyNot("[[1]]", 2), "");
  EXPECT_EQ(WhyNot("[{\"a\":[]}]", 2), "it is nested deeper than 2 levels");
  EXPECT_EQ(WhyNot(std::string(Json::MaxDepth, '[') + std::string(Json::MaxDepth, ']')), "");
  EXPECT_NE(WhyNot(std::string(100000, '[')), "");
}

TEST(Json, TakesTheLaterOfTwoMembersOfOneName) {
  EXPECT_EQ(Json::Parse(R"({"a":1,"a":2})").Dump(), R"({"a":2})");
}

TEST(Json, WritesOtherCharactersAsAsked) {
  EXPECT_EQ(Json("\xc3\xa4").Dump(), "\"\xc3\xa4\"");
  EXPECT_EQ(Json("\xc3\xa4").Dump(0, Json::Charset::Ascii), "\"\\u00e4\"");
  EXPECT_EQ(Json("a\xff").Dump(), "\"a\xef\xbf\xbd\"") << "what is no UTF-8";
}

}  // namespace

}  // namespace NoxAgentTest
