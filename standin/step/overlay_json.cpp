#include "standin/step/overlay_json.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>

#include "standin/windows/code_page.h"

namespace standin {

namespace {

using nlohmann::json;

// Sees every key while the text is parsed; the parsed document keeps only the last of equal ones.
class TwiceGuard {
 public:
  bool operator()(int /*depth*/, json::parse_event_t event, const json& parsed) {
    if (event == json::parse_event_t::object_start) {
      open_.emplace_back();
    } else if (event == json::parse_event_t::object_end) {
      open_.pop_back();
    } else if (event == json::parse_event_t::key && !open_.back().insert(parsed.get<std::string>()).second) {
      throw OverlayError("the key \"" + parsed.get<std::string>() + "\" stands twice in one object");
    }
    return true;
  }

 private:
  std::vector<std::set<std::string>> open_;
};

std::string oneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

}  // namespace

void JsonNode::fail(const std::string& what) const {
  throw OverlayError((place_.empty() ? std::string("the file") : oneLine(place_)) + ": " + oneLine(what));
}

const JsonNode& JsonNode::onlyKeys(std::initializer_list<std::string_view> keys) const {
  for (const auto& [key, node] : members()) {
    if (std::find(keys.begin(), keys.end(), key) == keys.end()) node.fail("unknown key");
  }
  return *this;
}

std::vector<std::pair<std::string, JsonNode>> JsonNode::members() const {
  if (!value_->is_object()) fail("must be an object");
  std::vector<std::pair<std::string, JsonNode>> found;
  for (const auto& [key, value] : value_->items()) {
    const bool plain = std::all_of(key.begin(), key.end(), [](char c) {
      return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    });
    std::string place = plain ? (place_.empty() ? key : place_ + "." + key) : place_ + "[\"" + key + "\"]";
    found.emplace_back(key, JsonNode(value, std::move(place)));
  }
  return found;
}

std::optional<JsonNode> JsonNode::find(const std::string& key) const {
  if (!value_->is_object()) fail("must be an object");
  const auto found = value_->find(key);
  if (found == value_->end()) return std::nullopt;
  return JsonNode(*found, place_.empty() ? key : place_ + "." + key);
}

JsonNode JsonNode::at(const std::string& key) const {
  std::optional<JsonNode> found = find(key);
  if (!found) fail("\"" + key + "\" is missing");
  return *found;
}

std::vector<JsonNode> JsonNode::elements() const {
  if (!value_->is_array()) fail("must be an array");
  std::vector<JsonNode> found;
  for (std::size_t i = 0; i < value_->size(); ++i) {
    found.emplace_back((*value_)[i], place_ + "[" + std::to_string(i) + "]");
  }
  return found;
}

bool JsonNode::isText() const { return value_->is_string(); }

std::string JsonNode::text() const {
  if (!value_->is_string()) fail("must be a text");
  auto text = value_->get<std::string>();
  if (text.empty()) fail("must not be empty");
  return text;
}

std::wstring JsonNode::wide() const { return wideFromUtf8(text()); }

bool JsonNode::flag() const {
  if (!value_->is_boolean()) fail("must be true or false");
  return value_->get<bool>();
}

double JsonNode::number() const {
  if (!value_->is_number()) fail("must be a number");
  return value_->get<double>();
}

std::size_t JsonNode::count(std::size_t low, std::size_t high) const {
  if (!value_->is_number_integer()) fail("must be a whole number");
  const auto number = value_->get<double>();
  if (number < static_cast<double>(low) || number > static_cast<double>(high)) {
    fail(high < low ? "there is none to count" : "must be from " + std::to_string(low) + " to " + std::to_string(high));
  }
  return static_cast<std::size_t>(number);
}

std::vector<double> JsonNode::numbers(std::size_t size) const {
  std::vector<double> found;
  for (const JsonNode& element : elements()) found.push_back(element.number());
  if (found.size() != size) fail("must hold " + std::to_string(size) + " numbers");
  return found;
}

JsonDocument::JsonDocument(const std::filesystem::path& file) : document_(std::make_unique<json>()) {
  std::error_code error;
  if (std::filesystem::is_directory(file, error)) throw OverlayError("is a folder, not a file");
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw OverlayError("cannot be read");
  TwiceGuard guard;
  try {
    *document_ = json::parse(
        stream, [&guard](int depth, json::parse_event_t event, json& parsed) { return guard(depth, event, parsed); },
        true, true);
  } catch (const json::exception& failure) {
    throw OverlayError(oneLine(failure.what()));
  }
}

JsonDocument::~JsonDocument() = default;

JsonNode JsonDocument::root() const { return {*document_, ""}; }

}  // namespace standin
