#include <gtest/gtest.h>

#include "quenwick/platform/JSONSerialization.h"
#include "tests/ui/Display.h"
#include "tests/ui/Host.h"

namespace quenwick::tests {
namespace {

using platform::Dictionary;
using platform::Value;

std::string text(const Value& value) { return platform::JSONSerialization::text(value); }

TEST(Clipboard, OffersWhatAnotherProgramCopied) {
  Display display(320, 240);
  Host other(display.name());
  Host host(display.name());
  struct Case {
    std::string copied;
    Dictionary pasted;
  };
  for (const auto& [copied, pasted] : {
           Case{"text/plain;charset=utf-8 https://links.shop.example/p/go/1f",
                {{"hasURLs", false},
                 {"hasStrings", true},
                 {"url", nullptr},
                 {"string", "https://links.shop.example/p/go/1f"}}},
           Case{"text/uri-list https://links.shop.example/%2f?a",
                {{"hasURLs", true},
                 {"hasStrings", false},
                 {"url", "https://links.shop.example/%2f?a"},
                 {"string", nullptr}}},
           Case{"image/png none",
                {{"hasURLs", false}, {"hasStrings", false}, {"url", nullptr}, {"string", nullptr}}},
       }) {
    other.tell("copy " + copied);
    ASSERT_FALSE(other.next("copied").isNull());
    // The news of it reaches the host by way of the display.
    Value seen;
    eventually([&] {
      host.tell("paste");
      if (host.next("hasURLs").isNull()) return true;
      seen = host.latest();
      return seen == Value(pasted);
    });
    EXPECT_EQ(text(seen), text(pasted)) << copied;
  }
}

}  // namespace
}  // namespace quenwick::tests
