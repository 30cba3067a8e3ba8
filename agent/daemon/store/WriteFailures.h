#pragma once

#include <map>
#include <string>

namespace NoxAgent {

/// Which task files could not be written or removed while the calling thread was answering a
/// request, and why: the scheduler itself takes no notice of that.
///
/// Collects for the thread that it lives on, from its beginning to its end. They do not nest.
class WriteFailures {
 public:
  WriteFailures();
  WriteFailures(const WriteFailures&) = delete;
  WriteFailures& operator=(const WriteFailures&) = delete;
  ~WriteFailures();

  /// The file `name` could not be written, for the reason `error`, an errno. Heard by the object
  /// that lives on this thread, if there is one.
  static void Note(const std::string& name, int error);

  /// File names, and of each the errno that came first.
  const std::map<std::string, int>& All() const { return m_Errors; }

 private:
  std::map<std::string, int> m_Errors;
};

}  // namespace NoxAgent
