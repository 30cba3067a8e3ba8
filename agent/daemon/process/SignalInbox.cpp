#include "agent/daemon/process/SignalInbox.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <limits>
#include <system_error>

namespace NoxAgent {
namespace {

constexpr int Signals[] = {SIGTERM, SIGINT, SIGHUP};
constexpr char WakeByte = 0;  // no signal has this number

// Where the signal handler writes to.
std::atomic<int> inbox{-1};

void OnSignal(int signal) {
  const int error = errno;
  const auto byte = static_cast<char>(signal);
  // A full pipe holds requests enough.
  (void)!::write(inbox.load(std::memory_order_relaxed), &byte, 1);
  errno = error;
}

void Install(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  (void)::sigemptyset(&action.sa_mask);
  for (const int signal : Signals) {
    (void)::sigaction(signal, &action, nullptr);
  }
}

}  // namespace

SignalInbox::SignalInbox() {
  if (::pipe2(m_Fds, O_CLOEXEC | O_NONBLOCK) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
  }
  inbox = m_Fds[1];
  Install(OnSignal);
}

SignalInbox::~SignalInbox() {
  Install(SIG_DFL);
  (void)::close(m_Fds[0]);
  (void)::close(m_Fds[1]);
}

bool SignalInbox::Wait(unsigned long milliseconds, Request& request) {
  pollfd entry{m_Fds[0], POLLIN, 0};
  const auto timeout = static_cast<int>(
      std::min(milliseconds, static_cast<unsigned long>(std::numeric_limits<int>::max())));
  char signal = 0;
  if (::poll(&entry, 1, timeout) < 1 || ::read(m_Fds[0], &signal, 1) != 1 || signal == WakeByte) {
    return false;
  }
  request = signal == SIGHUP ? Request::Refresh : Request::Stop;
  return true;
}

void SignalInbox::Wake() {
  // A full pipe wakes as well.
  (void)!::write(m_Fds[1], &WakeByte, 1);
}

}  // namespace NoxAgent
