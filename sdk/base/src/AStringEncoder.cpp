#include <BaseSDK/AStringEncoder.h>

namespace BaseSDK {

AStringEncoder::AStringEncoder(const AString& text, Encoding) : m_Bytes(text.ToUtf8()) {}

}  // namespace BaseSDK
