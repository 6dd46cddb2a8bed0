#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "quenwick/platform/CoarseClock.h"
#include "quenwick/platform/SecItemBackend.h"

namespace quenwick::platform {

/// The keychain of one application: its items in memory over the backend of the install, which is
/// chosen by the first use and recorded in the folder. While the backend is out of reach, what is
/// known is served, the rest reads as none, and nothing is written.
class SecItemStore {
 public:
  struct Options {
    /// Where the choice is recorded, and where the sealed file lies.
    std::filesystem::path folder;
    /// What the items in a keyring that applications share are filed under.
    std::string application;
    /// The choice where none is recorded yet.
    std::optional<SecItemBackendKind> preferred = std::nullopt;
    /// How long one operation waits for a keyring; its caller waits half a second longer.
    std::chrono::milliseconds patience = std::chrono::seconds(1);
  };

  /// The one behind the `SecItem` functions: the application's own, unless a test set another.
  static SecItemStore& standard();
  static void setStandard(SecItemStore& store);

  /// Nothing is opened before the first use. Lives until the process ends.
  static SecItemStore& make(Options options);

  OSStatus add(const SecItemQuery& attributes);
  OSStatus update(const SecItemQuery& query, const SecItemQuery& attributesToUpdate);
  OSStatus copyMatching(const SecItemQuery& query, std::optional<Bytes>& result);
  OSStatus remove(const SecItemQuery& query);
  std::optional<SecItemBackendKind> backend();

  /// Whether the items have been read, so that the next read waits for nothing.
  bool isInMemory() const;

 private:
  explicit SecItemStore(Options options) : options_(std::move(options)) {}

  std::optional<OSStatus> answer(const SecItemQuery& query, std::optional<Bytes>& result) const;
  void lookForChanges();
  bool isRetryDue() const;
  void postLoad();
  OSStatus runOnKeysThread(std::function<OSStatus()> work) const;

  // On the keychain's thread.
  OSStatus attempt(const std::function<OSStatus(SecItemBackend&)>& work);
  OSStatus load();
  SecItemBackend& open();
  SecItemBackendKind chooseBackend();
  std::unique_ptr<SecItemBackend> makeBackend(SecItemBackendKind kind);
  bool isOther(const SecItemQuery& query) const;
  void changeKnown(const std::function<void(SecItems&)>& change);

  const Options options_;
  std::unique_ptr<SecItemBackend> backend_;
  bool hasReportedFailure_ = false;

  std::atomic<SecItemBackend*> opened_ = nullptr;
  std::atomic<std::optional<SecItemBackendKind>> kind_ = std::optional<SecItemBackendKind>();
  std::atomic<bool> isLoadComing_ = false;
  std::atomic<bool> isAway_ = false;
  LookInterval lookInterval_;
  std::atomic<std::int64_t> lastTried_ = 0;

  mutable std::mutex mutex_;  // never held during I/O
  std::optional<SecItems> known_;
};

}  // namespace quenwick::platform
