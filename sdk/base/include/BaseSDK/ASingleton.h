#pragma once

namespace BaseSDK {

/// The one T of a library: made on first use, by whichever thread comes first, and destroyed with
/// the library's other static objects, when it is unloaded or the process ends. T is given a
/// default constructor; make it a friend when that is private.
///
/// A file's logger, for instance, in an unnamed namespace so that each file has its own:
///
///     struct FileLogger { ALogger& m_Logger = ALogger::GetLogger("Corvane::Agent"); };
///     ALogger& Log() { return ASingleton<FileLogger>::Instance().m_Logger; }
template <class T>
class ASingleton {
 public:
  ASingleton() = delete;

  static T& Instance() {
    static T instance;
    return instance;
  }
};

}  // namespace BaseSDK
