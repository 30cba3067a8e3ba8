#pragma once

#include "tests/agent/daemon/journal/JournalUser.h"

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace NoxAgent {

/// A random run: several lives of an agent that change a handful of files, with failing calls,
/// somebody else's changes, kills and power cuts. A seed gives the same run each time.
class JournalRun {
 public:
  explicit JournalRun(std::uint64_t seed);
  /// Returns what was broken; empty when every promise was kept.
  std::string Perform();

 private:
  unsigned Draw(unsigned bound) { return static_cast<unsigned>(m_Random() % bound); }
  bool Throw(unsigned percent) { return Draw(100) < percent; }
  std::string DrawName();
  std::string DrawContent(const std::string& name);
  std::string OlderContent(const std::string& name);
  std::optional<CrashDisk::Loss> DrawLoss();

  void Live();
  void Start();
  void MakeTrouble();
  void Step();
  void Change();
  void ReplaceMany();
  void ActAsOther();

  std::mt19937_64 m_Random;
  JournalUser m_User;
  const unsigned m_BigPercent;
  const bool m_HasOther;
  const bool m_HasTrouble;
  std::vector<std::string> m_Invented;
  std::map<std::string, std::vector<std::string>> m_Contents;  ///< all there were, by name
  unsigned m_Count = 0;
};

}  // namespace NoxAgent
