#include "quenwick/platform/Pasteboard.h"

#include <utility>

#include "quenwick/platform/Replaceable.h"

namespace quenwick::platform {
namespace {

Replaceable<Pasteboard>& current() {
  static auto& instance = *new Replaceable<Pasteboard>;
  return instance;
}

}  // namespace

std::shared_ptr<Pasteboard> Pasteboard::general() { return current().get(); }

void Pasteboard::setGeneral(std::shared_ptr<Pasteboard> pasteboard) {
  current().replace(std::move(pasteboard));
}

}  // namespace quenwick::platform
