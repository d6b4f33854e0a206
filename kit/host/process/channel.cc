#include "kit/host/process/channel.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <variant>

namespace kit::host {
namespace {

// Every packet starts with it. Packets of several messages may alternate.
struct PacketHead {
  uint64_t message;  // differs from that of any other of the run
  uint64_t more;     // not 0: another packet follows
};

constexpr size_t kMaxPayload = size_t{16} << 10;
constexpr size_t kMaxPacket = sizeof(PacketHead) + kMaxPayload;
constexpr size_t kPacketsAtOnce = 32;
// More than any message needs.
constexpr size_t kMaxUnfinished = size_t{1} << 30;
constexpr size_t kMaxUnfinishedMessages = 10'000;

[[noreturn]] void ThrowErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

uint64_t NextMessageNumber() {
  static std::atomic<uint32_t> messages{0};
  return static_cast<uint64_t>(getpid()) << 32 | ++messages;
}

// After a failed call on a socket: whether to make it again. A program may have
// made the descriptor a non-blocking one.
bool WaitToRetry(int fd, short event) {
  if (errno == EINTR) return true;
  if (errno != EAGAIN) return false;
  pollfd ready = {fd, event, 0};
  poll(&ready, 1, -1);
  return true;
}

bool SendPacket(int fd, PacketHead head, std::string_view payload) {
  std::array<iovec, 2> parts = {
      {{&head, sizeof(head)},
       {const_cast<char*>(payload.data()), payload.size()}}};
  msghdr packet = {};
  packet.msg_iov = parts.data();
  packet.msg_iovlen = parts.size();
  do {
    if (sendmsg(fd, &packet, MSG_NOSIGNAL) >= 0) return true;
  } while (WaitToRetry(fd, POLLOUT));
  return false;
}

// Room for the descriptors that travel with a packet.
class DescriptorBuffer {
 public:
  DescriptorBuffer(msghdr& message, size_t count)
      : buffer_(CMSG_SPACE(count * sizeof(int)), '\0') {
    message.msg_control = buffer_.data();
    message.msg_controllen = buffer_.size();
  }

 private:
  std::string buffer_;
};

}  // namespace

std::pair<FileDescriptor, FileDescriptor> MakeConnection() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    ThrowErrno("socketpair");
  }
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

Channel::Channel(FileDescriptor socket) : socket_(std::move(socket)) {
  if (fstat(fd(), &identity_) != 0) _exit(kConnectionLost);
}

void Channel::CheckConnection() const {
  struct stat now = {};
  if (fstat(fd(), &now) != 0 || now.st_dev != identity_.st_dev ||
      now.st_ino != identity_.st_ino) {
    _exit(kConnectionLost);
  }
}

void Channel::Send(const Message& message) const {
  // Calls are too many to look each time; whatever follows them is looked at.
  if (!std::holds_alternative<CallMessage>(message)) CheckConnection();
  const std::string bytes = Encode(message);
  std::string_view rest = bytes;
  PacketHead head = {NextMessageNumber(), 0};
  do {
    const std::string_view payload = rest.substr(0, kMaxPayload);
    rest.remove_prefix(payload.size());
    head.more = rest.empty() ? 0 : 1;
    if (!SendPacket(fd(), head, payload)) _exit(kConnectionLost);
  } while (!rest.empty());
}

std::vector<FileDescriptor> Channel::ReceiveDescriptors(size_t count) const {
  CheckConnection();
  char byte = 0;
  iovec data = {&byte, sizeof(byte)};
  msghdr message = {};
  message.msg_iov = &data;
  message.msg_iovlen = 1;
  const DescriptorBuffer buffer(message, count);
  ssize_t got = 0;
  do {
    got = recvmsg(fd(), &message, MSG_CMSG_CLOEXEC);
  } while (got < 0 && WaitToRetry(fd(), POLLIN));
  const cmsghdr* head = got == 1 ? CMSG_FIRSTHDR(&message) : nullptr;
  if (head == nullptr || head->cmsg_type != SCM_RIGHTS ||
      head->cmsg_len != CMSG_LEN(count * sizeof(int))) {
    _exit(kConnectionLost);
  }
  std::vector<int> fds(count);
  std::memcpy(fds.data(), CMSG_DATA(head), count * sizeof(int));
  std::vector<FileDescriptor> descriptors;
  for (const int fd : fds) descriptors.emplace_back(fd);
  return descriptors;
}

Receiver::Receiver(FileDescriptor socket)
    : socket_(std::move(socket)), buffer_(kPacketsAtOnce * kMaxPacket, '\0') {}

bool Receiver::Receive(const std::function<void(Message&)>& handle) {
  if (!socket_.valid()) return false;
  std::array<iovec, kPacketsAtOnce> rooms = {};
  std::array<mmsghdr, kPacketsAtOnce> packets = {};
  for (size_t i = 0; i < kPacketsAtOnce; ++i) {
    rooms[i] = {buffer_.data() + i * kMaxPacket, kMaxPacket};
    packets[i].msg_hdr.msg_iov = &rooms[i];
    packets[i].msg_hdr.msg_iovlen = 1;
  }
  int got = 0;
  do {
    got = recvmmsg(fd(), packets.data(), kPacketsAtOnce, MSG_DONTWAIT, nullptr);
  } while (got < 0 && errno == EINTR);
  if (got < 0 && errno == EAGAIN) return false;
  for (size_t i = 0; i < packets.size() && static_cast<int>(i) < got; ++i) {
    if ((packets[i].msg_hdr.msg_flags & MSG_TRUNC) != 0) {
      throw ProtocolError("a packet of absurd length");
    }
    if (packets[i].msg_len == 0) got = 0;  // the end, or none of ours
    if (got > 0) {
      Collect({buffer_.data() + i * kMaxPacket, packets[i].msg_len}, handle);
    }
  }
  if (got > 0) return true;
  socket_.Close();
  return false;
}

void Receiver::Collect(std::string_view packet,
                       const std::function<void(Message&)>& handle) {
  PacketHead head = {};
  if (packet.size() < sizeof(head))
    throw ProtocolError("a packet is too short");
  std::memcpy(&head, packet.data(), sizeof(head));
  packet.remove_prefix(sizeof(head));
  const auto begun = unfinished_.find(head.message);
  if (head.more == 0 && begun == unfinished_.end()) {
    Message message = Decode(packet);
    handle(message);
    return;
  }
  std::string& text = unfinished_[head.message];
  text += packet;
  unfinished_size_ += packet.size();
  if (unfinished_size_ > kMaxUnfinished ||
      unfinished_.size() > kMaxUnfinishedMessages) {
    throw ProtocolError("a message of absurd length");
  }
  if (head.more != 0) return;
  const std::string whole = std::move(text);
  unfinished_size_ -= whole.size();
  unfinished_.erase(head.message);
  Message message = Decode(whole);
  handle(message);
}

void Receiver::SendDescriptors(const std::vector<int>& fds) const {
  char byte = 0;
  iovec data = {&byte, sizeof(byte)};
  msghdr message = {};
  message.msg_iov = &data;
  message.msg_iovlen = 1;
  const DescriptorBuffer buffer(message, fds.size());
  cmsghdr* head = CMSG_FIRSTHDR(&message);
  head->cmsg_level = SOL_SOCKET;
  head->cmsg_type = SCM_RIGHTS;
  head->cmsg_len = CMSG_LEN(fds.size() * sizeof(int));
  std::memcpy(CMSG_DATA(head), fds.data(), fds.size() * sizeof(int));
  if (sendmsg(fd(), &message, MSG_NOSIGNAL | MSG_DONTWAIT) < 0) {
    ThrowErrno("sendmsg");
  }
}

}  // namespace kit::host
