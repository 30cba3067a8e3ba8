#include "agent/handler/run/OutputPart.h"

#include "agent/handler/run/OutputFile.h"
#include "agent/handler/run/OutputHeader.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <stdexcept>
#include <thread>

using BaseSDK::AString;
using TestSupport::TempDir;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

class OutputPartTest : public testing::Test {
 protected:
  AString FileName() const { return AString((m_Directory / "a.log").c_str()); }
  // What comes from `m_Place` on, and the place behind it.
  std::string Next() {
    const auto part = OutputPart::Read(FileName(), m_Place);
    if (!part.has_value()) {
      return "no file";
    }
    m_Place = part->m_Next;
    return part->m_Text.ToUtf8();
  }
  std::string Rest() {
    std::string all;
    for (std::string part = Next(); !part.empty(); part = Next()) {
      all += part;
    }
    return all;
  }

  const TempDir m_Directory;
  std::uint64_t m_Place = 0;
};

std::string CountedLines(int count) {
  std::string lines;
  for (int i = 0; i < count; ++i) {
    lines += "output " + std::to_string(i) + "\n";
  }
  return lines;
}

}  // namespace

TEST_F(OutputPartTest, FollowsAFileThatGrows) {
  EXPECT_EQ(Next(), "no file");
  OutputFile file(FileName());
  EXPECT_EQ(Next(), "");
  file.Append("one\n");
  EXPECT_EQ(Next(), "one\n");
  EXPECT_EQ(Next(), "");
  file.Append("tw");
  EXPECT_EQ(Next(), "tw");
  file.Append("o\n");
  EXPECT_EQ(Next(), "o\n");
}

TEST_F(OutputPartTest, GivesALongFileInParts) {
  const std::string all = CountedLines(10000);
  OutputFile file(FileName());
  file.Append(all);
  ASSERT_GT(all.size(), OutputPart::MaxBytes);
  ASSERT_LT(all.size(), 2 * OutputPart::MaxBytes);
  EXPECT_EQ(Next(), all.substr(0, OutputPart::MaxBytes));
  EXPECT_EQ(Next(), all.substr(OutputPart::MaxBytes));
  EXPECT_EQ(Next(), "");
}

TEST_F(OutputPartTest, KeepsItsPlaceWhenTheFileIsCutBack) {
  const std::string all = CountedLines(100000);
  std::string read;
  for (std::size_t begin = 0; begin < all.size();) {
    OutputFile file(FileName());  // a run, at whose end the file is cut back
    for (int piece = 0; piece < 7; ++piece, begin += 9999) {
      file.Append(std::string_view(all).substr(std::min(begin, all.size()), 9999));
      read += Rest();
    }
  }
  EXPECT_EQ(read, all);
}

TEST_F(OutputPartTest, SaysHowMuchIsMissingToWhoComesTooLate) {
  const std::string all = CountedLines(20000);
  OutputFile file(FileName());
  file.Append("first\n");
  EXPECT_EQ(Next(), "first\n");
  file.Append(all);
  const OutputHeader header = OutputHeader::Parse(m_Directory.Read("a.log"));
  ASSERT_GT(header.m_Dropped, 6U);
  EXPECT_EQ(Rest(), OutputHeader::Line(header.m_Dropped) +
                        all.substr(static_cast<std::size_t>(header.m_Dropped - 6)));
  file.Append("last\n");
  EXPECT_EQ(Next(), "last\n");
  m_Place = 0;
  EXPECT_EQ(Rest(), m_Directory.Read("a.log"));
}

TEST_F(OutputPartTest, BeginsAgainWhenSomebodyHasRemovedTheFile) {
  OutputFile(FileName()).Append("the first file\n");
  EXPECT_EQ(Next(), "the first file\n");
  std::filesystem::remove(m_Directory / "a.log");
  EXPECT_EQ(Next(), "no file");
  OutputFile(FileName()).Append("another\n");
  EXPECT_EQ(Next(), "another\n");
}

TEST_F(OutputPartTest, ReplacesWhatIsNoText) {
  OutputFile file(FileName());
  file.Append("a\xFF\xC3(\xED\xA0\x80\xF8z\n");
  const std::string text = Next();
  EXPECT_EQ(text.substr(0, 4), "a\xEF\xBF\xBD");
  EXPECT_EQ(text.substr(text.size() - 2), "z\n");
  EXPECT_EQ(text.find('\xFF'), std::string::npos);
}

TEST_F(OutputPartTest, WaitsForTheRestOfACharacter) {
  OutputFile file(FileName());
  for (const std::string character : {"\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
    for (std::size_t byte = 0; byte + 1 < character.size(); ++byte) {
      file.Append(character.substr(byte, 1));
      EXPECT_EQ(Next(), "");
    }
    file.Append(character.substr(character.size() - 1));
    EXPECT_EQ(Next(), character);
  }
  file.Append("\x80");
  EXPECT_EQ(Next(), "\xEF\xBF\xBD");
}

TEST_F(OutputPartTest, RefusesWhatIsNoFile) {
  ASSERT_EQ(mkfifo((m_Directory / "a.log").c_str(), 0600), 0);
  EXPECT_THROW((void)Next(), std::runtime_error);
  std::filesystem::remove(m_Directory / "a.log");
  std::filesystem::create_symlink("b", m_Directory / "a.log");
  EXPECT_THROW((void)Next(), std::runtime_error);
}

TEST_F(OutputPartTest, ReadsAFileThatIsBeingWritten) {
  const std::string all = CountedLines(200000);
  std::atomic<bool> isWritten{false};
  std::thread writer([&] {
    OutputFile file(FileName());
    for (std::size_t begin = 0; begin < all.size(); begin += 5000) {
      file.Append(std::string_view(all).substr(begin, 5000));
    }
    isWritten = true;
  });
  // Whatever it misses, what it reads is what was written there.
  while (!isWritten) {
    const std::uint64_t place = m_Place;
    const auto part = OutputPart::Read(FileName(), place);
    if (part.has_value()) {
      const std::string text = part->m_Text.ToUtf8();
      const OutputHeader header = OutputHeader::Parse(text);
      const std::string_view read = std::string_view(text).substr(header.m_Size);
      const auto begin = static_cast<std::size_t>(header.m_Size > 0 ? header.m_Dropped : place);
      ASSERT_EQ(read, std::string_view(all).substr(begin, read.size()));
      m_Place = part->m_Next;
    }
  }
  writer.join();
}

}  // namespace NoxHandlerTest
