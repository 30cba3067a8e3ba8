#include "agent/client/commands/EachId.h"

#include <algorithm>

namespace NoxAgent {

void ForEachId(const std::vector<std::string>& ids,
               const std::function<void(const std::string&)>& act,
               const std::function<void(const std::vector<std::string>&)>& tell,
               CommandContext& context) {
  std::vector<std::string> ready;
  for (const std::string& id : ids) {
    try {
      act(id);
      ready.push_back(id);
    } catch (const CommandError& error) {
      if (error.Code() == ExitCode::Unreachable) {
        tell(ready);
        throw;
      }
      context.PrintError(error, id);
      context.m_ExitCode = std::max(context.m_ExitCode, error.Code());
    } catch (const JsonError&) {
      tell(ready);
      throw;
    }
  }
  tell(ready);
}

void PrintDone(const std::vector<std::string>& ids, const char* done,
               const CommandContext& context) {
  if (context.m_Json) {
    return context.PrintJson({{done, ids}});
  }
  for (const std::string& id : ids) {
    context.m_Out << done << ' ' << id << '\n';
  }
}

void FailNotLoaded(const std::string& id) {
  throw CommandError(ExitCode::Failed, "the scheduler does not hold a task " + id +
                                           "; noxctl list shows the tasks, and one whose file was "
                                           "put down by hand is read within the hour");
}

}  // namespace NoxAgent
