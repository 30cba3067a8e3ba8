#include <BaseSDK/AIniText.h>

#include <gtest/gtest.h>

namespace {

using BaseSDK::AIniError;
using BaseSDK::AIniText;
using BaseSDK::AString;

std::string ErrorOf(const char* text) {
  try {
    (void)AIniText("a.ini", AString::FromUtf8(text));
    return "(none)";
  } catch (const AIniError& error) {
    return error.what();
  }
}

TEST(AIniText, KeepsTheOrderAndThePlaceOfEverything) {
  const AIniText ini("a.ini",
                     "\xEF\xBB\xBF; comment\n\n[One]\r\n key = v ; w \r\nempty=\n[Two]\nk=v=w");
  ASSERT_EQ(ini.Sections().size(), 2U);
  const AIniText::Section& one = ini.Sections()[0];
  EXPECT_EQ(one.m_Name, AString("One"));
  EXPECT_EQ(one.m_Line, 3U);
  ASSERT_EQ(one.m_Entries.size(), 2U);
  EXPECT_EQ(one.m_Entries[0].m_Value, AString("v ; w"));
  EXPECT_EQ(one.m_Entries[0].m_Line, 4U);
  EXPECT_TRUE(one.m_Entries[1].m_Value.IsEmpty());
  EXPECT_EQ(ini.Sections()[1].m_Entries[0].m_Value, AString("v=w"));
}

TEST(AIniText, NamesFileAndLineOfWhatItCannotRead) {
  EXPECT_EQ(ErrorOf("[A]\nnonsense"), "a.ini:2: neither [Section] nor key = value");
  EXPECT_EQ(ErrorOf("[A\n"),
            "a.ini:1: a section is written [Name]; the closing bracket is missing");
  EXPECT_EQ(ErrorOf("[]"), "a.ini:1: a section without a name");
  EXPECT_EQ(ErrorOf("k=v"), "a.ini:1: the key \"k\" stands before the first [Section]");
  EXPECT_EQ(ErrorOf("[A]\n\n=v"), "a.ini:3: a value without a key");
  EXPECT_EQ(ErrorOf("[A]\n[A]"), "a.ini:2: the section \"A\" is there twice");
  EXPECT_EQ(ErrorOf("[A]\nk=1\nk=2"), "a.ini:3: the key \"k\" is there twice");
  EXPECT_EQ(ErrorOf("[A]\nk=\x01"),
            "a.ini:2: a character that is not text (the file is to be UTF-8)");
}

TEST(AIniText, ErrorAtNamesThePlaceForWhoeverFindsAValueBad) {
  const AIniText ini("a.ini", "");
  EXPECT_TRUE(ini.Sections().empty());
  EXPECT_STREQ(ini.ErrorAt(7, "too large").what(), "a.ini:7: too large");
}

}  // namespace
