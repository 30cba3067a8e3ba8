#include <BaseSDK/ADescriptorLimit.h>

#include <sys/resource.h>

#include <algorithm>
#include <atomic>

namespace BaseSDK {

namespace {

/// 0: it was never raised.
std::atomic<unsigned long> softLimit{0};

rlimit Limit() {
  rlimit limit{};
  (void)getrlimit(RLIMIT_NOFILE, &limit);
  return limit;
}

void SetLimit(unsigned long soft) {
  rlimit limit = Limit();
  limit.rlim_cur = soft;
  (void)setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

void ADescriptorLimit::Raise(unsigned long most) {
  const unsigned long current = Current();
  const rlim_t hard = Limit().rlim_max;
  const unsigned long wanted = hard < most ? static_cast<unsigned long>(hard) : most;
  if (wanted > current) {
    softLimit = current;
    SetLimit(wanted);
  }
}

unsigned long ADescriptorLimit::Current() {
  constexpr rlim_t Largest = 0x7FFFFFFF;  // also where there is no limit
  return static_cast<unsigned long>(std::min(Limit().rlim_cur, Largest));
}

unsigned long ADescriptorLimit::Original() {
  const unsigned long original = softLimit;
  return original != 0 ? original : Current();
}

void ADescriptorLimit::Restore() {
  if (const unsigned long original = softLimit; original != 0) {
    SetLimit(original);
  }
}

}  // namespace BaseSDK
