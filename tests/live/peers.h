// What can be in a renderer's place: texts on the list that no renderer wrote, and ports that turn peers away.
#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>

#include "standin/renderer/descriptor.h"
#include "tests/live/machine.h"

namespace rendara::testing {

// A port at which nothing listens.
inline constexpr int kClosedPort = 1;

inline std::string instanceText(int version, int port) {
  return "<rendara_instance>\n<version_major>" + std::to_string(version) + "</version_major>\n<livelink_port>" +
         std::to_string(port) + "</livelink_port>\n</rendara_instance>\n";
}

// A text on the machine's list as long as this lives. The list is in the order of the names.
class ListedText {
 public:
  ListedText(const Machine& machine, const std::string& name, const std::string& text)
      : file_(machine.path() / "instances" / (name + ".instance")) {
    std::filesystem::create_directories(file_.parent_path());
    locked_ = standin::Descriptor(open(file_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!locked_ || flock(locked_.get(), LOCK_EX | LOCK_NB) != 0) {
      throw std::runtime_error("cannot be put on the list: " + file_.string());
    }
    writeFile(file_, text);
  }
  ~ListedText() {
    std::error_code ignored;
    std::filesystem::remove(file_, ignored);
  }
  ListedText(const ListedText&) = delete;
  ListedText& operator=(const ListedText&) = delete;

 private:
  std::filesystem::path file_;
  standin::Descriptor locked_;
};

// Listens and never answers.
class SilentPort {
 public:
  SilentPort() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = localAddress(0);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(socket_.get(), generic, size) != 0 || listen(socket_.get(), SOMAXCONN) != 0 ||
        getsockname(socket_.get(), generic, &size) != 0) {
      throw std::runtime_error("no port to listen at");
    }
    port_ = ntohs(address.sin_port);
  }

  int port() const { return port_; }
  int socketNumber() const { return socket_.get(); }
  bool wasAsked() const {
    pollfd entry = {socket_.get(), POLLIN, 0};
    return poll(&entry, 1, 0) > 0;
  }

  static sockaddr_in localAddress(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
  }

 private:
  standin::Descriptor socket_;
  int port_ = 0;
};

// Turns so many peers away, and then lets each that comes speak to a renderer.
class Doorman {
 public:
  Doorman(int renderer, int turnedAway) : renderer_(renderer), turnedAway_(turnedAway), thread_([this] { serve(); }) {}
  ~Doorman() {
    shutdown(door_.socketNumber(), SHUT_RDWR);
    thread_.join();
  }
  Doorman(const Doorman&) = delete;
  Doorman& operator=(const Doorman&) = delete;

  int port() const { return door_.port(); }
  int peers() const { return peers_; }

 private:
  void serve() {
    while (true) {
      const standin::Descriptor peer(accept4(door_.socketNumber(), nullptr, nullptr, SOCK_CLOEXEC));
      if (!peer) {
        return;
      }
      if (++peers_ > turnedAway_) {
        relay(peer);
      }
    }
  }

  // Until one side ends.
  void relay(const standin::Descriptor& peer) const {
    const standin::Descriptor renderer(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_in address = SilentPort::localAddress(renderer_);
    if (connect(renderer.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      return;
    }
    std::array<pollfd, 2> sides = {{{peer.get(), POLLIN, 0}, {renderer.get(), POLLIN, 0}}};
    while (poll(sides.data(), sides.size(), -1) >= 0) {
      for (std::size_t side = 0; side < sides.size(); ++side) {
        if (sides[side].revents != 0 && !pass(sides[side].fd, sides[1 - side].fd)) {
          return;
        }
      }
    }
  }

  static bool pass(int from, int to) {
    std::array<char, 65536> bytes;
    const ssize_t size = recv(from, bytes.data(), bytes.size(), 0);
    for (ssize_t sent = 0; sent < size;) {
      const ssize_t count = send(to, bytes.data() + sent, static_cast<std::size_t>(size - sent), MSG_NOSIGNAL);
      if (count <= 0) {
        return false;
      }
      sent += count;
    }
    return size > 0;
  }

  SilentPort door_;
  int renderer_;
  int turnedAway_;
  std::atomic<int> peers_ = 0;
  std::thread thread_;  // the last: it uses what stands before
};

}  // namespace rendara::testing
