// What a host's thread pays for looking at a link and at a setting, beside PCRE2 and SQLite that
// look at the same.

#include <memory>
#include <string>

#include "bench/support/Looks.h"
#include "bench/support/PatternSearch.h"
#include "bench/support/SettingsTable.h"
#include "quenwick/Stored/Stored.h"
#include "quenwick/client/Configuration.h"
#include "quenwick/client/HandleableLinks.h"
#include "quenwick/client/QWClient.h"
#include "quenwick/deeplink/DeeplinkPath.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::bench {
namespace {

constexpr auto kTable = "lookups";

/// A link of 80 characters.
std::string link(const std::string& path) {
  std::string text = "https://links.shop.example" + path + "?utm_source=";
  return text + std::string(80 - text.size(), 'x');
}

void addClassify(Looks& looks, const char* what, const std::string& path,
                 std::optional<DeeplinkPath> shape) {
  auto search = std::make_shared<PatternSearch>(
      std::vector<std::string>{std::string(DeeplinkPath(DeeplinkPath::rpLink).rawValue()),
                               std::string(DeeplinkPath(DeeplinkPath::cpLink).rawValue()),
                               std::string(DeeplinkPath(DeeplinkPath::goLinks).rawValue())});
  looks.add(
      {.table = kTable,
       .what = std::string("`DeeplinkPath::path`, 80 characters, ") + what,
       .other = "PCRE2",
       .target = Target{1e-6, Target::Of::ours}},
      [url = *platform::URL::parse(link(path)), shape] { return DeeplinkPath::path(url) == shape; },
      [search, text = link(path), isAny = shape.has_value()] {
        return search->isFound(text) == isAny;
      });
}

void addSetting(Looks& looks, const tests::TemporaryDirectory& folder) {
  constexpr auto kKey = "com.quenwick.sdk.qwuDeeplink";
  const std::string identifier = "an identifier of some thirty chars";
  auto& defaults = platform::UserDefaults::make(folder.path() / "preferences.sqlite");
  auto table = std::make_shared<SettingsTable>(folder.path() / "other.sqlite");
  for (int i = 0; i < 100; ++i) {
    auto key = "com.quenwick.sdk.other" + std::to_string(i);
    defaults.setObject(double(i), key);
    table->set(key, std::to_string(i));
  }
  auto setting = std::make_shared<StoredOptional<std::string>>(kKey, defaults);
  setting->setWrappedValue(identifier);
  table->set(kKey, identifier);
  defaults.synchronize();
  looks.add(
      {.table = kTable,
       .what = "a stored setting read when nothing changed",
       .other = "SQLite",
       .target = Target{200e-9, Target::Of::ours}},
      [setting, identifier] { return setting->wrappedValue() == identifier; },
      [table, identifier] { return table->value(kKey) == identifier; });
}

/// Ten domains, and twenty patterns of the first.
void registerLinks() {
  std::vector<std::string> domains;
  for (int i = 0; i < 10; ++i) domains.push_back("links" + std::to_string(i) + ".shop.example");
  QWClient::registerDeeplinkDomains(domains);
  std::vector<std::string> patterns;
  for (int i = 0; i < 20; ++i) {
    patterns.push_back("^https://[^/]+/offers/" + std::to_string(i) + "/[a-z]+$");
  }
  QWClient::addHandleablePaths({{domains.front(), patterns}});
}

void addHandling(Looks& looks) {
  auto add = [&](const char* what, const std::string& url, bool isHandled) {
    looks.add({.table = kTable,
               .what = std::string("`canHandleURL`, 10 domains and 20 patterns, ") + what,
               .target = Target{2e-6, Target::Of::ours}},
              [url, isHandled] { return QWClient::canHandleURL(url) == isHandled; });
  };
  add("a tracking link", "https://links0.shop.example/p/go/1f2e3d4c5b6a?qw_u=alice", true);
  add("a link of the last pattern", "https://links0.shop.example/offers/19/boots", true);
  add("a miss of all patterns", "https://links0.shop.example/products/shoes/42/red", false);
  add("a miss of all domains", "https://www.shop.example/p/go/1f2e3d4c5b6a?qw_u=alice", false);
}

/// Many domains; with `isOneHost` the first has as many patterns, otherwise each has one.
struct ManyLinks {
  ManyLinks(std::size_t count, bool isOneHost) {
    for (std::size_t i = 0; i < count; ++i) {
      domains.push_back("links" + std::to_string(i) + ".shop.example");
      paths[domains[isOneHost ? 0 : i]].push_back("/offers/" + std::to_string(i) + "/[a-z]+$");
    }
  }
  std::shared_ptr<HandleableLinks> registered() const {
    auto links = std::make_shared<HandleableLinks>();
    links->insertDomains(domains);
    links->addPaths(paths);
    return links;
  }

  std::vector<std::string> domains;
  HandleableLinks::Paths paths;
};

void addRegistering(Looks& looks) {
  looks.add({.table = kTable, .what = "1,000 domains registered, with a pattern each"},
            [links = ManyLinks(1'000, false)] { return links.registered() != nullptr; });
}

void addGrowth(Looks& looks) {
  for (auto count : std::initializer_list<std::size_t>{1, 10, 100, 1'000}) {
    auto add = [&](const char* what, bool isOneHost, const std::string& url, bool isHandled,
                   double pieces) {
      looks.add(
          {.table = "growth", .what = what, .size = static_cast<double>(count)},
          [links = ManyLinks(count, isOneHost).registered(), url, isHandled] {
            return links->contains(*platform::URL::parse(url)) == isHandled;
          },
          pieces);
    };
    auto last = "https://links" + std::to_string(count - 1) + ".shop.example";
    add("domains, each with a pattern: a tracking link", false, last + "/p/go/1f2e", true, 1);
    add("domains, each with a pattern: a link of one", false,
        last + "/offers/" + std::to_string(count - 1) + "/boots", true, 1);
    add("domains, each with a pattern: a miss of all", false, "https://www.shop.example/p/go/1f",
        false, 1);
    add("patterns of one domain: a miss of all, for each pattern", true,
        "https://links0.shop.example/products/42", false, static_cast<double>(count));
  }
}

int run() {
  tests::TemporaryDirectory folder;
  configure({.bundleIdentifier = "com.example.bench", .home = folder.path()});
  registerLinks();
  Looks looks;
  addClassify(looks, "/p/rpm/", "/p/rpm/1f2e3d/mail/url", DeeplinkPath::rpLink);
  addClassify(looks, "/p/go/", "/p/go/1f2e3d4c5b6a", DeeplinkPath::goLinks);
  addClassify(looks, "no shape", "/products/shoes/42/red", std::nullopt);
  addClassify(looks, "nearly one", "/p/rp/p/rpm/p/cx/p/gx", std::nullopt);
  addSetting(looks, folder);
  addHandling(looks);
  addRegistering(looks);
  addGrowth(looks);
  return looks.run() ? 0 : 1;
}

}  // namespace
}  // namespace quenwick::bench

int main() { return quenwick::bench::run(); }
