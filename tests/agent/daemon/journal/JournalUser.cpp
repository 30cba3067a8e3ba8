#include "tests/agent/daemon/journal/JournalUser.h"

#include "agent/daemon/store/DirectoryListings.h"
#include "agent/daemon/store/WholeFile.h"

#include <BaseSDK/AFile.h>
#include <BaseSDK/AFileCalls.h>
#include <BaseSDK/AString.h>

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>

using BaseSDK::AFile;
using BaseSDK::AFileCalls;
using BaseSDK::AFileSystem;
using BaseSDK::AString;
using TestSupport::FailingFileSystem;

namespace NoxAgent {
namespace {

// AFile goes through these files meanwhile.
class InForce {
 public:
  explicit InForce(AFileSystem& files) : m_Before(AFileSystem::Replace(&files)) {}
  InForce(const InForce&) = delete;
  InForce& operator=(const InForce&) = delete;
  ~InForce() { (void)AFileSystem::Replace(m_Before); }

 private:
  AFileSystem* const m_Before;
};

// Opens the file, writes this content, and flushes it when `isSynced`.
int WriteFile(AFileSystem& files, const std::string& path, int flags, const std::string& content,
              bool isSynced, bool& isOpened) {
  int fd = -1;
  int error = AFileCalls::Retry([&] { return files.Open(path.c_str(), flags, 0644, fd); });
  isOpened = error == 0;
  if (error != 0) {
    return error;
  }
  std::size_t written = 0;
  error = AFileCalls::WriteAll(files, fd, content.data(), content.size(), written);
  if (error == 0 && isSynced) {
    error = AFileCalls::Retry([&] { return files.Sync(fd); });
  }
  const int closeError = files.Close(fd);
  return error != 0 ? error : closeError;
}

// Under which somebody else writes a file before he renames it.
constexpr const char* OthersName = ".other";

// Of a file that Invent may have left without anybody's knowing.
bool IsInvented(const std::string& name) {
  return name.starts_with("J-") && name.find('.') == std::string::npos;
}

}  // namespace

JournalUser::JournalUser() {
  m_Disk.MakeDirectory(Directory);
  m_Disk.MakeDirectory("/state");
}

JournalUser::~JournalUser() = default;

void JournalUser::Fail(const std::string& problem) {
  if (m_Problem.empty()) {
    for (const std::string& words : m_Done) {
      m_Problem += words + "\n";
    }
    m_Problem += problem;
  }
}

void JournalUser::OnReplaced(const std::string& path, const AFileSystem::Info& /*info*/) noexcept {
  Note("  in its place: " + path);
}

void JournalUser::OnFailure(const std::string& path, int error) noexcept {
  const std::string name = path.substr(path.rfind('/') + 1);
  ++m_Failures;
  Note("  reported: " + name + ": " + std::strerror(error));
  m_Promises.FailedLater(name);
}

// Lives
// -----

void JournalUser::Prepare() {
  m_Calls = std::make_unique<FailingFileSystem>(m_Disk);
  m_Files =
      std::make_unique<JournaledFiles>(*m_Calls, TaskDirectory(Directory, ".vsk"), JournalPath);
  m_Files->SetObserver(this);
}

void JournalUser::Begin() {
  Note("begin");
  m_Files->Begin();
}

void JournalUser::Die(std::optional<CrashDisk::Loss> loss, std::mt19937_64& random) {
  Note(loss ? "power cut" : "killed");
  if (!IsDead()) {
    m_Calls->KillAt(m_Calls->Count() + 1);  // or the objects would tidy up
  }
  m_Files.reset();
  m_Calls.reset();
  if (m_Disk.OpenHandles() != 0) {
    Fail("left open: " + std::to_string(m_Disk.OpenHandles()));
  }
  if (loss) {
    m_Disk.CutPower(*loss, random);
  }
  m_Promises.Ended(loss.has_value());
}

void JournalUser::Calm() {
  Note("calm");
  m_Calls->Reset();
  MakeSafe();
  List();
  MakeSafe();
  RemoveLeftovers();
  CompareDisk();
}

void JournalUser::End() {
  Note("end");
  m_Files->End();
  MakeSafe();  // to hear of failures
}

void JournalUser::RemoveLeftovers() {
  const InForce guard(*m_Files);
  unsigned removed = 0;
  if (AFile::RemoveLeftovers(AString::FromUtf8(Directory), removed) != 0) {
    Fail("leftovers cannot be removed");
  }
}

std::vector<std::string> JournalUser::NamesOnDisk() {
  DirectoryListings::Listing listing;
  if (DirectoryListings::List(m_Disk, Directory, listing) != 0) {
    Fail("the directory cannot be read");
  }
  std::erase_if(listing.m_Names,
                [](const auto& name) { return name == "." || name == ".." || name == OthersName; });
  return std::move(listing.m_Names);
}

Promises::Content JournalUser::ReadFromDisk(const std::string& name) {
  std::string bytes;
  FileIdentity identity;
  return ReadFile(m_Disk, PathOf(name), bytes, identity) == 0 ? Promises::Content(bytes)
                                                              : std::nullopt;
}

void JournalUser::CompareDisk() {
  const std::vector<std::string> present = NamesOnDisk();
  const std::vector<std::string> promised = m_Promises.Names();
  std::set<std::string> names(present.begin(), present.end());
  names.insert(promised.begin(), promised.end());
  for (const std::string& name : names) {
    const Promises::Content content = ReadFromDisk(name);
    const bool isKnown = m_Promises.IsKnown(name);
    const bool isOrphan = IsInvented(name) && (!content || content->empty());
    if (isKnown ? !m_Promises.MayBeRead(name, content) && !isOrphan
                : !m_Promises.MayBeFound(name, content) && !isOrphan) {
      Fail(name + " is " + Promises::Describe(content) + " and not " +
           m_Promises.DescribeAll(name));
    }
    if (!isKnown || isOrphan) {
      m_Promises.Restarted(name, content);
    }
  }
}

// The agent
// ---------

void JournalUser::Replace(const std::string& name, const std::string& content) {
  const int error = m_Files->ReplaceFile(PathOf(name).c_str(), content);
  Note("replace " + name + " by " + Promises::Describe(content) +
       (error != 0 ? ": " + std::string(std::strerror(error)) : ""));
  if (error != 0 || IsDead()) {
    m_Promises.Failed(name, content);
  } else {
    m_Promises.Changed(name, content);
  }
}

void JournalUser::Add(const std::string& name, const std::string& content) {
  bool isMade = false;
  const int error =
      WriteFile(*m_Files, PathOf(name), O_WRONLY | O_CREAT | O_EXCL, content, true, isMade);
  Note("add " + name + " as " + Promises::Describe(content) +
       (error != 0 ? ": " + std::string(std::strerror(error)) : ""));
  if (isMade && (error != 0 || IsDead())) {
    m_Promises.FailedToMake(name, content);
  } else if (isMade) {
    m_Promises.Made(name, content);
  }
}

std::string JournalUser::Invent() {
  const InForce guard(*m_Files);
  AString path;
  if (AFile::MakeTemp(AString::FromUtf8(PathOf("J-")), path) != 0 || IsDead()) {
    Note("invent: failed");
    return {};
  }
  const std::string temporary = path.ToUtf8().substr(std::strlen(Directory) + 1);
  const std::string name = temporary + ".vsk";
  m_Promises.Changed(temporary, "");
  const bool hasFailed = AFile::Rename(path, AString::FromUtf8(PathOf(name)), 0) != 0 || IsDead();
  Note("invent " + name + (hasFailed ? ": failed" : ""));
  if (hasFailed) {
    m_Promises.Failed(temporary, std::nullopt);
    m_Promises.Failed(name, "");
  } else {
    m_Promises.Renamed(temporary, name);
  }
  return name;
}

void JournalUser::Rename(const std::string& from, const std::string& to) {
  if (!m_Promises.IsPlain(from) || !m_Promises.IsPlain(to) || !m_Promises.IsThere(from) ||
      m_Promises.IsThere(to)) {
    return;
  }
  const Promises::Content content = m_Promises.Last(from);
  const int error = m_Files->Rename(PathOf(from).c_str(), PathOf(to).c_str(), false);
  Note("rename " + from + " to " + to + (error != 0 ? ": failed" : ""));
  if (error != 0 || IsDead()) {
    m_Promises.Failed(from, std::nullopt);
    m_Promises.FailedToMake(to, *content);
  } else if (m_Promises.IsPlain(from)) {
    m_Promises.Renamed(from, to);
  } else {  // a replacement that waited has failed first
    m_Promises.Changed(from, std::nullopt);
    m_Promises.Changed(to, ReadFromDisk(to));
  }
}

void JournalUser::Remove(const std::string& name) {
  if (!m_Promises.IsThere(name)) {
    return;
  }
  const InForce guard(*m_Files);
  const unsigned long error = AFile::Remove(AString::FromUtf8(PathOf(name)), 0);
  Note("remove " + name + (error != 0 ? ": failed" : ""));
  if (error != 0 || IsDead()) {
    m_Promises.Failed(name, std::nullopt);
  } else {
    m_Promises.Changed(name, std::nullopt);
  }
}

void JournalUser::Read(const std::string& name) {
  std::string bytes;
  FileIdentity identity;
  const int error = ReadFile(*m_Files, PathOf(name), bytes, identity);
  Note("read " + name);
  MakeSafe();  // to hear of failures before the comparison
  const Promises::Content content = error == 0 ? Promises::Content(bytes) : std::nullopt;
  if ((error == 0 || error == ENOENT) && !IsDead() && !m_Promises.MayBeRead(name, content)) {
    Fail(name + " reads " + Promises::Describe(content) + " and not " +
         m_Promises.DescribeAll(name));
  }
}

void JournalUser::List() {
  DirectoryListings::Listing listing;
  const int error = DirectoryListings::List(*m_Files, Directory, listing);
  Note("list");
  MakeSafe();
  if (error != 0 || listing.m_Error != 0 || IsDead()) {
    return;
  }
  const std::set<std::string> names(listing.m_Names.begin(), listing.m_Names.end());
  for (const std::string& name : m_Promises.Names()) {
    if (m_Promises.IsPlain(name) && names.contains(name) != m_Promises.IsThere(name)) {
      Fail(name + (names.contains(name) ? " is listed" : " is not listed"));
    }
  }
}

void JournalUser::MakeSafe() {
  m_Files->MakeSafe();
  Note("make safe");
  if (!IsDead()) {
    m_Promises.MadeSafe(m_Files->Waiting().CountSafe() == 0);
  }
}

void JournalUser::Follow() {
  m_Files->Follow();
  Note("follow");
}

// Somebody else
// -------------

void JournalUser::FlushAsOther(const std::string& path) {
  if (AFileCalls::FlushFile(m_Disk, path) != 0 ||
      AFileCalls::FlushDirectory(m_Disk, Directory) != 0) {
    Fail("the disk is out of order");
  }
}

void JournalUser::NoteOther(const std::string& name, const std::string& content, bool isWaiting,
                            bool flushes) {
  Note("other makes " + name + " " + Promises::Describe(content) + (flushes ? "" : ", unflushed") +
       (isWaiting ? ", beneath" : ""));
  if (flushes) {
    FlushAsOther(PathOf(name));
  }
  if (isWaiting) {
    m_Promises.ChangedBeneath(name, content, flushes);
  } else if (flushes) {
    m_Promises.ChangedByOther(name, content);
  } else {
    m_Promises.ChangedUnflushed(name, content);
  }
}

void JournalUser::OtherWrites(const std::string& name, const std::string& content, bool flushes) {
  if (!m_Promises.IsPlain(name) || !m_Promises.IsThere(name)) {
    return;
  }
  const bool isWaiting = m_Files->Waiting().Has(name);
  bool isMade = false;
  if (WriteFile(m_Disk, PathOf(name), O_WRONLY | O_TRUNC, content, flushes, isMade) != 0) {
    Fail("the disk is out of order");
  }
  NoteOther(name, content, isWaiting, flushes);
}

void JournalUser::OtherReplaces(const std::string& name, const std::string& content, bool flushes) {
  if (!m_Promises.IsPlain(name) || !m_Promises.IsThere(name)) {
    return;
  }
  const bool isWaiting = m_Files->Waiting().Has(name);
  const std::string path = PathOf(OthersName);
  bool isMade = false;
  // A power cut may have left the name to a file that has its new one too.
  (void)m_Disk.Unlink(path.c_str());
  if (WriteFile(m_Disk, path, O_WRONLY | O_CREAT | O_EXCL, content, flushes, isMade) != 0 ||
      m_Disk.Rename(path.c_str(), PathOf(name).c_str(), true) != 0) {
    Fail("the disk is out of order");
  }
  NoteOther(name, content, isWaiting, flushes);
}

void JournalUser::OtherRemoves(const std::string& name) {
  if (!m_Promises.IsPlain(name) || !m_Promises.IsThere(name) || m_Files->Waiting().Has(name)) {
    return;
  }
  Note("other removes " + name);
  if (m_Disk.Unlink(PathOf(name).c_str()) != 0 ||
      AFileCalls::FlushDirectory(m_Disk, Directory) != 0) {
    Fail("the disk is out of order");
  }
  m_Promises.ChangedByOther(name, std::nullopt);
}

}  // namespace NoxAgent
