#include "tests/support/TaskXml.h"

namespace TestSupport {

TaskXml& TaskXml::With(const TriggerXml& trigger) {
  m_Triggers += "\n\t\t" + trigger.Utf8();
  return *this;
}

TaskXml& TaskXml::Handler(const std::string& classId) {
  m_Handler = classId;
  return *this;
}

TaskXml& TaskXml::Enabled(bool enabled) {
  m_Enabled = enabled;
  return *this;
}

TaskXml& TaskXml::LastRun(const std::string& entry) {
  m_LastRun = entry;
  return *this;
}

std::string TaskXml::Utf8() const {
  std::string text = "<Task";
  if (m_Enabled) {
    text += *m_Enabled ? " Enabled=\"1\"" : " Enabled=\"0\"";
  }
  text += ">\n\t<HandlerCLSID>" + m_Handler + "</HandlerCLSID>";
  text += "\n\t<Schedule>" + m_Triggers + "\n\t</Schedule>";
  if (m_LastRun) {
    text += "\n\t<TaskHistory>\n\t\t<RunTime>" + *m_LastRun + "</RunTime>\n\t</TaskHistory>";
  }
  return text + "\n</Task>";
}

}  // namespace TestSupport
