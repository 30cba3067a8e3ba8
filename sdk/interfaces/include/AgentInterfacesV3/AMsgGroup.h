#pragma once

#include <optional>

namespace Corvane::AgentInterfacesV3 {

/// Requests that are made safe together. A request changes files, and its reply comes when a power
/// cut leaves the changes (AFileSystem::MakeSafe). While an object of this class lives, the replies
/// to requests that its thread sends come earlier, and all changes are made safe when the group
/// ends, with one flush. Until then the thread must let out nothing that depends on a reply: it
/// answers nobody, starts nothing, and deletes nothing that would be needed again.
///
/// Requests that an object sends while it answers one of these are made safe as ever.
///
/// [on the thread that made it; groups of a thread end in reverse order]
class AMsgGroup {
 public:
  AMsgGroup();
  AMsgGroup(const AMsgGroup&) = delete;
  AMsgGroup& operator=(const AMsgGroup&) = delete;
  /// As End.
  ~AMsgGroup();

  /// Makes all safe. Requests sent afterwards are made safe one by one.
  void End();

 private:
  const std::optional<unsigned> m_Before;
  bool m_Ended = false;
};

}  // namespace Corvane::AgentInterfacesV3
