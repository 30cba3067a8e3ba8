#pragma once

#include <map>
#include <string>

namespace NoxAgent {

/// Collects which task files could not be written or removed while the calling thread was answering
/// a request, and why. The scheduler itself ignores such failures, so the one who answers a request
/// makes an object before and looks at it afterwards.
///
/// An object collects for the thread that made it, from its construction to its destruction. Two of
/// them on one thread must not overlap.
class WriteFailures {
 public:
  WriteFailures();
  WriteFailures(const WriteFailures&) = delete;
  WriteFailures& operator=(const WriteFailures&) = delete;
  ~WriteFailures();

  /// The file `name` could not be written or removed; `error` is an errno. The object of the
  /// calling thread takes it; without one it is dropped.
  static void Note(const std::string& name, int error);

  /// Whether an object of the calling thread collects.
  static bool AreCollected() noexcept;

  /// File names, each with the errno that came first.
  const std::map<std::string, int>& All() const { return m_Errors; }

 private:
  std::map<std::string, int> m_Errors;
};

}  // namespace NoxAgent
