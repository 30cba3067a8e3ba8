#include "tests/agent/daemon/journal/JournalRun.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

using TestSupport::FailingFileSystem;

namespace NoxAgent {
namespace {

constexpr unsigned MostLives = 4;
constexpr unsigned MostSteps = 40;
constexpr unsigned Names = 5;

unsigned BigPercentOf(unsigned draw) {
  constexpr unsigned Percents[] = {0, 5, 50};
  return Percents[draw % 3];
}

}  // namespace

JournalRun::JournalRun(std::uint64_t seed)
    : m_Random(seed),
      m_BigPercent(BigPercentOf(Draw(3))),
      m_HasOther(Throw(40)),
      m_HasTrouble(Throw(40)) {
  m_User.Note("seed " + std::to_string(seed));
}

std::string JournalRun::Perform() {
  const unsigned lives = 2 + Draw(MostLives - 1);
  Start();
  for (unsigned life = 0; life < lives && m_User.Problem().empty(); ++life) {
    Live();
    m_User.Die(DrawLoss(), m_Random);
    Start();
  }
  return m_User.Problem();
}

std::optional<CrashDisk::Loss> JournalRun::DrawLoss() {
  constexpr CrashDisk::Loss Losses[] = {CrashDisk::Loss::All, CrashDisk::Loss::None,
                                        CrashDisk::Loss::Latest, CrashDisk::Loss::Any,
                                        CrashDisk::Loss::Any};
  const unsigned draw = Draw(7);
  return draw < std::size(Losses) ? std::optional(Losses[draw]) : std::nullopt;
}

// Sometimes the process dies again during the replay, or calls fail then.
void JournalRun::Start() {
  while (Throw(25)) {
    m_User.Prepare();
    m_User.Calls().KillAt(1 + Draw(60), Draw(3000));
    m_User.Begin();
    m_User.Die(DrawLoss(), m_Random);
  }
  m_User.Prepare();
  if (m_HasTrouble && Throw(20)) {
    MakeTrouble();
    m_User.Begin();
    return;
  }
  m_User.Begin();
  m_User.Calm();
}

void JournalRun::Live() {
  if (Throw(50)) {
    m_User.Calls().KillAt(m_User.Calls().Count() + 1 + Draw(400), Draw(3000));
  }
  const unsigned steps = 1 + Draw(MostSteps);
  for (unsigned i = 0; i < steps && !m_User.IsDead() && m_User.Problem().empty(); ++i) {
    Step();
  }
  if (!m_User.IsDead() && Throw(15)) {
    m_User.End();
  }
}

void JournalRun::MakeTrouble() {
  constexpr FailingFileSystem::Kind Kinds[] = {
      FailingFileSystem::OpenCall,   FailingFileSystem::WriteCall,  FailingFileSystem::SyncCall,
      FailingFileSystem::RenameCall, FailingFileSystem::UnlinkCall, FailingFileSystem::GetInfoCall,
      FailingFileSystem::ReadCall,   FailingFileSystem::CloseCall};
  constexpr int Errors[] = {EIO, ENOSPC, EDQUOT};
  const int error = Errors[Draw(3)];
  if (Throw(50)) {
    const auto kind = Kinds[Draw(std::size(Kinds))];
    m_User.Note("all calls of kind " + std::to_string(kind) + " fail");
    m_User.Calls().FailAll(kind, error);
    return;
  }
  m_User.Note("some calls fail");
  for (unsigned i = 0; i < 5; ++i) {
    const unsigned number = m_User.Calls().Count() + 1 + Draw(40);
    m_User.Calls().FailAt(number, Throw(30) ? EINTR : error);
    m_User.Calls().ShortenAt(m_User.Calls().Count() + 1 + Draw(40), 1 + Draw(600));
  }
}

std::string JournalRun::DrawName() {
  if (!m_Invented.empty() && Throw(15)) {
    return m_Invented[Draw(static_cast<unsigned>(m_Invented.size()))];
  }
  return std::string("T") + std::to_string(Draw(Names)) + ".vsk";
}

std::string JournalRun::DrawContent(const std::string& name) {
  if (Throw(15)) {
    return Throw(50) ? "one of two" : "two of two";
  }
  constexpr unsigned Small = 3000;
  constexpr unsigned Big = 100000;
  const std::string line = name + " " + std::to_string(++m_Count) + "\n";
  std::string content;
  const std::size_t size = Throw(m_BigPercent) ? Big + Draw(Big) : 1 + Draw(Small);
  while (content.size() < size) {
    content += line;
  }
  m_Contents[name].push_back(content);
  return content;
}

std::string JournalRun::OlderContent(const std::string& name) {
  const auto& contents = m_Contents[name];
  return contents.empty() ? DrawContent(name)
                          : contents[Draw(static_cast<unsigned>(contents.size()))];
}

void JournalRun::Step() {
  const unsigned draw = Draw(100);
  if (draw < 55) {
    Change();
  } else if (draw < 75) {
    m_User.MakeSafe();
  } else if (draw < 80) {
    m_User.Follow();
  } else if (draw < 85) {
    m_User.Read(DrawName());
  } else if (draw < 88) {
    m_User.List();
  } else if (draw < 95 && m_HasOther) {
    ActAsOther();
  } else if (draw >= 95 && m_HasTrouble) {
    MakeTrouble();
  } else if (m_HasTrouble) {
    m_User.Calm();
  }
}

void JournalRun::Change() {
  const std::string name = DrawName();
  const unsigned draw = Draw(100);
  if (!m_User.Promised().IsThere(name)) {
    m_User.Add(name, DrawContent(name));
  } else if (draw < 75) {
    m_User.Replace(name, DrawContent(name));
  } else if (draw < 82) {
    ReplaceMany();
  } else if (draw < 87) {
    m_User.Remove(name);
  } else if (draw < 93) {
    m_User.Rename(name, DrawName());
  } else if (const std::string invented = m_User.Invent(); !invented.empty()) {
    m_Invented.push_back(invented);
  }
}

// More than are prepared, and put in their place, at once.
void JournalRun::ReplaceMany() {
  const unsigned count = 17 + Draw(10);
  for (unsigned i = 0; i < count && !m_User.IsDead(); ++i) {
    const std::string name = DrawName();
    if (m_User.Promised().IsThere(name)) {
      m_User.Replace(name, DrawContent(name));
    }
  }
  if (Throw(80)) {
    m_User.MakeSafe();
  }
}

void JournalRun::ActAsOther() {
  const std::string name = DrawName();
  const bool flushes = Throw(80);
  switch (Draw(5)) {
    case 0:
      m_User.OtherWrites(name, DrawContent(name), flushes);
      break;
    case 1:  // cuts it short
      m_User.OtherWrites(name, m_User.Promised().Last(name).value_or("").substr(0, Draw(40)),
                         flushes);
      break;
    case 2:
      m_User.OtherReplaces(name, DrawContent(name), flushes);
      break;
    case 3:
      m_User.OtherReplaces(name, OlderContent(name), flushes);
      break;
    default:
      m_User.OtherRemoves(name);
  }
}

}  // namespace NoxAgent
