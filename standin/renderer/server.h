// The renderer: takes scripts over the live link and merges them into its scene.
//
// One thread waits for all connections; another merges, and tells what is held, in the order of the requests. So no
// peer, silent or slow or wrong, keeps another one waiting.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "standin/renderer/connection.h"
#include "standin/renderer/instance_list.h"
#include "standin/renderer/pictures.h"
#include "standin/renderer/scene_keeper.h"
#include "standin/renderer/socket.h"
#include "standin/renderer/wake_up.h"
#include "standin/renderer/worker.h"

namespace standin {

struct ServerOptions {
  int port = 0;  // 0: a free one
  std::uint64_t maxScript = std::uint64_t{2} << 30;
  std::size_t maxScripts = 256;      // held at a time
  std::chrono::milliseconds idle{};  // 0: serves for ever
  std::chrono::milliseconds patience{60000};
  std::filesystem::path pictureFolder;  // empty: no pictures
};

class Server {
 public:
  // Listens, on 127.0.0.1 only. Throws std::system_error, also when there can be no folder for pictures.
  explicit Server(const ServerOptions& options);
  ~Server();

  int port() const { return port_; }
  // Puts the renderer on the machine's list until it has served. Throws std::system_error.
  void announce(const std::filesystem::path& machineFolder);
  // Serves until the socket can be received from, a peer asks to quit, or nothing has happened for the idle time. A
  // quit lets the work in hand be finished.
  void serve(SocketNumber stop);

 private:
  using Clock = Connection::Clock;
  using Id = std::uint64_t;
  static constexpr std::size_t kMaxConnections = 256;

  struct Reply {
    Id connection;
    MessageKind kind;
    std::string payload;
  };

  void wait(SocketNumber stop);
  void accept();
  void handle(Id id, const WatchedSocket& ready);
  void request(Id id, Connection::Request request);
  void takeScript(Id id, ScriptBytes script);  // the merger's
  void tellStatus(Id id);                      // the merger's
  void reply(Reply reply);                     // from any thread
  void sendReplies();
  void tidy();
  void bidFarewell(Clock::time_point now);
  bool idle();
  bool done();

  ServerOptions options_;
  Socket listener_;
  int port_ = 0;
  WakeUp wakeUp_;  // when replies wait
  std::optional<InstanceAnnouncer> announcer_;
  std::map<Id, Connection> connections_;
  Id lastId_ = 0;
  Clock::time_point activity_;
  bool stopped_ = false;
  std::vector<Id> quitters_;
  bool farewell_ = false;  // the quitters have their answer

  std::mutex repliesMutex_;
  std::vector<Reply> replies_;
  std::unique_ptr<Pictures> pictures_;
  SceneKeeper keeper_;  // the merger's
  Worker merger_;       // the last: its thread uses what stands before
};

}  // namespace standin
