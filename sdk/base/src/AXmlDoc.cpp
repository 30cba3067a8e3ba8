#include "XmlEngine.h"
#include "XmlPath.h"
#include "XmlReading.h"
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

  void Parse(const AString& text);
  void ParseAscii(std::string_view text);
  void ParseWide(const AString& text);
  std::shared_ptr<const XmlReading> Read(std::string text);
  void Fail(const std::string& message);
  void FailAt(std::string_view text, std::size_t offset, const std::string& message);
  bool IsParsed() const { return m_Document.m_Reading != nullptr; }
  const XmlTree& Tree() const { return m_Document.m_Reading->Tree(); }
  AString SelectFirst(std::string_view xpath);
  Selection SelectAll(std::string_view xpath);
  Selection SelectByPath(const XmlPath& path) const;
  Selection SelectByEngine(std::string_view xpath);
  static Selected Describe(const XmlTree::Node& node);
  static AString Value(const XmlTree::Node& node) {
    return XmlTree::SaysWhatIsWritten(node) ? AString::FromUtf8(node.m_Raw)
                                            : AString::FromUtf8(XmlTree::Decode(node));
  }
  static AString Value(const Selected& selected) {
    return AString::FromUtf8(selected.m_Decoded ? *selected.m_Decoded : selected.m_Written);
  }

  XmlPart m_Document;
  std::optional<XmlEngine> m_Engine;  ///< once an expression needs it
  AXmlError m_Error;
  Selection m_Found;
  std::size_t m_Next = 0;  ///< in m_Found; the current node is the one before
};

void AXmlDoc::Impl::Fail(const std::string& message) {
  m_Error.m_Message = AString::FromUtf8(message);
}

void AXmlDoc::Impl::FailAt(std::string_view text, std::size_t offset, const std::string& message) {
  Locate(text, offset, m_Error);
  Fail(message);
}

void AXmlDoc::Impl::Parse(const AString& text) {
  if (const auto ascii = text.Ascii()) {
    ParseAscii(*ascii);
  } else {
    ParseWide(text);
  }
}

void AXmlDoc::Impl::ParseAscii(std::string_view text) {
  m_Document = XmlPart::Recall(text);
  if (IsParsed()) {
    return;
  }
  if (std::shared_ptr<const XmlReading> reading = Read(std::string(text))) {
    XmlPart::Keep(reading);
    m_Document = XmlPart::Whole(std::move(reading));
  }
}

void AXmlDoc::Impl::ParseWide(const AString& text) {
  std::shared_ptr<const XmlReading> reading = Read(WithoutByteOrderMark(text));
  if (reading == nullptr) {
    return;
  }
  // In the UTF-8 form such a character was replaced: the scanner could not see it.
  const std::size_t wrong = FindUnencodable(text.Str());
  if (wrong != std::wstring::npos) {
    FailAt(reading->Text(), WithoutByteOrderMark(text.Left(wrong)).size(),
           "a character that XML does not allow");
    return;
  }
  m_Document = XmlPart::Whole(std::move(reading));
}

/// `text` is UTF-8, without a byte order mark.
std::shared_ptr<const XmlReading> AXmlDoc::Impl::Read(std::string text) {
  if (text.size() > MaxBytes) {
    Fail("the document is too large");
    return nullptr;
  }
  const auto reading = std::make_shared<XmlReading>(std::move(text));
  XmlReading::Failure failure;
  if (!reading->Read(MaxDepth, failure)) {
    FailAt(reading->Text(), failure.m_Offset, failure.m_Message);
    return nullptr;
  }
  return reading;
}

AString AXmlDoc::Impl::SelectFirst(std::string_view xpath) {
  if (!IsParsed()) {
    return AString();
  }
  if (const std::optional<XmlPath>& path = XmlPath::Known(xpath)) {
    const XmlTree::Index first = path->Next(Tree(), m_Document.m_Nodes, m_Document.m_Nodes.m_Begin);
    return first == XmlTree::None ? AString() : Value(Tree().Nodes()[first]);
  }
  const Selection selection = SelectByEngine(xpath);
  return selection.empty() ? AString() : Value(selection.front());
}

AXmlDoc::Impl::Selection AXmlDoc::Impl::SelectAll(std::string_view xpath) {
  if (!IsParsed()) {
    return {};
  }
  const std::optional<XmlPath>& path = XmlPath::Known(xpath);
  return path ? SelectByPath(*path) : SelectByEngine(xpath);
}

AXmlDoc::Impl::Selection AXmlDoc::Impl::SelectByPath(const XmlPath& path) const {
  Selection selection;
  const XmlTree::Range nodes = m_Document.m_Nodes;
  for (XmlTree::Index found = path.Next(Tree(), nodes, nodes.m_Begin); found != XmlTree::None;
       found = path.Next(Tree(), nodes, found + 1)) {
    selection.push_back(Describe(Tree().Nodes()[found]));
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
  const std::string_view text = m_Document.m_Text;
  if (!m_Engine) {
    m_Engine.emplace(text);
  }
  Selection selection;
  for (XmlEngine::Node& found : m_Engine->Select(std::string(xpath))) {
    if (!found.m_IsElement) {
      selection.push_back({{}, std::move(found.m_Value)});
    } else if (const XmlTree::Node* element = Tree().ElementAt(text.data() + found.m_Begin)) {
      selection.push_back({element->m_Raw, std::nullopt});
    }
  }
  return selection;
}

AXmlDoc::AXmlDoc() : m_Impl(std::make_unique<Impl>()) {}

AXmlDoc::AXmlDoc(const AString& text) : AXmlDoc() {
  m_Impl->Parse(text);
}

AXmlDoc::AXmlDoc(AXmlDoc&&) noexcept = default;
AXmlDoc& AXmlDoc::operator=(AXmlDoc&&) noexcept = default;
AXmlDoc::~AXmlDoc() = default;

bool AXmlDoc::Parse(const AString& text) {
  m_Impl = std::make_unique<Impl>();
  m_Impl->Parse(text);
  return m_Impl->IsParsed();
}

bool AXmlDoc::IsParsed() const {
  return m_Impl->IsParsed();
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
