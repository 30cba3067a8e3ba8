#include "agent/document/TaskId.h"

#include <gtest/gtest.h>

namespace NoxAgent {
namespace {

TEST(TaskId, SaysWhyNoTaskMayHaveAnId) {
  const struct {
    std::string m_Id;
    const char* m_Fault;
  } rows[] = {
      {"backup", ""},
      {"Az09-._~", ""},
      {std::string(MaxTaskIdLength, 'x'), ""},
      {std::string(MaxTaskIdLength + 1, 'x'), "is longer than 200 characters"},
      {"", "is empty"},
      {".hidden", "must not begin with a dot"},
      {"a b", R"(may hold letters, digits, "-", ".", "_" and "~" of ASCII only)"},
      {"caf\xC3\xA9", R"(may hold letters, digits, "-", ".", "_" and "~" of ASCII only)"},
      {"a.vsk.b", R"(must not contain ".vsk", the extension of task files)"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(FaultOfTaskId(BaseSDK::AString::FromUtf8(row.m_Id), ".vsk").ToUtf8(), row.m_Fault)
        << row.m_Id;
  }
  EXPECT_TRUE(FaultOfTaskId("a.vsk.b", {}).IsEmpty()) << "without an extension";
}

}  // namespace
}  // namespace NoxAgent
