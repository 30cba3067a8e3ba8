#include "agent/daemon/control/ChunkedBody.h"

#include <cstdio>

namespace NoxAgent {

std::string ChunkedBody::Header(bool keep) {
  return std::string(
             "HTTP/1.1 200 OK\r\n"
             "Content-Type: application/x-ndjson\r\n"
             "Transfer-Encoding: chunked\r\n") +
         (keep ? "" : "Connection: close\r\n") + "\r\n";
}

std::string ChunkedBody::Chunk(const std::string& part) {
  char size[24];
  (void)std::snprintf(size, sizeof(size), "%zx\r\n", part.size());
  return size + part + "\r\n";
}

}  // namespace NoxAgent
