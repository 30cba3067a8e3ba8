#pragma once

#include <BaseSDK/AString.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NoxHandler {

/// Splits a job's "arguments" into words at blanks. Quotes group: within '...' every character
/// stands for itself; within "..." and outside of quotes a backslash makes the next character stand
/// for itself. Nothing is expanded. Empty when a quote is not closed or a backslash ends the text.
std::optional<std::vector<std::string>> SplitWords(std::string_view text);

/// The text that SplitWords makes these words of. A word must not have a line break in it.
std::string JoinWords(const std::vector<std::string>& words);

/// The parts of the text between its blanks, with nothing special in it.
std::vector<BaseSDK::AString> BlankSeparated(const BaseSDK::AString& text);

/// Whether the text begins or ends with a blank, which a value of a job file does not keep.
bool HasOuterBlanks(std::string_view text);

}  // namespace NoxHandler
