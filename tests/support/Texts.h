// A list of texts, as tests compare it: a test that fails prints it as it reads.
#pragma once

#include <string>
#include <vector>

namespace TestSupport {

using Texts = std::vector<std::string>;

}  // namespace TestSupport
