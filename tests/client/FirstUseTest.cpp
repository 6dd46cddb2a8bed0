#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/client/ClientHost.h"
#include "tests/support/FileContents.h"
#include "tests/support/Program.h"

namespace quenwick::tests {
namespace {

namespace fs = std::filesystem;

/// A host whose log hook calls the library, from the first line on.
class FirstUseTest : public ClientHost {
 protected:
  void SetUp() override {}

  /// Without an identifier: the first use says so, from within.
  void configureWithHook(std::function<void()> inHook) {
    auto own = configuration();
    own.bundleIdentifier.reset();
    own.logHook = [this, inHook = std::move(inHook)](LogLevel, std::string_view message) {
      lines_.add(std::string(message));
      inHook();
    };
    ASSERT_TRUE(configure(own));
  }
  /// Where the settings lie of a program without an identifier.
  fs::path settings() const {
    return home_.path() / fs::read_symlink("/proc/self/exe").filename() / "preferences.sqlite";
  }
  static void useEverything() {
    QWClient::shared()->eventManager();
    QWClient::setQWU("alice");
    QWClient::qwU();
    QWClient::registerDeeplinkDomainsFromPlist();
    QWClient::registerForBehaviorsFromPlist();
    QWClient::handleUniversalLink("https://l.example/p/go/1f");
    QWClient::storedDeeplink();
    QWClient::checkPasteboardOnInstall();
  }
};

TEST_F(FirstUseTest, ALogHookMayUseTheLibraryWhileItIsOpenedForTheFirstTime) {
  configureWithHook(useEverything);
  fs::create_directories(settings().parent_path());
  std::ofstream(settings()) << std::string(8192, 'x');
  QWClient::shared();
  EXPECT_EQ(logged("has no bundle identifier"), 1);
  EXPECT_EQ(logged("A damaged file was set aside as preferences.sqlite"), 1);
  EXPECT_EQ(QWClient::qwU(), "alice");
  EXPECT_TRUE(QWClient::flush(std::chrono::seconds(20)));
}

// The install's identifier cannot be written, which the writing thread says while the first use
// waits for it.
TEST_F(FirstUseTest, ALogHookMayUseTheLibraryWhileTheFirstUseWaitsForTheDisk) {
  configureWithHook(useEverything);
  fs::create_directories(settings().parent_path());
  constexpr auto kRefusing =
      "CREATE TABLE settings (key TEXT PRIMARY KEY, kind INTEGER NOT NULL, value) WITHOUT ROWID;"
      "CREATE TRIGGER refuse BEFORE INSERT ON settings BEGIN SELECT RAISE(ABORT, 'full'); END";
  ASSERT_EQ(runProgram({"sqlite3", settings(), kRefusing}).exitCode, 0);
  auto begin = std::chrono::steady_clock::now();
  QWClient::shared();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
  EXPECT_TRUE(lines_.waitFor(
      [](const auto& line) { return line.find("A setting cannot be written") != line.npos; }));
}

TEST_F(FirstUseTest, ThreadsThatComeFirstTogetherFindOneClient) {
  configureWithHook([] { QWClient::shared(); });
  std::vector<std::shared_ptr<QWClient>> found(8);
  {
    std::vector<std::jthread> threads;
    threads.reserve(found.size());
    for (auto& client : found) threads.emplace_back([&client] { client = QWClient::shared(); });
  }
  for (const auto& client : found) EXPECT_EQ(client, QWClient::shared());
}

// Below `home` it would be the file.
TEST_F(FirstUseTest, SecretsLieWithTheKeyringWhereTheConfigurationSaysSo) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere", 1);  // a person's own stays as it is
  auto own = configuration();
  own.keychain = KeychainKind::keyring;
  ASSERT_TRUE(configure(own));
  auto task = QWClient::registerForBehaviors("key");
  ASSERT_TRUE(task && task->waitFor(std::chrono::seconds(60)));
  auto record = home_.path() / "com.example.shop" / "keychain.backend";
  EXPECT_EQ(contents(record), "secret-service\n");
  EXPECT_TRUE(lines_.waitFor(
      [](const auto& line) { return line.find("The keychain is out of reach") != line.npos; }));
  EXPECT_EQ(logged("error: The keychain is out of reach"), 1);
}

}  // namespace
}  // namespace quenwick::tests
