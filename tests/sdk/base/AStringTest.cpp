#include <BaseSDK/AString.h>
#include <BaseSDK/AStringEncoder.h>
#include <BaseSDK/AUtf8Encoding.h>

#include <gtest/gtest.h>

#include <climits>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace BaseSDK {
namespace {

std::string Bytes(std::initializer_list<int> values) {
  std::string bytes;
  for (const int value : values) {
    bytes += static_cast<char>(value);
  }
  return bytes;
}

TEST(AString, NullPointersMakeEmptyStrings) {
  EXPECT_TRUE(AString(static_cast<const char*>(nullptr)).IsEmpty());
  EXPECT_TRUE(AString(static_cast<const wchar_t*>(nullptr)).IsEmpty());
  EXPECT_TRUE(AString(static_cast<const wchar_t*>(nullptr), 5).IsEmpty());
}

TEST(AString, TakesTheGivenLengthWithZeroCharacters) {
  const AString text(L"a\0b", 3);
  EXPECT_EQ(text.Length(), 3u);
  EXPECT_EQ(text.ToUtf8(), std::string("a\0b", 3));
  EXPECT_EQ(AString::FromUtf8(std::string("a\0b", 3)), text);
}

struct Utf8Row {
  std::string m_Bytes;
  std::wstring m_Text;
};

TEST(AString, DecodesUtf8AndGivesTheSameBytesBack) {
  const Utf8Row rows[] = {
      {"", L""},
      {"T1", L"T1"},
      {Bytes({0xC2, 0x80}), L"\u0080"},
      {Bytes({0xDF, 0xBF}), L"\u07FF"},
      {Bytes({0xE0, 0xA0, 0x80}), L"\u0800"},
      {Bytes({0xEF, 0xBF, 0xBF}), L"\uFFFF"},
      {Bytes({0xF0, 0x90, 0x80, 0x80}), L"\U00010000"},
      {Bytes({0xF4, 0x8F, 0xBF, 0xBF}), L"\U0010FFFF"},
      // From here on not UTF-8: every such byte stands alone.
      {Bytes({0x80}), {wchar_t(0xDC80)}},
      {Bytes({'a', 0xFF, 'b'}), {L'a', wchar_t(0xDCFF), L'b'}},
      {Bytes({0xC3}), {wchar_t(0xDCC3)}},
      {Bytes({0xC3, 'x'}), {wchar_t(0xDCC3), L'x'}},
      {Bytes({0xE2, 0x82}), {wchar_t(0xDCE2), wchar_t(0xDC82)}},
      {Bytes({0xC0, 0xAF}), {wchar_t(0xDCC0), wchar_t(0xDCAF)}},
      {Bytes({0xE0, 0x9F, 0xBF}), {wchar_t(0xDCE0), wchar_t(0xDC9F), wchar_t(0xDCBF)}},
      {Bytes({0xED, 0xB2, 0x80}), {wchar_t(0xDCED), wchar_t(0xDCB2), wchar_t(0xDC80)}},
      {Bytes({0xF4, 0x90, 0x80, 0x80}),
       {wchar_t(0xDCF4), wchar_t(0xDC90), wchar_t(0xDC80), wchar_t(0xDC80)}},
      {Bytes({0xF8, 0x88}), {wchar_t(0xDCF8), wchar_t(0xDC88)}},
  };
  for (const Utf8Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.m_Bytes));
    const AString text = AString::FromUtf8(row.m_Bytes);
    EXPECT_EQ(text.Str(), row.m_Text);
    EXPECT_EQ(text.ToUtf8(), row.m_Bytes);
    EXPECT_EQ(AString(row.m_Bytes.c_str()), text);
    EXPECT_EQ(AStringEncoder(text, AStringEncoder::Local).c_str(), row.m_Bytes);
    EXPECT_EQ(AStringEncoder(text, AStringEncoder::Utf8).Size(), row.m_Bytes.size());
    EXPECT_EQ(AUtf8Encoding().Decode(row.m_Bytes), text);
    EXPECT_EQ(AUtf8Encoding().Encode(text), row.m_Bytes);
  }
}

TEST(AString, EveryPairOfBytesSurvives) {
  for (int first = 0; first < 256; ++first) {
    for (int second = 0; second < 256; ++second) {
      const std::string bytes = Bytes({first, second});
      ASSERT_EQ(AString::FromUtf8(bytes).ToUtf8(), bytes) << first << ' ' << second;
    }
  }
}

TEST(AString, CharactersThatUtf8CannotHoldBecomeTheReplacementCharacter) {
  for (const long value : {0xD800L, 0xDBFFL, 0xDC00L, 0xDC7FL, 0xDD00L, 0xDFFFL, 0x110000L, -1L}) {
    const AString text(std::wstring(1, static_cast<wchar_t>(value)));
    EXPECT_EQ(text.ToUtf8(), "\xEF\xBF\xBD") << value;
  }
}

TEST(AString, OrdersByCodePoint) {
  EXPECT_LT(AString(L"A"), AString(L"a"));
  EXPECT_LT(AString(L"a"), AString(L"\u00E4"));
  EXPECT_LT(AString(L"\uFFFF"), AString(L"\U00010000"));
  EXPECT_LT(AString(L""), AString(L"a"));
  EXPECT_FALSE(AString(L"a") < AString(L"a"));
  EXPECT_NE(AString(L"a"), AString(L"A"));
}

TEST(AString, AppendsAndClears) {
  AString text = AString(L"a") + "b" + AString(L"c");
  text += text;
  EXPECT_EQ(text, AString("abcabc"));
  EXPECT_EQ(text[3], L'a');
  EXPECT_EQ(text[6], L'\0');
  text.Clear();
  EXPECT_TRUE(text.IsEmpty());
}

// Text of ASCII alone is held otherwise than any other: every pair of the two has to work together.
TEST(AString, TextsWithinAndBeyondAsciiGoTogether) {
  const std::wstring texts[] = {L"",        L"a",       L"Za",          L"\u00E4",
                                L"a\u00E4", L"\u00E4a", L"a\U0001F600z"};
  for (const std::wstring& left : texts) {
    for (const std::wstring& right : texts) {
      const AString one(left), other(right);
      EXPECT_EQ((one + other).Str(), left + right);
      EXPECT_EQ(one == other, left == right);
      EXPECT_EQ(one < other, left < right);
      EXPECT_EQ((one + other).Find(other), (left + right).find(right));
      EXPECT_EQ(one.Find(other, 1), left.find(right, 1));
      EXPECT_EQ(AString(L"%1|%2").Arg(one, other).Str(), left + L"|" + right);
      EXPECT_EQ((one + AString(L"%1")).Arg(other).Str(), left + right);
    }
  }
}

TEST(AString, APieceThatIsAsciiEqualsTheSameTextOfItsOwn) {
  const AString text(L"abc\u00E4def");
  EXPECT_EQ(text.Mid(4), AString("def"));
  EXPECT_EQ(text.Left(3), AString("abc"));
  EXPECT_FALSE(text.Mid(4) < AString("def"));
  EXPECT_EQ(text.ReverseFind(L'\u00E4'), 3u);
  EXPECT_EQ(AString("abc").ReverseFind(L'\u00E4'), AString::npos);
  EXPECT_EQ(text.Mid(4).Ascii(), std::string_view("def"));
  EXPECT_EQ(text.Ascii(), std::nullopt);
}

TEST(AString, TheWideFormIsThatOfTheTextAsItIs) {
  AString text = "ab";
  EXPECT_EQ(text.c_str(), std::wstring(L"ab"));
  text += "c";
  EXPECT_EQ(text.c_str(), std::wstring(L"abc"));
  text += AString(L"\u00E4");
  EXPECT_EQ(text.c_str(), std::wstring(L"abc\u00E4"));
  text += text;
  EXPECT_EQ(text.Str(), L"abc\u00E4abc\u00E4");
  AString taken = std::move(text);
  EXPECT_EQ(taken.Length(), 8u);
  text = "new";
  EXPECT_EQ(text.Str(), L"new");
  taken = text;
  EXPECT_EQ(taken.Str(), L"new");
  taken.Clear();
  EXPECT_EQ(taken.Str(), L"");
  text = std::move(taken);
  EXPECT_TRUE(text.IsEmpty());
}

TEST(AString, SeveralReadersMayBeTheFirstToAskForTheWideForm) {
  for (int round = 0; round < 100; ++round) {
    const AString text = "a text for several readers";
    const wchar_t* seen[2] = {};
    std::thread reader([&] { seen[0] = text.c_str(); });
    seen[1] = text.c_str();
    reader.join();
    ASSERT_EQ(seen[0], seen[1]);
    ASSERT_EQ(seen[0], std::wstring(L"a text for several readers"));
  }
}

TEST(AString, FindsForwardAndBackward) {
  const AString path = "/x/y/T1.vsk";
  EXPECT_EQ(path.Find(".vsk"), 7u);
  EXPECT_EQ(path.Find("/", 1), 2u);
  EXPECT_EQ(path.Find("/", 5), AString::npos);
  EXPECT_EQ(path.Find("/", 100), AString::npos);
  EXPECT_EQ(path.ReverseFind(L'/'), 4u);
  EXPECT_EQ(path.ReverseFind(L'?'), AString::npos);
}

TEST(AString, CutsPieces) {
  const AString text = "abcdef";
  EXPECT_EQ(text.Mid(2), AString("cdef"));
  EXPECT_EQ(text.Mid(2, 2), AString("cd"));
  EXPECT_EQ(text.Mid(5, 100), AString("f"));
  EXPECT_EQ(text.Mid(6), AString());
  EXPECT_EQ(text.Mid(7), AString());
  EXPECT_EQ(text.Left(3), AString("abc"));
  EXPECT_EQ(text.Left(100), text);
  EXPECT_EQ(text.Left(0), AString());
}

TEST(AString, ComparesWithoutCaseInAsciiOnly) {
  EXPECT_TRUE(AString("HoUr").EqualsNoCase("hOuR"));
  EXPECT_FALSE(AString("HOUR").EqualsNoCase("HOURS"));
  EXPECT_FALSE(AString(L"\u00C4").EqualsNoCase(AString(L"\u00E4")));
  EXPECT_FALSE(AString("[").EqualsNoCase("{"));
  EXPECT_FALSE(AString("@").EqualsNoCase("`"));
}

struct NumberRow {
  const wchar_t* m_Text;
  int m_Base;
  long m_Value;
};

TEST(AString, ReadsNumbers) {
  const NumberRow rows[] = {
      {L"0", 10, 0},
      {L"42", 10, 42},
      {L"+42", 10, 42},
      {L"-42", 10, -42},
      {L" \t\r\n42 \n", 10, 42},
      {L"007", 10, 7},
      {L"2147483647", 10, 2147483647},
      {L"2147483648", 10, 2147483647},
      {L"-2147483648", 10, -2147483647L - 1},
      {L"-2147483649", 10, -2147483647L - 1},
      {L"99999999999999999999999999", 10, 2147483647},
      {L"-99999999999999999999999999", 10, -2147483647L - 1},
      {L"ff", 16, 255},
      {L"FF", 16, 255},
      {L"zz", 36, 1295},
      {L"101", 2, 5},
      // Not numbers.
      {L"", 10, 0},
      {L" ", 10, 0},
      {L"-", 10, 0},
      {L"+", 10, 0},
      {L"+-1", 10, 0},
      {L"- 1", 10, 0},
      {L"12abc", 10, 0},
      {L"abc", 10, 0},
      {L"1 2", 10, 0},
      {L"1.5", 10, 0},
      {L"0x10", 16, 0},
      {L"2", 2, 0},
      {L"\u0661", 10, 0},
      {L"99999999999999999999999999x", 10, 0},
  };
  for (const NumberRow& row : rows) {
    EXPECT_EQ(AString(row.m_Text).ToLong(row.m_Base), row.m_Value)
        << AString(row.m_Text).ToUtf8() << " base " << row.m_Base;
  }
}

TEST(AString, WritesNumbers) {
  AString text = "old";
  EXPECT_EQ(text.SetNum(-5, 'd'), AString("-5"));
  EXPECT_EQ(&text.SetNum(7u, 'u'), &text);
  EXPECT_EQ(text, AString("7"));
  EXPECT_EQ(text.SetNum(INT_MIN, 'd'), AString("-2147483648"));
  EXPECT_EQ(text.SetNum(-1, 'u'), AString("4294967295"));
  EXPECT_EQ(text.SetNum(-1, 'x'), AString("ffffffff"));
  EXPECT_EQ(text.SetNum(0x8000005EUL, 'x'), AString("8000005e"));
  EXPECT_EQ(text.SetNum(4294967295u, 'u'), AString("4294967295"));
  EXPECT_EQ(text.SetNum(4294967295u, 'd'), AString("-1"));
  EXPECT_EQ(text.SetNum(0L, 'x'), AString("0"));
  EXPECT_EQ(text.SetNum(-1L, 'd'), AString("-1"));
  EXPECT_EQ(text.SetNum(12L, '?'), AString("12"));
}

TEST(AString, FillsPlaceholders) {
  EXPECT_EQ(AString("a %1 b").Arg("X"), AString("a X b"));
  EXPECT_EQ(AString("%2-%1").Arg("a", "b"), AString("b-a"));
  EXPECT_EQ(AString("%1%2%3%4").Arg("a", "b", "c", "d"), AString("abcd"));
  EXPECT_EQ(AString("%1 %1").Arg("a"), AString("a a"));
  EXPECT_EQ(AString("%3%2%1").Arg("a", "b", "c"), AString("cba"));
}

TEST(AString, LeavesPlaceholdersWithoutArgument) {
  EXPECT_EQ(AString("%1 %2 %3").Arg("a"), AString("a %2 %3"));
  EXPECT_EQ(AString("%0 %5 %9 %% %x %").Arg("a", "b", "c", "d"), AString("%0 %5 %9 %% %x %"));
  EXPECT_EQ(AString("%12").Arg("a"), AString("a2"));
}

TEST(AString, NeverSearchesInsertedTextForPlaceholders) {
  EXPECT_EQ(AString("%1 %2").Arg("%2", "%1"), AString("%2 %1"));
  EXPECT_EQ(AString("%1").Arg("%1"), AString("%1"));
  EXPECT_EQ(AString("%1"
                    "2")
                .Arg("%"),
            AString("%2"));
}

}  // namespace
}  // namespace BaseSDK
