#pragma once

#include "agent/daemon/control/OperationRoute.h"
#include "agent/daemon/store/TaskStore.h"
#include "agent/library/Json.h"

#include <string>

namespace NoxAgent {

/// The routes /v1/files: the refused documents, and what else lies in the task directory without
/// being a task. docs/http.md describes requests and answers.
///
/// Any number of threads may ask at once. All operations throw RequestError.
class FilesRoute {
 public:
  FilesRoute(const TaskStore& store, OperationRoute& operations);

  /// {"refused": [...], "strays": [...]}
  Json List() const;
  /// Adds a refused document that somebody has mended as the task that it was, and removes it from
  /// the folder. The answer is that of AddTask.
  Json TakeBack(const std::string& body);
  /// Removes a refused document or a stray file for good.
  Json Remove(const std::string& body);

 private:
  Json AddTask(const std::string& taskId, const std::string& document);

  const TaskStore& m_Store;
  OperationRoute& m_Operations;
};

}  // namespace NoxAgent
