#include "XmlReading.h"

#include "XmlScanner.h"

#include <utility>

namespace BaseSDK {

namespace {

/// Of a document that a thread keeps.
constexpr std::size_t MostKeptBytes = 64 * 1024;

/// What a thread read last, and which element of it was asked for last.
struct Kept {
  std::shared_ptr<const XmlReading> m_Reading;
  XmlTree::Index m_Element = 0;
};

Kept& KeptByThread() {
  static thread_local Kept kept;
  return kept;
}

bool IsElement(const XmlTree::Node& node, std::string_view markup) {
  return node.m_Kind == XmlTree::Kind::Element && node.m_Raw == markup;
}

/// The element of that markup, sought onwards from the one before: elements are mostly asked for in
/// their order. None when there is none.
XmlTree::Index FindElement(Kept& kept, std::string_view markup) {
  const std::vector<XmlTree::Node>& nodes = kept.m_Reading->Tree().Nodes();
  for (std::size_t count = 0; count < nodes.size(); ++count) {
    kept.m_Element = kept.m_Element + 1 < nodes.size() ? kept.m_Element + 1 : 0;
    if (IsElement(nodes[kept.m_Element], markup)) {
      return kept.m_Element;
    }
  }
  return XmlTree::None;
}

}  // namespace

bool XmlReading::Read(std::size_t maxDepth, Failure& failure) {
  XmlScanner scanner(m_Text, maxDepth, m_Tree);
  if (!scanner.Scan()) {
    failure = {scanner.Message(), scanner.ErrorOffset()};
    return false;
  }
  return true;
}

XmlPart XmlPart::Whole(std::shared_ptr<const XmlReading> reading) {
  const std::string_view text = reading->Text();
  const XmlTree::Range nodes = reading->Tree().Whole();
  return {std::move(reading), text, nodes};
}

XmlPart XmlPart::Recall(std::string_view text) {
  Kept& kept = KeptByThread();
  if (kept.m_Reading == nullptr) {
    return {};
  }
  if (kept.m_Reading->Text() == text) {
    return Whole(kept.m_Reading);
  }
  const bool isPart = text.size() < kept.m_Reading->Text().size();
  const XmlTree::Index element = isPart ? FindElement(kept, text) : XmlTree::None;
  if (element == XmlTree::None) {
    return {};
  }
  const XmlTree& tree = kept.m_Reading->Tree();
  return {kept.m_Reading, tree.Nodes()[element].m_Raw, tree.RangeOf(element)};
}

void XmlPart::Keep(std::shared_ptr<const XmlReading> reading) {
  if (reading->Text().size() <= MostKeptBytes) {
    KeptByThread() = {std::move(reading), 0};
  }
}

}  // namespace BaseSDK
