#pragma once

#include <functional>

/// Runs a part of a test in a child process: its failures are printed as ever, and fail the test
/// here. For what visits many zones: the C library keeps every zone abbreviation that a process has
/// met and goes through all of them at each conversion of a time, slower with every zone.
void InOwnProcess(const std::function<void()>& body);
