#pragma once

namespace NoxAgent {

/// Takes the signals that mean something to the agent, in one place. They are caught and not
/// blocked, so a command that a handler starts has every signal in its default state.
class SignalInbox {
 public:
  enum class Request { Stop, Refresh };

  /// SIGTERM and SIGINT ask to stop, SIGHUP to refresh, from now on. One object a process. Throws
  /// std::system_error.
  SignalInbox();
  SignalInbox(const SignalInbox&) = delete;
  SignalInbox& operator=(const SignalInbox&) = delete;
  ~SignalInbox();

  /// Waits for a request, `milliseconds` at most; false when none came, or Wake was called. [main
  /// thread]
  bool Wait(unsigned long milliseconds, Request& request);
  /// Ends the wait under way, or else the next one. [any thread]
  void Wake();

 private:
  int m_Fds[2] = {-1, -1};
};

}  // namespace NoxAgent
