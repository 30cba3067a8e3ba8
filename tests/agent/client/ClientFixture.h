// Whole runs of noxctl against an agent that answers from memory, on the 15th of June 2026.
#pragma once

#include "agent/client/Client.h"
#include "tests/agent/client/FakeAgent.h"
#include "tests/support/TempDir.h"

#include <VirtualTime/VirtualClock.h>
#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <sstream>

namespace NoxAgentTest {

using NoxAgent::Json;

constexpr long Now = 1781524800;  ///< 2026-06-15 12:00:00 UTC
constexpr const char* Handler =
    "<HandlerCLSID>{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}</HandlerCLSID>";

constexpr const char* NowTrigger = "<Trigger Type=\"-1\"/>";
constexpr const char* DeadTrigger = "<Trigger Type=\"6\"/>";
constexpr const char* WarnedTrigger = "<Trigger Type=\"-1\" KillAtEnd=\"yes\"/>";

inline std::string TaskXml(const std::string& trigger, const std::string& runTime = {},
                           const std::string& enabled = "1") {
  const std::string history =
      runTime.empty() ? "" : "<TaskHistory><RunTime>" + runTime + "</RunTime></TaskHistory>";
  return "<Task Enabled=\"" + enabled + "\">" + Handler + "<Schedule>" + trigger + "</Schedule>" +
         history + "</Task>";
}

class Client : public testing::Test {
 protected:
  Client() : m_Zone("CET-1CEST,M3.5.0,M10.5.0/3"), m_Agent((m_Dir / "s").string()) {
    VirtualTime::VirtualClock::Instance().Start(Now);
  }

  int Run(std::vector<std::string> arguments, const std::string& input = {}) {
    arguments.insert(arguments.begin(), {"--socket", (m_Dir / "s").string()});
    return RunAsGiven(arguments, input);
  }

  int RunAsGiven(const std::vector<std::string>& arguments, const std::string& input = {}) {
    std::istringstream in(input);
    m_Out.str("");
    m_Err.str("");
    return NoxAgent::RunClient(arguments, in, m_Out, m_Err);
  }

  std::string Out() const { return m_Out.str(); }
  std::string Err() const { return m_Err.str(); }
  Json JsonOut() const { return Json::Parse(Out()); }

  /// An error is one line that begins with the program's name.
  void ExpectError(const std::string& words) const {
    EXPECT_EQ(0U, Err().rfind("noxctl: ", 0)) << Err();
    EXPECT_EQ(Err().size() - 1, Err().find('\n')) << Err();
    EXPECT_NE(std::string::npos, Err().find(words)) << Err();
    EXPECT_EQ("", Out());
  }

  std::string FileWith(const std::string& text) {
    m_Dir.Write("task.xml", text);
    return (m_Dir / "task.xml").string();
  }

  VirtualTime::Zone m_Zone;
  TestSupport::TempDir m_Dir;
  FakeAgent m_Agent;

 private:
  std::ostringstream m_Out, m_Err;
};

}  // namespace NoxAgentTest
