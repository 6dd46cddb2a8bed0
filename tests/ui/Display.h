#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "tests/ui/ChildProcess.h"

typedef struct _XDisplay XDisplay;

namespace quenwick::tests {

/// An X server of the test's own, without a screen that anybody sees. Its pointer and its keyboard
/// are moved as a person moves them.
class Display {
 public:
  /// With a screen of that size.
  Display(int width, int height);
  ~Display();

  /// ":12"
  const std::string& name() const { return name_; }

  void click(int x, int y);
  void moveTo(int x, int y);
  enum class Key { escape, tab, enter };
  void press(Key key);
  void pressEscape() { press(Key::escape); }

  /// Gives the keyboard to the window that is shown; there is no window manager to do so.
  void focusWindow();

  /// 0xRRGGBB of a pixel that is seen.
  std::uint32_t colorAt(int x, int y) const;

  /// The middle of the longest line of pixels of that colour, x and y; none where none is as long
  /// as `atLeast`.
  std::optional<std::pair<int, int>> widestPlaceOf(std::uint32_t color, int atLeast) const;

  /// A number that differs where what is seen differs.
  std::uint32_t checksum() const;

  /// Writes what is seen as a PNG file; whether it could.
  bool save(const std::string& file) const;

 private:
  int width_;
  int height_;
  std::unique_ptr<Daemon> server_;
  std::string name_;
  XDisplay* connection_ = nullptr;
};

/// Asks again and again until the answer is yes; whether it was in time.
bool eventually(const std::function<bool()>& answer,
                std::chrono::milliseconds patience = kPatience);

}  // namespace quenwick::tests
