#include "agent/daemon/control/SafeLines.h"

#include "tests/agent/daemon/control/CountedSafety.h"

#include <gtest/gtest.h>

#include <semaphore>
#include <string>

namespace NoxAgent {
namespace {

class SafeLinesTest : public testing::Test {
 protected:
  void AddNumbers(int count) {
    for (int number = 0; number < count; ++number) {
      m_Lines.Add(std::to_string(number) + '\n');
      m_Wanted += std::to_string(number) + '\n';
    }
  }
  void Finish() {
    m_Lines.Finish([this] { m_Finished.release(); });
    m_Finished.acquire();
  }

  HeldSafety m_Files;
  std::string m_Wanted;
  std::string m_Passed;  // by the thread of m_Lines, until it has finished
  std::binary_semaphore m_Finished{0};
  SafeLines m_Lines{[this](const std::string& lines) { m_Passed += lines; }};
};

TEST_F(SafeLinesTest, PassesOnNothingBeforeItIsSafe) {
  AddNumbers(1);
  m_Files.m_Begun.acquire();
  EXPECT_EQ(m_Passed, "");
  m_Files.m_LetGo.release();
  Finish();
  EXPECT_EQ(m_Passed, m_Wanted);
}

TEST_F(SafeLinesTest, TakesTogetherWhatComesWhileTheDiskIsAtWork) {
  AddNumbers(1);
  m_Files.m_Begun.acquire();
  AddNumbers(300);
  m_Files.m_LetGo.release(2);
  Finish();
  EXPECT_EQ(m_Passed, m_Wanted);
  EXPECT_EQ(m_Files.m_Count, 2U);
}

TEST_F(SafeLinesTest, LosesNothingWhenVeryManyHaveToWait) {
  m_Files.m_LetGo.release(10000);
  AddNumbers(5000);
  Finish();
  EXPECT_EQ(m_Passed, m_Wanted);
}

}  // namespace
}  // namespace NoxAgent
