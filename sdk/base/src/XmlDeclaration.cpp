#include "XmlDeclaration.h"

#include "XmlCursor.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace BaseSDK {

namespace {

constexpr std::string_view Digits = "0123456789";
constexpr std::string_view Letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

bool IsOneOf(std::string_view characters, char c) {
  return characters.find(c) != std::string_view::npos;
}

/// VersionNum = "1." digit { digit }
bool IsVersion(std::string_view value) {
  return value.size() > 2 && value.starts_with("1.") &&
         value.find_first_not_of(Digits, 2) == std::string_view::npos;
}

/// EncName = letter { letter | digit | "." | "_" | "-" }
bool IsEncodingName(std::string_view value) {
  return !value.empty() && IsOneOf(Letters, value.front()) &&
         std::all_of(value.begin(), value.end(), [](char c) {
           return IsOneOf(Letters, c) || IsOneOf(Digits, c) || IsOneOf("._-", c);
         });
}

bool IsYesOrNo(std::string_view value) {
  return value == "yes" || value == "no";
}

struct Item {
  std::string_view m_Name;
  bool (*m_IsValue)(std::string_view);
  const char* m_Wrong;
};

/// In the order in which they must stand; only the first one must.
constexpr std::array<Item, 3> Items = {
    {{"version", IsVersion, "a version is \"1.0\", or \"1.\" and other digits"},
     {"encoding", IsEncodingName,
      "the name of an encoding is a letter, then letters, digits, \".\", \"_\" and \"-\""},
     {"standalone", IsYesOrNo, "standalone is \"yes\" or \"no\""}}};

/// The number of the item called `name`, from `next` on; Items.size() when there is none.
std::size_t FindItem(std::string_view name, std::size_t next) {
  const auto found = std::find_if(Items.begin() + static_cast<std::ptrdiff_t>(next), Items.end(),
                                  [name](const Item& item) { return item.m_Name == name; });
  return static_cast<std::size_t>(found - Items.begin());
}

bool ScanValue(XmlCursor& cursor, const Item& item) {
  const std::size_t begin = cursor.Offset() + 1;  // behind the quotation mark
  std::string_view value;
  return cursor.ScanQuoted(value, "a value in quotes is expected", item.m_Wrong) &&
         (item.m_IsValue(value) || cursor.Fail(begin, item.m_Wrong));
}

/// item = name [ space ] "=" [ space ] quote value quote
/// `next` is the number of the first item that may still come.
bool ScanItem(XmlCursor& cursor, std::size_t& next) {
  const std::size_t begin = cursor.Offset();
  std::string_view name;
  if (!cursor.ScanName(name, "an XML declaration ends with \"?>\"")) {
    return false;
  }
  const std::size_t found = FindItem(name, next);
  if (next == 0 && found != 0) {
    return cursor.Fail(begin, "an XML declaration begins with its version");
  }
  if (found == Items.size()) {
    return cursor.Fail(begin,
                       "an XML declaration says version, encoding and standalone, "
                       "in this order and once each");
  }
  next = found + 1;
  return cursor.ScanEquals(name) && ScanValue(cursor, Items[found]);
}

}  // namespace

/// XMLDecl = "<?xml" space version [ space encoding ] [ space standalone ] [ space ] "?>"
bool ScanXmlDeclaration(XmlCursor& cursor) {
  std::size_t next = 0;
  for (;;) {
    const bool spaced = cursor.SkipSpace();
    const std::size_t end = cursor.Offset();
    if (cursor.Take("?>")) {
      return next != 0 || cursor.Fail(end, "an XML declaration begins with its version");
    }
    if (!spaced) {
      return cursor.Fail("white space or \"?>\" is missing in an XML declaration");
    }
    if (!ScanItem(cursor, next)) {
      return false;
    }
  }
}

}  // namespace BaseSDK
