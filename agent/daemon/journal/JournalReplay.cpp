#include "agent/daemon/journal/JournalReplay.h"

#include "agent/daemon/store/FileIdentity.h"
#include "agent/daemon/store/WholeFile.h"

#include <BaseSDK/AFileCalls.h>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

using BaseSDK::AFileCalls;
using BaseSDK::AFileReplacement;
using BaseSDK::AFileSystem;

namespace NoxAgent {
namespace {

// Whether `part` is what a power cut can leave of `whole`: not all of its bytes, or zeros instead
// of some.
bool IsPart(std::string_view part, std::string_view whole) {
  return part.size() <= whole.size() &&
         std::equal(part.begin(), part.end(), whole.begin(),
                    [](char left, char right) { return left == right || left == '\0'; });
}

std::string NameIn(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

// Whether the call failed for the sake of this one file: the next time will be no better.
bool IsRefused(int error) {
  return error == EACCES || error == EPERM || error == EBUSY || error == EISDIR || error == EFBIG;
}

}  // namespace

JournalReplay::JournalReplay(AFileSystem& files, std::string directory,
                             const std::vector<JournalRecord>& records)
    : m_Files(files), m_Directory(std::move(directory)) {
  for (const JournalRecord& record : records) {
    Versions& versions = m_Versions[record.m_Name];
    versions.m_Records.push_back(&record);
    versions.m_Newest = record.m_IsVersionAlone ? versions.m_Newest : &record.m_Content;
  }
  std::erase_if(m_Versions, [](const auto& entry) { return entry.second.m_Newest == nullptr; });
}

int JournalReplay::Perform() {
  m_Prepared.clear();
  m_Left.clear();
  for (const auto& [name, versions] : m_Versions) {
    if (const int error = Prepare(name, versions); error != 0) {
      return error;
    }
  }
  // Whole on the disk before they take the place of others; the journal does not know these files.
  int error = m_Prepared.empty() ? 0 : AFileCalls::FlushDiskOf(m_Files, m_Directory);
  return error != 0 ? error : RenameAll();
}

int JournalReplay::Prepare(const std::string& name, const Versions& versions) {
  State state = State::Foreign;
  if (const int error = FindState(name, versions, state); error != 0) {
    return error;
  }
  if (state == State::Foreign) {
    m_Left.push_back(name);
  }
  if (state != State::OutOfDate) {
    return 0;
  }
  auto replacement = std::make_unique<AFileReplacement>(m_Files, m_Directory + "/" + name);
  const int error = replacement->Prepare(*versions.m_Newest, AFileReplacement::Flushed::No);
  m_Prepared.push_back(std::move(replacement));
  return error;
}

// A file that cannot be looked at now may be one that needs the journal, so that is an error.
int JournalReplay::FindState(const std::string& name, const Versions& versions,
                             State& state) const {
  const std::string path = m_Directory + "/" + name;
  AFileSystem::Info info;
  int error = AFileCalls::Retry([&] { return m_Files.GetInfo(path.c_str(), info); });
  std::string content;
  FileIdentity identity;
  const bool isFile = error == 0 && S_ISREG(info.m_Mode);
  error = isFile ? ReadFile(m_Files, path, content, identity) : error;
  if (error == ENOENT) {
    state = State::UpToDate;  // deleted since
    return 0;
  }
  if (error != 0 && !IsRefused(error)) {
    return error;
  }
  state = Compare(FileVersion(info), isFile && error == 0 ? &content : nullptr, versions);
  return 0;
}

JournalReplay::State JournalReplay::Compare(const FileVersion& present, const std::string* content,
                                            const Versions& versions) {
  if (content != nullptr && *content == *versions.m_Newest) {
    return State::UpToDate;
  }
  const auto& records = versions.m_Records;
  const bool isOlder = std::any_of(records.begin(), records.end(), [&](const auto* record) {
    return present == record->m_Before || present == record->m_After ||
           (content != nullptr && IsTorn(present, *content, versions, record->m_After));
  });
  return isOlder ? State::OutOfDate : State::Foreign;
}

// Whether a power cut has left this of the version. Its time may be an earlier one, but never a
// later one: then somebody has cut the file short since, or another one was given its number.
bool JournalReplay::IsTorn(const FileVersion& present, std::string_view content,
                           const Versions& versions, const FileVersion& version) {
  const auto& records = versions.m_Records;
  return present.m_Number == version.m_Number && present.m_Modified <= version.m_Modified &&
         std::any_of(records.begin(), records.end(), [&](const auto* record) {
           return !record->m_IsVersionAlone && IsPart(content, record->m_Content);
         });
}

int JournalReplay::RenameAll() {
  for (const auto& replacement : m_Prepared) {
    const int error = replacement->Rename();
    if (IsRefused(error)) {
      m_Left.push_back(NameIn(replacement->Path()));
    } else if (error != 0) {
      return error;
    } else {
      ++m_Renewed;
    }
  }
  return 0;
}

}  // namespace NoxAgent
