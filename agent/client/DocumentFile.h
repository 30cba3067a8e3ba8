// Reads the documents that are named on the command line.
#pragma once

#include <BaseSDK/AString.h>

#include <istream>
#include <string>

namespace NoxAgent {

/// The text of the file, or of `standardInput` when `name` is "-". A document that is too large is
/// cut just behind the largest size, so that the check of the document finds it too large. Throws
/// CommandError (Usage) when it cannot be read.
BaseSDK::AString ReadDocument(const std::string& name, std::istream& standardInput);

}  // namespace NoxAgent
