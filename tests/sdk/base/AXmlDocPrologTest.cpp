// What may come before the root element: the XML declaration and the document type.
#include "AXmlDocRows.h"

namespace BaseSDK {
namespace {

// "<?xml" space version [ space encoding ] [ space standalone ] [ space ] "?>"
TEST(AXmlDocProlog, XmlDeclaration) {
  constexpr const char* Misplaced = "an XML declaration may stand at the very beginning only";
  constexpr const char* Unspaced = "white space or \"?>\" is missing in an XML declaration";
  constexpr const char* Unversioned = "an XML declaration begins with its version";
  constexpr const char* Unordered =
      "an XML declaration says version, encoding and standalone, in this order and once each";
  CheckAll({
      {"<?xml version='1.0'?><a/>"},
      {"<?xml version=\"1.0\"?><a/>"},
      {"<?xml\tversion\r\n=\n'1.0' ?><a/>"},
      {"<?xml version='1.0' encoding='UTF-8'?><a/>"},
      {"<?xml version='1.0' standalone='no'?><a/>"},
      {"<?xml version='1.0'\nencoding = \"utf-8\"\tstandalone =\"yes\"\r\n?>\n<a/>"},
      {"\xEF\xBB\xBF<?xml version='1.0'?><a/>"},
      {" <?xml version='1.0'?><a/>", 1, 2, Misplaced},
      {"\n<?xml version='1.0'?><a/>", 2, 1, Misplaced},
      {"<!-- --><?xml version='1.0'?><a/>", 1, 9, Misplaced},
      {"<?xml version='1.0'?><?xml version='1.0'?><a/>", 1, 22, Misplaced},
      {"<a><?xml version='1.0'?></a>", 1, 4, Misplaced},
      {"<a/><?xml version='1.0'?>", 1, 5, Misplaced},
      {"<?xml?><a/>", 1, 6, Unversioned},
      {"<?xml ?><a/>", 1, 7, Unversioned},
      {"<?xml encoding='UTF-8'?><a/>", 1, 7, Unversioned},
      {"<?xml\nencoding='UTF-8' version='1.0'?><a/>", 2, 1, Unversioned},
      {"<?xml standalone='yes'?><a/>", 1, 7, Unversioned},
      {"<?xml VERSION='1.0'?><a/>", 1, 7, Unversioned},
      {"<?xml versions='1.0'?><a/>", 1, 7, Unversioned},
      {"<?xml version='1.0' version='1.0'?><a/>", 1, 21, Unordered},
      {"<?xml version='1.0' encoding='a' encoding='a'?><a/>", 1, 34, Unordered},
      {"<?xml version='1.0' standalone='no' standalone='no'?><a/>", 1, 37, Unordered},
      {"<?xml version='1.0' standalone='no' encoding='a'?><a/>", 1, 37, Unordered},
      {"<?xml version='1.0' encoding='a' version='1.0'?><a/>", 1, 34, Unordered},
      {"<?xml version='1.0' valid='no'?><a/>", 1, 21, Unordered},
      {"<?xml version='1.0' Encoding='a'?><a/>", 1, 21, Unordered},
      {"<?xml version='1.0'encoding='a'?><a/>", 1, 20, Unspaced},
      {"<?xml version='1.0' encoding='a'standalone='no'?><a/>", 1, 33, Unspaced},
      {"<?xml version='1.0'", 1, 20, Unspaced},
      {"<?xml version='1.0'><a/>", 1, 20, Unspaced},
      {"<?xml version='1.0'? ><a/>", 1, 20, Unspaced},
      {"<?xml='1.0'?><a/>", 1, 6, Unspaced},
      {"<?xml version='1.0' ><a/>", 1, 21, "an XML declaration ends with \"?>\""},
      {"<?xml version='1.0' ", 1, 21, "an XML declaration ends with \"?>\""},
      {"<?xml version='1.0' ? ><a/>", 1, 21, "an XML declaration ends with \"?>\""},
      {"<?xml version '1.0'?><a/>", 1, 15, "\"=\" is missing after \"version\""},
      {"<?xml version?><a/>", 1, 14, "\"=\" is missing after \"version\""},
      {"<?xml version=1.0?><a/>", 1, 15, "a value in quotes is expected"},
      {"<?xml version=?><a/>", 1, 15, "a value in quotes is expected"},
      {"<?xml version='1.0' encoding=UTF-8?><a/>", 1, 30, "a value in quotes is expected"},
  });
}

TEST(AXmlDocProlog, XmlVersion) {
  constexpr const char* Wrong = "a version is \"1.0\", or \"1.\" and other digits";
  CheckAll({
      // A reader of XML 1.0 takes documents of a later minor version for its own.
      {"<?xml version='1.1'?><a/>"},
      {"<?xml version='1.00'?><a/>"},
      {"<?xml version='1.9876543210'?><a/>"},
      {"<?xml version=''?><a/>", 1, 16, Wrong},
      {"<?xml version='1'?><a/>", 1, 16, Wrong},
      {"<?xml version='1.'?><a/>", 1, 16, Wrong},
      {"<?xml version='2.0'?><a/>", 1, 16, Wrong},
      {"<?xml version='01.0'?><a/>", 1, 16, Wrong},
      {"<?xml version='1,0'?><a/>", 1, 16, Wrong},
      {"<?xml version='1.0.0'?><a/>", 1, 16, Wrong},
      {"<?xml version='1.0a'?><a/>", 1, 16, Wrong},
      {"<?xml version='-1.0'?><a/>", 1, 16, Wrong},
      {"<?xml version='1.0 '?><a/>", 1, 16, Wrong},
      {"<?xml version=' 1.0'?><a/>", 1, 16, Wrong},
      {"<?xml\n version='&#49;.0'?><a/>", 2, 11, Wrong},
      {"<?xml version='1.0\" encoding='UTF-8'?><a/>", 1, 16, Wrong},
      {"<?xml version='1.0?><a/>", 1, 16, Wrong},
      {"<?xml version='1.\x01'?><a/>", 1, 18, "a character that XML does not allow"},
  });
}

// The text is decoded already, so the name is looked at, but never obeyed.
TEST(AXmlDocProlog, AnyNameOfAnEncoding) {
  constexpr const char* Wrong =
      "the name of an encoding is a letter, then letters, digits, \".\", \"_\" and \"-\"";
  CheckAll({
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xC3\xA4</a>"},
      {"<?xml version='1.0' encoding='UTF-16'?><a>\xC3\xA4</a>"},
      {"<?xml version='1.0' encoding='US-ASCII'?><a>\xC3\xA4</a>"},
      {"<?xml version='1.0' encoding='x'?><a/>"},
      {"<?xml version='1.0' encoding='A1._-Z9z'?><a/>"},
      {"<?xml version='1.0' encoding=''?><a/>", 1, 31, Wrong},
      {"<?xml version='1.0' encoding=' UTF-8'?><a/>", 1, 31, Wrong},
      {"<?xml version='1.0' encoding='UTF-8 '?><a/>", 1, 31, Wrong},
      {"<?xml version='1.0' encoding='8859'?><a/>", 1, 31, Wrong},
      {"<?xml version='1.0' encoding='-8'?><a/>", 1, 31, Wrong},
      {"<?xml version='1.0' encoding='UTF:8'?><a/>", 1, 31, Wrong},
      {"<?xml version='1.0' encoding='UTF/8'?><a/>", 1, 31, Wrong},
      {"<?xml version='1.0' encoding='\xC3\xA4'?><a/>", 1, 31, Wrong},
  });
  const AXmlDoc document{AString("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xC3\xA4</a>")};
  EXPECT_EQ(document.SelectSingleNode("/a/text()"), AString("\xC3\xA4"));
}

TEST(AXmlDocProlog, Standalone) {
  constexpr const char* Wrong = "standalone is \"yes\" or \"no\"";
  CheckAll({
      {"<?xml version='1.0' standalone='yes'?><!DOCTYPE a SYSTEM 'a.dtd'><a/>"},
      {"<?xml version='1.0' standalone='YES'?><a/>", 1, 33, Wrong},
      {"<?xml version='1.0' standalone='No'?><a/>", 1, 33, Wrong},
      {"<?xml version='1.0' standalone=''?><a/>", 1, 33, Wrong},
      {"<?xml version='1.0' standalone='yes '?><a/>", 1, 33, Wrong},
      {"<?xml version='1.0' standalone='true'?><a/>", 1, 33, Wrong},
      {"<?xml version='1.0' standalone=yes?><a/>", 1, 32, "a value in quotes is expected"},
  });
}

// "<!DOCTYPE" space name [ space external identifier ] [ space ] ">"
TEST(AXmlDocProlog, DocumentType) {
  constexpr const char* Unspaced = "white space is missing in a document type declaration";
  constexpr const char* Unended = "\">\" is missing after a document type declaration";
  CheckAll({
      {"<!DOCTYPE a><a/>"},
      {"<!DOCTYPE\n\ta\r\n><a/>"},
      {"<!-- --><?pi?> <!DOCTYPE a> <!-- --><?pi?><a/>"},
      {"<?xml version='1.0'?><!DOCTYPE a><a/>"},
      {"<!DOCTYPE other><a/>"},
      {"<!DOCTYPE \xC3\xA4:b><a/>"},
      {"<!DOCTYPE SYSTEM><a/>"},
      {"<!DOCTYPE><a/>", 1, 10, "white space is missing after \"<!DOCTYPE\""},
      {"<!DOCTYPEa><a/>", 1, 10, "white space is missing after \"<!DOCTYPE\""},
      {"<!DOCTYPE", 1, 10, "white space is missing after \"<!DOCTYPE\""},
      {"<!DOCTYPE ><a/>", 1, 11, "the name of the root element is expected"},
      {"<!DOCTYPE 1><a/>", 1, 11, "the name of the root element is expected"},
      {"<!DOCTYPE \x02 a><a/>", 1, 11, "the name of the root element is expected"},
      {"<!doctype a><a/>", 1, 2, "a name is missing after \"<\""},
      {"<! DOCTYPE a><a/>", 1, 2, "a name is missing after \"<\""},
      {"<!DOCTYPE a", 1, 12, Unended},
      {"<!DOCTYPE a b><a/>", 1, 13, Unended},
      {"<!DOCTYPE a -- c --><a/>", 1, 13, Unended},
      {"<!DOCTYPE a 'x'><a/>", 1, 13, Unended},
      {"<!DOCTYPE a'x'><a/>", 1, 12, Unended},
      {"<!DOCTYPE a <a/>", 1, 13, Unended},
      {"<!DOCTYPE a system 'x'><a/>", 1, 13, Unended},
      {"<!DOCTYPE aSYSTEM 'x'><a/>", 1, 19, Unended},
      {"<!DOCTYPE a/>", 1, 12, Unended},
      {"<!DOCTYPE a SYSTEM 'x' 'y'><a/>", 1, 24, Unended},
      {"<!DOCTYPE a SYSTEM 'x' NDATA n><a/>", 1, 24, Unended},
      {"<!DOCTYPE a SYSTEM'x'><a/>", 1, 19, Unspaced},
      {"<!DOCTYPE a SYSTEM><a/>", 1, 19, Unspaced},
      {"<!DOCTYPE a SYSTEMS 'x'><a/>", 1, 19, Unspaced},
      {"<!DOCTYPE a PUBLIC'x' 'y'><a/>", 1, 19, Unspaced},
      {"<!DOCTYPE a PUBLIC 'x''y'><a/>", 1, 23, Unspaced},
      {"<!DOCTYPE a PUBLIC 'x'><a/>", 1, 23, Unspaced},
      {"<a/><!DOCTYPE a>", 1, 5, "a document type declaration out of place"},
      {"<a><!DOCTYPE a></a>", 1, 4, "a document type declaration out of place"},
      {"<!DOCTYPE a><!DOCTYPE a><a/>", 1, 13, "a document type declaration out of place"},
  });
}

TEST(AXmlDocProlog, SystemIdentifier) {
  constexpr const char* Missing = "a system identifier in quotes is expected";
  CheckAll({
      {"<!DOCTYPE a SYSTEM 'a.dtd'><a/>"},
      {"<!DOCTYPE a SYSTEM \"a>b<!--['.dtd#x\" ><a/>"},
      {"<!DOCTYPE a SYSTEM\n'\"\xC3\xA4&%x;'><a/>"},
      {"<!DOCTYPE a SYSTEM ''><a/>"},
      {"<!DOCTYPE a SYSTEM x><a/>", 1, 20, Missing},
      {"<!DOCTYPE a SYSTEM ><a/>", 1, 20, Missing},
      {"<!DOCTYPE a PUBLIC 'x' ><a/>", 1, 24, Missing},
      {"<!DOCTYPE a PUBLIC 'x' [", 1, 24, Missing},
      {"<!DOCTYPE a SYSTEM 'x>", 1, 21, "a system identifier is not closed"},
      {"<!DOCTYPE a SYSTEM 'x\"><a/>", 1, 21, "a system identifier is not closed"},
      {"<!DOCTYPE a SYSTEM '\x01'><a/>", 1, 21, "a character that XML does not allow"},
  });
}

TEST(AXmlDocProlog, PublicIdentifier) {
  constexpr const char* Wrong = "a character that no public identifier holds";
  CheckAll({
      {"<!DOCTYPE a PUBLIC '' ''><a/>"},
      {"<!DOCTYPE a PUBLIC '-//X//DTD Y 1.0//EN' 'y.dtd'><a/>"},
      {"<!DOCTYPE a PUBLIC \"aZ09 \r\n-'()+,./:=?;!*#@$_%\" \"y\"><a/>"},
      {"<!DOCTYPE a PUBLIC x 'y'><a/>", 1, 20, "a public identifier in quotes is expected"},
      {"<!DOCTYPE a PUBLIC ><a/>", 1, 20, "a public identifier in quotes is expected"},
      {"<!DOCTYPE a PUBLIC 'x><a/>", 1, 21, "a public identifier is not closed"},
      {"<!DOCTYPE a PUBLIC '[' 'y'><a/>", 1, 21, Wrong},
      {"<!DOCTYPE a PUBLIC '12{' 'y'><a/>", 1, 23, Wrong},
      {"<!DOCTYPE a PUBLIC '\"' 'y'><a/>", 1, 21, Wrong},
      {"<!DOCTYPE a PUBLIC '&' 'y'><a/>", 1, 21, Wrong},
      {"<!DOCTYPE a PUBLIC '<' 'y'><a/>", 1, 21, Wrong},
      {"<!DOCTYPE a PUBLIC '>' 'y'><a/>", 1, 21, Wrong},
      {"<!DOCTYPE a PUBLIC 'a\n]' 'y'><a/>", 2, 1, Wrong},
      {"<!DOCTYPE a PUBLIC '^' 'y'><a/>", 1, 21, Wrong},
      {"<!DOCTYPE a PUBLIC '~' 'y'><a/>", 1, 21, Wrong},
      {"<!DOCTYPE a PUBLIC 'a\tb' 'y'><a/>", 1, 22, Wrong},
      {"<!DOCTYPE a PUBLIC '\xC3\xA4' 'y'><a/>", 1, 21, Wrong},
      {"<!DOCTYPE a PUBLIC '[' 'y' [<!ELEMENT a ANY>]><a/>", 1, 21, Wrong},
  });
}

// Entities and values of attributes could be declared there: leaving them out would change what the
// document says.
TEST(AXmlDocProlog, NoDeclarationsWithinTheDocument) {
  constexpr const char* Refused = "declarations within the document are not accepted";
  CheckAll({
      {"<!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>", 1, 13, Refused},
      {"<!DOCTYPE a[]><a/>", 1, 12, Refused},
      {"<!DOCTYPE a\n[ ]><a/>", 2, 1, Refused},
      {"<!DOCTYPE a SYSTEM 'x' [<!ATTLIST a b CDATA 'c'>]><a/>", 1, 24, Refused},
      {"<!DOCTYPE a PUBLIC 'x' 'y'[", 1, 27, Refused},
      {"<!DOCTYPE a SYSTEM 'x'><a>&x;</a>", 1, 27, "there is no entity \"&x;\""},
      {"<!ENTITY x 'y'><a/>", 1, 2, "a name is missing after \"<\""},
      {"<!ELEMENT a ANY><a/>", 1, 2, "a name is missing after \"<\""},
      {"<a><![INCLUDE[x]]></a>", 1, 5, "a name is missing after \"<\""},
  });
}

}  // namespace
}  // namespace BaseSDK
