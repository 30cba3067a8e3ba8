// What may stand next on a command line of noxctl: the shells' completions ask for it, so that no
// list of commands and options has to be kept for each of them.
#pragma once

#include "agent/client/CommandContext.h"
#include "agent/library/CommandLine.h"

#include <string>
#include <vector>

namespace NoxAgent {

/// The first word of such a question: "noxctl __complete WORD...".
constexpr const char* CompletionCommand = "__complete";

/// Prints what the last of `words` may become, a line each; of "--option=VALUE" the value alone.
/// The lines ":files" and ":directories" stand for those that the shell finds. `words` are those
/// behind the program's name up to the cursor; the last one may be empty, and the agent is looked
/// for by the others. Nothing comes of words that nobody could mean, or when no agent answers.
void Complete(const CommandLine& line, const std::vector<std::string>& words,
              CommandContext& context);

}  // namespace NoxAgent
