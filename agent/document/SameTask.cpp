#include "agent/document/SameTask.h"

#include "agent/document/TaskGlance.h"

#include <BaseSDK/AXmlDoc.h>

#include <optional>
#include <vector>

namespace NoxAgent {

using BaseSDK::AString;

namespace {

/// What the scheduler reads and keeps of a document, without the history.
struct Kept {
  bool m_Enabled = true;
  AString m_Handler;
  AString m_Schedule;
  std::vector<AString> m_Triggers;  ///< also those outside the schedule

  bool operator==(const Kept&) const = default;
};

// Nothing when the text is no document.
std::optional<Kept> KeptOf(const AString& document) {
  BaseSDK::AXmlDoc xml(document);
  if (!xml.IsParsed()) {
    return std::nullopt;
  }
  Kept kept{GlanceAt(document).m_Enabled,
            xml.SelectSingleNode("//HandlerCLSID"),
            xml.SelectSingleNode("//Schedule"),
            {}};
  if (xml.Find("//Trigger")) {
    while (xml.Read()) {
      kept.m_Triggers.push_back(xml.GetValue());
    }
  }
  return kept;
}

}  // namespace

bool IsSameTask(const AString& left, const AString& right) {
  if (left == right) {
    return true;
  }
  const std::optional<Kept> kept = KeptOf(left);
  return kept.has_value() && kept == KeptOf(right);
}

}  // namespace NoxAgent
