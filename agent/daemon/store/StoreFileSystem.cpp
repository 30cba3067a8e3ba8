#include "agent/daemon/store/StoreFileSystem.h"

#include "agent/daemon/process/AgentLog.h"
#include "agent/daemon/store/WriteFailures.h"

#include <AgentInterfacesV3/AMsgQueue.h>

#include <fcntl.h>

#include <cerrno>
#include <cstring>

using BaseSDK::ALogger;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgQueue;

namespace NoxAgent {
namespace {

bool IsToRead(int flags) {
  return (flags & (O_ACCMODE | O_CREAT | O_TRUNC | O_DIRECTORY)) == O_RDONLY;
}

// When memory runs out a call fails with an errno, as for any other reason.
template <class Call>
int WithoutThrowing(const Call& call) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
}

// What is only to be noted goes unnoted when memory runs out.
template <class Call>
void WithoutMemory(const Call& call) {
  (void)WithoutThrowing([&] {
    call();
    return 0;
  });
}

}  // namespace

StoreFileSystem::StoreFileSystem(JournaledFiles& below, TaskDirectory directory,
                                 const std::string& refusedPath)
    : ForwardingFileSystem(static_cast<AFileSystem&>(below)),
      m_Journaled(below),
      m_Directory(std::move(directory)),
      m_Refused(below, refusedPath),
      m_WriteTrouble(m_Readings),
      m_Strays(below, m_Directory, m_Known, m_Open),
      m_Reader({below, m_Refused, m_Known, m_Open, m_Readings}),
      m_Remover(below, m_Directory, m_Known, m_Readings) {
  m_Journaled.SetObserver(this);
}

StoreFileSystem::~StoreFileSystem() {
  m_Journaled.SetObserver(nullptr);
}

int StoreFileSystem::Open(const char* path, int flags, unsigned mode, int& fd) {
  fd = -1;
  return WithoutThrowing([&] {
    const std::optional<std::string> name = m_Directory.NameOf(path);
    if (name && IsToRead(flags) && m_Directory.IsTaskFile(*name)) {
      return m_Reader.Open(*name, path, flags, fd);
    }
    if (name && !IsToRead(flags)) {
      return Make(*name, path, flags, mode, fd);
    }
    return ForwardingFileSystem::Open(path, flags, mode, fd);
  });
}

int StoreFileSystem::Make(const std::string& name, const char* path, int flags, unsigned mode,
                          int& fd) {
  const int error = ForwardingFileSystem::Open(path, flags, mode, fd);
  if (error == 0) {
    m_Open.AddMade(fd, name);
  } else if (error != EINTR) {
    WriteFailures::Note(name, error);
  }
  return error;
}

int StoreFileSystem::Read(int fd, void* buffer, std::size_t size, std::size_t& got) {
  return m_Open.Read(fd, buffer, size, got) ? 0 : ForwardingFileSystem::Read(fd, buffer, size, got);
}

int StoreFileSystem::Write(int fd, const void* data, std::size_t size, std::size_t& written) {
  return NoteOfMade(fd, ForwardingFileSystem::Write(fd, data, size, written));
}

int StoreFileSystem::Sync(int fd) {
  return NoteOfMade(fd, ForwardingFileSystem::Sync(fd));
}

int StoreFileSystem::NoteOfMade(int fd, int error) {
  if (error != 0 && error != EINTR) {
    if (const auto name = m_Open.NameOfMade(fd)) {
      WriteFailures::Note(*name, error);
    }
  }
  return error;
}

int StoreFileSystem::Close(int fd) {
  const std::optional<std::string> made = m_Open.NameOfMade(fd);
  Info info;
  if (made && ForwardingFileSystem::GetOpenInfo(fd, info) == 0) {
    m_Known.Write(*made, FileIdentity(info));
  }
  m_Open.Remove(fd);
  return ForwardingFileSystem::Close(fd);
}

int StoreFileSystem::Rename(const char* from, const char* to, bool replace) {
  const int error = ForwardingFileSystem::Rename(from, to, replace);
  Info info;
  if (const auto name = TaskFileAt(to);
      error == 0 && name && ForwardingFileSystem::GetInfo(to, info) == 0) {
    m_Known.Write(*name, FileIdentity(info));
  }
  return error;
}

int StoreFileSystem::Unlink(const char* path) {
  return WithoutThrowing([&] {
    const std::optional<std::string> name = TaskFileAt(path);
    if (name && !AMsgQueue::IsAnswering()) {
      const int error = m_Remover.Remove(*name, path);
      if (error == 0 || error == ENOENT) {
        m_WriteTrouble.Forget(*name);
      }
      return error;
    }
    const int error = ForwardingFileSystem::Unlink(path);
    if (name && (error == 0 || error == ENOENT)) {
      m_Known.Forget(*name);
      m_WriteTrouble.Forget(*name);
    } else if (name && error != EINTR) {
      WriteFailures::Note(*name, error);
    }
    return error;
  });
}

// Listed in one go: the enumeration holds no descriptor meanwhile, and costs nothing when its
// client never ends it.
int StoreFileSystem::OpenDirectory(const char* path, unsigned long& handle) {
  handle = 0;
  if (!m_Directory.IsItself(path)) {
    return ForwardingFileSystem::OpenDirectory(path, handle);
  }
  return WithoutThrowing([&] {
    DirectoryListings::Listing listing;
    listing.m_IsReading = !AMsgQueue::IsAnswering();
    const int error = DirectoryListings::List(Below(), path, listing);
    if (error == 0) {
      if (listing.m_IsReading) {
        m_Known.BeginReading();
        m_WriteTrouble.ForgetFiles();
      }
      handle = m_Listings.Add(std::move(listing));
    } else if (listing.m_IsReading && error != EINTR) {
      m_Readings.NoteEnd();
      ReportReading(error);
    }
    return error;
  });
}

int StoreFileSystem::ReadDirectory(unsigned long handle, const char*& name) {
  return m_Listings.Has(handle) ? m_Listings.Next(handle, name)
                                : ForwardingFileSystem::ReadDirectory(handle, name);
}

int StoreFileSystem::CloseDirectory(unsigned long handle) {
  const auto listing = m_Listings.Remove(handle);
  if (!listing) {
    return ForwardingFileSystem::CloseDirectory(handle);
  }
  if (listing->m_IsReading) {
    m_Readings.NoteEnd();
    if (listing->m_Error == 0) {
      m_Known.EndReading();
    } else {
      ReportReading(listing->m_Error);
    }
  }
  return 0;
}

int StoreFileSystem::ReplaceFile(const char* path, const std::string& bytes) {
  const int error = Below().ReplaceFile(path, bytes);
  if (error != 0) {
    OnFailure(path, error);
  }
  return error;
}

void StoreFileSystem::OnReplaced(const std::string& path, const Info& info) noexcept {
  WithoutMemory([&] {
    if (const auto name = TaskFileAt(path.c_str())) {
      m_Known.Write(*name, FileIdentity(info));
      m_WriteTrouble.Note(*name, 0);
    }
  });
}

void StoreFileSystem::OnFailure(const std::string& path, int error) noexcept {
  WithoutMemory([&] {
    if (const auto name = TaskFileAt(path.c_str())) {
      m_WriteTrouble.Note(*name, error);
      WriteFailures::Note(*name, error);
    }
  });
}

bool StoreFileSystem::IsFailureAwaited() const noexcept {
  return WriteFailures::AreCollected();
}

std::optional<std::string> StoreFileSystem::TaskFileAt(const char* path) const {
  std::optional<std::string> name = m_Directory.NameOf(path);
  return name && m_Directory.IsTaskFile(*name) ? std::move(name) : std::nullopt;
}

void StoreFileSystem::ReportReading(int error) const {
  ALOG(
      AgentLog(), ALogger::Warning, "StoreFileSystem",
      AString(
          "The task directory %1 cannot be read to its end: %2. Tasks that were not come to are "
          "missing until the next reading at %3")
          .Arg(AString::FromUtf8(m_Directory.Path()), std::strerror(error), m_Readings.NextText()));
}

}  // namespace NoxAgent
