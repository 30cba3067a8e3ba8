#include "XmlPath.h"

#include "Characters.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

namespace BaseSDK {

namespace {

constexpr std::string_view TextStep = "text()";

/// Takes a name of ASCII letters and digits off the front; empty when none stands there.
std::string_view TakeName(std::string_view& path) {
  std::size_t length = 0;
  while (length < path.size() &&
         (IsAsciiLetter(path[length]) || (length > 0 && IsAsciiDigit(path[length])))) {
    ++length;
  }
  const std::string_view name = path.substr(0, length);
  path.remove_prefix(length);
  return name;
}

bool TakeSlash(std::string_view& path) {
  const bool isThere = path.starts_with('/');
  path.remove_prefix(isThere ? 1 : 0);
  return isThere;
}

/// A path and what was read from it, which borrows from it.
struct KnownPath {
  std::string m_Text;
  std::optional<XmlPath> m_Path;
};

constexpr std::size_t KnownPathCount = 64;

/// Where to look for a path: after FNV-1a, four bytes at a time.
std::size_t PlaceOf(std::string_view path) {
  constexpr std::uint32_t Prime = 16777619;
  auto hash = static_cast<std::uint32_t>(path.size());
  for (; path.size() >= sizeof(hash); path.remove_prefix(sizeof(hash))) {
    std::uint32_t four = 0;
    std::memcpy(&four, path.data(), sizeof(four));
    hash = (hash ^ four) * Prime;
    hash ^= hash >> 15;
  }
  for (const char c : path) {
    hash = (hash ^ static_cast<unsigned char>(c)) * Prime;
  }
  return (hash >> 20) % KnownPathCount;
}

}  // namespace

const std::optional<XmlPath>& XmlPath::Known(std::string_view path) {
  static thread_local std::array<KnownPath, KnownPathCount> remembered;
  KnownPath& known = remembered[PlaceOf(path)];
  if (known.m_Text != path) {
    known.m_Path.reset();
    known.m_Text = path;
    known.m_Path = Read(known.m_Text);
  }
  return known.m_Path;
}

std::optional<XmlPath> XmlPath::Read(std::string_view path) {
  std::optional<XmlPath> read(std::in_place);
  if (!TakeSlash(path)) {
    return std::nullopt;
  }
  read->m_IsAnywhere = TakeSlash(path);
  do {
    if (read->ReadLastStep(path)) {
      break;
    }
    if (!read->ReadElement(TakeName(path))) {
      return std::nullopt;
    }
  } while (TakeSlash(path));
  const bool isKnown = read->m_Depth == 1 || (read->m_Depth > 1 && !read->m_IsAnywhere);
  return path.empty() && isKnown ? read : std::nullopt;
}

bool XmlPath::ReadElement(std::string_view name) {
  if (name.empty() || m_Depth == MaxNames) {
    return false;
  }
  m_Elements[m_Depth++] = name;
  return true;
}

/// Takes the step off; without one the path is as it was.
bool XmlPath::ReadLastStep(std::string_view& path) {
  if (path == TextStep) {
    m_Kind = XmlTree::Kind::Text;
    path.remove_prefix(TextStep.size());
    return true;
  }
  if (!path.starts_with('@')) {
    return false;
  }
  std::string_view rest = path.substr(1);
  m_Kind = XmlTree::Kind::Attribute;
  m_Attribute = TakeName(rest);
  // To XPath a declaration of a namespace is no attribute.
  const bool isAttribute = !m_Attribute.empty() && m_Attribute != "xmlns";
  path = isAttribute ? rest : path;
  return isAttribute;
}

XmlTree::Index XmlPath::Next(const XmlTree& tree, XmlTree::Index from) const {
  const std::vector<XmlTree::Node>& nodes = tree.Nodes();
  for (XmlTree::Index i = from; i < nodes.size(); ++i) {
    if (nodes[i].m_Kind == m_Kind &&
        (m_Kind != XmlTree::Kind::Attribute || nodes[i].m_Name == m_Attribute) &&
        EndsAt(tree, m_Kind == XmlTree::Kind::Element ? i : nodes[i].m_Owner)) {
      return i;
    }
  }
  return XmlTree::None;
}

bool XmlPath::EndsAt(const XmlTree& tree, XmlTree::Index element) const {
  std::size_t depth = m_Depth;
  for (; depth > 0 && element != XmlTree::None; --depth) {
    const XmlTree::Node& node = tree.Nodes()[element];
    if (node.m_Name != m_Elements[depth - 1]) {
      return false;
    }
    element = node.m_Owner;
  }
  return depth == 0 && (m_IsAnywhere || element == XmlTree::None);
}

}  // namespace BaseSDK
