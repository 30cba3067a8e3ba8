#include <BaseSDK/AXmlDoc.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace BaseSDK {
namespace {

constexpr char Task[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!-- sample -->\n"
    "<Task Enabled=\"1\">\n"
    "\t<HandlerCLSID>{7C0A1D52}</HandlerCLSID>\n"
    "\t<Schedule>\n"
    "\t\t<Trigger  Type='1'\tDescription=\"a &lt;b&gt; &amp; &#x20AC;\"  >\r\n"
    "\t\t\t<BeginDate>2005/03/01 08:00:00</BeginDate><!-- </Trigger> --></Trigger >\n"
    "\t\t<Trigger Type=\"2\" />\n"
    "\t</Schedule>\n"
    "</Task>\n";

std::vector<std::string> All(AXmlDoc& document, const AString& xpath) {
  std::vector<std::string> values;
  (void)document.Find(xpath);
  while (document.Read()) {
    values.push_back(document.GetValue().ToUtf8());
  }
  return values;
}

struct SelectRow {
  const char* m_XPath;
  const char* m_Value;
};

TEST(AXmlDoc, SelectsValuesAndMarkup) {
  const AXmlDoc document{AString(Task)};
  ASSERT_TRUE(document.IsParsed()) << document.Error().m_Message.ToUtf8();
  const SelectRow rows[] = {
      {"/Task/@Enabled", "1"},
      {"//HandlerCLSID/text()", "{7C0A1D52}"},
      {"//HandlerCLSID", "<HandlerCLSID>{7C0A1D52}</HandlerCLSID>"},
      {"//Trigger/@Description", "a <b> & \xE2\x82\xAC"},
      {"//Trigger[2]", "<Trigger Type=\"2\" />"},
      {"//Trigger",
       "<Trigger  Type='1'\tDescription=\"a &lt;b&gt; &amp; &#x20AC;\"  >\r\n"
       "\t\t\t<BeginDate>2005/03/01 08:00:00</BeginDate><!-- </Trigger> --></Trigger >"},
      {"//comment()", " sample "},
      {"//Nothing", ""},
      {"//Nothing/@x", ""},
      {"//Trigger[2]/text()", ""},
      // Not an expression, or one that yields no nodes.
      {"", ""},
      {"///", ""},
      {"//Trigger[", ""},
      {"count(//Trigger)", ""},
      {"$unknown", ""},
      {"nofunction()", ""},
  };
  for (const SelectRow& row : rows) {
    EXPECT_EQ(document.SelectSingleNode(row.m_XPath).ToUtf8(), row.m_Value) << row.m_XPath;
  }
}

TEST(AXmlDoc, WalksASelectionInDocumentOrder) {
  AXmlDoc document{AString("<a><b n='1'/><c><b n='2'/></c><b n='3'/></a>")};
  EXPECT_EQ(All(document, "//b"),
            (std::vector<std::string>{"<b n='1'/>", "<b n='2'/>", "<b n='3'/>"}));
  EXPECT_EQ(All(document, "//b/@n"), (std::vector<std::string>{"1", "2", "3"}));
  EXPECT_EQ(All(document, "//c | /a/b[1]"),
            (std::vector<std::string>{"<b n='1'/>", "<c><b n='2'/></c>"}));
  EXPECT_TRUE(All(document, "//none").empty());
}

// A path in parentheses is an expression that only the XPath engine reads.
TEST(AXmlDoc, WalksPlainPathsToWhatTheEngineSelects) {
  const char* const documents[] = {
      Task,
      "<a/>",
      "<a a='1'>x<a a='2'>y<b>1</b><a>z<b a='3' xmlns='u'>2</b></a></a>w<b>3<!-- --><![CDATA[4]]>"
      "</b><c:b xmlns:c='v' c:a='5' a='6'/><ab a='7'/><?b a?></a>",
      "<a><b><a><b><a><b><a><b><a>deep</a></b></a></b></a></b></a></b></a>",
      "<b><b><b a='1'/></b><a><b a='2'>t<![CDATA[]]></b></a></b>",
      "<a a=' 1\t2\r\n3\r4\n5&#10;&#9;&#13;&lt;&#xE9;&#x1F600;&quot;&apos; '> x\r\ny\rz\n\r\n&#13;"
      "&amp;&gt;<![CDATA[\r\n<&amp;>]\r]]>\r<b>1<![CDATA[2]]><![CDATA[]]>3</b><b><![CDATA[]]></b>"
      "<b a=''></b><b a='\xC3\xA4'>\xE2\x82\xAC\xF0\x9F\x98\x80</b>\r\n</a>\r\n",
  };
  const char* const paths[] = {
      "/a",
      "/b",
      "/a/b",
      "/a/a/b",
      "/b/b/b",
      "//a",
      "//b",
      "//a/text()",
      "//a/@a",
      "//b/text()",
      "/a/text()",
      "/a/@a",
      "/a/b/text()",
      "/a/a/b/@a",
      "/b/b/b/@a",
      "/b/a/b/text()",
      "//b/@a",
      "//b/@xmlns",
      "//ab/@a",
      "//c:b",
      "//b/@c:a",
      "/a/a/a/b/text()",
      "/a//b",
      "//a/b",
      "/Task/@Enabled",
      "//HandlerCLSID/text()",
      "//Trigger",
      "/Task/Schedule/Trigger/@Type",
      "/text()",
      "/@a",
      "//text()",
      "//@a",
      "//a/",
      "a/b",
      "/a/@a/b",
      "/a/text()/b",
      "//a/b/@a",
      "//1",
      "/a/@",
      "/",
      "/a/b/a/b/a/b/a/b",
      "/a/b/a/b/a/b/a/b/a/text()",
  };
  for (const char* const text : documents) {
    AXmlDoc document{AString(text)};
    ASSERT_TRUE(document.IsParsed()) << text;
    for (const std::string path : paths) {
      const AString plain(path.c_str()), expression(("(" + path + ")").c_str());
      EXPECT_EQ(All(document, plain), All(document, expression)) << path << " in " << text;
      EXPECT_EQ(document.SelectSingleNode(plain), document.SelectSingleNode(expression))
          << path << " in " << text;
    }
  }
}

/// So that nothing that was read before is recalled.
void ReadSomethingElse() {
  ASSERT_TRUE(AXmlDoc(AString("<else/>")).IsParsed());
}

// A document that was just read, and the elements of it, are not read a second time. Nobody can
// tell from what they select.
TEST(AXmlDoc, SelectsTheSameWhetherItIsReadOrRecalled) {
  const char* const whole =
      "<?xml version='1.0'?><!-- 1 --><a><!-- 2 -->x<b n='1'><b n='1'/><?p i?>y</b><b n='1'/>"
      "<c><![CDATA[z]]><b n='2'><b n='1'/>&amp;</b></c>w</a>\n<!-- 3 -->";
  const char* const paths[] = {
      "/a",          "/b",
      "/b/b",        "/a/b/b",
      "//b",         "/b/@n",
      "/b/b/@n",     "/b/text()",
      "/c/b/@n",     "/c/text()",
      "/c/b/text()", "//b/@n",
      "//@n",        "//comment()",
      "//text()",    "/*",
      "//b[2]",      "/b/b/..",
      "//b[@n]",     "/..",
      "//node()",    "/node()",
      "/c/b[1]",     "/c/*/b",
      "//b/..",      "//processing-instruction()",
  };
  AXmlDoc document{AString(whole)};
  std::vector<std::string> texts = All(document, "//*");
  ASSERT_EQ(texts.size(), 7u);
  texts.insert(texts.begin(), whole);
  for (const std::string& text : texts) {
    const AString asText = AString::FromUtf8(text);
    for (const char* const path : paths) {
      ReadSomethingElse();
      AXmlDoc read(asText);
      ReadSomethingElse();
      ASSERT_TRUE(AXmlDoc(AString(whole)).IsParsed());
      AXmlDoc recalled(asText);
      EXPECT_EQ(All(recalled, path), All(read, path)) << path << " in " << text;
      EXPECT_EQ(recalled.SelectSingleNode(path), read.SelectSingleNode(path))
          << path << " in " << text;
    }
  }
}

TEST(AXmlDoc, OutlivesTheDocumentThatItIsAnElementOf) {
  AXmlDoc element;
  {
    const AXmlDoc whole{AString("<a><b n='1'>x</b></a>")};
    ASSERT_TRUE(element.Parse(whole.SelectSingleNode("/a/b")));
  }
  ReadSomethingElse();
  EXPECT_EQ(element.SelectSingleNode("/b/@n"), AString("1"));
  EXPECT_EQ(element.SelectSingleNode("/b"), AString("<b n='1'>x</b>"));
}

TEST(AXmlDoc, RefusesWhatIsNoElementOfTheDocumentBefore) {
  const AXmlDoc whole{AString("<a><b n='1'>x</b><c/></a>")};
  ASSERT_TRUE(whole.IsParsed());
  for (const char* const piece : {"", "x", "n", "1", "<b n='1'>", "<b n='1'>x</b><c/>", "<a>"}) {
    EXPECT_FALSE(AXmlDoc(AString(piece)).IsParsed()) << piece;
  }
}

TEST(AXmlDoc, HasNoCurrentNodeBeforeAndAfterTheSelection) {
  AXmlDoc document{AString("<a>x</a>")};
  EXPECT_FALSE(document.Read());
  EXPECT_TRUE(document.GetValue().IsEmpty());
  EXPECT_TRUE(document.Find("/a/text()"));
  EXPECT_TRUE(document.GetValue().IsEmpty());
  EXPECT_TRUE(document.Read());
  EXPECT_EQ(document.GetValue(), AString("x"));
  EXPECT_FALSE(document.Read());
  EXPECT_FALSE(document.Read());
  EXPECT_TRUE(document.GetValue().IsEmpty());
  EXPECT_FALSE(document.Find("/b"));
  EXPECT_FALSE(document.Read());
}

TEST(AXmlDoc, TextAndCDataSideBySideAreOneTextNode) {
  AXmlDoc document{AString("<a>x<![CDATA[<y>]]>&amp;<!-- c -->z</a>")};
  EXPECT_EQ(document.SelectSingleNode("/a/text()"), AString("x<y>&"));
  EXPECT_EQ(All(document, "/a/text()"), (std::vector<std::string>{"x<y>&", "z"}));
}

TEST(AXmlDoc, WhiteSpaceCountsAsText) {
  const AXmlDoc document{AString("<a> \n<b> x </b></a>")};
  EXPECT_EQ(document.SelectSingleNode("/a/text()"), AString(" \n"));
  EXPECT_EQ(document.SelectSingleNode("/a/b/text()"), AString(" x "));
}

TEST(AXmlDoc, MarkupSurvivesWhateverLooksLikeItsEnd) {
  const char* const elements[] = {
      "<b/>",
      "<b></b>",
      "<b x='/>'/>",
      "<b x=\"&lt;/b>/>\">&gt;</b>",
      "<b><!-- </b> --></b>",
      "<b><![CDATA[</b>]]></b>",
      "<b><?pi </b> ?></b>",
      "<b><b><b/></b><b/></b>",
      "<b\n  z='1'\n  a='2'\n>]]</b\n>",
      "<b:c.d-e_f xmlns:b='u'/>",
      "<\xC3\xA4 \xC3\xB6='\xE2\x82\xAC'>\xF0\x9F\x98\x80</\xC3\xA4>",
  };
  for (const char* element : elements) {
    const AString text = AString("<r>\xC3\xA4 ") + element + "</r>";
    const AXmlDoc document(text);
    ASSERT_TRUE(document.IsParsed()) << element << document.Error().m_Message.ToUtf8();
    EXPECT_EQ(document.SelectSingleNode("/r/*"), AString(element));
    EXPECT_EQ(document.SelectSingleNode("/r"), text);
    EXPECT_EQ(AXmlDoc(AString(element)).SelectSingleNode("/*"), AString(element));
  }
}

TEST(AXmlDoc, SkipsAByteOrderMark) {
  const AXmlDoc document{AString("\xEF\xBB\xBF<?xml version='1.0'?><a>x</a>")};
  ASSERT_TRUE(document.IsParsed());
  EXPECT_EQ(document.SelectSingleNode("/a"), AString("<a>x</a>"));
}

TEST(AXmlDoc, EveryCutOfADocumentIsRefused) {
  const std::string whole = Task;
  const std::size_t end = whole.rfind("</Task>") + 7;
  for (std::size_t length = 0; length < end; ++length) {
    EXPECT_FALSE(AXmlDoc(AString::FromUtf8(whole.substr(0, length))).IsParsed()) << length;
  }
}

AString Nested(std::size_t depth) {
  AString text;
  for (std::size_t i = 0; i < depth; ++i) {
    text += "<a>";
  }
  for (std::size_t i = 0; i < depth; ++i) {
    text += "</a>";
  }
  return text;
}

TEST(AXmlDoc, NestingIsBounded) {
  EXPECT_TRUE(AXmlDoc(Nested(AXmlDoc::MaxDepth)).IsParsed());
  const AXmlDoc deeper(Nested(AXmlDoc::MaxDepth + 1));
  EXPECT_FALSE(deeper.IsParsed());
  EXPECT_EQ(deeper.Error().m_Message, AString("elements are nested too deeply"));
  EXPECT_EQ(deeper.Error().m_Column, 3 * AXmlDoc::MaxDepth + 1);
  EXPECT_FALSE(AXmlDoc(Nested(1000000)).IsParsed());
}

TEST(AXmlDoc, SizeIsBounded) {
  const std::wstring filler(AXmlDoc::MaxBytes - 7, L'x');
  EXPECT_TRUE(AXmlDoc(AString(L"<a>" + filler + L"</a>")).IsParsed());
  const AXmlDoc larger(AString(L"<a>x" + filler + L"</a>"));
  EXPECT_FALSE(larger.IsParsed());
  EXPECT_EQ(larger.Error().m_Message, AString("the document is too large"));
  EXPECT_EQ(larger.Error().m_Line, 0u);
  EXPECT_EQ(larger.Error().m_Column, 0u);
}

TEST(AXmlDoc, ManyAttributesAndElementsAreNoBurden) {
  std::wstring attributes;
  std::wstring elements;
  for (int i = 0; i < 100000; ++i) {
    attributes += L" a" + std::to_wstring(i) + L"='1'";
    elements += L"<b/>";
  }
  AXmlDoc document(AString(L"<a" + attributes + L">" + elements + L"</a>"));
  ASSERT_TRUE(document.IsParsed());
  EXPECT_EQ(All(document, "//b").size(), 100000u);
  EXPECT_EQ(All(document, "//@*").size(), 100000u);
}

TEST(AXmlDoc, ParseReplacesTheDocumentEvenWhenItFails) {
  AXmlDoc document{AString("<a>x</a>")};
  EXPECT_TRUE(document.Find("/a"));
  EXPECT_FALSE(document.Parse("<b>"));
  EXPECT_FALSE(document.Read());
  EXPECT_TRUE(document.SelectSingleNode("/a").IsEmpty());
  EXPECT_TRUE(document.Parse("<b>y</b>"));
  EXPECT_TRUE(document.Error().m_Message.IsEmpty());
  EXPECT_EQ(document.SelectSingleNode("/b/text()"), AString("y"));
}

TEST(AXmlDoc, StartsWithoutADocument) {
  AXmlDoc document;
  EXPECT_FALSE(document.IsParsed());
  EXPECT_TRUE(document.Error().m_Message.IsEmpty());
  EXPECT_FALSE(document.Find("/"));
  EXPECT_TRUE(document.SelectSingleNode("/").IsEmpty());
}

TEST(AXmlDoc, MovesWithItsSelection) {
  AXmlDoc first{AString("<a><b/><b x='2'/></a>")};
  ASSERT_TRUE(first.Find("//b"));
  ASSERT_TRUE(first.Read());
  AXmlDoc second = std::move(first);
  EXPECT_TRUE(second.Read());
  EXPECT_EQ(second.GetValue(), AString("<b x='2'/>"));
  EXPECT_TRUE(first.Parse("<c/>"));
  second = std::move(first);
  EXPECT_EQ(second.SelectSingleNode("/*"), AString("<c/>"));
}

}  // namespace
}  // namespace BaseSDK
