// A disk without room: the one job that can help is the one that makes room.
#include "tests/agent/e2e/AgentFixture.h"

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>

#include <filesystem>
#include <fstream>

namespace {

// The state directory is a small disk of its own, seen by this process and those it starts, where
// the system lets the test have one; elsewhere the disk does not fill, and the job runs all the
// same.
class FullDisk : public AgentFixture {
 protected:
  FullDisk() {
    m_IsMounted = unshare(CLONE_NEWNS) == 0 &&
                  mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                  mount("none", Path("state").c_str(), "tmpfs", 0, "size=2m,mode=755") == 0;
    std::filesystem::create_directories(m_Directory / "state/var/jobs");
  }
  ~FullDisk() override {
    if (m_IsMounted) {
      (void)umount2(Path("state").c_str(), MNT_DETACH);
    }
  }

  void Fill() const {
    std::ofstream file(m_Directory / "state/filling", std::ios::binary);
    const std::string block(4096, 'x');
    while (m_IsMounted && file.write(block.data(), static_cast<std::streamsize>(block.size())) &&
           file.flush()) {
    }
  }

  bool m_IsMounted = false;
};

}  // namespace

TEST_F(FullDisk, KeepsNoJobFromRunning) {
  m_Directory.Write("state/ballast", std::string(200 * 1024, 'x'));
  StartAgent();
  AddJob("clean", "echo cleaning; rm " + Path("state/ballast"));
  AddTask("clean", Trigger(0, FromNow(3)));
  Fill();
  EXPECT_TRUE(WaitUntil([&] { return !m_Directory.Has("state/ballast"); }));
  EXPECT_TRUE(WaitUntil([&] {
    const char* const output = "state/var/output/clean.log";
    return m_Directory.Has(output) &&
           m_Directory.Read(output).find(" exit status 0 after ") != std::string::npos;
  }));
}
