#include "agent/daemon/store/RefusedFolder.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/process/Directories.h"
#include "agent/daemon/store/DirectoryListings.h"
#include "agent/daemon/store/WholeFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

using BaseSDK::AFileSystem;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr unsigned MostOfOneName = 10000;

std::string NumberedName(const std::string& name, unsigned number) {
  return number == 0 ? name : name + "." + std::to_string(number);
}

}  // namespace

RefusedFolder::RefusedFolder(AFileSystem& files, std::string path)
    : m_Files(files), m_Path(std::move(path)) {}

RefusedFolder::Taken RefusedFolder::Take(const std::string& from, const std::string& name,
                                         const FileIdentity& identity) {
  using Outcome = Taken::Outcome;
  try {
    Directories::Make(AString::FromUtf8(m_Path), Directories::Private);
  } catch (const AgentError& error) {
    return {Outcome::Failed, {}, error.what()};
  }
  int error = EEXIST;
  std::string path;
  for (unsigned number = 0; error == EEXIST && number < MostOfOneName; ++number) {
    path = PathOf(NumberedName(name, number));
    error = MoveUnchanged(m_Files, from, path, identity);
  }
  if (error == 0) {
    return {Outcome::Moved, path, {}};
  }
  const bool isOther = error == ESTALE || error == ENOENT;
  return {isOther ? Outcome::Changed : Outcome::Failed,
          {},
          AString("cannot move it to %1: %2").Arg(AString::FromUtf8(m_Path), std::strerror(error))};
}

std::vector<RefusedFolder::Entry> RefusedFolder::List() const {
  std::vector<Entry> entries;
  for (const std::string& name : Names()) {
    entries.push_back(Describe(name));
  }
  return entries;
}

std::size_t RefusedFolder::Count() const {
  return Names().size();
}

std::vector<std::string> RefusedFolder::Names() const {
  DirectoryListings::Listing listing;
  (void)DirectoryListings::List(m_Files, m_Path.c_str(), listing);  // not there: nothing refused
  std::erase_if(listing.m_Names, [](const auto& name) { return name == "." || name == ".."; });
  std::sort(listing.m_Names.begin(), listing.m_Names.end());
  return std::move(listing.m_Names);
}

int RefusedFolder::Read(const std::string& name, std::string& bytes, FileIdentity& identity) const {
  return ReadFile(m_Files, PathOf(name), bytes, identity);
}

int RefusedFolder::RemoveUnchanged(const std::string& name, const FileIdentity& identity) {
  AFileSystem::Info info;
  const int error = m_Files.GetInfo(PathOf(name).c_str(), info);
  if (error == 0 && FileIdentity(info) != identity) {
    return ESTALE;
  }
  return error != 0 ? error : Remove(name);
}

int RefusedFolder::Remove(const std::string& name) {
  return m_Files.Unlink(PathOf(name).c_str());
}

RefusedFolder::Entry RefusedFolder::Describe(const std::string& name) const {
  Entry entry{name, std::nullopt, 0};
  AFileSystem::Info info;
  int error = m_Files.GetInfo(PathOf(name).c_str(), info);
  entry.m_Time = static_cast<long>(info.m_Changed / NanosecondsPerSecond);
  if (error == 0 && !S_ISREG(info.m_Mode)) {
    entry.m_Refusal = Refusal{"it is no regular file"};
    return entry;
  }
  std::string bytes;
  FileIdentity identity;
  error = error != 0 ? error : ReadFile(m_Files, PathOf(name), bytes, identity);
  entry.m_Refusal = error == 0
                        ? JudgeDocument(bytes)
                        : Refusal{AString("it cannot be read: %1").Arg(std::strerror(error))};
  return entry;
}

}  // namespace NoxAgent
