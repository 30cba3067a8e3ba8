#include "agent/handler/job/ExitStatuses.h"

#include "agent/handler/job/WholeNumber.h"
#include "agent/handler/job/Words.h"

#include <algorithm>

using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr long MostStatus = 255;

}  // namespace

AString ReadExitStatuses(const AString& text, ExitStatuses& statuses) {
  ExitStatuses read;
  std::size_t begin = 0;
  while (begin <= text.Length()) {
    const std::size_t end = std::min(text.Find(",", begin), text.Length());
    const auto words = BlankSeparated(text.Mid(begin, end - begin));
    const auto status = words.size() == 1 ? ParseWhole(words[0], 0, MostStatus) : std::nullopt;
    if (!status) {
      return "is to be exit statuses from 0 to 255 with commas between them, such as \"0, 1\"";
    }
    read.insert(static_cast<int>(*status));
    begin = end + 1;
  }
  statuses = std::move(read);
  return AString();
}

}  // namespace NoxHandler
