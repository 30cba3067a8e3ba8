#include "agent/daemon/store/StrayFiles.h"

#include "agent/daemon/store/DirectoryListings.h"

#include <sys/stat.h>

#include <algorithm>

using BaseSDK::AFileSystem;
using BaseSDK::AString;

namespace NoxAgent {

std::vector<StrayFiles::Stray> StrayFiles::List() const {
  DirectoryListings::Listing listing;
  // A directory that cannot be read is logged when the scheduler reads it.
  (void)DirectoryListings::List(m_Files, m_Directory.Path().c_str(), listing);
  std::sort(listing.m_Names.begin(), listing.m_Names.end());
  std::vector<Stray> strays;
  for (const std::string& name : listing.m_Names) {
    if (const auto reason = WhyStray(name)) {
      strays.push_back({name, *reason});
    }
  }
  return strays;
}

std::optional<AString> StrayFiles::WhyStray(const std::string& name) const {
  AFileSystem::Info info;
  if (name.starts_with('.') || m_Open.IsBeingMade(name) ||
      m_Files.GetInfo(PathOf(name).c_str(), info) != 0) {
    return std::nullopt;
  }
  const AString extension = AString::FromUtf8(m_Directory.Extension());
  if (!m_Directory.IsTaskFile(name)) {
    return AString("its name does not end in %1").Arg(extension);
  }
  if (S_ISDIR(info.m_Mode)) {
    return AString("it is a directory");
  }
  if (!S_ISREG(info.m_Mode) && !S_ISLNK(info.m_Mode)) {
    return AString("it is no regular file");
  }
  if (m_Directory.TaskIdOf(name).size() + m_Directory.Extension().size() != name.size()) {
    return AString("its name has more than one %1").Arg(extension);
  }
  const auto refusal = m_Known.RefusalOf(name);
  return refusal.has_value() ? std::optional(refusal->m_Reason) : std::nullopt;
}

int StrayFiles::Remove(const std::string& name) {
  return m_Files.Unlink(PathOf(name).c_str());
}

}  // namespace NoxAgent
