#pragma once

#include <chrono>
#include <compare>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/SecItem.h"

namespace quenwick::platform {

/// Why a backend cannot do what it was asked for now.
class SecItemError : public Error {
 public:
  SecItemError(OSStatus status, std::string description)
      : Error(std::move(description)), status_(status) {}
  OSStatus status() const { return status_; }

 private:
  OSStatus status_;
};

/// What names an item.
struct SecItemKey {
  std::string service;
  std::string account;
  friend auto operator<=>(const SecItemKey&, const SecItemKey&) = default;
};

struct SecItem {
  Bytes generic = {};
  std::string accessible = {};
  Bytes data = {};
  /// Stays the same while the item is kept.
  Bytes reference = {};
};

using SecItems = std::map<SecItemKey, SecItem>;

/// A place where the items of one application are kept. On the keychain's thread, but for
/// `mayHaveChanged`; operations throw `SecItemError`, and what they did is on disk when they
/// return.
class SecItemBackend {
 public:
  virtual ~SecItemBackend() = default;

  virtual SecItems load() = 0;

  /// The item as it is kept now; none where there is one already.
  virtual std::optional<SecItem> add(const SecItemKey& key, SecItem item) = 0;

  /// Replaces the item's data; whether there is such an item.
  virtual bool update(const SecItemKey& key, const Bytes& data) = 0;

  /// Whether there was such an item.
  virtual bool remove(const SecItemKey& key) = 0;

  /// Whether somebody else may have changed items since they were loaded. Cheap; from any thread.
  virtual bool mayHaveChanged() const = 0;
};

/// The sealed file in the folder.
std::unique_ptr<SecItemBackend> makeSealedBackend(const std::filesystem::path& folder);

/// The desktop's keyring, where the application's items bear its name; an operation fails that it
/// has not answered after `patience`. `onChange` is called from a thread of its own when an item
/// may have changed.
std::unique_ptr<SecItemBackend> makeSecretServiceBackend(std::string application,
                                                         std::chrono::milliseconds patience,
                                                         std::function<void()> onChange);

}  // namespace quenwick::platform
