#include "XmlEngine.h"
#include "XmlPath.h"
#include "XmlScanner.h"
#include "XmlTree.h"

#include <BaseSDK/AXmlDoc.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace BaseSDK {

namespace {

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

}  // namespace

struct AXmlDoc::Impl {
  /// A selected node, to be read as it is asked for: an element is as large as all that it holds.
  struct Selected {
    std::string_view m_Written;
    std::optional<std::string> m_Decoded;  ///< where the node says something else than is written
  };
  using Selection = std::vector<Selected>;

  bool Parse(const AString& text);
  bool Fail(const std::string& message);
  bool Fail(std::size_t offset, const std::string& message);
  AString SelectFirst(std::string_view xpath);
  Selection SelectAll(std::string_view xpath);
  Selection SelectByPath(const XmlPath& path) const;
  Selection SelectByEngine(std::string_view xpath);
  static Selected Describe(const XmlTree::Node& node);
  static AString Value(const Selected& selected) {
    return AString::FromUtf8(selected.m_Decoded ? *selected.m_Decoded : selected.m_Written);
  }

  std::string m_Text;  ///< UTF-8, without a byte order mark
  XmlTree m_Tree;
  std::optional<XmlEngine> m_Engine;  ///< once an expression needs it
  bool m_Parsed = false;
  AXmlError m_Error;
  Selection m_Found;
  std::size_t m_Next = 0;  ///< in m_Found; the current node is the one before
};

bool AXmlDoc::Impl::Fail(const std::string& message) {
  m_Error.m_Message = AString::FromUtf8(message);
  m_Text.clear();
  m_Tree.Clear();
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
  XmlScanner scanner(m_Text, MaxDepth, m_Tree);
  if (!scanner.Scan()) {
    return Fail(scanner.ErrorOffset(), scanner.Message());
  }
  // In the UTF-8 form such a character was replaced: the scanner could not see it.
  // No such character has a form of one byte.
  const bool isPossible = m_Text.size() != text.Length();
  const std::size_t wrong = isPossible ? FindUnencodable(text.Str()) : std::wstring::npos;
  if (wrong != std::wstring::npos) {
    return Fail(WithoutByteOrderMark(text.Left(wrong)).size(),
                "a character that XML does not allow");
  }
  m_Parsed = true;
  return true;
}

AString AXmlDoc::Impl::SelectFirst(std::string_view xpath) {
  if (!m_Parsed) {
    return AString();
  }
  if (const std::optional<XmlPath>& path = XmlPath::Known(xpath)) {
    const XmlTree::Index first = path->Next(m_Tree, 0);
    return first == XmlTree::None ? AString() : Value(Describe(m_Tree.Nodes()[first]));
  }
  const Selection selection = SelectByEngine(xpath);
  return selection.empty() ? AString() : Value(selection.front());
}

AXmlDoc::Impl::Selection AXmlDoc::Impl::SelectAll(std::string_view xpath) {
  if (!m_Parsed) {
    return {};
  }
  const std::optional<XmlPath>& path = XmlPath::Known(xpath);
  return path ? SelectByPath(*path) : SelectByEngine(xpath);
}

AXmlDoc::Impl::Selection AXmlDoc::Impl::SelectByPath(const XmlPath& path) const {
  Selection selection;
  for (XmlTree::Index found = path.Next(m_Tree, 0); found != XmlTree::None;
       found = path.Next(m_Tree, found + 1)) {
    selection.push_back(Describe(m_Tree.Nodes()[found]));
  }
  return selection;
}

AXmlDoc::Impl::Selected AXmlDoc::Impl::Describe(const XmlTree::Node& node) {
  if (XmlTree::SaysWhatIsWritten(node)) {
    return {node.m_Raw, std::nullopt};
  }
  return {{}, XmlTree::Decode(node)};
}

AXmlDoc::Impl::Selection AXmlDoc::Impl::SelectByEngine(std::string_view xpath) {
  if (!m_Engine) {
    m_Engine.emplace(m_Text);
  }
  Selection selection;
  for (XmlEngine::Node& found : m_Engine->Select(std::string(xpath))) {
    if (!found.m_IsElement) {
      selection.push_back({{}, std::move(found.m_Value)});
    } else if (const XmlTree::Node* element = m_Tree.ElementAt(m_Text.data() + found.m_Begin)) {
      selection.push_back({element->m_Raw, std::nullopt});
    }
  }
  return selection;
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
  return xpath.Ascii() ? m_Impl->SelectFirst(*xpath.Ascii()) : m_Impl->SelectFirst(xpath.ToUtf8());
}

bool AXmlDoc::Find(const AString& xpath) {
  m_Impl->m_Found = m_Impl->SelectAll(xpath.ToUtf8());
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
                                                    : Impl::Value(m_Impl->m_Found[next - 1]);
}

}  // namespace BaseSDK
