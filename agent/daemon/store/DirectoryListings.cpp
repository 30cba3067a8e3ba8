#include "agent/daemon/store/DirectoryListings.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>

using BaseSDK::AFileSystem;
using BaseSDK::AMutexGuard;

namespace NoxAgent {

int DirectoryListings::List(AFileSystem& files, const char* path, Listing& listing) {
  unsigned long handle = 0;
  if (const int error = files.OpenDirectory(path, handle); error != 0) {
    return error;
  }
  const char* name = nullptr;
  do {
    listing.m_Error = files.ReadDirectory(handle, name);
    if (listing.m_Error == 0 && name != nullptr) {
      listing.m_Names.emplace_back(name);
    }
  } while (listing.m_Error == EINTR || (listing.m_Error == 0 && name != nullptr));
  (void)files.CloseDirectory(handle);  // it was only read
  // What is known of files and tasks lies in maps of this order: those who go through a long
  // listing find the next entry beside the one before, not somewhere else in memory.
  std::sort(listing.m_Names.begin(), listing.m_Names.end());
  return 0;
}

unsigned long DirectoryListings::Add(Listing listing) {
  auto owned = std::make_unique<Listing>(std::move(listing));
  const auto handle = static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(owned.get()));
  AMutexGuard guard(m_Lock);
  m_Listings[handle] = std::move(owned);
  return handle;
}

bool DirectoryListings::Has(unsigned long handle) const {
  AMutexGuard guard(m_Lock);
  return m_Listings.contains(handle);
}

int DirectoryListings::Next(unsigned long handle, const char*& name) {
  AMutexGuard guard(m_Lock);
  Listing& listing = *m_Listings.at(handle);
  if (listing.m_Next == listing.m_Names.size()) {
    name = nullptr;
    return listing.m_Error;
  }
  name = listing.m_Names[listing.m_Next++].c_str();
  return 0;
}

std::optional<DirectoryListings::Listing> DirectoryListings::Remove(unsigned long handle) {
  AMutexGuard guard(m_Lock);
  const auto found = m_Listings.find(handle);
  if (found == m_Listings.end()) {
    return std::nullopt;
  }
  Listing listing = std::move(*found->second);
  m_Listings.erase(found);
  return listing;
}

}  // namespace NoxAgent
