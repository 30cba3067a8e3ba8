#include "tests/agent/daemon/journal/Promises.h"

#include <algorithm>

namespace NoxAgent {

void Promises::Add(const std::string& name, State state) {
  File& file = m_Files[name];
  file.m_States.push_back(std::move(state));
  file.m_IsInDoubt = false;
  file.m_IsKnown = true;
}

void Promises::Changed(const std::string& name, const Content& content) {
  Add(name, {content, false});
}

void Promises::Made(const std::string& name, const std::string& content) {
  Add(name, {content, true});
}

void Promises::Renamed(const std::string& from, const std::string& to) {
  const Content content = Last(from);
  Add(from, {std::nullopt, false});
  // Its content is flushed together with its new name.
  Add(to, {content, true});
}

void Promises::Failed(const std::string& name, const Content& content) {
  File& file = m_Files[name];
  file.m_States.push_back({content, false});
  file.m_IsInDoubt = true;
}

void Promises::FailedToMake(const std::string& name, const std::string& content) {
  File& file = m_Files[name];
  file.m_States.push_back({content, true});
  file.m_IsInDoubt = true;
}

void Promises::FailedLater(const std::string& name) {
  File& file = m_Files[name];
  file.m_States.insert(file.m_States.begin(), file.m_Earlier.begin(), file.m_Earlier.end());
  file.m_IsInDoubt = true;
}

void Promises::ChangedByOther(const std::string& name, const Content& content) {
  File& file = m_Files[name];
  file.m_States = {{content, false}};
  file.m_Earlier.clear();
  file.m_IsInDoubt = false;
}

void Promises::ChangedBeneath(const std::string& name, const Content& content, bool isFlushed) {
  File& file = m_Files[name];
  file.m_Beneath.push_back({content, false});
  file.m_IsUnflushed = file.m_IsUnflushed || !isFlushed;
}

void Promises::ChangedUnflushed(const std::string& name, const Content& content) {
  Changed(name, content);
  m_Files[name].m_IsUnflushed = true;
}

void Promises::MadeSafe(bool areInPlace) {
  for (auto& [name, file] : m_Files) {
    if (file.m_IsInDoubt || !file.m_IsKnown) {
      continue;
    }
    file.m_Earlier.insert(file.m_Earlier.end(), file.m_States.begin(), file.m_States.end() - 1);
    file.m_States.erase(file.m_States.begin(), file.m_States.end() - 1);
    file.m_States.back().m_MayBePart = false;
    if (areInPlace) {
      file.m_Earlier.clear();
    }
  }
}

void Promises::Ended(bool wasPowerCut) {
  for (auto& [name, file] : m_Files) {
    file.m_IsKnown = false;
    file.m_Earlier.clear();
    file.m_IsLost = file.m_IsLost || (wasPowerCut && file.m_IsUnflushed);
  }
}

void Promises::Restarted(const std::string& name, const Content& content) {
  File file;
  file.m_States = {{content, false}};
  m_Files[name] = file;
}

bool Promises::IsKnown(const std::string& name) const {
  const auto found = m_Files.find(name);
  return found == m_Files.end() || found->second.m_IsKnown;
}

bool Promises::IsPlain(const std::string& name) const {
  const auto found = m_Files.find(name);
  return found == m_Files.end() ||
         (found->second.m_IsKnown && !found->second.m_IsInDoubt && !found->second.m_IsUnflushed &&
          found->second.m_Beneath.empty());
}

bool Promises::IsThere(const std::string& name) const {
  return Last(name).has_value();
}

Promises::Content Promises::Last(const std::string& name) const {
  const auto found = m_Files.find(name);
  return found != m_Files.end() ? found->second.m_States.back().m_Content : std::nullopt;
}

// A part of a new file: not all of its bytes, or zeros instead of some.
bool Promises::Fits(const State& state, const Content& content) {
  if (!state.m_MayBePart || !content || !state.m_Content) {
    return state.m_Content == content;
  }
  return content->size() <= state.m_Content->size() &&
         std::equal(content->begin(), content->end(), state.m_Content->begin(),
                    [](char left, char right) { return left == right || left == '\0'; });
}

bool Promises::MayBeRead(const std::string& name, const Content& content) const {
  const auto found = m_Files.find(name);
  if (found == m_Files.end()) {
    return !content;
  }
  const File& file = found->second;
  return !file.m_IsKnown ||
         (file.m_IsInDoubt ? MayBeFound(name, content) : file.m_States.back().m_Content == content);
}

bool Promises::MayBeFound(const std::string& name, const Content& content) const {
  const auto found = m_Files.find(name);
  if (found == m_Files.end()) {
    return !content;
  }
  const auto fits = [&](const State& state) { return Fits(state, content); };
  const File& file = found->second;
  return file.m_IsLost || std::any_of(file.m_States.begin(), file.m_States.end(), fits) ||
         std::any_of(file.m_Beneath.begin(), file.m_Beneath.end(), fits);
}

std::vector<std::string> Promises::Names() const {
  std::vector<std::string> names;
  for (const auto& entry : m_Files) {
    names.push_back(entry.first);
  }
  return names;
}

std::string Promises::Describe(const Content& content) {
  constexpr std::size_t Most = 24;
  return content ? "'" + content->substr(0, std::min(Most, content->find('\n'))) + "' (" +
                       std::to_string(content->size()) + ")"
                 : "nothing";
}

std::string Promises::DescribeAll(const std::string& name) const {
  std::string words;
  const auto found = m_Files.find(name);
  if (found != m_Files.end()) {
    for (const State& state : found->second.m_States) {
      words += (words.empty() ? "" : ", ") + Describe(state.m_Content) +
               (state.m_MayBePart ? " or a part" : "");
    }
    words += found->second.m_IsInDoubt ? "; in doubt" : "";
  }
  return words.empty() ? "nothing" : words;
}

}  // namespace NoxAgent
