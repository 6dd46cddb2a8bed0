#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quenwick/CoreData/CoreDataManager.h"
#include "quenwick/CoreData/DeeplinkQWU.h"
#include "quenwick/CoreData/ManagedObjectType.h"
#include "quenwick/platform/Writer.h"
#include "quenwick/resources/LibraryBundle.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick {
namespace {

using platform::Bundle;
using platform::dateFrom;
using platform::ManagedObjectContext;
using platform::ManagedObjectModel;
using platform::PersistentContainer;
using tests::RecordingLog;
using tests::TemporaryDirectory;

constexpr auto kWrongFetched = "error: Fetched objects have wrong type";
constexpr auto kWrongInserted = "error: Wrong Object Type";

class LinkUserStoreTest : public testing::Test {
 protected:
  ~LinkUserStoreTest() override { platform::setLogSink(nullptr); }

  CoreDataManager open() const { return {libraryBundle(), directory_.path()}; }

  /// Does the work on the context's queue.
  template <class Work>
  static void in(const std::shared_ptr<ManagedObjectContext>& context, const Work& work) {
    context->performAndWait([&] { work(*context); });
  }

  /// Notes that the identifier was seen, in the manner of the install's state.
  static DeeplinkQWU* see(ManagedObjectContext& context, const std::string& value, double at) {
    auto* record = findOrCreate<DeeplinkQWU>(context, DeeplinkQWU::searchByValuePredicate(value));
    if (!record) return nullptr;
    record->setValue(value);
    record->setLastSeenAt(dateFrom(at));
    return record;
  }

  static std::vector<std::string> newestFirst(const CoreDataManager& manager) {
    std::vector<std::string> values;
    in(manager.backgroundContext(), [&](auto& context) {
      auto records = fetch<DeeplinkQWU>(context, [](auto& request) {
        request.sortDescriptors = DeeplinkQWU::defaultSortDescriptors();
      });
      for (const auto* record : records) values.push_back(record->value().value_or("(none)"));
    });
    return values;
  }

  TemporaryDirectory directory_;
  std::shared_ptr<RecordingLog> log_ = RecordingLog::install();
};

TEST_F(LinkUserStoreTest, AnIdentifierHasOneRecordHoweverOftenItIsSeen) {
  auto manager = open();
  auto context = manager.backgroundContext();
  context->performAndWait([&] {
    EXPECT_EQ(findOrFetch<DeeplinkQWU>(*context, DeeplinkQWU::searchByValuePredicate("u-1")),
              nullptr);
    auto* record = see(*context, "u-1", 1);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(see(*context, "u-1", 2), record) << "unsaved";
    context->save();
    EXPECT_EQ(see(*context, "u-1", 3), record) << "saved";
    EXPECT_NE(see(*context, "U-1", 3), record) << "of another case";
    context->save();
  });
  auto later = manager.backgroundContext();
  ASSERT_NE(later, context);
  later->performAndWait([&] {
    EXPECT_EQ(see(*later, "u-1", 4)->objectID().isTemporary, false);
    later->save();
  });
  EXPECT_EQ(newestFirst(manager), (std::vector<std::string>{"u-1", "U-1"}));
}

TEST_F(LinkUserStoreTest, AnIdentifierHasOneRecordThoughSeveralBeginItAtOnce) {
  auto manager = open();
  auto other = open();  // stands for another process
  auto context = manager.backgroundContext();
  auto theirs = other.backgroundContext();
  context->performAndWait([&] {
    auto predicate = DeeplinkQWU::searchByValuePredicate("u");
    auto* first = findOrCreate<DeeplinkQWU>(*context, predicate);
    auto* second = findOrCreate<DeeplinkQWU>(*context, predicate);
    auto* renamed = findOrCreate<DeeplinkQWU>(*context, predicate);
    see(*theirs, "u", 1);
    theirs->save();
    for (auto* record : {first, second}) record->setValue("u");
    second->setLastSeenAt(dateFrom(2));
    renamed->setValue("v");
    context->save();
    EXPECT_EQ(first->objectID(), second->objectID());
    EXPECT_NE(renamed->objectID(), first->objectID());
    EXPECT_EQ(first->lastSeenAt(), dateFrom(2)) << "read again";
    second->setLastSeenAt(dateFrom(3));
    context->save();
  });
  EXPECT_EQ(newestFirst(other), (std::vector<std::string>{"u", "v"}));
}

TEST_F(LinkUserStoreTest, RecordsComeNewestFirstAndAreKeptAcrossLaunches) {
  const std::vector<std::string> expected = {"it's 100%", "", "%@", "undated"};
  {
    auto manager = open();
    in(manager.backgroundContext(), [&](auto& context) {
      see(context, "undated", 0)->setLastSeenAt(std::nullopt);
      see(context, "", 20);
      see(context, "it's 100%", 1);
      see(context, "%@", 3);
      see(context, "it's 100%", 30.5);
      context.save();
    });
    EXPECT_EQ(newestFirst(manager), expected);
  }
  auto manager = open();
  EXPECT_EQ(newestFirst(manager), expected);
  in(manager.mainContext(), [&](auto& context) {
    auto* record =
        findOrFetch<DeeplinkQWU>(context, DeeplinkQWU::searchByValuePredicate("it's 100%"));
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->lastSeenAt(), dateFrom(30.5));
  });
}

TEST_F(LinkUserStoreTest, OnlyWhatIsInMemoryIsMaterialized) {
  auto manager = open();
  auto predicate = DeeplinkQWU::searchByValuePredicate("u");
  in(manager.backgroundContext(), [&](auto& writing) {
    see(writing, "u", 1);
    writing.save();
  });
  in(manager.backgroundContext(), [&](auto& context) {
    EXPECT_EQ(materializedObject<DeeplinkQWU>(context, predicate), nullptr);
    auto* record = DeeplinkQWU::fetchRequest().execute(context).at(0);
    EXPECT_EQ(materializedObject<DeeplinkQWU>(context, predicate), record);
    context.refresh(*record);
    EXPECT_EQ(materializedObject<DeeplinkQWU>(context, predicate), nullptr);
    EXPECT_TRUE(record->isFault()) << "read though nobody asked for it";
    EXPECT_EQ(findOrFetch<DeeplinkQWU>(context, predicate), record);
  });
}

TEST_F(LinkUserStoreTest, ObjectsOfAnotherClassAreRefused) {
  auto model = ManagedObjectModel::read(*libraryBundle().resource("QuenwickStorage", "momd"));
  if (!model) FAIL();
  PersistentContainer container("QuenwickStorage", *model, directory_.path());
  in(container.newBackgroundContext(), [&](auto& context) {
    auto predicate = DeeplinkQWU::searchByValuePredicate("u");
    context.insertNewObject("DeeplinkQWU")->setValueForKey("value", "u");
    EXPECT_EQ(materializedObject<DeeplinkQWU>(context, predicate), nullptr);
    EXPECT_TRUE(fetch<DeeplinkQWU>(context).empty());
    EXPECT_EQ(log_->count(kWrongFetched), 1);
    EXPECT_EQ(findOrCreate<DeeplinkQWU>(context, predicate), nullptr);
    EXPECT_EQ(log_->count(kWrongFetched), 2);
    EXPECT_EQ(log_->count(kWrongInserted), 1);
  });
}

TEST_F(LinkUserStoreTest, AnEntityThatTheModelHasNotIsRefused) {
  auto manager = open();
  in(manager.backgroundContext(), [&](auto& context) {
    DeeplinkQWU::entityName = "Elsewhere";
    EXPECT_EQ(see(context, "u", 1), nullptr);
    DeeplinkQWU::entityName = "DeeplinkQWU";
    EXPECT_NE(see(context, "u", 1), nullptr);
  });
  EXPECT_EQ(log_->count(kWrongFetched), 1);
  EXPECT_EQ(log_->count(kWrongInserted), 1);
}

TEST_F(LinkUserStoreTest, WithoutAReadableModelThereIsNoStoreAndNoWord) {
  testing::internal::CaptureStdout();
  for (const auto& resources :
       {Bundle::Resources{}, Bundle::Resources{{"QuenwickStorage.momd", "not a model"}},
        Bundle::Resources{{"QuenwickStorage.mom", "another extension"}}}) {
    CoreDataManager manager(Bundle("", resources), directory_.path());
    EXPECT_EQ(manager.persistentContainer(), nullptr);
    EXPECT_EQ(manager.mainContext(), nullptr);
    EXPECT_EQ(manager.backgroundContext(), nullptr);
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_TRUE(log_->lines().empty());
  EXPECT_TRUE(std::filesystem::is_empty(directory_.path()));
}

TEST_F(LinkUserStoreTest, AStoreThatCannotBeLoadedIsPrintedInOneLineAndKept) {
  auto obstacle = directory_.path() / "an\nobstacle";
  std::ofstream(obstacle) << "a file where a folder is needed";
  testing::internal::CaptureStdout();
  CoreDataManager manager(libraryBundle(), obstacle);
  platform::writer().drain(std::chrono::minutes(1));
  auto printed = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(printed.starts_with("Failed to load persistent store: ")) << printed;
  EXPECT_EQ(std::ranges::count(printed, '\n'), 1) << printed;
  EXPECT_GT(printed.size(), 40U) << "the error is missing: " << printed;
  ASSERT_NE(manager.persistentContainer(), nullptr);
  in(manager.backgroundContext(), [&](auto& context) {
    EXPECT_TRUE(fetch<DeeplinkQWU>(context).empty());
    EXPECT_EQ(log_->count(kWrongFetched), 1);
  });
}

TEST_F(LinkUserStoreTest, TheLibrarysOwnStoreIsMadeOnceAndWorks) {
  EXPECT_EQ(libraryBundle().text("CFBundleIdentifier"), "com.quenwick.sdk");
  EXPECT_TRUE(libraryBundle().text("CFBundleShortVersionString"));
  auto& manager = CoreDataManager::shared();
  EXPECT_EQ(&CoreDataManager::shared(), &manager);
  ASSERT_NE(manager.persistentContainer(), nullptr);
  EXPECT_EQ(manager.persistentContainer()->name(), "QuenwickStorage");
  EXPECT_EQ(manager.mainContext(), manager.mainContext());
  EXPECT_NE(manager.backgroundContext(), manager.backgroundContext());
  platform::writer().drain(std::chrono::minutes(1));
  EXPECT_TRUE(std::filesystem::exists(platform::storesDirectory() / "QuenwickStorage.sqlite"));
}

}  // namespace
}  // namespace quenwick
