#include <BaseSDK/ALogger.h>
#include <BaseSDK/ASingleton.h>

namespace {

/// A library's one object, as a plug-in's file has it for its logger.
struct Counted {
  Counted() { ++m_Made; }
  ~Counted() {
    if (m_Destroyed != nullptr) {
      ++*m_Destroyed;
    }
  }
  BaseSDK::ALogger& m_Logger = BaseSDK::ALogger::GetLogger("Test::SingletonModule");
  int m_Made = 0;
  int* m_Destroyed = nullptr;
};

}  // namespace

/// Counts the object's destruction in `destroyed`; returns how often it was made.
extern "C" int UseSingleton(int* destroyed) {
  Counted& counted = BaseSDK::ASingleton<Counted>::Instance();
  counted.m_Destroyed = destroyed;
  ALOG(counted.m_Logger, BaseSDK::ALogger::Error, "Module", "used");
  return counted.m_Made;
}
