// Task documents for simulations.
#pragma once

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/AString.h>

#include <string>

namespace NoxAgentTest {

inline std::string TriggerText(int type, const std::string& children,
                               const std::string& attributes = {}) {
  return "<Trigger Type=\"" + std::to_string(type) + "\" " + attributes + ">" + children +
         "</Trigger>";
}

inline std::string Begin(const std::string& begin) {
  return "<BeginDate>" + begin + "</BeginDate>";
}

inline std::string Element(const std::string& name, long value) {
  return "<" + name + ">" + std::to_string(value) + "</" + name + ">";
}

inline std::string TaskText(const std::string& triggers, const std::string& lastRun = {},
                            bool enabled = true) {
  const std::string history =
      lastRun.empty() ? "" : "<TaskHistory><RunTime>" + lastRun + "</RunTime></TaskHistory>";
  return std::string("<Task Enabled=\"") + (enabled ? "1" : "0") +
         "\"><HandlerCLSID>{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}</HandlerCLSID><Schedule>" +
         triggers + "</Schedule>" + history + "</Task>";
}

/// Seconds since the epoch of "2024-03-10 08:00:00" in the zone in force.
inline long Local(const std::string& time) {
  return BaseSDK::ADateTime(BaseSDK::AString::FromUtf8(time)).GetTime();
}

inline std::string Show(long seconds) {
  return BaseSDK::ADateTime(seconds).ToString("%Y-%m-%d %H:%M:%S %z").ToUtf8();
}

}  // namespace NoxAgentTest
