#include <BaseSDK/AMutex.h>
#include <BaseSDK/ASystemZone.h>

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>

namespace BaseSDK {
namespace {

/// What tells one state of the zone file from another; all zero when there is none.
struct AFileState {
  dev_t m_Device = 0;
  ino_t m_Node = 0;
  off_t m_Size = 0;
  timespec m_Written{};
  timespec m_Changed{};

  static AFileState Of(const char* file) {
    struct stat info {};
    if (stat(file, &info) != 0) {
      return {};
    }
    return {info.st_dev, info.st_ino, info.st_size, info.st_mtim, info.st_ctim};
  }
  bool operator==(const AFileState& other) const {
    return m_Device == other.m_Device && m_Node == other.m_Node && m_Size == other.m_Size &&
           IsSame(m_Written, other.m_Written) && IsSame(m_Changed, other.m_Changed);
  }

 private:
  static bool IsSame(const timespec& left, const timespec& right) {
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
  }
};

// The C library reads the zone anew only when it finds another text in TZ than before, and setenv
// is no way to put one there: it would free the old text under the hands of threads that read it.
// So the entry is this buffer, put there once, and one character of it changes: "." to "/" and
// back, which makes ":/etc/./localtime" of ":/etc///localtime", two spellings of one path. Whoever
// reads the entry meanwhile sees the one or the other.
constexpr char EntryBegin[] = "TZ=:";
constexpr std::array<char, 2> Spelling{'.', '/'};

struct AHeldZone {
  std::array<char, sizeof EntryBegin + PATH_MAX + 4> m_Entry{};
  std::size_t m_Toggle = 0;  ///< where in m_Entry that character is
  std::string m_File;
  std::atomic<bool> m_IsHeld{false};  ///< set last: then all of the above is constant
  AMutex m_Lock;
  AFileState m_State NOX_GUARDED_BY(m_Lock);
};

AHeldZone& Held() {
  // Never destroyed: the environment points into it, and threads may wait until the process ends.
  static AHeldZone& zone = *new AHeldZone;
  return zone;
}

bool MakeEntry(AHeldZone& zone, std::string_view file) {
  const std::size_t slash = file.rfind('/');
  if (slash == std::string_view::npos || file.size() > PATH_MAX) {
    return false;
  }
  const std::string entry = EntryBegin + std::string(file.substr(0, slash)) + "/" + Spelling[0] +
                            std::string(file.substr(slash));
  std::memcpy(zone.m_Entry.data(), entry.c_str(), entry.size() + 1);
  zone.m_Toggle = sizeof EntryBegin - 1 + slash + 1;
  return true;
}

// "/usr/share/zoneinfo/Europe/Berlin" is Europe/Berlin, wherever that directory is.
std::string NameInPath(const std::string& path) {
  constexpr std::string_view Directory = "/zoneinfo/";
  std::array<char, PATH_MAX> target{};
  const std::string_view file =
      realpath(path.c_str(), target.data()) != nullptr ? target.data() : "";
  const std::size_t found = file.rfind(Directory);
  return found == std::string_view::npos ? path
                                         : std::string(file.substr(found + Directory.size()));
}

}  // namespace

void ASystemZone::Hold(const char* file) {
  AHeldZone& zone = Held();
  if (std::getenv("TZ") != nullptr || zone.m_IsHeld || !MakeEntry(zone, file)) {
    return;
  }
  zone.m_File = file;
  {
    AMutexGuard guard(zone.m_Lock);
    zone.m_State = AFileState::Of(file);
  }
  zone.m_IsHeld = ::putenv(zone.m_Entry.data()) == 0;
  ::tzset();
}

bool ASystemZone::IsHeld() {
  return Held().m_IsHeld;
}

void ASystemZone::Refresh() {
  AHeldZone& zone = Held();
  if (!zone.m_IsHeld) {
    return;
  }
  AMutexGuard guard(zone.m_Lock);
  const AFileState state = AFileState::Of(zone.m_File.c_str());
  if (state == zone.m_State) {
    return;
  }
  zone.m_State = state;
  const std::atomic_ref<char> toggle(zone.m_Entry[zone.m_Toggle]);
  toggle.store(toggle.load() == Spelling[0] ? Spelling[1] : Spelling[0]);
  ::tzset();
}

AString ASystemZone::Value() {
  if (IsHeld()) {
    return ":" + AString::FromUtf8(Held().m_File);
  }
  const char* const variable = std::getenv("TZ");
  return AString(variable != nullptr ? variable : ":/etc/localtime");
}

AString ASystemZone::Name() {
  std::string text = Value().ToUtf8();
  text.erase(0, text.starts_with(':') ? 1 : 0);
  return AString::FromUtf8(text.starts_with('/') ? NameInPath(text) : text);
}

}  // namespace BaseSDK
