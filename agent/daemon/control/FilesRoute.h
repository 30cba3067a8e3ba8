#pragma once

#include "agent/daemon/control/OperationRoute.h"
#include "agent/daemon/store/TaskStore.h"
#include "agent/library/Json.h"

#include <string>

namespace NoxAgent {

/// The routes /v1/files: the documents that were put away because no task can be made of them, and
/// what lies in the task directory without being a task.
///
/// Any number of threads may ask at once. All throw RequestError.
class FilesRoute {
 public:
  FilesRoute(const TaskStore& store, OperationRoute& operations);

  /// {"refused": [...], "strays": [...]}
  Json List() const;
  /// Adds a document that was mended in its place as the task that it was.
  Json TakeBack(const std::string& body);
  Json Remove(const std::string& body);

 private:
  Json AddTask(const std::string& taskId, const std::string& document);

  const TaskStore& m_Store;
  OperationRoute& m_Operations;
};

}  // namespace NoxAgent
