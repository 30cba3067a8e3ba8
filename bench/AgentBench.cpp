// What users of noxctl wait for: a real agent as a child process, and its client.
#include "agent/Protocol.h"
#include "agent/client/HttpConnection.h"
#include "agent/library/Json.h"
#include "bench/AgentProcess.h"
#include "bench/Workbench.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int TasksAdded = 1000;

std::string TaskWithJob(long number) {
  return Workbench::DailyTask(number, NoxAgent::CommandHandlerClassId);
}

void WriteFile(const fs::path& path, const std::string& text) {
  std::ofstream(path) << text;
}

/// A state directory for tasks with their jobs: what is added then is added without a warning.
class AgentState {
 public:
  AgentState() {
    fs::create_directories(m_Directory.Folder() / "var/tasks");
    fs::create_directories(m_Directory.Folder() / "var/jobs");
  }

  const fs::path& Path() const { return m_Directory.Folder(); }

  void MakeTask(const std::string& id, const std::string& document) const {
    WriteFile(Path() / "var/tasks" / (id + ".vsk"), document);
  }
  void MakeJob(const std::string& id) const {
    WriteFile(Path() / "var/jobs" / (id + ".job"), "[Job]\ncommand = true\n");
  }

 private:
  Workbench::TaskDirectory m_Directory;
};

void ListTasks(benchmark::State& state) {
  const AgentState files;
  for (long i = 0; i < state.range(0); ++i) {
    files.MakeTask("task" + std::to_string(i), TaskWithJob(i));
  }
  const Workbench::AgentProcess agent(files.Path(), static_cast<long>(state.range(0)));
  for (auto _ : state) {
    agent.RunClient({"list"});
  }
  state.counters["agent_bytes"] = agent.ResidentBytes();
}
BENCHMARK(ListTasks)->Arg(0)->Arg(10000)->Iterations(3)->Repetitions(2)->UseRealTime()->Unit(
    benchmark::kMillisecond);

/// Makes the lines that a list has for so many tasks, and sends them.
void SendLines(int socket, long count) {
  std::string text;
  std::array<char, 128> line{};
  for (long i = 0; i < count; ++i) {
    const int length =
        std::snprintf(line.data(), line.size(), "task%-6ld yes      Ok     %s  %s  no\n", i,
                      "2026-01-01 03:00:00 -0500", "2026-01-02 03:00:00 -0500");
    text.append(line.data(), static_cast<std::size_t>(length));
  }
  for (std::string_view rest = text; !rest.empty();) {
    rest.remove_prefix(
        static_cast<std::size_t>(std::max<ssize_t>(write(socket, rest.data(), rest.size()), 0)));
  }
  close(socket);
}

void LinesThroughSocketPair(benchmark::State& state) {
  for (auto _ : state) {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
      throw std::runtime_error("no socket pair");
    }
    std::thread sender(SendLines, ends[0], static_cast<long>(state.range(0)));
    std::array<char, 65536> text;
    while (read(ends[1], text.data(), text.size()) > 0) {
      benchmark::DoNotOptimize(text);
    }
    sender.join();
    close(ends[1]);
  }
}
BENCHMARK(LinesThroughSocketPair)->Arg(10000)->UseRealTime()->Unit(benchmark::kMillisecond);

void AddOverConnection(benchmark::State& state) {
  const AgentState files;
  std::vector<std::string> requests;
  for (int i = 0; i < TasksAdded; ++i) {
    const std::string id = "task" + std::to_string(i);
    files.MakeJob(id);
    requests.push_back(NoxAgent::Json{{"taskId", id}, {"taskXml", TaskWithJob(i)}}.Dump());
  }
  const Workbench::AgentProcess agent(files.Path(), 0);
  for (auto _ : state) {
    NoxAgent::HttpConnection connection(agent.Socket());
    for (const std::string& request : requests) {
      const auto answer = connection.Post("/v1/scheduler/INoxTaskScheduler/AddTask", request);
      if (answer.m_Status != 200) {
        throw std::runtime_error("a task is not added: " + answer.m_Body);
      }
    }
  }
}
BENCHMARK(AddOverConnection)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

// A tenth of the tasks, and ten times as long.
void AddByClient(benchmark::State& state) {
  constexpr int Share = 10;
  const AgentState files;
  for (int i = 0; i < TasksAdded / Share; ++i) {
    files.MakeJob("task" + std::to_string(i));
  }
  const fs::path document = files.Path() / "document.xml";
  WriteFile(document, TaskWithJob(1));
  const Workbench::AgentProcess agent(files.Path(), 0);
  for (auto _ : state) {
    const double start = Workbench::FineNow();
    for (int i = 0; i < TasksAdded / Share; ++i) {
      agent.RunClient({"add", document.string(), "--id", "task" + std::to_string(i)});
    }
    state.SetIterationTime((Workbench::FineNow() - start) * Share);
  }
}
BENCHMARK(AddByClient)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void WriteFilesAndFlushOnce(benchmark::State& state) {
  const std::string document = TaskWithJob(1);
  for (auto _ : state) {
    const Workbench::TaskDirectory directory;
    const double start = Workbench::FineNow();
    for (int i = 0; i < TasksAdded; ++i) {
      const int file = open(directory.File(i).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
      benchmark::DoNotOptimize(write(file, document.data(), document.size()));
      close(file);
    }
    const int folder = open(directory.Folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    syncfs(folder);
    close(folder);
    state.SetIterationTime(Workbench::FineNow() - start);
  }
}
BENCHMARK(WriteFilesAndFlushOnce)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
