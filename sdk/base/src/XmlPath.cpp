#include "XmlPath.h"

#include "Characters.h"

#include <algorithm>

namespace BaseSDK {

namespace {

bool IsPlainName(std::string_view name) {
  return !name.empty() && IsAsciiLetter(name.front()) &&
         std::all_of(name.begin(), name.end(),
                     [](char c) { return IsAsciiLetter(c) || IsAsciiDigit(c); });
}

/// What stands before the next "/"; `path` goes on behind it.
std::string_view TakeStep(std::string_view& path) {
  const std::size_t end = std::min(path.find('/'), path.size());
  const std::string_view step = path.substr(0, end);
  path.remove_prefix(std::min(end + 1, path.size()));
  return step;
}

}  // namespace

std::optional<XmlPath> XmlPath::Read(std::string_view path) {
  XmlPath read;
  read.m_IsAnywhere = path.starts_with("//");
  if (!path.starts_with("/") || path.ends_with("/")) {
    return std::nullopt;
  }
  path.remove_prefix(read.m_IsAnywhere ? 2 : 1);
  while (!path.empty()) {
    const std::string_view step = TakeStep(path);
    const bool isLast = path.empty();
    if (!read.ReadElement(step) && !(isLast && read.ReadLastStep(step))) {
      return std::nullopt;
    }
  }
  const bool isKnown = read.m_Depth == 1 || (read.m_Depth > 1 && !read.m_IsAnywhere);
  return isKnown ? std::optional(read) : std::nullopt;
}

bool XmlPath::ReadElement(std::string_view step) {
  if (!IsPlainName(step) || m_Depth == MaxNames) {
    return false;
  }
  m_Elements[m_Depth++] = step;
  return true;
}

bool XmlPath::ReadLastStep(std::string_view step) {
  if (step == "text()") {
    m_Kind = XmlTree::Kind::Text;
    return true;
  }
  if (!step.starts_with('@')) {
    return false;
  }
  m_Kind = XmlTree::Kind::Attribute;
  m_Attribute = step.substr(1);
  // To XPath a declaration of a namespace is no attribute.
  return IsPlainName(m_Attribute) && m_Attribute != "xmlns";
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
