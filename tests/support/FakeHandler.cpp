#include "tests/support/FakeHandler.h"

#include <ctime>
#include <ostream>
#include <utility>

namespace TestSupport {

using BaseSDK::AMutexGuard;
using BaseSDK::AString;

void FakeHandler::ScriptRunTasksEx(std::deque<long> results) {
  const AMutexGuard guard(m_Lock);
  m_RunTasksEx.m_Script = std::move(results);
}

void FakeHandler::ScriptRunTasks(std::deque<long> results) {
  const AMutexGuard guard(m_Lock);
  m_RunTasks.m_Script = std::move(results);
}

void FakeHandler::AnswerAlways(long runTasksEx, long runTasks) {
  const AMutexGuard guard(m_Lock);
  m_RunTasksEx.m_Default = runTasksEx;
  m_RunTasks.m_Default = runTasks;
}

void FakeHandler::Observe(Observer observer) {
  const AMutexGuard guard(m_Lock);
  m_Observer = std::move(observer);
}

std::vector<FakeHandler::Call> FakeHandler::Calls() const {
  const AMutexGuard guard(m_Lock);
  return m_Calls;
}

Texts FakeHandler::Batches() const {
  Texts batches;
  for (const Call& call : Calls()) {
    batches.push_back(call.m_Batch.ToUtf8());
  }
  return batches;
}

void FakeHandler::ClearCalls() {
  const AMutexGuard guard(m_Lock);
  m_Calls.clear();
}

unsigned FakeHandler::Releases() const {
  const AMutexGuard guard(m_Lock);
  return m_Releases;
}

long FakeHandler::RunTasks(const AString& batch) {
  Record("RunTasks", batch);
  const AMutexGuard guard(m_Lock);
  return m_RunTasks.Next();
}

long FakeHandler::RunTasksEx(const AString& batch) {
  Record("RunTasksEx", batch);
  const AMutexGuard guard(m_Lock);
  return m_RunTasksEx.Next();
}

long FakeHandler::Release() {
  const AMutexGuard guard(m_Lock);
  ++m_Releases;
  return 0;
}

int FakeHandler::ObjectDebugInfo(AString&) {
  return 0;
}

int FakeHandler::NotifyObject(long, long, const AString&) {
  return 0;
}

long FakeHandler::Answers::Next() {
  if (m_Script.empty()) {
    return m_Default;
  }
  const long result = m_Script.front();
  m_Script.pop_front();
  return result;
}

void FakeHandler::Record(const char* operation, const AString& batch) {
  const Call call{operation, batch, std::time(nullptr)};
  Observer observer;
  {
    const AMutexGuard guard(m_Lock);
    m_Calls.push_back(call);
    observer = m_Observer;
  }
  if (observer) {
    observer(call);
  }
}

std::ostream& operator<<(std::ostream& out, const FakeHandler::Call& call) {
  return out << call.m_Operation << '(' << call.m_Batch.ToUtf8() << ") at " << call.m_Time;
}

}  // namespace TestSupport
