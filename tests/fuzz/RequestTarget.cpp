// The bytes of a connection to the control socket, up to an object behind its message queue.
#include "agent/daemon/AgentThread.h"
#include "agent/daemon/control/Api.h"
#include "agent/daemon/control/ControlServer.h"
#include "agent/daemon/control/EnumerationHandles.h"
#include "agent/daemon/control/FilesRoute.h"
#include "agent/daemon/control/OperationRoute.h"
#include "agent/daemon/plugins/NotificationCenter.h"
#include "agent/daemon/plugins/Plugins.h"
#include "agent/daemon/store/TaskStore.h"
#include "agent/library/Json.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/support/TempDir.h"

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/field.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include <filesystem>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

using namespace NoxAgent;
using BaseSDK::AString;
namespace http = boost::beast::http;
using Fuzz::Require;
namespace {

/// The agent without its socket; its one plug-in answers everything, and is the scheduler of a
/// directory without task files.
struct World {
  World() : m_Plugin(std::make_shared<Plugin>(Settings(), 1)) {
    const auto path = [this](const char* name) {
      return AString::FromUtf8((m_Dir / name).string());
    };
    std::filesystem::create_directory(m_Dir / "tasks");
    m_Store.Guard({Settings().m_Name, path("tasks"), ".vsk", path("refused"), path("journal")});
    m_Plugin->Load(PatienceMilliseconds);
    m_Plugins.Add(m_Plugin);
  }
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  ~World() {
    m_Plugins.Remove(*m_Plugin);
    (void)m_Plugin->CloseQueue(PatienceMilliseconds);
    (void)m_Plugin->Unload();
  }

  static constexpr unsigned long PatienceMilliseconds = 10000;
  static PluginSettings Settings() {
    return {"p", NOX_ANSWERING_PLUGIN, {}, "{11111111-2222-3333-4444-555555555555}"};
  }

  TestSupport::TempDir m_Dir;
  TaskReturns m_Returns;
  TaskStore m_Store;
  std::shared_ptr<Plugin> m_Plugin;
  Plugins m_Plugins;
  AgentThread m_Thread;
  NotificationCenter m_Notifications{m_Thread, m_Plugins};
  EnumerationHandles m_Handles;
  OperationRoute m_Operations{m_Plugins, m_Notifications, m_Handles, m_Store, m_Returns};
  FilesRoute m_Files{m_Store, m_Operations};
  TasksRoute m_Tasks{m_Plugins, m_Store, m_Operations, m_Returns};
  DisableRoute m_Disable{m_Plugins, m_Store, m_Returns};
  Api m_Api{
      m_Operations,    m_Files,
      m_Tasks,         m_Disable,
      m_Notifications, {[](bool) { return Json::Object{}; }, [] { return SettingChanges(); }}};
};

/// A request that does not say how long its body is gets the right length: with one of its own
/// nearly every mutation would end at the wrong length.
std::string WithLength(std::string request) {
  const std::size_t end = request.find("\r\n\r\n");
  if (end != std::string::npos) {
    const std::size_t bodySize = request.size() - end - 4;
    request.insert(end, "\r\nContent-Length: " + std::to_string(bodySize));
  }
  return request;
}

/// As the control session reads one; nothing when it answers with an error of its own.
std::optional<ApiRequest> Parse(std::string_view bytes) {
  http::request_parser<http::string_body> parser;
  parser.header_limit(ControlServer::MaxHeaderBytes);
  parser.body_limit(ControlServer::MaxBodyBytes);
  parser.eager(true);
  boost::system::error_code error;
  while (!parser.is_done() && !bytes.empty() && !error) {
    bytes.remove_prefix(parser.put(boost::asio::buffer(bytes), error));
  }
  if (!parser.is_done()) {
    return std::nullopt;
  }
  auto& message = parser.get();
  return ApiRequest{std::string(message.method_string()), std::string(message.target()),
                    std::move(message.body()), Caller{0, true}};
}

void RequireLines(const BodyParts& parts) {
  for (std::string part = parts(); !part.empty(); part = parts()) {
    std::istringstream lines(part);
    for (std::string line; std::getline(lines, line);) {
      Require(Json::Parse(line).IsObject(), "each line of a list is a JSON object");
    }
  }
}

void RequireAnswer(const ApiResponse& answer) {
  Require((answer.m_Status >= 200 && answer.m_Status < HttpStatus::Internal) ||
              answer.m_Status == HttpStatus::Unavailable,
          "a request gets a result or is told what is wrong with it");
  if (answer.m_IsStream) {
    return;
  }
  if (answer.m_Parts) {
    RequireLines(answer.m_Parts);
    return;
  }
  const Json body = Json::Parse(answer.m_Body);
  Require(body.IsObject(), "an answer is a JSON object");
  if (answer.m_Status != HttpStatus::Ok) {
    Require(body["error"]["code"].IsText() && body["error"]["message"].IsText(),
            "an error has a code and a message");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static World world;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  for (const std::string& request : {bytes, WithLength(bytes)}) {
    if (const auto parsed = Parse(request)) {
      RequireAnswer(world.m_Api.Handle(*parsed));
    }
  }
  world.m_Handles.CloseAll();
  return 0;
}
