#include "agent/handler/task/TaskBatch.h"

#include <BaseSDK/AStringTokenizer.h>
#include <BaseSDK/AUrl.h>

#include <optional>

using BaseSDK::AString;
using BaseSDK::AStringTokenizer;

namespace NoxHandler {

namespace {

constexpr std::size_t Fields = 4;
// Room for the endings of the task's files within the 255 bytes of a file name.
constexpr std::size_t MaxIdBytes = 240;

std::optional<bool> ReadFlag(const AString& text) {
  if (text == AString("1")) {
    return true;
  }
  return text == AString("0") ? std::optional(false) : std::nullopt;
}

std::optional<TaskBatch::Entry> ReadEntry(const AString& text) {
  const AStringTokenizer fields(text, ":", 1);
  const AString id = BaseSDK::AUrl::Decode(fields.Token(0));
  const auto late = ReadFlag(fields.Token(1));
  const auto neverRun = ReadFlag(fields.Token(2));
  const auto killAtEnd = ReadFlag(fields.Token(3));
  if (fields.Count() != Fields || !TaskBatch::IsTaskId(id) || !late || !neverRun || !killAtEnd) {
    return std::nullopt;
  }
  return TaskBatch::Entry{id, *late, *neverRun, *killAtEnd};
}

}  // namespace

bool TaskBatch::IsTaskId(const AString& id) {
  const std::string bytes = id.ToUtf8();
  return !bytes.empty() && bytes.front() != '.' && bytes.size() <= MaxIdBytes &&
         bytes.find('/') == std::string::npos && bytes.find('\0') == std::string::npos;
}

TaskBatch TaskBatch::Parse(const AString& text) {
  TaskBatch batch;
  const AStringTokenizer entries(text, ";");
  for (std::size_t i = 0; i < entries.Count(); ++i) {
    if (const auto entry = ReadEntry(entries.Token(i))) {
      batch.m_Entries.push_back(*entry);
    } else {
      batch.m_Invalid.push_back(entries.Token(i));
    }
  }
  return batch;
}

}  // namespace NoxHandler
