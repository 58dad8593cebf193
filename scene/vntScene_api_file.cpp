#include "scene/vntScene_api_file.h"

#include <array>
#include <clocale>
#include <cstdarg>
#include <cstring>
#include <new>

#include "scene/format_text.h"
#include "scene/script_line.h"
#include "scene/script_values.h"

namespace rendara {
namespace {

// `writeFormatted` keeps this many characters, and the terminator.
constexpr std::size_t kFormattedCapacity = 4096;

const char* orEmpty(const char* text) { return text == nullptr ? "" : text; }

std::string numericLocale() { return orEmpty(std::setlocale(LC_NUMERIC, nullptr)); }

}  // namespace

vntScene_api_file::vntScene_api_file(std::FILE* streamOrNull, bool packedArrays)
    : savedLocale_(numericLocale()), text_(streamOrNull), outputMode_(packedArrays ? kPackedArrays : 0) {
  std::setlocale(LC_NUMERIC, "C");
}

vntScene_api_file::~vntScene_api_file() { std::setlocale(LC_NUMERIC, savedLocale_.c_str()); }

void* vntScene_api_file::destroy(unsigned deletingFlag) {
  void* address = this;
  this->~vntScene_api_file();
  if ((deletingFlag & 1) != 0) ::operator delete(address);
  return address;  // NOLINT(clang-analyzer-cplusplus.NewDelete): as a value only; the slot's callers expect it
}

// ----- What blocks and lines are made of

void vntScene_api_file::openBlock() {
  text_.raw(" {\n");
  text_.indent();
  text_.flush();
}

void vntScene_api_file::closeBlock() {
  text_.outdent();
  text_.indented("}\n");
  text_.flush();
}

void vntScene_api_file::pushMode(bool mode) {
  savedModes_.push(mode_);
  mode_ = mode;
}

bool vntScene_api_file::beginSection(Section section) {
  if (section_ != Section::kNone) return false;
  text_.stopCapturing();
  section_ = section;
  mode_ = true;
  return true;
}

void vntScene_api_file::endSection(Section section) {
  if (section_ == section) closeBlock();
  section_ = Section::kNone;
  mode_ = false;
}

void vntScene_api_file::vectorLine(std::string_view keyword, const double* x, const double* y, const double* z) {
  if (x == nullptr || y == nullptr || z == nullptr) return;
  ScriptLine line(text_.workspace());
  line.add(keyword).general(*x).add(" ").general(*y).add(" ").general(*z).add("\n");
  text_.indented(line.text());
  text_.flush();
}

void vntScene_api_file::numberLine(std::string_view keyword, int value) {
  ScriptLine line(text_.workspace());
  text_.indented(line.add(keyword).integer(value).add("\n").text());
  text_.flush();
}

void vntScene_api_file::unsignedLine(std::string_view keyword, unsigned value) {
  ScriptLine line(text_.workspace());
  text_.indented(line.add(keyword).unsignedInteger(value).add("\n").text());
  text_.flush();
}

void vntScene_api_file::nameLine(std::string_view keyword, const char* name) {
  text_.indented(keyword);
  text_.nameInLine(name);
  text_.raw("\n");
  text_.flush();
}

void vntScene_api_file::blobLine(const void* bytes, int count) {
  text_.hexadecimal("bX", bytes, bytes == nullptr || count < 0 ? 0 : static_cast<std::size_t>(count));
  text_.indented("\n");
  text_.flush();
}

// ----- Transforms

void vntScene_api_file::transform(const double* matrix, bool set) {
  if (matrix == nullptr) return;
  ScriptLine line(text_.workspace());
  text_.indented(line.add(set ? "set transform " : "transform ").matrix(matrix).add("\n").text());
  text_.flush();
}

void vntScene_api_file::scale(const double* x, const double* y, const double* z) { vectorLine("scale ", x, y, z); }

void vntScene_api_file::rotate(const double* x, const double* y, const double* z) { vectorLine("rotate ", x, y, z); }

void vntScene_api_file::translate(const double* x, const double* y, const double* z) {
  vectorLine("translate ", x, y, z);
}

void vntScene_api_file::motion(const double* matrix, float time) {
  if (matrix == nullptr) return;
  ScriptLine opening(text_.workspace());
  text_.indented(opening.add("motion ").general(time).add(" {\n").text());
  text_.indent();
  text_.indented("transform ");
  ScriptLine value(text_.workspace());
  text_.raw(value.matrix(matrix).text());
  text_.indented("\n");
  closeBlock();
}

// ----- Groups and plain blocks

bool vntScene_api_file::render() {
  text_.indented("\nrender\n");
  text_.flush();
  return true;
}

bool vntScene_api_file::beginGroup(const char* name, bool noDefine) {
  text_.raw("\n");
  if (!noDefine) text_.indented("#define ");
  text_.indented("group ");
  text_.nameInLine(name);
  openBlock();
  pushMode(true);
  return true;
}

void vntScene_api_file::endGroup() {
  closeBlock();
  mode_ = savedModes_.pop();
}

bool vntScene_api_file::beginFrame(int frame) {
  ScriptLine line(text_.workspace());
  text_.indented(line.add("frame ").integer(frame).add(" {\n").text());
  text_.indent();
  text_.flush();
  return true;
}

void vntScene_api_file::endBlock() { closeBlock(); }

bool vntScene_api_file::defineMatrix(const char* name) {
  text_.indented("#define matrix ");
  text_.nameInLine(name);
  openBlock();
  return true;
}

void vntScene_api_file::endMatrix() { endBlock(); }

bool vntScene_api_file::beginLoad(const char* name) {
  text_.indented("load ");
  text_.nameInLine(name);
  openBlock();
  return true;
}

void vntScene_api_file::endLoad() { endBlock(); }

bool vntScene_api_file::instance(const char* name) {
  nameLine("instance ", name);
  return true;
}

bool vntScene_api_file::beginAnimation(const char* first, const char* second) {
  text_.indented("animation ");
  text_.nameInLine(first);
  text_.indented(" ");
  text_.nameInLine(second);
  openBlock();
  pushMode(false);
  return true;
}

int vntScene_api_file::endAnimation() {
  closeBlock();
  mode_ = savedModes_.pop();
  return 0;
}

// ----- Sections

bool vntScene_api_file::beginOptions() {
  if (!beginSection(Section::kOptions)) return false;
  text_.indented("\noptions {\n");
  text_.indent();
  text_.flush();
  return true;
}

void vntScene_api_file::endOptions() { endSection(Section::kOptions); }

bool vntScene_api_file::beginCamera(const char* nameOrNull) {
  if (!beginSection(Section::kCamera)) return false;
  text_.indented(nameOrNull == nullptr ? "\ncamera" : "\ncamera ");
  if (nameOrNull != nullptr) text_.nameInLine(nameOrNull);
  openBlock();
  return true;
}

void vntScene_api_file::endCamera() { endSection(Section::kCamera); }

bool vntScene_api_file::modifyCamera(const char* name) {
  text_.indented("#modify ");
  text_.flush();
  return beginCamera(name);
}

bool vntScene_api_file::beginImage() {
  if (!beginSection(Section::kImage)) return false;
  text_.indented("\nimage {\n");
  text_.indent();
  text_.flush();
  return true;
}

void vntScene_api_file::endImage() { endSection(Section::kImage); }

bool vntScene_api_file::beginOutput(const char* first, const char* second, const char* third) {
  text_.indented("output ");
  text_.nameInLine(first);
  text_.raw(" ");
  text_.nameInLine(second);
  text_.raw(" ");
  text_.nameInLine(third);
  openBlock();
  mode_ = false;
  return true;
}

void vntScene_api_file::endOutput() {
  closeBlock();
  mode_ = true;
}

// ----- Objects

bool vntScene_api_file::beginObject(const char* name, bool noDefine) {
  text_.raw("\n");
  text_.indented(noDefine ? "object " : "#define object ");
  text_.nameInLine(name);
  openBlock();
  section_ = Section::kObject;
  objectFlags_ = kDefaultObjectFlags;
  pushMode(true);
  return true;
}

bool vntScene_api_file::modifyObject(const char* name) {
  text_.indented("#modify object ");
  text_.nameInLine(name);
  openBlock();
  section_ = Section::kObject;
  pushMode(true);
  return true;
}

void vntScene_api_file::objectFlagLine(unsigned mask, bool set, std::string_view line) {
  if (((objectFlags_ & mask) != 0) == set) text_.indented(line);
}

void vntScene_api_file::endObject() {
  objectFlagLine(0x200, false, "caustics store off\n");
  objectFlagLine(0x100, false, "caustics trace off\n");
  objectFlagLine(0x800, false, "ambient store off\n");
  objectFlagLine(0x400, false, "ambient trace off\n");
  objectFlagLine(0x4000, true, "invisible on\n");
  closeBlock();
  objectFlags_ = kDefaultObjectFlags;
  section_ = Section::kNone;
  mode_ = savedModes_.pop();
}

void vntScene_api_file::setObjectFlag(unsigned mask, bool on) {
  objectFlags_ = on ? objectFlags_ | mask : objectFlags_ & ~mask;
}

// ----- Lights

bool vntScene_api_file::beginLight(const char* name, int) {
  text_.raw("\n");
  text_.indented("light ");
  text_.nameInLine(name);
  openBlock();
  return true;
}

bool vntScene_api_file::modifyLight(const char* name) {
  text_.indented("#modify light ");
  text_.nameInLine(name);
  openBlock();
  return true;
}

void vntScene_api_file::endLight() { endBlock(); }

void vntScene_api_file::globalPhotons(int count) { numberLine("global photons ", count); }

void vntScene_api_file::causticPhotons(int count) { numberLine("caustic photons ", count); }

void vntScene_api_file::volumePhotons(int count) { numberLine("volume photons ", count); }

// ----- Geometry

bool vntScene_api_file::defineGeometry(const char* type, const char* name) {
  text_.indented("#define geometry ");
  text_.nameInLine(type);
  text_.raw(" ");
  text_.nameInLine(name);
  openBlock();
  definingGeometry_ = true;
  pushMode(false);
  return true;
}

bool vntScene_api_file::beginGeometry(const char* type) {
  if (definingGeometry_) return true;
  text_.indented("geometry ");
  text_.nameInLine(type);
  openBlock();
  pushMode(false);
  return true;
}

void vntScene_api_file::endGeometry() {
  closeBlock();
  definingGeometry_ = false;
  mode_ = savedModes_.pop();
}

bool vntScene_api_file::beginAccel(const char* name) {
  text_.indented("\naccel ");
  text_.nameInLine(name);
  openBlock();
  pushMode(false);
  return true;
}

void vntScene_api_file::endAccel() { endGroup(); }

// ----- Materials and shaders

bool vntScene_api_file::beginMaterial(const char* name, bool noDefine) {
  if (!noDefine) text_.indented("\n#define ");
  text_.indented("material ");
  text_.nameInLine(name);
  openBlock();
  return true;
}

bool vntScene_api_file::useMaterial(const char* name, int) {
  nameLine("material ", name);
  return true;
}

bool vntScene_api_file::modifyMaterial(const char* name) {
  text_.indented("#modify material ");
  text_.nameInLine(name);
  openBlock();
  return true;
}

void vntScene_api_file::endMaterial() { endBlock(); }

void vntScene_api_file::shader(int kind, const CaptureBuffer* bufferOrNull) {
  if (bufferOrNull == nullptr) return;
  switch (kind) {
    case 0:
      text_.indented("surface ");
      break;
    case 1:
      text_.indented("shadow ");
      break;
    case 2:
      text_.indented("volume ");
      break;
    case 3:
      text_.indented("reflection map ");
      break;
    case 8:
      text_.indented("init ");
      break;
    default:
      text_.indented("// assuming surface shader\n");
      text_.indented("surface ");
      break;
  }
  text_.captured(bufferOrNull);
  text_.indented("\n");
  text_.flush();
}

bool vntScene_api_file::beginShader(const char* nameOrNull, const char* type) {
  if (nameOrNull == nullptr) {
    text_.beginCapture();
  } else {
    text_.beginUncaptured();
    text_.indented("#define shader ");
    text_.nameInLine(nameOrNull);
    text_.raw(" ");
  }
  text_.nameInLine(type);
  openBlock();
  pushMode(false);
  return true;
}

void vntScene_api_file::endShader(int) {
  text_.endCapture();
  text_.flush();
  mode_ = savedModes_.pop();
}

CaptureBuffer* vntScene_api_file::currentCapture() { return text_.currentCapture(); }

void vntScene_api_file::pushCapture() { text_.pushCapture(); }

void vntScene_api_file::popCapture() { text_.popCapture(); }

// ----- Single lines

void vntScene_api_file::attribute(const char* first, const char* second) {
  text_.indented("attribute ");
  text_.nameInLine(first);
  text_.raw(" ");
  text_.nameInLine(second);
  text_.raw("\n");
  text_.flush();
}

void vntScene_api_file::writeFormatted(const char* format, ...) {
  std::array<char, kFormattedCapacity> buffer;
  std::va_list arguments;
  va_start(arguments, format);
  const std::size_t length = formatText(buffer.data(), buffer.size(), orEmpty(format), arguments);
  va_end(arguments);
  text_.indented({buffer.data(), length});
  text_.flush();
}

void vntScene_api_file::setOutputMode(unsigned mode, int) { outputMode_ = mode; }

void vntScene_api_file::progress(const char* name, float fraction) {
  text_.indented("progress ");
  text_.nameInLine(name);
  ScriptLine line(text_.workspace());
  text_.raw(line.add(" ").fixed(fraction).add("\n\n").text());
  text_.flush();
}

void vntScene_api_file::icon(const void* bytes, int count) {
  text_.indented("icon ");
  blobLine(bytes, count);
}

void vntScene_api_file::blob(const char* key, const void* bytes, int count) {
  ScriptLine line(text_.workspace());
  text_.indented(line.add(orEmpty(key)).add(" ").text());
  blobLine(bytes, count);
}

void vntScene_api_file::id(unsigned value) { unsignedLine("id ", value); }

void vntScene_api_file::flags(unsigned value) {
  if (section_ != Section::kObject) unsignedLine("flags ", value);
}

// ----- Parameters and arrays

bool vntScene_api_file::parameter(const char* name, int type, const void* value) {
  if (mode_) {
    ScriptLine line(text_.workspace());
    text_.indented(line.add(orEmpty(name)).add(" ").text());
  } else {
    text_.name(name);
    text_.raw(" ");
  }
  if ((type & kArrayFlag) != 0) {
    const SceneArray array = value == nullptr ? SceneArray{nullptr, 0} : *static_cast<const SceneArray*>(value);
    writeWholeArray(text_, type & ~kArrayFlag, array, packed());
  } else {
    writeScalarValue(text_, type, value);
  }
  text_.raw(mode_ ? "\n" : ",\n");
  text_.flush();
  return true;
}

bool vntScene_api_file::parameterText(const char* name, const CaptureBuffer* buffer) {
  text_.name(name);
  text_.raw(" ! ");
  text_.captured(buffer);
  text_.indented(",\n");
  text_.flush();
  return true;
}

bool vntScene_api_file::beginArray(const char* name) {
  text_.name(name);
  text_.raw(" [\n");
  text_.indent();
  text_.indentation();
  text_.flush();
  elementCount_ = 0;
  return true;
}

void vntScene_api_file::elementSeparator(int type) {
  if (elementCount_ == 0) return;
  const unsigned perLine = type == kFloat3 ? 2 : 6;
  if (elementCount_ % perLine != 0) return text_.raw(", ");
  text_.raw(",\n");
  text_.indentation();
}

// False for the types that have no packed form here.
bool vntScene_api_file::appendPending(int type, const void* value) {
  std::size_t numbers = 1;
  switch (type) {
    case kFloat3:
      pendingTag_ = 'c';
      numbers = 3;
      break;
    case kFloat:
      pendingTag_ = 'f';
      break;
    case kInt:
      pendingTag_ = 'i';
      break;
    default:
      return false;
  }
  if (value == nullptr) return true;
  std::array<std::uint32_t, 3> bits{};
  std::memcpy(bits.data(), value, numbers * sizeof(std::uint32_t));
  pending_.insert(pending_.end(), bits.begin(), bits.begin() + static_cast<std::ptrdiff_t>(numbers));
  return true;
}

void vntScene_api_file::arrayValue(int type, const void* value) {
  if (!packed() || !appendPending(type, value)) {
    elementSeparator(type);
    writeScalarValue(text_, type, value);
    text_.flush();
  }
  ++elementCount_;
}

void vntScene_api_file::endArray() {
  if (!pending_.empty()) {
    writePackedRecord(text_, pendingTag_, static_cast<std::uint32_t>(pending_.size()), pending_.data(),
                      pending_.size() * sizeof(std::uint32_t));
    pending_.clear();
  }
  text_.raw(" ],\n");
  text_.outdent();
  text_.flush();
}

int vntScene_api_file::arrayVersion75() { return 10; }

int vntScene_api_file::arrayVersion78(int) { return 10; }

// ----- Without a meaning in a file

void vntScene_api_file::reserved1() {}
unsigned vntScene_api_file::identity17(unsigned value) { return value; }
unsigned vntScene_api_file::identity30(unsigned value) { return value; }
void vntScene_api_file::reserved32(int, int) {}
int vntScene_api_file::reserved42() { return 0; }
bool vntScene_api_file::reserved45(int) { return false; }
void vntScene_api_file::reserved46() {}
bool vntScene_api_file::reserved57(int value) { return reserved45(value); }
void vntScene_api_file::reserved66(int) {}

}  // namespace rendara
