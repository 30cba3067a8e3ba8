#include "model/TaskDocument.h"

#include <BaseSDK/AStringTokenizer.h>

using BaseSDK::AString;

namespace {

// Arguments of AStringTokenizer: empty tokens count, and what follows the third is dropped.
constexpr int KeepEmpty = 1;
constexpr int RunFields = 3;

/// Made once, not for every document that is read.
namespace TaskPath {
const AString Enabled = L"/Task/@Enabled";
const AString HandlerText = L"//HandlerCLSID/text()";
const AString Handler = L"//HandlerCLSID";
const AString RunTime = L"//RunTime/text()";
const AString History = L"//TaskHistory";
const AString Schedule = L"//Schedule";
const AString Trigger = L"//Trigger";
}  // namespace TaskPath

const AString Blank = L" ";

}  // namespace

bool CTaskDocument::IsEnabled() const {
  const AString value = m_Doc.SelectSingleNode(TaskPath::Enabled);
  return value.IsEmpty() || value.ToLong() != 0;
}

AString CTaskDocument::HandlerClassId() const {
  return m_Doc.SelectSingleNode(TaskPath::HandlerText);
}

CTaskDocument::Run CTaskDocument::LastRun() const {
  const AString entry = m_Doc.SelectSingleNode(TaskPath::RunTime);
  const BaseSDK::AStringTokenizer fields(entry, Blank, KeepEmpty, RunFields);
  return {fields.Token(0), fields.Token(1), fields.Token(2)};
}

AString CTaskDocument::History() const {
  return m_Doc.SelectSingleNode(TaskPath::History);
}

std::vector<AString> CTaskDocument::Triggers() {
  std::vector<AString> triggers;
  if (!m_Doc.Find(TaskPath::Trigger)) {
    return triggers;
  }
  while (m_Doc.Read()) {
    triggers.push_back(m_Doc.GetValue());
  }
  return triggers;
}

AString CTaskDocument::Rewritten(bool enabled, const AString& history) const {
  const AString separator(L"\n\t");
  AString text = AString(L"<Task Enabled=\"%1\">").Arg(AString().SetNum(enabled ? 1 : 0, 'd'));
  text += separator + m_Doc.SelectSingleNode(TaskPath::Handler);
  text += separator + m_Doc.SelectSingleNode(TaskPath::Schedule);
  text += separator + history;
  return text += L"\n</Task>";
}

AString CTaskDocument::HistoryOf(const AString& startTime, const AString& state) {
  const AString entry = AString(L"<RunTime>") + startTime + L" " + state + AString(L"</RunTime>");
  return AString(L"<TaskHistory>\n\t\t") + entry + L"\n\t</TaskHistory>";
}
