// The connection over which the processes of a run tell the supervisor what
// happens: messages from any thread and process that has the sending end, each
// of which arrives whole or not at all.
#ifndef KIT_HOST_PROCESS_CHANNEL_H_
#define KIT_HOST_PROCESS_CHANNEL_H_

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kit/host/process/file_descriptor.h"
#include "kit/host/process/protocol.h"

namespace kit::host {

// Exit status of a process that lost its connection.
constexpr int kConnectionLost = 121;
// With which a process ends that is too short of memory to say so.
constexpr int kMemoryLost = 122;

// Connected sockets that keep packets apart, closed on exec. Throws
// std::system_error.
std::pair<FileDescriptor, FileDescriptor> MakeConnection();

// The sending end. Ends the process with kConnectionLost when the descriptor
// isn't the connection any more: then nobody would learn of anything.
class Channel {
 public:
  explicit Channel(FileDescriptor socket);

  int fd() const { return socket_.get(); }
  // Thread-safe.
  void Send(const Message& message) const;
  // Waits for `count` descriptors from the other end.
  std::vector<FileDescriptor> ReceiveDescriptors(size_t count) const;

 private:
  void CheckConnection() const;

  FileDescriptor socket_;
  struct stat identity_;
};

// The receiving end.
class Receiver {
 public:
  Receiver() = default;
  explicit Receiver(FileDescriptor socket);

  // Not valid any more once there is nobody left to send anything.
  int fd() const { return socket_.get(); }
  // Reads some packets, if there are any, and hands on the messages that they
  // complete. Never waits; false when there were none. Throws ProtocolError.
  bool Receive(const std::function<void(Message&)>& handle);
  // To the other end. Throws std::system_error.
  void SendDescriptors(const std::vector<int>& fds) const;

 private:
  void Collect(std::string_view packet,
               const std::function<void(Message&)>& handle);

  FileDescriptor socket_;
  std::string buffer_;                          // room for some packets
  std::map<uint64_t, std::string> unfinished_;  // by number of the message
  size_t unfinished_size_ = 0;
};

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_CHANNEL_H_
