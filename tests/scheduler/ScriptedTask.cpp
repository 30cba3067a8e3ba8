#include "tests/scheduler/ScriptedTask.h"

#include "model/Task.h"

#include <new>
#include <string>

std::map<std::string, ScriptedTask::Answer> ScriptedTask::s_Answers;
std::vector<std::string> ScriptedTask::s_Journal;
std::map<std::string, unsigned> ScriptedTask::s_Made;
bool ScriptedTask::s_NoMemory = false;

void ScriptedTask::Reset() {
  s_Answers.clear();
  s_Journal.clear();
  s_Made.clear();
  s_NoMemory = false;
}

namespace {

using BaseSDK::AString;

void Note(const std::string& entry) {
  ScriptedTask::s_Journal.push_back(entry);
}

/// m_LastRun tells the tasks of one ID apart: the scheduler does not look at it here.
std::string NameOf(const CTask& task) {
  const std::string id = task.m_TaskID.ToUtf8();
  return task.m_LastRun == 1 ? id : id + "#" + std::to_string(task.m_LastRun);
}

}  // namespace

CTask::CTask(TaskSchedulerObject_i* scheduler, const AString& taskID, const AString& taskXML)
    : m_pScheduler(scheduler), m_TaskID(taskID), m_TaskXML(taskXML), m_HandlerCLSID(taskXML) {
  if (ScriptedTask::s_NoMemory) {
    throw std::bad_alloc();
  }
  m_LastRun = static_cast<long>(++ScriptedTask::s_Made[taskID.ToUtf8()]);
  Note("made " + NameOf(*this));
}

CTask::~CTask() {
  Note("destroyed " + NameOf(*this));
}

bool CTask::IsDue(bool firstEvent, bool secondEvent, long& sleepSeconds, bool& late, bool& neverRun,
                  bool& allExpired, bool& deleteTask, bool& killAtEnd) {
  const bool clean = !late && !neverRun && !allExpired && !deleteTask && !killAtEnd;
  Note("tested " + NameOf(*this) + (firstEvent ? " 302" : "") + (secondEvent ? " 300" : "") + " " +
       std::to_string(sleepSeconds) + (clean ? "" : " with flags set"));
  const ScriptedTask::Answer& answer = ScriptedTask::s_Answers[m_TaskID.ToUtf8()];
  late = answer.m_Late;
  neverRun = answer.m_NeverRun;
  allExpired = answer.m_AllExpired;
  deleteTask = answer.m_DeleteTask;
  killAtEnd = answer.m_KillAtEnd;
  if (answer.m_SleepSeconds < sleepSeconds) {
    sleepSeconds = answer.m_SleepSeconds;
  }
  return answer.m_Due;
}

void CTask::UpdateClosestRun() {
  Note("updated " + NameOf(*this));
}

long CTask::Enable(bool enable) {
  Note((enable ? "enabled " : "disabled ") + NameOf(*this));
  return ScriptedTask::s_Answers[m_TaskID.ToUtf8()].m_EnableResult;
}

void CTask::RegisterRun() {
  Note("registered " + NameOf(*this));
  // One run is enough: whoever wants another says so.
  ScriptedTask::s_Answers[m_TaskID.ToUtf8()].m_Due = false;
}

void CTask::SetRunState(const AString& state) {
  Note("state " + NameOf(*this) + " " + state.ToUtf8());
}
