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

bool XmlPath::IsText(const pugi::xml_node& node) {
  return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

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
    m_Kind = Kind::Text;
    return true;
  }
  if (!step.starts_with('@')) {
    return false;
  }
  m_Kind = Kind::Attribute;
  m_Attribute = step.substr(1);
  // To XPath a declaration of a namespace is no attribute.
  return IsPlainName(m_Attribute) && m_Attribute != "xmlns";
}

XmlPath::Nodes XmlPath::Select(const pugi::xml_document& document, std::size_t most) const {
  Nodes selected;
  SelectBelow(document, 0, most, selected);
  return selected;
}

void XmlPath::SelectBelow(const pugi::xml_node& node, std::size_t depth, std::size_t most,
                          Nodes& selected) const {
  const bool wantsTexts = m_Kind == Kind::Text && EndsAt(node, depth);
  for (pugi::xml_node child = node.first_child(); child && selected.size() < most;
       child = child.next_sibling()) {
    if (child.type() == pugi::node_element) {
      if (EndsAt(child, depth + 1)) {
        SelectAt(child, selected);
      }
      if (selected.size() < most && Passes(child, depth + 1)) {
        SelectBelow(child, depth + 1, most, selected);
      }
    } else if (wantsTexts && IsText(child)) {
      selected.emplace_back(child);
    }
  }
}

void XmlPath::SelectAt(const pugi::xml_node& element, Nodes& selected) const {
  if (m_Kind == Kind::Element) {
    selected.emplace_back(element);
  } else if (m_Kind == Kind::Attribute) {
    for (const pugi::xml_attribute& attribute : element.attributes()) {
      if (m_Attribute == attribute.name()) {
        selected.emplace_back(attribute, element);
      }
    }
  }
}

bool XmlPath::Passes(const pugi::xml_node& element, std::size_t depth) const {
  return m_IsAnywhere || (depth <= m_Depth && m_Elements[depth - 1] == element.name());
}

bool XmlPath::EndsAt(const pugi::xml_node& element, std::size_t depth) const {
  const bool isDeepEnough = m_IsAnywhere ? depth > 0 : depth == m_Depth;
  return isDeepEnough && m_Elements[m_Depth - 1] == element.name();
}

}  // namespace BaseSDK
