#pragma once

#include <string>
#include <utility>

#include "quenwick/Stored/UserDefaultsSerializable.h"
#include "quenwick/platform/Publisher.h"

namespace quenwick {

/// A persistent value that always has one: what was assigned last, in this launch or an earlier
/// one, else its default. Every read goes to the store.
template <UserDefaultsSerializable T>
class Stored {
 public:
  Stored(T wrappedValue, std::string key,
         platform::UserDefaults& userDefaults = platform::UserDefaults::standard())
      : key_(std::move(key)),
        userDefaults_(userDefaults),
        subject_(registered(std::move(wrappedValue))) {}

  const std::string& key() const { return key_; }

  T wrappedValue() const { return fetch<T>(userDefaults_, key_); }

  /// Saves the value, then sends it to the subscribers on the calling thread. One that cannot be
  /// kept is refused with a line, and nobody hears of it.
  void setWrappedValue(T value) {
    if (!save(userDefaults_, value, key_)) return;
    subject_.send(std::move(value));
  }

  /// The current value, then each one assigned through this wrapper.
  platform::AnyPublisher<T> projectedValue() const { return subject_.publisher(); }

 private:
  T registered(T value) {
    registerDefault(userDefaults_, std::move(value), key_);
    return fetch<T>(userDefaults_, key_);
  }

  std::string key_;
  platform::UserDefaults& userDefaults_;
  platform::CurrentValueSubject<T> subject_;
};

/// A persistent value that may be absent. Every read goes to the store; a stored value of another
/// kind reads as absent.
template <UserDefaultsSerializable T>
class StoredOptional {
 public:
  explicit StoredOptional(std::string key,
                          platform::UserDefaults& userDefaults = platform::UserDefaults::standard())
      : key_(std::move(key)),
        userDefaults_(userDefaults),
        subject_(fetchOptional<T>(userDefaults_, key_)) {}

  const std::string& key() const { return key_; }

  std::optional<T> wrappedValue() const { return fetchOptional<T>(userDefaults_, key_); }

  /// Saves the value, or removes the key where there is none, then sends it to the subscribers on
  /// the calling thread. One that cannot be kept is refused as in `Stored`.
  void setWrappedValue(std::optional<T> value) {
    if (!value) {
      remove(userDefaults_, key_);
    } else if (!save(userDefaults_, *value, key_)) {
      return;
    }
    subject_.send(std::move(value));
  }

  /// As `setWrappedValue` with none, but nothing is written where nothing is stored.
  void clear() {
    if (userDefaults_.object(key_)) remove(userDefaults_, key_);
    subject_.send(std::nullopt);
  }

  /// The current value, then each one assigned through this wrapper.
  platform::AnyPublisher<std::optional<T>> projectedValue() const { return subject_.publisher(); }

 private:
  std::string key_;
  platform::UserDefaults& userDefaults_;
  platform::CurrentValueSubject<std::optional<T>> subject_;
};

}  // namespace quenwick
