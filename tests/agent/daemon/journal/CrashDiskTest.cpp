#include "tests/agent/daemon/journal/CrashDisk.h"

#include <gtest/gtest.h>

#include <fcntl.h>

#include <cerrno>
#include <functional>
#include <set>

namespace NoxAgent {
namespace {

using Loss = CrashDisk::Loss;
using Info = BaseSDK::AFileSystem::Info;

constexpr const char* Path = "/d/a";
constexpr unsigned Cuts = 300;

class CrashDiskTest : public testing::Test {
 protected:
  static std::unique_ptr<CrashDisk> NewDisk() {
    auto disk = std::make_unique<CrashDisk>();
    disk->MakeDirectory("/d");
    return disk;
  }

  static int Open(CrashDisk& disk, const std::string& path, int flags) {
    int fd = -1;
    EXPECT_EQ(0, disk.Open(path.c_str(), flags, 0644, fd)) << path;
    return fd;
  }

  static void Write(CrashDisk& disk, const std::string& path, const std::string& bytes,
                    int flags = O_WRONLY | O_CREAT) {
    const int fd = Open(disk, path, flags);
    std::size_t written = 0;
    EXPECT_EQ(0, disk.Write(fd, bytes.data(), bytes.size(), written));
    EXPECT_EQ(bytes.size(), written);
    EXPECT_EQ(0, disk.Close(fd));
  }

  static void Flush(CrashDisk& disk, const std::string& path) {
    const int fd = Open(disk, path, O_RDONLY);
    EXPECT_EQ(0, disk.Sync(fd));
    EXPECT_EQ(0, disk.Close(fd));
  }

  static void MakeOnDisk(CrashDisk& disk, const std::string& path, const std::string& bytes) {
    Write(disk, path, bytes);
    Flush(disk, path);
    Flush(disk, "/d");
  }

  /// What the file holds; "-" when it is not there.
  static std::string Read(CrashDisk& disk, const std::string& path) {
    int fd = -1;
    if (disk.Open(path.c_str(), O_RDONLY, 0, fd) != 0) {
      return "-";
    }
    std::string bytes(100000, ' ');
    std::size_t got = 0;
    EXPECT_EQ(0, disk.Read(fd, bytes.data(), bytes.size(), got));
    EXPECT_EQ(0, disk.Close(fd));
    bytes.resize(got);
    return bytes;
  }

  /// What `look` sees after power cuts of many seeds, each on a new disk that `prepare` prepared.
  static std::set<std::string> AfterCuts(Loss loss, const std::function<void(CrashDisk&)>& prepare,
                                         const std::function<std::string(CrashDisk&)>& look) {
    std::set<std::string> seen;
    for (unsigned seed = 0; seed < Cuts; ++seed) {
      const auto disk = NewDisk();
      prepare(*disk);
      std::mt19937_64 random(seed);
      disk->CutPower(loss, random);
      seen.insert(look(*disk));
    }
    return seen;
  }

  static std::string LookAtPath(CrashDisk& disk) { return Read(disk, Path); }

  using Seen = std::set<std::string>;
};

TEST_F(CrashDiskTest, KeepsWhatWasFlushed) {
  for (const Loss loss : {Loss::All, Loss::None, Loss::Latest, Loss::Any}) {
    EXPECT_EQ(Seen{"text"},
              AfterCuts(
                  loss, [](CrashDisk& disk) { MakeOnDisk(disk, Path, "text"); }, LookAtPath));
  }
}

TEST_F(CrashDiskTest, LosesANameThatWasNotFlushed) {
  const auto make = [](CrashDisk& disk) {
    Write(disk, Path, "text");
    Flush(disk, Path);
  };
  EXPECT_EQ(Seen{"-"}, AfterCuts(Loss::All, make, LookAtPath));
  EXPECT_EQ((Seen{"-", "text"}), AfterCuts(Loss::Any, make, LookAtPath));
  EXPECT_EQ(Seen{"text"}, AfterCuts(Loss::None, make, LookAtPath));
}

TEST_F(CrashDiskTest, LosesContentThatWasNotFlushed) {
  const auto make = [](CrashDisk& disk) {
    Write(disk, Path, "ab");
    Flush(disk, "/d");
  };
  EXPECT_EQ(Seen{""}, AfterCuts(Loss::All, make, LookAtPath));
  const std::string zeros(2, '\0');
  EXPECT_EQ((Seen{"", std::string(1, '\0'), "a", zeros, "ab"}),
            AfterCuts(Loss::Any, make, LookAtPath));
}

TEST_F(CrashDiskTest, TearsAnOverwriteBySectors) {
  const auto overwrite = [](CrashDisk& disk) {
    MakeOnDisk(disk, Path, std::string(2 * CrashDisk::SectorSize, 'o'));
    Write(disk, Path, std::string(2 * CrashDisk::SectorSize, 'n'));
  };
  const auto look = [](CrashDisk& disk) {
    const std::string bytes = Read(disk, Path);
    EXPECT_EQ(2 * CrashDisk::SectorSize, bytes.size());
    const std::string ends{bytes.front(), bytes.back()};
    EXPECT_EQ(
        std::string(CrashDisk::SectorSize, ends[0]) + std::string(CrashDisk::SectorSize, ends[1]),
        bytes);
    return ends;
  };
  EXPECT_EQ((Seen{"oo", "on", "no", "nn"}), AfterCuts(Loss::Any, overwrite, look));
  EXPECT_EQ(Seen{"oo"}, AfterCuts(Loss::All, overwrite, look));
  EXPECT_EQ((Seen{"oo", "nn"}), AfterCuts(Loss::Latest, overwrite, look));
}

TEST_F(CrashDiskTest, LeavesOneOfSeveralVersionsOfASector) {
  const auto overwrite = [](CrashDisk& disk) {
    MakeOnDisk(disk, Path, "1");
    Write(disk, Path, "2");
    Write(disk, Path, "3");
  };
  EXPECT_EQ((Seen{"1", "2", "3"}), AfterCuts(Loss::Any, overwrite, LookAtPath));
}

TEST_F(CrashDiskTest, CutsAFileOrNot) {
  const auto cut = [](CrashDisk& disk) {
    MakeOnDisk(disk, Path, "old");
    ASSERT_EQ(0, disk.Close(Open(disk, Path, O_WRONLY | O_TRUNC)));
  };
  const std::string zeros(3, '\0');
  EXPECT_EQ((Seen{"", "old", zeros}), AfterCuts(Loss::Any, cut, LookAtPath));
}

TEST_F(CrashDiskTest, RenamesWithOrWithoutTheContent) {
  const auto replace = [](CrashDisk& disk) {
    MakeOnDisk(disk, Path, "old");
    Write(disk, "/d/n", "new");
    ASSERT_EQ(0, disk.Rename("/d/n", Path, true));
  };
  const Seen seen = AfterCuts(Loss::Any, replace, LookAtPath);
  EXPECT_TRUE(seen.contains("old"));
  EXPECT_TRUE(seen.contains("new"));
  EXPECT_TRUE(seen.contains(""));
  EXPECT_FALSE(seen.contains("-"));
  EXPECT_EQ((Seen{"old", "new"}), AfterCuts(Loss::Latest, replace, LookAtPath));
}

TEST_F(CrashDiskTest, KeepsLaterChangesOfNamesAndLosesEarlierOnes) {
  const auto change = [](CrashDisk& disk) {
    MakeOnDisk(disk, Path, "1");
    MakeOnDisk(disk, "/d/b", "2");
    ASSERT_EQ(0, disk.Unlink(Path));
    ASSERT_EQ(0, disk.Unlink("/d/b"));
  };
  const auto look = [](CrashDisk& disk) { return Read(disk, Path) + Read(disk, "/d/b"); };
  EXPECT_EQ((Seen{"12", "1-", "-2", "--"}), AfterCuts(Loss::Any, change, look));
  EXPECT_EQ((Seen{"12", "-2", "--"}), AfterCuts(Loss::Latest, change, look));
}

TEST_F(CrashDiskTest, FlushesAllThatWasChanged) {
  const auto change = [](CrashDisk& disk) {
    Write(disk, Path, "1");
    const int fd = Open(disk, "/d", O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(0, disk.SyncAll(fd));
    ASSERT_EQ(0, disk.Close(fd));
  };
  EXPECT_EQ(Seen{"1"}, AfterCuts(Loss::All, change, LookAtPath));
}

TEST_F(CrashDiskTest, KeepsNumberAndTimeOfAFlushedFile) {
  const auto disk = NewDisk();
  MakeOnDisk(*disk, Path, "1");
  Info before;
  ASSERT_EQ(0, disk->GetInfo(Path, before));
  std::mt19937_64 random(1);
  disk->CutPower(Loss::Any, random);
  Info after;
  ASSERT_EQ(0, disk->GetInfo(Path, after));
  EXPECT_EQ(before.m_Number, after.m_Number);
  EXPECT_EQ(before.m_Modified, after.m_Modified);
}

TEST_F(CrashDiskTest, GivesNumbersOfDeletedFilesAgainWithLaterTimes) {
  const auto disk = NewDisk();
  MakeOnDisk(*disk, Path, "1");
  Info before;
  ASSERT_EQ(0, disk->GetInfo(Path, before));
  ASSERT_EQ(0, disk->Unlink(Path));
  Flush(*disk, "/d");
  Write(*disk, Path, "2");
  Info after;
  ASSERT_EQ(0, disk->GetInfo(Path, after));
  EXPECT_EQ(before.m_Number, after.m_Number);
  EXPECT_LT(before.m_Modified, after.m_Modified);
}

TEST_F(CrashDiskTest, CountsWhatIsOpenUntilThePowerFails) {
  const auto disk = NewDisk();
  unsigned long handle = 0;
  ASSERT_EQ(0, disk->OpenDirectory("/d", handle));
  (void)Open(*disk, Path, O_WRONLY | O_CREAT);
  EXPECT_EQ(2U, disk->OpenHandles());
  std::mt19937_64 random(1);
  disk->CutPower(Loss::All, random);
  EXPECT_EQ(0U, disk->OpenHandles());
}

}  // namespace
}  // namespace NoxAgent
