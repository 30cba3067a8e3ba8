#include "agent/daemon/store/Refusal.h"

#include <BaseSDK/AXmlDoc.h>

#include <algorithm>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr wchar_t FirstBadByte = 0xDC80;  // as AString keeps bytes that are not UTF-8
constexpr wchar_t LastBadByte = 0xDCFF;

const AString Root = "/Task";
const AString Triggers = "//Trigger";

std::optional<Refusal> JudgeEncoding(const AString& text) {
  if (text.Ascii()) {
    return std::nullopt;
  }
  const std::wstring& characters = text.Str();
  const auto bad = std::find_if(characters.begin(), characters.end(), [](wchar_t character) {
    return character >= FirstBadByte && character <= LastBadByte;
  });
  if (bad == characters.end()) {
    return std::nullopt;
  }
  const auto lines = static_cast<unsigned>(std::count(characters.begin(), bad, L'\n'));
  const auto lineBegin = std::find(std::make_reverse_iterator(bad), characters.rend(), L'\n');
  const auto column = static_cast<unsigned>(bad - lineBegin.base());
  const auto byte = static_cast<unsigned>(*bad) & 0xFFU;
  return Refusal{AString("the byte 0x%1 is not UTF-8").Arg(AString().SetNum(byte, 'x')), lines + 1,
                 column + 1};
}

}  // namespace

std::optional<Refusal> JudgeDocument(std::string_view bytes) {
  if (bytes.empty()) {
    return Refusal{"the file is empty"};
  }
  const AString text = AString::FromUtf8(bytes);
  if (auto refusal = JudgeEncoding(text)) {
    return refusal;
  }
  BaseSDK::AXmlDoc document(text);
  if (!document.IsParsed()) {
    const auto& error = document.Error();
    return Refusal{error.m_Message, std::max(error.m_Line, 1U), std::max(error.m_Column, 1U)};
  }
  if (!document.Find(Root)) {
    return Refusal{"the root element is not Task"};
  }
  if (!document.Find(Triggers)) {
    return Refusal{"there is no Trigger in it"};
  }
  return std::nullopt;
}

}  // namespace NoxAgent
