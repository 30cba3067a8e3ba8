#pragma once

#include <BaseSDK/AString.h>

#include <string>

namespace NoxHandler {

/// Reads what a command is to find on its standard input: the text with "\n" for the end of a line,
/// "\t" for a tab stop and "\\" for a backslash, at most 32 KiB of UTF-8. The reason when the text
/// will not do, else empty; `input` is untouched then.
BaseSDK::AString ReadInputText(const BaseSDK::AString& text, std::string& input);

}  // namespace NoxHandler
