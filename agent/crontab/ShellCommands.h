#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace NoxAgent {

/// The simple commands in a line for the shell, each as its words: `cd / && ls -l "$a b" | wc` has
/// {cd, /}, {ls, -l, $a b} and {wc}. Quotes are taken off, redirections and what is between $( and
/// ) or between backquotes left out; nothing is expanded. It is a rough reading, good for finding a
/// name and for nothing more: shell syntax that it does not know yields odd words.
std::vector<std::vector<std::string>> ListShellCommands(std::string_view line);

}  // namespace NoxAgent
