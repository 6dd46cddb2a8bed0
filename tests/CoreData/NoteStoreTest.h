#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "quenwick/platform/PersistentContainer.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::platform {

using Texts = std::vector<std::string>;

inline constexpr auto kDatedNote =
    "<key>text</key><dict><key>type</key><string>text</string><key>indexed</key><true/></dict>"
    "<key>at</key><dict><key>type</key><string>date</string><key>indexed</key><true/></dict>";
inline constexpr auto kTextOnly =
    "<key>text</key><dict><key>type</key><string>text</string></dict>";
inline constexpr auto kRequiredDate =
    "<key>text</key><dict><key>type</key><string>text</string></dict>"
    "<key>at</key><dict><key>type</key><string>date</string><key>optional</key><false/></dict>";

inline std::string modelSource(const std::string& entity, const std::string& attributes) {
  return "<plist version=\"1.0\"><dict><key>entities</key><dict><key>" + entity +
         "</key><dict><key>attributes</key><dict>" + attributes +
         "</dict></dict></dict></dict></plist>";
}

inline ManagedObjectModel noteModel(const std::string& attributes = kDatedNote) {
  return ManagedObjectModel::read(modelSource("Note", attributes)).value();
}

inline Predicate textIs(AttributeValue text) { return Predicate("text == %@", {std::move(text)}); }

inline std::string textOf(const ManagedObject& object) {
  const auto* text = std::get_if<std::string>(&object.valueForKey("text"));
  return text ? *text : "(unset)";
}

/// A store of notes in a folder of the test's own.
class NoteStoreTest : public testing::Test {
 protected:
  ~NoteStoreTest() override { setLogSink(nullptr); }

  std::unique_ptr<PersistentContainer> open(const std::string& attributes = kDatedNote) const {
    return std::make_unique<PersistentContainer>("Notes", noteModel(attributes), directory_.path());
  }
  std::filesystem::path file() const { return directory_.path() / "Notes.sqlite"; }

  static ManagedObject& insert(ManagedObjectContext& context, AttributeValue text,
                               std::optional<double> at = std::nullopt) {
    auto* note = context.insertNewObject("Note");
    note->setValueForKey("text", std::move(text));
    if (at) note->setValueForKey("at", dateFrom(*at));
    return *note;
  }

  /// Does the work in a new context of the container, on its queue.
  template <class Work>
  static void inContext(PersistentContainer& container, const Work& work) {
    auto context = container.newBackgroundContext();
    context->performAndWait([&] { work(*context); });
  }

  static Texts texts(ManagedObjectContext& context, const FetchRequest& request) {
    Texts found;
    for (const auto* object : context.execute(request)) found.push_back(textOf(*object));
    return found;
  }

  /// The texts of all notes, as a new context of the container finds them.
  static Texts saved(PersistentContainer& container) {
    Texts found;
    inContext(container, [&](auto& context) { found = texts(context, {.entityName = "Note"}); });
    return found;
  }

  static void save(PersistentContainer& container, const Texts& notes) {
    inContext(container, [&](auto& context) {
      for (const auto& text : notes) insert(context, text);
      context.save();
    });
  }

  std::ptrdiff_t filesSetAside() const {
    return std::ranges::count_if(std::filesystem::directory_iterator(directory_.path()),
                                 [](const auto& entry) {
                                   auto name = entry.path().filename().string();
                                   return name.find(".damaged-") != name.npos &&
                                          !name.ends_with("-wal") && !name.ends_with("-shm");
                                 });
  }

  tests::TemporaryDirectory directory_;
  std::shared_ptr<tests::RecordingLog> log_ = tests::RecordingLog::install();
};

}  // namespace quenwick::platform
