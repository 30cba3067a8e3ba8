// The whole of noxctl but its process: arguments in, texts and an exit code out.
#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <vector>

namespace NoxAgent {

/// `arguments` are those behind the program's name. Returns one of the numbers of ExitCode.
int RunClient(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
              std::ostream& err);

}  // namespace NoxAgent
