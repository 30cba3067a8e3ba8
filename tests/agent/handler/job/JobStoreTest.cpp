#include "agent/handler/job/JobStore.h"

#include "agent/handler/job/JobError.h"
#include "tests/agent/handler/FullDisk.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <thread>

using BaseSDK::ALogger;
using BaseSDK::AString;
using TestSupport::LogCapture;
using TestSupport::TempDir;
using TestSupport::Texts;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

constexpr const char* JobText = "[Job]\ncommand = true\n";
constexpr const char* OtherJobText = "; another\n[Job]\ncommand = false\n";

class JobStoreTest : public testing::Test {
 protected:
  JobStore Open() const {
    HandlerSettings settings;
    settings.m_JobPath = AString(m_Directory.Path().c_str());
    return JobStore(settings);
  }
  std::string PathOf(const std::string& name) const { return (m_Directory / name).string(); }
  static std::string ErrorOf(const std::function<void()>& change) {
    try {
      change();
    } catch (const JobError& error) {
      return error.what();
    }
    return "no error";
  }

  const TempDir m_Directory;
};

}  // namespace

TEST_F(JobStoreTest, GivesBackWhatWasPut) {
  JobStore jobs = Open();
  EXPECT_EQ(jobs.Get("a"), std::nullopt);
  jobs.Put("a", JobText);
  EXPECT_EQ(jobs.Get("a"), AString(JobText));
  EXPECT_EQ(m_Directory.Read("a.job"), JobText);
  jobs.Put("a", OtherJobText);
  EXPECT_EQ(m_Directory.Read("a.job"), OtherJobText);
  EXPECT_EQ(m_Directory.Names(), Texts{"a.job"});
}

// A job's environment may hold secrets.
TEST_F(JobStoreTest, WritesForTheAgentsUserAlone) {
  JobStore jobs = Open();
  const mode_t mask = umask(0);
  jobs.Put("a", JobText);
  (void)umask(mask);
  struct stat info {};
  ASSERT_EQ(stat(PathOf("a.job").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777U, 0600U);
  EXPECT_EQ(info.st_uid, geteuid());
}

TEST_F(JobStoreTest, GivesATextAsItStands) {
  m_Directory.Write("a.job", "no job at all\r\n\xC3\xA4");
  EXPECT_EQ(Open().Get("a"), AString(L"no job at all\r\n\u00E4"));
}

TEST_F(JobStoreTest, TellsAllThatIsWrongWithATextAndKeepsTheOldOne) {
  JobStore jobs = Open();
  jobs.Put("a", JobText);
  const std::string file = PathOf("a.job");
  const struct {
    std::string m_Text;
    std::string m_Error;
  } rows[] = {
      {"", file + ": the section \"Job\" has no \"command\""},
      {"[Job]\nuser=\noverlap=x\n", file + ":2: user: a user's name is missing; " + file +
                                        ":3: overlap: is to be skip, queue, kill or allow; " +
                                        file + ": the section \"Job\" has no \"command\""},
      {"nonsense", file + ":1: neither [Section] nor key = value"},
      {"[Job]\ncommand=\x01", file + ":2: a character that is not text (the file is to be UTF-8)"},
      {JobText + std::string(64 * 1024, '#'), "the job file " + file + " is larger than 64 KiB"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ErrorOf([&] { jobs.Put("a", AString::FromUtf8(row.m_Text)); }), row.m_Error);
    EXPECT_EQ(m_Directory.Read("a.job"), JobText);
  }
  EXPECT_EQ(m_Directory.Names(), Texts{"a.job"});
}

TEST_F(JobStoreTest, TakesA64KiBText) {
  const std::string text = JobText + std::string(64 * 1024 - std::string(JobText).size(), '#');
  JobStore jobs = Open();
  jobs.Put("a", AString::FromUtf8(text));
  EXPECT_EQ(m_Directory.Read("a.job"), text);
  EXPECT_EQ(jobs.Get("a"), AString::FromUtf8(text));
}

TEST_F(JobStoreTest, DoesNotTellOfThousandsOfProblems) {
  std::string text = "[Job]\ncommand=true\n[Environment]\n";
  for (int number = 0; number < 1000; ++number) {
    text += std::to_string(number) + "=x\n";
  }
  const std::string error = ErrorOf([&] { Open().Put("a", AString::FromUtf8(text)); });
  const std::string end =
      ":23: what stands before the \"=\" is no name for a variable; and 980 more";
  EXPECT_EQ(error.substr(error.size() - end.size()), end);
}

TEST_F(JobStoreTest, DeletesAJob) {
  JobStore jobs = Open();
  EXPECT_FALSE(jobs.Delete("a"));
  jobs.Put("a", JobText);
  EXPECT_TRUE(jobs.Delete("a"));
  EXPECT_FALSE(jobs.Delete("a"));
  EXPECT_EQ(m_Directory.Names(), Texts());
}

TEST_F(JobStoreTest, StaysInItsDirectory) {
  JobStore jobs = Open();
  const std::string withNull("a\0b", 3);
  for (const std::string& id : Texts{"", ".", "..", "../a", "a/b", "/a", ".a", withNull}) {
    SCOPED_TRACE(id);
    const AString taskId = AString::FromUtf8(id);
    const std::string error = "no job file can bear the ID \"";
    EXPECT_EQ(ErrorOf([&] { jobs.Put(taskId, JobText); }).find(error), 0U);
    EXPECT_EQ(ErrorOf([&] { (void)jobs.Get(taskId); }).find(error), 0U);
    EXPECT_EQ(ErrorOf([&] { (void)jobs.Delete(taskId); }).find(error), 0U);
  }
  const AString longest = AString::FromUtf8(std::string(240, 'x'));
  EXPECT_NE(ErrorOf([&] { jobs.Put(longest + "x", JobText); }), "no error");
  jobs.Put(longest, JobText);
  EXPECT_TRUE(jobs.Delete(longest));
  EXPECT_EQ(m_Directory.Names(), Texts());
}

TEST_F(JobStoreTest, RefusesADirectoryThatStrangersMayWriteTo) {
  JobStore jobs = Open();
  jobs.Put("a", JobText);
  ASSERT_EQ(chmod(m_Directory.Path().c_str(), 0757), 0);
  const std::string error =
      "the directory " + m_Directory.Path().string() + " of the job file is to belong to ";
  EXPECT_EQ(ErrorOf([&] { jobs.Put("a", OtherJobText); }).substr(0, error.size()), error);
  EXPECT_EQ(ErrorOf([&] { (void)jobs.Get("a"); }).substr(0, error.size()), error);
  EXPECT_EQ(m_Directory.Read("a.job"), JobText);
  EXPECT_EQ(m_Directory.Names(), Texts{"a.job"});
}

TEST_F(JobStoreTest, ReplacesALinkAndLeavesAloneWhatItLeadsTo) {
  m_Directory.Write("other", "as it was");
  ASSERT_EQ(symlink("other", PathOf("a.job").c_str()), 0);
  ASSERT_EQ(symlink("other", PathOf(".a.job.new").c_str()), 0);
  JobStore jobs = Open();
  ASSERT_EQ(symlink("other", PathOf(".a.job.new").c_str()), 0);
  jobs.Put("a", JobText);
  EXPECT_EQ(m_Directory.Read("other"), "as it was");
  EXPECT_EQ(m_Directory.Read("a.job"), JobText);
  EXPECT_FALSE(std::filesystem::is_symlink(m_Directory / "a.job"));
  EXPECT_EQ(m_Directory.Names(), (Texts{"a.job", "other"}));
}

TEST_F(JobStoreTest, SaysWhatIsNoFileAndLeavesItAlone) {
  std::filesystem::create_directories(m_Directory / "a.job");
  JobStore jobs = Open();
  const std::string file = PathOf("a.job");
  EXPECT_EQ(ErrorOf([&] { jobs.Put("a", JobText); }),
            "cannot write the job file " + file + ": Is a directory");
  EXPECT_EQ(ErrorOf([&] { (void)jobs.Get("a"); }),
            "the job file " + file + " is not a regular file");
  EXPECT_EQ(ErrorOf([&] { (void)jobs.Delete("a"); }),
            "cannot remove the job file " + file + ": Is a directory");
  EXPECT_EQ(m_Directory.Names(), Texts{"a.job"});
}

TEST_F(JobStoreTest, KeepsTheOldJobOnAFullDisk) {
  JobStore jobs = Open();
  jobs.Put("a", JobText);
  {
    const FullDisk full(m_Directory.Path());
    EXPECT_EQ(ErrorOf([&] { jobs.Put("a", OtherJobText); }),
              "cannot write the job file " + PathOf("a.job") + ": No space left on device");
  }
  EXPECT_EQ(m_Directory.Read("a.job"), JobText);
  EXPECT_EQ(m_Directory.Names(), Texts{"a.job"});
}

TEST_F(JobStoreTest, RemovesWhatACrashHasLeft) {
  m_Directory.Write("a.job", JobText);
  m_Directory.Write(".a.job.new", "[Jo");
  m_Directory.Write(".job.new", "somebody else's");
  m_Directory.Write("a.job.new", "somebody else's");
  const LogCapture log;
  (void)Open();
  EXPECT_EQ(m_Directory.Names(), (Texts{".job.new", "a.job", "a.job.new"}));
  EXPECT_TRUE(log.Has(ALogger::Notice, AString(("Removed " + PathOf(".a.job.new") +
                                                ", a job that was not written to its end")
                                                   .c_str())));
}

TEST_F(JobStoreTest, LogsWhoseJobHasChanged) {
  const LogCapture log;
  JobStore jobs = Open();
  jobs.Put("a", JobText);
  (void)jobs.Delete("a");
  (void)jobs.Delete("a");
  EXPECT_EQ(log.Messages(ALogger::Notice), (Texts{"Wrote the job of the task 'a' as asked",
                                                  "Removed the job of the task 'a' as asked"}));
}

TEST_F(JobStoreTest, ReadersFindTheOldTextOrTheNewOne) {
  JobStore jobs = Open();
  const AString texts[] = {JobText, OtherJobText};
  jobs.Put("a", texts[0]);
  std::vector<std::thread> writers;
  for (const AString& text : texts) {
    writers.emplace_back([&jobs, &text] {
      for (int round = 0; round < 50; ++round) {
        jobs.Put("a", text);
      }
    });
  }
  for (int round = 0; round < 200; ++round) {
    const auto text = jobs.Get("a");
    EXPECT_TRUE(text == texts[0] || text == texts[1]);
  }
  for (std::thread& writer : writers) {
    writer.join();
  }
  EXPECT_EQ(m_Directory.Names(), Texts{"a.job"});
}

}  // namespace NoxHandlerTest
