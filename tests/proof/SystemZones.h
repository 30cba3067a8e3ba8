#pragma once

#include <string>
#include <vector>

/// The zones of the system's zone data by name: one name for each different file, links count once.
std::vector<std::string> SystemZones();
