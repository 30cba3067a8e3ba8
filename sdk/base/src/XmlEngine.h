#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace BaseSDK {

/// Answers any XPath expression, from a second reading of a well-formed document by the library
/// that knows XPath. Made for the first expression that is no plain path: most documents never see
/// one.
class XmlEngine {
 public:
  /// `text` is UTF-8 and is read here and now. Throws std::bad_alloc where memory runs out.
  explicit XmlEngine(std::string_view text);
  ~XmlEngine();

  struct Node {
    bool m_IsElement;
    std::size_t m_Begin;  ///< of an element: where its markup begins in the text
    std::string m_Value;  ///< of any other node
  };

  /// In document order. Nothing for an expression that cannot be read or yields, say, a number.
  std::vector<Node> Select(const std::string& xpath) const;

 private:
  struct Document;  ///< as the library holds it

  std::unique_ptr<Document> m_Document;
};

}  // namespace BaseSDK
