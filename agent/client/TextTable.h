#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace NoxAgent {

/// Columns that line up.
class TextTable {
 public:
  explicit TextTable(std::vector<std::string> headings) : m_Rows{std::move(headings)} {}

  /// As many cells as there are headings, UTF-8 without line ends.
  void AddRow(std::vector<std::string> cells) { m_Rows.push_back(std::move(cells)); }
  void Print(std::ostream& out) const;

 private:
  std::vector<std::vector<std::string>> m_Rows;
};

}  // namespace NoxAgent
