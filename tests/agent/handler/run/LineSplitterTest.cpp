#include "agent/handler/run/LineSplitter.h"

#include <gtest/gtest.h>

using BaseSDK::AString;
using Lines = std::vector<AString>;

namespace NoxHandlerTest {

using namespace NoxHandler;

TEST(LineSplitter, PutsPiecesTogether) {
  LineSplitter splitter;
  EXPECT_EQ(splitter.Add("one\ntw"), Lines{"one"});
  EXPECT_EQ(splitter.Add("o"), Lines{});
  EXPECT_EQ(splitter.Add("\n\nthree\nfour"), (Lines{"two", "", "three"}));
  EXPECT_EQ(splitter.Finish(), Lines{"four"});
  EXPECT_EQ(splitter.Finish(), Lines{});
}

TEST(LineSplitter, HidesControlCharactersFromTerminals) {
  LineSplitter splitter;
  EXPECT_EQ(splitter.Add("a\tb\x1b[2Jc\rd\r\n"), Lines{"a\tb?[2Jc?d"});
  EXPECT_EQ(splitter.Add("\x7f\xC2\x9B\n"), Lines{"??"});
}

TEST(LineSplitter, ReplacesBytesThatAreNotText) {
  LineSplitter splitter;
  EXPECT_EQ(splitter.Add("a\xFF\xC3\xA4\n"), Lines{"a\xEF\xBF\xBD\xC3\xA4"});
}

TEST(LineSplitter, CutsALineThatIsTooLong) {
  LineSplitter splitter;
  const std::string part(LineSplitter::MaxLineBytes, 'x');
  EXPECT_EQ(splitter.Add(part), Lines{});
  EXPECT_EQ(splitter.Add("y"), Lines{part.c_str()});
  EXPECT_EQ(splitter.Add("z\n"), Lines{"yz"});
}

TEST(LineSplitter, DoesNotCutWithinACharacter) {
  LineSplitter splitter;
  const std::string part(LineSplitter::MaxLineBytes - 1, 'x');
  EXPECT_EQ(splitter.Add(part + "\xE2\x82\xAC"), Lines{part.c_str()});
  EXPECT_EQ(splitter.Add("\n"), Lines{"\xE2\x82\xAC"});
}

}  // namespace NoxHandlerTest
