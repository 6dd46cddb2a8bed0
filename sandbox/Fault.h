#pragma once

#include <boost/json/object.hpp>
#include <vector>

#include "sandbox/Answer.h"
#include "sandbox/BehaviorPart.h"

namespace quenwick::sandbox {

class JSONNode;

/// What is answered on demand in place of the right answer.
struct Fault {
  /// As it was given.
  boost::json::object text = {};
  Answer answer = {};
  /// Whether the right answer is sent after all, only later or cut short.
  bool isRightAnswer = false;
  /// How many requests it answers; 0 for all, until it is taken back.
  std::uint64_t times = 0;

  /// Whether a client that waits gets the right answer whole.
  bool isHarmless() const { return isRightAnswer && answer.cut == Cut::none; }

  /// What is sent where `right` would be.
  Answer over(Answer right) const;
};

/// Reads a fault, its kind alone, or a list of faults that are answered one after another.
std::vector<Fault> readFaults(const JSONNode& node, BehaviorPart part);

}  // namespace quenwick::sandbox
