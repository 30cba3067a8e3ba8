#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// What task files may hold, as far as the journal has promised it: of each file what was written
/// last, and what a restart may find. Names are those of files in one directory.
class Promises {
 public:
  using Content = std::optional<std::string>;  ///< nothing for a file that is not there

  /// The file was replaced, made by a rename, or deleted: a restart finds it before or after.
  void Changed(const std::string& name, const Content& content);
  /// The file was made and written: a restart may find a part of it until it is safe.
  void Made(const std::string& name, const std::string& content);
  /// The file has another name now, which no file had.
  void Renamed(const std::string& from, const std::string& to);
  /// A change to this content has failed: it may have happened or not.
  void Failed(const std::string& name, const Content& content);
  /// Making the file has failed: there may be a part of it.
  void FailedToMake(const std::string& name, const std::string& content);
  /// A change that had seemed to succeed has failed.
  void FailedLater(const std::string& name);
  /// Somebody else has changed the file to this content, and has flushed it.
  void ChangedByOther(const std::string& name, const Content& content);
  /// The same, while a replacement waits that will undo it: until the next start it may come back.
  void ChangedBeneath(const std::string& name, const Content& content, bool isFlushed);
  /// Somebody else has changed the file to this content and not flushed it: a power cut may leave
  /// anything.
  void ChangedUnflushed(const std::string& name, const Content& content);
  /// All changes are safe. `areInPlace` says whether no replaced file waits for its place.
  void MadeSafe(bool areInPlace);

  /// What a process that ends leaves to the next one, which knows nothing until it has `Restarted`.
  void Ended(bool wasPowerCut);
  /// The files were brought up to date: what they hold now is what they held last.
  void Restarted(const std::string& name, const Content& content);
  bool IsKnown(const std::string& name) const;
  /// Whether nothing is uncertain but whether the last changes are safe.
  bool IsPlain(const std::string& name) const;
  /// Whether the file is there, as far as is known.
  bool IsThere(const std::string& name) const;
  /// What was written last.
  Content Last(const std::string& name) const;

  /// Whether a read may give this content.
  bool MayBeRead(const std::string& name, const Content& content) const;
  /// Whether a restart may find it, once the files are up to date.
  bool MayBeFound(const std::string& name, const Content& content) const;

  std::vector<std::string> Names() const;
  /// What a restart may find, in words.
  std::string DescribeAll(const std::string& name) const;
  static std::string Describe(const Content& content);

 private:
  struct State {
    Content m_Content;
    bool m_MayBePart = false;
  };
  struct File {
    std::deque<State> m_States{State{}};  ///< a restart finds one of these; written last at the end
    std::vector<State> m_Earlier;  ///< those of a change that is safe, and may fail all the same
    std::vector<State> m_Beneath;
    bool m_IsInDoubt = false;  ///< a change has failed, and none succeeded since
    bool m_IsKnown = true;     ///< brought up to date, or changed since
    bool m_IsUnflushed = false;
    bool m_IsLost = false;  ///< the power was cut while it was unflushed
  };

  static bool Fits(const State& state, const Content& content);
  void Add(const std::string& name, State state);

  std::map<std::string, File> m_Files;
};

}  // namespace NoxAgent
