// What the storage asks of the base library, call by call, and what it makes of every answer. The
// routines are replaced at link time: definitions in the program come before a library's.
#include "storage/TaskStorage.h"
#include "tests/support/FakeHost.h"
#include "tests/support/LockState.h"

#include <BaseSDK/AFile.h>
#include <BaseSDK/AMutex.h>
#include <BaseSDK/AUtf8Encoding.h>
#include <BaseSDK/Sys.h>

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace {

using BaseSDK::AString;
using TestSupport::FakeHost;

/// The answers of the routines below, and what they were asked.
struct Library {
  unsigned long m_MakeTemp = 0;
  unsigned long m_Open = 0;
  int m_Fd = 17;
  unsigned long m_Write = 0;
  long m_MissingBytes = 0;
  unsigned long m_Close = 0;
  unsigned long m_Remove = 0;
  unsigned long m_Rename = 0;
  unsigned long m_Read = 0;
  unsigned long m_FileWrite = 0;
  unsigned long m_Opendir = 0;
  unsigned long m_Handle = 99;
  unsigned long m_Readdir = 0;
  std::deque<const char*> m_Entries{};
  std::vector<std::string> m_Calls{};
  std::function<void()> m_OnCall{};
};

Library library;

template <class... Parts>
void Note(const Parts&... parts) {
  std::ostringstream text;
  (text << ... << parts);
  library.m_Calls.push_back(text.str());
  if (library.m_OnCall) {
    library.m_OnCall();
  }
}

/// Opens one private member: an explicit instantiation may name it.
template <class Tag, auto Member>
struct Opener {
  friend constexpr auto MemberOf(Tag) { return Member; }
};
struct StorageLock {
  friend constexpr auto MemberOf(StorageLock);
};
template struct Opener<StorageLock, &CTaskStorage::m_Lock>;

}  // namespace

namespace BaseSDK {

unsigned long AFile::MakeTemp(const AString& nameTemplate, AString& name) {
  Note("MakeTemp ", nameTemplate.ToUtf8());
  if (library.m_MakeTemp == 0) {
    name = nameTemplate + L"a1B2c3";
  }
  return library.m_MakeTemp;
}

unsigned long AFile::Read(const AString& name, AString& text, const AEncoding& encoding) {
  Note("Read ", name.ToUtf8(),
       dynamic_cast<const AUtf8Encoding*>(&encoding) != nullptr ? " as UTF-8" : "");
  text = L"read";
  return library.m_Read;
}

unsigned long AFile::Write(const AString& name, const AString& text, const AEncoding& encoding) {
  Note("WriteFile ", name.ToUtf8(), " ", text.ToUtf8(),
       dynamic_cast<const AUtf8Encoding*>(&encoding) != nullptr ? " as UTF-8" : "");
  return library.m_FileWrite;
}

unsigned long AFile::Remove(const AString& name, unsigned long flags) {
  Note("Remove ", name.ToUtf8(), " ", flags);
  return library.m_Remove;
}

unsigned long AFile::Rename(const AString& from, const AString& to, unsigned long flags) {
  Note("Rename ", from.ToUtf8(), " ", to.ToUtf8(), " ", flags);
  return library.m_Rename;
}

namespace Wrappers {

unsigned long Sys::Open(const char* name, int flags, int mode, int& fd) {
  Note("Open ", name, std::hex, " 0x", flags, std::oct, " 0", mode);
  fd = library.m_Open == 0 ? library.m_Fd : -1;
  return library.m_Open;
}

unsigned long Sys::Write(int fd, const void* data, std::size_t size, std::size_t& written) {
  Note("Write ", fd, " ", std::string(static_cast<const char*>(data), size));
  written = size - static_cast<std::size_t>(library.m_MissingBytes);
  return library.m_Write;
}

unsigned long Sys::Close(int fd) {
  Note("Close ", fd);
  return library.m_Close;
}

unsigned long Sys::Opendir(const char* name, unsigned long& handle) {
  Note("Opendir ", name);
  handle = library.m_Opendir == 0 ? library.m_Handle : 0;
  return library.m_Opendir;
}

unsigned long Sys::Readdir(unsigned long handle, const char*& name) {
  Note("Readdir ", handle);
  name = nullptr;
  if (!library.m_Entries.empty()) {
    name = library.m_Entries.front();
    library.m_Entries.pop_front();
  }
  return library.m_Readdir;
}

unsigned long Sys::Closedir(unsigned long handle) {
  Note("Closedir ", handle);
  return 0;
}

}  // namespace Wrappers
}  // namespace BaseSDK

namespace {

using Calls = std::vector<std::string>;

constexpr unsigned long SomeFailure = 0x80050005UL;

class TaskStorageCallsTest : public ::testing::Test {
 protected:
  TaskStorageCallsTest() { library = Library(); }

  long Add(const wchar_t* taskID) { return m_Storage.AddTask(taskID, L"<T/>", m_ID); }

  FakeHost m_Host;
  CTaskStorage m_Storage{L"/tasks", L".vsk"};
  AString m_ID{L"before"};
};

TEST_F(TaskStorageCallsTest, AddTaskWithAnIdCreatesExclusivelyWritesAndCloses) {
  EXPECT_EQ(1, Add(L"T1"));
  EXPECT_EQ((Calls{"Open /tasks/T1.vsk 0xc2 0644", "Write 17 <T/>", "Close 17"}), library.m_Calls);
}

TEST_F(TaskStorageCallsTest, AddTaskWithoutIdOpensTheTemporaryFileAndRenamesItReplacing) {
  EXPECT_EQ(1, Add(L""));
  EXPECT_EQ((Calls{"MakeTemp /tasks/corvane_task_", "Open /tasks/corvane_task_a1B2c3 0x2 0644",
                   "Write 17 <T/>", "Close 17",
                   "Rename /tasks/corvane_task_a1B2c3 /tasks/corvane_task_a1B2c3.vsk 2"}),
            library.m_Calls);
  EXPECT_EQ(AString(L"corvane_task_a1B2c3"), m_ID);
}

TEST_F(TaskStorageCallsTest, AddTaskFailsWithoutATemporaryNameAndTouchesNothingMore) {
  library.m_MakeTemp = SomeFailure;
  EXPECT_EQ(-1, Add(L""));
  EXPECT_EQ(CTaskStorage::ERR_FILE_WRITE, m_Storage.m_LastError);
  EXPECT_EQ((Calls{"MakeTemp /tasks/corvane_task_"}), library.m_Calls);
  EXPECT_TRUE(m_Host.Notifications().empty());
  EXPECT_EQ(AString(L"before"), m_ID);
}

TEST_F(TaskStorageCallsTest, AddTaskRemovesATemporaryFileThatDoesNotOpen) {
  for (const bool reported : {true, false}) {
    library = Library();
    library.m_Open = reported ? SomeFailure : 0;
    library.m_Fd = -1;
    EXPECT_EQ(-1, Add(L""));
    EXPECT_EQ(CTaskStorage::ERR_FILE_WRITE, m_Storage.m_LastError) << "the open's code is not kept";
    EXPECT_EQ((Calls{"MakeTemp /tasks/corvane_task_", "Open /tasks/corvane_task_a1B2c3 0x2 0644",
                     "Remove /tasks/corvane_task_a1B2c3 0"}),
              library.m_Calls);
  }
  EXPECT_TRUE(m_Host.Notifications().empty());
}

TEST_F(TaskStorageCallsTest, AddTaskWithAnIdThatDoesNotOpenRemovesNothing) {
  for (const bool reported : {true, false}) {
    library = Library();
    library.m_Open = reported ? SomeFailure : 0;
    library.m_Fd = -1;
    EXPECT_EQ(-1, Add(L"T1"));
    EXPECT_EQ(CTaskStorage::ERR_FILE_WRITE, m_Storage.m_LastError) << "the open's code is not kept";
    EXPECT_EQ((Calls{"Open /tasks/T1.vsk 0xc2 0644"}), library.m_Calls);
  }
}

TEST_F(TaskStorageCallsTest, AddTaskKeepsTheCodeOfAFailedWriteAndRemovesTheFile) {
  library.m_Write = SomeFailure;
  library.m_MissingBytes = 1;
  EXPECT_EQ(-1, Add(L"T1"));
  EXPECT_EQ(SomeFailure, m_Storage.m_LastError);
  EXPECT_EQ((Calls{"Open /tasks/T1.vsk 0xc2 0644", "Write 17 <T/>", "Close 17",
                   "Remove /tasks/T1.vsk 0"}),
            library.m_Calls);
  EXPECT_TRUE(m_Host.Notifications().empty());
  EXPECT_EQ(AString(L"before"), m_ID);
}

TEST_F(TaskStorageCallsTest, AddTaskTakesAShortWriteForAFailure) {
  library.m_MissingBytes = 1;
  EXPECT_EQ(-1, Add(L""));
  EXPECT_EQ(CTaskStorage::ERR_FILE_WRITE, m_Storage.m_LastError);
  EXPECT_EQ("Remove /tasks/corvane_task_a1B2c3 0", library.m_Calls.back());
  EXPECT_TRUE(m_Host.Notifications().empty());
}

TEST_F(TaskStorageCallsTest, AddTaskDoesNotLookAtTheResultOfTheClose) {
  library.m_Close = SomeFailure;
  EXPECT_EQ(1, Add(L"T1"));
  EXPECT_EQ(0U, m_Storage.m_LastError);
}

TEST_F(TaskStorageCallsTest, AddTaskOnPurposeFillsTheIdAndAnnouncesItWhenTheRenameFailed) {
  library.m_Rename = SomeFailure;
  EXPECT_EQ(-1, Add(L""));
  EXPECT_EQ(SomeFailure, m_Storage.m_LastError);
  EXPECT_EQ(AString(L"corvane_task_a1B2c3"), m_ID);
  EXPECT_EQ(1U, m_Host.CountNotifications(102, L"corvane_task_a1B2c3"));
  EXPECT_EQ("Rename", library.m_Calls.back().substr(0, 6)) << "the file stays";
}

TEST_F(TaskStorageCallsTest, AddTaskOnPurposeAsksForAsManyBytesAsThereAreCharacters) {
  EXPECT_EQ(1, m_Storage.AddTask(L"T1", L"\u00e4bc", m_ID));
  EXPECT_EQ(
      "Write 17 \xc3\xa4"
      "b",
      library.m_Calls[1]);
}

TEST_F(TaskStorageCallsTest, AddTaskTakesBackTheLastErrorBeforeItTouchesTheDisk) {
  for (const wchar_t* taskID : {L"T1", L""}) {
    library = Library();
    EXPECT_EQ(-1, m_Storage.DeleteTask(L""));
    std::vector<unsigned long> seen;
    library.m_OnCall = [&] { seen.push_back(m_Storage.m_LastError); };
    EXPECT_EQ(1, Add(taskID));
    EXPECT_EQ(std::vector<unsigned long>(library.m_Calls.size(), 0UL), seen);
  }
}

TEST_F(TaskStorageCallsTest, TellsOfAChangeWhenItHasBeenMade) {
  m_Host.Observe(
      [](const FakeHost::Notification& notification) { Note("Post ", notification.m_Code); });
  EXPECT_EQ(1, Add(L""));
  EXPECT_EQ("Rename", library.m_Calls.at(4).substr(0, 6));
  EXPECT_EQ("Post 102", library.m_Calls.at(5));
  library = Library();
  EXPECT_EQ(1, Add(L"T1"));
  EXPECT_EQ((Calls{"Open /tasks/T1.vsk 0xc2 0644", "Write 17 <T/>", "Close 17", "Post 102"}),
            library.m_Calls);
  library = Library();
  EXPECT_EQ(1, m_Storage.SetTaskXML(L"T1", L"<T/>"));
  EXPECT_EQ((Calls{"WriteFile /tasks/T1.vsk <T/> as UTF-8", "Post 100"}), library.m_Calls);
  library = Library();
  EXPECT_EQ(1, m_Storage.DeleteTask(L"T1"));
  EXPECT_EQ((Calls{"Remove /tasks/T1.vsk 0", "Post 101"}), library.m_Calls);
}

TEST_F(TaskStorageCallsTest, FindFirstTaskOpensNothingForAHandleInUse) {
  unsigned long handle = 7;
  EXPECT_EQ(-1, m_Storage.FindFirstTask(handle, m_ID));
  EXPECT_EQ(Calls{}, library.m_Calls);
}

TEST_F(TaskStorageCallsTest, FindCloseLeavesEveryLastErrorAlone) {
  for (const unsigned long code : {0UL, SomeFailure, 1UL}) {
    library.m_Remove = code;
    (void)m_Storage.DeleteTask(L"T1");
    for (const unsigned long handle : {99UL, 0UL}) {
      m_Storage.FindClose(handle);
      EXPECT_EQ(code, m_Storage.m_LastError) << handle;
    }
  }
}

TEST_F(TaskStorageCallsTest, SetTaskXmlOnPurposeDoesNotLookAtTheResultOfTheWrite) {
  library.m_FileWrite = SomeFailure;
  EXPECT_EQ(1, m_Storage.SetTaskXML(L"T1", L"<T/>"));
  EXPECT_EQ(0U, m_Storage.m_LastError);
  EXPECT_EQ((Calls{"WriteFile /tasks/T1.vsk <T/> as UTF-8"}), library.m_Calls);
  EXPECT_EQ(1U, m_Host.CountNotifications(100, L"T1"));
}

TEST_F(TaskStorageCallsTest, GetTaskXmlFailsExactlyForCodesWithTheTopBits10) {
  struct Row {
    unsigned long m_Code;
    long m_Result;
  };
  const Row rows[] = {{0, 1},
                      {0x00000002UL, 1},
                      {0x40000000UL, 1},
                      {0x7FFFFFFFUL, 1},
                      {0x80000000UL, -1},
                      {0x80050002UL, -1},
                      {0xBFFFFFFFUL, -1},
                      {0xC0000000UL, 1},
                      {0xFFFFFFFFUL, 1}};
  for (const Row& row : rows) {
    library.m_Read = row.m_Code;
    AString document;
    EXPECT_EQ(row.m_Result, m_Storage.GetTaskXML(L"T1", document)) << std::hex << row.m_Code;
    EXPECT_EQ(row.m_Code, m_Storage.m_LastError);
  }
  EXPECT_EQ("Read /tasks/T1.vsk as UTF-8", library.m_Calls[0]);
}

TEST_F(TaskStorageCallsTest, DeleteTaskFailsForEveryCodeButZero) {
  for (const unsigned long code : {SomeFailure, 1UL, 0xC0000000UL}) {
    library.m_Remove = code;
    EXPECT_EQ(-1, m_Storage.DeleteTask(L"T1"));
    EXPECT_EQ(code, m_Storage.m_LastError);
  }
  EXPECT_EQ("Remove /tasks/T1.vsk 0", library.m_Calls[0]);
  EXPECT_TRUE(m_Host.Notifications().empty());
}

TEST_F(TaskStorageCallsTest, FindFirstTaskSkipsTheDirectoryItselfAndFindNextTaskOnPurposeDoesNot) {
  library.m_Entries = {".", "..", "T1.vsk", "..", "."};
  unsigned long handle = 0;
  EXPECT_EQ(1, m_Storage.FindFirstTask(handle, m_ID));
  EXPECT_EQ(AString(L"T1"), m_ID);
  EXPECT_EQ(1, m_Storage.FindNextTask(handle, m_ID));
  EXPECT_EQ(AString(L".."), m_ID);
  EXPECT_EQ(1, m_Storage.FindNextTask(handle, m_ID));
  EXPECT_EQ(AString(L"."), m_ID);
  EXPECT_EQ(-1, m_Storage.FindNextTask(handle, m_ID));
  EXPECT_EQ("Opendir /tasks/", library.m_Calls[0]);
}

TEST_F(TaskStorageCallsTest, FindFirstTaskTakesOtherNamesWithDots) {
  library.m_Entries = {"..."};
  unsigned long handle = 0;
  EXPECT_EQ(1, m_Storage.FindFirstTask(handle, m_ID));
  EXPECT_EQ(AString(L"..."), m_ID);
}

TEST_F(TaskStorageCallsTest, FindFirstTaskPassesTheCodeOfTheDirectoryOn) {
  library.m_Opendir = SomeFailure;
  unsigned long handle = 0;
  EXPECT_EQ(-1, m_Storage.FindFirstTask(handle, m_ID));
  EXPECT_EQ(SomeFailure, m_Storage.m_LastError);
  EXPECT_EQ(1U, library.m_Calls.size());
}

TEST_F(TaskStorageCallsTest, FindFirstTaskWithoutAHandleReadsNothingAndSucceeds) {
  library.m_Handle = 0;
  unsigned long handle = 0;
  EXPECT_EQ(1, m_Storage.FindFirstTask(handle, m_ID));
  EXPECT_EQ(0U, m_Storage.m_LastError);
  EXPECT_EQ(AString(L"before"), m_ID);
  EXPECT_EQ(1U, library.m_Calls.size());
}

TEST_F(TaskStorageCallsTest, AReadThatFailsIsTheEndOfTheTasks) {
  library.m_Readdir = SomeFailure;
  library.m_Entries = {"T1.vsk", "T2.vsk"};
  unsigned long handle = 0;
  EXPECT_EQ(-1, m_Storage.FindFirstTask(handle, m_ID));
  EXPECT_EQ(CTaskStorage::ERR_NO_MORE_TASKS, m_Storage.m_LastError);
  EXPECT_EQ(99U, handle);
  EXPECT_EQ(-1, m_Storage.FindNextTask(handle, m_ID));
  EXPECT_EQ(CTaskStorage::ERR_NO_MORE_TASKS, m_Storage.m_LastError);
  EXPECT_EQ(AString(L"before"), m_ID);
}

TEST_F(TaskStorageCallsTest, FindCloseClosesEveryHandleButZero) {
  m_Storage.FindClose(0);
  EXPECT_TRUE(library.m_Calls.empty());
  m_Storage.FindClose(99);
  EXPECT_EQ((Calls{"Closedir 99"}), library.m_Calls);
}

TEST_F(TaskStorageCallsTest, EveryOperationHoldsTheLockThroughoutAndLetsItGo) {
  BaseSDK::AMutex& lock = m_Storage.*MemberOf(StorageLock());
  std::vector<bool> seen;
  library.m_Entries = {"T1.vsk", "T2.vsk"};
  library.m_OnCall = [&] { seen.push_back(TestSupport::IsFree(lock)); };
  m_Host.Observe([&](const TestSupport::FakeHost::Notification&) { library.m_OnCall(); });
  unsigned long handle = 0;
  AString text;
  const auto holds = [&](const char* name, std::size_t looks, auto operation) {
    seen.clear();
    operation();
    EXPECT_EQ(looks, seen.size()) << name;
    for (const bool isFree : seen) {
      EXPECT_FALSE(isFree) << name;
    }
    EXPECT_TRUE(TestSupport::IsFree(lock)) << name;
  };
  holds("AddTask", 4, [&] { (void)Add(L"T1"); });
  holds("AddTask", 6, [&] { (void)Add(L""); });
  holds("SetTaskXML", 2, [&] { (void)m_Storage.SetTaskXML(L"T1", L"<T/>"); });
  holds("GetTaskXML", 1, [&] { (void)m_Storage.GetTaskXML(L"T1", text); });
  holds("DeleteTask", 2, [&] { (void)m_Storage.DeleteTask(L"T1"); });
  holds("FindFirstTask", 2, [&] { (void)m_Storage.FindFirstTask(handle, text); });
  holds("FindNextTask", 1, [&] { (void)m_Storage.FindNextTask(handle, text); });
  holds("FindClose", 1, [&] { m_Storage.FindClose(handle); });
  holds("a refused argument", 0, [&] { (void)m_Storage.DeleteTask(L""); });
}

TEST_F(TaskStorageCallsTest, NamesAreMadeWithoutTheLock) {
  BaseSDK::AMutex& lock = m_Storage.*MemberOf(StorageLock());
  const BaseSDK::AMutexGuard guard(lock);
  EXPECT_EQ(AString(L"/tasks/T1.vsk"), m_Storage.GetTaskFilename(L"T1"));
  EXPECT_EQ(AString(L"T1"), m_Storage.GetTaskID(L"T1.vsk"));
}

TEST_F(TaskStorageCallsTest, AnnouncesAChangeOnceItIsMade) {
  Calls order;
  m_Host.Observe([&](const TestSupport::FakeHost::Notification&) { order = library.m_Calls; });
  EXPECT_EQ(1, m_Storage.DeleteTask(L"T1"));
  EXPECT_EQ((Calls{"Remove /tasks/T1.vsk 0"}), order);
}

}  // namespace
