#pragma once

#include <BaseSDK/AString.h>

#include <cstddef>
#include <cstdint>

/// One fuzz target: takes one input through what it tests and ends the process when something that
/// must always hold does not. The engine calls it, or the program that replays files. Always 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Called once before the first input: the log is quiet, the clock is virtual, the zone is UTC.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);

namespace Fuzz {

/// 2005-03-01 07:00:00 UTC, what the clock shows unless a target moves it.
constexpr long StartTime = 1109660400;

/// Ends the process with `rule`, which says what must always hold, unless `holds`.
void Require(bool holds, const char* rule);

/// The input as the bytes of a text; every sequence of bytes is one.
BaseSDK::AString Text(const std::uint8_t* data, std::size_t size);

}  // namespace Fuzz
