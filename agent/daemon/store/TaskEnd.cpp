#include "agent/daemon/store/TaskEnd.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/AXmlDoc.h>

#include <algorithm>
#include <vector>

using BaseSDK::ADateTime;
using BaseSDK::AString;
using BaseSDK::AXmlDoc;

namespace NoxAgent {
namespace {

constexpr std::size_t MostTold = 5;

// 0 when the trigger has no end date, or none that can be read.
long EndOf(const AString& trigger) {
  const AXmlDoc document(trigger);
  const long begin = ADateTime(document.SelectSingleNode("/Trigger/BeginDate/text()")).GetTime();
  const long end = ADateTime(document.SelectSingleNode("/Trigger/EndDate/text()")).GetTime();
  return end == 0 ? 0 : std::max(begin, end);
}

std::vector<long> EndsOf(AXmlDoc document) {
  std::vector<long> ends;
  if (document.Find("//Trigger")) {
    while (document.Read()) {
      ends.push_back(EndOf(document.GetValue()));
    }
  }
  return ends;
}

AString Number(std::size_t number) {
  return AString().SetNum(static_cast<unsigned long>(number), 'u');
}

AString LocalTime(long seconds) {
  return ADateTime(seconds).ToString("%Y-%m-%d %H:%M:%S");
}

}  // namespace

AString WhyTaskEnds(std::string_view bytes) {
  const std::vector<long> ends = EndsOf(AXmlDoc(AString::FromUtf8(bytes)));
  if (ends.empty()) {
    return "it has no trigger";
  }
  if (std::find(ends.begin(), ends.end(), 0) != ends.end()) {
    return "none of its triggers will fire again";
  }
  if (ends.size() == 1) {
    return "its trigger ended on " + LocalTime(ends[0]);
  }
  AString text("its triggers have ended: ");
  for (std::size_t i = 0; i < std::min(ends.size(), MostTold); ++i) {
    text += AString(i == 0 ? "%1 on %2" : ", %1 on %2").Arg(Number(i + 1), LocalTime(ends[i]));
  }
  if (ends.size() > MostTold) {
    text += AString(", and %1 more").Arg(Number(ends.size() - MostTold));
  }
  return text;
}

}  // namespace NoxAgent
