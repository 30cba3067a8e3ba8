#include "agent/daemon/control/WrittenCheck.h"

#include "agent/daemon/control/RequestError.h"

#include <BaseSDK/AText.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <vector>

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;

namespace NoxAgent {
namespace {

using Errors = std::map<std::string, int>;

RequestError NotWritten(const AString& message) {
  return RequestError(HttpStatus::NotWritten, "not-written", message);
}

AString IdOf(const std::string& name, const StoreFileSystem& store) {
  return AString::FromUtf8(store.Directory().TaskIdOf(name));
}

// When a task is in the state asked for already, the scheduler writes nothing. Its file may still
// say something else, because an earlier write failed.
void AddStale(const AMsgIn& request, const StoreFileSystem& store, Errors& errors) {
  const auto* const value = request.Find("taskIds");
  const AString* const ids = value != nullptr ? std::get_if<AString>(value) : nullptr;
  std::vector<AString> list;
  BaseSDK::AText::StrToVector(ids != nullptr ? *ids : AString(), ":", list);
  for (const AString& id : list) {
    const std::string name = id.ToUtf8() + store.Directory().Extension();
    if (const int error = store.Trouble().ErrorOf(name); error != 0) {
      errors.emplace(name, error);
    }
  }
}

RequestError NotAdded(const std::string& name, int error, const StoreFileSystem& store) {
  const AString id = IdOf(name, store);
  return error == EEXIST
             ? NotWritten(
                   AString("the task %1 was not added: a file of its name is no task; noxctl "
                           "files lists it")
                       .Arg(id))
             : NotWritten(AString("the task %1 was not added: its file cannot be written: %2")
                              .Arg(id, std::strerror(error)));
}

}  // namespace

RequestError NotWrittenError(const Errors& errors, const StoreFileSystem& store) {
  AString tasks;
  for (const auto& [name, error] : errors) {
    tasks += AString(tasks.IsEmpty() ? "%1 (%2)" : ", %1 (%2)")
                 .Arg(IdOf(name, store), std::strerror(error));
  }
  return NotWritten(AString("the change is in force in memory alone, because files cannot be "
                            "written: %1; it lasts until the files are read again, at %2 at the "
                            "latest, or until the agent is restarted")
                        .Arg(tasks, store.Readings().NextText()));
}

void ThrowIfNotWritten(const AMsgIn& request, long result, const WriteFailures& failures,
                       const StoreFileSystem& store) {
  if (request.Interface() != "INoxTaskScheduler") {
    return;
  }
  Errors errors = failures.All();
  if (request.Operation() == "EnableTask") {
    AddStale(request, store, errors);
  }
  if (errors.empty()) {
    return;
  }
  const auto& [name, error] = *errors.begin();
  if (request.Operation() == "DeleteTask") {
    throw NotWritten(AString("the task %1 was not deleted: its file cannot be removed: %2")
                         .Arg(IdOf(name, store), std::strerror(error)));
  }
  if (request.Operation() == "AddTask" && result < 1) {
    throw NotAdded(name, error, store);
  }
  throw NotWrittenError(errors, store);
}

}  // namespace NoxAgent
