// Tables of documents: one a line, accepted or refused at a place.
#pragma once

#include <BaseSDK/AXmlDoc.h>

#include <gtest/gtest.h>

#include <cstddef>

namespace BaseSDK {

/// A document, and where and why it is refused; the document alone when it is accepted.
struct DocumentRow {
  const char* m_Text;
  unsigned m_Line = 0;
  unsigned m_Column = 0;
  const char* m_Message = "";
};

inline void Check(const AString& text, const DocumentRow& row) {
  AXmlDoc document{text};
  SCOPED_TRACE(testing::PrintToString(row.m_Text));
  EXPECT_EQ(document.Error().m_Message.ToUtf8(), row.m_Message);
  EXPECT_EQ(document.Error().m_Line, row.m_Line);
  EXPECT_EQ(document.Error().m_Column, row.m_Column);
  const bool isAccepted = row.m_Line == 0;
  EXPECT_EQ(document.IsParsed(), isAccepted);
  EXPECT_EQ(document.Find("//*"), isAccepted);
  EXPECT_EQ(document.SelectSingleNode("/*").IsEmpty(), !isAccepted);
}

template <std::size_t Count>
void CheckAll(const DocumentRow (&rows)[Count]) {
  for (const DocumentRow& row : rows) {
    Check(AString(row.m_Text), row);
  }
}

}  // namespace BaseSDK
