#pragma once

#include <map>

namespace BaseSDK::Container {

/// The ordered map that crosses interfaces; `Less` orders the keys (for strings ALtstr).
template <class Key, class Value, class Less>
using AMap = std::map<Key, Value, Less>;

}  // namespace BaseSDK::Container
