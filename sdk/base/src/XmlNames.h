#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <set>
#include <string_view>

namespace BaseSDK {

/// The names of one tag's attributes: a few are compared one by one, many, which only a hostile
/// document has, are looked up.
class XmlNames {
 public:
  void Clear() {
    m_FewCount = 0;
    m_Many.clear();
  }

  /// False when the name is there already. It is borrowed until Clear.
  bool Insert(std::string_view name) {
    const auto end = m_Few.begin() + static_cast<std::ptrdiff_t>(m_FewCount);
    if (std::find(m_Few.begin(), end, name) != end) {
      return false;
    }
    if (m_FewCount == m_Few.size()) {
      return m_Many.insert(name).second;
    }
    m_Few[m_FewCount++] = name;
    return true;
  }

 private:
  std::array<std::string_view, 16> m_Few;
  std::size_t m_FewCount = 0;
  std::set<std::string_view> m_Many;
};

}  // namespace BaseSDK
