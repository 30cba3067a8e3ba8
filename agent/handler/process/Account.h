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

  /// The account of `user`; when that is empty, of the user that the agent runs as. Throws JobError
  /// when there is no such user, and when it is another user but the agent is not root.
  static Account Find(const std::string& user);
};

}  // namespace NoxHandler
