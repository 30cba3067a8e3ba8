#pragma once

#include <array>
#include <bit>
#include <cstddef>

namespace TestSupport {

/// The slot of a virtual operation in its class's table of virtual functions, as the agent calls
/// it: a pointer to such a member holds the slot's place in the table.
template <class Class, class Result, class... Arguments>
std::ptrdiff_t SlotOf(Result (Class::*operation)(Arguments...)) {
  const auto parts = std::bit_cast<std::array<std::ptrdiff_t, 2>>(operation);
  return (parts[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

/// What stands in a slot of the object at that address.
template <class Function>
Function SlotAt(void* object, std::size_t slot) {
  return std::bit_cast<Function>((*static_cast<void***>(object))[slot]);
}

}  // namespace TestSupport
