#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <list>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "standin/renderer/channel.h"
#include "standin/renderer/descriptor.h"
#include "standin/renderer/wire.h"
#include "tests/renderer/renderer_process.h"
#include "tests/renderer/script_text.h"

namespace renderer_test {
namespace {

using standin::Channel;
using standin::Descriptor;
using standin::message;
using standin::MessageKind;
using standin::Purpose;

constexpr std::chrono::seconds kPatience{30};

// 0, or the error.
int connectTo(const Descriptor& socket, in_addr_t address, int port) {
  sockaddr_in name{};
  name.sin_family = AF_INET;
  name.sin_port = htons(static_cast<std::uint16_t>(port));
  name.sin_addr.s_addr = address;
  return connect(socket.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0 ? 0 : errno;
}

// A peer that says what it likes.
class Peer {
 public:
  explicit Peer(int port, const std::string& bytes = {}) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    EXPECT_EQ(connectTo(socket_, htonl(INADDR_LOOPBACK), port), 0);
    timeval limit{30, 0};  // fails rather than hangs
    setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    say(bytes);
  }

  // What is not taken any more is lost.
  void say(const std::string& bytes) { send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL); }
  // All that comes until the renderer closes; "hangs" at the end when it does not.
  std::string hear() {
    std::string heard;
    std::array<char, 4096> bytes;
    ssize_t count = 0;
    while ((count = recv(socket_.get(), bytes.data(), bytes.size(), 0)) > 0) {
      heard.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return count < 0 && errno == EAGAIN ? heard + "hangs" : heard;
  }

 private:
  Descriptor socket_;
};

std::string hello(Purpose purpose) { return message(MessageKind::kHello, standin::helloPayload({purpose, 1})); }

// The kind of the answer.
MessageKind sendScript(int port, const std::string& text) {
  std::string error;
  auto channel = Channel::open(port, {Purpose::kScene, 1}, kPatience, error);
  if (!channel || !channel->send(MessageKind::kScript, text, kPatience) ||
      !channel->send(MessageKind::kDone, {}, kPatience)) {
    return MessageKind::kBusy;
  }
  const auto answer = channel->receive(kPatience);
  return answer ? answer->kind : MessageKind::kBusy;
}

std::string goodScript(const std::string& top) { return script(group(top, group("part", mesh(1)))); }

TEST(BadPeers, GetOneLineAndHarmNothing) {
  const Machine machine;
  const Renderer renderer;
  ASSERT_EQ(sendScript(renderer.port(), goodScript("good")), MessageKind::kTaken);
  const nlohmann::json before = renderer.status();
  std::string otherVersion = hello(Purpose::kScene);
  otherVersion[standin::kMessageHead + 12] = 2;
  std::string otherPurpose = hello(Purpose::kScene);
  otherPurpose[standin::kMessageHead + 16] = 9;
  const std::string data = message(MessageKind::kScript, "x");
  const std::map<std::string, std::string> peers = {
      {"garbage", "GET / HTTP/1.1\r\n\r\n"},
      {"zeros", std::string(1000, '\0')},
      {"another version", otherVersion},
      {"another purpose", otherPurpose},
      {"a script without a greeting", data},
      {"a greeting that is too short", message(MessageKind::kHello, "rendara-live")},
      {"a message that is too long", hello(Purpose::kScene) + standin::messageHead(MessageKind::kScript, 0xffffffff)},
      {"an unknown kind", hello(Purpose::kScene) + std::string("WHAT\0\0\0\0", 8)},
      {"a message of the renderer", hello(Purpose::kScene) + message(MessageKind::kTaken)},
      {"two greetings", hello(Purpose::kScene) + hello(Purpose::kScene)}};
  for (const auto& [name, bytes] : peers) {
    Peer peer(renderer.port(), bytes);
    const std::string heard = peer.hear();
    const std::size_t refusal = heard.find("FAIL");
    ASSERT_NE(refusal, std::string::npos) << name << ": " << heard;
    EXPECT_GT(heard.size(), refusal + standin::kMessageHead + 10) << name << ": a line of text";
    EXPECT_EQ(heard.find('\n'), std::string::npos) << name;
    EXPECT_EQ(heard.find("hangs"), std::string::npos) << name;
  }
  EXPECT_EQ(renderer.status(), before);
}

// A script may break off anywhere in its messages.
TEST(BadPeers, HalfScriptsAreDropped) {
  const Machine machine;
  const Renderer renderer;
  const std::string whole =
      hello(Purpose::kScene) + message(MessageKind::kScript, goodScript("half")) + message(MessageKind::kDone);
  for (const std::size_t left : {std::size_t{1}, standin::kMessageHead, std::size_t{100}, whole.size() - 3}) {
    Peer(renderer.port(), whole.substr(0, whole.size() - left));
  }
  const nlohmann::json status = renderer.status();
  EXPECT_EQ(status["scripts_taken"], 0);
  EXPECT_EQ(status["scripts_refused"], 0);
  EXPECT_EQ(sendScript(renderer.port(), goodScript("whole")), MessageKind::kTaken);
}

TEST(BadPeers, SilentOnesKeepNobodyWaitingAndAreClosed) {
  const Machine machine;
  const Renderer renderer({"--timeout", "1"});
  std::list<Peer> silent;
  for (int i = 0; i < 100; ++i) {
    // Some say nothing at all, others stop in the middle.
    silent.emplace_back(renderer.port(), i % 2 == 0 ? "" : hello(Purpose::kScene) + message(MessageKind::kScript, "x"));
    if (i % 25 != 0) continue;
    EXPECT_EQ(sendScript(renderer.port(), goodScript("good")), MessageKind::kTaken);
  }
  EXPECT_EQ(sendScript(renderer.port(), goodScript("good")), MessageKind::kTaken);
  for (Peer& peer : silent) EXPECT_EQ(peer.hear().find("hangs"), std::string::npos);
  EXPECT_EQ(renderer.status()["scripts_taken"], 5);
}

TEST(BadPeers, MoreConnectionsThanItTakesWaitForTheirTurn) {
  const Machine machine;
  const Renderer renderer({"--timeout", "1"});
  std::list<Peer> silent;
  for (int i = 0; i < 300; ++i) silent.emplace_back(renderer.port());
  EXPECT_EQ(sendScript(renderer.port(), goodScript("good")), MessageKind::kTaken);
}

TEST(BadPeers, ScriptsBeyondTheBoundAreRefused) {
  const Machine machine;
  const std::string text = goodScript("good");
  const Renderer renderer({"--max-script", std::to_string(text.size())});
  EXPECT_EQ(sendScript(renderer.port(), text), MessageKind::kTaken);
  Peer peer(renderer.port(), hello(Purpose::kScene) + message(MessageKind::kScript, text + "\n"));
  EXPECT_NE(peer.hear().find("longer than"), std::string::npos);
  // One that goes on all the same.
  Peer flood(renderer.port(), hello(Purpose::kScene));
  for (int i = 0; i < 50; ++i) flood.say(message(MessageKind::kScript, std::string(100000, ' ')));
  EXPECT_EQ(sendScript(renderer.port(), text), MessageKind::kTaken);
  EXPECT_EQ(renderer.status()["bytes_all"], 2 * text.size());
}

TEST(BadPeers, OtherAddressesOfThisHostAreNotListenedAt) {
  const Machine machine;
  const Renderer renderer;
  std::vector<in_addr_t> addresses = {inet_addr("127.0.0.2")};
  ifaddrs* interfaces = nullptr;
  ASSERT_EQ(getifaddrs(&interfaces), 0);
  for (const ifaddrs* entry = interfaces; entry; entry = entry->ifa_next) {
    if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET) continue;
    const in_addr_t address = reinterpret_cast<const sockaddr_in*>(entry->ifa_addr)->sin_addr.s_addr;
    if (address != htonl(INADDR_LOOPBACK)) addresses.push_back(address);
  }
  freeifaddrs(interfaces);
  for (const in_addr_t address : addresses) {
    const Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    EXPECT_EQ(connectTo(socket, address, renderer.port()), ECONNREFUSED) << inet_ntoa(in_addr{address});
  }
}

// Something else may listen at the port that the client was told.
TEST(BadPeers, AClientTakesNoOtherProgramForARenderer) {
  const Descriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in name{};
  name.sin_family = AF_INET;
  name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof name;
  ASSERT_EQ(bind(listener.get(), reinterpret_cast<const sockaddr*>(&name), size), 0);
  ASSERT_EQ(listen(listener.get(), 5), 0);
  ASSERT_EQ(getsockname(listener.get(), reinterpret_cast<sockaddr*>(&name), &size), 0);
  std::string error;
  EXPECT_FALSE(Channel::open(ntohs(name.sin_port), {}, std::chrono::milliseconds(200), error)) << "it is silent";
  Process client({"--status", std::to_string(ntohs(name.sin_port))});
  Descriptor silent(accept(listener.get(), nullptr, nullptr));
  const Descriptor talker(accept(listener.get(), nullptr, nullptr));
  ASSERT_GT(send(talker.get(), "220 mail\r\n", 10, MSG_NOSIGNAL), 0);
  EXPECT_EQ(client.readAll(),
            "renderer-standin: port " + std::to_string(ntohs(name.sin_port)) + ": what listens there is no renderer\n");
  EXPECT_EQ(client.wait(), 4);
}

}  // namespace
}  // namespace renderer_test
