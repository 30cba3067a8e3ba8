#pragma once

#include <memory>

namespace Corvane::AgentInterfacesV3 {

class AMsgChannel;
class AMsgIn;

/// The host's end of an object's message queue. The host makes one with a number of its choice and
/// hands the number to the plug-in, whose object binds to it (AMsgQueueServer::Open); what the host
/// sends then runs on the host's thread, inside the object. Any number of threads may send at once;
/// none waits for another.
///
/// Close the queue before the object is taken down: its own destructor can only unbind it when its
/// members are gone already.
class AMsgQueue {
 public:
  /// `number` is 0 or above, and no other queue of the process has it; otherwise IsOpen() is false
  /// for good.
  explicit AMsgQueue(int number);
  AMsgQueue(const AMsgQueue&) = delete;
  AMsgQueue& operator=(const AMsgQueue&) = delete;
  /// As Close; then the number is free again. The object may outlive the queue.
  ~AMsgQueue();

  /// Whether the queue takes requests: it has its number and is not closed.
  bool IsOpen() const;
  /// Whether an object is bound to it.
  bool HasObject() const;
  int Number() const { return m_Number; }

  /// Has the object answer the request, on the calling thread. 1 when its reply is a result, -1
  /// when it is an error; the reply is always set. [any thread]
  long Send(const AMsgIn& request);

  /// Whether the calling thread is answering a request right now, of any queue and any sender.
  /// False on the threads that an object starts for itself. [any thread]
  static bool IsAnswering();

  /// From now on requests are answered with an error. Returns when none is under way any more, so
  /// it must not be called from within a request. [any thread]
  void Close();
  /// As Close, but waits `milliseconds` at most; false when a request is still under way then.
  bool Close(unsigned long milliseconds);
  /// Takes requests again after Close, for an object that refused to be taken down.
  void Reopen();

 private:
  const int m_Number;
  const std::shared_ptr<AMsgChannel> m_Channel;  // never null
  const bool m_Registered;
};

}  // namespace Corvane::AgentInterfacesV3
