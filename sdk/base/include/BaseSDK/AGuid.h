#pragma once

#include <BaseSDK/AString.h>
#include <BaseSDK/UUID.h>

namespace BaseSDK {

/// An identifier of an interface or a class, written "{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}".
class AGuid {
 public:
  /// All zero, which is not valid.
  AGuid() = default;
  explicit AGuid(const UUID& uuid) : m_Uuid(uuid) {}
  /// The form above, in either case, with or without the braces. Any other text makes it all zero.
  explicit AGuid(const char* text);
  explicit AGuid(const AString& text);

  /// Below, equal to or above 0, in the order of the written form.
  int Compare(const AGuid& other) const;
  friend bool operator==(const AGuid& left, const AGuid& right) { return left.Compare(right) == 0; }

  /// With braces, in upper case.
  AString ToString() const;
  /// Any but all zero.
  bool IsValid() const;
  const UUID& Value() const { return m_Uuid; }

 private:
  UUID m_Uuid{};
};

}  // namespace BaseSDK
