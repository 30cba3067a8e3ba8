#include "agent/daemon/control/WrittenCheck.h"

#include "tests/agent/daemon/TestAgent.h"
#include "tests/support/ForwardingFileSystem.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <filesystem>

namespace NoxAgent {
namespace {

// In force while it lives. Writing and removing give m_Error, unless that is 0 or m_Room writes are
// yet to succeed.
class FullDisk : public TestSupport::ForwardingFileSystem {
 public:
  FullDisk() : ForwardingFileSystem(BaseSDK::AFileSystem::Current()) { (void)Replace(this); }
  ~FullDisk() override { (void)Replace(nullptr); }

  int Write(int fd, const void* data, std::size_t size, std::size_t& written) override {
    const int error = m_Error;
    return error != 0 && m_Room-- <= 0 ? error
                                       : ForwardingFileSystem::Write(fd, data, size, written);
  }
  int Unlink(const char* path) override {
    const bool isTask = std::string_view(path).ends_with(".vsk");
    const int error = isTask ? m_RemoveError.load() : 0;
    return error != 0 ? error : ForwardingFileSystem::Unlink(path);
  }

  std::atomic<int> m_Error{0};
  std::atomic<int> m_Room{0};
  std::atomic<int> m_RemoveError{0};
};

class WrittenCheckTest : public testing::Test {
 protected:
  WrittenCheckTest() {
    m_Agent.AddScheduler().Add("handler").Load();
    EXPECT_EQ(Call("AddTask", {{"taskId", "a"}, {"taskXml", TestAgent::DailyTask}}), "");
    EXPECT_EQ(Call("AddTask", {{"taskId", "b"}, {"taskXml", TestAgent::DailyTask}}), "");
  }

  // The error's message; empty when there is none.
  std::string Call(const std::string& operation, const Json& arguments) {
    const ApiResponse answer =
        m_Agent.Ask("POST", "/v1/scheduler/INoxTaskScheduler/" + operation, arguments.Dump());
    const Json body = Json::Parse(answer.m_Body);
    if (!body.Has("error")) {
      return {};
    }
    EXPECT_EQ(answer.m_Status, 507U);
    EXPECT_EQ(body["error"]["code"], "not-written");
    return body["error"]["message"].Text();
  }
  static void ExpectInMemoryAlone(const std::string& message, const std::string& tasks) {
    EXPECT_EQ(message.find("the change is in force in memory alone, because files cannot be "
                           "written: " +
                           tasks + "; it lasts until the files are read again, at "),
              0U)
        << message;
  }
  std::string FileOf(const std::string& id) const {
    return m_Agent.m_Dir.Read("state/tasks/" + id + ".vsk");
  }

  FullDisk m_Disk;
  TestAgent m_Agent;
};

TEST_F(WrittenCheckTest, AChangeThatIsNotOnTheDiskIsAnError) {
  m_Disk.m_Error = ENOSPC;
  const std::string reason = " (No space left on device)";
  ExpectInMemoryAlone(Call("EnableTask", {{"taskIds", "a:b"}, {"enable", false}}),
                      "a" + reason + ", b" + reason);
  ExpectInMemoryAlone(Call("AddTask", {{"taskId", "b"}, {"taskXml", TestAgent::DailyTask + " "}}),
                      "b" + reason);
  EXPECT_EQ(FileOf("a"), TestAgent::DailyTask) << "as before";
  m_Disk.m_Error = 0;
  EXPECT_EQ(Call("EnableTask", {{"taskIds", "b"}, {"enable", false}}), "");
}

TEST_F(WrittenCheckTest, OfManyChangesEachThatIsNotOnTheDiskIsAnError) {
  constexpr int FirstOfTwoDigits = 10;
  std::string ids;
  for (int number = FirstOfTwoDigits; number < FirstOfTwoDigits + 30; ++number) {
    const std::string id = "t" + std::to_string(number);
    ASSERT_EQ(Call("AddTask", {{"taskId", id}, {"taskXml", TestAgent::DailyTask}}), "");
    ids += (ids.empty() ? "" : ":") + id;
  }
  m_Disk.m_Room = 28;
  m_Disk.m_Error = ENOSPC;
  const std::string reason = " (No space left on device)";
  ExpectInMemoryAlone(Call("EnableTask", {{"taskIds", ids}, {"enable", false}}),
                      "t38" + reason + ", t39" + reason);
}

TEST_F(WrittenCheckTest, ARunStateThatIsNotOnTheDiskIsAnError) {
  const std::string history =
      "<TaskHistory><RunTime>2020-01-01 08:00:00 Ok</RunTime></TaskHistory></Task>";
  std::string document = TestAgent::DailyTask;
  document.replace(document.find("</Task>"), 7, history);
  EXPECT_EQ(Call("AddTask", {{"taskId", "c"}, {"taskXml", document}}), "");
  m_Disk.m_Error = EROFS;
  ExpectInMemoryAlone(Call("SetRunState", {{"taskId", "c"}, {"runState", "Failed"}}),
                      "c (Read-only file system)");
}

// The scheduler writes nothing when the task is in memory as it is to be.
TEST_F(WrittenCheckTest, AskingTwiceDoesNotMakeItWritten) {
  m_Disk.m_Error = ENOSPC;
  const Json disable = {{"taskIds", "a"}, {"enable", false}};
  EXPECT_NE(Call("EnableTask", disable), "");
  m_Disk.m_Error = 0;
  EXPECT_NE(Call("EnableTask", disable), "");
  EXPECT_EQ(Call("EnableTask", {{"taskIds", "a"}, {"enable", true}}), "");
  EXPECT_EQ(Call("EnableTask", disable), "");
  EXPECT_NE(FileOf("a").find("Enabled=\"0\""), std::string::npos);
}

TEST_F(WrittenCheckTest, SaysWhyATaskWasNotAdded) {
  m_Disk.m_Error = ENOSPC;
  EXPECT_EQ(Call("AddTask", {{"taskId", "c"}, {"taskXml", TestAgent::DailyTask}}),
            "the task c was not added: its file cannot be written: No space left on device");
  EXPECT_FALSE(m_Agent.m_Dir.Has("state/tasks/c.vsk"));
  m_Disk.m_Error = 0;
  std::filesystem::create_directory(m_Agent.m_Dir / "state/tasks/c.vsk");
  EXPECT_EQ(Call("AddTask", {{"taskId", "c"}, {"taskXml", TestAgent::DailyTask}}),
            "the task c was not added: a file of its name is no task; noxctl files lists it");
}

TEST_F(WrittenCheckTest, SaysWhyATaskWasNotDeleted) {
  m_Disk.m_RemoveError = EROFS;
  EXPECT_EQ(Call("DeleteTask", {{"taskId", "a"}}),
            "the task a was not deleted: its file cannot be removed: Read-only file system");
  m_Disk.m_RemoveError = 0;
  EXPECT_EQ(Call("DeleteTask", {{"taskId", "a"}}), "");
}

}  // namespace
}  // namespace NoxAgent
