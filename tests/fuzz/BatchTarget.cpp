// A batch text, as the scheduler hands it to a handler.
#include "agent/handler/task/TaskBatch.h"
#include "tests/fuzz/FuzzTarget.h"

#include <BaseSDK/AUrl.h>

using namespace NoxHandler;

using BaseSDK::AString;
using Fuzz::Require;

namespace {

AString Flag(bool value) {
  return value ? AString(":1") : AString(":0");
}

AString Print(const TaskBatch& batch) {
  AString text;
  for (const TaskBatch::Entry& entry : batch.m_Entries) {
    text += BaseSDK::AUrl::Encode(entry.m_TaskId) + Flag(entry.m_Late) + Flag(entry.m_NeverRun) +
            Flag(entry.m_KillAtEnd) + ";";
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const TaskBatch batch = TaskBatch::Parse(Fuzz::Text(data, size));
  for (const TaskBatch::Entry& entry : batch.m_Entries) {
    const std::string name = entry.m_TaskId.ToUtf8();
    Require(!name.empty() && name[0] != '.' && name.find('/') == std::string::npos &&
                name.find('\0') == std::string::npos && name.size() < 255,
            "a task ID is a plain file name");
  }
  const TaskBatch again = TaskBatch::Parse(Print(batch));
  Require(again.m_Invalid.empty() && again.m_Entries == batch.m_Entries,
          "what was understood is understood again");
  return 0;
}
