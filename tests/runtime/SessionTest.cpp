#include <array>

#include "tests/runtime/Host.h"

namespace quenwick::tests {
namespace {

namespace json = boost::json;

using SessionTest = RuntimeTest;

constexpr auto kLink = R"(["https://links.shop.example/p/go/1f"])";
constexpr auto kResolved = "https://shop.example/products/42?utm_source=mail";

TEST_F(SessionTest, HandlersAndSubscriptionsAreCalledOnTheHostsLoop) {
  configureAgainstSandbox();
  startAndEnableEvents();
  Recorder stored;
  auto receive = stored.callback();
  auto subscription = perform("subscribeToStoredDeeplink:", "[]", &receive);
  ASSERT_TRUE(subscription.isDone);
  EXPECT_EQ(perform("handleUniversalLinkWithUrl:", kLink), (Performed{true, "true"}));
  ASSERT_TRUE(loop_.runUntil([&] { return stored.calls().size() == 2; }));

  auto link = json::serialize(json::value(kResolved));
  EXPECT_EQ(opened_.calls(), std::vector<std::string>{"[" + link + ",null]"});
  EXPECT_EQ(stored.calls(), (std::vector<std::string>{"[null]", "[" + link + "]"}));
  EXPECT_EQ(perform("storedDeeplink", "[]").text, link);
  EXPECT_EQ(opened_.thread(), std::this_thread::get_id());
  EXPECT_EQ(stored.thread(), std::this_thread::get_id());

  EXPECT_EQ(perform("cancel:", "[" + subscription.text + "]").text, "true");
  EXPECT_EQ(stored.destroyed(), 1);
  EXPECT_EQ(perform("handleUniversalLinkWithUrl:", kLink).text, "true");
  ASSERT_TRUE(loop_.runUntil([&] { return opened_.calls().size() == 2; }));
  loop_.drain();
  EXPECT_EQ(stored.calls().size(), 2U);
}

TEST_F(SessionTest, OutcomesComeInTheFormThatWasAskedFor) {
  configureAgainstSandbox();
  Recorder outcomes;
  Recorder resolved;
  auto callback = outcomes.callback();
  perform(
      "startWithApiKey:deeplinkDomains:launchOptions:shouldRegisterForBehaviorEvents:"
      "deeplinkHandler:",
      R"([null, ["links.shop.example"], {"UIApplicationLaunchOptionsURLKey": )"
      R"("https://links.shop.example/p/go/1f"}, false])",
      &callback);
  callback = resolved.callback();
  perform("resolveWithUrl:completion:", kLink, &callback);
  ASSERT_TRUE(
      loop_.runUntil([&] { return !outcomes.calls().empty() && !resolved.calls().empty(); }));
  auto success = json::serialize(json::array{{{"success", kResolved}}});
  EXPECT_EQ(outcomes.calls(), std::vector{success});
  EXPECT_EQ(resolved.calls(), std::vector{success});

  callback = opened_.callback();
  perform(kStart, R"([null, [], null])", &callback);
  perform("handleUniversalLinkWithUrl:", R"(["https://links.shop.example/p/go/404"])");
  ASSERT_TRUE(
      loop_.runUntil([&] { return outcomes.calls().size() == 2 && !opened_.calls().empty(); }));
  auto pair = json::parse(opened_.calls()[0]);
  EXPECT_TRUE(pair.at(0).is_null());
  EXPECT_EQ(pair.at(1).at("description"), "This offer is over.\n");
  EXPECT_EQ(json::parse(outcomes.calls()[1]).at(0).at("failure"), pair.at(1));
  EXPECT_TRUE(Library::shared().shutdown(30'000)) << "which lets go of what goes with the test";
}

TEST_F(SessionTest, EveryContextIsLetGoOfOnceAndNothingIsCalledAfterShutdown) {
  configureAgainstSandbox();
  startAndEnableEvents();
  Recorder replaced;
  Recorder pending;
  Recorder stored;
  auto first = replaced.callback();
  auto second = pending.callback();
  auto third = stored.callback();
  perform("setEventsEnabledHandler:", "[]", &first);
  EXPECT_EQ(enabled_.destroyed(), 1);
  ASSERT_TRUE(
      perform("resolveWithUrl:completion:", R"(["https://links.shop.example/p/go/90"])", &second)
          .isDone);
  ASSERT_TRUE(perform("subscribeToStoredDeeplink:", "[]", &third).isDone);
  EXPECT_TRUE(Library::shared().shutdown(30'000));

  for (auto* recorder : {&replaced, &pending, &stored, &opened_, &enabled_}) {
    EXPECT_EQ(recorder->destroyed(), 1);
  }
  EXPECT_EQ(loop_.destroyed(), 1);
  EXPECT_EQ(lines_.destroyed(), 1);
  loop_.drain();
  EXPECT_TRUE(pending.calls().empty());
  EXPECT_TRUE(stored.calls().empty());

  Recorder late;
  auto callback = late.callback();
  EXPECT_EQ(perform("setEventsEnabledHandler:", "[]", &callback),
            (Performed{false, "the library was shut down"}));
  EXPECT_EQ(late.destroyed(), 1);
  EXPECT_EQ(configure("{}"), "the library was shut down");
  EXPECT_FALSE(Library::shared().flush(1'000));
  EXPECT_TRUE(Library::shared().shutdown(30'000));
}

/// The last code of a host on a thread: what it destroys there after all that the library keeps.
struct LastOfThread {
  std::function<void()> work;
  ~LastOfThread() { work(); }
};

TEST_F(SessionTest, ContextsAreLetGoOfUntilTheVeryEndOfAThread) {
  configureAgainstSandbox();
  std::array<Recorder, 3> recorders;
  auto replaceBy = [](Recorder& recorder) {
    auto callback = recorder.callback();
    EXPECT_TRUE(perform("setEventsEnabledHandler:", "[]", &callback).isDone);
  };
  std::thread([&] {
    static thread_local LastOfThread last{[&] { replaceBy(recorders[2]); }};
    replaceBy(recorders[0]);
    replaceBy(recorders[1]);
  }).join();
  EXPECT_EQ(recorders[0].destroyed() + recorders[1].destroyed(), 2);
  EXPECT_TRUE(Library::shared().shutdown(30'000));
  EXPECT_EQ(recorders[2].destroyed(), 1);
}

TEST_F(SessionTest, ACallbackMayShutTheLibraryDown) {
  configureAgainstSandbox();
  bool hasEnded = false;
  int destroyedWithin = -1;
  opened_.then = [&] {
    hasEnded = Library::shared().shutdown(30'000);
    destroyedWithin = opened_.destroyed();
  };
  startAndEnableEvents();
  EXPECT_EQ(perform("handleUniversalLinkWithUrl:", kLink).text, "true");
  ASSERT_TRUE(loop_.runUntil([&] { return opened_.destroyed() == 1; }));
  EXPECT_TRUE(hasEnded);
  EXPECT_EQ(destroyedWithin, 0);
  EXPECT_EQ(enabled_.destroyed(), 1);
}

TEST_F(SessionTest, ThreadsThatPerformDuringShutdownLoseNoContext) {
  configureAgainstSandbox();
  startAndEnableEvents();
  std::atomic<int> given = 0;
  std::atomic<int> destroyed = 0;
  std::vector<std::jthread> threads;
  std::atomic<bool> isOver = false;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      while (!isOver) {
        quenwick_callback callback = {
            .call = [](void*, const char*) {},
            .context = &destroyed,
            .destroy = [](void* count) { ++*static_cast<std::atomic<int>*>(count); }};
        ++given;
        perform(kStart, R"([null, [], null])", &callback);
        perform("subscribeToStoredDeeplink:", "[]", nullptr);
        perform("logEventWithName:properties:", R"(["waved", {}])");
      }
    });
  }
  while (given < 100) std::this_thread::yield();
  EXPECT_TRUE(Library::shared().shutdown(30'000));
  isOver = true;
  threads.clear();
  EXPECT_EQ(given, destroyed);
}

TEST_F(SessionTest, AResolutionEndsAtItsDeadlineAndWhenItIsCancelled) {
  configureAgainstSandbox();
  constexpr auto kSlow = R"("https://links.shop.example/p/go/90")";
  Recorder late;
  auto callback = late.callback();
  ASSERT_TRUE(perform("resolveWithUrl:deadline:completion:", "[" + std::string(kSlow) + ", 0.05]",
                      &callback)
                  .isDone);
  Recorder cancelled;
  callback = cancelled.callback();
  auto handle = perform("resolveWithUrl:completion:", "[" + std::string(kSlow) + "]", &callback);
  EXPECT_EQ(perform("cancel:", "[" + handle.text + "]").text, "true");
  for (auto* recorder : {&late, &cancelled}) {
    ASSERT_TRUE(loop_.runUntil([&] { return !recorder->calls().empty(); }));
    auto error = json::parse(recorder->calls()[0]).at(0).at("failure");
    EXPECT_EQ(error.at("domain"), "com.quenwick.error");
    EXPECT_EQ(error.at("code"), -1);
    EXPECT_EQ(recorder->destroyed(), 1);
  }
}

/// An event as "name" and its properties, a user as "identify" and the identifier.
std::string described(const json::value& event) {
  bool isUser = event.at("type") == "identify";
  return json::serialize(event.at(isUser ? "type" : "event")) + " " +
         json::serialize(event.at(isUser ? "user_id" : "properties"));
}

TEST_F(SessionTest, EventsAndTheirRecordsReachTheServiceAsTheyWereGiven) {
  struct Call {
    std::string selector, event;
  };
  struct Case {
    Call call;
    std::string arguments, properties;
  };
  auto product = [](const std::string& price, const std::string& value) {
    return R"({"selector": "initWithId:title:)" + price +
           R"(:url:categories:meta:", "arguments": )" + R"(["42", null, )" + value +
           R"(, null, null, null]})";
  };
  auto withPrice = [](const std::string& price) {
    return R"({"id": "42", "price": ")" + price + R"(", "meta": {}})";
  };
  auto order = [](const std::string& revenue, const std::string& value) {
    return R"({"selector": "initWithId:)" + revenue + R"(:products:", "arguments": )" +
           R"(["o", )" + value + R"(, [{"id": 9223372036854775807}]]})";
  };
  auto withRevenue = [](const std::string& revenue) {
    return R"({"id": "o", "revenue": ")" + revenue +
           R"(", "products": [{"id": "9223372036854775807"}]})";
  };
  auto line = [](const std::string& price, const std::string& value) {
    return R"({"selector": "initWithId:stringRevenue:products:", "arguments": [null, null, )"
           R"([{"selector": "initWithId:title:)" +
           price + R"(:url:quantity:", "arguments": )" + R"(["1", "Boots", )" + value +
           R"(, "https://shop.example/1", 9007199254740993]}]]})";
  };
  auto withLine = [](const std::string& price) {
    return R"({"products": [{"id": "1", "title": "Boots", "url": "https://shop.example/1", )"
           R"("price": ")" +
           price + R"(", "quantity": 9007199254740993}]})";
  };
  const Call viewed{"productViewedWithProperties:", "product_viewed"};
  const Call ordered{"orderCompletedWithProperties:", "order_completed"};
  const std::string given = R"({"id": 7})";
  const std::string product7 = R"({"id": "7", "meta": {}})";
  const std::string category7 = R"({"id": "7"})";
  const std::vector<Case> cases = {
      {viewed, product("price", "\"3.1\""), withPrice("3.1")},
      {viewed, product("price", "3"), withPrice("3.00")},
      {viewed, product("stringPrice", "\"3.1\""), withPrice("3.1")},
      {viewed, product("intPrice", "9007199254740993"), withPrice("9007199254740993.00")},
      {viewed, product("floatPrice", "16777217"), withPrice("16777216.00")},
      {viewed, product("doublePrice", "3.14159"), withPrice("3.14")},
      {viewed, product("decimalPrice", "3.14159"), withPrice("3.14159")},
      {viewed, product("decimalPrice", R"("0.10000000000000000001")"),
       withPrice("0.10000000000000000001")},
      {viewed,
       R"({"selector": "initWithDict:", "arguments": [{"id": 18446744073709551615, "meta": )"
       R"({"selector": 1, "arguments": 18446744073709551615}}]})",
       R"({"id": "18446744073709551615", )"
       R"("meta": {"selector": 1, "arguments": 18446744073709551615}})"},
      {viewed,
       R"({"selector": "initWithId:title:stringPrice:url:categories:meta:", "arguments": )"
       R"(["1", "Boots", null, "https://shop.example/1", [{"id": 7}, )"
       R"({"selector": "initWithId:title:url:", "arguments": ["8", "Shoes", null]}], {"a": [1]}]})",
       R"({"id": "1", "title": "Boots", "url": "https://shop.example/1", )"
       R"("categories": [{"id": "7"}, {"id": "8", "title": "Shoes"}], "meta": {"a": [1]}})"},
      {ordered, order("stringRevenue", "\"3.1\""), withRevenue("3.1")},
      {ordered, order("intRevenue", "3"), withRevenue("3.00")},
      {ordered, order("floatRevenue", "16777217"), withRevenue("16777216.00")},
      {ordered, order("doubleRevenue", "3.14159"), withRevenue("3.14")},
      {ordered, order("decimalRevenue", "3.14159"), withRevenue("3.14159")},
      {ordered, line("price", "2"), withLine("2.00")},
      {ordered, line("stringPrice", "\"2.5\""), withLine("2.5")},
      {ordered, line("floatPrice", "2.5"), withLine("2.50")},
      {ordered, line("doublePrice", "2.5"), withLine("2.50")},
      {ordered, line("decimalPrice", "2.5"), withLine("2.5")},
      {{"productSearchedWithProperties:", "product_searched"},
       R"({"selector": "initWithQuery:url:", "arguments": ["boots", "https://shop.example/s"]})",
       R"({"query": "boots", "url": "https://shop.example/s"})"},
      {{"productSearched:", "product_searched"}, R"({"query": "hats"})", R"({"query": "hats"})"},
      {{"productViewed:", "product_viewed"}, given, product7},
      {{"productAdded:", "product_added"}, given, product7},
      {{"productAddedWithProperties:", "product_added"}, given, product7},
      {{"productRemoved:", "product_removed"}, given, product7},
      {{"productRemovedWithProperties:", "product_removed"}, given, product7},
      {{"categoryViewed:", "category_viewed"}, given, category7},
      {{"categoryViewedWithCategory:", "category_viewed"}, given, category7},
      {{"orderCompleted:", "order_completed"},
       R"({"products": [{"id": 7}]})",
       R"({"products": [{"id": "7"}]})"},
      {{"logEventWithName:properties:", "waved"},
       R"("waved", {"twice": true})",
       R"({"twice": true})"},
      {{"identifyUser:", "identify"}, "\"bob\"", "\"bob\""},
      {{"identifyUser", "identify"}, "", "\"alice\""},
  };
  configureAgainstSandbox();
  startAndEnableEvents();
  perform("setQWU:", R"(["alice"])");
  for (const auto& [call, arguments, properties] : cases) {
    EXPECT_EQ(perform(call.selector, "[" + arguments + "]"), (Performed{true, "null"}))
        << arguments;
    // One by one, so that no search takes the place of another.
    ASSERT_TRUE(Library::shared().flush(30'000));
    auto sent = events();
    sandbox_.forgetEvents();
    ASSERT_EQ(sent.size(), 1U) << call.selector;
    EXPECT_EQ(described(sent[0]),
              '"' + call.event + "\" " + json::serialize(json::parse(properties)));
  }
}

}  // namespace
}  // namespace quenwick::tests
