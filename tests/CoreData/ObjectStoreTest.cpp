#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "quenwick/platform/Writer.h"
#include "tests/CoreData/NoteStoreTest.h"
#include "tests/support/FatalMessage.h"

namespace quenwick::platform {
namespace {

using namespace std::string_literals;

using ObjectStoreTest = NoteStoreTest;

TEST_F(ObjectStoreTest, AModelWithNamesThatCannotBeColumnsIsRefused) {
  const auto attribute = [](const std::string& name, const std::string& type) {
    return "<key>" + name + "</key><dict><key>type</key><string>" + type + "</string></dict>";
  };
  EXPECT_TRUE(ManagedObjectModel::read(modelSource("Note", attribute("a_1", "date"))));
  for (const auto& source :
       {""s, "no property list"s, "<plist><dict/></plist>"s, "<plist><string>x</string></plist>"s,
        modelSource("Note", attribute("a", "number")), modelSource("Note", "<key>a</key><true/>"),
        modelSource("No\"te", attribute("a", "text")), modelSource("", attribute("a", "text")),
        modelSource("sqlite_notes", attribute("a", "text")),
        modelSource("Note", attribute("ID", "text")), modelSource("Note", attribute("1a", "text")),
        modelSource("Note", attribute("a; DROP", "text")),
        modelSource("Note", attribute("a", "text") + attribute("A", "text"))}) {
    EXPECT_FALSE(ManagedObjectModel::read(source)) << source;
  }
}

TEST_F(ObjectStoreTest, WhatIsNotUnderstoodIsAFatalError) {
  using tests::fatalMessage;
  for (const auto* format : {"", "text", "text = %@", "text == 'a'", "text == %@ OR 1", "== %@",
                             "te xt == %@", "text != %@", "text == %@ == %@"}) {
    EXPECT_NE(fatalMessage([&] { Predicate(format, {"a"}); }), "") << format;
  }
  EXPECT_NE(fatalMessage([] { Predicate("text == %@", {}); }), "");
  auto model = noteModel();
  ManagedObject note(*model.entity("Note"));
  EXPECT_NE(fatalMessage([&] { note.valueForKey("title"); }), "");
  EXPECT_NE(fatalMessage([&] { note.setValueForKey("text", dateFrom(0)); }), "");
  EXPECT_NE(fatalMessage([&] { note.setValueForKey("at", "today"); }), "");
}

TEST_F(ObjectStoreTest, ARequestTheModelCannotAnswerThrows) {
  inContext(*open(), [&](auto& context) {
    for (const auto& request :
         {FetchRequest{.entityName = "Page"},
          FetchRequest{.entityName = "Note", .predicate = Predicate("title == %@", {"a"})},
          FetchRequest{.entityName = "Note", .predicate = Predicate("at == %@", {"a"})},
          FetchRequest{.entityName = "Note", .sortDescriptors = {{"title"}}}}) {
      EXPECT_THROW(context.execute(request), PlatformError);
    }
    EXPECT_EQ(context.insertNewObject("Page"), nullptr);
  });
}

TEST_F(ObjectStoreTest, EveryTextIsFoundByExactlyItself) {
  const Texts notes = {"",           "a",     "A",    "a ",       "%",         "%@",
                       "a%20b",      "_",     "'",    "\"text\"", "1",         "1.0",
                       "' OR 1=1--", "a\0b"s, "a\0"s, "\xc3\xa9", "e\xcc\x81", "\xff",
                       "NULL",       "a\nb",  "?",    ":text",    "\\",        "(unset)"};
  auto expectExact = [&](ManagedObjectContext& context) {
    for (const auto& text : notes) {
      EXPECT_EQ(texts(context, {.entityName = "Note", .predicate = textIs(text)}), Texts{text});
    }
  };
  auto container = open();
  inContext(*container, [&](auto& context) {
    for (const auto& text : notes) insert(context, text);
    context.insertNewObject("Note");
    expectExact(context);  // unsaved: compared in memory
    context.save();
    expectExact(context);
    auto unset = context.execute({.entityName = "Note", .predicate = textIs({})});
    ASSERT_EQ(unset.size(), 1U);
    EXPECT_EQ(unset.front()->valueForKey("text"), AttributeValue());
  });
  auto reopened = open();
  auto second = reopened->newBackgroundContext();
  second->performAndWait([&] { expectExact(*second); });
}

TEST_F(ObjectStoreTest, ADateComesBackToTheMicrosecond) {
  const Date date(std::chrono::microseconds(1'700'000'000'123'457));
  auto container = open();
  inContext(*container, [&](auto& context) {
    context.insertNewObject("Note")->setValueForKey("at", date);
    context.save();
  });
  inContext(*open(), [&](auto& second) {
    auto found = second.execute({.entityName = "Note", .predicate = Predicate("at == %@", {date})});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front()->valueForKey("at"), AttributeValue(date));
  });
}

TEST_F(ObjectStoreTest, MemoryAndFileOrderAlike) {
  struct Case {
    std::vector<SortDescriptor> order;
    std::size_t limit;
    Texts expected;
  };
  const std::vector<Case> cases = {
      {{}, 0, {"b", "a", "a", "\xc3\xa9", "B", "(unset)"}},
      {{{"text"}}, 0, {"(unset)", "B", "a", "a", "b", "\xc3\xa9"}},
      {{{"at", false}}, 0, {"B", "a", "b", "a", "(unset)", "\xc3\xa9"}},
      {{{"at"}, {"text"}}, 3, {"\xc3\xa9", "(unset)", "a"}},
      {{{"text", false}, {"at"}}, 5, {"\xc3\xa9", "b", "a", "a", "B"}},
  };
  auto container = open();
  auto context = container->newBackgroundContext();
  auto expectAll = [&](const char* when) {
    for (const auto& [order, limit, expected] : cases) {
      EXPECT_EQ(texts(*context, {"Note", std::nullopt, order, limit}), expected) << when;
    }
  };
  context->performAndWait([&] {
    insert(*context, "b", 2);
    insert(*context, "a", 1);
    insert(*context, "a", 3);
    insert(*context, "\xc3\xa9");
    insert(*context, "B", 4);
    insert(*context, {}, 0.5);
    expectAll("unsaved");
    context->save();
    expectAll("saved");
    context->execute({.entityName = "Note"}).at(1)->setValueForKey("at", dateFrom(1));
    expectAll("one of them changed");
  });
}

TEST_F(ObjectStoreTest, AFetchSeesWhatTheContextHasNotSaved) {
  auto container = open();
  save(*container, {"first", "second", "third"});
  inContext(*container, [&](auto& context) {
    auto found = context.execute({.entityName = "Note", .predicate = textIs("first")});
    ASSERT_EQ(found.size(), 1U);
    found.front()->setValueForKey("text", "zz");
    insert(context, "zz");
    FetchRequest byText{.entityName = "Note", .predicate = textIs("first"), .fetchLimit = 1};
    EXPECT_EQ(texts(context, byText), Texts{});
    byText.predicate = textIs("zz");
    byText.fetchLimit = 0;
    EXPECT_EQ(context.execute(byText).size(), 2U);
    // The row that comes first in the file has moved behind the others.
    FetchRequest lowest{"Note", std::nullopt, {{"text"}}, 2};
    EXPECT_EQ(texts(context, lowest), (Texts{"second", "third"}));
  });
  EXPECT_EQ(saved(*container), (Texts{"first", "second", "third"}));
}

TEST_F(ObjectStoreTest, AnObjectIsOneInItsContextAndFollowsTheFileWhileUnchanged) {
  auto container = open();
  save(*container, {"old"});
  auto reader = container->newBackgroundContext();
  auto change = [&](const std::string& text) {
    inContext(*container, [&](auto& writing) {
      writing.execute({.entityName = "Note"}).front()->setValueForKey("text", text);
      writing.save();
    });
  };
  ManagedObject* note = nullptr;
  auto read = [&] {
    reader->performAndWait([&] { note = reader->execute({.entityName = "Note"}).at(0); });
  };
  read();
  auto* first = note;
  change("new");
  read();
  EXPECT_EQ(note, first);
  EXPECT_EQ(textOf(*note), "new");
  EXPECT_EQ(reader->registeredObjects(), std::vector{note});

  note->setValueForKey("text", "mine");
  change("theirs");
  read();
  EXPECT_EQ(textOf(*note), "mine");

  reader->refresh(*note);
  EXPECT_TRUE(note->isFault());
  EXPECT_FALSE(reader->hasChanges());
  EXPECT_EQ(textOf(*note), "theirs");
  EXPECT_FALSE(note->isFault());
}

TEST_F(ObjectStoreTest, ASavedObjectKeepsItsPlaceUnderItsLastingIdentity) {
  auto container = open();
  inContext(*container, [&](auto& context) {
    auto& first = insert(context, "first");
    auto& second = insert(context, "second");
    EXPECT_TRUE(first.objectID().isTemporary);
    EXPECT_NE(first.objectID(), second.objectID());
    context.save();
    EXPECT_FALSE(first.objectID().isTemporary);
    EXPECT_EQ(context.execute({.entityName = "Note"}), (std::vector{&first, &second}));
    second.setValueForKey("text", "second, changed");
    context.save();
    EXPECT_FALSE(context.hasChanges());
  });
  EXPECT_EQ(saved(*container), (Texts{"first", "second, changed"}));
}

TEST_F(ObjectStoreTest, ARequiredValueMustBeSetBeforeSaving) {
  auto container = open(kRequiredDate);
  inContext(*container, [&](auto& context) {
    auto& note = insert(context, "undated");
    EXPECT_THROW(context.save(), PlatformError);
    note.setValueForKey("at", dateFrom(1));
    EXPECT_NO_THROW(context.save());
  });
}

TEST_F(ObjectStoreTest, WorkThatThrowsIsLoggedAndTheQueueGoesOn) {
  auto container = open();
  for (const auto& context : {container->newBackgroundContext(), container->viewContext()}) {
    bool isReached = false;
    context->perform([] { throw std::runtime_error("out of ideas"); });
    context->performAndWait([&] { context->performAndWait([&] { isReached = true; }); });
    EXPECT_TRUE(isReached);
    EXPECT_THROW(context->performAndWait([] { throw std::out_of_range("far"); }),
                 std::out_of_range);
  }
  EXPECT_EQ(log_->count("out of ideas"), 2);
}

TEST_F(ObjectStoreTest, PostedWorkKeepsItsContextAndStore) {
  auto container = open();
  auto owner = container->newBackgroundContext();
  auto* context = owner.get();
  context->perform([context] {
    insert(*context, "posted");
    context->save();
  });
  owner.reset();
  container.reset();
  writer().drain(std::chrono::minutes(1));
  EXPECT_EQ(saved(*open()), Texts{"posted"});
}

}  // namespace
}  // namespace quenwick::platform
