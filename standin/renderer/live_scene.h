// A scene on the live link: its script goes to a renderer while it is written.
#pragma once

#include <optional>

#include "core/at_end.h"
#include "scene/vntScene_api.h"
#include "scene/vntScene_api_file.h"
#include "standin/renderer/channel.h"
#include "standin/renderer/script_stream.h"

namespace standin {

// The script that is written between `connect` and `endScene` is that of the text writer with packed arrays. Operations
// at any other time, and after a block could not be sent, do nothing; their results are false, 0 or null, but for those
// that are always the same.
//
//  - `connect` takes the host "127.0.0.1" only. Mode 1 is one attempt. With bit 2 of the mode (mode 5) a renderer may
//    still be starting, and for 5 seconds it is tried again.
//  - `id` before `connect` is told to the renderer when the connection is made and is no part of the script.
//  - `endScene` waits for the renderer's answer as long as the renderer shows life; after 60 seconds of silence it is
//    taken for dead. True: the renderer has taken the scene.
//  - A scene that is freed or destroyed without `endScene` ends its connection without an end mark; the renderer then
//    drops what came.
//
// While the object exists the process's numeric locale is "C".
class LiveScene final : public rendara::vntScene_api {
 public:
  using CaptureBuffer = rendara::CaptureBuffer;

  LiveScene();
  ~LiveScene() = default;
  LiveScene(const LiveScene&) = delete;
  LiveScene& operator=(const LiveScene&) = delete;

  // The library owns the object: this ends its connection and frees nothing.
  void* destroy(unsigned deletingFlag) override;
  bool connect(const char* host, int port, int mode) override;
  bool endScene() override;
  void id(unsigned value) override;

  void reserved1() override;
  bool render() override;
  void transform(const double* matrix, bool set) override;
  void scale(const double* x, const double* y, const double* z) override;
  void rotate(const double* x, const double* y, const double* z) override;
  void translate(const double* x, const double* y, const double* z) override;
  void motion(const double* matrix, float time) override;
  bool beginGroup(const char* name, bool noDefine) override;
  void endGroup() override;
  bool beginFrame(int frame) override;
  void endBlock() override;
  bool defineMatrix(const char* name) override;
  void endMatrix() override;
  unsigned identity17(unsigned value) override;
  bool beginOptions() override;
  void endOptions() override;
  bool beginCamera(const char* nameOrNull) override;
  void endCamera() override;
  bool modifyCamera(const char* name) override;
  bool beginImage() override;
  void endImage() override;
  bool beginOutput(const char* first, const char* second, const char* third) override;
  void endOutput() override;
  bool beginObject(const char* name, bool noDefine) override;
  void endObject() override;
  void setObjectFlag(unsigned mask, bool on) override;
  unsigned identity30(unsigned value) override;
  bool modifyObject(const char* name) override;
  void reserved32(int first, int second) override;
  bool beginLight(const char* name, int ignored) override;
  bool modifyLight(const char* name) override;
  void endLight() override;
  void globalPhotons(int count) override;
  void causticPhotons(int count) override;
  void volumePhotons(int count) override;
  bool defineGeometry(const char* type, const char* name) override;
  bool beginGeometry(const char* type) override;
  void endGeometry() override;
  int reserved42() override;
  bool beginAccel(const char* name) override;
  void endAccel() override;
  bool reserved45(int value) override;
  void reserved46() override;
  bool instance(const char* name) override;
  bool beginAnimation(const char* first, const char* second) override;
  int endAnimation() override;
  bool beginMaterial(const char* name, bool noDefine) override;
  bool useMaterial(const char* name, int ignored) override;
  void endMaterial() override;
  void shader(int kind, const CaptureBuffer* bufferOrNull) override;
  bool modifyMaterial(const char* name) override;
  bool beginShader(const char* nameOrNull, const char* type) override;
  void endShader(int ignored) override;
  bool reserved57(int value) override;
  CaptureBuffer* currentCapture() override;
  void pushCapture() override;
  void popCapture() override;
  bool beginLoad(const char* name) override;
  void endLoad() override;
  void attribute(const char* first, const char* second) override;
  void writeFormatted(const char* format, ...) override;
  void setOutputMode(unsigned mode, int ignored) override;
  void reserved66(int value) override;
  void progress(const char* name, float fraction) override;
  void icon(const void* bytes, int count) override;
  void blob(const char* key, const void* bytes, int count) override;
  void flags(unsigned value) override;
  bool parameter(const char* name, int type, const void* value) override;
  bool parameterText(const char* name, const CaptureBuffer* buffer) override;
  void arrayValue(int type, const void* value) override;
  int arrayVersion75() override;
  bool beginArray(const char* name) override;
  void endArray() override;
  int arrayVersion78(int value) override;

 private:
  // Whether what is written reaches a renderer.
  bool live() const { return channel_.has_value() && !stream_.failed(); }
  bool send(std::string_view block);

  // Calls the writer's operation while the scene is live; else gives 0, false or null.
  template <typename Result, typename... Parameters, typename... Arguments>
  Result forward(Result (rendara::vntScene_api_file::*operation)(Parameters...), Arguments... arguments) {
    if (!live()) return Result();
    const rendara::AtEnd relay([this] { stream_.relay(); });
    return (writer_.*operation)(arguments...);
  }

  unsigned id_ = 0;
  std::optional<Channel> channel_;
  ScriptStream stream_;
  rendara::vntScene_api_file writer_;  // closes the stream, which goes after it
};

}  // namespace standin
