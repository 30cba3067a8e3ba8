// Tells what may stand next on a command line of noxctl. The shells' completions ask for it, so no
// shell needs a list of commands and options of its own.
#pragma once

#include "agent/client/CommandContext.h"
#include "agent/library/CommandLine.h"

#include <string>
#include <vector>

namespace NoxAgent {

/// The first word of such a question: "noxctl __complete WORD...".
constexpr const char* CompletionCommand = "__complete";

/// Prints what the last of `words` may become, a line each; of "--option=VALUE" the value alone.
/// The lines ":files" and ":directories" stand for the names that the shell finds. `words` are
/// those behind the program's name up to the cursor; the last one may be empty. The other words may
/// hold options that say which agent to ask for task IDs. Prints nothing for words that make no
/// sense, and no IDs when no agent answers.
void Complete(const CommandLine& line, const std::vector<std::string>& words,
              CommandContext& context);

}  // namespace NoxAgent
