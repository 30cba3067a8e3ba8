#pragma once

#include <string>
#include <vector>

namespace NoxAgent {

/// What a job is to run, as it was typed.
struct NewJob {
  std::vector<std::string> m_Command;  ///< the program and its arguments
  std::string m_User, m_Directory, m_Timeout, m_Overlap;
  std::string m_Retry = "never";
  std::vector<std::string> m_Keys;       ///< "KEY=VALUE", any other key of a job
  std::vector<std::string> m_Variables;  ///< "NAME=VALUE"
};

/// The text of the job file. A command of one word that only a shell understands is handed to
/// /bin/sh; a path is made absolute. Throws CommandError (Usage) for what no job can have.
std::string WriteJob(const NewJob& job);

/// The command as people would type it.
std::string CommandWords(const NewJob& job);

}  // namespace NoxAgent
