#include "XmlTree.h"

#include "Utf8.h"
#include "XmlReference.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace BaseSDK {

namespace {

constexpr std::string_view CDataBegin = "<![CDATA[";
constexpr std::string_view CDataEnd = "]]>";

/// Takes a text apart from its front. It is known to be well formed.
class Decoder {
 public:
  explicit Decoder(const XmlTree::Node& node)
      : m_Rest(node.m_Raw), m_IsAttribute(node.m_Kind == XmlTree::Kind::Attribute) {}

  std::string Decode() {
    while (!m_Rest.empty()) {
      if (m_Rest.front() == '&') {
        TakeReference();
      } else if (m_Rest.front() == '<') {
        TakeCData();
      } else {
        TakeCharacter();
      }
    }
    return std::move(m_Decoded);
  }

 private:
  void TakeReference() {
    const std::size_t end = m_Rest.find(';');
    AppendUtf8(XmlReferencedCharacter(m_Rest.substr(1, end - 1)), m_Decoded);
    m_Rest.remove_prefix(end + 1);
  }

  void TakeCData() {
    m_Rest.remove_prefix(CDataBegin.size());
    while (!m_Rest.starts_with(CDataEnd)) {
      TakeCharacter();
    }
    m_Rest.remove_prefix(CDataEnd.size());
  }

  void TakeCharacter() {
    const bool isLineEnd = m_Rest.front() == '\r' || m_Rest.front() == '\n';
    const char character = isLineEnd ? '\n' : m_Rest.front();
    m_Rest.remove_prefix(m_Rest.starts_with("\r\n") ? 2 : 1);
    m_Decoded += m_IsAttribute && (isLineEnd || character == '\t') ? ' ' : character;
  }

  std::string_view m_Rest;
  const bool m_IsAttribute;
  std::string m_Decoded;
};

}  // namespace

XmlTree::Index XmlTree::AddElement(Index owner, std::string_view name) {
  m_Nodes.push_back({Kind::Element, true, owner, name, {}});
  return static_cast<Index>(m_Nodes.size() - 1);
}

void XmlTree::AddAttribute(Index owner, std::string_view name, std::string_view value,
                           bool isPlain) {
  m_Nodes.push_back({Kind::Attribute, isPlain, owner, name, value});
}

void XmlTree::AddText(Index owner, std::string_view text, bool isPlain) {
  Node& last = m_Nodes.back();
  if (last.m_Kind == Kind::Text && last.m_Raw.data() + last.m_Raw.size() == text.data()) {
    last.m_Raw = std::string_view(last.m_Raw.data(), last.m_Raw.size() + text.size());
    last.m_IsPlain = last.m_IsPlain && isPlain;
  } else {
    m_Nodes.push_back({Kind::Text, isPlain, owner, {}, text});
  }
}

XmlTree::Range XmlTree::RangeOf(Index element) const {
  const std::string_view markup = m_Nodes[element].m_Raw;
  const char* const end = markup.data() + markup.size();
  Index next = element + 1;
  while (next < m_Nodes.size() && m_Nodes[next].m_Raw.data() < end) {
    ++next;
  }
  return {element, next};
}

const XmlTree::Node* XmlTree::ElementAt(const char* place) const {
  const std::less<const char*> isBefore;
  const auto found = std::lower_bound(
      m_Nodes.begin(), m_Nodes.end(), place,
      [&](const Node& node, const char* wanted) { return isBefore(node.m_Raw.data(), wanted); });
  const bool isThere = found != m_Nodes.end() && found->m_Raw.data() == place;
  return isThere && found->m_Kind == Kind::Element ? &*found : nullptr;
}

bool XmlTree::SaysWhatIsWritten(const Node& node) {
  const bool isAttribute = node.m_Kind == Kind::Attribute;
  return node.m_IsPlain ||
         std::none_of(node.m_Raw.begin(), node.m_Raw.end(), [isAttribute](char c) {
           return c == '&' || c == '<' || c == '\r' || (isAttribute && (c == '\t' || c == '\n'));
         });
}

std::string XmlTree::Decode(const Node& node) {
  return Decoder(node).Decode();
}

}  // namespace BaseSDK
