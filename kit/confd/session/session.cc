#include "kit/confd/session/session.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "kit/confd/model/error.h"

namespace kit::store {

Sessions& Sessions::Instance() {
  // Never destroyed: a static Database may outlive any static of ours.
  static auto& instance = *new Sessions();
  return instance;
}

int Sessions::Open(Session session) {
  int socket = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (socket < 0) {
    throw std::system_error(errno, std::generic_category(),
                            "opening a session");
  }
  const auto& opened = sessions_[socket] =
      std::make_unique<Session>(std::move(session));
  if (auto* place = LowPlace(socket)) *place = opened.get();
  return socket;
}

int Sessions::OpenCdb(Database& database) {
  std::lock_guard<std::mutex> lock(mutex_);
  Session session;
  session.kind = Session::Kind::kCdb;
  session.database = &database;
  return Open(std::move(session));
}

int Sessions::OpenMaapi(Database& database, int* thandle) {
  std::lock_guard<std::mutex> lock(mutex_);
  *thandle = ++last_thandle_;
  Session session;
  session.kind = Session::Kind::kMaapi;
  session.database = &database;
  session.thandle = *thandle;
  return Open(std::move(session));
}

void Sessions::Close(int socket) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (sessions_.count(socket) == 0) return;
  if (auto* place = LowPlace(socket)) *place = nullptr;
  sessions_.erase(socket);
  close(socket);
}

Session* Sessions::Find(int socket) {
  if (const auto* place = LowPlace(socket)) return *place;
  std::lock_guard<std::mutex> lock(mutex_);
  auto it = sessions_.find(socket);
  return it == sessions_.end() ? nullptr : it->second.get();
}

Session& Sessions::Cdb(int socket) {
  Session* session = Find(socket);
  if (session == nullptr || session->kind != Session::Kind::kCdb) {
    throw Error(ErrorCode::kNoSession,
                "no CDB read session on socket " + std::to_string(socket));
  }
  return *session;
}

Session& Sessions::Maapi(int socket, int thandle) {
  Session& session = Maapi(socket);
  if (session.thandle != thandle) {
    throw Error(ErrorCode::kNoTrans,
                "no transaction " + std::to_string(thandle) + " on socket " +
                    std::to_string(socket));
  }
  return session;
}

Session& Sessions::Maapi(int socket) {
  Session* session = Find(socket);
  if (session == nullptr || session->kind != Session::Kind::kMaapi) {
    throw Error(ErrorCode::kNoSession,
                "no MAAPI session on socket " + std::to_string(socket));
  }
  return *session;
}

std::vector<const Data*> Sessions::AttachedData() {
  std::lock_guard<std::mutex> lock(mutex_);
  std::vector<const Data*> data;
  for (const auto& [socket, session] : sessions_) {
    if (session->kind == Session::Kind::kMaapi) {
      data.push_back(&session->database->transaction());
    }
  }
  for (const auto& [socket, session] : sessions_) {
    if (session->kind == Session::Kind::kCdb) {
      data.push_back(&session->database->running());
    }
  }
  return data;
}

size_t Sessions::OpenCursors(int socket) {
  Session* session = Find(socket);
  return session == nullptr ? 0 : session->cursors.size();
}

}  // namespace kit::store
