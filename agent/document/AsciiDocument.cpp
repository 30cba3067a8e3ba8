#include "agent/document/AsciiDocument.h"

#include <array>
#include <cwchar>
#include <string>

namespace NoxAgent {

using BaseSDK::AString;

namespace {

constexpr wchar_t ByteOrderMark = 0xFEFF;

// Markup in which a reference would be plain text, and what ends that markup. Longer beginnings
// come first.
struct Region {
  const wchar_t* m_Begin;
  const wchar_t* m_End;
  const char* m_Name;
};
constexpr std::array<Region, 4> VerbatimRegions = {{{L"<!--", L"-->", "a comment"},
                                                    {L"<![CDATA[", L"]]>", "a CDATA section"},
                                                    {L"<?", L"?>", "a processing instruction"},
                                                    {L"<!", L">", "a document type"}}};

bool IsXmlCharacter(wchar_t c) {
  const auto code = static_cast<unsigned long>(c);
  return code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF) && code != 0xFFFE &&
         code != 0xFFFF;
}

// Walks over the document once; knows at each character whether a reference may stand there.
class Writer {
 public:
  explicit Writer(const std::wstring& text) : m_Text(text) {
    if (!m_Text.empty() && m_Text[0] == ByteOrderMark) {
      m_At = 1;
    }
  }

  // False when it stopped at a character that cannot be written.
  bool Run() {
    while (m_At < m_Text.size()) {
      if (!(m_Text[m_At] == L'<' ? Markup() : Character(nullptr))) {
        return false;
      }
    }
    return true;
  }

  AString Result() const { return AString(m_Result); }
  std::size_t At() const { return m_At; }
  const char* Where() const { return m_Where; }

 private:
  bool Markup() {
    for (const Region& region : VerbatimRegions) {
      if (m_Text.compare(m_At, std::wcslen(region.m_Begin), region.m_Begin) == 0) {
        return Verbatim(region);
      }
    }
    return Tag();
  }

  bool Verbatim(const Region& region) {
    const std::size_t end = m_Text.find(region.m_End, m_At + std::wcslen(region.m_Begin));
    const std::size_t behind =
        end == std::wstring::npos ? m_Text.size() : end + std::wcslen(region.m_End);
    while (m_At < behind) {
      if (!Character(region.m_Name)) {
        return false;
      }
    }
    return true;
  }

  // Names stand outside the quotes of a tag, values inside them.
  bool Tag() {
    wchar_t quote = 0;
    while (m_At < m_Text.size()) {
      const wchar_t c = m_Text[m_At];
      if (!Character(quote == 0 ? "a name" : nullptr)) {
        return false;
      }
      if (quote == 0 && c == L'>') {
        return true;
      }
      if (quote == 0 && (c == L'"' || c == L'\'')) {
        quote = c;
      } else if (c == quote) {
        quote = 0;
      }
    }
    return true;
  }

  // `verbatim` names the surroundings when no reference may stand in them.
  bool Character(const char* verbatim) {
    const wchar_t c = m_Text[m_At];
    if (c >= 0 && c < 0x80) {
      m_Result += c;
    } else if (!IsXmlCharacter(c)) {
      m_Where = "";
      return false;
    } else if (verbatim != nullptr) {
      m_Where = verbatim;
      return false;
    } else {
      m_Result += L"&#" + std::to_wstring(static_cast<unsigned long>(c)) + L";";
    }
    ++m_At;
    return true;
  }

  const std::wstring& m_Text;
  std::size_t m_At = 0;
  std::wstring m_Result;
  const char* m_Where = "";
};

TaskDocumentProblem ProblemAt(const std::wstring& text, const Writer& stopped) {
  TaskDocumentProblem problem;
  problem.m_Severity = TaskDocumentSeverity::Error;
  for (std::size_t i = 0; i < stopped.At(); ++i) {
    const bool isLineEnd = text[i] == L'\n';
    problem.m_Column = isLineEnd ? 1 : problem.m_Column + 1;
    problem.m_Line += isLineEnd ? 1U : 0U;
  }
  const std::string where = stopped.Where();
  if (where.empty()) {
    problem.m_Message = "a byte or character that XML does not know";
    problem.m_Mend = "save the document as UTF-8";
  } else {
    problem.m_Message = AString("a character outside ASCII in %1").Arg(where.c_str());
    problem.m_Mend = "write it in ASCII";
  }
  problem.m_Effect = "the document is refused, because its file would be cut short";
  return problem;
}

}  // namespace

AsciiDocument::AsciiDocument(const AString& xml) {
  Writer writer(xml.Str());
  if (writer.Run()) {
    m_Text = writer.Result();
  } else {
    m_Problem = ProblemAt(xml.Str(), writer);
  }
}

}  // namespace NoxAgent
