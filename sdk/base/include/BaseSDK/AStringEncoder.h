#pragma once

#include <BaseSDK/AString.h>

#include <cstddef>
#include <string>

namespace BaseSDK {

/// A string's bytes for as long as the encoder lives: `Sys::Open(AStringEncoder(name,
/// AStringEncoder::Local).c_str(), ...)`.
class AStringEncoder {
 public:
  enum Encoding {
    Local,  ///< For the system's calls. File names are UTF-8 whatever the locale says.
    Utf8,
  };

  AStringEncoder(const AString& text, Encoding encoding);

  /// Ended by a zero byte, which Size() does not count.
  const char* c_str() const { return m_Bytes.c_str(); }
  std::size_t Size() const { return m_Bytes.size(); }

 private:
  std::string m_Bytes;
};

}  // namespace BaseSDK
