// docs/task.xsd against the checker: what the schema refuses the checker tells as well, and what
// the checker finds no fault with is valid.
#include "agent/document/TaskDocumentCheck.h"
#include "tests/agent/document/Samples.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace NoxAgentTest {

namespace {

// The exit status of the validator for one document: 0 valid, 1 not well formed, 3 not valid.
int Validate(const std::string& path) {
  const pid_t child = fork();
  if (child == 0) {
    (void)!freopen("/dev/null", "w", stderr);
    execl(NOX_XMLLINT, "xmllint", "--noout", "--nonet", "--schema", NOX_SCHEMA, path.c_str(),
          static_cast<char*>(nullptr));
    _exit(127);
  }
  int status = 0;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int ExpectedStatus(const std::filesystem::path& path) {
  if (NameBegins(path, "broken-")) {
    return 1;
  }
  return NameBegins(path, "schema-") ? 3 : 0;
}

}  // namespace

TEST(TaskSchema, JudgesTheSamplesAsTheirNamesSay) {
  for (const auto& path : SamplePaths()) {
    EXPECT_EQ(ExpectedStatus(path), Validate(path.string())) << path;
  }
}

}  // namespace NoxAgentTest
