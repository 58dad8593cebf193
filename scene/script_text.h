// The text side of the scene script writer: the stream, the indentation, the two printers, the form of names, and the
// capture of text into buffers. It knows characters only; what the lines mean is the caller's.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

#include "scene/saved_values.h"
#include "scene/vntScene_api.h"

namespace rendara {

class ScriptText {
 public:
  // One call of a printer keeps at most this many characters of its text; the rest is cut. Blanks of the indentation
  // do not count.
  static constexpr std::size_t kTextLimit = 1048575;

  // Takes the stream over; it is closed on destruction. With null nothing is written, but captures work.
  explicit ScriptText(std::FILE* streamOrNull);
  ~ScriptText();
  ScriptText(const ScriptText&) = delete;
  ScriptText& operator=(const ScriptText&) = delete;

  // The indented printer: blanks first, and again after each line break that is followed by further text. So a line
  // that is built from two calls carries blanks in its middle; the format wants it so.
  void indented(std::string_view text);
  // The raw printer.
  void raw(std::string_view text);
  // Blanks of the current indentation, none when it is negative.
  void indentation();
  // Data of any size and content, from the caller's memory. A capture that receives some holds raw bytes from then on.
  void bytes(const void* data, std::size_t size);

  // A name: quoted by the indented printer, or raw in hexadecimal form ("xXe9") when it holds a double quote, a
  // carriage return, a line feed or a byte of 128 or more. Null is the empty name.
  void name(const char* name);
  // The same in the middle of a line, where the indentation does not show.
  void nameInLine(const char* name);
  // Two lowercase hexadecimal digits for each byte, after the mark ("bX").
  void hexadecimal(std::string_view mark, const void* data, std::size_t size);
  // What a capture holds: plain text by the indented printer, raw bytes as they stand; nothing for null.
  void captured(const CaptureBuffer* buffer);

  // Makes everything written so far visible to other readers of the file.
  void flush();

  void indent() { blanks_ += kStep; }
  void outdent() { blanks_ -= kStep; }
  int blanks() const { return blanks_; }  // negative after ends without a beginning

  // A block between these two goes into a buffer of its own, at indentation 0. `endCapture` writes nothing itself.
  void beginCapture();
  // Balances `endCapture` for a block that is not captured.
  void beginUncaptured();
  // The end of the block's text ("}" or "}\n"), then back to what was before; the finished buffer stays the current
  // one.
  void endCapture();
  void stopCapturing() { capturing_ = false; }
  CaptureBuffer* currentCapture() { return current_; }
  void pushCapture() { savedBuffers_.push(current_); }
  void popCapture() { current_ = savedBuffers_.pop(); }

  // Room for composing the text of one printer call: kTextLimit characters. The functions for names use it too.
  char* workspace() { return format_.get(); }

 private:
  static constexpr int kStep = 2;
  static constexpr std::size_t kBufferSize = kTextLimit + 1;

  struct SavedIndentation {
    int blanks = 0;
    bool captured = false;
  };
  struct FreeCapture {
    void operator()(CaptureBuffer* buffer) const;
  };

  void emit(const char* data, std::size_t size);
  void emitIndented(std::string_view text, std::size_t blanks);

  std::FILE* stream_;
  std::unique_ptr<char[]> format_;
  std::unique_ptr<char[]> indented_;
  int blanks_ = 0;

  bool capturing_ = false;
  CaptureBuffer* current_ = nullptr;
  SavedValues<bool> savedFlags_;
  SavedValues<CaptureBuffer*> savedBuffers_;
  SavedValues<SavedIndentation> savedIndentations_;
  std::vector<std::unique_ptr<CaptureBuffer, FreeCapture>> buffers_;
};

}  // namespace rendara
