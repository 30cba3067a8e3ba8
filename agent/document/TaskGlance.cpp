#include "agent/document/TaskGlance.h"

#include <BaseSDK/AXmlDoc.h>

namespace NoxAgent {

TaskGlance GlanceAt(const BaseSDK::AString& document) {
  const BaseSDK::AXmlDoc xml(document);
  const BaseSDK::AString enabled = xml.SelectSingleNode("/Task/@Enabled");
  return {enabled.IsEmpty() || enabled.ToLong(10) != 0, xml.SelectSingleNode("//RunTime/text()")};
}

}  // namespace NoxAgent
