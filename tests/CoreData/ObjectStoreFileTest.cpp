#include <gtest/gtest.h>

#include <fstream>
#include <future>
#include <latch>
#include <string>
#include <vector>

#include "quenwick/platform/ObjectStoreStatements_sqlite.h"
#include "quenwick/platform/PersistentStore.h"
#include "quenwick/platform/SQLiteDatabase.h"
#include "quenwick/platform/Writer.h"
#include "tests/CoreData/NoteStoreTest.h"

namespace quenwick::platform {
namespace {

using ObjectStoreFileTest = NoteStoreTest;

TEST_F(ObjectStoreFileTest, ASaveThatFailsWritesNothingAndMayBeRepeated) {
  auto container = open();
  save(*container, {"before"});
  SQLiteDatabase other(file());
  other.run(
      "CREATE TRIGGER refuse BEFORE INSERT ON Note WHEN NEW.text = 'refused'"
      " BEGIN SELECT RAISE(ABORT, 'refused'); END");
  auto context = container->newBackgroundContext();
  context->performAndWait([&] {
    context->execute({.entityName = "Note"}).front()->setValueForKey("text", "after");
    insert(*context, "accepted");
    insert(*context, "refused");
    EXPECT_THROW(context->save(), Error);
  });
  EXPECT_EQ(saved(*container), Texts{"before"});
  other.run("DROP TRIGGER refuse");
  context->performAndWait([&] { context->save(); });
  EXPECT_EQ(saved(*container), (Texts{"after", "accepted", "refused"}));
}

TEST_F(ObjectStoreFileTest, AFileOfAnEarlierModelIsBroughtUpToTheLaterOne) {
  save(*open(kTextOnly), {"old"});
  auto later = open(kDatedNote);
  inContext(*later, [&](auto& context) {
    auto* note = context.execute({.entityName = "Note", .predicate = textIs("old")}).at(0);
    EXPECT_EQ(note->valueForKey("at"), AttributeValue());
    note->setValueForKey("at", dateFrom(7));
    context.save();
  });
  EXPECT_EQ(saved(*open(kTextOnly)), Texts{"old"});  // and the earlier one still reads it
  EXPECT_EQ(filesSetAside(), 0);
}

TEST_F(ObjectStoreFileTest, AColumnOfAnotherTypeReadsAsUnset) {
  auto container = open();
  save(*container, {"odd"});
  SQLiteDatabase(file()).run("UPDATE Note SET at = 9e999, text = x'ff00'");
  inContext(*container, [&](auto& context) {
    auto* note = context.execute({.entityName = "Note"}).at(0);
    EXPECT_EQ(note->valueForKey("at"), AttributeValue());
  });
}

TEST_F(ObjectStoreFileTest, ANewFileMayBeBegunBySeveralAtOnce) {
  constexpr int kFiles = 100;
  for (int i = 0; i < kFiles; ++i) {
    auto begun = file().parent_path() / std::to_string(i);
    std::latch together(8);
    std::vector<std::future<void>> opened;
    for (int each = 0; each < 8; ++each) {
      opened.push_back(std::async(std::launch::async, [&] {
        together.arrive_and_wait();
        SQLiteDatabase(begun, NewFile::quick).run("CREATE TABLE IF NOT EXISTS made (it)");
      }));
    }
    for (auto& each : opened) ASSERT_NO_THROW(each.get()) << i;
  }
}

TEST_F(ObjectStoreFileTest, ADamagedFileIsSetAsideOnceAndANewOneBegun) {
  auto overwrite = [this](std::streamoff from) {
    std::fstream stream(file(), std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(from) << std::string(8192, 'x');
  };
  for (std::streamoff from : {0, 8192}) {  // its head, and pages of rows behind a sound head
    save(*open(), Texts(2000, "a note that fills pages"));
    overwrite(from);
    for (int launch = 0; launch < 2; ++launch) {
      auto container = open();
      ErrorPointer error;
      container->loadPersistentStores([&](const ErrorPointer& loadError) { error = loadError; });
      writer().drain(std::chrono::minutes(1));
      EXPECT_FALSE(error);
      save(*container, {"note"});
    }
    EXPECT_EQ(saved(*open()), (Texts{"note", "note"}));
    EXPECT_EQ(filesSetAside(), log_->count("error: "));
    EXPECT_EQ(filesSetAside(), from == 0 ? 1 : 2);
  }
}

TEST_F(ObjectStoreFileTest, AFileDamagedWhileInUseIsSetAsideByTheFirstToNotice) {
  auto container = open();
  auto another = open();
  save(*container, {"lost"});
  save(*another, {"lost too"});
  {
    SQLiteDatabase other(file());
    other.run("PRAGMA writable_schema = ON");
    other.run("UPDATE sqlite_schema SET rootpage = 4711 WHERE name = 'Note'");
    other.run("PRAGMA schema_version = 99");
  }
  save(*container, {"kept"});
  save(*another, {"kept too"});
  EXPECT_EQ(saved(*container), (Texts{"kept", "kept too"}));
  EXPECT_EQ(filesSetAside(), 1);
}

TEST_F(ObjectStoreFileTest, AFileThatTookTheOldOnesPlaceIsTheOneThatIsWritten) {
  auto container = open();
  save(*container, {"before"});
  for (auto companion : {"", "-wal", "-shm"}) {
    std::filesystem::rename(file().string() + companion, file().string() + ".aside" + companion);
  }
  save(*container, {"after"});
  EXPECT_EQ(saved(*open()), Texts{"after"});
}

TEST_F(ObjectStoreFileTest, AStoreThatCannotBeOpenedReportsItAndIsTriedAgain) {
  auto obstacle = directory_.path() / "obstacle";
  std::ofstream(obstacle) << "a file where a folder is needed";
  PersistentContainer container("Notes", noteModel(), obstacle);
  ErrorPointer error;
  container.loadPersistentStores([&](const ErrorPointer& loadError) { error = loadError; });
  writer().drain(std::chrono::minutes(1));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->platformError().domain(), kObjectStoreErrorDomain);
  EXPECT_THROW(saved(container), Error);
  std::filesystem::remove(obstacle);
  save(container, {"at last"});
  EXPECT_EQ(saved(container), Texts{"at last"});
}

TEST_F(ObjectStoreFileTest, ContextsOfBothQueuesAndTwoContainersShareOneFile) {
  constexpr std::size_t kEach = 50;
  auto first = open();
  auto second = open();
  const std::vector contexts = {first->viewContext(), first->newBackgroundContext(),
                                second->viewContext(), second->newBackgroundContext()};
  for (std::size_t i = 0; i < kEach; ++i) {
    for (const auto& context : contexts) {
      context->perform([context, i] {
        insert(*context, std::to_string(i));
        context->save();
      });
    }
  }
  for (const auto& context : contexts) context->performAndWait([] {});
  EXPECT_EQ(saved(*first).size(), kEach * contexts.size());
  EXPECT_EQ(saved(*second), saved(*first));
  EXPECT_EQ(log_->count("error: "), 0);
}

TEST_F(ObjectStoreFileTest, LookUpAndOrderOfTenThousandUseTheIndexes) {
  auto container = open();
  inContext(*container, [&](auto& context) {
    for (int i = 0; i < 10'000; ++i) insert(context, std::to_string(i), i);
    context.save();
    auto found = context.execute({.entityName = "Note", .predicate = textIs("7321")});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front()->valueForKey("at"), AttributeValue(dateFrom(7321)));
  });
  auto model = noteModel();
  SQLiteDatabase database(file());
  auto plan = [&](const FetchRequest& request) {
    auto statement = selectRows(*model.entity("Note"), request);
    std::string out;
    for (auto& row : database.run("EXPLAIN QUERY PLAN " + statement.text, statement.values)) {
      out += std::get<std::string>(row.back()) + "\n";
    }
    return out;
  };
  EXPECT_EQ(plan({.entityName = "Note", .predicate = textIs("7321"), .fetchLimit = 1}),
            "SEARCH Note USING INDEX Note.text (text=?)\n");
  EXPECT_EQ(plan({"Note", std::nullopt, {{"at", false}}, 1}), "SCAN Note USING INDEX Note.at\n");
}

}  // namespace
}  // namespace quenwick::platform
