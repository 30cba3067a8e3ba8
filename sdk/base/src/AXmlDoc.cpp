#include "XmlPath.h"
#include "XmlScanner.h"

#include <BaseSDK/AXmlDoc.h>

#include <pugixml.hpp>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace BaseSDK {

namespace {

constexpr std::size_t AllNodes = static_cast<std::size_t>(-1);
constexpr std::string_view Utf8ByteOrderMark = "\xEF\xBB\xBF";

/// The place of a byte, as people count: lines by line feeds, columns in characters.
void Locate(std::string_view text, std::size_t offset, AXmlDoc::AXmlError& error) {
  const std::string_view before = text.substr(0, offset);
  const std::size_t lineBegin = before.rfind('\n') + 1;  // npos + 1 is 0
  const auto isCharacter = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
  error.m_Line = 1 + static_cast<unsigned>(std::count(before.begin(), before.end(), '\n'));
  error.m_Column =
      1 + static_cast<unsigned>(std::count_if(
              before.begin() + static_cast<std::ptrdiff_t>(lineBegin), before.end(), isCharacter));
}

/// Where the first character stands that UTF-8 has no form for; npos when there is none.
std::size_t FindUnencodable(const std::wstring& text) {
  const auto found = std::find_if(text.begin(), text.end(), [](wchar_t character) {
    const auto c = static_cast<std::uint32_t>(character);
    return (c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF;
  });
  return found == text.end() ? std::wstring::npos : static_cast<std::size_t>(found - text.begin());
}

std::string WithoutByteOrderMark(const AString& text) {
  std::string utf8 = text.ToUtf8();
  if (utf8.starts_with(Utf8ByteOrderMark)) {
    utf8.erase(0, Utf8ByteOrderMark.size());
  }
  return utf8;
}

XmlPath::Nodes SelectByXPath(const pugi::xml_document& document, const std::string& xpath) {
  try {
    pugi::xpath_node_set nodes = document.select_nodes(xpath.c_str());
    nodes.sort();
    return {nodes.begin(), nodes.end()};
  } catch (const pugi::xpath_exception&) {
    return {};  // as the header promises
  }
}

/// In document order; of a plain path only the first `most`. To XPath, text and CDATA sections side
/// by side are one text node: only the first of them stays. Nothing for an expression that cannot
/// be read or yields, say, a number.
XmlPath::Nodes SelectNodes(const pugi::xml_document& document, const std::string& xpath,
                           std::size_t most) {
  const std::optional<XmlPath> path = XmlPath::Read(xpath);
  XmlPath::Nodes selected = path ? path->Select(document, most) : SelectByXPath(document, xpath);
  std::erase_if(selected, [](const pugi::xpath_node& found) {
    return XmlPath::IsText(found.node()) && XmlPath::IsText(found.node().previous_sibling());
  });
  return selected;
}

}  // namespace

struct AXmlDoc::Impl {
  bool Parse(const AString& text);
  bool Fail(const std::string& message);
  bool Fail(std::size_t offset, const std::string& message);
  XmlPath::Nodes Select(const AString& xpath, std::size_t most = AllNodes) const {
    return m_Parsed ? SelectNodes(m_Document, xpath.ToUtf8(), most) : XmlPath::Nodes();
  }
  AString Value(const pugi::xpath_node& selected) const;
  AString Markup(const pugi::xml_node& element) const;

  std::string m_Text;  ///< UTF-8, without a byte order mark
  pugi::xml_document m_Document;
  std::vector<XmlScanner::Element> m_Elements;
  bool m_Parsed = false;
  AXmlError m_Error;
  XmlPath::Nodes m_Found;
  std::size_t m_Next = 0;  ///< in m_Found; the current node is the one before
};

bool AXmlDoc::Impl::Fail(const std::string& message) {
  m_Error.m_Message = AString::FromUtf8(message);
  m_Text.clear();
  return false;
}

bool AXmlDoc::Impl::Fail(std::size_t offset, const std::string& message) {
  Locate(m_Text, offset, m_Error);
  return Fail(message);
}

bool AXmlDoc::Impl::Parse(const AString& text) {
  m_Text = WithoutByteOrderMark(text);
  if (m_Text.size() > MaxBytes) {
    return Fail("the document is too large");
  }
  XmlScanner scanner(m_Text, MaxDepth);
  if (!scanner.Scan()) {
    return Fail(scanner.ErrorOffset(), scanner.Message());
  }
  // In the UTF-8 form such a character was replaced: the scanner could not see it.
  const std::size_t wrong = FindUnencodable(text.Str());
  if (wrong != std::wstring::npos) {
    return Fail(WithoutByteOrderMark(text.Left(wrong)).size(),
                "a character that XML does not allow");
  }
  // Everything becomes a node, so that texts apart stay apart and white space counts.
  const auto result = m_Document.load_buffer(
      m_Text.data(), m_Text.size(), pugi::parse_full | pugi::parse_ws_pcdata, pugi::encoding_utf8);
  if (!result) {
    return Fail(static_cast<std::size_t>(result.offset), result.description());
  }
  m_Elements = scanner.Elements();
  m_Parsed = true;
  return true;
}

AString AXmlDoc::Impl::Markup(const pugi::xml_node& element) const {
  // The offset is that of the name, after "<".
  const auto begin = static_cast<std::size_t>(element.offset_debug()) - 1;
  const auto found = std::lower_bound(
      m_Elements.begin(), m_Elements.end(), begin,
      [](const XmlScanner::Element& left, std::size_t right) { return left.m_Begin < right; });
  if (found == m_Elements.end() || found->m_Begin != begin) {
    return AString();
  }
  return AString::FromUtf8(std::string_view(m_Text).substr(begin, found->m_End - begin));
}

AString AXmlDoc::Impl::Value(const pugi::xpath_node& selected) const {
  if (selected.attribute()) {
    return AString(selected.attribute().value());
  }
  const pugi::xml_node node = selected.node();
  if (node.type() == pugi::node_element) {
    return Markup(node);
  }
  std::string value = node.value();
  for (auto next = node.next_sibling(); XmlPath::IsText(node) && XmlPath::IsText(next);
       next = next.next_sibling()) {
    value += next.value();
  }
  return AString::FromUtf8(value);
}

AXmlDoc::AXmlDoc() : m_Impl(std::make_unique<Impl>()) {}

AXmlDoc::AXmlDoc(const AString& text) : AXmlDoc() {
  (void)Parse(text);
}

AXmlDoc::AXmlDoc(AXmlDoc&&) noexcept = default;
AXmlDoc& AXmlDoc::operator=(AXmlDoc&&) noexcept = default;
AXmlDoc::~AXmlDoc() = default;

bool AXmlDoc::Parse(const AString& text) {
  m_Impl = std::make_unique<Impl>();
  return m_Impl->Parse(text);
}

bool AXmlDoc::IsParsed() const {
  return m_Impl->m_Parsed;
}

const AXmlDoc::AXmlError& AXmlDoc::Error() const {
  return m_Impl->m_Error;
}

AString AXmlDoc::SelectSingleNode(const AString& xpath) const {
  const auto nodes = m_Impl->Select(xpath, 1);
  return nodes.empty() ? AString() : m_Impl->Value(nodes[0]);
}

bool AXmlDoc::Find(const AString& xpath) {
  m_Impl->m_Found = m_Impl->Select(xpath);
  m_Impl->m_Next = 0;
  return !m_Impl->m_Found.empty();
}

bool AXmlDoc::Read() {
  if (m_Impl->m_Next > m_Impl->m_Found.size()) {
    return false;
  }
  ++m_Impl->m_Next;
  return m_Impl->m_Next <= m_Impl->m_Found.size();
}

AString AXmlDoc::GetValue() const {
  const std::size_t next = m_Impl->m_Next;
  return next == 0 || next > m_Impl->m_Found.size() ? AString()
                                                    : m_Impl->Value(m_Impl->m_Found[next - 1]);
}

}  // namespace BaseSDK
