#include <BaseSDK/ADateTime.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace BaseSDK {
namespace {

/// Sets the zone for a test and puts the old one back.
class ZoneGuard {
 public:
  explicit ZoneGuard(const char* zone) {
    if (const char* const old = std::getenv("TZ")) {
      m_Old = old;
    }
    Use(zone);
  }
  ZoneGuard(const ZoneGuard&) = delete;
  ZoneGuard& operator=(const ZoneGuard&) = delete;
  ~ZoneGuard() { Use(m_Old ? m_Old->c_str() : nullptr); }

 private:
  static void Use(const char* zone) {
    (void)(zone != nullptr ? setenv("TZ", zone, 1) : unsetenv("TZ"));
    tzset();
  }

  std::optional<std::string> m_Old;
};

constexpr char Utc[] = "UTC0";
constexpr char Berlin[] = "CET-1CEST,M3.5.0,M10.5.0/3";

struct ReadingRow {
  const char* m_Text;
  long m_Moment;
};

TEST(ADateTime, DefaultReadingTakesItsFormsAndNothingElse) {
  const ZoneGuard zone(Utc);
  const ReadingRow rows[] = {
      {"2005-03-01 08:00:00", 1109664000},
      {"2005-03-01T08:00:00", 1109664000},
      {"2005/03/01 08:00:00", 1109664000},
      {"2005/03/01T08:00:00", 1109664000},
      {"2005-03-01", 1109635200},
      {"2005/03/01", 1109635200},
      {"2004-02-29 23:59:59", 1078099199},
      {"2000-02-29", 951782400},
      {" 2005-03-01", 1109635200},
      {"2005-03-01 ", 1109635200},
      {"  2005-03-01 08:00:00  ", 1109664000},
      {"\n\t\t2005/03/01T08:00:00\r\n\t", 1109664000},
      {"2038-01-19 03:14:07", 2147483647},
      {"1970-01-01 00:00:01", 1},
      {"1969-12-31 23:59:58", -2},
      {"1901-12-13 20:45:52", -2147483647L - 1},
      // The epoch itself and the second before cannot be told from failures.
      {"1970-01-01 00:00:00", 0},
      {"1969-12-31 23:59:59", 0},
      // Outside 32 bits.
      {"2038-01-19 03:14:08", 0},
      {"1901-12-13 20:45:51", 0},
      {"9999-12-31 23:59:59", 0},
      {"0000-01-01", 0},
      // Out of range.
      {"2005-00-01", 0},
      {"2005-13-01", 0},
      {"2005-03-00", 0},
      {"2005-03-32", 0},
      {"2005-04-31", 0},
      {"2005-02-29", 0},
      {"1900-02-29", 0},
      {"2005-03-01 24:00:00", 0},
      {"2005-03-01 08:60:00", 0},
      {"2005-03-01 08:00:60", 0},
      // Not the form.
      {"", 0},
      {" ", 0},
      {"2005-03-01  08:00:00", 0},
      {"2005-03-01t08:00:00", 0},
      {"2005-03-01T", 0},
      {"2005-03-01 08:00", 0},
      {"2005-03-01 8:00:00", 0},
      {"2005-3-01", 0},
      {"2005-03-1", 0},
      {"05-03-01", 0},
      {"2005-03/01", 0},
      {"2005/03-01", 0},
      {"2005.03.01", 0},
      {"20050301", 0},
      {"+005-03-01", 0},
      {"2005--3-01", 0},
      {"2005-03-01 08:00:00Z", 0},
      {"2005-03-01 08:00:00.5", 0},
      {"yesterday", 0},
      {"\xD9\xA2"
       "005-03-01",
       0},
  };
  for (const ReadingRow& row : rows) {
    EXPECT_EQ(ADateTime(AString(row.m_Text)).GetTime(), row.m_Moment) << '"' << row.m_Text << '"';
  }
}

TEST(ADateTime, ReadsLocalTime) {
  const ZoneGuard zone(Berlin);
  EXPECT_EQ(ADateTime(AString("2005-03-01 08:00:00")).GetTime(), 1109660400);
  EXPECT_EQ(ADateTime(AString("2005-07-01 08:00:00")).GetTime(), 1120197600);
  // 27 March 2005 has no 02:30 there; the clocks go from 02:00 to 03:00.
  EXPECT_EQ(ADateTime(AString("2005-03-27 02:30:00")).GetTime(), 1111887000);
  // 30 October 2005 has 02:30 twice; the first is meant.
  EXPECT_EQ(ADateTime(AString("2005-10-30 02:30:00")).GetTime(), 1130632200);
}

TEST(ADateTime, TextWithAZeroCharacterIsUnreadable) {
  const ZoneGuard zone(Utc);
  const AString text = AString("2005-03-01") + AString(L"\0", 1);
  EXPECT_EQ(ADateTime(text).GetTime(), 0);
  EXPECT_EQ(ADateTime(text, "%Y-%m-%d", 0).GetTime(), 0);
}

struct FormatRow {
  const char* m_Text;
  const char* m_Format;
  long m_Moment;
};

TEST(ADateTime, ExplicitFormatReadsLikeStrptimeAndThenChecks) {
  const ZoneGuard zone(Utc);
  const char* const slashes = "%Y/%m/%d %H:%M:%S";
  const FormatRow rows[] = {
      {"2005/03/01 08:00:00", slashes, 1109664000},
      {"2005/3/1 8:00:00", slashes, 1109664000},
      {"2005/3/1 8:0:0 \t\n", slashes, 1109664000},
      {" 2005/3/1 8:0:0", slashes, 1109664000},
      {"\r\n\t2005/3/1 8:0:0\v\f", slashes, 1109664000},
      {"\n", slashes, 0},
      {"2005/3/1    8:0:0", slashes, 1109664000},
      {"2005/3/18:0:0", slashes, 0},
      {"2005/3/1 8:0:0 x", slashes, 0},
      {"2005/3/1", slashes, 0},
      {"2005/2/29 8:0:0", slashes, 0},
      {"2005/4/31 8:0:0", slashes, 0},
      {"2005/3/1 8:0:60", slashes, 0},
      {"2005/3/1 24:0:0", slashes, 0},
      {"2005-03-01 08:00:00", slashes, 0},
      {"", slashes, 0},
      {"01.03.2005", "%d.%m.%Y", 1109635200},
      {"08:00", "%H:%M", 28800},
      {"", "", 0},
      {"3 Mar 2005", "%d %b %Y", 1109808000},
      {"2039/1/1 0:0:0", slashes, 0},
  };
  for (const FormatRow& row : rows) {
    EXPECT_EQ(ADateTime(row.m_Text, row.m_Format, 0).GetTime(), row.m_Moment)
        << '"' << row.m_Text << "\" by \"" << row.m_Format << '"';
  }
}

TEST(ADateTime, OtherModesReadNothing) {
  const ZoneGuard zone(Utc);
  EXPECT_EQ(ADateTime("2005", "%Y", 0).GetTime(), 1104537600);
  EXPECT_EQ(ADateTime("2005", "%Y", 1).GetTime(), 0);
  EXPECT_EQ(ADateTime("2005", "%Y", -1).GetTime(), 0);
}

TEST(ADateTime, WritesLocalTime) {
  const ZoneGuard zone(Berlin);
  const ADateTime summer(1120197600);
  EXPECT_EQ(summer.ToString("%Y-%m-%d %H:%M:%S"), AString("2005-07-01 08:00:00"));
  EXPECT_EQ(summer.ToString("%z"), AString("+0200"));
  EXPECT_EQ(summer.ToString(""), AString());
  EXPECT_EQ(summer.ToString("%%"), AString("%"));
  EXPECT_EQ(summer.ToString(L"\u20AC %d"), AString(L"\u20AC 01"));
  EXPECT_EQ(ADateTime(-2147483647L - 1).ToString("%Y"), AString("1901"));
  const std::string longText(5000, 'x');
  EXPECT_EQ(summer.ToString(AString::FromUtf8(longText + "%Y")).ToUtf8(), longText + "2005");
}

TEST(ADateTime, ReadsBackWhatItWrites) {
  const ZoneGuard zone(Utc);
  for (long moment = 1; moment < 2138000000; moment += 9000011) {
    const AString text = ADateTime(moment).ToString("%Y-%m-%d %H:%M:%S");
    EXPECT_EQ(ADateTime(text).GetTime(), moment) << text.ToUtf8();
  }
}

TEST(ADateTime, ReadsBackTheRepeatedHourAsItsFirstShowing) {
  const ZoneGuard zone(Berlin);
  const ADateTime second(1130632200 + 3600);
  const AString text = second.ToString("%Y-%m-%d %H:%M:%S");
  EXPECT_EQ(text, AString("2005-10-30 02:30:00"));
  EXPECT_EQ(ADateTime(text).GetTime(), 1130632200);
}

TEST(ADateTime, NowIsWhatTimeSays) {
  const long before = static_cast<long>(std::time(nullptr));
  const long now = ADateTime::Now().GetTime();
  EXPECT_LE(before, now);
  EXPECT_LE(now, static_cast<long>(std::time(nullptr)));
}

TEST(ADateTime, StandsForNoTimeAtFirst) {
  EXPECT_EQ(ADateTime().GetTime(), 0);
}

}  // namespace
}  // namespace BaseSDK
