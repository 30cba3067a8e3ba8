#pragma once

#include <BaseSDK/AFileSystem.h>
#include <BaseSDK/AMutex.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// Enumerations of the task directory. Each is read to its end when it is opened, so it holds no
/// descriptor while somebody goes through it.
///
/// [any thread]
class DirectoryListings {
 public:
  struct Listing {
    std::vector<std::string> m_Names;
    std::size_t m_Next = 0;
    int m_Error = 0;           ///< of what has ended it before its end
    bool m_IsReading = false;  ///< the scheduler's own, not a request's
  };

  /// What the directory holds. 0, or an errno when it cannot be opened.
  static int List(BaseSDK::AFileSystem& files, const char* path, Listing& listing);

  unsigned long Add(Listing listing) NOX_EXCLUDES(m_Lock);
  bool Has(unsigned long handle) const NOX_EXCLUDES(m_Lock);
  /// The next name, null at the end; there is an errno there when the enumeration broke off.
  /// REQUIRES: Has(handle).
  int Next(unsigned long handle, const char*& name) NOX_EXCLUDES(m_Lock);
  /// What is left; nothing when there is no such enumeration.
  std::optional<Listing> Remove(unsigned long handle) NOX_EXCLUDES(m_Lock);

 private:
  mutable BaseSDK::AMutex m_Lock;
  /// By their addresses, which no other open directory has.
  std::map<unsigned long, std::unique_ptr<Listing>> m_Listings NOX_GUARDED_BY(m_Lock);
};

}  // namespace NoxAgent
