#include "standin/renderer/server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace standin {
namespace {

constexpr int kTickMilliseconds = 200;

[[noreturn]] void fail(const std::string& what) { throw std::system_error(errno, std::generic_category(), what); }

Descriptor listenAt(int port) {
  Descriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!listener) fail("socket");
  const int on = 1;
  setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener.get(), SOMAXCONN) != 0) {
    fail("port " + std::to_string(port));
  }
  return listener;
}

int portOf(const Descriptor& listener) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) fail("port");
  return ntohs(address.sin_port);
}

}  // namespace

Server::Server(const ServerOptions& options)
    : options_(options),
      listener_(listenAt(options.port)),
      port_(portOf(listener_)),
      wake_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)),
      keeper_(options.maxScripts),
      merger_(kMaxConnections) {
  if (!wake_) fail("eventfd");
  if (!options.pictureFolder.empty()) pictures_.emplace(options.pictureFolder);
}

// The merger may wait for the pictures.
Server::~Server() {
  if (pictures_) pictures_->stop();
}

void Server::announce(const std::filesystem::path& machineFolder) {
  announcer_.emplace(machineFolder, instanceElement(port_));
}

void Server::serve(int stopDescriptor) {
  activity_ = Clock::now();
  while (!done()) {
    wait(stopDescriptor);
    sendReplies();
    tidy();
  }
  announcer_.reset();
  connections_.clear();
}

bool Server::done() {
  if (stopped_) return true;
  if (farewell_) return connections_.empty();
  return options_.idle.count() > 0 && Clock::now() - activity_ > options_.idle && idle();
}

void Server::wait(int stopDescriptor) {
  // With no room left, more wait in the system's queue.
  const bool accepting = quitters_.empty() && connections_.size() < kMaxConnections;
  std::vector<pollfd> entries = {
      {stopDescriptor, POLLIN, 0}, {wake_.get(), POLLIN, 0}, {accepting ? listener_.get() : -1, POLLIN, 0}};
  std::vector<Id> ids;
  for (const auto& [id, connection] : connections_) {
    const auto events = static_cast<short>(connection.wantsToSend() ? POLLIN | POLLOUT : POLLIN);
    entries.push_back({connection.socket(), events, 0});
    ids.push_back(id);
  }
  if (poll(entries.data(), entries.size(), kTickMilliseconds) <= 0) return;
  stopped_ = entries[0].revents != 0;
  std::uint64_t ignored = 0;
  if (entries[1].revents != 0 && read(wake_.get(), &ignored, sizeof ignored) < 0 && errno != EAGAIN) fail("eventfd");
  if (entries[2].revents != 0) accept();
  for (std::size_t i = 0; i < ids.size(); ++i) {
    if (entries[i + 3].revents != 0) handle(ids[i], entries[i + 3].revents);
  }
}

void Server::accept() {
  Descriptor peer(accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (!peer) return;
  const int on = 1;
  setsockopt(peer.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  connections_.try_emplace(++lastId_, std::move(peer), Connection::Bounds{options_.maxScript, options_.patience},
                           Clock::now());
}

void Server::handle(Id id, short events) {
  Connection& connection = connections_.at(id);
  const auto now = Clock::now();
  if ((events & POLLOUT) != 0) connection.send(now);
  if ((events & ~POLLOUT) == 0) return;
  const Connection::Request asked = connection.receive(now);
  if (asked != Connection::Request::kNone) request(id, asked);
}

void Server::request(Id id, Connection::Request request) {
  if (request == Connection::Request::kQuit) {
    quitters_.push_back(id);
    announcer_.reset();
  } else if (request == Connection::Request::kStatus) {
    merger_.post([this, id] { tellStatus(id); });
  } else {
    // Shared, since a job is copied.
    const auto script = std::make_shared<ScriptBytes>(connections_.at(id).takeScript());
    merger_.post([this, id, script] { takeScript(id, std::move(*script)); });
  }
}

void Server::takeScript(Id id, ScriptBytes script) {
  std::string refusal = keeper_.take(std::move(script));
  const bool taken = refusal.empty();
  reply({id, taken ? MessageKind::kTaken : MessageKind::kFailed, std::move(refusal)});
  if (taken && pictures_) pictures_->add(keeper_.scene());
}

void Server::tellStatus(Id id) {
  std::string json = keeper_.status(pictures_ ? pictures_->written() : 0, pictures_ ? pictures_->lastFailure() : "");
  const bool fits = json.size() <= kMaxStatus;
  reply({id, fits ? MessageKind::kStatus : MessageKind::kFailed, fits ? std::move(json) : "the scene is too large"});
}

void Server::reply(Reply reply) {
  {
    const std::lock_guard lock(repliesMutex_);
    replies_.push_back(std::move(reply));
  }
  const std::uint64_t one = 1;
  // Can only fail when a wake-up waits already.
  [[maybe_unused]] const ssize_t written = write(wake_.get(), &one, sizeof one);
}

void Server::sendReplies() {
  std::vector<Reply> replies;
  {
    const std::lock_guard lock(repliesMutex_);
    replies.swap(replies_);
  }
  const auto now = Clock::now();
  for (const Reply& entry : replies) {
    const auto found = connections_.find(entry.connection);
    if (found != connections_.end()) found->second.answer(entry.kind, entry.payload, now);
    activity_ = now;
  }
}

// A job leaves its reply and its picture before the merger is no longer busy.
bool Server::idle() {
  if (merger_.busy() || (pictures_ && pictures_->busy())) return false;
  const std::lock_guard lock(repliesMutex_);
  return replies_.empty();
}

void Server::bidFarewell(Clock::time_point now) {
  for (auto& [id, connection] : connections_) {
    const bool quits = std::find(quitters_.begin(), quitters_.end(), id) != quitters_.end();
    connection.answer(quits ? MessageKind::kTaken : MessageKind::kFailed, quits ? "" : "the renderer ends", now);
  }
  farewell_ = true;
}

void Server::tidy() {
  const auto now = Clock::now();
  if (!quitters_.empty() && !farewell_ && idle()) bidFarewell(now);
  for (auto& [id, connection] : connections_) {
    connection.keepAlive(now);
    // A peer may take its time between two parts of a script.
    if (connection.greeted()) activity_ = now;
  }
  std::erase_if(connections_, [now](const auto& entry) { return entry.second.over(now); });
}

}  // namespace standin
