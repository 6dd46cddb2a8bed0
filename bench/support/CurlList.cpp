#include "bench/support/CurlList.h"

namespace quenwick::bench {

CurlList connectToList(const platform::URLSessionConfiguration& configuration) {
  CurlList list;
  for (const auto& to : configuration.connectTo) {
    list.add(to.host + ":" + std::to_string(to.port) + ":" + to.toAddress + ":" +
             std::to_string(to.toPort));
  }
  return list;
}

std::size_t appendBody(char* bytes, std::size_t one, std::size_t count, void* text) {
  static_cast<std::string*>(text)->append(bytes, one * count);
  return one * count;
}

}  // namespace quenwick::bench
