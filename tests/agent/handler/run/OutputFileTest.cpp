#include "agent/handler/run/OutputFile.h"

#include "agent/handler/run/OutputHeader.h"
#include "tests/agent/handler/FullDisk.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

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
  EXPECT_GT(kept.size(), OutputFile::KeepBytes - 20 - OutputHeader::MaxBytes);
  const OutputHeader header = OutputHeader::Parse(kept);
  EXPECT_EQ(kept, OutputHeader::Line(header.m_Dropped) +
                      all.substr(static_cast<std::size_t>(header.m_Dropped)));
  EXPECT_EQ(kept.substr(header.m_Size).find("line "), 0u);
}

TEST(OutputFile, CutsExactlyAtALineThatBeginsThere) {
  const TempDir directory;
  const std::string kept(OutputFile::KeepBytes - OutputHeader::MaxBytes, 'x');
  {
    OutputFile file(Name(directory));
    file.Append(std::string(999, 'x') + "\n");
    file.Append(kept);
  }
  EXPECT_EQ(directory.Read("a.log"), "-- 1000 bytes of earlier output are not kept\n" + kept);
}

TEST(OutputFile, NeverHoldsMoreThanTwiceWhatItKeeps) {
  const TempDir directory;
  OutputFile file(Name(directory));
  for (int i = 0; i < 50; ++i) {
    file.Append(std::string(9999, 'x'));
    EXPECT_LE(directory.Read("a.log").size(), 2 * OutputFile::KeepBytes);
  }
}

// By it readers keep their places.
TEST(OutputFile, CountsWhatItDoesNotKeepOverAllRuns) {
  const TempDir directory;
  const std::string all = NumberedLines(0, 100000);
  for (std::size_t begin = 0; begin < all.size(); begin += 50000) {
    OutputFile(Name(directory)).Append(std::string_view(all).substr(begin, 50000));
  }
  const std::string kept = directory.Read("a.log");
  const OutputHeader header = OutputHeader::Parse(kept);
  EXPECT_GT(header.m_Size, 0u);
  EXPECT_EQ(kept.substr(header.m_Size), all.substr(static_cast<std::size_t>(header.m_Dropped)));
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

TEST(OutputFile, GoesOnWhenThereIsRoomAgainAndSaysWhatIsMissing) {
  const LogCapture log;
  const TempDir directory;
  OutputFile file(Name(directory));
  file.Append("one");
  {
    const FullDisk full(directory.Path());
    file.Append("two\n");
    file.AppendNote("three");
  }
  file.AppendNote("four");
  file.Append("five\n");
  EXPECT_THAT(
      directory.Read("a.log"),
      testing::MatchesRegex("one\n-- [-: 0-9]* output is missing here: it could not be written\n"
                            "-- [-: 0-9]* four\nfive\n"));
  EXPECT_EQ(log.Lines().size(), 1u);
  EXPECT_EQ(log.CountContaining("Cannot write the output file"), 1u);
  EXPECT_EQ(log.CountContaining("a.log: No space left on device."), 1u);
}

TEST(OutputFile, IsMadeWhenThereIsRoomAgain) {
  const TempDir directory;
  auto full = std::make_unique<FullDisk>(directory.Path());
  OutputFile file(Name(directory));
  file.Append("one\n");
  EXPECT_FALSE(directory.Has("a.log"));
  full.reset();
  file.Append("two\n");
  EXPECT_THAT(directory.Read("a.log"), testing::EndsWith("it could not be written\ntwo\n"));
}

TEST(OutputFile, IsCutBackWithoutNewSpace) {
  const TempDir directory;
  const std::string lines = NumberedLines(0, 20000);
  OutputFile file(Name(directory));
  file.Append(
      std::string_view(lines).substr(0, 2 * OutputFile::KeepBytes - OutputHeader::MaxBytes));
  const FullDisk full(directory.Path());
  file.Append("last\n");
  const std::string kept = directory.Read("a.log");
  EXPECT_LE(kept.size(), OutputFile::KeepBytes);
  EXPECT_TRUE(kept.ends_with("last\n"));
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
