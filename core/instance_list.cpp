#include "core/instance_list.h"

#include <cstddef>
#include <optional>

#include "settings/number_reading.h"

namespace rendara {
namespace {

constexpr int kHighestPort = 65535;

// Where a text stands, for positions that only grow: text that was searched is not searched again.
class Finder {
 public:
  Finder(std::string_view text, std::string_view wanted) : text_(text), wanted_(wanted), next_(text.find(wanted)) {}

  std::size_t at(std::size_t from) {
    if (next_ < from) {
      next_ = text_.find(wanted_, from);
    }
    return next_;
  }

 private:
  std::string_view text_;
  std::string_view wanted_;
  std::size_t next_;
};

class NumberTag {
 public:
  NumberTag(std::string_view text, std::string_view opening, std::string_view closing)
      : text_(text), openingSize_(opening.size()), opening_(text, opening), closing_(text, closing) {}

  // The number between the tags; none when one of them is missing.
  std::optional<int> numberAfter(std::size_t from) {
    const std::size_t opening = opening_.at(from);
    if (opening == std::string_view::npos) {
      return std::nullopt;
    }
    const std::size_t begin = opening + openingSize_;
    const std::size_t end = closing_.at(begin);
    return end != std::string_view::npos ? std::optional(readInt(text_.substr(begin, end - begin))) : std::nullopt;
  }

 private:
  std::string_view text_;
  std::size_t openingSize_;
  Finder opening_;
  Finder closing_;
};

}  // namespace

std::set<int> parseInstanceList(std::string_view text, int minimumVersion) {
  std::set<int> ports;
  Finder instance(text, "<rendara_instance>");
  NumberTag version(text, "<version_major>", "</version_major>");
  NumberTag livePort(text, "<livelink_port>", "</livelink_port>");
  for (std::size_t at = instance.at(0); at != std::string_view::npos; at = instance.at(at + 1)) {
    const auto major = version.numberAfter(at);
    if (!major) {
      break;
    }
    if (*major < minimumVersion) {
      continue;
    }
    const auto port = livePort.numberAfter(at);
    if (!port) {
      break;
    }
    if (*port >= 1 && *port <= kHighestPort) {
      ports.insert(*port);
    }
  }
  return ports;
}

}  // namespace rendara
