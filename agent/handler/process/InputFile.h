#pragma once

#include "agent/handler/system/FileDescriptor.h"

#include <string_view>

namespace NoxHandler {

/// What a command reads on its standard input.
struct InputFile {
  /// A descriptor for reading that yields these bytes and then the end. They are in memory, so
  /// nobody has to feed the command while it runs. Empty when the system refuses; errno says why.
  static FileDescriptor Make(std::string_view bytes);
};

}  // namespace NoxHandler
