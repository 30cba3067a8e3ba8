#pragma once

#include <BaseSDK/AMemoryFileSystem.h>

namespace TestSupport {

using MemoryFileSystem = BaseSDK::AMemoryFileSystem;

}  // namespace TestSupport
