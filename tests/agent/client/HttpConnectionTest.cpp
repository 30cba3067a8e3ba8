#include "agent/client/HttpConnection.h"

#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string>
#include <thread>

namespace NoxAgentTest {

// As the agent does with a client that takes its time, or is not given any.
TEST(HttpConnection, ConnectsAgainWhenTheAgentHasClosedBeforeAnythingWasSent) {
  const TestSupport::TempDir directory;
  const std::string path = (directory / "s").string();
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener, 8), 0);

  NoxAgent::HttpConnection connection(path);
  (void)close(accept(listener, nullptr, nullptr));
  std::thread agent([listener] {
    const int client = accept(listener, nullptr, nullptr);
    std::array<char, 4096> request{};
    (void)!read(client, request.data(), request.size());
    const std::string answer = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}";
    (void)!write(client, answer.data(), answer.size());
    (void)close(client);
  });
  try {
    const NoxAgent::HttpResponse response = connection.Get("/v1/status");
    EXPECT_EQ(response.m_Status, 200U);
    EXPECT_EQ(response.m_Body, "{}");
  } catch (const std::exception& error) {
    ADD_FAILURE() << error.what();
    (void)shutdown(listener, SHUT_RDWR);  // nobody comes any more
  }
  agent.join();
  (void)close(listener);
}

}  // namespace NoxAgentTest
