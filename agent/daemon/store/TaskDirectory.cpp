#include "agent/daemon/store/TaskDirectory.h"

namespace NoxAgent {
namespace {

std::string_view WithoutSlashes(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') {
    path.remove_suffix(1);
  }
  return path;
}

}  // namespace

TaskDirectory::TaskDirectory(std::string path, std::string extension)
    : m_Path(WithoutSlashes(path)), m_Extension(std::move(extension)) {}

bool TaskDirectory::IsItself(std::string_view path) const {
  return WithoutSlashes(path) == m_Path;
}

std::optional<std::string> TaskDirectory::NameOf(std::string_view path) const {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos || slash + 1 == path.size() ||
      !IsItself(path.substr(0, slash + 1))) {
    return std::nullopt;
  }
  return std::string(path.substr(slash + 1));
}

bool TaskDirectory::IsTaskFile(std::string_view name) const {
  return name.size() > m_Extension.size() && name.ends_with(m_Extension);
}

std::string TaskDirectory::TaskIdOf(std::string_view name) const {
  return std::string(name.substr(0, name.find(m_Extension)));
}

}  // namespace NoxAgent
