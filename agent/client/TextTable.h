#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace NoxAgent {

/// A table for people: the columns line up, however long the cells are.
class TextTable {
 public:
  explicit TextTable(std::vector<std::string> headings) : m_Rows{std::move(headings)} {}

  /// As many cells as there are headings, in UTF-8 and without line ends.
  void AddRow(std::vector<std::string> cells) { m_Rows.push_back(std::move(cells)); }
  void Print(std::ostream& out) const;

 private:
  std::vector<std::vector<std::string>> m_Rows;
};

}  // namespace NoxAgent
