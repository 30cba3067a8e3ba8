#include "agent/document/TaskCheck.h"

#include "agent/document/ScheduleCheck.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/AGuid.h>
#include <BaseSDK/ALong32.h>
#include <BaseSDK/AStringTokenizer.h>

#include <algorithm>

namespace NoxAgent {

using BaseSDK::ADateTime;
using BaseSDK::AString;

namespace {

constexpr const char* Dropped = "the scheduler drops it when it rewrites the document";
constexpr const char* Unread = "nothing reads it";

bool IsText(const pugi::xml_node& node) {
  return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

bool IsInside(const pugi::xml_node& node, const pugi::xml_node& ancestor) {
  for (pugi::xml_node above = node.parent(); above; above = above.parent()) {
    if (above == ancestor) {
      return true;
    }
  }
  return false;
}

const char* NameOfMarkup(pugi::xml_node_type type) {
  switch (type) {
    case pugi::node_declaration:
      return "an XML declaration";
    case pugi::node_comment:
      return "a comment";
    case pugi::node_pi:
      return "a processing instruction";
    default:
      return "a document type";
  }
}

// The first text of the elements called `name`, at any depth, as the scheduler selects it.
std::string FirstText(const DocumentSource& source, const std::string& name) {
  const std::string path = "//" + name + "/text()";
  return source.Document().select_node(path.c_str()).node().value();
}

}  // namespace

TaskCheck::TaskCheck(const DocumentSource& source, long now, const LocalCalendar* calendar,
                     ProblemList& problems)
    : m_Source(source),
      m_Task(source.Document().document_element()),
      m_Now(now),
      m_Calendar(calendar),
      m_Problems(problems) {}

void TaskCheck::Run() {
  CheckAroundRoot();
  CheckTaskAttributes();
  CheckTaskChildren();
  CheckHandler();
  CheckTriggers();
  CheckHistory();
}

pugi::xml_node TaskCheck::First(const char* name) const {
  return m_Source.Document().select_node((std::string("//") + name).c_str()).node();
}

void TaskCheck::CheckAroundRoot() {
  for (const pugi::xml_node& node : m_Source.Document().children()) {
    if (node != m_Task) {
      m_Problems.Warn(m_Source.PlaceOf(node),
                      std::string(NameOfMarkup(node.type())) + " outside the Task", Dropped,
                      "remove it");
    }
  }
}

void TaskCheck::CheckTaskAttributes() {
  for (const pugi::xml_attribute& attribute : m_Task.attributes()) {
    if (std::string(attribute.name()) != "Enabled") {
      WarnUnknown("attribute", attribute.name(), m_Source.PlaceOf(m_Task, attribute), {"Enabled"},
                  std::string("nothing reads it, and ") + Dropped, m_Problems);
    }
  }
  (void)CheckNumber(AttributeValue(m_Source, m_Task, "Enabled"), m_Problems,
                    ", and the task is disabled");
}

void TaskCheck::CheckTaskChildren() {
  CheckContent(m_Task, {"HandlerCLSID", "Schedule", "TaskHistory"},
               std::string("nothing reads it, and ") + Dropped);
  for (const pugi::xml_node& node : m_Task.children()) {
    if (node.type() == pugi::node_comment || node.type() == pugi::node_pi) {
      m_Problems.Warn(m_Source.PlaceOf(node),
                      std::string(NameOfMarkup(node.type())) + " between the parts of the Task",
                      Dropped, "remove it, or put it inside the Schedule");
    }
  }
  const std::string moved = "it is read nevertheless; a rewrite puts it directly into the Task";
  CheckElements("HandlerCLSID", "Task", moved);
  CheckElements("Schedule", "Task", moved);
  CheckElements("TaskHistory", "Task", moved);
  CheckElements("RunTime", "TaskHistory",
                "it is read nevertheless; the next run puts a new one into the TaskHistory");
}

// The first element of a name in the whole document counts, wherever it stands.
void TaskCheck::CheckElements(const char* name, const char* parent,
                              const std::string& effectElsewhere) {
  const pugi::xml_node first = First(name);
  if (!first) {
    return;
  }
  const std::string parentName = first.parent().name();
  if (parentName != parent) {
    m_Problems.Warn(m_Source.PlaceOf(first), std::string(name) + " stands in " + Quoted(parentName),
                    effectElsewhere, std::string("put it directly into the ") + parent);
  }
  for (const auto& found : m_Source.Document().select_nodes((std::string("//") + name).c_str())) {
    if (found.node() != first) {
      m_Problems.Warn(m_Source.PlaceOf(found.node()), std::string("a second ") + name,
                      std::string(name) == "Schedule"
                          ? std::string("its triggers are read, but ") + Dropped
                          : "only the first is read, and " + std::string(Dropped),
                      "keep one of them");
    }
  }
}

void TaskCheck::CheckContent(const pugi::xml_node& parent, std::initializer_list<const char*> known,
                             const std::string& effect) {
  for (const pugi::xml_node& child : parent.children()) {
    const std::string name = child.name();
    const bool isKnown = std::find(known.begin(), known.end(), name) != known.end();
    // Parts in wrong places have a message of their own.
    const bool isPart = name == "HandlerCLSID" || name == "Schedule" || name == "TaskHistory" ||
                        name == "RunTime" || name == "Trigger";
    if (child.type() == pugi::node_element && !isKnown && !isPart) {
      WarnUnknown("element", name, m_Source.PlaceOf(child), known, effect, m_Problems);
    }
    if (IsText(child)) {
      m_Problems.Warn(m_Source.PlaceOf(child),
                      std::string("text between the elements of ") + parent.name(), effect,
                      "remove it");
    }
  }
}

void TaskCheck::CheckPartAttributes(const pugi::xml_node& part) {
  for (const pugi::xml_attribute& attribute : part.attributes()) {
    WarnUnknown("attribute", attribute.name(), m_Source.PlaceOf(part, attribute), {}, Unread,
                m_Problems);
  }
}

void TaskCheck::CheckHandler() {
  const pugi::xml_node handler = First("HandlerCLSID");
  const std::string effect =
      "when the task is due it is recorded as started, but no handler runs it";
  const std::string mend = "write one like {7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}";
  if (!handler) {
    m_Problems.Add(TaskDocumentSeverity::NeverRuns, m_Source.PlaceOf(m_Task),
                   "the task has no HandlerCLSID", effect, mend);
    return;
  }
  CheckPlainText(m_Source, handler, m_Problems);
  const std::string id = FirstText(m_Source, "HandlerCLSID");
  if (!BaseSDK::AGuid(AString::FromUtf8(id)).IsValid()) {
    m_Problems.Add(TaskDocumentSeverity::NeverRuns, m_Source.PlaceOf(handler),
                   id.empty() ? "HandlerCLSID is empty"
                              : "HandlerCLSID " + Quoted(id) + " is not a class identifier",
                   effect, mend);
  }
}

void TaskCheck::CheckHistory() {
  const pugi::xml_node history = First("TaskHistory");
  CheckPartAttributes(history);
  CheckContent(history, {"RunTime"}, std::string("nothing reads it, and ") + Dropped);
  const pugi::xml_node runTime = First("RunTime");
  if (!runTime) {
    return;
  }
  CheckPlainText(m_Source, runTime, m_Problems);
  CheckRunTime(runTime);
}

void TaskCheck::CheckRunTime(const pugi::xml_node& runTime) {
  const AString text = AString::FromUtf8(FirstText(m_Source, "RunTime"));
  const BaseSDK::AStringTokenizer words(text, " ", 1, 0);
  const ADateTime lastRun(words.Token(0) + " " + words.Token(1));
  const std::string mend = "write it like 2030-12-31 08:00:00 Ok, or remove the TaskHistory";
  const TextPlace place = m_Source.PlaceOf(runTime);
  if (lastRun.GetTime() == 0) {
    m_Problems.Warn(place, "RunTime " + Quoted(text.ToUtf8()) + " has no readable date and time",
                    "the task counts as never run", mend);
  }
  if (words.Count() > 3) {
    m_Problems.Warn(place, "RunTime " + Quoted(text.ToUtf8()) + " has more than three words",
                    "only the first word after the time is read as the state", mend);
  }
  if (lastRun.GetTime() > m_Now) {
    m_Problems.Warn(place, "the last run " + Quoted(text.ToUtf8()) + " lies in the future",
                    "starts up to then are taken for done", mend);
  }
}

void TaskCheck::CheckTriggerPlace(const pugi::xml_node& trigger, const pugi::xml_node& schedule) {
  if (IsInside(trigger, schedule)) {
    if (trigger.parent() != schedule && std::string(trigger.parent().name()) != "Trigger") {
      m_Problems.Warn(m_Source.PlaceOf(trigger),
                      std::string("a Trigger inside ") + Quoted(trigger.parent().name()),
                      "it is read nevertheless", "put it directly into the Schedule");
    }
    return;
  }
  m_Problems.Warn(m_Source.PlaceOf(trigger), "a Trigger outside the Schedule",
                  std::string("it is read nevertheless, but ") + Dropped,
                  "put it into the Schedule");
}

void TaskCheck::CheckTriggers() {
  const pugi::xml_node schedule = First("Schedule");
  CheckPartAttributes(schedule);
  CheckContent(schedule, {"Trigger"}, Unread);
  std::vector<TriggerCheck> triggers;
  for (const auto& found : m_Source.Document().select_nodes("//Trigger")) {
    CheckTriggerPlace(found.node(), schedule);
    triggers.emplace_back(m_Source, found.node(), m_Now, m_Problems);
  }
  if (triggers.empty()) {
    return ReportNoTrigger();
  }

  const bool allEnded = std::all_of(triggers.begin(), triggers.end(),
                                    [](const TriggerCheck& trigger) { return trigger.IsEnded(); });
  const bool oneFires = std::any_of(triggers.begin(), triggers.end(),
                                    [](const TriggerCheck& t) { return !t.NeverFires(); });
  const std::string effect = allEnded ? "all triggers have ended, so the task is deleted at once"
                                      : "no trigger does, so the task never runs";
  for (const TriggerCheck& trigger : triggers) {
    trigger.ReportReasons(oneFires, effect, m_Problems);
  }
  if (m_Calendar != nullptr && m_Now <= LocalCalendar::End()) {
    CheckSchedules(triggers);
  }
}

// The first run is that of the trigger that begins first, or of one that runs as soon as possible.
void TaskCheck::CheckSchedules(const std::vector<TriggerCheck>& triggers) const {
  long firstBegin = BaseSDK::Long32Max;
  for (const TriggerCheck& trigger : triggers) {
    if (!trigger.NeverFires()) {
      firstBegin = std::min(firstBegin, trigger.Fields().m_Begin);
    }
  }
  const bool isFirstRun = firstBegin != -1 && !HasFinishedRun();
  for (const TriggerCheck& trigger : triggers) {
    if (!trigger.HasRuns()) {
      continue;
    }
    ScheduleCheck check(trigger.Fields(), *m_Calendar, m_Now, m_Problems);
    if (isFirstRun &&
        (trigger.Fields().m_Begin <= m_Now || trigger.Fields().m_Begin == firstBegin)) {
      check.CheckFirstRun();
    }
    check.CheckRuns();
  }
}

bool TaskCheck::HasFinishedRun() const {
  const AString text = AString::FromUtf8(FirstText(m_Source, "RunTime"));
  const BaseSDK::AStringTokenizer words(text, " ", 1, 0);
  const AString state = words.Token(2);
  return ADateTime(words.Token(0) + " " + words.Token(1)).GetTime() != 0 &&
         (state.IsEmpty() || state == AString("Ok"));
}

void TaskCheck::ReportNoTrigger() {
  const pugi::xml_node schedule = First("Schedule");
  m_Problems.Add(TaskDocumentSeverity::NeverRuns, m_Source.PlaceOf(schedule ? schedule : m_Task),
                 schedule ? "the Schedule has no Trigger" : "the task has no Schedule",
                 "a task without a trigger never runs; the scheduler deletes it at once",
                 "write a Schedule with a Trigger in it");
}

}  // namespace NoxAgent
