#include "scene/script_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace rendara {
namespace {

bool needsHexadecimal(std::string_view name) {
  return std::any_of(name.begin(), name.end(),
                     [](char c) { return c == '"' || c == '\r' || c == '\n' || static_cast<unsigned char>(c) >= 128; });
}

// Makes room for `size` more bytes. False, with the buffer left as it was, when there is none to be had.
bool growCapture(CaptureBuffer& buffer, std::size_t size) {
  constexpr std::int64_t kLargest = std::numeric_limits<int>::max();
  const std::int64_t needed = std::int64_t{buffer.length} + static_cast<std::int64_t>(size);
  if (needed <= buffer.capacity) return true;
  if (needed > kLargest) return false;
  const std::int64_t wanted = 2 * (std::int64_t{buffer.capacity} + 256) + static_cast<std::int64_t>(size);
  const auto capacity = static_cast<int>(std::min(wanted, kLargest));
  auto* data = static_cast<char*>(std::realloc(buffer.data, static_cast<std::size_t>(capacity)));
  if (data == nullptr) return false;
  buffer.data = data;
  buffer.capacity = capacity;
  return true;
}

void appendToCapture(CaptureBuffer& buffer, const void* data, std::size_t size) {
  if (size == 0 || !growCapture(buffer, size)) return;
  std::memcpy(buffer.data + buffer.length, data, size);
  buffer.length += static_cast<int>(size);
}

}  // namespace

void ScriptText::FreeCapture::operator()(CaptureBuffer* buffer) const {
  std::free(buffer->data);
  delete buffer;
}

ScriptText::ScriptText(std::FILE* streamOrNull)
    : stream_(streamOrNull),
      format_(std::make_unique_for_overwrite<char[]>(kBufferSize)),
      indented_(std::make_unique_for_overwrite<char[]>(kBufferSize)) {}

ScriptText::~ScriptText() {
  if (stream_ != nullptr) std::fclose(stream_);
}

void ScriptText::emit(const char* data, std::size_t size) {
  if (capturing_) {
    if (current_ != nullptr) appendToCapture(*current_, data, size);
  } else if (stream_ != nullptr && size > 0) {
    std::fwrite(data, 1, size, stream_);
  }
}

void ScriptText::indented(std::string_view text) {
  text = text.substr(0, kTextLimit);
  if (blanks_ <= 0) return emit(text.data(), text.size());
  emitIndented(text, static_cast<std::size_t>(blanks_));
}

// Collects the lines with their blanks in the second buffer and hands it on whenever it is full.
void ScriptText::emitIndented(std::string_view text, std::size_t blanks) {
  char* const begin = indented_.get();
  char* const end = begin + kBufferSize;
  char* out = begin;
  const auto room = [&] {
    if (out == end) {
      emit(begin, kBufferSize);
      out = begin;
    }
    return static_cast<std::size_t>(end - out);
  };
  do {
    for (std::size_t left = blanks; left > 0;) {
      const std::size_t count = std::min(left, room());
      out = std::fill_n(out, count, ' ');
      left -= count;
    }
    std::string_view line = text.substr(0, text.find('\n'));
    if (line.size() < text.size()) line = text.substr(0, line.size() + 1);
    text.remove_prefix(line.size());
    while (!line.empty()) {
      const std::size_t count = std::min(line.size(), room());
      out = std::copy_n(line.data(), count, out);
      line.remove_prefix(count);
    }
  } while (!text.empty());
  emit(begin, static_cast<std::size_t>(out - begin));
}

void ScriptText::raw(std::string_view text) {
  text = text.substr(0, kTextLimit);
  emit(text.data(), text.size());
}

void ScriptText::indentation() {
  for (int left = blanks_; left > 0;) {
    constexpr std::string_view kBlanks = "                                ";
    const auto count = std::min(static_cast<std::size_t>(left), kBlanks.size());
    emit(kBlanks.data(), count);
    left -= static_cast<int>(count);
  }
}

void ScriptText::bytes(const void* data, std::size_t size) {
  if (capturing_ && current_ != nullptr) current_->holdsRawBytes = true;
  emit(static_cast<const char*>(data), size);
}

void ScriptText::name(const char* name) {
  const std::string_view text = name == nullptr ? "" : name;
  if (needsHexadecimal(text)) return hexadecimal("xX", text.data(), text.size());
  char* out = format_.get();
  char* const end = out + kTextLimit;
  *out++ = '"';
  out = std::copy_n(text.data(), std::min(text.size(), static_cast<std::size_t>(end - out)), out);
  if (out != end) *out++ = '"';
  indented({format_.get(), static_cast<std::size_t>(out - format_.get())});
}

void ScriptText::nameInLine(const char* name) {
  const int blanks = blanks_;
  blanks_ = 0;
  this->name(name);
  blanks_ = blanks;
}

void ScriptText::hexadecimal(std::string_view mark, const void* data, std::size_t size) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto* byte = static_cast<const unsigned char*>(data);
  emit(mark.data(), mark.size());
  while (size > 0) {
    const std::size_t count = std::min(size, kTextLimit / 2);
    char* out = format_.get();
    for (std::size_t i = 0; i < count; ++i, ++byte) {
      *out++ = kDigits[*byte >> 4];
      *out++ = kDigits[*byte & 15];
    }
    emit(format_.get(), count * 2);
    size -= count;
  }
}

void ScriptText::captured(const CaptureBuffer* buffer) {
  if (buffer == nullptr) return;
  std::string_view text(buffer->data, static_cast<std::size_t>(buffer->length));
  std::string copy;
  if (capturing_ && buffer == current_) text = copy = text;  // appending to it may move its data
  if (buffer->holdsRawBytes) return bytes(text.data(), text.size());
  indented(text);
}

void ScriptText::flush() {
  if (stream_ != nullptr) std::fflush(stream_);
}

void ScriptText::beginCapture() {
  savedFlags_.push(capturing_);
  savedBuffers_.push(current_);
  savedIndentations_.push({blanks_, true});
  buffers_.push_back(std::unique_ptr<CaptureBuffer, FreeCapture>(new CaptureBuffer));
  current_ = buffers_.back().get();
  capturing_ = true;
  blanks_ = 0;
}

void ScriptText::beginUncaptured() {
  savedFlags_.push(capturing_);
  savedBuffers_.push(current_);
  savedIndentations_.push({blanks_, false});
}

void ScriptText::endCapture() {
  const SavedIndentation saved = savedIndentations_.pop();
  outdent();
  if (capturing_ && saved.captured) {
    indented("}");
    blanks_ = saved.blanks;
  } else {
    indented("}\n");
  }
  savedBuffers_.drop();
  capturing_ = savedFlags_.pop();
}

}  // namespace rendara
