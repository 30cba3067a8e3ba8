#pragma once

#include <string>

/// Task documents that tell which of their writers wrote them, and a check that what is read is one
/// of them as a whole. Each is larger than a page, so that halves of two would show.
namespace StressDocument {

constexpr int Writers = 4;
constexpr int Rounds = 40;

/// When a task comes due.
enum class Kind {
  AsSoonAsPossible,
  EverySecond,
  Expired,  ///< deleted by the monitor as soon as it sees the task
};

std::string Text(Kind kind, int writer, int round);

/// A run state of one word, one of three.
std::string RunState(int round);

/// Empty when `text` is a document of this kind, as written or as the scheduler rewrites it; else
/// what is wrong.
std::string Fault(const std::string& text);

}  // namespace StressDocument
