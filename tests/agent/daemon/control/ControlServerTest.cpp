#include "agent/daemon/control/ControlServer.h"

#include "tests/agent/daemon/TestAgent.h"
#include "tests/agent/daemon/control/CountedSafety.h"
#include "tests/agent/daemon/control/RawClient.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace NoxAgent {
namespace {

class ControlServerTest : public testing::Test {
 protected:
  explicit ControlServerTest(const ControlPatience& patience = TestAgent::LongPatience) {
    m_Agent.Add("one").Serve(patience);
  }

  std::string Ask(const std::string& method, const std::string& target,
                  const std::string& body = {}) {
    return RawClient::Ask(m_Agent.SocketPath(), method, target, body);
  }
  std::string Raw(const std::string& bytes) {
    return RawClient(m_Agent.SocketPath()).Send(bytes).Shut().ReadAll();
  }
  static std::string CodeOf(const std::string& answer) {
    return Json::Parse(BodyOf(answer))["error"]["code"].Text();
  }
  void ExpectAlive() { EXPECT_EQ(StatusOf(Ask("GET", "/v1/status")), 200U); }

  TestAgent m_Agent;
};

constexpr unsigned Long = TestAgent::LongPatience.m_ToRead;

// Each gives clients hardly any time for one thing, and all the time they need for everything else.
class ControlServerThatReadsBriefly : public ControlServerTest {
 protected:
  ControlServerThatReadsBriefly() : ControlServerTest({1, Long, Long, Long}) {}
};

class ControlServerThatKeepsBriefly : public ControlServerTest {
 protected:
  ControlServerThatKeepsBriefly() : ControlServerTest({Long, Long, Long, 1}) {}
};

class ControlServerWithoutTimeToWait : public ControlServerTest {
 protected:
  ControlServerWithoutTimeToWait() : ControlServerTest({Long, Long, 1, Long}) {}
};

TEST_F(ControlServerTest, ServesAtASocketOfMode0660) {
  struct stat info {};
  ASSERT_EQ(::stat(m_Agent.SocketPath().c_str(), &info), 0);
  EXPECT_TRUE(S_ISSOCK(info.st_mode));
  EXPECT_EQ(info.st_mode & 07777U, 0660U);
  const std::string answer = Ask("GET", "/v1/status");
  EXPECT_EQ(StatusOf(answer), 200U);
  EXPECT_EQ(Json::Parse(BodyOf(answer))["version"], "test");
  EXPECT_NE(answer.find("Content-Type: application/json\r\n"), std::string::npos);
  EXPECT_NE(answer.find("Connection: close\r\n"), std::string::npos);
}

TEST_F(ControlServerTest, AnswersOversizedRequestsWithTheirError) {
  std::string answer = Ask("POST", "/v1/notify", std::string(ControlServer::MaxBodyBytes + 1, 'x'));
  EXPECT_EQ(StatusOf(answer), 413U);
  EXPECT_EQ(CodeOf(answer), "body-too-large");
  answer = Raw("POST /v1/notify HTTP/1.1\r\nContent-Length: 99999999999999\r\n\r\n");
  EXPECT_EQ(StatusOf(answer), 413U);
  answer = Raw("GET /v1/status HTTP/1.1\r\nX: " + std::string(ControlServer::MaxHeaderBytes, 'x') +
               "\r\n\r\n");
  EXPECT_EQ(StatusOf(answer), 431U);
  EXPECT_EQ(CodeOf(answer), "header-too-large");
  answer = Raw("GET /" + std::string(100000, 'x'));
  EXPECT_EQ(StatusOf(answer), 431U);
  std::string chunked = "POST /v1/notify HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n";
  for (int chunk = 0; chunk < 30; ++chunk) {
    chunked += "10000\r\n" + std::string(65536, ' ') + "\r\n";
  }
  answer = Raw(chunked + "0\r\n\r\n");
  EXPECT_EQ(StatusOf(answer), 413U);
  ExpectAlive();
}

TEST_F(ControlServerTest, TakesWhatJustFits) {
  const std::string body(ControlServer::MaxBodyBytes, ' ');
  const std::string answer = Ask("POST", "/v1/notify", body);
  EXPECT_EQ(StatusOf(answer), 400U);
  EXPECT_EQ(CodeOf(answer), "bad-json");
}

TEST_F(ControlServerTest, AnswersCutRequestsWithTheirError) {
  const std::string whole = RawClient::Request("POST", "/v1/notify", "{\"kind\":1}");
  for (std::size_t length = 1; length < whole.size(); ++length) {
    const std::string answer = Raw(whole.substr(0, length));
    EXPECT_EQ(StatusOf(answer), 400U) << length;
    EXPECT_EQ(CodeOf(answer), "request-cut") << length;
  }
  EXPECT_EQ(StatusOf(Raw(whole)), 200U);
  EXPECT_EQ(Raw(""), "");
}

TEST_F(ControlServerTest, AnswersBinaryWithItsError) {
  std::string binary;
  for (int byte = 0; byte < 256; ++byte) {
    binary += static_cast<char>(byte);
  }
  for (const std::string& bytes :
       {binary, std::string(1000, '\0'), std::string("\x16\x03\x01\x02\x00\x01\r\n\r\n"),
        std::string("GET /v1/status\r\n\r\n"), std::string("GET /v1/status HTTP/9.9\r\n\r\n"),
        std::string("POST /v1/notify HTTP/1.1\r\nContent-Length: -1\r\n\r\n"),
        std::string(
            "POST /v1/notify HTTP/1.1\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n")}) {
    const std::string answer = Raw(bytes);
    EXPECT_EQ(StatusOf(answer), 400U) << answer;
    EXPECT_EQ(CodeOf(answer), "bad-http") << answer;
  }
  EXPECT_EQ(CodeOf(Ask("POST", "/v1/notify", binary)), "bad-json");
  ExpectAlive();
}

TEST_F(ControlServerTest, TellsAClientToGoOnWhenItAsks) {
  RawClient client(m_Agent.SocketPath());
  client.Send(
      "POST /v1/notify HTTP/1.1\r\nConnection: close\r\nExpect: 100-continue\r\n"
      "Content-Length: 10\r\n\r\n");
  EXPECT_EQ(client.ReadUntil("\r\n\r\n"), "HTTP/1.1 100 Continue\r\n\r\n");
  EXPECT_EQ(StatusOf(client.Send("{\"kind\":1}").ReadAll()), 200U);
}

TEST_F(ControlServerTest, AnswersRequestsOnOneConnectionInTheirOrder) {
  RawClient client(m_Agent.SocketPath());
  for (const char* const method : {"GET", "PUT", "GET"}) {
    client.Send(std::string(method) + " /v1/status HTTP/1.1\r\n\r\n");
    const std::string header = client.ReadUntil("\r\n\r\n");
    EXPECT_EQ(StatusOf(header), method == std::string("PUT") ? 405U : 200U);
    EXPECT_EQ(header.find("Connection: close"), std::string::npos) << header;
    (void)client.ReadUntil("}\n");
  }
  // Also when they come all at once.
  const std::string answers = client
                                  .Send(
                                      "GET /v1/status HTTP/1.1\r\n\r\n"
                                      "PUT /v1/status HTTP/1.1\r\nContent-Length: 2\r\n\r\n{}"
                                      "GET /v1/nothing HTTP/1.1\r\nConnection: close\r\n\r\n"
                                      "GET /v1/status HTTP/1.1\r\n\r\n")
                                  .ReadAll();
  const std::size_t second = answers.find("HTTP/1.1 405");
  EXPECT_EQ(StatusOf(answers), 200U);
  EXPECT_NE(second, std::string::npos) << answers;
  EXPECT_GT(answers.find("HTTP/1.1 404"), second) << answers;
  EXPECT_EQ(answers.rfind("HTTP/1.1"), answers.find("HTTP/1.1 404")) << "and no more: " << answers;
  EXPECT_EQ(m_Agent.m_Server->Count().m_Requests, 6U);
  EXPECT_EQ(m_Agent.m_Server->Count().m_Errors, 3U);
}

TEST_F(ControlServerTest, KnowsWhichProcessHoldsEnumerations) {
  const auto open = [&] {
    return RawClient::Ask(m_Agent.SocketPath(), "POST", "/v1/one/INoxTaskScheduler/FindFirstTask");
  };
  for (std::size_t count = 0; count < EnumerationHandles::MaxOfOneClient; ++count) {
    EXPECT_EQ(StatusOf(open()), 200U);
  }
  EXPECT_NE(open().find("this client (process " + std::to_string(::getpid()) + ")"),
            std::string::npos);
}

TEST_F(ControlServerTest, AnswersHeadWithoutABody) {
  for (const char* const target : {"/v1/status", "/v1/notifications", "/v1/nothing"}) {
    const std::string answer = RawClient::Ask(m_Agent.SocketPath(), "HEAD", target);
    EXPECT_GE(StatusOf(answer), 404U) << answer;
    EXPECT_EQ(BodyOf(answer), "") << answer;
  }
  RawClient client(m_Agent.SocketPath());
  client.Send("HEAD /v1/status HTTP/1.1\r\nHost: a\r\n\r\n" +
              RawClient::Request("GET", "/v1/status", ""));
  const std::string both = client.ReadAll();
  EXPECT_EQ(both.find("HTTP/1.1 405"), 0U) << both;
  EXPECT_NE(both.find("\r\n\r\nHTTP/1.1 200"), std::string::npos) << both;
}

TEST_F(ControlServerTest, ClosesTheConnectionWhenTheClientSpeaksAnOlderHttp) {
  RawClient client(m_Agent.SocketPath());
  const std::string answer = client.Send("GET /v1/status HTTP/1.0\r\n\r\n").ReadAll();
  EXPECT_EQ(StatusOf(answer), 200U);
  EXPECT_NE(answer.find("Connection: close\r\n"), std::string::npos) << answer;
}

TEST_F(ControlServerThatKeepsBriefly, ClosesAConnectionOnWhichNothingFollows) {
  RawClient client(m_Agent.SocketPath());
  client.Send("GET /v1/status HTTP/1.1\r\n\r\n");
  (void)client.ReadUntil("}\n");
  EXPECT_EQ(client.ReadAll(), "") << "nobody asked, so nobody is answered";
}

TEST_F(ControlServerTest, BoundsTheRequestsOnAConnection) {
  RawClient client(m_Agent.SocketPath());
  for (unsigned number = 1; number < ControlServer::MaxRequests; ++number) {
    client.Send("GET /v1/status HTTP/1.1\r\n\r\n");
    ASSERT_EQ(client.ReadUntil("\r\n\r\n").find("Connection: close"), std::string::npos) << number;
    (void)client.ReadUntil("}\n");
  }
  const std::string last = client.Send("GET /v1/status HTTP/1.1\r\n\r\n").ReadAll();
  EXPECT_NE(last.find("Connection: close\r\n"), std::string::npos) << last;
}

// Whoever keeps a connection to think about the next request keeps nobody else out.
TEST_F(ControlServerTest, KeepsNoConnectionsWhenThereAreMany) {
  std::vector<std::unique_ptr<RawClient>> clients;
  unsigned kept = 0;
  for (unsigned number = 0; number < 2 * ControlServer::MaxConnections; ++number) {
    clients.push_back(std::make_unique<RawClient>(m_Agent.SocketPath()));
    clients.back()->Send("GET /v1/status HTTP/1.1\r\n\r\n");
    const std::string header = clients.back()->ReadUntil("\r\n\r\n");
    ASSERT_EQ(StatusOf(header), 200U) << number;
    if (header.find("Connection: close") == std::string::npos) {
      ++kept;
    } else {
      clients.pop_back();
    }
  }
  EXPECT_EQ(kept, ControlServer::MaxKeptConnections);
}

// An answer too large for the socket's buffer is under way while the others come.
TEST_F(ControlServerTest, KeepsAConnectionThatItSaidItWouldKeep) {
  RawClient client(m_Agent.SocketPath());
  const Json arguments = {{"taskId", "a"}, {"attributes", {{"k", std::string(1000000, 'x')}}}};
  const std::string body = arguments.Dump();
  client.Send("POST /v1/one/INoxTaskScheduler/GetTaskAttributes HTTP/1.1\r\nContent-Length: " +
              std::to_string(body.size()) + "\r\n\r\n" + body);
  const std::string header = client.ReadUntil("\r\n\r\n");
  ASSERT_EQ(StatusOf(header), 200U) << header;
  ASSERT_EQ(header.find("Connection: close"), std::string::npos) << header;
  std::vector<std::unique_ptr<RawClient>> others;
  for (unsigned number = 0; number < ControlServer::MaxKeptConnections; ++number) {
    others.push_back(std::make_unique<RawClient>(m_Agent.SocketPath()));
  }
  while (m_Agent.m_Server->Count().m_Connections <= ControlServer::MaxKeptConnections) {
    std::this_thread::yield();
  }
  (void)client.ReadUntil("}\n");
  const std::string next = client.Send("GET /v1/status HTTP/1.1\r\n\r\n").ReadAll();
  EXPECT_EQ(StatusOf(next), 200U) << next;
  EXPECT_NE(next.find("Connection: close"), std::string::npos) << "the next is the last: " << next;
}

TEST_F(ControlServerTest, SlowClientsHurtNobody) {
  std::vector<std::unique_ptr<RawClient>> slow;
  for (int number = 0; number < 20; ++number) {
    slow.push_back(std::make_unique<RawClient>(m_Agent.SocketPath()));
    slow.back()->Send("POST /v1/notify HTTP/1.1\r\nContent-Length: 5\r\n\r\n{");
  }
  // In far less than the time that a slow client is given: nobody waits for it.
  for (int number = 0; number < 100; ++number) {
    ExpectAlive();
  }
  EXPECT_GE(m_Agent.m_Server->Count().m_Connections, 20U) << "the slow ones are still there";
}

TEST_F(ControlServerThatReadsBriefly, SlowClientsAreAnsweredWithTheirError) {
  std::string answer;
  // Nobody answers a client that was too slow to send anything, as it is on a machine that stalls.
  for (int attempt = 0; attempt < 10 && answer.empty(); ++attempt) {
    RawClient slow(m_Agent.SocketPath());
    slow.Send("POST /v1/notify HTTP/1.1\r\nContent-Length: 5\r\n\r\n{");
    answer = slow.ReadAll();
  }
  EXPECT_EQ(StatusOf(answer), 408U) << answer;
  EXPECT_EQ(CodeOf(answer), "request-too-slow");
}

TEST_F(ControlServerTest, ManyClientsAtOnceAreEachAnswered) {
  std::vector<std::thread> threads;
  std::atomic<int> answered{0};
  for (int number = 0; number < 16; ++number) {
    threads.emplace_back([&] {
      for (int round = 0; round < 50; ++round) {
        const std::string answer =
            Ask("POST", "/v1/one/INoxTaskScheduler/GetTaskAttributes", R"({"taskId":"a"})");
        answered += StatusOf(answer) == 200 ? 1 : 0;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(answered, 16 * 50);
  EXPECT_EQ(m_Agent.m_Server->Count().m_Requests, 16U * 50U);
}

TEST_F(ControlServerTest, TellsClientsPastTheLimitToComeAgain) {
  std::vector<std::unique_ptr<RawClient>> clients;
  for (unsigned number = 0; number < ControlServer::MaxConnections; ++number) {
    clients.push_back(std::make_unique<RawClient>(m_Agent.SocketPath()));
    clients.back()->Send("GET ");
  }
  while (m_Agent.m_Server->Count().m_Connections < ControlServer::MaxConnections) {
    std::this_thread::yield();
  }
  const std::string answer = Ask("GET", "/v1/status");
  EXPECT_EQ(StatusOf(answer), 503U);
  EXPECT_EQ(CodeOf(answer), "too-many-connections");
  clients.clear();
  while (m_Agent.m_Server->Count().m_Connections > 0) {
    std::this_thread::yield();
  }
  ExpectAlive();
}

// Past both limits connections are closed without a word; the agent takes no harm.
TEST_F(ControlServerTest, SurvivesAFloodOfConnections) {
  std::vector<std::unique_ptr<RawClient>> clients;
  for (unsigned number = 0; number < 300; ++number) {
    clients.push_back(std::make_unique<RawClient>(m_Agent.SocketPath()));
  }
  clients.clear();
  // Some of them may wait yet to be taken in, and then the next one is one too many.
  unsigned status = 0;
  for (int attempt = 0; attempt < 10000 && status != 200U; ++attempt) {
    std::this_thread::yield();
    status = StatusOf(Ask("GET", "/v1/status"));
  }
  EXPECT_EQ(status, 200U);
}

TEST_F(ControlServerTest, StreamsNotificationsAsLines) {
  RawClient client(m_Agent.SocketPath());
  client.Send("GET /v1/notifications HTTP/1.1\r\n\r\n");
  const std::string header = client.ReadUntil("\r\n\r\n");
  EXPECT_EQ(StatusOf(header), 200U);
  EXPECT_NE(header.find("Content-Type: application/x-ndjson\r\n"), std::string::npos);
  (void)Ask("POST", "/v1/one/INoxTaskScheduler/DeleteTask", R"({"taskId":"gone"})");
  (void)Ask("POST", "/v1/notify", R"({"kind":10,"code":300,"text":"a\nb"})");
  const auto next = [&client] {
    // Lines that wait together share a chunk. What frames a chunk ends with a carriage return.
    std::string line = client.ReadUntil("\n");
    while (line.ends_with("\r\n")) {
      line = client.ReadUntil("\n");
    }
    return Json::Parse(line);
  };
  const Json first = next();
  EXPECT_EQ(first["code"], 101);
  EXPECT_EQ(first["id"], "gone");
  EXPECT_TRUE(first["time"].IsWhole());
  const Json second = next();
  EXPECT_EQ(second["code"], 300);
  EXPECT_EQ(second["text"], "a\nb");
  EXPECT_FALSE(second.Has("id"));
}

/// The texts of the notifications in an answer, with blanks between them.
std::string TextsOf(const std::string& answer) {
  constexpr std::string_view Begin = "\"text\":\"";
  std::string texts;
  for (std::size_t at = answer.find(Begin); at != std::string::npos; at = answer.find(Begin, at)) {
    at += Begin.size();
    texts += (texts.empty() ? "" : " ") + answer.substr(at, answer.find('"', at) - at);
  }
  return texts;
}

/// A client that follows the notifications.
class Follower : public RawClient {
 public:
  explicit Follower(const TestAgent& agent) : RawClient(agent.SocketPath()) {
    const unsigned before = agent.m_Server->Count().m_Streams;
    Send("GET /v1/notifications HTTP/1.1\r\n\r\n");
    (void)ReadUntil("\r\n\r\n");
    while (agent.m_Server->Count().m_Streams == before) {
      std::this_thread::yield();
    }
  }
};

TEST_F(ControlServerTest, StreamsOnlyWhatIsSafe) {
  const CountedSafety files;
  (void)m_Agent.m_Notifications.Post(100, "a");
  m_Agent.Settle();
  EXPECT_EQ(files.m_Count, 0U) << "nobody listens";
  Follower client(m_Agent);
  (void)m_Agent.m_Notifications.Post(100, "b");
  (void)client.ReadUntil("\"b\"");
  EXPECT_EQ(files.m_Count, 1U);
}

TEST_F(ControlServerTest, LinesThatWaitForTheDiskWaitTogether) {
  Follower client(m_Agent);
  HeldSafety files;
  (void)m_Agent.m_Notifications.Post(300, "first");
  files.m_Begun.acquire();
  std::string wanted = "first";
  for (int number = 0; number < 100; ++number) {
    (void)m_Agent.m_Notifications.Post(300, BaseSDK::AString().SetNum(number, 'd'));
    wanted += ' ' + std::to_string(number);
  }
  m_Agent.Settle();
  EXPECT_EQ(files.m_Count, 1U) << "the agent's own thread does not wait for the disk";
  files.m_LetGo.release(2);
  EXPECT_EQ(TextsOf(client.ReadUntil("\"99\"")), wanted);
  EXPECT_EQ(files.m_Count, 2U);
}

TEST_F(ControlServerTest, ABurstReachesAClientThatReadsItLate) {
  Follower client(m_Agent);
  for (int number = 0; number < 5000; ++number) {
    (void)m_Agent.m_Notifications.Post(300, BaseSDK::AString().SetNum(number, 'd'));
  }
  m_Agent.Settle();
  (void)client.ReadUntil("\"4999\"");
  EXPECT_EQ(m_Agent.m_Server->Count().m_Dropped, 0U);
}

TEST_F(ControlServerTest, StreamsEndBehindWhatWasPostedBefore) {
  Follower client(m_Agent);
  (void)m_Agent.m_Notifications.Post(300, "last");
  m_Agent.Settle();
  EXPECT_TRUE(m_Agent.m_Server->Stop(30000));
  EXPECT_EQ(TextsOf(client.ReadAll()), "last");
}

TEST_F(ControlServerTest, DropsStreamsWhoseClientsDoNotRead) {
  RawClient slow(m_Agent.SocketPath());
  slow.Send("GET /v1/notifications HTTP/1.1\r\n\r\n");
  (void)slow.ReadUntil("\r\n\r\n");
  const BaseSDK::AString text(std::wstring(1000, L'x'));
  while (m_Agent.m_Server->Count().m_Streams > 0) {
    (void)m_Agent.m_Notifications.Post(300, text);
    m_Agent.Settle();
  }
  EXPECT_EQ(m_Agent.m_Server->Count().m_Dropped, 1U);
  ExpectAlive();
}

TEST_F(ControlServerTest, BoundsTheStreamsAndNoticesWhenClientsLeave) {
  std::vector<std::unique_ptr<RawClient>> clients;
  for (unsigned number = 0; number < ControlServer::MaxStreams; ++number) {
    clients.push_back(std::make_unique<RawClient>(m_Agent.SocketPath()));
    clients.back()->Send("GET /v1/notifications HTTP/1.1\r\n\r\n");
    (void)clients.back()->ReadUntil("\r\n\r\n");
  }
  const std::string answer = Ask("GET", "/v1/notifications");
  EXPECT_EQ(StatusOf(answer), 503U);
  EXPECT_EQ(CodeOf(answer), "too-many-streams");
  clients.clear();
  while (m_Agent.m_Server->Count().m_Streams > 0) {
    std::this_thread::yield();
  }
  ExpectAlive();
}

TEST_F(ControlServerTest, StopAnswersWhatIsUnderWayAndEndsTheRest) {
  RawClient stream(m_Agent.SocketPath());
  stream.Send("GET /v1/notifications HTTP/1.1\r\n\r\n");
  (void)stream.ReadUntil("\r\n\r\n");
  RawClient idle(m_Agent.SocketPath());
  idle.Send("GET ");
  RawClient held(m_Agent.SocketPath());
  held.Send(
      RawClient::Request("POST", "/v1/one/INoxTaskScheduler/GetTaskXML", R"({"taskId":"hold"})"));
  while (m_Agent.Report().find("holding") == std::string::npos) {
    std::this_thread::yield();
  }
  EXPECT_FALSE(m_Agent.m_Server->Stop(10)) << "a request is under way";
  EXPECT_EQ(idle.ReadAll(), "");
  EXPECT_EQ(stream.ReadAll(), "0\r\n\r\n");
  m_Agent.Release();
  EXPECT_EQ(StatusOf(held.ReadAll()), 200U);
  EXPECT_TRUE(m_Agent.m_Server->Stop(30000));
}

// A plug-in that does not come back holds the threads that answer. Whoever waits for one hears of
// it, and what was not begun by then is never done.
TEST_F(ControlServerWithoutTimeToWait, TellsWhoWaitsThatRequestsDoNotComeBack) {
  m_Agent.HoldEveryThread();
  RawClient waiting(m_Agent.SocketPath());
  waiting.Send(RawClient::Request("POST", "/v1/one/INoxTaskScheduler/SetRunState",
                                  R"({"taskId":"task_file_extension","runState":"Ok"})"));
  const std::string answer = Ask("GET", "/v1/status");
  EXPECT_EQ(StatusOf(answer), 503U);
  EXPECT_EQ(CodeOf(answer), "busy");
  EXPECT_EQ(CodeOf(waiting.ReadAll()), "busy");
  m_Agent.ReleaseEveryThread();
  ExpectAlive();
  EXPECT_EQ(m_Agent.Report().find("setting:"), std::string::npos) << m_Agent.Report();
}

long ResidentKilobytes() {
  std::ifstream status("/proc/self/statm");
  long total = 0;
  long resident = 0;
  status >> total >> resident;
  return resident * 4;
}

TEST_F(ControlServerTest, MemoryStaysLevelUnderHostileRequests) {
  const std::string tooLarge(ControlServer::MaxBodyBytes + 1, 'x');
  const std::string tooDeep(1000000, '[');
  const std::string unfinished =
      "POST /v1/notify HTTP/1.1\r\nContent-Length: 1000000\r\n\r\n" + std::string(500000, 'x');
  const std::string noDocument =
      Json{{"taskId", "a"}, {"taskXml", std::string(1000000, '<')}}.Dump();
  const auto round = [&] {
    (void)Ask("POST", "/v1/notify", tooLarge);
    (void)Ask("POST", "/v1/notify", tooDeep);
    (void)Raw(unfinished);
    (void)Ask("POST", "/v1/one/INoxTaskScheduler/AddTask", noDocument);
  };
  const auto growth = [&round] {
    const long before = ResidentKilobytes();
    for (int number = 0; number < 40; ++number) {
      round();
    }
    return ResidentKilobytes() - before;
  };
  // A leak of the bodies of a round would be more than 100 MiB, each time. What each thread keeps
  // for good is less, but which of them is at work for the first time is anyone's guess.
  constexpr long Level = 20 * 1024;
  long grown = growth();
  for (int attempt = 0; attempt < 5 && grown >= Level; ++attempt) {
    grown = growth();
  }
  EXPECT_LT(grown, Level);
}

}  // namespace
}  // namespace NoxAgent
