#include "standin/renderer/live_scene.h"

#include <array>
#include <chrono>
#include <cstdarg>
#include <string>
#include <string_view>
#include <thread>

#include "scene/format_text.h"

namespace standin {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;
using Writer = rendara::vntScene_api_file;

constexpr int kStillStarting = 4;  // bit of the connection's mode
constexpr seconds kStartPatience{5};
constexpr milliseconds kBetweenAttempts{100};
constexpr seconds kWelcomePatience{5};
constexpr seconds kSilencePatience{60};
// The longest formatted text, and its terminator.
constexpr std::size_t kFormattedCapacity = 4096;

}  // namespace

LiveScene::LiveScene()
    : stream_([this](std::string_view block) { return send(block); }), writer_(stream_.open(), true) {}

bool LiveScene::send(std::string_view block) {
  if (!channel_) return false;
  if (channel_->send(MessageKind::kScript, block, kSilencePatience)) return true;
  channel_.reset();
  return false;
}

void* LiveScene::destroy(unsigned) {
  channel_.reset();
  return this;
}

bool LiveScene::connect(const char* host, int port, int mode) {
  if (channel_ || stream_.failed() || host == nullptr || std::string_view(host) != "127.0.0.1") return false;
  const auto until = Clock::now() + ((mode & kStillStarting) != 0 ? kStartPatience : seconds(0));
  std::string ignored;
  for (;;) {
    channel_ = Channel::open(port, {Purpose::kScene, id_}, kWelcomePatience, ignored);
    if (channel_ || Clock::now() >= until) return channel_.has_value();
    std::this_thread::sleep_for(kBetweenAttempts);
  }
}

bool LiveScene::endScene() {
  bool taken = false;
  if (live() && stream_.finish() && channel_->send(MessageKind::kDone, {}, kSilencePatience)) {
    const auto answer = channel_->receive(kSilencePatience);
    taken = answer && answer->kind == MessageKind::kTaken;
  }
  channel_.reset();
  return taken;
}

void LiveScene::id(unsigned value) {
  if (!channel_) id_ = value;
  forward(&Writer::id, value);
}

// ----- Everything else is the text writer's

void LiveScene::reserved1() { return forward(&Writer::reserved1); }
bool LiveScene::render() { return forward(&Writer::render); }
void LiveScene::transform(const double* matrix, bool set) { return forward(&Writer::transform, matrix, set); }
void LiveScene::scale(const double* x, const double* y, const double* z) { return forward(&Writer::scale, x, y, z); }
void LiveScene::rotate(const double* x, const double* y, const double* z) { return forward(&Writer::rotate, x, y, z); }
void LiveScene::translate(const double* x, const double* y, const double* z) {
  return forward(&Writer::translate, x, y, z);
}
void LiveScene::motion(const double* matrix, float time) { return forward(&Writer::motion, matrix, time); }
bool LiveScene::beginGroup(const char* name, bool noDefine) { return forward(&Writer::beginGroup, name, noDefine); }
void LiveScene::endGroup() { return forward(&Writer::endGroup); }
bool LiveScene::beginFrame(int frame) { return forward(&Writer::beginFrame, frame); }
void LiveScene::endBlock() { return forward(&Writer::endBlock); }
bool LiveScene::defineMatrix(const char* name) { return forward(&Writer::defineMatrix, name); }
void LiveScene::endMatrix() { return forward(&Writer::endMatrix); }
unsigned LiveScene::identity17(unsigned value) { return writer_.identity17(value); }
bool LiveScene::beginOptions() { return forward(&Writer::beginOptions); }
void LiveScene::endOptions() { return forward(&Writer::endOptions); }
bool LiveScene::beginCamera(const char* nameOrNull) { return forward(&Writer::beginCamera, nameOrNull); }
void LiveScene::endCamera() { return forward(&Writer::endCamera); }
bool LiveScene::modifyCamera(const char* name) { return forward(&Writer::modifyCamera, name); }
bool LiveScene::beginImage() { return forward(&Writer::beginImage); }
void LiveScene::endImage() { return forward(&Writer::endImage); }
bool LiveScene::beginOutput(const char* first, const char* second, const char* third) {
  return forward(&Writer::beginOutput, first, second, third);
}
void LiveScene::endOutput() { return forward(&Writer::endOutput); }
bool LiveScene::beginObject(const char* name, bool noDefine) { return forward(&Writer::beginObject, name, noDefine); }
void LiveScene::endObject() { return forward(&Writer::endObject); }
void LiveScene::setObjectFlag(unsigned mask, bool on) { return forward(&Writer::setObjectFlag, mask, on); }
unsigned LiveScene::identity30(unsigned value) { return writer_.identity30(value); }
bool LiveScene::modifyObject(const char* name) { return forward(&Writer::modifyObject, name); }
void LiveScene::reserved32(int first, int second) { return forward(&Writer::reserved32, first, second); }
bool LiveScene::beginLight(const char* name, int ignored) { return forward(&Writer::beginLight, name, ignored); }
bool LiveScene::modifyLight(const char* name) { return forward(&Writer::modifyLight, name); }
void LiveScene::endLight() { return forward(&Writer::endLight); }
void LiveScene::globalPhotons(int count) { return forward(&Writer::globalPhotons, count); }
void LiveScene::causticPhotons(int count) { return forward(&Writer::causticPhotons, count); }
void LiveScene::volumePhotons(int count) { return forward(&Writer::volumePhotons, count); }
bool LiveScene::defineGeometry(const char* type, const char* name) {
  return forward(&Writer::defineGeometry, type, name);
}
bool LiveScene::beginGeometry(const char* type) { return forward(&Writer::beginGeometry, type); }
void LiveScene::endGeometry() { return forward(&Writer::endGeometry); }
int LiveScene::reserved42() { return forward(&Writer::reserved42); }
bool LiveScene::beginAccel(const char* name) { return forward(&Writer::beginAccel, name); }
void LiveScene::endAccel() { return forward(&Writer::endAccel); }
bool LiveScene::reserved45(int value) { return forward(&Writer::reserved45, value); }
void LiveScene::reserved46() { return forward(&Writer::reserved46); }
bool LiveScene::instance(const char* name) { return forward(&Writer::instance, name); }
bool LiveScene::beginAnimation(const char* first, const char* second) {
  return forward(&Writer::beginAnimation, first, second);
}
int LiveScene::endAnimation() { return forward(&Writer::endAnimation); }
bool LiveScene::beginMaterial(const char* name, bool noDefine) {
  return forward(&Writer::beginMaterial, name, noDefine);
}
bool LiveScene::useMaterial(const char* name, int ignored) { return forward(&Writer::useMaterial, name, ignored); }
void LiveScene::endMaterial() { return forward(&Writer::endMaterial); }
void LiveScene::shader(int kind, const CaptureBuffer* bufferOrNull) {
  return forward(&Writer::shader, kind, bufferOrNull);
}
bool LiveScene::modifyMaterial(const char* name) { return forward(&Writer::modifyMaterial, name); }
bool LiveScene::beginShader(const char* nameOrNull, const char* type) {
  return forward(&Writer::beginShader, nameOrNull, type);
}
void LiveScene::endShader(int ignored) { return forward(&Writer::endShader, ignored); }
bool LiveScene::reserved57(int value) { return forward(&Writer::reserved57, value); }
rendara::CaptureBuffer* LiveScene::currentCapture() { return forward(&Writer::currentCapture); }
void LiveScene::pushCapture() { return forward(&Writer::pushCapture); }
void LiveScene::popCapture() { return forward(&Writer::popCapture); }
bool LiveScene::beginLoad(const char* name) { return forward(&Writer::beginLoad, name); }
void LiveScene::endLoad() { return forward(&Writer::endLoad); }
void LiveScene::attribute(const char* first, const char* second) { return forward(&Writer::attribute, first, second); }
void LiveScene::writeFormatted(const char* format, ...) {
  if (!live()) return;
  std::array<char, kFormattedCapacity> text;
  std::va_list arguments;
  va_start(arguments, format);
  rendara::formatText(text.data(), text.size(), format == nullptr ? "" : format, arguments);
  va_end(arguments);
  writer_.writeFormatted("%s", text.data());
  stream_.relay();
}
void LiveScene::setOutputMode(unsigned mode, int ignored) { return forward(&Writer::setOutputMode, mode, ignored); }
void LiveScene::reserved66(int value) { return forward(&Writer::reserved66, value); }
void LiveScene::progress(const char* name, float fraction) { return forward(&Writer::progress, name, fraction); }
void LiveScene::icon(const void* bytes, int count) { return forward(&Writer::icon, bytes, count); }
void LiveScene::blob(const char* key, const void* bytes, int count) {
  return forward(&Writer::blob, key, bytes, count);
}
void LiveScene::flags(unsigned value) { return forward(&Writer::flags, value); }
bool LiveScene::parameter(const char* name, int type, const void* value) {
  return forward(&Writer::parameter, name, type, value);
}
bool LiveScene::parameterText(const char* name, const CaptureBuffer* buffer) {
  return forward(&Writer::parameterText, name, buffer);
}
void LiveScene::arrayValue(int type, const void* value) { return forward(&Writer::arrayValue, type, value); }
int LiveScene::arrayVersion75() { return writer_.arrayVersion75(); }
bool LiveScene::beginArray(const char* name) { return forward(&Writer::beginArray, name); }
void LiveScene::endArray() { return forward(&Writer::endArray); }
int LiveScene::arrayVersion78(int value) { return writer_.arrayVersion78(value); }

}  // namespace standin
