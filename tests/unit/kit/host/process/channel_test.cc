#include "kit/host/process/channel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <thread>

namespace kit::host {
namespace {

class ChannelTest : public testing::Test {
 protected:
  void SetUp() override {
    auto [receiving, sending] = MakeConnection();
    receiver_ = Receiver(std::move(receiving));
    channel_ = std::make_unique<Channel>(std::move(sending));
  }

  // How often each text arrives until nobody can send any more.
  std::map<std::string, int> ReceiveTexts() {
    channel_.reset();
    std::map<std::string, int> texts;
    while (receiver_.fd() >= 0) {
      pollfd news = {receiver_.fd(), POLLIN, 0};
      poll(&news, 1, -1);
      receiver_.Receive([&texts](Message& message) {
        ++texts[std::get<LogMessage>(message).record.text];
      });
    }
    return texts;
  }

  Receiver receiver_;
  std::unique_ptr<Channel> channel_;
};

using ChannelDeathTest = ChannelTest;

TEST_F(ChannelTest, MessagesOfAnyLengthOfThreadsAndProcessesArriveWhole) {
  const auto send = [this](char name) {
    for (const size_t length : {0, 1, 16'384, 16'385, 1'000'000}) {
      channel_->Send(LogMessage{{0, 0, std::string(length, name)}});
    }
  };
  const pid_t child = fork();
  if (child == 0) {
    receiver_ = Receiver();
    std::thread other([&] { send('a'); });
    std::thread another([&] { send('b'); });
    const pid_t grandchild = fork();
    send(grandchild == 0 ? 'c' : 'd');
    if (grandchild == 0) _exit(0);
    other.join();
    another.join();
    _exit(0);
  }
  const std::map<std::string, int> texts = ReceiveTexts();
  waitpid(child, nullptr, 0);
  EXPECT_EQ(texts.size(), 1U + 4 * 4);
  EXPECT_EQ(texts.at(""), 4);
  for (const auto& [text, count] : texts) {
    if (text.empty()) continue;
    EXPECT_EQ(count, 1);
    EXPECT_EQ(text, std::string(text.size(), text[0]));
  }
}

TEST_F(ChannelTest, ANonBlockingDescriptorLosesNothing) {
  std::thread sender([this] {
    fcntl(channel_->fd(), F_SETFL, O_NONBLOCK);
    for (int i = 0; i < 5000; ++i) channel_->Send(LogMessage{{0, 0, "again"}});
    channel_.reset();
  });
  int received = 0;
  while (receiver_.fd() >= 0) {
    receiver_.Receive([&received](Message&) { ++received; });
  }
  sender.join();
  EXPECT_EQ(received, 5000);
}

TEST_F(ChannelTest, ReceivingDoesNotWait) {
  EXPECT_FALSE(receiver_.Receive([](Message&) { FAIL(); }));
  EXPECT_GE(receiver_.fd(), 0);
}

TEST_F(ChannelTest, PacketsThatAreNotItsOwnThrow) {
  const std::string absurd(100'000, 'x');
  for (const std::string& packet : {std::string("trace"), std::string(16, '\0'),
                                    std::string(20, '\0'), absurd}) {
    ASSERT_GT(send(channel_->fd(), packet.data(), packet.size(), 0), 0);
    EXPECT_THROW(receiver_.Receive([](Message&) {}), ProtocolError)
        << packet.size();
  }
}

TEST_F(ChannelTest, MessagesThatNeverEndThrow) {
  struct {
    uint64_t message = 1;
    uint64_t more = 1;
  } head;
  EXPECT_THROW(
      for (;; ++head.message) {
        ASSERT_GT(send(channel_->fd(), &head, sizeof(head), 0), 0);
        receiver_.Receive([](Message&) { FAIL(); });
      },
      ProtocolError);
}

TEST_F(ChannelTest, DescriptorsComeThrough) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  receiver_.SendDescriptors({ends[1], STDOUT_FILENO});
  close(ends[1]);
  {
    const auto descriptors = channel_->ReceiveDescriptors(2);
    ASSERT_EQ(write(descriptors[0].get(), "x", 1), 1);
  }
  char text[2];
  EXPECT_EQ(read(ends[0], text, sizeof(text)), 1);
  // Nobody else has it.
  EXPECT_EQ(read(ends[0], text, sizeof(text)), 0);
  close(ends[0]);
}

TEST_F(ChannelDeathTest, WithoutItsConnectionTheProcessEnds) {
  const auto ends_with = testing::ExitedWithCode(kConnectionLost);
  EXPECT_EXIT(
      {
        close(channel_->fd());
        channel_->Send(LogMessage{{0, 0, "x"}});
      },
      ends_with, "");
  ASSERT_EQ(shutdown(channel_->fd(), SHUT_RDWR), 0);
  EXPECT_EXIT(channel_->Send(LogMessage{{0, 0, "x"}}), ends_with, "");
  EXPECT_EXIT(channel_->ReceiveDescriptors(1), ends_with, "");
}

TEST_F(ChannelDeathTest, NothingIsWrittenToAnotherFileInItsPlace) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(fcntl(ends[0], F_SETFL, O_NONBLOCK), 0);
  int others[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, others), 0);
  for (const int fd : {ends[1], others[1]}) {
    EXPECT_EXIT(
        {
          dup2(fd, channel_->fd());
          channel_->Send(LogMessage{{0, 0, "x"}});
        },
        testing::ExitedWithCode(kConnectionLost), "");
  }
  char text[2];
  EXPECT_EQ(read(ends[0], text, sizeof(text)), -1);
  EXPECT_EQ(recv(others[0], text, sizeof(text), MSG_DONTWAIT), -1);
  for (const int fd : {ends[0], ends[1], others[0], others[1]}) close(fd);
}

}  // namespace
}  // namespace kit::host
