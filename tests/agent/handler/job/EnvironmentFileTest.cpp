#include "agent/handler/job/EnvironmentFile.h"

#include "agent/handler/job/JobError.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

using BaseSDK::AString;
using TestSupport::TempDir;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

EnvironmentFile FileAt(const std::filesystem::path& path, bool mayBeMissing = false) {
  return {AString(path.c_str()), mayBeMissing};
}

std::string LoadError(const EnvironmentFile& file) {
  try {
    (void)file.Load();
  } catch (const JobError& error) {
    return error.what();
  }
  return "no error";
}

}  // namespace

TEST(EnvironmentFile, IsAnAbsolutePathThatMayBeMissing) {
  EnvironmentFile file;
  EXPECT_EQ(EnvironmentFile::Read("/etc/x y", file).ToUtf8(), "");
  EXPECT_EQ(file.m_Name, AString("/etc/x y"));
  EXPECT_FALSE(file.m_MayBeMissing);
  EXPECT_EQ(EnvironmentFile::Read("-/etc/z", file).ToUtf8(), "");
  EXPECT_EQ(file.m_Name, AString("/etc/z"));
  EXPECT_TRUE(file.m_MayBeMissing);
  for (const char* text : {"", "-", "etc/x", "--/etc/x", "- /etc/x"}) {
    EXPECT_EQ(EnvironmentFile::Read(text, file).ToUtf8(),
              "is to be an absolute path, with a dash in front if the file may be missing")
        << text;
  }
  EXPECT_EQ(file.m_Name, AString("/etc/z"));
}

TEST(EnvironmentFile, HoldsVariables) {
  const TempDir directory;
  directory.Write("env",
                  "# comment\n\nA=1\r\n  B_2 =  two = \"2\" # all of it \nC=\n  # last\nA=3");
  EXPECT_EQ(
      FileAt(directory / "env").Load(),
      (EnvironmentFile::Variables{{"A", "3"}, {"B_2", "two = \"2\" # all of it"}, {"C", ""}}));
}

TEST(EnvironmentFile, NamesTheLineThatCannotBeRead) {
  const EnvironmentFile file{"/x", false};
  using namespace std::string_literals;
  const struct {
    std::string m_Text;
    const char* m_Error;
  } rows[] = {{"A=1\nB", "/x:2: the line is neither NAME=value nor a comment"},
              {"=1", "/x:1: the line is neither NAME=value nor a comment"},
              {"\n\nexport A=1", "/x:3: the line is neither NAME=value nor a comment"},
              {"[A]\n", "/x:1: the line is neither NAME=value nor a comment"},
              {"A=1\0B"s, "/x:1: the line has a zero byte"}};
  for (const auto& row : rows) {
    try {
      (void)file.Parse(row.m_Text);
      ADD_FAILURE() << row.m_Text;
    } catch (const JobError& error) {
      EXPECT_STREQ(error.what(), row.m_Error);
    }
  }
}

TEST(EnvironmentFile, IsReadWithTheCareOfAJob) {
  const TempDir directory;
  const std::string path = (directory / "env").string();
  EXPECT_EQ(LoadError(FileAt(path)), "there is no environment file " + path);
  EXPECT_TRUE(FileAt(path, true).Load().empty());
  EXPECT_TRUE(EnvironmentFile().Load().empty());
  directory.Write("env", "A=1\n");
  ASSERT_EQ(chmod(path.c_str(), 0606), 0);
  for (const bool mayBeMissing : {false, true}) {
    EXPECT_EQ(
        LoadError(FileAt(path, mayBeMissing)).find("the environment file " + path + " is to "), 0u);
  }
  EXPECT_EQ(LoadError(FileAt(directory.Path(), true)),
            "the environment file " + directory.Path().string() + " is not a regular file");
  EXPECT_EQ(LoadError(FileAt(directory / "env/x", true)),
            "cannot open the environment file " + path + "/x: Not a directory");
}

}  // namespace NoxHandlerTest
