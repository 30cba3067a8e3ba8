#include "storage/TaskStorage.h"

#include "tests/support/FakeHost.h"
#include "tests/support/RawSlots.h"
#include "tests/support/TempDir.h"

#include <BaseSDK/AResult.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <set>
#include <string>
#include <vector>

namespace {

using BaseSDK::AString;
using TestSupport::FakeHost;
using TestSupport::TempDir;

using Names = std::vector<std::string>;

class TaskStorageTest : public ::testing::Test {
 protected:
  AString Directory() const { return AString(m_Directory.Path().c_str()); }

  std::vector<FakeHost::Notification> Posted() const { return m_Host.Notifications(); }
  void ExpectPosted(long code, const AString& text) const {
    ASSERT_EQ(1U, Posted().size());
    EXPECT_EQ(code, Posted()[0].m_Code);
    EXPECT_EQ(text, Posted()[0].m_Text);
  }

  /// Every ID that an enumeration delivers, and its end.
  std::multiset<std::string> Enumerate() {
    std::multiset<std::string> ids;
    unsigned long handle = 0;
    AString id;
    for (long found = m_Storage.FindFirstTask(handle, id); found > 0;
         found = m_Storage.FindNextTask(handle, id)) {
      ids.insert(id.ToUtf8());
    }
    EXPECT_EQ(CTaskStorage::ERR_NO_MORE_TASKS, m_Storage.m_LastError);
    m_Storage.FindClose(handle);
    return ids;
  }

  FakeHost m_Host;
  TempDir m_Directory;
  CTaskStorage m_Storage{Directory(), L".vsk"};
};

TEST_F(TaskStorageTest, ItsOwnCodesAreTheOnesThatCallersKnow) {
  EXPECT_EQ(0x80000044UL, CTaskStorage::ERR_FILE_WRITE);
  EXPECT_EQ(0x8000005EUL, CTaskStorage::ERR_INVALID_ARGUMENT);
  EXPECT_EQ(0x80000064UL, CTaskStorage::ERR_NO_MORE_TASKS);
}

TEST_F(TaskStorageTest, StartsWithoutErrorAndTouchesNothing) {
  EXPECT_EQ(0U, m_Storage.m_LastError);
  EXPECT_EQ(Names{}, m_Directory.Names());
  EXPECT_TRUE(Posted().empty());
}

TEST_F(TaskStorageTest, FallsBackToTheInstallDirectoryAndVskWhenNothingIsConfigured) {
  const CTaskStorage storage(L"", L"");
  EXPECT_EQ(AString(L"%installdir%/var/tasks/T1.vsk"), storage.GetTaskFilename(L"T1"));
}

TEST_F(TaskStorageTest, AppendsASlashOnPurposeAlsoAfterASlash) {
  EXPECT_EQ(AString(L"/tasks/T1.vsk"), CTaskStorage(L"/tasks", L".vsk").GetTaskFilename(L"T1"));
  EXPECT_EQ(AString(L"/tasks//T1.vsk"), CTaskStorage(L"/tasks/", L".vsk").GetTaskFilename(L"T1"));
}

TEST_F(TaskStorageTest, TakesTheIdAsItIsForTheFileName) {
  const CTaskStorage storage(L"/tasks", L".vsk");
  EXPECT_EQ(AString(L"/tasks/../a b.vsk"), storage.GetTaskFilename(L"../a b"));
  EXPECT_EQ(AString(L"/tasks/.vsk"), storage.GetTaskFilename(L""));
}

TEST_F(TaskStorageTest, ReadsTheIdOutOfAFileName) {
  struct Row {
    const wchar_t* m_File;
    const wchar_t* m_ID;
  };
  const Row rows[] = {
      {L"/x/y/T1.vsk", L"T1"},
      {L"T1.vsk", L"T1"},
      {L"notes.txt", L"notes.txt"},
      {L"T1.vsk.bak", L"T1"},
      {L"a.vsk.old", L"a"},
      {L"a.vsk.b.vsk", L"a"},
      {L".vsk", L""},
      {L"/x/y/", L""},
      {L"", L""},
      {L"T1.VSK", L"T1.VSK"},
      {L"corvane_task_a1B2c3.vsk", L"corvane_task_a1B2c3"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(AString(row.m_ID), m_Storage.GetTaskID(row.m_File)) << AString(row.m_File).ToUtf8();
  }
}

TEST_F(TaskStorageTest, AddTaskInventsAnIdForAnEmptyOne) {
  AString id;
  ASSERT_EQ(1, m_Storage.AddTask(L"", L"<Task/>", id));
  EXPECT_EQ(0U, m_Storage.m_LastError);
  EXPECT_EQ(0U, id.Find(L"corvane_task_"));
  EXPECT_GT(id.Length(), AString(L"corvane_task_").Length());
  EXPECT_EQ(AString::npos, id.Find(L"/"));
  EXPECT_EQ(AString::npos, id.Find(L".vsk"));
  EXPECT_EQ(Names{id.ToUtf8() + ".vsk"}, m_Directory.Names());
  EXPECT_EQ(Directory() + L"/" + id + L".vsk", m_Storage.GetTaskFilename(id));
  EXPECT_EQ("<Task/>", m_Directory.Read(id.ToUtf8() + ".vsk"));
  ExpectPosted(102, id);
}

TEST_F(TaskStorageTest, AddTaskInventsANewIdEveryTime) {
  AString first;
  AString second;
  ASSERT_EQ(1, m_Storage.AddTask(L"", L"<Task/>", first));
  ASSERT_EQ(1, m_Storage.AddTask(L"", L"<Task/>", second));
  EXPECT_NE(first, second);
  EXPECT_EQ(2U, m_Directory.Names().size());
}

TEST_F(TaskStorageTest, AddTaskStoresUnderTheCallersId) {
  AString id(L"before");
  ASSERT_EQ(1, m_Storage.AddTask(L"T1", L"<Task/>", id));
  EXPECT_EQ(AString(L"T1"), id);
  EXPECT_EQ("<Task/>", m_Directory.Read("T1.vsk"));
  ExpectPosted(102, L"T1");
}

TEST_F(TaskStorageTest, AddTaskLeavesAnExistingFileUntouched) {
  m_Directory.Write("T1.vsk", "old");
  AString id(L"before");
  EXPECT_EQ(-1, m_Storage.AddTask(L"T1", L"<Task/>", id));
  EXPECT_EQ(CTaskStorage::ERR_FILE_WRITE, m_Storage.m_LastError);
  EXPECT_EQ(AString(L"before"), id);
  EXPECT_EQ("old", m_Directory.Read("T1.vsk"));
  EXPECT_TRUE(Posted().empty());
}

TEST_F(TaskStorageTest, AddTaskRefusesAnEmptyDocument) {
  AString id(L"before");
  for (const wchar_t* taskID : {L"", L"T1"}) {
    EXPECT_EQ(-1, m_Storage.AddTask(taskID, L"", id));
    EXPECT_EQ(CTaskStorage::ERR_INVALID_ARGUMENT, m_Storage.m_LastError);
  }
  EXPECT_EQ(AString(L"before"), id);
  EXPECT_EQ(Names{}, m_Directory.Names());
  EXPECT_TRUE(Posted().empty());
}

TEST_F(TaskStorageTest, AddTaskOnPurposeCutsANonAsciiDocumentAtItsCharacterCount) {
  const AString document(L"<T>\u00e4\u00f6\u20ac</T>");  // 10 characters, 14 bytes
  AString id;
  ASSERT_EQ(1, m_Storage.AddTask(L"T1", document, id));
  EXPECT_EQ(document.ToUtf8().substr(0, document.Length()), m_Directory.Read("T1.vsk"));
}

TEST_F(TaskStorageTest, SetTaskXmlWritesANonAsciiDocumentWhole) {
  const AString document(L"<T>\u00e4\u00f6\u20ac</T>");
  ASSERT_EQ(1, m_Storage.SetTaskXML(L"T1", document));
  EXPECT_EQ(document.ToUtf8(), m_Directory.Read("T1.vsk"));
}

TEST_F(TaskStorageTest, SetTaskXmlCreatesAMissingFileAndReplacesAPresentOne) {
  EXPECT_EQ(1, m_Storage.SetTaskXML(L"T1", L"first"));
  EXPECT_EQ("first", m_Directory.Read("T1.vsk"));
  EXPECT_EQ(1, m_Storage.SetTaskXML(L"T1", L"2"));
  EXPECT_EQ("2", m_Directory.Read("T1.vsk"));
  EXPECT_EQ(Names{"T1.vsk"}, m_Directory.Names());
  EXPECT_EQ(2U, m_Host.CountNotifications(100, L"T1"));
  EXPECT_EQ(2U, Posted().size());
}

TEST_F(TaskStorageTest, SetTaskXmlRefusesAnEmptyIdOrDocument) {
  EXPECT_EQ(-1, m_Storage.SetTaskXML(L"", L"<Task/>"));
  EXPECT_EQ(CTaskStorage::ERR_INVALID_ARGUMENT, m_Storage.m_LastError);
  EXPECT_EQ(-1, m_Storage.SetTaskXML(L"T1", L""));
  EXPECT_EQ(CTaskStorage::ERR_INVALID_ARGUMENT, m_Storage.m_LastError);
  EXPECT_EQ(Names{}, m_Directory.Names());
  EXPECT_TRUE(Posted().empty());
}

TEST_F(TaskStorageTest, GetTaskXmlReadsUtf8) {
  m_Directory.Write("T1.vsk", "<T>\xc3\xa4</T>");
  AString document;
  EXPECT_EQ(1, m_Storage.GetTaskXML(L"T1", document));
  EXPECT_EQ(AString(L"<T>\u00e4</T>"), document);
  EXPECT_EQ(0U, m_Storage.m_LastError);
}

TEST_F(TaskStorageTest, GetTaskXmlOfAMissingTaskFailsWithTheReadsCode) {
  AString document(L"before");
  EXPECT_EQ(-1, m_Storage.GetTaskXML(L"T1", document));
  EXPECT_EQ(BaseSDK::ResultFromErrno(ENOENT), m_Storage.m_LastError);
  EXPECT_EQ(AString(L"before"), document);
}

TEST_F(TaskStorageTest, GetTaskXmlRefusesAnEmptyId) {
  m_Directory.Write(".vsk", "<Task/>");
  AString document;
  EXPECT_EQ(-1, m_Storage.GetTaskXML(L"", document));
  EXPECT_EQ(CTaskStorage::ERR_INVALID_ARGUMENT, m_Storage.m_LastError);
}

TEST_F(TaskStorageTest, DeleteTaskRemovesTheFileAndSaysSo) {
  m_Directory.Write("T1.vsk", "<Task/>");
  EXPECT_EQ(1, m_Storage.DeleteTask(L"T1"));
  EXPECT_EQ(0U, m_Storage.m_LastError);
  EXPECT_EQ(Names{}, m_Directory.Names());
  ExpectPosted(101, L"T1");
}

TEST_F(TaskStorageTest, DeleteTaskOfAMissingTaskFailsAndPostsNothing) {
  EXPECT_EQ(-1, m_Storage.DeleteTask(L"T1"));
  EXPECT_EQ(BaseSDK::ResultFromErrno(ENOENT), m_Storage.m_LastError);
  EXPECT_TRUE(Posted().empty());
}

TEST_F(TaskStorageTest, DeleteTaskRefusesAnEmptyId) {
  m_Directory.Write(".vsk", "<Task/>");
  EXPECT_EQ(-1, m_Storage.DeleteTask(L""));
  EXPECT_EQ(CTaskStorage::ERR_INVALID_ARGUMENT, m_Storage.m_LastError);
  EXPECT_EQ(Names{".vsk"}, m_Directory.Names());
  EXPECT_TRUE(Posted().empty());
}

TEST_F(TaskStorageTest, EnumeratesEveryEntryWhateverItsName) {
  for (const char* name : {"T1.vsk", "T2.vsk", "notes.txt", "T1.vsk.bak"}) {
    m_Directory.Write(name, "x");
  }
  std::multiset<std::string> ids = Enumerate();
  ids.erase(".");
  ids.erase("..");
  EXPECT_EQ((std::multiset<std::string>{"T1", "T1", "T2", "notes.txt"}), ids);
}

TEST_F(TaskStorageTest, AnEmptyDirectoryHasNoFirstTaskAndLeavesItsHandleToClose) {
  unsigned long handle = 0;
  AString id(L"before");
  EXPECT_EQ(-1, m_Storage.FindFirstTask(handle, id));
  EXPECT_EQ(CTaskStorage::ERR_NO_MORE_TASKS, m_Storage.m_LastError);
  EXPECT_NE(0U, handle);
  EXPECT_EQ(AString(L"before"), id);
  m_Storage.FindClose(handle);
}

TEST_F(TaskStorageTest, FindFirstTaskFailsForAMissingDirectory) {
  CTaskStorage storage(Directory() + L"/missing", L".vsk");
  unsigned long handle = 0;
  AString id;
  EXPECT_EQ(-1, storage.FindFirstTask(handle, id));
  EXPECT_EQ(BaseSDK::ResultFromErrno(ENOENT), storage.m_LastError);
  EXPECT_EQ(0U, handle);
}

TEST_F(TaskStorageTest, FindFirstTaskRefusesAHandleInUse) {
  m_Directory.Write("T1.vsk", "x");
  unsigned long handle = 7;
  AString id(L"before");
  EXPECT_EQ(-1, m_Storage.FindFirstTask(handle, id));
  EXPECT_EQ(CTaskStorage::ERR_INVALID_ARGUMENT, m_Storage.m_LastError);
  EXPECT_EQ(7U, handle);
  EXPECT_EQ(AString(L"before"), id);
}

TEST_F(TaskStorageTest, FindNextTaskOnPurposeAnswersZeroForNoHandle) {
  AString id(L"before");
  EXPECT_EQ(0, m_Storage.FindNextTask(0, id));
  EXPECT_EQ(CTaskStorage::ERR_INVALID_ARGUMENT, m_Storage.m_LastError);
  EXPECT_EQ(AString(L"before"), id);
}

TEST_F(TaskStorageTest, FindNextTaskFailsAtTheEndAndStaysThere) {
  unsigned long handle = 0;
  AString id;
  ASSERT_EQ(-1, m_Storage.FindFirstTask(handle, id));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(-1, m_Storage.FindNextTask(handle, id));
    EXPECT_EQ(CTaskStorage::ERR_NO_MORE_TASKS, m_Storage.m_LastError);
  }
  m_Storage.FindClose(handle);
}

TEST_F(TaskStorageTest, FindCloseLeavesTheLastErrorAlone) {
  unsigned long handle = 0;
  AString id;
  ASSERT_EQ(-1, m_Storage.FindFirstTask(handle, id));
  m_Storage.FindClose(handle);
  EXPECT_EQ(CTaskStorage::ERR_NO_MORE_TASKS, m_Storage.m_LastError);
  m_Storage.FindClose(0);
  EXPECT_EQ(CTaskStorage::ERR_NO_MORE_TASKS, m_Storage.m_LastError);
}

TEST_F(TaskStorageTest, EveryOperationThatSucceedsTakesBackTheLastError) {
  unsigned long handle = 0;
  AString text;
  const auto succeeds = [this](const char* name, auto operation) {
    EXPECT_EQ(-1, m_Storage.DeleteTask(L""));
    EXPECT_EQ(1, operation()) << name;
    EXPECT_EQ(0U, m_Storage.m_LastError) << name;
  };
  succeeds("AddTask", [&] { return m_Storage.AddTask(L"T1", L"x", text); });
  succeeds("AddTask", [&] { return m_Storage.AddTask(L"", L"x", text); });
  succeeds("SetTaskXML", [&] { return m_Storage.SetTaskXML(L"T1", L"x"); });
  succeeds("GetTaskXML", [&] { return m_Storage.GetTaskXML(L"T1", text); });
  succeeds("FindFirstTask", [&] { return m_Storage.FindFirstTask(handle, text); });
  succeeds("FindNextTask", [&] { return m_Storage.FindNextTask(handle, text); });
  succeeds("DeleteTask", [&] { return m_Storage.DeleteTask(L"T1"); });
  m_Storage.FindClose(handle);
}

/// Opens one private member: an explicit instantiation may name it.
template <class Tag, auto Member>
struct Opener {
  friend constexpr auto MemberOf(Tag) { return Member; }
};
struct Lock {
  friend constexpr auto MemberOf(Lock);
};
struct Path {
  friend constexpr auto MemberOf(Path);
};
struct Extension {
  friend constexpr auto MemberOf(Extension);
};
template struct Opener<Lock, &CTaskStorage::m_Lock>;
template struct Opener<Path, &CTaskStorage::m_Path>;
template struct Opener<Extension, &CTaskStorage::m_Extension>;

TEST_F(TaskStorageTest, HasItsMembersInTheirOrder) {
  const auto* const begin = reinterpret_cast<const char*>(&m_Storage);
  const auto* const lock = reinterpret_cast<const char*>(&(m_Storage.*MemberOf(Lock())));
  EXPECT_EQ(begin + sizeof(void*), lock) << "behind the address of the virtual functions";
  EXPECT_LT(static_cast<const void*>(lock), &(m_Storage.*MemberOf(Path())));
  EXPECT_LT(static_cast<const void*>(&(m_Storage.*MemberOf(Path()))), &m_Storage.m_LastError);
  EXPECT_LT(static_cast<const void*>(&m_Storage.m_LastError), &(m_Storage.*MemberOf(Extension())));
}

/// Its operation comes behind all that the storage has.
class WithOneMore : public CTaskStorage {
 public:
  using CTaskStorage::CTaskStorage;
  virtual void OneMore() {}
};

TEST_F(TaskStorageTest, HasNoVirtualOperationButItsDestructor) {
  EXPECT_TRUE(std::has_virtual_destructor_v<CTaskStorage>);
  EXPECT_EQ(2, TestSupport::SlotOf(&WithOneMore::OneMore)) << "a destructor takes two slots";
}

}  // namespace
