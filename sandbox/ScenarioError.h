#pragma once

#include <stdexcept>

namespace quenwick::sandbox {

/// What is wrong with a scenario, and at which place: "links[0].chain[1].status: ...".
class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace quenwick::sandbox
