#include "scene/script_values.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "scene/script_line.h"

namespace rendara {
namespace {

static_assert(std::endian::native == std::endian::little, "packed arrays are written as they lie in memory");
static_assert(sizeof(int) == 4 && sizeof(float) == 4 && sizeof(double) == 8);

// A line break follows each element whose index is a positive multiple of this.
constexpr std::uint32_t kElementsPerBreak = 8;

template <typename Number>
const Number* numbersAt(const void* value) {
  return static_cast<const Number*>(value);
}

void addFloats(ScriptLine& line, const float* values, int count) {
  for (int i = 0; i < count; ++i) {
    if (i > 0) line.add(" ");
    line.general(values[i]);
  }
}

void addDoubles(ScriptLine& line, const double* values, int count) {
  for (int i = 0; i < count; ++i) {
    if (i > 0) line.add(" ");
    line.general(values[i]);
  }
}

void addIntegers(ScriptLine& line, const int* values, int count) {
  for (int i = 0; i < count; ++i) {
    if (i > 0) line.add(" ");
    line.integer(values[i]);
  }
}

// What the renderer could not hold as a finite value stands as -1.
float finiteOrMinusOne(float value) { return std::abs(value) < std::numeric_limits<float>::max() ? value : -1.0F; }

void addScalar(ScriptLine& line, int type, const void* value) {
  switch (type) {
    case kFloat3:
      addFloats(line, numbersAt<float>(value), 3);
      break;
    case kFloat4:
    case kFloat4b:
      addFloats(line, numbersAt<float>(value), 4);
      break;
    case kFloat:
      line.general(finiteOrMinusOne(*numbersAt<float>(value)));
      break;
    case kDouble:
      line.fixed16(*numbersAt<double>(value));
      break;
    case kDouble3:
      addDoubles(line, numbersAt<double>(value), 3);
      break;
    case kInt:
      line.integer(*numbersAt<int>(value));
      break;
    case kBool:
      line.add(*numbersAt<int>(value) != 0 ? "on" : "off");
      break;
    case kMatrix:
      line.matrix(numbersAt<double>(value));
      break;
    case kFloat2:
      addFloats(line, numbersAt<float>(value), 2);
      break;
    case kInt2:
      addIntegers(line, numbersAt<int>(value), 2);
      break;
    case kInt3:
      addIntegers(line, numbersAt<int>(value), 3);
      break;
    case kInt4:
      addIntegers(line, numbersAt<int>(value), 4);
      break;
    default:
      break;
  }
}

// Raw text of any length, handed on in blocks of the workspace's size.
class RawBlocks {
 public:
  explicit RawBlocks(ScriptText& text) : text_(text), line_(text.workspace()) {}
  ~RawBlocks() { handOn(); }
  RawBlocks(const RawBlocks&) = delete;
  RawBlocks& operator=(const RawBlocks&) = delete;

  // The line to write the next `size` characters to.
  ScriptLine& withRoom(std::size_t size) {
    if (line_.room() < size) handOn();
    return line_;
  }
  void breakLine() {
    withRoom(1).add("\n");
    for (int left = text_.blanks(); left > 0;) {
      const auto count = std::min(static_cast<std::size_t>(left), std::size_t{64});
      withRoom(count).fill(count, ' ');
      left -= static_cast<int>(count);
    }
  }

 private:
  void handOn() {
    text_.raw(line_.text());
    line_.clear();
  }

  ScriptText& text_;
  ScriptLine line_;
};

// Calls `addElement(line, index)` for each element, which adds at most `capacity` characters.
template <typename AddElement>
void writeElements(ScriptText& text, std::uint32_t count, std::size_t capacity, AddElement addElement) {
  RawBlocks blocks(text);
  for (std::uint32_t i = 0; i < count; ++i) {
    ScriptLine& line = blocks.withRoom(capacity + 1);
    addElement(line, std::size_t{i});
    line.add(i + 1 < count ? "," : " ");
    if (i > 0 && i % kElementsPerBreak == 0) blocks.breakLine();
  }
}

void writeFloatTuples(ScriptText& text, const SceneArray& array, std::uint32_t count, int size) {
  const auto* values = numbersAt<float>(array.data);
  const auto stride = static_cast<std::size_t>(size);
  writeElements(text, count, stride * (kGeneralCapacity + 1),
                [=](ScriptLine& line, std::size_t i) { addFloats(line, values + i * stride, size); });
}

void writeIntegerTuples(ScriptText& text, const SceneArray& array, std::uint32_t count, int size) {
  const auto* values = numbersAt<int>(array.data);
  const auto stride = static_cast<std::size_t>(size);
  writeElements(text, count, stride * (kIntegerCapacity + 1),
                [=](ScriptLine& line, std::size_t i) { addIntegers(line, values + i * stride, size); });
}

void writeDoubleVectors(ScriptText& text, const SceneArray& array, std::uint32_t count) {
  const auto* values = numbersAt<double>(array.data);
  writeElements(text, count, 3 * (kGeneralCapacity + 1),
                [=](ScriptLine& line, std::size_t i) { addDoubles(line, values + i * 3, 3); });
}

void writeDoubles(ScriptText& text, const SceneArray& array, std::uint32_t count) {
  const auto* values = numbersAt<double>(array.data);
  writeElements(text, count, kFixed16Capacity, [=](ScriptLine& line, std::size_t i) { line.fixed16(values[i]); });
}

void writeBooleans(ScriptText& text, const SceneArray& array, std::uint32_t count) {
  const auto* values = numbersAt<int>(array.data);
  writeElements(text, count, 1, [=](ScriptLine& line, std::size_t i) { line.add(values[i] != 0 ? "1" : "0"); });
}

// Each matrix ends its own line.
void writeMatrices(ScriptText& text, const SceneArray& array, std::uint32_t count) {
  const auto* values = numbersAt<double>(array.data);
  RawBlocks blocks(text);
  for (std::uint32_t i = 0; i < count; ++i) {
    ScriptLine& line = blocks.withRoom(16 * (kGeneralCapacity + 1) + 3);
    line.matrix(values + std::size_t{i} * 16).add(i + 1 < count ? " ,\n" : " \n");
  }
}

// Strings and captured texts, whose length has no bound.
template <typename WriteElement>
void writeTexts(ScriptText& text, std::uint32_t count, WriteElement writeElement) {
  for (std::uint32_t i = 0; i < count; ++i) {
    writeElement(std::size_t{i});
    text.raw(i + 1 < count ? "," : " ");
    if (i > 0 && i % kElementsPerBreak == 0) {
      text.raw("\n");
      text.indentation();
    }
  }
}

void writeStrings(ScriptText& text, const SceneArray& array, std::uint32_t count) {
  const auto* strings = static_cast<const char* const*>(array.data);
  writeTexts(text, count, [&](std::size_t i) { text.raw(strings[i] == nullptr ? "" : strings[i]); });
}

void writeCaptures(ScriptText& text, const SceneArray& array, std::uint32_t count) {
  const auto* buffers = static_cast<const CaptureBuffer* const*>(array.data);
  writeTexts(text, count, [&](std::size_t i) { text.captured(buffers[i]); });
}

void writeTextElements(ScriptText& text, int elementType, const SceneArray& array, std::uint32_t count) {
  switch (elementType) {
    case kFloat3:
      return writeFloatTuples(text, array, count, 3);
    case kFloat4:
    case kFloat4b:
      return writeFloatTuples(text, array, count, 4);
    case kFloat:
      return writeFloatTuples(text, array, count, 1);
    case kFloat2:
      return writeFloatTuples(text, array, count, 2);
    case kDouble:
      return writeDoubles(text, array, count);
    case kDouble3:
      return writeDoubleVectors(text, array, count);
    case kInt:
      return writeIntegerTuples(text, array, count, 1);
    case kInt2:
      return writeIntegerTuples(text, array, count, 2);
    case kInt3:
      return writeIntegerTuples(text, array, count, 3);
    case kInt4:
      return writeIntegerTuples(text, array, count, 4);
    case kBool:
      return writeBooleans(text, array, count);
    case kMatrix:
      return writeMatrices(text, array, count);
    case kString:
    case kStringRef:
      return writeStrings(text, array, count);
    case kCapture:
      return writeCaptures(text, array, count);
    default:
      return;
  }
}

// False for the types that have no packed form.
bool writePackedElements(ScriptText& text, int elementType, const SceneArray& array, std::uint32_t count) {
  const std::size_t size = count;
  switch (elementType) {
    case kFloat3:
      writePackedRecord(text, 'c', count * 3, array.data, size * 3 * sizeof(float));
      return true;
    case kFloat:
      writePackedRecord(text, 'f', count, array.data, size * sizeof(float));
      return true;
    case kInt:
      writePackedRecord(text, 'i', count, array.data, size * sizeof(int));
      return true;
    case kDouble:
      writePackedRecord(text, 'r', count, array.data, size * sizeof(double));
      return true;
    default:
      return false;
  }
}

}  // namespace

void writeScalarValue(ScriptText& text, int type, const void* value) {
  if (type == kString) return text.nameInLine(static_cast<const char*>(value));
  if (value == nullptr) return;
  if (type == kStringRef) return text.nameInLine(*static_cast<const char* const*>(value));
  if (type == kCapture) return text.captured(*static_cast<const CaptureBuffer* const*>(value));
  ScriptLine line(text.workspace());
  addScalar(line, type, value);
  text.raw(line.text());
}

void writeWholeArray(ScriptText& text, int elementType, const SceneArray& array, bool packed) {
  const bool empty = array.data == nullptr || array.count < 0;
  const std::uint32_t count = empty ? 0 : static_cast<std::uint32_t>(array.count);
  text.raw("[ ");
  if (!packed || !writePackedElements(text, elementType, array, count)) {
    writeTextElements(text, elementType, array, count);
  }
  text.raw("] ");
}

void writePackedRecord(ScriptText& text, char tag, std::uint32_t count, const void* data, std::size_t size) {
  std::array<char, 8> header = {1, 2, 3, tag};
  std::memcpy(header.data() + 4, &count, sizeof(count));
  text.bytes(header.data(), header.size());
  text.bytes(data, size);
}

}  // namespace rendara
