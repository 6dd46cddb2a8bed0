#pragma once

#include <boost/json/value.hpp>
#include <string>

namespace quenwick::sandbox {

struct RequestHead;

/// Throws a `Refusal` unless the request is for this path, without a query.
void judgePath(const RequestHead& head, const std::string& path);

/// Throws a `Refusal` unless the request is a POST of JSON; returns the JSON.
boost::json::value judgeJSONPost(const RequestHead& head, const std::string& body);

}  // namespace quenwick::sandbox
