// A host that opens the library, uses it, ends it and closes it, all before it exits.
//   unloading LIBRARY CONFIGURATION

#include <dlfcn.h>

#include <cstdio>
#include <semaphore>

#include "quenwick/runtime/quenwick_c.h"

namespace {

class Library {
 public:
  explicit Library(const char* file) : handle_(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {}

  bool isOpen() const { return handle_ != nullptr; }
  bool close() { return dlclose(handle_) == 0; }

  bool perform(const char* selector, const char* arguments, const quenwick_callback* callback) {
    char* answer = nullptr;
    bool isDone = find<decltype(quenwick_perform)>("quenwick_perform")(selector, arguments,
                                                                       callback, &answer);
    if (!isDone) std::fprintf(stderr, "%s\n", answer);
    find<decltype(quenwick_free)>("quenwick_free")(answer);
    return isDone;
  }

  template <class Function>
  Function* find(const char* name) {
    return reinterpret_cast<Function*>(dlsym(handle_, name));
  }

 private:
  void* handle_;
};

/// Posted once the callback was called; it was let go of when the library is closed.
struct Waited {
  std::binary_semaphore isCalled{0};
  int destroyed = 0;

  quenwick_callback callback() {
    return {.call =
                [](void* self, const char* arguments) {
                  std::printf("called %s\n", arguments);
                  static_cast<Waited*>(self)->isCalled.release();
                },
            .context = this,
            .destroy = [](void* self) { ++static_cast<Waited*>(self)->destroyed; }};
  }
};

bool use(Library& library, const char* configuration) {
  Waited opened;
  Waited enabled;
  auto onOpened = opened.callback();
  auto onEnabled = enabled.callback();
  if (!library.find<decltype(quenwick_configure)>("quenwick_configure")(configuration, nullptr,
                                                                        nullptr, nullptr) ||
      !library.perform("setEventsEnabledHandler:", "[]", &onEnabled) ||
      !library.perform("startWithApiKey:deeplinkDomains:launchOptions:result:",
                       R"(["demo-key", ["links.shop.example"], null])", &onOpened) ||
      !library.perform("handleUniversalLinkWithUrl:", R"(["https://links.shop.example/p/go/1f"])",
                       nullptr)) {
    return false;
  }
  opened.isCalled.acquire();
  enabled.isCalled.acquire();
  bool isSent = library.perform("productViewed:", R"([{"id": 42, "price": 3.5}])", nullptr) &&
                library.find<decltype(quenwick_flush)>("quenwick_flush")(30'000);
  bool hasEnded = library.find<decltype(quenwick_shutdown)>("quenwick_shutdown")(30'000);
  return isSent && hasEnded && opened.destroyed == 1 && enabled.destroyed == 1;
}

}  // namespace

int main(int count, char** words) {
  if (count != 3) return 2;
  Library library(words[1]);
  return library.isOpen() && use(library, words[2]) && library.close() ? 0 : 1;
}
