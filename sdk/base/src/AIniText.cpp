#include <BaseSDK/AIniText.h>

#include <algorithm>

namespace BaseSDK {
namespace {

constexpr wchar_t ByteOrderMark = 0xFEFF;

bool IsBlank(wchar_t character) {
  return character == L' ' || character == L'\t' || character == L'\r';
}

AString Trim(const AString& text) {
  std::size_t begin = 0;
  std::size_t end = text.Length();
  while (begin < end && IsBlank(text[begin])) {
    ++begin;
  }
  while (end > begin && IsBlank(text[end - 1])) {
    --end;
  }
  return text.Mid(begin, end - begin);
}

bool IsText(const AString& line) {
  return std::none_of(line.Str().begin(), line.Str().end(), [](wchar_t character) {
    const bool control = character < L' ' && character != L'\t';
    const bool invalidByte = character >= 0xD800 && character <= 0xDFFF;
    return control || invalidByte;
  });
}

AString Quoted(const AString& text) {
  return "\"" + text + "\"";
}

}  // namespace

AIniText::AIniText(const AString& fileName, const AString& text) : m_FileName(fileName) {
  std::size_t begin = text[0] == ByteOrderMark ? 1 : 0;
  unsigned number = 1;
  while (begin < text.Length()) {
    const std::size_t end = std::min(text.Find("\n", begin), text.Length());
    ReadLine(Trim(text.Mid(begin, end - begin)), number++);
    begin = end + 1;
  }
}

AIniError AIniText::ErrorAt(unsigned line, const AString& message) const {
  return AIniError(AString("%1:%2: %3").Arg(m_FileName, AString().SetNum(line, 'u'), message));
}

void AIniText::ReadLine(const AString& line, unsigned number) {
  if (line.IsEmpty() || line[0] == L';' || line[0] == L'#') {
    return;
  }
  if (!IsText(line)) {
    throw ErrorAt(number, "a character that is not text (the file is to be UTF-8)");
  }
  if (line[0] == L'[') {
    ReadSection(line, number);
  } else {
    ReadEntry(line, number);
  }
}

void AIniText::ReadSection(const AString& line, unsigned number) {
  if (line[line.Length() - 1] != L']') {
    throw ErrorAt(number, "a section is written [Name]; the closing bracket is missing");
  }
  const AString name = Trim(line.Mid(1, line.Length() - 2));
  if (name.IsEmpty()) {
    throw ErrorAt(number, "a section without a name");
  }
  const bool known = std::any_of(m_Sections.begin(), m_Sections.end(),
                                 [&](const Section& other) { return other.m_Name == name; });
  if (known) {
    throw ErrorAt(number, "the section " + Quoted(name) + " is there twice");
  }
  m_Sections.push_back({name, number, {}});
}

void AIniText::ReadEntry(const AString& line, unsigned number) {
  const std::size_t equals = line.Find("=");
  if (equals == AString::npos) {
    throw ErrorAt(number, "neither [Section] nor key = value");
  }
  const AString key = Trim(line.Left(equals));
  if (key.IsEmpty()) {
    throw ErrorAt(number, "a value without a key");
  }
  if (m_Sections.empty()) {
    throw ErrorAt(number, "the key " + Quoted(key) + " stands before the first [Section]");
  }
  std::vector<Entry>& entries = m_Sections.back().m_Entries;
  const bool known = std::any_of(entries.begin(), entries.end(),
                                 [&](const Entry& other) { return other.m_Key == key; });
  if (known) {
    throw ErrorAt(number, "the key " + Quoted(key) + " is there twice");
  }
  entries.push_back({key, Trim(line.Mid(equals + 1)), number});
}

}  // namespace BaseSDK
