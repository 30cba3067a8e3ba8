#include "agent/client/ForEachTask.h"

#include <algorithm>

namespace NoxAgent {

namespace {

void PrintDone(const std::vector<std::string>& ids, const char* done,
               const CommandContext& context) {
  if (context.m_Json) {
    return context.PrintJson({{done, ids}});
  }
  for (const std::string& id : ids) {
    context.m_Out << done << ' ' << id << '\n';
  }
}

}  // namespace

void ForEachTask(const std::vector<std::string>& ids, const char* done,
                 const std::function<void(const std::string&)>& act, CommandContext& context) {
  std::vector<std::string> ready;
  for (const std::string& id : ids) {
    try {
      act(id);
      ready.push_back(id);
    } catch (const CommandError& error) {
      if (error.Code() == ExitCode::Unreachable) {
        PrintDone(ready, done, context);
        throw;
      }
      context.PrintError(error, id);
      context.m_ExitCode = std::max(context.m_ExitCode, error.Code());
    } catch (const JsonError&) {
      PrintDone(ready, done, context);
      throw;
    }
  }
  PrintDone(ready, done, context);
}

}  // namespace NoxAgent
