#pragma once

#include <cstdint>

/// The plain 16 bytes of an identifier, numbers in the machine's byte order. Global, as C code
/// expects it.
struct UUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};

static_assert(sizeof(UUID) == 16);
