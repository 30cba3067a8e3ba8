#pragma once

#include <memory>

namespace Corvane::AgentInterfacesV3 {

class AMsgChannel;
class AMsgIn;

/// The object's end of a message queue; every object that answers requests derives from it.
class AMsgQueueServer {
 public:
  AMsgQueueServer();
  AMsgQueueServer(const AMsgQueueServer&) = delete;
  AMsgQueueServer& operator=(const AMsgQueueServer&) = delete;
  /// Unbinds the object from its queue and waits for the requests under way. By now the derived
  /// parts are gone, so the host closes the queue before it has the object destroyed.
  virtual ~AMsgQueueServer();

  /// Answers one request through its reply: 1 with a result, -1 with an error. Called on the
  /// host's threads, several at once. `request` is borrowed for the call.
  virtual long ProcessRequest(const AMsgIn* request) = 0;

  /// Binds the object to the host's queue of that number: 1 when bound; -1 when there is no such
  /// queue, another object is bound to it, or this object is bound already. [agent thread, once]
  int Open(int queue);

 private:
  std::shared_ptr<AMsgChannel> m_Channel;  // null: not bound
};

}  // namespace Corvane::AgentInterfacesV3
