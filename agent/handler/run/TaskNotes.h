#pragma once

#include "agent/handler/Log.h"
#include "agent/handler/system/SafeFile.h"
#include "agent/handler/task/TaskBatch.h"

#include <BaseSDK/AString.h>
#include <BaseSDK/AUrl.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <map>
#include <sstream>
#include <string>

namespace NoxHandler {

/// What the handler has to remember of tasks over a restart: a note of each, in a file that has a
/// line for each, "ID FIELDS". `Note` has
///
///   long m_End                            those with the least are forgotten first
///   void Write(std::ostream&) const       the fields, without line ends
///   bool Read(std::istream&)              false when they cannot be read
///
/// [one thread at a time]
template <typename Note>
class TaskNotes {
 public:
  /// How many tasks are remembered.
  static constexpr std::size_t Most = 1000;

  /// Reads the file; `what` is what the log calls its content. A file that is not there is empty;
  /// lines that cannot be read are logged and left out.
  TaskNotes(const BaseSDK::AString& fileName, const char* what)
      : m_FileName(fileName), m_What(what) {
    std::string text;
    const int error = SafeFile::Read(m_FileName, MaxBytes, text);
    if (error != 0 && error != ENOENT) {
      Warn(BaseSDK::AString("Cannot read %1 in %2: %3").Arg(m_What, m_FileName, strerror(error)));
    }
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      ReadLine(line);
    }
    m_IsChanged = false;
  }

  /// In place of an earlier one of the task.
  void Set(const BaseSDK::AString& taskId, const Note& note) {
    m_Notes[taskId] = note;
    if (m_Notes.size() > Most) {
      m_Notes.erase(
          std::min_element(m_Notes.begin(), m_Notes.end(), [](const auto& left, const auto& right) {
            return left.second.m_End < right.second.m_End;
          }));
    }
    m_IsChanged = true;
  }
  void Forget(const BaseSDK::AString& taskId) {
    m_IsChanged = m_Notes.erase(taskId) > 0 || m_IsChanged;
  }
  /// By task.
  const std::map<BaseSDK::AString, Note>& All() const { return m_Notes; }

  /// Writes what has changed since the last call; the file is the old one or the new one at every
  /// moment. That it cannot be written is logged; the next call tries again.
  void Save() {
    if (!m_IsChanged) {
      return;
    }
    const int error = SafeFile::Replace(m_FileName, Encode());
    m_IsChanged = error != 0;
    if (error != 0) {
      Warn(BaseSDK::AString("Cannot write %1: %2. A restart of the agent forgets %3.")
               .Arg(m_FileName, strerror(error), m_What));
    }
  }

 private:
  // More than as many as are remembered can take, each character as "%xx" of four bytes.
  static constexpr std::size_t MaxBytes = Most * 8 * 1024;

  static void Warn(const BaseSDK::AString& text) {
    ALOG(HandlerLog(), BaseSDK::ALogger::Warning, HandlerSource, text);
  }

  void ReadLine(const std::string& line) {
    std::istringstream fields(line);
    std::string id;
    Note note;
    const bool isRead = (fields >> id) && note.Read(fields);
    const BaseSDK::AString taskId = BaseSDK::AUrl::Decode(BaseSDK::AString::FromUtf8(id));
    if (isRead && TaskBatch::IsTaskId(taskId)) {
      Set(taskId, note);
    } else {
      Warn(BaseSDK::AString("Leaving out an unreadable line of %1").Arg(m_FileName));
    }
  }

  std::string Encode() const {
    std::ostringstream text;
    for (const auto& [taskId, note] : m_Notes) {
      text << BaseSDK::AUrl::Encode(taskId).ToUtf8() << ' ';
      note.Write(text);
      text << '\n';
    }
    return text.str();
  }

  const BaseSDK::AString m_FileName;
  const BaseSDK::AString m_What;
  std::map<BaseSDK::AString, Note> m_Notes;
  bool m_IsChanged = false;
};

}  // namespace NoxHandler
