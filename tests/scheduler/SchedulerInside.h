#pragma once

#include "scheduler/TaskSchedulerObject.h"

/// The scheduler object's private members, for tests that pin them: an explicit instantiation may
/// name what is private, so production code needs no door for tests.
namespace SchedulerInside {

template <class Tag, auto Member>
struct Opener {
  friend constexpr auto MemberOf(Tag) { return Member; }
};

#define NOX_OPEN(Class, Name)                    \
  struct Class##Name {                           \
    friend constexpr auto MemberOf(Class##Name); \
  };                                             \
  template struct Opener<Class##Name, &Class::Name>

NOX_OPEN(TaskSchedulerObject_i, m_Storage);
NOX_OPEN(TaskSchedulerObject_i, m_StateLock);
NOX_OPEN(TaskSchedulerObject_i, m_Notification302);
NOX_OPEN(TaskSchedulerObject_i, m_Notification300);
NOX_OPEN(TaskSchedulerObject_i, m_LastError);
NOX_OPEN(TaskSchedulerObject_i, m_Tasks);
NOX_OPEN(TaskSchedulerObject_i, m_MonitorThread);
NOX_OPEN(TaskSchedulerObject_i, m_ProcessingEnabled);
NOX_OPEN(TaskSchedulerObject_i, m_InstallTaskCount);
NOX_OPEN(TaskSchedulerObject_i, m_CountLock);
NOX_OPEN(CTSThread, m_Stop);
NOX_OPEN(CTSThread, m_Refresh);
NOX_OPEN(CTSThread, m_WakeEvent);
NOX_OPEN(CTSThread, m_pScheduler);
NOX_OPEN(CTSThread, m_Param);

#undef NOX_OPEN

}  // namespace SchedulerInside

/// SCHEDULER_INSIDE(object, m_Name): that member of a TaskSchedulerObject_i.
#define SCHEDULER_INSIDE(object, name) \
  ((object).*MemberOf(SchedulerInside::TaskSchedulerObject_i##name()))
/// The same for a CTSThread.
#define THREAD_INSIDE(thread, name) ((thread).*MemberOf(SchedulerInside::CTSThread##name()))
