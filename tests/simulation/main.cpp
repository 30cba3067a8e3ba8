// nox_simulation_test: the whole scheduler through spans of virtual time full of trouble.
//
//   nox_simulation_test [--seed N | --seeds A..B] [--tasks N (100)] [--days N (60)]
//                       [--replays N (0)]
//
// Exit status 0 when nothing was violated, 1 when something was; the seed that is printed then
// tells the same story every time.
#include "tests/simulation/Simulation.h"

#include <malloc.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

namespace {

using Simulation::Options;
using Simulation::Verdict;

struct Arguments {
  std::uint64_t m_FirstSeed = 1;
  std::uint64_t m_LastSeed = 1;
  Options m_Options;
  std::uint64_t m_Replays =
      0;  ///< how often a seed is run again, to see that its story is the same
};

std::optional<std::uint64_t> ParseNumber(const std::string& text) {
  const bool isNumber = !text.empty() && text.size() < 19 &&
                        text.find_first_not_of("0123456789") == std::string::npos;
  return isNumber ? std::optional(std::strtoull(text.c_str(), nullptr, 10)) : std::nullopt;
}

bool ParseSeeds(const std::string& text, Arguments& arguments) {
  const std::size_t dots = text.find("..");
  const auto first = ParseNumber(text.substr(0, dots));
  const auto last = dots == std::string::npos ? first : ParseNumber(text.substr(dots + 2));
  arguments.m_FirstSeed = first.value_or(0);
  arguments.m_LastSeed = last.value_or(0);
  return first && last && *first <= *last;
}

bool Parse(const std::string& name, const std::string& value, Arguments& arguments) {
  if (name == "--seed" || name == "--seeds") {
    return ParseSeeds(value, arguments);
  }
  const auto number = ParseNumber(value);
  if (name == "--replays") {
    arguments.m_Replays = number.value_or(0);
    return number.has_value();
  }
  if (!number || *number == 0 || *number > 100000) {
    return false;
  }
  if (name == "--tasks") {
    arguments.m_Options.m_Tasks = static_cast<long>(*number);
  } else if (name == "--days") {
    arguments.m_Options.m_Days = static_cast<long>(*number);
  } else {
    return false;
  }
  return true;
}

std::size_t OpenDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

std::size_t MemoryInUse() {
  // The plain schedule remembers the days of the last zone: a zone of its own makes it forget them.
  const VirtualTime::Zone other("<+01>-1");
  (void)PlainSchedule::MomentOf({});
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

/// How much a seed may leave behind: the first one makes what is made once for the process, others
/// may be the first to need some of it, and a replay needs nothing new but the allocator's own.
enum Slack : std::size_t { FirstSlack = 1U << 30, OtherSlack = 200000, ReplaySlack = 16000 };

struct Outcome {
  bool m_Good;
  std::uint64_t m_Story;
};

Outcome Tell(const Options& options) {
  Verdict verdict;
  Simulation::Simulation simulation(options, verdict);
  simulation.Run();
  std::cout << "seed " << options.m_Seed << ": " << options.m_Tasks << " tasks, " << options.m_Days
            << " days, " << simulation.Runs() << " runs, story " << std::hex
            << verdict.Fingerprint() << std::dec << std::endl;
  if (verdict.IsViolated()) {
    std::cout << "VIOLATED " << verdict.Text() << "\nagain with: --seed " << options.m_Seed
              << " --tasks " << options.m_Tasks << " --days " << options.m_Days << std::endl;
  }
  return {!verdict.IsViolated(), verdict.Fingerprint()};
}

Outcome RunSeed(const Options& options, Slack slack) {
  const std::size_t memory = MemoryInUse();
  const std::size_t descriptors = OpenDescriptors();
  Outcome outcome = Tell(options);
  if (MemoryInUse() > memory + slack) {
    std::cout << "memory in use grew from " << memory << " to " << MemoryInUse() << std::endl;
    outcome.m_Good = false;
  }
  if (OpenDescriptors() != descriptors) {
    std::cout << "open descriptors were " << descriptors << " and are " << OpenDescriptors()
              << std::endl;
    outcome.m_Good = false;
  }
  return outcome;
}

bool RunSeedAgainAndAgain(const Options& options, std::uint64_t replays, bool isFirst) {
  const Outcome first = RunSeed(options, isFirst ? FirstSlack : OtherSlack);
  bool good = first.m_Good;
  for (std::uint64_t i = 0; i < replays; ++i) {
    const Outcome replay = RunSeed(options, ReplaySlack);
    if (replay.m_Story != first.m_Story) {
      std::cout << "the same seed told another story" << std::endl;
    }
    good = good && replay.m_Good && replay.m_Story == first.m_Story;
  }
  return good;
}

/// A year of many tasks takes minutes: whoever watches sees it get on.
void ShowDays(long days) {
  std::cerr << "  " << days << " days\r" << std::flush;
}

}  // namespace

int main(int argc, char** argv) {
  Arguments arguments;
  if (isatty(STDERR_FILENO) != 0) {
    arguments.m_Options.m_OnMonth = ShowDays;
  }
  for (int i = 1; i < argc; i += 2) {
    if (i + 1 == argc || !Parse(argv[i], argv[i + 1], arguments)) {
      std::cerr << argv[0] << ": cannot make sense of '" << argv[i]
                << "'; usage: [--seed N | --seeds A..B] [--tasks N] [--days N] "
                   "[--replays N]\n";
      return 2;
    }
  }
  bool good = true;
  for (std::uint64_t seed = arguments.m_FirstSeed; seed <= arguments.m_LastSeed; ++seed) {
    arguments.m_Options.m_Seed = seed;
    good = RunSeedAgainAndAgain(arguments.m_Options, arguments.m_Replays,
                                seed == arguments.m_FirstSeed) &&
           good;
  }
  return good ? 0 : 1;
}
