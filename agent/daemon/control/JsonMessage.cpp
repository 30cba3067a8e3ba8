#include "agent/daemon/control/JsonMessage.h"

#include "agent/daemon/control/RequestError.h"
#include "agent/library/Json.h"

#include <cstdint>
#include <limits>

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;
using Corvane::AgentInterfacesV3::AMsgReply;
using Corvane::AgentInterfacesV3::AMsgType;
using Corvane::AgentInterfacesV3::AMsgValue;
using Corvane::AgentInterfacesV3::AStringMap;
namespace NoxAgent {
namespace {

// Arguments are an object of plain values, and one of them may be a map: deeper is a mistake, or an
// attempt to make the agent hold a tree a hundred times the size of the request.
constexpr std::size_t MaxDepth = 4;

RequestError BadJson(const AString& message) {
  return RequestError(HttpStatus::BadRequest, "bad-json", message);
}

RequestError Mistyped(const JsonMessage::Argument& argument, const AString& wanted) {
  return RequestError(
      HttpStatus::BadRequest, "mistyped-argument",
      AString("the argument \"%1\" is to be %2").Arg(AString::FromUtf8(argument.m_Name), wanted));
}

AString TextOf(const Json& value) {
  return AString::FromUtf8(value.Text());
}

AMsgValue DecodeLong(const Json& value, const JsonMessage::Argument& argument) {
  const std::optional<long> number = JsonMessage::WholeNumber(value);
  if (!number.has_value()) {
    throw Mistyped(argument, "a whole number from -2147483648 to 2147483647");
  }
  return *number;
}

AMsgValue DecodeULong(const Json& value, const JsonMessage::Argument& argument) {
  if (!value.IsWhole() || value.Whole() < 0 ||
      value.Whole() > std::numeric_limits<std::uint32_t>::max()) {
    throw Mistyped(argument, "a whole number from 0 to 4294967295");
  }
  return static_cast<unsigned long>(value.Whole());
}

AMsgValue DecodeMap(const Json& value, const JsonMessage::Argument& argument) {
  AStringMap map;
  bool good = value.IsObject();
  if (good) {
    for (const auto& [key, text] : value.Members()) {
      good = good && text.IsText();
      if (good) {
        map[AString::FromUtf8(key)] = TextOf(text);
      }
    }
  }
  if (!good) {
    throw Mistyped(argument, "an object whose values are strings");
  }
  return map;
}

AMsgValue DecodeValue(const Json& value, const JsonMessage::Argument& argument) {
  switch (argument.m_Type) {
    case AMsgType::Long:
      return DecodeLong(value, argument);
    case AMsgType::ULong:
      return DecodeULong(value, argument);
    case AMsgType::StringMap:
      return DecodeMap(value, argument);
    case AMsgType::Bool:
      if (value.IsBool()) {
        return value.Bool();
      }
      throw Mistyped(argument, "true or false");
    case AMsgType::String:
      break;
  }
  if (!value.IsText()) {
    throw Mistyped(argument, "a string");
  }
  return TextOf(value);
}

void RefuseUnknown(const Json& object, const JsonMessage::Operation& operation) {
  for (const auto& [key, value] : object.Members()) {
    const JsonMessage::Argument* const argument = operation.Find(key);
    if (argument == nullptr || !argument->IsIn()) {
      throw RequestError(HttpStatus::BadRequest, "unexpected-argument",
                         AString("%1 takes no argument \"%2\"")
                             .Arg(AString::FromUtf8(operation.m_Name), AString::FromUtf8(key)));
    }
  }
}

Json EncodeValue(const AMsgValue& value) {
  struct Visitor {
    Json operator()(const AString& text) const { return text.ToUtf8(); }
    Json operator()(const AStringMap& map) const { return JsonMessage::EncodeMap(map); }
    Json operator()(long number) const { return number; }
    Json operator()(unsigned long number) const { return number; }
    Json operator()(bool truth) const { return truth; }
  };
  return std::visit(Visitor(), value);
}

}  // namespace

bool JsonMessage::IsHandle(const Argument& argument) {
  return argument.m_Type == AMsgType::ULong && argument.m_Name == "handle";
}

Json JsonMessage::ParseObject(std::string_view body) {
  if (body.empty()) {
    return Json::Object{};
  }
  Json object;
  try {
    object = Json::Parse(body, MaxDepth);
  } catch (const JsonError& error) {
    throw BadJson(AString("the body is not JSON: ") + AString::FromUtf8(error.what()));
  }
  if (!object.IsObject()) {
    throw BadJson("the body is to be a JSON object");
  }
  return object;
}

void JsonMessage::Decode(const Json& object, const Operation& operation, AMsgIn& request) {
  RefuseUnknown(object, operation);
  for (const Argument& argument : operation.Arguments()) {
    if (!argument.IsIn() || IsHandle(argument)) {
      continue;
    }
    const Json* const found = object.Find(argument.m_Name);
    if (found != nullptr) {
      request.Set(argument.m_Name, DecodeValue(*found, argument));
    } else if (!argument.m_Optional) {
      throw RequestError(
          HttpStatus::BadRequest, "missing-argument",
          AString("%1 needs the argument \"%2\"")
              .Arg(AString::FromUtf8(operation.m_Name), AString::FromUtf8(argument.m_Name)));
    }
  }
}

std::optional<long> JsonMessage::WholeNumber(const Json& value) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (!value.IsWhole() || value.Whole() < Limits::min() || value.Whole() > Limits::max()) {
    return std::nullopt;
  }
  return static_cast<long>(value.Whole());
}

std::string JsonMessage::DecodeToken(const Json& object, std::string_view name) {
  const Json* const found = object.Find(name);
  if (found == nullptr || *found == 0) {
    return {};
  }
  if (!found->IsText()) {
    throw RequestError(HttpStatus::BadRequest, "mistyped-argument",
                       AString("the argument \"%1\" is to be the string that FindFirstTask gave")
                           .Arg(AString::FromUtf8(name)));
  }
  return found->Text();
}

Json JsonMessage::Encode(const Operation& operation, const AMsgReply& reply) {
  Json out = Json::Object{};
  for (const auto& [name, value] : reply.Out()) {
    const Argument* const argument = operation.Find(name);
    if (argument == nullptr || !IsHandle(*argument)) {
      out[name] = EncodeValue(value);
    }
  }
  return {{"result", reply.Result()}, {"out", out}};
}

Json JsonMessage::EncodeMap(const AStringMap& map) {
  Json object = Json::Object{};
  for (const auto& [key, text] : map) {
    object[key.ToUtf8()] = text.ToUtf8();
  }
  return object;
}

std::string JsonMessage::Dump(const Json& value) {
  return value.Dump();
}

}  // namespace NoxAgent
