#include "agent/library/Json.h"

#include <limits>

namespace NoxAgent {

namespace {

template <typename Kind, typename Value>
auto& Get(Value& value, const char* wanted) {
  auto* const found = std::get_if<Kind>(&value);
  if (found == nullptr) {
    throw JsonError(std::string("a value is not ") + wanted);
  }
  return *found;
}

}  // namespace

Json::Json(std::initializer_list<Member> members) : m_Value(Object()) {
  for (const Member& member : members) {
    (*this)[member.m_Name] = member.m_Value;
  }
}

Json::Json(const std::vector<std::string>& texts) : m_Value(List(texts.begin(), texts.end())) {}

Json::Json(const std::map<std::string, std::string>& texts)
    : m_Value(Object(texts.begin(), texts.end())) {}

bool Json::Bool() const {
  return Get<bool>(m_Value, "true or false");
}

std::int64_t Json::Whole() const {
  return Get<std::int64_t>(m_Value, "a whole number");
}

long Json::Long() const {
  using Limits = std::numeric_limits<std::int32_t>;
  const std::int64_t number = Whole();
  if (number < Limits::min() || number > Limits::max()) {
    throw JsonError("a number is beyond 32 bits: " + std::to_string(number));
  }
  return static_cast<long>(number);
}

double Json::Number() const {
  return IsWhole() ? static_cast<double>(Whole()) : Get<double>(m_Value, "a number");
}

const std::string& Json::Text() const {
  return Get<std::string>(m_Value, "a text");
}

const Json::List& Json::Items() const {
  return Get<List>(m_Value, "a list");
}

const Json::Object& Json::Members() const {
  return Get<Object>(m_Value, "an object");
}

const Json* Json::Find(std::string_view name) const {
  const auto* const object = std::get_if<Object>(&m_Value);
  if (object == nullptr) {
    return nullptr;
  }
  const auto found = object->find(name);
  return found == object->end() ? nullptr : &found->second;
}

const Json& Json::At(std::string_view name) const {
  const Json* const found = Find(name);
  if (found == nullptr) {
    throw JsonError("there is no \"" + std::string(name) + '"');
  }
  return *found;
}

bool Json::Bool(std::string_view name, bool fallback) const {
  const Json* const found = Find(name);
  return found == nullptr ? fallback : found->Bool();
}

long Json::Long(std::string_view name, long fallback) const {
  const Json* const found = Find(name);
  return found == nullptr ? fallback : found->Long();
}

std::string Json::Text(std::string_view name, std::string_view fallback) const {
  const Json* const found = Find(name);
  return found == nullptr ? std::string(fallback) : found->Text();
}

const Json::List& Json::Items(std::string_view name) const {
  static const List None;
  const Json* const found = Find(name);
  return found == nullptr ? None : found->Items();
}

Json& Json::operator[](const std::string& name) {
  if (IsNull()) {
    m_Value = Object();
  }
  return Get<Object>(m_Value, "an object")[name];
}

const Json& Json::At(std::size_t index) const {
  const List& items = Items();
  if (index >= items.size()) {
    throw JsonError("a list has no item " + std::to_string(index));
  }
  return items[index];
}

Json& Json::Append(Json item) {
  if (IsNull()) {
    m_Value = List();
  }
  return Get<List>(m_Value, "a list").emplace_back(std::move(item));
}

bool Json::operator==(const Json& other) const {
  return m_Value == other.m_Value;
}

}  // namespace NoxAgent
