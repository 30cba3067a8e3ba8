#include "agent/daemon/config/IniFile.h"

#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

std::string ErrorOf(const std::string& text) {
  try {
    (void)IniFile::Parse("agent.ini", AString::FromUtf8(text));
    return "(none)";
  } catch (const AgentError& error) {
    EXPECT_EQ(error.ExitStatus(), 2);
    return error.what();
  }
}

TEST(IniFile, ReadsSectionsKeysAndPlaces) {
  const IniFile file = IniFile::Parse(
      "a.ini",
      "\xEF\xBB\xBF; comment\n# another\n\n[One]\r\n key = a value ; not a comment \r\n"
      "empty=\n[ Two words ]\nk=v=w");
  ASSERT_EQ(file.Sections().size(), 2U);
  const IniFile::Section& one = file.Sections()[0];
  EXPECT_EQ(one.m_Name, AString("One"));
  EXPECT_EQ(one.m_Line, 4U);
  ASSERT_EQ(one.m_Entries.size(), 2U);
  EXPECT_EQ(one.m_Entries[0].m_Key, AString("key"));
  EXPECT_EQ(one.m_Entries[0].m_Value, AString("a value ; not a comment"));
  EXPECT_EQ(one.m_Entries[0].m_Line, 5U);
  EXPECT_EQ(one.m_Entries[1].m_Value, AString());
  EXPECT_EQ(file.Sections()[1].m_Name, AString("Two words"));
  EXPECT_EQ(file.Sections()[1].m_Entries[0].m_Value, AString("v=w"));
}

TEST(IniFile, ReadsNothingFromNothing) {
  EXPECT_TRUE(IniFile::Parse("a.ini", "").Sections().empty());
  EXPECT_TRUE(IniFile::Parse("a.ini", "\n\n;\n").Sections().empty());
}

TEST(IniFile, NamesFileAndLineOfWhatItCannotRead) {
  const struct {
    const char* m_Text;
    const char* m_Error;
  } rows[] = {
      {"[A]\nnonsense", "agent.ini:2: neither [Section] nor key = value"},
      {"[A\n", "agent.ini:1: a section is written [Name]; the closing bracket is missing"},
      {"[]\n", "agent.ini:1: a section without a name"},
      {"[", "agent.ini:1: a section is written [Name]; the closing bracket is missing"},
      {"k=v", "agent.ini:1: the key \"k\" stands before the first [Section]"},
      {"[A]\n\n=v", "agent.ini:3: a value without a key"},
      {"[A]\n[B]\n[A]", "agent.ini:3: the section \"A\" is there twice"},
      {"[A]\nk=1\nk=2", "agent.ini:3: the key \"k\" is there twice"},
      {"[A]\nk=\x01", "agent.ini:2: a character that is not text (the file is to be UTF-8)"},
      {"[A]\nk=\xFF", "agent.ini:2: a character that is not text (the file is to be UTF-8)"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ErrorOf(row.m_Text), row.m_Error) << row.m_Text;
  }
}

TEST(IniFile, NamesTheFileThatIsNotThere) {
  const TestSupport::TempDir dir;
  const std::string path = (dir / "missing.ini").string();
  try {
    (void)IniFile::Load(AString::FromUtf8(path));
    FAIL();
  } catch (const AgentError& error) {
    EXPECT_EQ(error.what(),
              "cannot read the configuration file " + path + ": No such file or directory");
  }
}

}  // namespace
}  // namespace NoxAgent
