#include <AgentSDK/AHost.h>
#include <AgentSDK/NTracker.h>

namespace AgentSDK {
namespace {

constexpr long NoHost = -1;

}  // namespace

long NTracker::Subscribe(const BaseSDK::AString& subscriber, const long* codes, unsigned count) {
  AHost* const host = AHost::Current();
  return host == nullptr ? NoHost : host->Subscribe(subscriber, codes, count);
}

long NTracker::PostNotification(long code, const BaseSDK::AString& text) {
  AHost* const host = AHost::Current();
  return host == nullptr ? NoHost : host->PostNotification(code, text);
}

}  // namespace AgentSDK
