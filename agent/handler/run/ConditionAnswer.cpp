#include "agent/handler/run/ConditionAnswer.h"

#include <cstddef>
#include <string>

using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr std::size_t MaxLastLineBytes = 200;

// The first bytes of the line, without a part of a character at the end.
AString CutLastLine(const AString& line) {
  std::string bytes = line.ToUtf8();
  if (bytes.size() > MaxLastLineBytes) {
    std::size_t size = MaxLastLineBytes;
    while (size > 0 && (static_cast<unsigned char>(bytes[size]) & 0xC0) == 0x80) {
      --size;
    }
    bytes.resize(size);
  }
  return AString::FromUtf8(bytes);
}

AString WithLastLine(const AString& words, const AString& line) {
  return line.IsEmpty() ? words : AString("%1: %2").Arg(words, CutLastLine(line));
}

}  // namespace

Job ConditionAnswer::QuestionOf(const Job& job) {
  Job question = job.Beside(job.m_Condition);
  question.m_Success = {0, 1};
  return question;
}

ConditionAnswer ConditionAnswer::Of(const Run& question) {
  const auto status = question.ExitStatus();
  if (status == 0) {
    return {Kind::Yes, AString()};
  }
  if (status == 1) {
    return {Kind::No, WithLastLine("its condition says no", question.LastLine())};
  }
  return {Kind::Unknown, WithLastLine(question.Outcome(), question.LastLine())};
}

}  // namespace NoxHandler
