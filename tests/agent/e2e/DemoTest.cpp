// What `make run` shows.
#include "tests/agent/e2e/Program.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>

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

// Whether the text has a line in which the word follows what is before it, each up to a blank.
bool HasLine(const std::string& text, const std::string& before, const std::string& word) {
  for (std::size_t at = 0; (at = text.find(before + " ", at)) != std::string::npos; ++at) {
    const std::string line = text.substr(at + 1, text.find('\n', at + 1) - at);
    if (line.find(" " + word + " ") != std::string::npos) {
      return true;
    }
  }
  return false;
}

}  // namespace

TEST_F(Demo, ShowsTasksRunAndEndsWithTheList) {
  const struct {
    const char* m_Id;
    const char* m_State;
  } rows[] = {{"clock", "Ok"},     {"welcome", "Ok"},       {"reminder", "Ok"},
              {"heartbeat", "Ok"}, {"weekly-report", "Ok"}, {"failing-backup", "Failed"}};
  const std::string errors = (m_Directory / "errors").string();
  Program demo({{"/bin/sh", "-c", "exec \"$0\" \"$1\" 2>\"$2\"", NOX_DEMO,
                 m_Directory.Path().string(), errors}},
               m_Directory / "output");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_Id);
    EXPECT_TRUE(WaitUntil([&] {
      return demo.HasEnded() || HasLine(demo.Output(), std::string("  ") + row.m_Id, row.m_State);
    }));
  }
  demo.Signal(SIGTERM);
  EXPECT_EQ(demo.WaitForEnd(), 0);
  EXPECT_EQ(m_Directory.Read("errors"), "");
  const std::string output = demo.Output();
  const std::size_t list = output.find("\nID ");
  ASSERT_NE(list, std::string::npos) << output;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_Id);
    EXPECT_TRUE(HasLine(output.substr(0, list), std::string("  ") + row.m_Id, row.m_State))
        << output;
    // The one that comes due every few seconds may just be running again.
    EXPECT_TRUE(HasLine(output.substr(list), std::string("\n") + row.m_Id, row.m_State) ||
                (row.m_Id == std::string("heartbeat") &&
                 HasLine(output.substr(list), "\nheartbeat", "Started")))
        << output;
  }
  EXPECT_TRUE(std::filesystem::exists(m_Directory / "demo/agent.log"));
}

TEST_F(Demo, EndsByItselfWhenItsTimeIsOver) {
  const auto result =
      Program::Run({{NOX_DEMO, m_Directory.Path().string(), "1"}}, m_Directory.Path());
  EXPECT_EQ(result.m_Status, 0) << result.m_Error;
  EXPECT_EQ(result.m_Error, "");
  EXPECT_NE(result.m_Output.find("\nID "), std::string::npos) << result.m_Output;
}

TEST_F(Demo, SaysWhatIsMissing) {
  const auto result = Program::Run({{NOX_DEMO, "/nonexistent"}}, m_Directory.Path());
  EXPECT_EQ(result.m_Status, 1);
  EXPECT_EQ(result.m_Error, "demo: there is no directory /nonexistent: build first (make build)\n");
  EXPECT_EQ(Program::Run({{NOX_DEMO}}, m_Directory.Path()).m_Status, 2);
}
