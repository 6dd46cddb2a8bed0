#include "tests/ui/Host.h"

#include <stdexcept>
#include <utility>

#include "quenwick/platform/JSONSerialization.h"

namespace quenwick::tests {
Host::Host(const std::string& display, const std::string& kind) {
  auto home = desktop_.folder() / "home";
  program_ = std::make_unique<ChildProcess>(std::vector<std::string>{UI_HOST, home.string(), kind},
                                            desktop_.environment(display));
  if (next("ready").isNull()) throw std::runtime_error("the host did not start");
}

platform::Value Host::next(const std::string& key, std::optional<platform::Value> value) {
  while (auto line = program_->line(kPatience)) {
    auto event = platform::JSONSerialization::parse(*line);
    const auto& said = *event.as<platform::Dictionary>();
    said_.push_back(said);
    const auto* found = said.find(key);
    if (found && (!value || *found == *value)) return *found;
  }
  return {};
}

std::vector<platform::Value> Host::said(const std::string& key) {
  std::vector<platform::Value> values;
  for (const auto& event : std::exchange(said_, {})) {
    if (const auto* value = event.find(key)) values.push_back(*value);
  }
  return values;
}

}  // namespace quenwick::tests
