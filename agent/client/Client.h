// All of noxctl but its process, so that tests can run it too.
#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <vector>

namespace NoxAgent {

/// Runs the command that `arguments` ask for, the words behind the program's name. Returns one of
/// the numbers of ExitCode.
int RunClient(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
              std::ostream& err);

}  // namespace NoxAgent
