#pragma once

#include <string>
#include <vector>

namespace NoxAgent {

/// Why a program with these arguments is not what was meant, if only a shell could run them: a word
/// is an operator of the shell's, or the command is one that no program has. With what to write
/// instead; empty when there is nothing to say. There is a first word.
std::string FaultOfShellWords(const std::vector<std::string>& words);

}  // namespace NoxAgent
