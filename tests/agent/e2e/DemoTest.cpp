// What `make run` shows.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/agent/e2e/Program.h"
#include "tests/support/TempDir.h"

namespace {

// A build folder of its own, so that the demo's state directory is.
class Demo : public testing::Test {
 protected:
  Demo() {
    std::filesystem::create_directory_symlink(std::filesystem::path(NOX_AGENT).parent_path(),
                                              m_Directory / "bin");
  }

  const TestSupport::TempDir m_Directory;
};

}  // namespace

TEST_F(Demo, ShowsFiveTasksRunAndEndsWithTheList) {
  const auto result =
      Program::Run({{NOX_DEMO, m_Directory.Path().string(), "15"}}, m_Directory.Path());
  EXPECT_EQ(result.m_Status, 0) << result.m_Error;
  EXPECT_EQ(result.m_Error, "");
  const std::size_t list = result.m_Output.find("\nID ");
  ASSERT_NE(list, std::string::npos) << result.m_Output;
  const struct {
    const char* m_Id;
    const char* m_State;
  } rows[] = {{"welcome", "Ok"},
              {"reminder", "Ok"},
              {"heartbeat", "Ok"},
              {"weekly-report", "Ok"},
              {"failing-backup", "Failed"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_Id);
    const std::size_t shown = result.m_Output.find(std::string("  ") + row.m_Id + " ");
    EXPECT_LT(shown, list);
    const std::size_t listed = result.m_Output.find(std::string("\n") + row.m_Id + " ", list);
    ASSERT_NE(listed, std::string::npos) << result.m_Output;
    const std::string line =
        result.m_Output.substr(listed + 1, result.m_Output.find('\n', listed + 1) - listed);
    EXPECT_NE(line.find(std::string(" ") + row.m_State + " "), std::string::npos) << line;
  }
  EXPECT_TRUE(std::filesystem::exists(m_Directory / "demo/agent.log"));
}

TEST_F(Demo, SaysWhatIsMissing) {
  const auto result = Program::Run({{NOX_DEMO, "/nonexistent"}}, m_Directory.Path());
  EXPECT_EQ(result.m_Status, 1);
  EXPECT_EQ(result.m_Error, "demo: there is no directory /nonexistent: build first (make build)\n");
  EXPECT_EQ(Program::Run({{NOX_DEMO}}, m_Directory.Path()).m_Status, 2);
}
