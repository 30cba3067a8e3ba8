#include "agent/handler/run/LineSplitter.h"

#include <algorithm>

using BaseSDK::AString;

namespace NoxHandler {

namespace {

AString ToLogText(std::string_view line) {
  if (line.ends_with('\r')) {
    line.remove_suffix(1);
  }
  std::wstring text = AString::FromUtf8(line).Str();
  std::replace_if(
      text.begin(), text.end(),
      [](wchar_t c) { return (c < L' ' && c != L'\t') || (c >= 0x7F && c < 0xA0); }, L'?');
  std::replace_if(
      text.begin(), text.end(), [](wchar_t c) { return c >= 0xD800 && c <= 0xDFFF; },
      static_cast<wchar_t>(0xFFFD));
  return AString(std::move(text));
}

// Where to cut a line that is too long: not within a character.
std::size_t CutPosition(std::string_view line) {
  std::size_t position = LineSplitter::MaxLineBytes;
  for (int i = 0; i < 3 && (static_cast<unsigned char>(line[position]) & 0xC0) == 0x80; ++i) {
    --position;
  }
  return position;
}

}  // namespace

std::vector<AString> LineSplitter::Add(std::string_view bytes) {
  m_Rest += bytes;
  std::vector<AString> lines;
  std::string_view rest = m_Rest;
  for (;;) {
    const std::size_t end = rest.find('\n');
    const std::size_t length = std::min(end, rest.size());
    if (length > MaxLineBytes) {
      const std::size_t cut = CutPosition(rest);
      lines.push_back(ToLogText(rest.substr(0, cut)));
      rest.remove_prefix(cut);
    } else if (end != std::string_view::npos) {
      lines.push_back(ToLogText(rest.substr(0, end)));
      rest.remove_prefix(end + 1);
    } else {
      break;
    }
  }
  m_Rest = std::string(rest);
  return lines;
}

std::vector<AString> LineSplitter::Finish() {
  std::vector<AString> lines;
  if (!m_Rest.empty()) {
    lines.push_back(ToLogText(m_Rest));
    m_Rest.clear();
  }
  return lines;
}

}  // namespace NoxHandler
