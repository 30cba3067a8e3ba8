#include <BaseSDK/AResult.h>

namespace BaseSDK {

unsigned long ResultFromErrno(int error) {
  return error == 0 ? 0 : ResultErrnoBase | (static_cast<unsigned long>(error) & 0xFFFFUL);
}

int ErrnoFromResult(unsigned long result) {
  return (result & 0xFFFF0000UL) == ResultErrnoBase ? static_cast<int>(result & 0xFFFFUL) : 0;
}

}  // namespace BaseSDK
