#include "agent/handler/job/Retry.h"

#include "agent/handler/job/Duration.h"
#include "agent/handler/job/WholeNumber.h"
#include "agent/handler/job/Words.h"

using BaseSDK::AString;

namespace NoxHandler {

namespace {

AString ReadTimes(const AString& times, const AString& every, RetryRule& rule) {
  const auto number = ParseWhole(times, 1, RetryRule::MostTimes);
  if (!number) {
    return AString("\"%1\" is not a number of times from 1 to %2")
        .Arg(times, AString().SetNum(RetryRule::MostTimes, 'd'));
  }
  long seconds = 0;
  const AString reason =
      Duration::Read(every, RetryRule::LeastSeconds, RetryRule::MostSeconds, seconds);
  if (!reason.IsEmpty()) {
    return AString("\"%1\" %2").Arg(every, reason);
  }
  rule = {false, static_cast<unsigned>(*number), seconds};
  return AString();
}

}  // namespace

AString RetryRule::Read(const AString& text, RetryRule& rule) {
  const auto words = BlankSeparated(text);
  if (words.size() == 1 && words[0] == AString("hourly")) {
    rule = RetryRule();
    return AString();
  }
  if (words.size() == 1 && words[0] == AString("never")) {
    rule = {false, 0, 0};
    return AString();
  }
  if (words.size() != 3 || words[1] != AString("every")) {
    return "is to be never, hourly, or how often and when again, such as \"3 every 5m\"";
  }
  return ReadTimes(words[0], words[2], rule);
}

}  // namespace NoxHandler
