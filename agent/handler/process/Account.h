#pragma once

#include "agent/handler/job/JobError.h"

#include <sys/types.h>

#include <string>
#include <vector>

namespace NoxHandler {

/// The user that a command runs as.
struct Account {
  std::string m_Name;
  std::string m_Home;
  std::string m_Shell;
  uid_t m_Uid = 0;
  gid_t m_Gid = 0;
  std::vector<gid_t> m_Groups;  ///< supplementary groups; only filled for an account to switch to
  bool m_Switch = false;        ///< whether the command has to change to it

  /// `user` empty: the agent's own. Throws JobError for an unknown user, and for another user than
  /// the agent's own unless the agent is root.
  static Account Find(const std::string& user);
};

}  // namespace NoxHandler
