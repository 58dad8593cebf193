#include "standin/renderer/wire.h"

#include <array>
#include <cstring>

namespace standin {
namespace {

constexpr std::string_view kMagic = "rendara-live";
constexpr std::uint32_t kVersion = 1;

// In the order of MessageKind.
constexpr std::array<std::string_view, 8> kLetters = {"HELO", "DATA", "DONE", "WELC", "BUSY", "TAKN", "FAIL", "STAT"};

void appendNumber(std::string& text, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) text += static_cast<char>(static_cast<unsigned char>(value >> shift));
}

std::uint32_t numberAt(std::string_view text, std::size_t offset) {
  std::uint32_t value = 0;
  for (std::size_t i = 4; i > 0; --i) value = value << 8 | static_cast<unsigned char>(text[offset + i - 1]);
  return value;
}

std::optional<MessageKind> kindOf(std::string_view letters) {
  for (std::size_t i = 0; i < kLetters.size(); ++i) {
    if (kLetters[i] == letters) return static_cast<MessageKind>(i);
  }
  return std::nullopt;
}

}  // namespace

std::string messageHead(MessageKind kind, std::size_t payload) {
  std::string head(kLetters[static_cast<std::size_t>(kind)]);
  appendNumber(head, static_cast<std::uint32_t>(payload));
  return head;
}

std::string message(MessageKind kind, std::string_view payload) {
  return messageHead(kind, payload.size()).append(payload);
}

std::string helloPayload(const Hello& hello) {
  std::string payload(kMagic);
  appendNumber(payload, kVersion);
  appendNumber(payload, static_cast<std::uint32_t>(hello.purpose));
  appendNumber(payload, hello.id);
  return payload;
}

std::optional<Hello> readHello(std::string_view payload) {
  if (payload.size() != kMagic.size() + 12 || !payload.starts_with(kMagic)) return std::nullopt;
  const std::uint32_t purpose = numberAt(payload, kMagic.size() + 4);
  if (numberAt(payload, kMagic.size()) != kVersion || purpose < 1 || purpose > 3) return std::nullopt;
  return Hello{static_cast<Purpose>(purpose), numberAt(payload, kMagic.size() + 8)};
}

void MessageReader::append(std::string_view bytes) {
  if (faulty_) return;
  bytes_.erase(0, read_);
  read_ = 0;
  bytes_ += bytes;
}

std::optional<Message> MessageReader::next() {
  const std::string_view rest = std::string_view(bytes_).substr(read_);
  if (faulty_ || rest.size() < kMessageHead) return std::nullopt;
  const auto kind = kindOf(rest.substr(0, 4));
  const std::size_t length = numberAt(rest, 4);
  if (!kind || length > maxPayload_) {
    faulty_ = true;
    return std::nullopt;
  }
  if (rest.size() < kMessageHead + length) return std::nullopt;
  read_ += kMessageHead + length;
  return Message{*kind, rest.substr(kMessageHead, length)};
}

}  // namespace standin
