#pragma once

#include "quenwick/platform/Pasteboard.h"

namespace quenwick::ui {

/// The clipboard of GTK's default display, read in the main context.
class Pasteboard : public platform::Pasteboard {
 public:
  platform::Task<bool> hasURLs() override;
  platform::Task<bool> hasStrings() override;
  platform::Task<std::optional<platform::URL>> url() override;
  platform::Task<std::optional<std::string>> string() override;
};

}  // namespace quenwick::ui
