#include "agent/daemon/control/JsonMessage.h"

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>

#include "agent/daemon/control/RequestError.h"

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;
using Corvane::AgentInterfacesV3::AMsgReply;
using Corvane::AgentInterfacesV3::AMsgType;
using Corvane::AgentInterfacesV3::AMsgValue;
using Corvane::AgentInterfacesV3::AStringMap;
using nlohmann::json;

namespace NoxAgent {
namespace {

// Arguments are an object of plain values, and one of them may be a map: deeper is a mistake, or an
// attempt to make the agent hold a tree a hundred times the size of the request.
constexpr int kMaxDepth = 4;

RequestError BadJson(const AString& message) {
  return RequestError(HttpStatus::BadRequest, "bad-json", message);
}

RequestError Mistyped(const JsonMessage::Argument& argument, const AString& wanted) {
  return RequestError(
      HttpStatus::BadRequest, "mistyped-argument",
      AString("the argument \"%1\" is to be %2").Arg(AString::FromUtf8(argument.m_Name), wanted));
}

AString TextOf(const json& value) {
  return AString::FromUtf8(value.get_ref<const std::string&>());
}

AMsgValue DecodeLong(const json& value, const JsonMessage::Argument& argument) {
  const std::optional<long> number = JsonMessage::WholeNumber(value);
  if (!number.has_value()) {
    throw Mistyped(argument, "a whole number from -2147483648 to 2147483647");
  }
  return *number;
}

AMsgValue DecodeULong(const json& value, const JsonMessage::Argument& argument) {
  if (!value.is_number_unsigned() ||
      value.get<std::uint64_t>() > std::numeric_limits<std::uint32_t>::max()) {
    throw Mistyped(argument, "a whole number from 0 to 4294967295");
  }
  return static_cast<unsigned long>(value.get<std::uint64_t>());
}

AMsgValue DecodeMap(const json& value, const JsonMessage::Argument& argument) {
  AStringMap map;
  bool good = value.is_object();
  if (good) {
    for (const auto& [key, text] : value.items()) {
      good = good && text.is_string();
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

AMsgValue DecodeValue(const json& value, const JsonMessage::Argument& argument) {
  switch (argument.m_Type) {
    case AMsgType::Long:
      return DecodeLong(value, argument);
    case AMsgType::ULong:
      return DecodeULong(value, argument);
    case AMsgType::StringMap:
      return DecodeMap(value, argument);
    case AMsgType::Bool:
      if (value.is_boolean()) {
        return value.get<bool>();
      }
      throw Mistyped(argument, "true or false");
    case AMsgType::String:
      break;
  }
  if (!value.is_string()) {
    throw Mistyped(argument, "a string");
  }
  return TextOf(value);
}

void RefuseUnknown(const json& object, const JsonMessage::Operation& operation) {
  for (const auto& [key, value] : object.items()) {
    const JsonMessage::Argument* const argument = operation.Find(key);
    if (argument == nullptr || !argument->IsIn()) {
      throw RequestError(HttpStatus::BadRequest, "unexpected-argument",
                         AString("%1 takes no argument \"%2\"")
                             .Arg(AString::FromUtf8(operation.m_Name), AString::FromUtf8(key)));
    }
  }
}

json EncodeValue(const AMsgValue& value) {
  struct Visitor {
    json operator()(const AString& text) const { return text.ToUtf8(); }
    json operator()(const AStringMap& map) const {
      json object = json::object();
      for (const auto& [key, text] : map) {
        object[key.ToUtf8()] = text.ToUtf8();
      }
      return object;
    }
    json operator()(long number) const { return number; }
    json operator()(unsigned long number) const { return number; }
    json operator()(bool truth) const { return truth; }
  };
  return std::visit(Visitor(), value);
}

// The parser's words without the name that it gives its error in front of them.
AString WhyNotJson(const json::exception& error) {
  const std::string text = error.what();
  const std::size_t name = text.find("] ");
  return AString::FromUtf8(name == std::string::npos ? text : text.substr(name + 2));
}

}  // namespace

bool JsonMessage::IsHandle(const Argument& argument) {
  return argument.m_Type == AMsgType::ULong && argument.m_Name == "handle";
}

json JsonMessage::ParseObject(std::string_view body) {
  if (body.empty()) {
    return json::object();
  }
  const auto bounded = [](int depth, json::parse_event_t, json&) {
    if (depth > kMaxDepth) {
      throw BadJson("the body is nested too deeply");
    }
    return true;
  };
  json object;
  try {
    object = json::parse(body, bounded);
  } catch (const json::exception& error) {
    throw BadJson(AString("the body is not JSON: ") + WhyNotJson(error));
  }
  if (!object.is_object()) {
    throw BadJson("the body is to be a JSON object");
  }
  return object;
}

void JsonMessage::Decode(const json& object, const Operation& operation, AMsgIn& request) {
  RefuseUnknown(object, operation);
  for (const Argument& argument : operation.Arguments()) {
    if (!argument.IsIn() || IsHandle(argument)) {
      continue;
    }
    const auto found = object.find(argument.m_Name);
    if (found != object.end()) {
      request.Set(argument.m_Name, DecodeValue(*found, argument));
    } else if (!argument.m_Optional) {
      throw RequestError(
          HttpStatus::BadRequest, "missing-argument",
          AString("%1 needs the argument \"%2\"")
              .Arg(AString::FromUtf8(operation.m_Name), AString::FromUtf8(argument.m_Name)));
    }
  }
}

std::optional<long> JsonMessage::WholeNumber(const json& value) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (!value.is_number_integer() ||
      (value.is_number_unsigned() &&
       value.get<std::uint64_t>() > static_cast<std::uint64_t>(Limits::max()))) {
    return std::nullopt;
  }
  const auto number = value.get<std::int64_t>();
  if (number < Limits::min()) {
    return std::nullopt;
  }
  return static_cast<long>(number);
}

std::string JsonMessage::DecodeToken(const json& object, std::string_view name) {
  const auto found = object.find(name);
  if (found == object.end() || *found == 0) {
    return {};
  }
  if (!found->is_string()) {
    throw RequestError(HttpStatus::BadRequest, "mistyped-argument",
                       AString("the argument \"%1\" is to be the string that FindFirstTask gave")
                           .Arg(AString::FromUtf8(name)));
  }
  return found->get<std::string>();
}

json JsonMessage::Encode(const Operation& operation, const AMsgReply& reply) {
  json out = json::object();
  for (const auto& [name, value] : reply.Out()) {
    const Argument* const argument = operation.Find(name);
    if (argument == nullptr || !IsHandle(*argument)) {
      out[name] = EncodeValue(value);
    }
  }
  return {{"result", reply.Result()}, {"out", out}};
}

std::string JsonMessage::Dump(const json& value) {
  return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace NoxAgent
