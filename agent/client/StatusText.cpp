#include "agent/client/StatusText.h"

#include <chrono>
#include <sstream>

#include "agent/client/LocalTime.h"

namespace NoxAgent {

using nlohmann::json;

namespace {

std::string Plain(const json& object, const char* key) {
  const json value = object.value(key, json());
  if (value.is_null()) return "-";
  return value.is_string() ? value.get<std::string>() : value.dump();
}

long Number(const json& object, const char* key) {
  const json value = object.value(key, json());
  return value.is_number_integer() ? value.get<long>() : 0;
}

std::string Agent(const json& status) {
  return "noxagentd " + Plain(status, "version") + ", process " + Plain(status, "pid") + ", up " +
         DurationText(std::chrono::seconds(Number(status, "uptime"))) + " since " +
         LocalTimeText(Number(status, "startTime"));
}

std::string Config(const json& object) {
  const std::string config = Plain(object, "config");
  return config.empty() ? "built-in defaults" : config;
}

std::string Requests(const json& object) {
  return Plain(object, "requests") + ", " + Plain(object, "errors") + " of them with an error";
}

std::string Open(const json& status) {
  return "connections " + Plain(status, "connections") + ", streams " + Plain(status, "streams") +
         " (" + Plain(status, "droppedStreams") + " dropped so far), enumerations " +
         Plain(status, "enumerations");
}

void AppendPlugin(const json& plugin, std::ostream& out) {
  out << "\nplug-in " << Plain(plugin, "name") << ": " << Plain(plugin, "path")
      << "\n  configuration  " << Config(plugin) << "\n  requests       " << Requests(plugin)
      << '\n';
  std::istringstream report(Plain(plugin, "report"));
  for (std::string line; std::getline(report, line);)
    if (!line.empty()) out << "  " << line << '\n';
}

}  // namespace

std::string StatusText(const json& status) {
  std::ostringstream out;
  out << Agent(status) << "\nconfiguration  " << Config(status) << "\nstate          "
      << Plain(status, "stateDir") << "\nsocket         " << Plain(status, "socket")
      << "\nrequests       " << Requests(status) << "\nopen           " << Open(status)
      << "\nnotifications  " << Plain(status, "notifications") << '\n';
  const json plugins = status.value("plugins", json::array());
  for (const json& plugin : plugins) AppendPlugin(plugin, out);
  return out.str();
}

}  // namespace NoxAgent
