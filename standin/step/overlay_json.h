// Strict reading of JSON: every complaint names the place in the file.
#pragma once

#include <cstddef>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace standin {

class OverlayError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A value of the document with its place in it. Every accessor throws OverlayError when the value is not what it asks
// for. The document outlives its nodes.
class JsonNode {
 public:
  JsonNode(const nlohmann::json& value, std::string place) : value_(&value), place_(std::move(place)) {}

  [[noreturn]] void fail(const std::string& what) const;

  // The value must be an object and have no other keys than these.
  const JsonNode& onlyKeys(std::initializer_list<std::string_view> keys) const;
  JsonNode at(const std::string& key) const;
  std::optional<JsonNode> find(const std::string& key) const;
  std::vector<std::pair<std::string, JsonNode>> members() const;
  std::vector<JsonNode> elements() const;

  bool isText() const;
  std::string text() const;   // never empty
  std::wstring wide() const;  // the same
  bool flag() const;
  double number() const;
  // A whole number from `low` to `high`.
  std::size_t count(std::size_t low, std::size_t high) const;
  std::vector<double> numbers(std::size_t size) const;

 private:
  const nlohmann::json* value_;
  std::string place_;
};

// A document that was read from a file, comments allowed; throws OverlayError. A key that stands twice in an object is
// an error.
class JsonDocument {
 public:
  explicit JsonDocument(const std::filesystem::path& file);
  ~JsonDocument();
  JsonDocument(const JsonDocument&) = delete;
  JsonDocument& operator=(const JsonDocument&) = delete;

  JsonNode root() const;

 private:
  std::unique_ptr<nlohmann::json> document_;
};

}  // namespace standin
