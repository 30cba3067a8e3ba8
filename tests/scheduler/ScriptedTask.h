#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

/// A CTask in the place of the real one, for tests of what the scheduler does with its tasks. It
/// answers as scripted for its ID and keeps a journal. A task's document is its handler's class
/// identifier. One thread at a time.
struct ScriptedTask {
  /// What the due tests of a task answer; the sleep is only lowered.
  struct Answer {
    bool m_Due = false;
    bool m_Late = false;
    bool m_NeverRun = false;
    bool m_AllExpired = false;
    bool m_DeleteTask = false;
    bool m_KillAtEnd = false;
    long m_SleepSeconds = 1000000;
    long m_EnableResult = 1;
  };

  static std::map<std::string, Answer> s_Answers;
  /// "made T1", "tested T1 302 300 sleep", "registered T1", "state T1 Ok", "destroyed T1"; a task
  /// that is made again under the same ID is "T1#2".
  static std::vector<std::string> s_Journal;
  static std::map<std::string, unsigned> s_Made;
  /// As long as it is set there is no memory for tasks.
  static bool s_NoMemory;

  static void Reset();
};
