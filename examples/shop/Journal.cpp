#include "examples/shop/Journal.h"

#include <algorithm>
#include <cstdio>

namespace shop {
namespace {

using quenwick::Dictionary;
using quenwick::List;
using quenwick::Value;

std::string textOf(const Value& value) {
  if (auto* text = value.as<std::string>()) return *text;
  if (auto* number = value.as<std::int64_t>()) return std::to_string(*number);
  return "?";
}

/// Each text and number in the value, behind the way to it.
std::string flat(const std::string& path, const Value& value) {
  std::string all;
  if (auto* dictionary = value.as<Dictionary>()) {
    for (const auto& [key, one] : *dictionary) {
      all += flat(path.empty() ? key : path + "." + key, one);
    }
  } else if (auto* list = value.as<List>()) {
    for (std::size_t i = 0; i < list->size(); ++i) {
      all += flat(path + "." + std::to_string(i), (*list)[i]);
    }
  } else {
    all = "\t" + path + "=" + textOf(value);
  }
  return all;
}

}  // namespace

Journal::Journal(const std::optional<std::filesystem::path>& file) {
  if (file) file_.open(*file);
}

void Journal::say(const std::string& what, const std::string& text) {
  auto line = text;  // what a server says must not drive the terminal
  std::ranges::replace_if(line, [](unsigned char c) { return c < ' ' || c == 0x7f; }, ' ');
  std::printf("  %-12s %s\n", what.c_str(), line.c_str());
  std::fflush(stdout);
}

void Journal::write(const std::string& act, const Dictionary& details) {
  if (file_.is_open()) file_ << act << flat("", details) << std::endl;
}

}  // namespace shop
