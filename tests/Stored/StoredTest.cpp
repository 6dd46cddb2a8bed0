#include "quenwick/Stored/Stored.h"

#include <gtest/gtest.h>

#include "tests/support/FatalMessage.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick {
namespace {

class StoredTest : public testing::Test {
 protected:
  platform::UserDefaults& open() { return platform::UserDefaults::make(file_); }

  tests::TemporaryDirectory folder_;
  std::filesystem::path file_ = folder_.path() / "preferences.sqlite";
};

TEST_F(StoredTest, ADefaultHoldsUntilAValueIsAssignedAlsoAfterARestart) {
  {
    auto& defaults = open();
    Stored<bool> flag(true, "flag", defaults);
    EXPECT_TRUE(flag.wrappedValue());
    flag.setWrappedValue(false);
    EXPECT_FALSE(flag.wrappedValue());
    defaults.synchronize();
  }
  auto& defaults = open();
  Stored<bool> flag(true, "flag", defaults);
  EXPECT_FALSE(flag.wrappedValue());
  defaults.removeObject("flag");
  EXPECT_TRUE(flag.wrappedValue()) << "read from the store, not from the wrapper";
}

TEST_F(StoredTest, ChangesAreStreamedAfterTheyAreSaved) {
  auto& defaults = open();
  StoredOptional<std::string> text("text", defaults);
  using Text = std::optional<std::string>;
  std::vector<std::pair<Text, Text>> texts;  // what was sent, and what was saved by then
  auto first = text.projectedValue().subscribe(
      [&](const auto& value) { texts.emplace_back(value, text.wrappedValue()); });
  text.setWrappedValue("a");
  text.setWrappedValue("refused: not UTF-8 \xff");
  text.setWrappedValue(std::nullopt);
  EXPECT_EQ(texts, (std::vector<std::pair<Text, Text>>{{}, {"a", "a"}, {}}));
  EXPECT_EQ(defaults.object("text"), std::nullopt);
  Stored<bool> flag(true, "flag", defaults);
  std::vector<std::pair<bool, bool>> flags;
  auto second = flag.projectedValue().subscribe(
      [&](bool value) { flags.emplace_back(value, flag.wrappedValue()); });
  flag.setWrappedValue(false);
  EXPECT_EQ(flags, (std::vector<std::pair<bool, bool>>{{true, true}, {false, false}}));
}

TEST_F(StoredTest, AValueOfAnotherKindReadsAsNone) {
  auto& defaults = open();
  defaults.setObject(std::int64_t{7}, "key");
  EXPECT_EQ(StoredOptional<std::string>("key", defaults).wrappedValue(), std::nullopt);
  EXPECT_EQ(StoredOptional<double>("key", defaults).wrappedValue(), std::nullopt);
  EXPECT_EQ(StoredOptional<std::int64_t>("key", defaults).wrappedValue(), 7);
}

TEST_F(StoredTest, FetchingWhatIsAbsentIsAProgrammingFault) {
  auto said = tests::fatalMessage([&] { fetch<bool>(open(), "absent"); });
  EXPECT_NE(said.find("absent"), said.npos);
}

TEST_F(StoredTest, IdentifiersAreKeptAsTheirText) {
  auto& defaults = open();
  auto made = platform::UUID::random();
  set(defaults, made, "id");
  EXPECT_EQ(defaults.object("id"), platform::DefaultsValue(made.uuidString()));
  EXPECT_EQ(uuid(defaults, "id"), made);
  save(defaults, std::string("not one"), "id");
  EXPECT_EQ(uuid(defaults, "id"), std::nullopt);
}

}  // namespace
}  // namespace quenwick
