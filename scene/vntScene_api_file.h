// Writes a scene as a scene script: a text of keywords, brace-delimited blocks and typed parameters, in which large
// arrays may stand as packed little-endian data.
//
// Nothing is validated and nothing throws for bad input: a null text counts as an empty one, a null pointer to values
// writes no value, a negative count counts as 0, and ends without a beginning drive the indentation negative. Write
// errors stay on the stream.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "scene/saved_values.h"
#include "scene/script_text.h"
#include "scene/vntScene_api.h"

namespace rendara {

class vntScene_api_file final : public vntScene_api {
 public:
  // Takes the stream (opened for binary writing) over; it is closed on destruction. With null nothing is written.
  // While the writer exists the process's numeric locale is "C"; the former one comes back on destruction.
  vntScene_api_file(std::FILE* streamOrNull, bool packedArrays);
  ~vntScene_api_file();
  vntScene_api_file(const vntScene_api_file&) = delete;
  vntScene_api_file& operator=(const vntScene_api_file&) = delete;

  void* destroy(unsigned deletingFlag) override;
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
  void id(unsigned value) override;
  void flags(unsigned value) override;
  bool parameter(const char* name, int type, const void* value) override;
  bool parameterText(const char* name, const CaptureBuffer* buffer) override;
  void arrayValue(int type, const void* value) override;
  int arrayVersion75() override;
  bool beginArray(const char* name) override;
  void endArray() override;
  int arrayVersion78(int value) override;

 private:
  enum class Section { kNone, kOptions, kCamera, kImage, kObject };

  // An untouched object: everything on, not invisible.
  static constexpr unsigned kDefaultObjectFlags = 0xF00;

  // The bit of the output mode that switches arrays to the packed form.
  static constexpr unsigned kPackedArrays = 2;

  void openBlock();
  void closeBlock();
  void pushMode(bool mode);
  bool beginSection(Section section);
  void endSection(Section section);
  void objectFlagLine(unsigned mask, bool set, std::string_view line);
  void vectorLine(std::string_view keyword, const double* x, const double* y, const double* z);
  void numberLine(std::string_view keyword, int value);
  void unsignedLine(std::string_view keyword, unsigned value);
  void nameLine(std::string_view keyword, const char* name);
  void blobLine(const void* bytes, int count);
  bool packed() const { return (outputMode_ & kPackedArrays) != 0; }
  bool appendPending(int type, const void* value);
  void elementSeparator(int type);

  std::string savedLocale_;  // the numeric locale before construction
  SavedValues<bool> savedModes_;
  // Takes the stream over, as the last member whose construction can fail: until then the stream is the caller's.
  ScriptText text_;
  unsigned outputMode_;
  Section section_ = Section::kNone;
  unsigned objectFlags_ = kDefaultObjectFlags;
  bool definingGeometry_ = false;
  bool mode_ = false;  // true: parameter names stand unquoted and lines end without a comma

  // The array that is handed over element by element.
  unsigned elementCount_ = 0;
  std::vector<std::uint32_t> pending_;  // the bits of packed values
  char pendingTag_ = 0;
};

}  // namespace rendara
