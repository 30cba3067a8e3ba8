#pragma once

/// The zones and spans of time that tests of schedules are about.
namespace TestSupport {

// Zones as rules, which need no zone files.
inline constexpr const char* Utc = "UTC0";
inline constexpr const char* NewYork = "EST5EDT,M3.2.0,M11.1.0";
inline constexpr const char* Berlin = "CET-1CEST,M3.5.0,M10.5.0/3";
inline constexpr const char* Dublin = "IST-1GMT0,M10.5.0,M3.5.0/1";  ///< winter is the odd season
inline constexpr const char* LordHowe = "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0";  ///< half an hour
inline constexpr const char* SaoPaulo = "<-03>3<-02>,M10.3.0/0,M2.3.0/0";        ///< skips midnight

// Seconds.
inline constexpr long Minute = 60;
inline constexpr long Hour = 3600;
inline constexpr long Day = 86400;

}  // namespace TestSupport
