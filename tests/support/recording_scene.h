// A scene that writes down every call as one readable line, so that tests can say what was called without knowing the
// text format:
//
//   beginGroup "a" noDefine
//   parameter "vertices" 0x8001 [0 0 0, 1 0 0]
//   shader 0 capture 2
//
// Numbers stand in the shortest form that reads back as the same value; booleans of values as on and off. Captured
// blocks are numbered from 1 in the order in which they were begun; their calls are recorded like all others.
#pragma once

#include <array>
#include <charconv>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "scene/vntScene_api.h"

namespace rendara::testing {

class RecordingScene : public vntScene_api {
 public:
  RecordingScene() = default;
  RecordingScene(const RecordingScene&) = delete;
  RecordingScene& operator=(const RecordingScene&) = delete;
  virtual ~RecordingScene() = default;

  const std::vector<std::string>& calls() const { return calls_; }
  void clear() { calls_.clear(); }
  // Every call followed by a line break.
  std::string text() const {
    std::string result;
    for (const std::string& call : calls_) result += call + '\n';
    return result;
  }
  // The number of calls whose line begins with the text.
  int count(std::string_view start) const {
    int result = 0;
    for (const std::string& call : calls_) result += call.starts_with(start) ? 1 : 0;
    return result;
  }
  // What `connect` and `endScene` answer from now on.
  void setAnswers(bool connected, bool ended) {
    connected_ = connected;
    ended_ = ended;
  }

  // The object stays the test's; the call is recorded only.
  void* destroy(unsigned deletingFlag) override {
    record("destroy", {std::to_string(deletingFlag)});
    return this;
  }
  void reserved1() override { record("reserved1"); }
  bool render() override { return record("render"); }
  bool connect(const char* host, int port, int mode) override {
    record("connect", {quoted(host), std::to_string(port), std::to_string(mode)});
    return connected_;
  }
  bool endScene() override {
    record("endScene");
    return ended_;
  }
  bool reserved5(int first, int second, int third) override {
    record("reserved5", {std::to_string(first), std::to_string(second), std::to_string(third)});
    return false;
  }
  void transform(const double* matrix, bool set) override {
    record("transform", {numbers(matrix, 16), set ? "set" : "multiply"});
  }
  void scale(const double* x, const double* y, const double* z) override { recordVector("scale", x, y, z); }
  void rotate(const double* x, const double* y, const double* z) override { recordVector("rotate", x, y, z); }
  void translate(const double* x, const double* y, const double* z) override { recordVector("translate", x, y, z); }
  void motion(const double* matrix, float time) override { record("motion", {numbers(matrix, 16), numbers(&time, 1)}); }
  bool beginGroup(const char* name, bool noDefine) override {
    return record("beginGroup", {quoted(name), defining(noDefine)});
  }
  void endGroup() override { record("endGroup"); }
  bool beginFrame(int frame) override { return record("beginFrame", {std::to_string(frame)}); }
  void endBlock() override { record("endBlock"); }
  bool defineMatrix(const char* name) override { return record("defineMatrix", {quoted(name)}); }
  void endMatrix() override { record("endMatrix"); }
  unsigned identity17(unsigned value) override {
    record("identity17", {std::to_string(value)});
    return value;
  }
  bool beginOptions() override { return record("beginOptions"); }
  void endOptions() override { record("endOptions"); }
  bool beginCamera(const char* nameOrNull) override { return record("beginCamera", {quoted(nameOrNull)}); }
  void endCamera() override { record("endCamera"); }
  bool modifyCamera(const char* name) override { return record("modifyCamera", {quoted(name)}); }
  bool beginImage() override { return record("beginImage"); }
  void endImage() override { record("endImage"); }
  bool beginOutput(const char* first, const char* second, const char* third) override {
    return record("beginOutput", {quoted(first), quoted(second), quoted(third)});
  }
  void endOutput() override { record("endOutput"); }
  bool beginObject(const char* name, bool noDefine) override {
    return record("beginObject", {quoted(name), defining(noDefine)});
  }
  void endObject() override { record("endObject"); }
  void setObjectFlag(unsigned mask, bool on) override {
    record("setObjectFlag", {hexadecimal(mask), on ? "on" : "off"});
  }
  unsigned identity30(unsigned value) override {
    record("identity30", {std::to_string(value)});
    return value;
  }
  bool modifyObject(const char* name) override { return record("modifyObject", {quoted(name)}); }
  void reserved32(int first, int second) override {
    record("reserved32", {std::to_string(first), std::to_string(second)});
  }
  bool beginLight(const char* name, int ignored) override {
    return record("beginLight", {quoted(name), std::to_string(ignored)});
  }
  bool modifyLight(const char* name) override { return record("modifyLight", {quoted(name)}); }
  void endLight() override { record("endLight"); }
  void globalPhotons(int count) override { record("globalPhotons", {std::to_string(count)}); }
  void causticPhotons(int count) override { record("causticPhotons", {std::to_string(count)}); }
  void volumePhotons(int count) override { record("volumePhotons", {std::to_string(count)}); }
  bool defineGeometry(const char* type, const char* name) override {
    return record("defineGeometry", {quoted(type), quoted(name)});
  }
  bool beginGeometry(const char* type) override { return record("beginGeometry", {quoted(type)}); }
  void endGeometry() override { record("endGeometry"); }
  int reserved42() override {
    record("reserved42");
    return 0;
  }
  bool beginAccel(const char* name) override { return record("beginAccel", {quoted(name)}); }
  void endAccel() override { record("endAccel"); }
  bool reserved45(int value) override { return !record("reserved45", {std::to_string(value)}); }
  void reserved46() override { record("reserved46"); }
  bool instance(const char* name) override { return record("instance", {quoted(name)}); }
  bool beginAnimation(const char* first, const char* second) override {
    return record("beginAnimation", {quoted(first), quoted(second)});
  }
  int endAnimation() override {
    record("endAnimation");
    return 0;
  }
  bool beginMaterial(const char* name, bool noDefine) override {
    return record("beginMaterial", {quoted(name), defining(noDefine)});
  }
  bool useMaterial(const char* name, int ignored) override {
    return record("useMaterial", {quoted(name), std::to_string(ignored)});
  }
  void endMaterial() override { record("endMaterial"); }
  void shader(int kind, const CaptureBuffer* bufferOrNull) override {
    record("shader", {std::to_string(kind), capture(bufferOrNull)});
  }
  bool modifyMaterial(const char* name) override { return record("modifyMaterial", {quoted(name)}); }
  bool beginShader(const char* nameOrNull, const char* type) override {
    if (nameOrNull == nullptr) {
      buffers_.push_back(std::make_unique<CaptureBuffer>());
      current_ = buffers_.back().get();
    }
    return record("beginShader", {quoted(nameOrNull), quoted(type)});
  }
  void endShader(int ignored) override { record("endShader", {std::to_string(ignored)}); }
  bool reserved57(int value) override { return !record("reserved57", {std::to_string(value)}); }
  CaptureBuffer* currentCapture() override {
    record("currentCapture", {capture(current_)});
    return current_;
  }
  void pushCapture() override {
    record("pushCapture");
    saved_.push_back(current_);
  }
  void popCapture() override {
    record("popCapture");
    if (saved_.empty()) return;
    current_ = saved_.back();
    saved_.pop_back();
  }
  bool beginLoad(const char* name) override { return record("beginLoad", {quoted(name)}); }
  void endLoad() override { record("endLoad"); }
  void attribute(const char* first, const char* second) override {
    record("attribute", {quoted(first), quoted(second)});
  }
  void writeFormatted(const char* format, ...) override {
    std::array<char, 4096> text{};
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    record("writeFormatted", {quoted(text.data())});
  }
  void setOutputMode(unsigned mode, int ignored) override {
    record("setOutputMode", {std::to_string(mode), std::to_string(ignored)});
  }
  void reserved66(int value) override { record("reserved66", {std::to_string(value)}); }
  void progress(const char* name, float fraction) override {
    record("progress", {quoted(name), numbers(&fraction, 1)});
  }
  void icon(const void* bytes, int count) override { record("icon", {byteText(bytes, count)}); }
  void blob(const char* key, const void* bytes, int count) override {
    record("blob", {quoted(key), byteText(bytes, count)});
  }
  void id(unsigned value) override { record("id", {std::to_string(value)}); }
  void flags(unsigned value) override { record("flags", {hexadecimal(value)}); }
  bool parameter(const char* name, int type, const void* value) override {
    return record("parameter", {quoted(name), typeText(type), valueText(type, value)});
  }
  bool parameterText(const char* name, const CaptureBuffer* buffer) override {
    return record("parameterText", {quoted(name), capture(buffer)});
  }
  void arrayValue(int type, const void* value) override {
    record("arrayValue", {typeText(type), valueText(type, value)});
  }
  int arrayVersion75() override {
    record("arrayVersion75");
    return 10;
  }
  bool beginArray(const char* name) override { return record("beginArray", {quoted(name)}); }
  void endArray() override { record("endArray"); }
  int arrayVersion78(int value) override {
    record("arrayVersion78", {std::to_string(value)});
    return 10;
  }

 private:
  bool record(std::string line, std::initializer_list<std::string> arguments = {}) {
    for (const std::string& argument : arguments) line.append(" ").append(argument);
    calls_.push_back(std::move(line));
    return true;
  }

  void recordVector(const char* operation, const double* x, const double* y, const double* z) {
    record(operation, {numbers(x, 1), numbers(y, 1), numbers(z, 1)});
  }

  static std::string defining(bool noDefine) { return noDefine ? "noDefine" : "define"; }

  static std::string hexadecimal(unsigned value) {
    std::array<char, 16> digits{};
    return "0x" + std::string(digits.data(), std::to_chars(digits.data(), digits.data() + 16, value, 16).ptr);
  }

  // On one line: line breaks stand as \n.
  static std::string quoted(const char* text) {
    if (text == nullptr) return "null";
    std::string result = "\"";
    for (; *text != '\0'; ++text) {
      if (*text == '\n') {
        result += "\\n";
      } else {
        result += *text;
      }
    }
    return result + '"';
  }

  static std::string byteText(const void* bytes, int count) {
    std::string result = std::to_string(count) + " bytes";
    for (int i = 0; i < count; ++i) {
      const unsigned byte = static_cast<const unsigned char*>(bytes)[i];
      result.append(i == 0 ? ": " : "").append(byte < 16 ? "0" : "").append(hexadecimal(byte).substr(2));
    }
    return result;
  }

  template <typename Number>
  static std::string numbers(const Number* values, int count) {
    if (values == nullptr) return "null";
    std::string result;
    for (int i = 0; i < count; ++i) {
      std::array<char, 40> digits{};
      char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), values[i]).ptr;
      result.append(i > 0 ? " " : "").append(digits.data(), end);
    }
    return result;
  }

  std::string capture(const CaptureBuffer* buffer) const {
    for (std::size_t i = 0; i < buffers_.size(); ++i) {
      if (buffers_[i].get() == buffer) return "capture " + std::to_string(i + 1);
    }
    return buffer == nullptr ? "null" : "capture of another scene";
  }

  static std::string typeText(int type) {
    return (type & kArrayFlag) != 0 ? hexadecimal(static_cast<unsigned>(type)) : std::to_string(type);
  }

  // How many numbers a value has; 0 for values that are not numbers.
  static int numbersOf(int type) {
    switch (type) {
      case kFloat3:
      case kDouble3:
      case kInt3:
        return 3;
      case kFloat4:
      case kFloat4b:
      case kInt4:
        return 4;
      case kFloat2:
      case kInt2:
        return 2;
      case kFloat:
      case kDouble:
      case kInt:
      case kBool:
        return 1;
      case kMatrix:
        return 16;
      default:
        return 0;
    }
  }

  // The element of the given index of values that lie one after the other.
  std::string elementText(int type, const void* values, int index) const {
    const int size = numbersOf(type);
    const std::ptrdiff_t first = std::ptrdiff_t{index} * size;
    switch (type) {
      case kFloat:
      case kFloat2:
      case kFloat3:
      case kFloat4:
      case kFloat4b:
        return numbers(static_cast<const float*>(values) + first, size);
      case kDouble:
      case kDouble3:
      case kMatrix:
        return numbers(static_cast<const double*>(values) + first, size);
      case kInt:
      case kInt2:
      case kInt3:
      case kInt4:
        return numbers(static_cast<const int*>(values) + first, size);
      case kBool:
        return static_cast<const int*>(values)[index] != 0 ? "on" : "off";
      case kString:
      case kStringRef:
        return quoted(static_cast<const char* const*>(values)[index]);
      case kCapture:
        return capture(static_cast<const CaptureBuffer* const*>(values)[index]);
      default:
        return "?";
    }
  }

  std::string valueText(int type, const void* value) const {
    if (value == nullptr) return "null";
    if (type == kString) return quoted(static_cast<const char*>(value));
    if ((type & kArrayFlag) == 0) return elementText(type, value, 0);
    const auto& array = *static_cast<const SceneArray*>(value);
    std::string result = "[";
    for (int i = 0; i < array.count; ++i) {
      result.append(i > 0 ? ", " : "").append(elementText(type & ~kArrayFlag, array.data, i));
    }
    return result + ']';
  }

  std::vector<std::string> calls_;
  std::vector<std::unique_ptr<CaptureBuffer>> buffers_;
  std::vector<CaptureBuffer*> saved_;
  CaptureBuffer* current_ = nullptr;
  bool connected_ = true;
  bool ended_ = true;
};

}  // namespace rendara::testing
