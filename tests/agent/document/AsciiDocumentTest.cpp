#include "agent/document/AsciiDocument.h"

#include "tests/agent/document/Samples.h"

#include <BaseSDK/AXmlDoc.h>

#include <gtest/gtest.h>

namespace NoxAgentTest {

using BaseSDK::AString;
using NoxAgent::AsciiDocument;

namespace {

std::string Ascii(const std::string& utf8) {
  const AsciiDocument document(AString::FromUtf8(utf8));
  EXPECT_FALSE(document.Problem()) << utf8;
  return document.Text().ToUtf8();
}

}  // namespace

TEST(AsciiDocument, LeavesSamplesAsTheyAre) {
  for (const auto& path : SamplePaths()) {
    EXPECT_EQ(ReadWhole(path), Ascii(ReadWhole(path)));
  }
}

TEST(AsciiDocument, WritesReferencesInTextAndAttributeValues) {
  EXPECT_EQ("<a b=\"&#233;\">&#8364;</a>", Ascii("<a b=\"\xC3\xA9\">\xE2\x82\xAC</a>"));
  EXPECT_EQ("<a b='>&#128512;'/>", Ascii("<a b='>\xF0\x9F\x98\x80'/>"));
}

TEST(AsciiDocument, SaysTheSameAsBefore) {
  const AString before = AString::FromUtf8("<a b='\xC3\xBC \"x\"'><c>\xE2\x82\xAC &amp;</c></a>");
  const BaseSDK::AXmlDoc read(before);
  const BaseSDK::AXmlDoc readAgain(AsciiDocument(before).Text());
  for (const char* path : {"/a/@b", "/a/c/text()"}) {
    EXPECT_EQ(read.SelectSingleNode(path).ToUtf8(), readAgain.SelectSingleNode(path).ToUtf8());
  }
}

TEST(AsciiDocument, LeavesOutTheByteOrderMark) {
  EXPECT_EQ("<a/>", Ascii("\xEF\xBB\xBF<a/>"));
}

TEST(AsciiDocument, PassesOnWhatIsNotWellFormed) {
  for (const char* text : {"", "<", "<a b='", "<!--", "<![CDATA[x", "text", "<?x"}) {
    EXPECT_EQ(text, Ascii(text));
  }
}

struct RefusedRow {
  const char* m_Text;
  unsigned m_Line, m_Column;
  const char* m_Message;
};

class AsciiDocumentRefused : public testing::TestWithParam<RefusedRow> {};

TEST_P(AsciiDocumentRefused, NamesThePlace) {
  const RefusedRow& row = GetParam();
  const AsciiDocument document(AString::FromUtf8(row.m_Text));
  ASSERT_TRUE(document.Problem()) << row.m_Text;
  EXPECT_TRUE(document.Text().IsEmpty());
  EXPECT_EQ(row.m_Line, document.Problem()->m_Line) << row.m_Text;
  EXPECT_EQ(row.m_Column, document.Problem()->m_Column) << row.m_Text;
  EXPECT_EQ(row.m_Message, document.Problem()->m_Message.ToUtf8());
}

const RefusedRow RefusedRows[] = {
    {"<a\n><\xC3\xA9/>", 2, 3, "a character outside ASCII in a name"},
    {"<a>\xC3\xA9<!-- \xC3\xA9 -->", 1, 10, "a character outside ASCII in a comment"},
    {"<a><![CDATA[\xC3\xA9]]>", 1, 13, "a character outside ASCII in a CDATA section"},
    {"<?x \xC3\xA9?>", 1, 5, "a character outside ASCII in a processing instruction"},
    {"<!DOCTYPE \xC3\xA9>", 1, 11, "a character outside ASCII in a document type"},
    {"<a>\n\n x\xFFz", 3, 3, "a byte or character that XML does not know"},
    {"<a b='\xEF\xBF\xBF'/>", 1, 7, "a byte or character that XML does not know"}};

INSTANTIATE_TEST_SUITE_P(Rows, AsciiDocumentRefused, testing::ValuesIn(RefusedRows));

}  // namespace NoxAgentTest
