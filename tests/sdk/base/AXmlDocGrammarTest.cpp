// What a document may be by the grammar of XML 1.0: characters, names, elements and what is in
// them.
#include "AXmlDocRows.h"

namespace BaseSDK {
namespace {

// document = prolog element { comment | processing instruction | space }
TEST(AXmlDocGrammar, OneRootElement) {
  CheckAll({
      {"<a/>"},
      {" \r\n\t<a/>\n"},
      {"<!-- c --><?pi?><a/><!-- c --><?pi x?>"},
      {"", 1, 1, "there is no element"},
      {" \n ", 2, 2, "there is no element"},
      {"<!-- only -->", 1, 14, "there is no element"},
      {"<?xml version='1.0'?>", 1, 22, "there is no element"},
      {"<!DOCTYPE a>", 1, 13, "there is no element"},
      {"x<a/>", 1, 1, "text outside the root element"},
      {" x<a/>", 1, 2, "text outside the root element"},
      {"\x01<a/>", 1, 1, "text outside the root element"},
      {"<!DOCTYPE a> x<a/>", 1, 14, "text outside the root element"},
      {"<a/>x", 1, 5, "text outside the root element"},
      {"<a/>]]>", 1, 5, "text outside the root element"},
      {"<a/>\n&amp;", 2, 1, "text outside the root element"},
      {"&#32;<a/>", 1, 1, "text outside the root element"},
      {"<![CDATA[]]><a/>", 1, 1, "text outside the root element"},
      {"<a/><![CDATA[x]]>", 1, 5, "text outside the root element"},
      {"<a/><b/>", 1, 5, "there is more than one root element"},
      {"<a/>\n\n<a/>", 3, 1, "there is more than one root element"},
      {"<a></a><a></a>", 1, 8, "there is more than one root element"},
  });
}

// Char
TEST(AXmlDocGrammar, Characters) {
  CheckAll({
      {"<a>\t\r\n \x7F\xC2\x80\xC2\x85\xC2\x9F</a>"},
      {"<a>\xED\x9F\xBF\xEE\x80\x80\xEF\xB7\x90\xEF\xBB\xBF\xEF\xBF\xBD</a>"},
      {"<a>\xF0\x90\x80\x80\xF0\x9F\xBF\xBF\xF4\x8F\xBF\xBF</a>"},
      {"<a>\x01</a>", 1, 4, "a character that XML does not allow"},
      {"<a>\x0B</a>", 1, 4, "a character that XML does not allow"},
      {"<a>\x0C</a>", 1, 4, "a character that XML does not allow"},
      {"<a>\x1B</a>", 1, 4, "a character that XML does not allow"},
      {"<a x='\x7F\x1F'/>", 1, 8, "a character that XML does not allow"},
      {"<a>\xEF\xBF\xBE</a>", 1, 4, "a character that XML does not allow"},
      {"<a x='\xEF\xBF\xBF'/>", 1, 7, "a character that XML does not allow"},
      {"<a><!-- \xEF\xBF\xBF --></a>", 1, 9, "a character that XML does not allow"},
      {"<a><?p \xEF\xBF\xBF?></a>", 1, 8, "a character that XML does not allow"},
      {"<a><![CDATA[\xEF\xBF\xBF]]></a>", 1, 13, "a character that XML does not allow"},
      {"<!DOCTYPE a SYSTEM '\xEF\xBF\xBF'><a/>", 1, 21, "a character that XML does not allow"},
      // Bytes that are not UTF-8.
      {"<a>\xC3\xA4\xE2\x82\xAC\xFF</a>", 1, 6, "a character that XML does not allow"},
      {"<a>\xC0\x80</a>", 1, 4, "a character that XML does not allow"},
      {"<a>\xED\xA0\x80</a>", 1, 4, "a character that XML does not allow"},
      {"<a>\xED\xB0\x80</a>", 1, 4, "a character that XML does not allow"},
      {"<a>\xF4\x90\x80\x80</a>", 1, 4, "a character that XML does not allow"},
      {"<a>\xF7\x80\x80\x80</a>", 1, 4, "a character that XML does not allow"},
      // Columns count characters, lines line feeds.
      {"<a>\n\xC3\xA4\xF0\x9F\x98\x80&</a>", 2, 3, "\"&\" without an entity; write \"&amp;\""},
      {"<a>\r\n\r\n  <b></a>", 3, 6, "closing tag of \"a\" where that of \"b\" is expected"},
      {"\xEF\xBB\xBF<a>&</a>", 1, 4, "\"&\" without an entity; write \"&amp;\""},
      {"\xEF\xBB\xBF\xEF\xBB\xBF<a/>", 1, 1, "text outside the root element"},
  });
}

TEST(AXmlDocGrammar, CharactersThatUtf8CannotHold) {
  const wchar_t surrogatePair[] = {L'<', L'a', L'>', 0xD83D, 0xDE00, L'<', L'/', L'a', L'>'};
  const DocumentRow row = {"surrogates", 1, 4, "a character that XML does not allow"};
  Check(AString(surrogatePair, 9), row);
  // In the kit's strings these stand for the two bytes of a character.
  const wchar_t bytes[] = {0xFEFF, L'<', L'a', L'>', 0xDCC3, 0xDCA4, L'<', L'/', L'a', L'>'};
  Check(AString(bytes, 10), row);
  const wchar_t pastUnicode[] = {L'<', L'a', L'>', 0x110000, L'<', L'/', L'a', L'>'};
  Check(AString(pastUnicode, 8), row);
  Check(AString(L"<a>\0</a>", 8), row);
}

// Name = NameStartChar { NameChar }
TEST(AXmlDocGrammar, Names) {
  CheckAll({
      {"<:/>"},
      {"<_.-0123456789/>"},
      {"<a:b:c/>"},
      {"<a :=''/>"},
      {"<abcdefghijklmnopqrstuvwxyz/>"},
      {"<ABCDEFGHIJKLMNOPQRSTUVWXYZ/>"},
      {"<xml/>"},
      // The first and the last character of each range.
      {"<\xC3\x80\xC3\x96\xC3\x98\xC3\xB6\xC3\xB8\xCB\xBF/>"},
      {"<\xCD\xB0\xCD\xBD\xCD\xBF\xE1\xBF\xBF\xE2\x80\x8C\xE2\x80\x8D/>"},
      {"<\xE2\x81\xB0\xE2\x86\x8F\xE2\xB0\x80\xE2\xBF\xAF\xE3\x80\x81\xED\x9F\xBF/>"},
      {"<\xEF\xA4\x80\xEF\xB7\x8F\xEF\xB7\xB0\xEF\xBF\xBD/>"},
      {"<\xF0\x90\x80\x80\xF3\xAF\xBF\xBF/>"},
      {"<a\xC2\xB7\xCC\x80\xCD\xAF\xE2\x80\xBF\xE2\x81\x80/>"},
      {"<", 1, 2, "a name is missing after \"<\""},
      {"< a/>", 1, 2, "a name is missing after \"<\""},
      {"<1/>", 1, 2, "a name is missing after \"<\""},
      {"<-/>", 1, 2, "a name is missing after \"<\""},
      {"<./>", 1, 2, "a name is missing after \"<\""},
      {"<@/>", 1, 2, "a name is missing after \"<\""},
      {"<[/>", 1, 2, "a name is missing after \"<\""},
      {"<`/>", 1, 2, "a name is missing after \"<\""},
      {"<{/>", 1, 2, "a name is missing after \"<\""},
      {"<a;/>", 1, 3, "white space is missing before an attribute"},
      {"<a\x7F/>", 1, 3, "white space is missing before an attribute"},
      // A digit-like character may go on a name, but not begin it.
      {"<\xC2\xB7/>", 1, 2, "a character that no name begins with"},
      {"<\xCC\x80/>", 1, 2, "a character that no name begins with"},
      {"<\xE2\x80\xBF/>", 1, 2, "a character that no name begins with"},
      {"<a \xCC\x80='1'/>", 1, 4, "a character that no name begins with"},
      {"<a></\xC3\x97>", 1, 6, "a character that no name begins with"},
      {"<a><?\xC3\x97?></a>", 1, 6, "a character that no name begins with"},
      {"<!DOCTYPE \xC3\x97><a/>", 1, 11, "a character that no name begins with"},
      // Just outside the ranges.
      {"<a\xC2\xBF/>", 1, 3, "a character that no name holds"},
      {"<a\xC3\x97/>", 1, 3, "a character that no name holds"},
      {"<a\xC3\xB7/>", 1, 3, "a character that no name holds"},
      {"<a\xCD\xBE/>", 1, 3, "a character that no name holds"},
      {"<a\xE2\x80\x8B/>", 1, 3, "a character that no name holds"},
      {"<a\xE2\x80\x8E/>", 1, 3, "a character that no name holds"},
      {"<a\xE2\x80\xBE/>", 1, 3, "a character that no name holds"},
      {"<a\xE2\x81\x81/>", 1, 3, "a character that no name holds"},
      {"<a\xE2\x81\xAF/>", 1, 3, "a character that no name holds"},
      {"<a\xE2\x86\x90/>", 1, 3, "a character that no name holds"},
      {"<a\xE2\xAF\xBF/>", 1, 3, "a character that no name holds"},
      {"<a\xE2\xBF\xB0/>", 1, 3, "a character that no name holds"},
      {"<a\xE3\x80\x80/>", 1, 3, "a character that no name holds"},
      {"<a\xEE\x80\x80/>", 1, 3, "a character that no name holds"},
      {"<a\xEF\xA3\xBF/>", 1, 3, "a character that no name holds"},
      {"<a\xEF\xB7\x90/>", 1, 3, "a character that no name holds"},
      {"<a\xEF\xB7\xAF/>", 1, 3, "a character that no name holds"},
      {"<a\xF3\xB0\x80\x80/>", 1, 3, "a character that no name holds"},
      {"<a \xC3\xB6\xC3\x97='1'/>", 1, 5, "a character that no name holds"},
      {"<a\xC3/>", 1, 3, "a character that XML does not allow"},
      {"<\xFF/>", 1, 2, "a character that XML does not allow"},
      {"<a\xEF\xBF\xBE/>", 1, 3, "a character that XML does not allow"},
  });
}

// element = empty-element tag | start tag, content, end tag
TEST(AXmlDocGrammar, Elements) {
  CheckAll({
      {"<a></a>"},
      {"<a\t\r\n ></a\t\r\n >"},
      {"<a />"},
      {"<a><b/><b></b><b><b/></b></a>"},
      {"<a>", 1, 4, "element \"a\" is not closed"},
      {"<a><b></b>", 1, 11, "element \"a\" is not closed"},
      {"<a", 1, 3, "a tag is not closed"},
      {"<a ", 1, 4, "a tag is not closed"},
      {"<a /", 1, 4, "an attribute name is expected"},
      {"<a / >", 1, 4, "an attribute name is expected"},
      {"<a/ >", 1, 3, "white space is missing before an attribute"},
      {"<a<b/></a>", 1, 3, "white space is missing before an attribute"},
      {"<a><b/</a>", 1, 6, "white space is missing before an attribute"},
      {"<a><!x></a>", 1, 5, "a name is missing after \"<\""},
      {"<a>1 < 2</a>", 1, 7, "a name is missing after \"<\""},
      {"<a></a", 1, 7, "\">\" is missing after \"</a\""},
      {"<a></a x>", 1, 8, "\">\" is missing after \"</a\""},
      {"<a></a/>", 1, 7, "\">\" is missing after \"</a\""},
      {"<a></a x='1'>", 1, 8, "\">\" is missing after \"</a\""},
      {"<a></>", 1, 6, "a name is missing after \"</\""},
      {"<a></ a>", 1, 6, "a name is missing after \"</\""},
      {"</a>", 1, 1, "closing tag of \"a\" without an opening one"},
      {"<a/></a>", 1, 5, "closing tag of \"a\" without an opening one"},
      {"<a></A>", 1, 4, "closing tag of \"A\" where that of \"a\" is expected"},
      {"<a></aa>", 1, 4, "closing tag of \"aa\" where that of \"a\" is expected"},
      {"<a>\n <b></a></b>", 2, 5, "closing tag of \"a\" where that of \"b\" is expected"},
  });
}

// attribute = name [ space ] "=" [ space ] value
TEST(AXmlDocGrammar, Attributes) {
  CheckAll({
      {"<a x='1'\ty=\"2\"\r\nz=''/>"},
      {"<a x='\"' y=\"'\"/>"},
      {"<a x = '1'/>"},
      {"<a x\n=\n'1'/>"},
      {"<a x='>\t\r\n]]>'/>"},
      {"<a xml:lang='en' xml:space='any'/>"},
      {"<a x='1' X='2'/>"},
      {"<a x/>", 1, 5, "\"=\" is missing after \"x\""},
      {"<a x y='1'/>", 1, 6, "\"=\" is missing after \"x\""},
      {"<a x='1' '2'/>", 1, 10, "an attribute name is expected"},
      {"<a ='1'/>", 1, 4, "an attribute name is expected"},
      {"<a 12='34'/>", 1, 4, "an attribute name is expected"},
      {"<a x=1/>", 1, 6, "an attribute value needs quotes"},
      {"<a x=>", 1, 6, "an attribute value needs quotes"},
      {"<a x=", 1, 6, "an attribute value needs quotes"},
      {"<a x='1", 1, 6, "an attribute value is not closed"},
      {"<a x=\"1'/>", 1, 6, "an attribute value is not closed"},
      {"<a x='1'", 1, 9, "a tag is not closed"},
      {"<a x='1>\n</a>", 2, 1, "\"<\" in an attribute value; write \"&lt;\""},
      {"<a x='<'/>", 1, 7, "\"<\" in an attribute value; write \"&lt;\""},
      {"<a x='1'y='2'/>", 1, 9, "white space is missing before an attribute"},
      {"<a x='1'x='2'/>", 1, 9, "white space is missing before an attribute"},
      {"<a x='1' x='2'/>", 1, 10, "attribute \"x\" is given twice"},
      {"<a x='1' y='2' x='1'/>", 1, 16, "attribute \"x\" is given twice"},
  });
}

// reference = "&" name ";" | "&#" digits ";" | "&#x" digits ";"
TEST(AXmlDocGrammar, References) {
  CheckAll({
      {"<a>&lt;&gt;&amp;&apos;&quot;</a>"},
      {"<a x='&lt;&gt;&amp;&apos;&quot;&#10;'/>"},
      {"<a>&#9;&#10;&#13;&#32;&#xD7FF;&#xe000;&#xfffd;&#x10000;&#x10FFFF;&#1114111;</a>"},
      {"<a>&#0000000000000000000000000000000000000000000000000000000000000000000000065;</a>"},
      {"<a>&#x000000000000000000000000000000000000000000000000000000000000000000041;</a>"},
      {"<a x='a & b'/>", 1, 9, "\"&\" without an entity; write \"&amp;\""},
      {"<a x='a&'/>", 1, 8, "\"&\" without an entity; write \"&amp;\""},
      {"<a x='&#60'/>", 1, 7, "\"&\" without an entity; write \"&amp;\""},
      {"<a>a & b</a>", 1, 6, "\"&\" without an entity; write \"&amp;\""},
      {"<a>&;</a>", 1, 4, "\"&\" without an entity; write \"&amp;\""},
      {"<a>&&amp;</a>", 1, 4, "\"&\" without an entity; write \"&amp;\""},
      {"<a>&amp</a>", 1, 4, "\"&\" without an entity; write \"&amp;\""},
      {"<a>&amp ;</a>", 1, 4, "\"&\" without an entity; write \"&amp;\""},
      {"<a>& amp;</a>", 1, 4, "\"&\" without an entity; write \"&amp;\""},
      {"<a>&# 65;</a>", 1, 4, "\"&\" without an entity; write \"&amp;\""},
      {"<a>&", 1, 4, "\"&\" without an entity; write \"&amp;\""},
      {"<a>&nbsp;</a>", 1, 4, "there is no entity \"&nbsp;\""},
      {"<a>&.x;</a>", 1, 4, "there is no entity \"&.x;\""},
      {"<a>&AMP;</a>", 1, 4, "there is no entity \"&AMP;\""},
      {"<a x='&x;'/>", 1, 7, "there is no entity \"&x;\""},
      {"<a>&#;</a>", 1, 4, "there is no entity \"&#;\""},
      {"<a>&#x;</a>", 1, 4, "there is no entity \"&#x;\""},
      {"<a>&#0;</a>", 1, 4, "there is no entity \"&#0;\""},
      {"<a>&#11;</a>", 1, 4, "there is no entity \"&#11;\""},
      {"<a>&#31;</a>", 1, 4, "there is no entity \"&#31;\""},
      {"<a>&#-1;</a>", 1, 4, "there is no entity \"&#-1;\""},
      {"<a>&#1F;</a>", 1, 4, "there is no entity \"&#1F;\""},
      {"<a>&#xG;</a>", 1, 4, "there is no entity \"&#xG;\""},
      {"<a>&#X41;</a>", 1, 4, "there is no entity \"&#X41;\""},
      {"<a>&#xD800;</a>", 1, 4, "there is no entity \"&#xD800;\""},
      {"<a>&#xDFFF;</a>", 1, 4, "there is no entity \"&#xDFFF;\""},
      {"<a>&#xFFFE;</a>", 1, 4, "there is no entity \"&#xFFFE;\""},
      {"<a>&#xFFFF;</a>", 1, 4, "there is no entity \"&#xFFFF;\""},
      {"<a>&#x110000;</a>", 1, 4, "there is no entity \"&#x110000;\""},
      {"<a>&#4294967361;</a>", 1, 4, "there is no entity \"&#4294967361;\""},
      {"<a>&#18446744073709551681;</a>", 1, 4, "there is no entity \"&#18446744073709551681;\""},
      // Names of any length; messages show their beginning.
      {"<a>&x1234567890123456789012345678901234567890123456789012345678901\xC3\xA4y;</a>", 1, 4,
       "there is no entity \"&x1234567890123456789012345678901234567890123456789012345678901...\""},
  });
}

// text and CDATA sections
TEST(AXmlDocGrammar, TextAndCData) {
  CheckAll({
      {"<a>></a>"},
      {"<a>]] ></a>"},
      {"<a>]]&gt;</a>"},
      {"<a>]]<!-- -->></a>"},
      {"<a><![CDATA[]]></a>"},
      {"<a><![CDATA[<&]>]]]></a>"},
      {"<a>]<![CDATA[]]]>]></a>"},
      {"<a><![CDATA[<![CDATA[]]></a>"},
      {"<a>]]></a>", 1, 4, "\"]]>\" in text; write \"]]&gt;\""},
      {"<a>x]]]></a>", 1, 6, "\"]]>\" in text; write \"]]&gt;\""},
      {"<a><![CDATA[]]>]]></a>", 1, 16, "\"]]>\" in text; write \"]]&gt;\""},
      {"<a><![CDATA[x</a>", 1, 13, "a CDATA section is not closed"},
      {"<a><![CDATA[x]] ></a>", 1, 13, "a CDATA section is not closed"},
      {"<a><![CDATA [x]]></a>", 1, 5, "a name is missing after \"<\""},
      {"<a><![cdata[x]]></a>", 1, 5, "a name is missing after \"<\""},
      {"<a><! [CDATA[x]]></a>", 1, 5, "a name is missing after \"<\""},
  });
}

// comment = "<!--" { any character, but no "--" } "-->"
TEST(AXmlDocGrammar, Comments) {
  CheckAll({
      {"<a><!----></a>"},
      {"<a><!-- - -> <b> & ]]> <!- --></a>"},
      {"<a><!--->--></a>"},
      {"<a><!-- x -- y --></a>", 1, 11, "\"--\" in a comment"},
      {"<a><!-- x ---></a>", 1, 11, "\"--\" in a comment"},
      {"<a><!-----></a>", 1, 8, "\"--\" in a comment"},
      {"<a><!-- x</a>", 1, 8, "a comment is not closed"},
      {"<a><!-- x -</a>", 1, 8, "a comment is not closed"},
      {"<a><!--></a>", 1, 8, "a comment is not closed"},
      {"<a><!- x --></a>", 1, 5, "a name is missing after \"<\""},
      {"<a x='1' <!-- -->/>", 1, 10, "an attribute name is expected"},
  });
}

// processing instruction = "<?" name [ space { any character } ] "?>"
TEST(AXmlDocGrammar, ProcessingInstructions) {
  CheckAll({
      {"<a><?pi?></a>"},
      {"<a><?pi ?></a>"},
      {"<a><?pi ? > <? ]]> -- & ?\?></a>"},
      {"<a><?xml-stylesheet x?></a>"},
      {"<?xmlx version='1.0'?><a/>"},
      {"<?xm?><a/>"},
      {"<a><? pi?></a>", 1, 6, "a name is missing after \"<?\""},
      {"<a><?\?></a>", 1, 6, "a name is missing after \"<?\""},
      {"<a><?1?></a>", 1, 6, "a name is missing after \"<?\""},
      {"<a><?pi+?></a>", 1, 8, "white space is missing after \"pi\""},
      {"<a><?pi?\?></a>", 1, 8, "white space is missing after \"pi\""},
      {"<a><?pi</a>", 1, 8, "white space is missing after \"pi\""},
      {"<a><?pi x</a>", 1, 9, "a processing instruction is not closed"},
      {"<a><?pi x?</a>", 1, 9, "a processing instruction is not closed"},
      {"<a><?pi x?", 1, 9, "a processing instruction is not closed"},
      {"<?XML version='1.0'?><a/>", 1, 1, "a processing instruction may not be called \"XML\""},
      {"<?xmL?><a/>", 1, 1, "a processing instruction may not be called \"xmL\""},
      {"<a><?xMl x?></a>", 1, 4, "a processing instruction may not be called \"xMl\""},
      {"<a/><?Xml?>", 1, 5, "a processing instruction may not be called \"Xml\""},
  });
}

}  // namespace
}  // namespace BaseSDK
