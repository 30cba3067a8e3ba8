#include "agent/daemon/store/StoreFileSystem.h"

#include "tests/support/ForwardingFileSystem.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempDir.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgQueue.h>
#include <AgentInterfacesV3/AMsgQueueServer.h>
#include <BaseSDK/AFile.h>
#include <BaseSDK/AResult.h>
#include <BaseSDK/AUtf8Encoding.h>

#include <gtest/gtest.h>

#include <fcntl.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <set>

using BaseSDK::AFile;
using BaseSDK::AFileSystem;
using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr const char* Good = "<Task><Schedule><Trigger Type=\"-1\"/></Schedule></Task>";

// Does what is given as the answer to a request: for a client.
class ClientsRequest : public Corvane::AgentInterfacesV3::AMsgQueueServer {
 public:
  static void Do(const std::function<void()>& work) {
    using namespace Corvane::AgentInterfacesV3;
    AMsgQueue queue(5);
    ClientsRequest request(work);
    ASSERT_EQ(request.Open(5), 1);
    AMsgReply reply;
    AMsgIn message("INoxTaskScheduler", "GetTaskXML", reply);
    EXPECT_EQ(queue.Send(message), 1);
  }

  long ProcessRequest(const Corvane::AgentInterfacesV3::AMsgIn* request) override {
    m_Work();
    request->Reply().SetResult(1, {});
    return 1;
  }

 private:
  explicit ClientsRequest(std::function<void()> work) : m_Work(std::move(work)) {}

  const std::function<void()> m_Work;
};

// The disk, with what a test has happen in front of its calls.
class Disk : public TestSupport::ForwardingFileSystem {
 public:
  using ForwardingFileSystem::ForwardingFileSystem;

  int Rename(const char* from, const char* to, bool replace) override {
    if (const auto before = std::exchange(m_BeforeRename, nullptr)) {
      before();
    }
    return m_RenameError != 0 ? m_RenameError : ForwardingFileSystem::Rename(from, to, replace);
  }
  int Unlink(const char* path) override {
    return m_UnlinkError != 0 ? m_UnlinkError : ForwardingFileSystem::Unlink(path);
  }
  int Write(int fd, const void* data, std::size_t size, std::size_t& written) override {
    return m_WriteError != 0 ? m_WriteError : ForwardingFileSystem::Write(fd, data, size, written);
  }
  int Read(int fd, void* buffer, std::size_t size, std::size_t& got) override {
    return m_ReadError != 0 ? m_ReadError : ForwardingFileSystem::Read(fd, buffer, size, got);
  }
  int ReadDirectory(unsigned long handle, const char*& name) override {
    return m_ListError != 0 ? m_ListError : ForwardingFileSystem::ReadDirectory(handle, name);
  }

  std::function<void()> m_BeforeRename;
  int m_RenameError = 0;
  int m_UnlinkError = 0;
  int m_WriteError = 0;
  int m_ReadError = 0;
  int m_ListError = 0;
};

class StoreFileSystemTest : public testing::Test {
 protected:
  StoreFileSystemTest() {
    std::filesystem::create_directory(m_Dir / "tasks");
    (void)AFileSystem::Replace(&m_Store);
  }
  ~StoreFileSystemTest() override { (void)AFileSystem::Replace(nullptr); }

  AString PathOf(const std::string& name) const {
    return AString::FromUtf8((m_Dir / ("tasks/" + name)).string());
  }
  void Put(const std::string& name, const std::string& bytes) const {
    m_Dir.Write("tasks/" + name, bytes);
  }
  bool Has(const std::string& name) const { return m_Dir.Has("tasks/" + name); }
  // As the scheduler reads: the text, or the errno.
  std::string Read(const std::string& name) const {
    AString text;
    const unsigned long result = AFile::Read(PathOf(name), text, BaseSDK::AUtf8Encoding());
    return result == 0 ? text.ToUtf8() : std::to_string(BaseSDK::ErrnoFromResult(result));
  }
  int Write(const std::string& name, const std::string& text) const {
    return BaseSDK::ErrnoFromResult(
        AFile::Write(PathOf(name), AString::FromUtf8(text), BaseSDK::AUtf8Encoding()));
  }
  int Remove(const std::string& name) const {
    return BaseSDK::ErrnoFromResult(AFile::Remove(PathOf(name), 0));
  }
  std::set<std::string> List() {
    std::set<std::string> names;
    unsigned long handle = 0;
    EXPECT_EQ(m_Store.OpenDirectory((m_Dir / "tasks/").c_str(), handle), 0);
    const char* name = nullptr;
    while (m_Store.ReadDirectory(handle, name) == 0 && name != nullptr) {
      names.insert(name);
    }
    EXPECT_EQ(m_Store.CloseDirectory(handle), 0);
    return names;
  }

  TestSupport::LogCapture m_Log{ALogger::Notice};
  TestSupport::TempDir m_Dir;
  Disk m_Disk{AFileSystem::Current()};
  const TaskDirectory m_Tasks{(m_Dir / "tasks").string(), ".vsk"};
  JournaledFiles m_Journaled{m_Disk, m_Tasks, (m_Dir / "journal").string()};
  StoreFileSystem m_Store{m_Journaled, m_Tasks, (m_Dir / "refused").string()};
};

const std::string Missing = std::to_string(ENOENT);

TEST_F(StoreFileSystemTest, PutsAwayWhatNoTaskCanBeMadeOf) {
  const struct {
    const char* m_Bytes;
    const char* m_Told;
  } rows[] = {
      {"", ":1:1: the file is empty"},
      {"<Task>\n <Schedule></Schedul>\n</Task>", ":2:"},
      {"<Task><Schedule><Trigger Type=\"1\">", ":1:"},
      {"<Foo><Trigger/></Foo>", ":1:1: the root element is not Task"},
      {"<Task><Schedule/></Task>", ":1:1: there is no Trigger in it"},
      {"<Task>\n<Schedule><Trigger/>\xE9", ":2:21: the byte 0xe9 is not UTF-8"},
  };
  int number = 0;
  for (const auto& row : rows) {
    const std::string name = "T" + std::to_string(++number) + ".vsk";
    Put(name, row.m_Bytes);
    EXPECT_EQ(Read(name), Missing) << row.m_Bytes;
    EXPECT_FALSE(Has(name)) << row.m_Bytes;
    EXPECT_EQ(m_Dir.Read("refused/" + name), row.m_Bytes);
    EXPECT_EQ(m_Log.CountContaining(AString::FromUtf8("The task file " + name + row.m_Told)), 1U)
        << row.m_Bytes << testing::PrintToString(m_Log.Lines());
  }
  EXPECT_EQ(m_Log.Messages(ALogger::Warning).size(), std::size(rows));
}

TEST_F(StoreFileSystemTest, HandsOverWhatATaskCanBeMadeOf) {
  Put("T1.vsk", Good);
  EXPECT_EQ(Read("T1.vsk"), Good);
  EXPECT_EQ(Read("T1.vsk"), Good);
  EXPECT_TRUE(Has("T1.vsk"));
  EXPECT_TRUE(m_Log.Lines().empty());
}

TEST_F(StoreFileSystemTest, JudgesAFileAgainWhenItHasChanged) {
  Put("T1.vsk", Good);
  EXPECT_EQ(Read("T1.vsk"), Good);
  Put("T1.vsk", std::string(Good).replace(0, 6, "<Tusk>"));
  EXPECT_EQ(Read("T1.vsk"), Missing);
}

TEST_F(StoreFileSystemTest, ASecondDocumentOfTheSameNameGetsANumber) {
  for (const char* const bytes : {"one", "two", "three"}) {
    Put("T1.vsk", bytes);
    EXPECT_EQ(Read("T1.vsk"), Missing);
  }
  EXPECT_EQ(m_Dir.Read("refused/T1.vsk"), "one");
  EXPECT_EQ(m_Dir.Read("refused/T1.vsk.1"), "two");
  EXPECT_EQ(m_Dir.Read("refused/T1.vsk.2"), "three");
}

TEST_F(StoreFileSystemTest, WhatCannotBeMovedStaysAndIsToldOfOnce) {
  Put("T1.vsk", "bad");
  m_Disk.m_RenameError = ENOSPC;
  EXPECT_EQ(Read("T1.vsk"), Missing);
  EXPECT_EQ(Read("T1.vsk"), Missing);
  EXPECT_TRUE(Has("T1.vsk"));
  EXPECT_EQ(m_Log.CountContaining("It stays where it is (cannot move it to"), 1U);
  EXPECT_EQ(m_Log.CountContaining("No space left on device"), 1U);
}

TEST_F(StoreFileSystemTest, AFolderThatCannotBeMadeLosesNothing) {
  m_Dir.Write("refused", "a file is in the way");
  Put("T1.vsk", "bad");
  EXPECT_EQ(Read("T1.vsk"), Missing);
  EXPECT_EQ(m_Dir.Read("tasks/T1.vsk"), "bad");
  EXPECT_EQ(m_Log.CountContaining("cannot make the directory"), 1U);
}

TEST_F(StoreFileSystemTest, LinksAndDirectoriesStayAndCountAsMissing) {
  m_Dir.Write("elsewhere", "bad");
  std::filesystem::create_symlink(m_Dir / "elsewhere", m_Dir / "tasks/link.vsk");
  std::filesystem::create_directory(m_Dir / "tasks/folder.vsk");
  EXPECT_EQ(Read("link.vsk"), Missing);
  EXPECT_EQ(Read("folder.vsk"), Missing);
  EXPECT_TRUE(std::filesystem::is_symlink(m_Dir / "tasks/link.vsk"));
  EXPECT_TRUE(Has("folder.vsk"));
  EXPECT_EQ(m_Log.CountContaining("a symbolic link is not moved"), 1U);
  EXPECT_EQ(m_Log.CountContaining("it is a directory"), 1U);
  m_Dir.Write("elsewhere", Good);
  EXPECT_EQ(Read("link.vsk"), Good);
}

TEST_F(StoreFileSystemTest, NeverTakesAFileFromAWriter) {
  Put("T1.vsk", "bad");
  m_Disk.m_BeforeRename = [&] {
    Put("new", Good);
    std::filesystem::rename(m_Dir / "tasks/new", m_Dir / "tasks/T1.vsk");
  };
  EXPECT_EQ(Read("T1.vsk"), Good) << "what has replaced it is read instead";
  EXPECT_EQ(m_Dir.Read("tasks/T1.vsk"), Good);
  EXPECT_FALSE(m_Dir.Has("refused/T1.vsk"));
}

TEST_F(StoreFileSystemTest, DoesNotJudgeAFileThatIsBeingMade) {
  int fd = -1;
  ASSERT_EQ(m_Store.Open(PathOf("T1.vsk").ToUtf8().c_str(), O_RDWR | O_CREAT | O_EXCL, 0644, fd),
            0);
  EXPECT_EQ(Read("T1.vsk"), "");
  EXPECT_EQ(m_Store.Close(fd), 0);
  EXPECT_TRUE(Has("T1.vsk"));
  EXPECT_EQ(Read("T1.vsk"), Missing) << "it is complete now, and empty";
}

TEST_F(StoreFileSystemTest, LeavesOtherPathsAlone) {
  m_Dir.Write("other.vsk", "bad");
  Put("notes.txt", "bad");
  AString text;
  EXPECT_EQ(AFile::Read(AString::FromUtf8((m_Dir / "other.vsk").string()), text,
                        BaseSDK::AUtf8Encoding()),
            0U);
  EXPECT_EQ(Read("notes.txt"), "bad");
  EXPECT_TRUE(m_Log.Lines().empty());
}

TEST_F(StoreFileSystemTest, TellsWhyATaskEndsBeforeItsFileGoes) {
  Put("T1.vsk",
      "<Task><Trigger Type=\"1\"><BeginDate>2020/01/01 08:00:00</BeginDate>"
      "<EndDate>2021/02/03 04:05:06</EndDate></Trigger></Task>");
  (void)Read("T1.vsk");
  EXPECT_EQ(Remove("T1.vsk"), 0);
  EXPECT_FALSE(Has("T1.vsk"));
  EXPECT_TRUE(
      m_Log.Has(ALogger::Notice,
                "The task T1 has ended and is deleted: its trigger ended on 2021-02-03 04:05:06"));
}

TEST_F(StoreFileSystemTest, AFileThatWasChangedMeanwhileOutlivesItsTask) {
  Put("T1.vsk", Good);
  (void)Read("T1.vsk");
  Put("T1.vsk", std::string(Good) + " ");
  EXPECT_EQ(Remove("T1.vsk"), ESTALE);
  EXPECT_TRUE(Has("T1.vsk"));
  EXPECT_EQ(m_Log.CountContaining("its file was changed meanwhile"), 1U);
}

TEST_F(StoreFileSystemTest, AChangedFileThatOnlyAClientHasReadOutlivesItsTask) {
  Put("T1.vsk", Good);
  (void)Read("T1.vsk");
  Put("T1.vsk", std::string(Good) + " ");
  ClientsRequest::Do([&] { EXPECT_EQ(Read("T1.vsk"), std::string(Good) + " "); });
  EXPECT_EQ(Remove("T1.vsk"), ESTALE);
  EXPECT_TRUE(Has("T1.vsk"));
  (void)Read("T1.vsk");
  EXPECT_EQ(Remove("T1.vsk"), 0) << "the scheduler has read it now";
}

TEST_F(StoreFileSystemTest, AChangedFileThatAClientWasRefusedOutlivesItsTask) {
  Put("T1.vsk", Good);
  (void)Read("T1.vsk");
  Put("T1.vsk", "bad");
  m_Disk.m_RenameError = ENOSPC;
  ClientsRequest::Do([&] { EXPECT_EQ(Read("T1.vsk"), Missing); });
  m_Disk.m_RenameError = 0;
  EXPECT_EQ(Remove("T1.vsk"), ESTALE);
  EXPECT_TRUE(Has("T1.vsk"));
}

TEST_F(StoreFileSystemTest, AFileThatTakesThePlaceOfAnEndedOneStays) {
  Put("T1.vsk", Good);
  (void)Read("T1.vsk");
  m_Disk.m_BeforeRename = [&] {
    Put("new", "new");
    std::filesystem::rename(m_Dir / "tasks/new", m_Dir / "tasks/T1.vsk");
  };
  EXPECT_EQ(Remove("T1.vsk"), ESTALE);
  EXPECT_EQ(m_Dir.Read("tasks/T1.vsk"), "new");
}

TEST_F(StoreFileSystemTest, AnEndedTaskWhoseFileCannotGoIsToldOf) {
  Put("T1.vsk", Good);
  (void)Read("T1.vsk");
  m_Disk.m_UnlinkError = EROFS;
  EXPECT_EQ(Remove("T1.vsk"), EROFS);
  EXPECT_TRUE(Has("T1.vsk"));
  EXPECT_EQ(m_Log.CountContaining("cannot be deleted: Read-only file system"), 1U);
}

// As a crash leaves it: the file has its other name and was neither deleted nor renamed back.
TEST_F(StoreFileSystemTest, AnEndedTaskThatACrashLeavesAsideGoesWithTheLeftovers) {
  Put("T1.vsk", Good);
  (void)Read("T1.vsk");
  m_Disk.m_UnlinkError = EIO;
  m_Disk.m_BeforeRename = [this] {
    m_Disk.m_BeforeRename = [this] { m_Disk.m_RenameError = EIO; };
  };
  EXPECT_NE(Remove("T1.vsk"), 0);
  m_Disk.m_UnlinkError = 0;
  unsigned removed = 0;
  EXPECT_EQ(AFile::RemoveLeftovers(PathOf(""), removed), 0U);
  EXPECT_EQ(removed, 1U);
  EXPECT_TRUE(std::filesystem::is_empty(m_Dir / "tasks"));
}

TEST_F(StoreFileSystemTest, AFileThatCannotBeWrittenAmongOthersThatCanIsToldOfOnce) {
  for (int run = 0; run < 3; ++run) {
    m_Disk.m_WriteError = EACCES;
    EXPECT_EQ(Write("T1.vsk", Good), EACCES);
    m_Disk.m_WriteError = 0;
    EXPECT_EQ(Write("T2.vsk", Good), 0);
  }
  EXPECT_EQ(m_Log.Messages(ALogger::Warning).size(), 1U);
  EXPECT_EQ(m_Log.Messages(ALogger::Notice).size(), 0U);
  EXPECT_EQ(Write("T1.vsk", Good), 0);
  EXPECT_TRUE(
      m_Log.Has(ALogger::Notice, "Task files can be written again; writing failed 3 times"));
}

TEST_F(StoreFileSystemTest, TellsOnceThatFilesCannotBeWrittenAndThatTheyCanAgain) {
  m_Disk.m_WriteError = ENOSPC;
  EXPECT_EQ(Write("T1.vsk", Good), ENOSPC);
  EXPECT_EQ(Write("T2.vsk", Good), ENOSPC);
  EXPECT_EQ(m_Log.Messages(ALogger::Warning).size(), 1U);
  EXPECT_EQ(m_Log.CountContaining("The task file T1.vsk cannot be written: No space left"), 1U);
  m_Disk.m_WriteError = 0;
  EXPECT_EQ(Write("T1.vsk", Good), 0);
  EXPECT_TRUE(
      m_Log.Has(ALogger::Notice, "Task files can be written again; writing failed 2 times"));
}

TEST_F(StoreFileSystemTest, AnEndedTaskLeavesNoWriteFailureToItsSuccessor) {
  Put("T1.vsk", Good);
  (void)Read("T1.vsk");
  m_Disk.m_WriteError = ENOSPC;
  EXPECT_EQ(Write("T1.vsk", Good), ENOSPC);
  EXPECT_EQ(m_Store.Trouble().ErrorOf("T1.vsk"), ENOSPC);
  m_Disk.m_WriteError = 0;
  EXPECT_EQ(Remove("T1.vsk"), 0);
  EXPECT_EQ(m_Store.Trouble().ErrorOf("T1.vsk"), 0);
}

TEST_F(StoreFileSystemTest, AFileThatCannotBeReadIsToldOfOnceAndStays) {
  Put("T1.vsk", Good);
  m_Disk.m_ReadError = EIO;
  EXPECT_EQ(Read("T1.vsk"), std::to_string(EIO));
  EXPECT_EQ(Read("T1.vsk"), std::to_string(EIO));
  EXPECT_EQ(m_Log.CountContaining("it cannot be read: Input/output error"), 1U);
  m_Disk.m_ReadError = 0;
  EXPECT_EQ(Read("T1.vsk"), Good);
}

TEST_F(StoreFileSystemTest, ListsTheDirectoryAndKnowsWhenItIsReadNext) {
  Put("T1.vsk", Good);
  Put("notes.txt", "");
  EXPECT_FALSE(m_Store.Readings().Next().has_value());
  EXPECT_EQ(List(), (std::set<std::string>{".", "..", "T1.vsk", "notes.txt"}));
  const long soon = static_cast<long>(std::time(nullptr)) + 3600;
  ASSERT_TRUE(m_Store.Readings().Next().has_value());
  EXPECT_LE(*m_Store.Readings().Next(), soon);
  EXPECT_TRUE(m_Log.Lines().empty());
}

TEST_F(StoreFileSystemTest, TellsOfAListingThatBreaksOff) {
  m_Disk.m_ListError = EMFILE;
  EXPECT_TRUE(List().empty());
  EXPECT_EQ(m_Log.CountContaining("cannot be read to its end: Too many open files"), 1U);
}

}  // namespace
}  // namespace NoxAgent
