#include "agent/daemon/journal/JournalFollower.h"

namespace NoxAgent {

JournalFollower::JournalFollower(JournaledFiles& files)
    : m_Files(files), m_Thread([this] {
        while (m_Files.Waiting().Await()) {
          m_Files.MakeSafe();
          m_Files.Follow();
        }
      }) {}

JournalFollower::~JournalFollower() {
  m_Files.Waiting().StopAwaiting();
  m_Thread.join();
}

}  // namespace NoxAgent
