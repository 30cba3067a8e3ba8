#pragma once

#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace NoxAgent {

/// A text is not JSON, or a value is not what the caller asked for. what() names the place.
class JsonError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A JSON value: nothing (null), a truth, a number, a text in UTF-8, a list or an object.
///
///     Json answer = {{"result", 1}, {"out", {{"taskId", id}}}};
///     answer["warnings"] = Json::List{"late", "cut"};
///     const std::string text = answer.Dump();
///     const std::string id = Json::Parse(text).At("out").At("taskId").Text();
///
/// Braces around pairs of a name and a value make an object. A library does the reading
/// and writing, in one source file; this header is light, because many files include it. One thread
/// at a time.
class Json {
 public:
  struct Member;
  using List = std::vector<Json>;
  /// Ordered by name.
  using Object = std::map<std::string, Json, std::less<>>;

  Json() = default;
  Json(std::nullptr_t) {}
  Json(bool value) : m_Value(value) {}
  Json(int value) : m_Value(std::int64_t{value}) {}
  Json(long value) : m_Value(std::int64_t{value}) {}
  Json(long long value) : m_Value(std::int64_t{value}) {}
  Json(unsigned value) : m_Value(std::int64_t{value}) {}
  /// Counts are below 2^63.
  Json(unsigned long value) : m_Value(static_cast<std::int64_t>(value)) {}
  Json(unsigned long long value) : m_Value(static_cast<std::int64_t>(value)) {}
  Json(double value) : m_Value(value) {}
  Json(const char* text) : m_Value(std::string(text)) {}
  Json(std::string text) : m_Value(std::move(text)) {}
  Json(std::string_view text) : m_Value(std::string(text)) {}
  Json(List list) : m_Value(std::move(list)) {}
  Json(Object object) : m_Value(std::move(object)) {}
  Json(std::initializer_list<Member> members);
  Json(const std::vector<std::string>& texts);
  Json(const std::map<std::string, std::string>& texts);
  /// Without this, any pointer would pass for a truth.
  /// Null when there is no value.
  template <typename T>
  Json(const std::optional<T>& value) : Json(value ? Json(*value) : Json()) {}
  Json(const void*) = delete;

  bool IsNull() const { return std::holds_alternative<std::nullptr_t>(m_Value); }
  bool IsBool() const { return std::holds_alternative<bool>(m_Value); }
  bool IsWhole() const { return std::holds_alternative<std::int64_t>(m_Value); }
  bool IsText() const { return std::holds_alternative<std::string>(m_Value); }
  bool IsList() const { return std::holds_alternative<List>(m_Value); }
  bool IsObject() const { return std::holds_alternative<Object>(m_Value); }

  // The value as what it is; each throws JsonError when it is something else.

  bool Bool() const;
  std::int64_t Whole() const;
  /// A whole number in the signed 32-bit range.
  long Long() const;
  /// Any number.
  double Number() const;
  const std::string& Text() const;
  const List& Items() const;
  const Object& Members() const;

  // The members of an object.

  /// Null when there is nothing of the name, or when this is no object.
  const Json* Find(std::string_view name) const;
  bool Has(std::string_view name) const { return Find(name) != nullptr; }
  /// JsonError when there is nothing of the name.
  const Json& At(std::string_view name) const;
  /// What is under the name; `fallback` when there is nothing. JsonError when it is something else.
  bool Bool(std::string_view name, bool fallback) const;
  long Long(std::string_view name, long fallback) const;
  std::string Text(std::string_view name, std::string_view fallback) const;
  /// The list under the name; an empty one when there is nothing.
  const List& Items(std::string_view name) const;
  const Json& operator[](const std::string& name) const { return At(name); }
  /// For writing; null becomes an object first. JsonError for anything else.
  Json& operator[](const std::string& name);
  /// Use At for lists. Without this, 0 would pass for a name.
  Json& operator[](int index) const = delete;

  /// An item of a list; JsonError when there are fewer.
  const Json& At(std::size_t index) const;
  /// Adds to a list and returns what was added; null becomes a list first. JsonError for anything
  /// else.
  Json& Append(Json item);

  bool operator==(const Json& other) const;

  /// How many lists and objects may lie within each other in a text that is parsed.
  static constexpr std::size_t MaxDepth = 64;

  /// JsonError for a text that is no JSON or is nested deeper than `maxDepth`. Of two members of
  /// one name the later one counts. A whole number beyond 63 bits becomes one with a fraction.
  static Json Parse(std::string_view text, std::size_t maxDepth = MaxDepth);

  enum class Charset { Utf8, Ascii };
  /// On one line without blanks; or, with `indent` of 1 and more, laid out for people. Bytes that
  /// are not UTF-8 become U+FFFD. With Ascii every other character is written as an escape.
  std::string Dump(unsigned indent = 0, Charset charset = Charset::Utf8) const;

 private:
  std::variant<std::nullptr_t, bool, std::int64_t, double, std::string, List, Object> m_Value;
};

/// On one line.
std::ostream& operator<<(std::ostream& out, const Json& value);

struct Json::Member {
  std::string m_Name;
  Json m_Value;
};

}  // namespace NoxAgent
