// What may come before the root element: the XML declaration and the document type.
#include "AXmlDocRows.h"

namespace BaseSDK {
namespace {

TEST(AXmlDocProlog, XmlDeclaration) {
  CheckAll({
      {"<?xml version='1.0' encoding='ISO-8859-1' standalone='yes'?><a/>"},
      {" <?xml version='1.0'?><a/>", 1, 2,
       "an XML declaration may stand at the very beginning only"},
  });
}

TEST(AXmlDocProlog, DocumentType) {
  CheckAll({
      {"<!DOCTYPE a><a/>"},
      {"<!DOCTYPE a SYSTEM \"a>b.dtd\"><a/>"},
      {"<!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>", 1, 13,
       "declarations within the document are not accepted"},
      {"<a/><!DOCTYPE a>", 1, 5, "a document type declaration out of place"},
      {"<!DOCTYPE a><!DOCTYPE a><a/>", 1, 13, "a document type declaration out of place"},
      {"<!DOCTYPE a", 1, 1, "a document type declaration is not closed"},
      {"<!DOCTYPE \x02 a><a/>", 1, 11, "a character that XML does not allow"},
  });
}

}  // namespace
}  // namespace BaseSDK
