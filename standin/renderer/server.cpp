#include "standin/renderer/server.h"

#include <algorithm>
#include <utility>

namespace standin {
namespace {

constexpr std::chrono::milliseconds kTick{200};

}  // namespace

Server::Server(const ServerOptions& options)
    : options_(options),
      listener_(Socket::listenAt(options.port)),
      port_(listener_.port()),
      keeper_(options.maxScripts),
      merger_(kMaxConnections) {
  if (!options.pictureFolder.empty()) pictures_ = makePictures(options.pictureFolder);
}

// The merger may wait for the pictures.
Server::~Server() {
  if (pictures_) pictures_->stop();
}

void Server::announce(const std::filesystem::path& machineFolder) {
  announcer_.emplace(machineFolder, instanceElement(port_));
}

void Server::serve(SocketNumber stop) {
  activity_ = Clock::now();
  while (!done()) {
    wait(stop);
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

void Server::wait(SocketNumber stop) {
  std::vector<WatchedSocket> sockets = {{.number = stop}, {.number = wakeUp_.number()}};
  std::vector<Id> ids;
  for (const auto& [id, connection] : connections_) {
    sockets.push_back({.number = connection.socket(), .forSending = connection.wantsToSend()});
    ids.push_back(id);
  }
  // With no room left, more wait in the system's queue.
  const bool accepting = quitters_.empty() && connections_.size() < kMaxConnections;
  if (accepting) sockets.push_back({.number = listener_.number()});
  if (!waitForAny(sockets, kTick)) return;
  stopped_ = sockets[0].canReceive;
  if (sockets[1].canReceive) wakeUp_.clear();
  if (accepting && sockets.back().canReceive) accept();
  for (std::size_t i = 0; i < ids.size(); ++i) handle(ids[i], sockets[i + 2]);
}

void Server::accept() {
  Socket peer = listener_.accept();
  if (!peer) return;
  connections_.try_emplace(++lastId_, std::move(peer), Connection::Bounds{options_.maxScript, options_.patience},
                           Clock::now());
}

void Server::handle(Id id, const WatchedSocket& ready) {
  Connection& connection = connections_.at(id);
  const auto now = Clock::now();
  if (ready.canSend) connection.send(now);
  if (!ready.canReceive) return;
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
  wakeUp_.wake();
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
