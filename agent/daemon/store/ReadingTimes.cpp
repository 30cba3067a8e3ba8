#include "agent/daemon/store/ReadingTimes.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/ALong32.h>

#include <ctime>

namespace NoxAgent {
namespace {

constexpr long SecondsBetween = 3600;

}  // namespace

void ReadingTimes::NoteEnd() {
  m_LastEnd = BaseSDK::Clamp32(std::time(nullptr));
}

std::optional<long> ReadingTimes::Next() const {
  const long end = m_LastEnd;
  return end != 0 ? std::optional(BaseSDK::Add32(end, SecondsBetween)) : std::nullopt;
}

BaseSDK::AString ReadingTimes::NextText() const {
  const std::optional<long> next = Next();
  return next.has_value() ? BaseSDK::ADateTime(*next).ToString("%H:%M:%S") : BaseSDK::AString("?");
}

}  // namespace NoxAgent
