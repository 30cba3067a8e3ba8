#include <AgentSDK/AHost.h>

#include <atomic>

namespace AgentSDK {
namespace {

std::atomic<AHost*> currentHost{nullptr};

}  // namespace

AHost* AHost::Current() {
  return currentHost.load(std::memory_order_acquire);
}

AHost* AHost::Replace(AHost* host) {
  return currentHost.exchange(host, std::memory_order_acq_rel);
}

}  // namespace AgentSDK
