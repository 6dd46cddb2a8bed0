#pragma once

#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quenwick/API/Stack/HTTPHeader.h"

namespace quenwick {

/// Header fields in order, one of each name. Names are matched without regard to the case of
/// ASCII letters, and keep the spelling with which they first came.
class HTTPHeaders {
 public:
  using Iterator = std::vector<HTTPHeader>::const_iterator;

  HTTPHeaders() = default;
  /// Written in braces, `{{"Accept", "text/html"}, HTTPHeader::contentType("text/plain")}`. Of
  /// equal names the last value holds, in the place of the first; so too in the forms below.
  HTTPHeaders(std::initializer_list<HTTPHeader> headers);
  explicit HTTPHeaders(const std::vector<HTTPHeader>& headers);
  explicit HTTPHeaders(const std::map<std::string, std::string>& dictionary);

  /// Accept-Encoding, Accept-Language and User-Agent, the headers that every request carries.
  static const HTTPHeaders& defaultHeaders();

  /// Same as `update`.
  void add(std::string name, std::string value) { update(std::move(name), std::move(value)); }
  void add(HTTPHeader header) { update(std::move(header)); }

  /// Gives a header that is there the new value, in its place and under its old spelling; appends
  /// one that is not.
  void update(std::string name, std::string value);
  void update(HTTPHeader header) { update(std::move(header.name), std::move(header.value)); }

  /// Removes the header of that name; nothing happens where it is absent.
  void remove(std::string_view name);

  /// Sorts by name in lower case.
  void sort();
  HTTPHeaders sorted() const;

  std::optional<std::string> value(std::string_view name) const;

  /// Same as `update` with a value, as `remove` without.
  void set(std::string name, std::optional<std::string> value);

  /// The header at that position, which must be less than `size()`.
  const HTTPHeader& operator[](std::size_t position) const { return headers_[position]; }

  std::map<std::string, std::string> dictionary() const;

  /// Each header as "name: value", on lines of their own.
  std::string description() const;

  std::size_t size() const { return headers_.size(); }
  bool empty() const { return headers_.empty(); }
  Iterator begin() const { return headers_.begin(); }
  Iterator end() const { return headers_.end(); }

  friend bool operator==(const HTTPHeaders&, const HTTPHeaders&) = default;

 private:
  Iterator find(std::string_view name) const;

  std::vector<HTTPHeader> headers_;
};

}  // namespace quenwick
