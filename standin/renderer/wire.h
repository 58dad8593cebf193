// What goes over a connection between the live-link library and the renderer.
//
// Both sides send messages: a kind (four letters), the length of what follows (32 bits, little-endian), and so many
// bytes. A connection serves one purpose, which the first message tells:
//
//   to the renderer                                  from the renderer
//   HELO  magic "rendara-live", version, purpose,    WELC  go on
//         id (32 bits each, little-endian)           FAIL  one line of text: why not; then it closes
//   purpose 1, a scene script:
//   DATA  the next bytes of the script               BUSY  work goes on, the answer takes longer
//   DONE  the script is complete                     TAKN  the scene is taken
//   purpose 2, what the renderer holds:              STAT  JSON
//   purpose 3, the renderer ends:                    TAKN  it does
//
// A script whose connection ends without DONE is dropped.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace standin {

enum class MessageKind { kHello, kScript, kDone, kWelcome, kBusy, kTaken, kFailed, kStatus };
inline constexpr std::size_t kMessageHead = 8;
// Of messages to the renderer, and of its short ones.
inline constexpr std::size_t kMaxPayload = std::size_t{1} << 20;
inline constexpr std::size_t kMaxStatus = std::size_t{1} << 26;

enum class Purpose : std::uint32_t { kScene = 1, kStatus = 2, kQuit = 3 };

struct Hello {
  Purpose purpose = Purpose::kScene;
  std::uint32_t id = 0;  // what the scene's maker calls itself by
};

struct Message {
  MessageKind kind = MessageKind::kBusy;
  std::string_view payload;  // lives until the reader is used again
};

// What stands before the payload, which has less than 4 GiB.
std::string messageHead(MessageKind kind, std::size_t payload);
std::string message(MessageKind kind, std::string_view payload = {});

std::string helloPayload(const Hello& hello);
// Nothing when it is none, or one of another version.
std::optional<Hello> readHello(std::string_view payload);

// Cuts what a peer sends into messages. Nothing of it is trusted: an unknown kind and a length beyond the bound are
// faults, found as soon as the head is there; after one nothing more is read.
class MessageReader {
 public:
  explicit MessageReader(std::size_t maxPayload) : maxPayload_(maxPayload) {}

  void append(std::string_view bytes);
  // The next message that is complete.
  std::optional<Message> next();
  bool faulty() const { return faulty_; }

 private:
  std::size_t maxPayload_;
  std::string bytes_;
  std::size_t read_ = 0;  // of the bytes
  bool faulty_ = false;
};

}  // namespace standin
