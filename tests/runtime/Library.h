#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <boost/json.hpp>
#include <string>
#include <utility>

#include "quenwick/runtime/quenwick_c.h"

namespace quenwick::tests {

/// The shared library as a program finds it that knows nothing but its C functions.
class Library {
 public:
  static const Library& shared() {
    static const Library library;
    return library;
  }

  decltype(&quenwick_version) version = find<decltype(&quenwick_version)>("quenwick_version");
  decltype(&quenwick_free) free = find<decltype(&quenwick_free)>("quenwick_free");
  decltype(&quenwick_configure) configure =
      find<decltype(&quenwick_configure)>("quenwick_configure");
  decltype(&quenwick_perform) perform = find<decltype(&quenwick_perform)>("quenwick_perform");
  decltype(&quenwick_selectors) selectors =
      find<decltype(&quenwick_selectors)>("quenwick_selectors");
  decltype(&quenwick_flush) flush = find<decltype(&quenwick_flush)>("quenwick_flush");
  decltype(&quenwick_shutdown) shutdown = find<decltype(&quenwick_shutdown)>("quenwick_shutdown");

  /// The library's text, freed.
  std::string taken(char* text) const {
    std::string copy = text ? text : "";
    free(text);
    return copy;
  }

 private:
  template <class Function>
  static Function find(const char* name) {
    static void* library = dlopen(RUNTIME_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    auto* symbol = library ? dlsym(library, name) : nullptr;
    if (!symbol) throw std::runtime_error(dlerror());
    return reinterpret_cast<Function>(symbol);
  }
};

/// What a selector yielded.
struct Performed {
  bool isDone = false;
  std::string text;

  friend bool operator==(const Performed&, const Performed&) = default;
  friend void PrintTo(const Performed& performed, std::ostream* out) {
    *out << (performed.isDone ? "done: " : "refused: ") << performed.text;
  }
};

inline Performed perform(const char* selector, const char* arguments,
                         const quenwick_callback* callback = nullptr) {
  const auto& library = Library::shared();
  char* answer = nullptr;
  bool isDone = library.perform(selector, arguments, callback, &answer);
  return {isDone, library.taken(answer)};
}

inline Performed perform(const std::string& selector, const std::string& arguments,
                         const quenwick_callback* callback = nullptr) {
  return perform(selector.c_str(), arguments.c_str(), callback);
}

/// The configuration's refusal; empty where it was taken.
inline std::string configure(const char* configuration, const quenwick_executor* executor = nullptr,
                             const quenwick_log* log = nullptr) {
  const auto& library = Library::shared();
  char* error = nullptr;
  bool isDone = library.configure(configuration, executor, log, &error);
  EXPECT_EQ(isDone, error == nullptr);
  return library.taken(error);
}

}  // namespace quenwick::tests
