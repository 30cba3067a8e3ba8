#pragma once

#include <BaseSDK/AFileSystem.h>
#include <BaseSDK/AMutex.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// Enumerations of the task directory. Each one is read to its end when it is opened, so it holds
/// no descriptor while its user goes through it. Handles are those of AFileSystem: a number, 0 for
/// none.
///
/// [any thread]
class DirectoryListings {
 public:
  struct Listing {
    std::vector<std::string> m_Names;
    std::size_t m_Next = 0;
    int m_Error = 0;           ///< why reading stopped early: an errno; 0: it is whole
    bool m_IsReading = false;  ///< the scheduler's own, not a request's
  };

  /// Reads the directory into `listing`, ordered by the bytes of its names, "." and ".." included.
  /// 0, or an errno when it cannot be opened; m_Error tells of a reading that stopped early.
  static int List(BaseSDK::AFileSystem& files, const char* path, Listing& listing);

  /// Keeps the listing and returns its handle, which is never 0.
  unsigned long Add(Listing listing) NOX_EXCLUDES(m_Lock);
  bool Has(unsigned long handle) const NOX_EXCLUDES(m_Lock);
  /// The next name, valid until the enumeration is removed; null after the last one. 0, but after
  /// the last name of a listing that stopped early its errno. REQUIRES: Has(handle).
  int Next(unsigned long handle, const char*& name) NOX_EXCLUDES(m_Lock);
  /// Ends the enumeration and gives its listing; nothing when there is none of that handle.
  std::optional<Listing> Remove(unsigned long handle) NOX_EXCLUDES(m_Lock);

 private:
  mutable BaseSDK::AMutex m_Lock;
  /// By their addresses, which no other open directory has.
  std::map<unsigned long, std::unique_ptr<Listing>> m_Listings NOX_GUARDED_BY(m_Lock);
};

}  // namespace NoxAgent
