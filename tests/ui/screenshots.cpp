// Writes pictures of the in-app views, as they stand in the documentation, into a folder.

#include <cstdio>
#include <string>
#include <thread>
#include <tuple>

#include "tests/support/SandboxService.h"
#include "tests/ui/Display.h"
#include "tests/ui/Host.h"

namespace quenwick::tests {
namespace {

constexpr int kWidth = 1024;
constexpr int kHeight = 700;

/// Waits until two pictures in a row, a little apart, are the same and not black.
bool isStill(const Display& display) {
  std::uint32_t last = 0;
  return eventually([&] {
    auto sum = display.checksum();
    bool isSame = sum == last && display.colorAt(kWidth / 2, kHeight / 2) != 0;
    last = sum;
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    return isSame;
  });
}

int run(const std::string& folder) {
  Display display(kWidth, kHeight);
  SandboxService service;
  Host host(display.name());
  auto address = "http://127.0.0.1:" + std::to_string(service.sandbox().httpPort());
  for (auto [command, path, file] : {std::tuple("message", "/messages/spring", "message.png"),
                                     {"browser", "/pages/lookbook", "browser.png"}}) {
    host.tell(command + (" " + address + path));
    host.next("covered", platform::Value(true));
    display.moveTo(kWidth - 4, kHeight - 4);
    if (!isStill(display) || !display.save(folder + "/" + file)) return 1;
    std::printf("%s/%s\n", folder.c_str(), file);
    display.focusWindow();
    display.pressEscape();
    host.next("covered", platform::Value(false));
  }
  return 0;
}

}  // namespace
}  // namespace quenwick::tests

int main(int count, char** words) { return count == 2 ? quenwick::tests::run(words[1]) : 2; }
