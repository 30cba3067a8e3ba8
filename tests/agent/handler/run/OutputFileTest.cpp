#include "agent/handler/run/OutputFile.h"

#include "tests/support/LogCapture.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using BaseSDK::ALogger;
using BaseSDK::AString;
using TestSupport::LogCapture;
using TestSupport::TempDir;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

AString Name(const TempDir& directory) {
  return AString((directory / "a.log").c_str());
}

std::string NumberedLines(int from, int to) {
  std::string lines;
  for (int i = from; i < to; ++i) {
    lines += "line " + std::to_string(i) + "\n";
  }
  return lines;
}

}  // namespace

TEST(OutputFile, GrowsAsOutputComes) {
  const TempDir directory;
  OutputFile file(Name(directory));
  file.Append("one\n");
  EXPECT_EQ(directory.Read("a.log"), "one\n");
  file.Append("two");
  EXPECT_EQ(directory.Read("a.log"), "one\ntwo");
}

TEST(OutputFile, KeepsWhatEarlierRunsPutOut) {
  const TempDir directory;
  OutputFile(Name(directory)).Append("first\n");
  OutputFile(Name(directory)).Append("second\n");
  EXPECT_EQ(directory.Read("a.log"), "first\nsecond\n");
}

TEST(OutputFile, KeepsTheLast64KiBFromALineOn) {
  const TempDir directory;
  const std::string all = NumberedLines(0, 100000);
  {
    OutputFile file(Name(directory));
    for (std::size_t i = 0; i < all.size(); i += 1000) {
      file.Append(std::string_view(all).substr(i, 1000));
    }
  }
  const std::string kept = directory.Read("a.log");
  EXPECT_LE(kept.size(), OutputFile::KeepBytes);
  EXPECT_GT(kept.size(), OutputFile::KeepBytes - 20);
  EXPECT_TRUE(all.ends_with(kept));
  EXPECT_TRUE(kept.starts_with("line "));
}

TEST(OutputFile, CutsExactlyAtALineThatBeginsThere) {
  const TempDir directory;
  const std::string line = std::string(1023, 'x') + "\n";
  {
    OutputFile file(Name(directory));
    for (int i = 0; i < 65; ++i) {
      file.Append(line);
    }
  }
  EXPECT_EQ(directory.Read("a.log").size(), OutputFile::KeepBytes);
}

TEST(OutputFile, NeverHoldsMoreThanTwiceWhatItKeeps) {
  const TempDir directory;
  OutputFile file(Name(directory));
  for (int i = 0; i < 50; ++i) {
    file.Append(std::string(9999, 'x'));
    EXPECT_LE(directory.Read("a.log").size(), 2 * OutputFile::KeepBytes);
  }
}

TEST(OutputFile, WritesNotesOnLinesOfTheirOwn) {
  const TempDir directory;
  OutputFile file(Name(directory));
  file.Append("no end");
  file.AppendNote("over");
  file.AppendNote("again");
  EXPECT_THAT(
      directory.Read("a.log"),
      testing::MatchesRegex("no end\n-- [0-9]{4}(-[0-9]{2}){2} [0-9]{2}(:[0-9]{2}){2} over\n"
                            "-- [-: 0-9]* again\n"));
}

TEST(OutputFile, SaysOnceThatItCannotBeWritten) {
  const LogCapture log;
  const TempDir directory;
  OutputFile file(AString((directory / "missing/a.log").c_str()));
  file.Append("one\n");
  file.AppendNote("two");
  ASSERT_EQ(log.Lines().size(), 1u);
  EXPECT_EQ(log.Messages(ALogger::Warning).size(), 1u);
  EXPECT_EQ(log.CountContaining("Cannot open the output file"), 1u);
}

}  // namespace NoxHandlerTest
