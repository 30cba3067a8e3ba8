#include "XmlEngine.h"

#include <pugixml.hpp>

#include <new>

namespace BaseSDK {

namespace {

/// To XPath a CDATA section is text.
bool IsText(const pugi::xml_node& node) {
  return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

/// To XPath, text and CDATA sections side by side are one text node; the library has several.
bool ContinuesText(const pugi::xml_node& node) {
  return IsText(node) && IsText(node.previous_sibling());
}

std::string WholeText(pugi::xml_node node) {
  std::string text;
  for (; IsText(node); node = node.next_sibling()) {
    text += node.value();
  }
  return text;
}

XmlEngine::Node Describe(const pugi::xpath_node& selected) {
  const pugi::xml_node node = selected.node();
  if (selected.attribute()) {
    return {false, 0, selected.attribute().value()};
  }
  if (node.type() == pugi::node_element) {
    return {
        true, static_cast<std::size_t>(node.offset_debug()) - 1, {}};  // its offset is the name's
  }
  return {false, 0, IsText(node) ? WholeText(node) : node.value()};
}

}  // namespace

struct XmlEngine::Document : pugi::xml_document {};

XmlEngine::XmlEngine(std::string_view text) : m_Document(std::make_unique<Document>()) {
  // Everything becomes a node, so that texts apart stay apart and white space counts.
  const auto result = m_Document->load_buffer(
      text.data(), text.size(), pugi::parse_full | pugi::parse_ws_pcdata, pugi::encoding_utf8);
  if (result.status == pugi::status_out_of_memory) {
    throw std::bad_alloc();
  }
}

XmlEngine::~XmlEngine() = default;

std::vector<XmlEngine::Node> XmlEngine::Select(const std::string& xpath) const {
  std::vector<Node> nodes;
  try {
    pugi::xpath_node_set selected = m_Document->select_nodes(xpath.c_str());
    selected.sort();
    for (const pugi::xpath_node& found : selected) {
      if (found.attribute() || !ContinuesText(found.node())) {
        nodes.push_back(Describe(found));
      }
    }
  } catch (const pugi::xpath_exception&) {
    nodes.clear();
  }
  return nodes;
}

}  // namespace BaseSDK
