// A shop at a terminal, and all that it takes to take part: it is opened with a link, waits for the
// service to confirm its key, which stands in Info.plist, and reports what a customer does.

#include <cstdio>
#include <thread>

#include <quenwick/quenwick.h>
#include "examples/shop/Journal.h"
#include "examples/shop/Options.h"

namespace shop {
namespace {

using namespace std::chrono_literals;
using quenwick::DeeplinkResult;
using quenwick::Dictionary;
using quenwick::List;
using quenwick::QWClient;

constexpr auto kPatience = 8s;

quenwick::Configuration configuration(const Options& options) {
  return {.serviceURL = options.serviceURL,
          .trustAnchors = options.authority,
          .connectTo = options.connectTo,
          .home = options.home,
          .logHook = [](quenwick::LogLevel level, std::string_view message) {
            if (level != quenwick::LogLevel::error) return;
            std::fprintf(stderr, "  ! %.*s\n", static_cast<int>(message.size()), message.data());
          }};
}

/// Something that the library tells once, on a thread of its own.
template <class T>
struct Awaited {
  std::promise<T> promise;
  std::future<T> future = promise.get_future();

  bool comes() { return future.wait_for(kPatience) == std::future_status::ready; }
};

/// Opens the shop with the link; whether both the destination and the permission to report came.
bool open(const Options& options, Journal& journal) {
  auto opened = std::make_shared<Awaited<DeeplinkResult>>();
  auto enabled = std::make_shared<Awaited<void>>();
  journal.say("opened with", options.link);
  journal.write("opened", {{"link", options.link}});
  auto begin = std::chrono::steady_clock::now();
  QWClient::setEventsEnabledHandler([enabled] { enabled->promise.set_value(); });
  QWClient::start({
      .apiKey = options.apiKey,
      .launchOptions = {{quenwick::UIApplicationLaunchOptionsURLKey, options.link}},
      .deeplinkHandler = [opened](const auto& result) { opened->promise.set_value(result); },
  });

  if (!QWClient::canHandleURL(options.link) || !opened->comes()) {
    journal.say("nowhere", "the link is not one of the shop's, or the service does not answer");
    return false;
  }
  auto taken = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - begin);
  auto result = opened->future.get();
  auto* destination = std::get_if<std::string>(&result);
  if (!destination) {
    auto reason = std::get<quenwick::DeeplinkResolutionError>(result).localizedDescription();
    journal.say("nowhere", reason.empty() ? "the service gives no reason" : reason);
    return false;
  }
  journal.say("leads to", *destination);
  journal.say("", "in " + std::to_string(taken.count()) + " ms, for the customer " +
                      QWClient::qwU().value_or("(unknown)"));
  journal.write("resolved", {{"link", *destination}, {"user", QWClient::qwU().value_or("")}});
  if (!enabled->comes()) {
    journal.say("key", "not confirmed");
    return false;
  }
  journal.say("key", "confirmed by the service: events are enabled");
  return true;
}

void search(const std::string& query, Journal& journal) {
  std::string typed;
  std::string keystrokes;
  for (char letter : query) {
    typed += letter;
    keystrokes += (keystrokes.empty() ? "" : ", ") + typed;
    journal.write("product_searched", {{"query", typed}});
    QWClient::productSearched({{"query", typed}});
    std::this_thread::sleep_for(70ms);  // as fast as a quick person types
  }
  journal.say("searches", keystrokes);
}

void shopAround(Journal& journal) {
  auto report = [&](const std::string& act, void (*call)(Dictionary), const Dictionary& details) {
    journal.write(act, details);
    call(details);
  };
  Dictionary boots{{"id", "42"}, {"title", "Boots"}, {"price", "89.90"}};

  journal.say("browses", "Shoes, then Boots for 89.90");
  report("category_viewed", QWClient::categoryViewed, {{"id", "7"}, {"title", "Shoes"}});
  report("product_viewed", QWClient::productViewed, boots);
  search("laces", journal);
  journal.say("adds", "Boots to the cart");
  report("product_added", QWClient::productAdded, boots);
  journal.say("orders", "o-7: two pairs of Boots, 179.80");
  report("order_completed", QWClient::orderCompleted,
         {{"id", "o-7"},
          {"revenue", "179.80"},
          {"products", List{Dictionary{{"id", "42"}, {"price", "89.90"}, {"quantity", 2}}}}});
  journal.say("signs in", "as customer-7");
  journal.write("identify", {{"user_id", "customer-7"}});
  QWClient::identifyUser("customer-7");
}

int run(const Options& options) {
  if (!quenwick::configure(configuration(options))) return 1;
  Journal journal(options.journal);
  bool isOpen = open(options, journal);
  if (isOpen) shopAround(journal);
  bool isSent = QWClient::flush(kPatience);
  if (isOpen) journal.say("closes", isSent ? "when all of it was sent" : "before all was sent");
  return QWClient::shutdown(kPatience) && isOpen && isSent ? 0 : 1;
}

}  // namespace
}  // namespace shop

int main(int count, char** words) {
  try {
    auto options = shop::parse({words + 1, static_cast<std::size_t>(count - 1)});
    if (options.asksForHelp) return std::fputs(shop::kUsage, stdout) < 0 ? 1 : 0;
    return shop::run(options);
  } catch (const shop::UsageError& error) {
    std::fprintf(stderr, "shop: %s\n%s", error.what(), shop::kUsage);
    return 2;
  }
}
