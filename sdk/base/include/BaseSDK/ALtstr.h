#pragma once

#include <BaseSDK/AString.h>

namespace BaseSDK {

/// The order of strings in the kit's containers: that of code points, upper before lower case.
struct ALtstr {
  bool operator()(const AString& left, const AString& right) const { return left < right; }
};

}  // namespace BaseSDK
