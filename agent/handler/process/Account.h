#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "agent/handler/job/JobError.h"

/// The user that a command runs as.
struct CAccount {
  std::string m_Name;
  std::string m_Home;
  std::string m_Shell;
  uid_t m_Uid = 0;
  gid_t m_Gid = 0;
  std::vector<gid_t> m_Groups;  ///< supplementary groups; only filled for an account to switch to
  bool m_Switch = false;        ///< whether the command has to change to it

  /// `user` empty: the agent's own. Throws CJobError for an unknown user, and for another user than
  /// the agent's own unless the agent is root.
  static CAccount Find(const std::string& user);
};
