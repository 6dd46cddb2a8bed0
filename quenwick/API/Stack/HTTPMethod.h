#pragma once

#include <functional>
#include <string>

namespace quenwick {

/// The method of a request: any text, sent as it stands.
struct HTTPMethod {
  std::string rawValue;

  static const HTTPMethod& connect;
  static const HTTPMethod& delete_;
  static const HTTPMethod& get;
  static const HTTPMethod& head;
  static const HTTPMethod& options;
  static const HTTPMethod& patch;
  static const HTTPMethod& post;
  static const HTTPMethod& put;
  static const HTTPMethod& trace;

  friend bool operator==(const HTTPMethod&, const HTTPMethod&) = default;
};

// Never destroyed, so that threads which outlive the exit may go on reading them.
inline const HTTPMethod& HTTPMethod::connect = *new HTTPMethod{"CONNECT"};
inline const HTTPMethod& HTTPMethod::delete_ = *new HTTPMethod{"DELETE"};
inline const HTTPMethod& HTTPMethod::get = *new HTTPMethod{"GET"};
inline const HTTPMethod& HTTPMethod::head = *new HTTPMethod{"HEAD"};
inline const HTTPMethod& HTTPMethod::options = *new HTTPMethod{"OPTIONS"};
inline const HTTPMethod& HTTPMethod::patch = *new HTTPMethod{"PATCH"};
inline const HTTPMethod& HTTPMethod::post = *new HTTPMethod{"POST"};
inline const HTTPMethod& HTTPMethod::put = *new HTTPMethod{"PUT"};
inline const HTTPMethod& HTTPMethod::trace = *new HTTPMethod{"TRACE"};

}  // namespace quenwick

template <>
struct std::hash<quenwick::HTTPMethod> {
  std::size_t operator()(const quenwick::HTTPMethod& method) const noexcept {
    return std::hash<std::string>()(method.rawValue);
  }
};
