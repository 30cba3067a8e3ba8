#pragma once

#include <cstddef>
#include <cstring>

// A member function is called with its object first, which the check that a function is called with
// the type it was defined with does not know.
#if defined(__clang__)
#define NOX_CALLS_RAW_SLOT __attribute__((no_sanitize("function")))
#else
#define NOX_CALLS_RAW_SLOT
#endif

/// Calls virtual functions by their place in the table, as a caller that was built against other
/// headers of the same layout does. References are passed as pointers.
namespace RawSlots {

/// Calls slot `slot` of the table that the first word of `object` points to.
template <class Result, class... Arguments>
NOX_CALLS_RAW_SLOT Result Call(void* object, std::size_t slot, Arguments... arguments) {
  const void* const* table = nullptr;
  std::memcpy(&table, object, sizeof table);
  Result (*function)(void*, Arguments...) = nullptr;
  std::memcpy(&function, &table[slot], sizeof function);
  return function(object, arguments...);
}

}  // namespace RawSlots
