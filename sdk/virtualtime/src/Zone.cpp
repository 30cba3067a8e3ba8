#include <VirtualTime/Zone.h>

#include <cstdlib>
#include <ctime>

namespace VirtualTime {

Zone::Zone(const char* tz) {
  if (const char* before = std::getenv("TZ")) {
    m_Before = before;
  }
  (void)setenv("TZ", tz, 1);
  tzset();
}

Zone::~Zone() {
  if (m_Before) {
    (void)setenv("TZ", m_Before->c_str(), 1);
  } else {
    (void)unsetenv("TZ");
  }
  tzset();
}

}  // namespace VirtualTime
