// Which socket leads to which data: what the C API has for a connection.
#ifndef KIT_CONFD_SESSION_SESSION_H_
#define KIT_CONFD_SESSION_SESSION_H_

#include <array>
#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "kit/confd/keypath/keypath.h"
#include "kit/confd/upgrade/database.h"

namespace kit::store {

// Where a program's walk over a list stands.
struct Cursor {
  keypath::Path list_path;
  std::string path_text;
  const Module* selected = nullptr;
  bool started = false;
  bool ended = false;
  List::Place place;  // of the current entry, which may be gone since
  // What the C API keeps with the cursor; released with it.
  std::shared_ptr<void> attachment;
};

// Where relative paths of a program begin.
struct Place {
  std::vector<PathElement> elements;  // none: the root
  std::string text;                   // "" for the root
};

// A CDB read session, or a MAAPI socket with its transaction.
struct Session {
  enum class Kind { kCdb, kMaapi };
  Kind kind;
  Database* database;
  int thandle = 0;  // of a MAAPI socket
  const Module* selected = nullptr;
  ReadRules reads;
  Place place;
  std::vector<Place> pushed;
  std::map<const void*, std::unique_ptr<Cursor>> cursors;
};

// The sessions of the process, by socket. Thread-safe; what it hands out
// stays valid until that socket is closed.
class Sessions {
 public:
  static Sessions& Instance();

  // Opens a session on a real descriptor, so that no other file has its
  // number. Throws std::system_error.
  int OpenCdb(Database& database);
  int OpenMaapi(Database& database, int* thandle);
  void Close(int socket);

  // Throw Error: kNoSession for a socket that is none of theirs, kNoTrans for a
  // handle that is not the socket's.
  Session& Cdb(int socket);
  Session& Maapi(int socket, int thandle);
  Session& Maapi(int socket);

  // The databases of open sessions, those with a transaction first.
  std::vector<const Data*> AttachedData();
  size_t OpenCursors(int socket);

 private:
  int Open(Session session);
  Session* Find(int socket);

  // Every call looks its session up: it finds it here without the lock. The few
  // sockets that a process has get low numbers.
  static constexpr int kLowSockets = 256;
  std::array<std::atomic<Session*>, kLowSockets> by_low_socket_{};
  std::atomic<Session*>* LowPlace(int socket) {
    const bool is_low = socket >= 0 && socket < kLowSockets;
    return is_low ? &by_low_socket_[static_cast<size_t>(socket)] : nullptr;
  }

  std::mutex mutex_;
  std::map<int, std::unique_ptr<Session>> sessions_;
  int last_thandle_ = 0;
};

}  // namespace kit::store

#endif  // KIT_CONFD_SESSION_SESSION_H_
