#include "agent/client/StatusText.h"

#include "agent/client/LocalTime.h"

#include <chrono>
#include <sstream>

namespace NoxAgent {

namespace {

std::string Plain(const Json& object, const char* key) {
  const Json* const value = object.Find(key);
  if (value == nullptr || value->IsNull()) {
    return "-";
  }
  return value->IsText() ? value->Text() : value->Dump();
}

long Number(const Json& object, const char* key) {
  const Json* const value = object.Find(key);
  return value != nullptr && value->IsWhole() ? static_cast<long>(value->Whole()) : 0;
}

std::string Agent(const Json& status) {
  return "noxagentd " + Plain(status, "version") + ", process " + Plain(status, "pid") + ", up " +
         DurationText(std::chrono::seconds(Number(status, "uptime"))) + " since " +
         LocalTimeText(Number(status, "startTime"));
}

std::string Config(const Json& object) {
  const std::string config = Plain(object, "config");
  return config.empty() ? "built-in defaults" : config;
}

std::string Requests(const Json& object) {
  return Plain(object, "requests") + ", " + Plain(object, "errors") + " of them with an error";
}

std::string Open(const Json& status) {
  return "connections " + Plain(status, "connections") + ", streams " + Plain(status, "streams") +
         " (" + Plain(status, "droppedStreams") + " dropped so far), enumerations " +
         Plain(status, "enumerations");
}

std::string Tasks(const Json& status) {
  const Json* const tasks = status.Find("tasks");
  if (tasks == nullptr || !tasks->Has("loaded")) {
    return {};
  }
  std::string text = "tasks          " + Plain(*tasks, "loaded") + " loaded";
  if (status.Has("nextReading")) {
    text += ", their files are read again by " + LocalTimeText(Number(status, "nextReading"));
  }
  return text + '\n';
}

std::string TaskFiles(const Json& status) {
  const Json* const files = status.Find("taskFiles");
  return files == nullptr ? std::string()
                          : "task files     written " + Plain(*files, "written") + " times with " +
                                Plain(*files, "flushes") + " flushes to the disk\n";
}

std::string RefusedFiles(const Json& status) {
  const long count = Number(status, "refusedFiles");
  return count == 0 ? std::string()
                    : "refused files  " + std::to_string(count) + "; noxctl files tells more\n";
}

void AppendPlugin(const Json& plugin, std::ostream& out) {
  out << "\nplug-in " << Plain(plugin, "name") << ": " << Plain(plugin, "path")
      << "\n  configuration  " << Config(plugin) << "\n  requests       " << Requests(plugin)
      << '\n';
  std::istringstream report(Plain(plugin, "report"));
  for (std::string line; std::getline(report, line);) {
    if (!line.empty()) {
      out << "  " << line << '\n';
    }
  }
}

}  // namespace

std::string StatusText(const Json& status) {
  std::ostringstream out;
  out << Agent(status) << "\nconfiguration  " << Config(status) << "\nstate          "
      << Plain(status, "stateDir") << "\nsocket         " << Plain(status, "socket")
      << "\nrequests       " << Requests(status) << "\nopen           " << Open(status)
      << "\nnotifications  " << Plain(status, "notifications") << '\n'
      << "time zone      " << Plain(status, "zoneName") << '\n'
      << Tasks(status) << TaskFiles(status) << RefusedFiles(status);
  for (const Json& plugin : status.Items("plugins")) {
    AppendPlugin(plugin, out);
  }
  return out.str();
}

}  // namespace NoxAgent
