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
  void Read(std::string_view path) {
    m_Path.reset();
    m_Text = path;
    m_Path = XmlPath::Read(m_Text);
  }

  std::string m_Text;  ///< empty: none yet
  std::optional<XmlPath> m_Path;
};

constexpr std::size_t KnownPathCount = 64;
/// A path is at its place or, where others were there before, at one of the next.
constexpr std::size_t MostPlaces = 4;

/// Where to look for a path. Those of one kind of document differ in their length or their middle.
std::size_t PlaceOf(std::string_view path) {
  constexpr std::uint32_t Spread = 2654435761U;  // 2^32 by the golden ratio: multiplicative hashing
  std::uint32_t middle = 0;
  if (path.size() >= 2 * sizeof(middle)) {
    std::memcpy(&middle, path.data() + path.size() / 2, sizeof(middle));
  }
  return ((static_cast<std::uint32_t>(path.size()) ^ middle) * Spread >> 16) % KnownPathCount;
}

}  // namespace

const std::optional<XmlPath>& XmlPath::Known(std::string_view path) {
  static thread_local std::array<KnownPath, KnownPathCount> remembered;
  std::size_t place = PlaceOf(path);
  for (std::size_t places = 1; remembered[place].m_Text != path; ++places) {
    if (remembered[place].m_Text.empty() || places == MostPlaces) {
      remembered[place].Read(path);
      break;
    }
    place = (place + 1) % KnownPathCount;
  }
  return remembered[place].m_Path;
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

XmlTree::Index XmlPath::Next(const XmlTree& tree, XmlTree::Range nodes, XmlTree::Index from) const {
  const XmlTree::Node* const all = tree.Nodes().data();
  const XmlTree::Index outside = all[nodes.m_Begin].m_Owner;
  for (XmlTree::Index i = from; i < nodes.m_End; ++i) {
    const XmlTree::Node& node = all[i];
    if (node.m_Kind == m_Kind &&
        (m_Kind != XmlTree::Kind::Attribute || node.m_Name == m_Attribute) &&
        EndsAt(tree, outside, m_Kind == XmlTree::Kind::Element ? i : node.m_Owner)) {
      return i;
    }
  }
  return XmlTree::None;
}

bool XmlPath::EndsAt(const XmlTree& tree, XmlTree::Index outside, XmlTree::Index element) const {
  std::size_t depth = m_Depth;
  for (; depth > 0 && element != outside; --depth) {
    const XmlTree::Node& node = tree.Nodes()[element];
    if (node.m_Name != m_Elements[depth - 1]) {
      return false;
    }
    element = node.m_Owner;
  }
  return depth == 0 && (m_IsAnywhere || element == outside);
}

}  // namespace BaseSDK
