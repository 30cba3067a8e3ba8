#include "agent/daemon/store/WriteFailures.h"

namespace NoxAgent {
namespace {

thread_local WriteFailures* collector = nullptr;

}  // namespace

WriteFailures::WriteFailures() {
  collector = this;
}

WriteFailures::~WriteFailures() {
  collector = nullptr;
}

bool WriteFailures::AreCollected() noexcept {
  return collector != nullptr;
}

void WriteFailures::Note(const std::string& name, int error) {
  if (collector != nullptr) {
    collector->m_Errors.emplace(name, error);
  }
}

}  // namespace NoxAgent
