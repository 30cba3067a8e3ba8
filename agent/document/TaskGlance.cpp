#include "agent/document/TaskGlance.h"

#include <BaseSDK/AXmlDoc.h>

namespace NoxAgent {

TaskGlance GlanceAt(const BaseSDK::AString& document) {
  const BaseSDK::AXmlDoc xml(document);
  const BaseSDK::AString enabled = xml.SelectSingleNode("/Task/@Enabled");
  return {enabled.IsEmpty() || enabled.ToLong(10) != 0, xml.SelectSingleNode("//RunTime/text()")};
}

BaseSDK::AString EnabledDocument(const BaseSDK::AString& document) {
  const BaseSDK::AXmlDoc xml(document);
  return BaseSDK::AString("<Task Enabled=\"1\">") + xml.SelectSingleNode("//HandlerCLSID") +
         xml.SelectSingleNode("//Schedule") + xml.SelectSingleNode("//TaskHistory") +
         BaseSDK::AString("</Task>");
}

}  // namespace NoxAgent
