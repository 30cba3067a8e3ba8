// Every file system call of every operation failing, one after the other.
#include "storage/TaskStorage.h"
#include "tests/sdk/base/FailingFileSystem.h"
#include "tests/support/FakeHost.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace {

using BaseSDK::AString;
using BaseSDK::FailingFileSystem;
using TestSupport::FakeHost;
using TestSupport::TempDir;

const char OldDocument[] = "<Task>old</Task>";
const wchar_t NewDocument[] = L"<Task>new document</Task>";
const char NewBytes[] = "<Task>new document</Task>";

/// A directory with one task in it, and one operation under a file system that fails once.
struct Trial {
  explicit Trial(std::size_t failingCall, int error) {
    m_Directory.Write("T1.vsk", OldDocument);
    m_Files.FailCall(failingCall, error);
  }

  FakeHost m_Host;
  TempDir m_Directory;
  FailingFileSystem m_Files;
  CTaskStorage m_Storage{AString(m_Directory.Path().c_str()), L".vsk"};
};

/// Runs `operation` with its first call failing, its second, and so on, until none is left to fail.
void ForEachFailure(const std::function<void(Trial&)>& operation) {
  for (const int error : {EIO, ENOSPC, EACCES}) {
    bool failed = true;
    for (std::size_t call = 0; failed; ++call) {
      Trial trial(call, error);
      SCOPED_TRACE("errno " + std::to_string(error) + ", call " + std::to_string(call));
      operation(trial);
      EXPECT_EQ(0U, trial.m_Files.OpenDescriptors());
      failed = call < trial.m_Files.Calls().size();
    }
  }
}

TEST(TaskStorageFault, AddTaskLeavesAllOrNothingUnderTheCallersId) {
  ForEachFailure([](Trial& trial) {
    AString id;
    const long result = trial.m_Storage.AddTask(L"T2", NewDocument, id);
    EXPECT_EQ(OldDocument, trial.m_Directory.Read("T1.vsk"));
    EXPECT_EQ(result == 1, trial.m_Storage.m_LastError == 0);
    EXPECT_EQ(result == 1 ? 1U : 0U, trial.m_Host.CountNotifications(102, L"T2"));
    if (result == 1) {
      EXPECT_EQ(NewBytes, trial.m_Directory.Read("T2.vsk"));
    } else {
      EXPECT_FALSE(trial.m_Directory.Has("T2.vsk"));
    }
  });
}

TEST(TaskStorageFault, AddTaskLeavesNothingOfAnInventedTaskBeforeItsRename) {
  ForEachFailure([](Trial& trial) {
    AString id;
    const long result = trial.m_Storage.AddTask(L"", NewDocument, id);
    EXPECT_EQ(OldDocument, trial.m_Directory.Read("T1.vsk"));
    if (id.IsEmpty()) {
      EXPECT_EQ(-1, result);
      EXPECT_EQ((std::vector<std::string>{"T1.vsk"}), trial.m_Directory.Names());
      EXPECT_TRUE(trial.m_Host.Notifications().empty());
      return;
    }
    // From the rename on the document is there, with or without its extension, and is announced.
    const std::string name = id.ToUtf8();
    EXPECT_EQ(1U, trial.m_Host.CountNotifications(102, id));
    EXPECT_EQ(2U, trial.m_Directory.Names().size());
    EXPECT_EQ(NewBytes, trial.m_Directory.Read(trial.m_Directory.Has(name) ? name : name + ".vsk"));
  });
}

TEST(TaskStorageFault, SetTaskXmlOnPurposeReportsSuccessAndLeavesTheOldOrTheNewDocument) {
  ForEachFailure([](Trial& trial) {
    EXPECT_EQ(1, trial.m_Storage.SetTaskXML(L"T1", NewDocument));
    EXPECT_EQ(0U, trial.m_Storage.m_LastError);
    EXPECT_EQ(1U, trial.m_Host.CountNotifications(100, L"T1"));
    const std::string stored = trial.m_Directory.Read("T1.vsk");
    EXPECT_TRUE(stored == OldDocument || stored == NewBytes) << stored;
  });
}

TEST(TaskStorageFault, GetTaskXmlReportsTheFailureAndReadsNothing) {
  ForEachFailure([](Trial& trial) {
    AString document(L"before");
    const long result = trial.m_Storage.GetTaskXML(L"T1", document);
    EXPECT_EQ(result == 1, trial.m_Storage.m_LastError == 0);
    EXPECT_EQ(AString(result == 1 ? OldDocument : "before"), document);
  });
}

TEST(TaskStorageFault, DeleteTaskTellsOnlyOfWhatItDid) {
  ForEachFailure([](Trial& trial) {
    const long result = trial.m_Storage.DeleteTask(L"T1");
    EXPECT_EQ(result == 1, trial.m_Storage.m_LastError == 0);
    EXPECT_EQ(result == 1 ? 1U : 0U, trial.m_Host.CountNotifications(101, L"T1"));
    if (result == 1) {
      EXPECT_FALSE(trial.m_Directory.Has("T1.vsk"));
    }
  });
}

TEST(TaskStorageFault, AnEnumerationThatCannotReadEndsAndCloses) {
  ForEachFailure([](Trial& trial) {
    unsigned long handle = 0;
    AString id;
    std::multiset<std::string> ids;
    for (long found = trial.m_Storage.FindFirstTask(handle, id); found > 0;
         found = trial.m_Storage.FindNextTask(handle, id)) {
      ids.insert(id.ToUtf8());
    }
    EXPECT_NE(0U, trial.m_Storage.m_LastError);
    EXPECT_LE(ids.count("T1"), 1U);
    trial.m_Storage.FindClose(handle);
  });
}

TEST(TaskStorageFault, AWriteThatTakesNothingRemovesTheNewFile) {
  Trial trial(1000, EIO);
  trial.m_Files.LimitWrites(0);
  AString id;
  EXPECT_EQ(-1, trial.m_Storage.AddTask(L"T2", NewDocument, id));
  EXPECT_NE(0U, trial.m_Storage.m_LastError);
  EXPECT_FALSE(trial.m_Directory.Has("T2.vsk"));
}

TEST(TaskStorageFault, AWriteInPiecesIsWhole) {
  Trial trial(1000, EIO);
  trial.m_Files.LimitWrites(3);
  AString id;
  EXPECT_EQ(1, trial.m_Storage.AddTask(L"T2", NewDocument, id));
  EXPECT_EQ(NewBytes, trial.m_Directory.Read("T2.vsk"));
}

}  // namespace
