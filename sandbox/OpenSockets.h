#pragma once

#include <mutex>
#include <unordered_set>

namespace quenwick::sandbox {

/// The sockets of the connections that are served, so that all can be shut down at once.
class OpenSockets {
 public:
  /// Owns a socket for as long as its connection is served, and closes it.
  class Entry {
   public:
    Entry(OpenSockets& sockets, int socket);
    ~Entry();
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

   private:
    OpenSockets& sockets_;
    int socket_;
  };

  /// Wakes all threads that wait on a socket, by ending its connection. Sockets that come later
  /// are shut down as they come.
  void shutDown();

 private:
  std::mutex mutex_;
  std::unordered_set<int> sockets_;
  bool isShutDown_ = false;
};

}  // namespace quenwick::sandbox
