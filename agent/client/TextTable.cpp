#include "agent/client/TextTable.h"

#include <BaseSDK/AString.h>

#include <algorithm>

namespace NoxAgent {

namespace {

std::size_t WidthOf(const std::string& cell) {
  return BaseSDK::AString::FromUtf8(cell).Length();
}

}  // namespace

void TextTable::Print(std::ostream& out) const {
  std::vector<std::size_t> widths(m_Rows.front().size());
  for (const auto& row : m_Rows) {
    for (std::size_t i = 0; i < widths.size(); ++i) {
      widths[i] = std::max(widths[i], WidthOf(row[i]));
    }
  }
  for (const auto& row : m_Rows) {
    std::string line;
    for (std::size_t i = 0; i + 1 < widths.size(); ++i) {
      line += row[i] + std::string(widths[i] - WidthOf(row[i]) + 2, ' ');
    }
    line += row.back();
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  }
}

}  // namespace NoxAgent
