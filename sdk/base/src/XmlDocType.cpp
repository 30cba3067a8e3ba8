#include "XmlDocType.h"

#include "XmlCursor.h"

#include <string_view>

namespace BaseSDK {

namespace {

constexpr std::string_view PublicIdCharacters =
    " \r\nabcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-'()+,./:=?;!*#@$_%";

bool ScanSpace(XmlCursor& cursor, const char* missing) {
  return cursor.SkipSpace() || cursor.Fail(missing);
}

/// SystemLiteral = quote { any character but that quote } quote
bool ScanSystemId(XmlCursor& cursor) {
  std::string_view id;
  return cursor.ScanQuoted(id, "a system identifier in quotes is expected",
                           "a system identifier is not closed");
}

/// PubidLiteral = quote { one of PublicIdCharacters but that quote } quote
bool ScanPublicId(XmlCursor& cursor) {
  const std::size_t begin = cursor.Offset() + 1;  // behind the quotation mark
  std::string_view id;
  if (!cursor.ScanQuoted(id, "a public identifier in quotes is expected",
                         "a public identifier is not closed")) {
    return false;
  }
  const std::size_t wrong = id.find_first_not_of(PublicIdCharacters);
  return wrong == std::string_view::npos ||
         cursor.Fail(begin + wrong, "a character that no public identifier holds");
}

/// ExternalID = "SYSTEM" space system-id | "PUBLIC" space public-id space system-id
bool ScanExternalId(XmlCursor& cursor) {
  constexpr const char* Unspaced = "white space is missing in a document type declaration";
  if (cursor.Take("SYSTEM")) {
    return ScanSpace(cursor, Unspaced) && ScanSystemId(cursor);
  }
  return !cursor.Take("PUBLIC") || (ScanSpace(cursor, Unspaced) && ScanPublicId(cursor) &&
                                    ScanSpace(cursor, Unspaced) && ScanSystemId(cursor));
}

}  // namespace

/// doctypedecl = "<!DOCTYPE" space name [ space ExternalID ] [ space ] ">"
bool ScanXmlDocType(XmlCursor& cursor) {
  std::string_view name;
  if (!ScanSpace(cursor, "white space is missing after \"<!DOCTYPE\"") ||
      !cursor.ScanName(name, "the name of the root element is expected") ||
      (cursor.SkipSpace() && !ScanExternalId(cursor))) {
    return false;
  }
  (void)cursor.SkipSpace();
  if (cursor.LooksAt('[')) {
    return cursor.Fail("declarations within the document are not accepted");
  }
  return cursor.Take('>') || cursor.Fail("\">\" is missing after a document type declaration");
}

}  // namespace BaseSDK
