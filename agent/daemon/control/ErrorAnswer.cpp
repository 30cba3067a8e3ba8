#include "agent/daemon/control/ErrorAnswer.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/process/AgentLog.h"

using BaseSDK::AString;

namespace NoxAgent {

RequestError CaughtError(const AString& request) {
  try {
    throw;
  } catch (const RequestError& error) {
    return error;
  } catch (const AgentError& error) {
    return RequestError(HttpStatus::Unprocessable, "refused", error.what());
  } catch (const std::exception& error) {
    ALOG(AgentLog(), BaseSDK::ALogger::Error, "Api",
         AString("The request %1 failed: %2").Arg(request.Left(200), error.what()));
    return RequestError(HttpStatus::Internal, "failed", error.what());
  }
}

Json ErrorJson(const RequestError& error) {
  Json json = {{"code", error.Code()}, {"message", error.what()}};
  if (const auto& place = error.Where()) {
    json["line"] = place->m_Line;
    json["column"] = place->m_Column;
  }
  if (const auto& task = error.InTask()) {
    json["index"] = task->m_Index;
    if (!task->m_Id.empty()) {
      json["taskId"] = task->m_Id;
    }
  }
  return json;
}

}  // namespace NoxAgent
