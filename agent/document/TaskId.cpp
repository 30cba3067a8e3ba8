#include "agent/document/TaskId.h"

using BaseSDK::AString;

namespace NoxAgent {
namespace {

// What URL encoding leaves unchanged: the scheduler reports runs by the encoded ID.
bool IsUnreserved(wchar_t character) {
  return (character >= L'a' && character <= L'z') || (character >= L'A' && character <= L'Z') ||
         (character >= L'0' && character <= L'9') || character == L'-' || character == L'.' ||
         character == L'_' || character == L'~';
}

}  // namespace

AString FaultOfTaskId(const AString& taskId, const AString& extension) {
  if (taskId.IsEmpty()) {
    return "is empty";
  }
  if (taskId.Length() > MaxTaskIdLength) {
    return "is longer than 200 characters";
  }
  for (std::size_t index = 0; index < taskId.Length(); ++index) {
    if (!IsUnreserved(taskId[index])) {
      return "may hold letters, digits, \"-\", \".\", \"_\" and \"~\" of ASCII only";
    }
  }
  if (taskId[0] == L'.') {
    return "must not begin with a dot";
  }
  if (!extension.IsEmpty() && taskId.Find(extension) != AString::npos) {
    return AString("must not contain \"%1\", the extension of task files").Arg(extension);
  }
  return {};
}

}  // namespace NoxAgent
