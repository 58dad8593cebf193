// A streaming reader of scene scripts and packages (*.rpk): text with packed little-endian arrays inside.
//
// It stands on its own: nothing here is shared with the code that writes the format, so that a fault in the writer
// cannot hide behind the same fault in the reader. Nothing of the file is trusted; every length is checked against
// the range, nesting is limited, and what cannot be read becomes a fault with its place while reading goes on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace rpk {

// Place of something in the file. Lines count from 1 and count text lines only: the bytes of packed arrays hold no
// line breaks, whatever their values.
struct Place {
  std::size_t offset = 0;
  std::uint64_t line = 1;
};

// One word of a line.
struct Word {
  enum class Kind { kBare, kNumber, kName, kBytes };
  Kind kind = Kind::kBare;
  std::string_view text;    // a name without its quotes, or decoded from its xX form; bytes: their digits after bX
  std::string_view source;  // as it stands in the file
};

// An array as it stands in the file. Nothing is copied: the view lives as long as the range that is read. Packed data
// can lie at any address, so values are fetched through the functions.
class ArrayView {
 public:
  ArrayView() = default;
  // `values` are the bytes after the count field: 8 for each value of tag 'r', else 4.
  static ArrayView packedValues(char tag, std::string_view values);
  // `text` is what stands between the brackets.
  static ArrayView textValues(std::string_view text);

  bool packed() const { return tag_ != 0; }
  // 'c' floats, three per element; 'f' floats; 'i' 32-bit integers; 'r' doubles; 0 for an array in text form.
  char tag() const { return tag_; }
  // Number of single values: an array of n vectors has 3 n. A text array is counted at every call.
  std::size_t count() const;
  bool empty() const { return count() == 0; }
  // The packed values, or the text between the brackets.
  std::string_view bytes() const { return bytes_; }

  // One value of a packed array, whatever its type; 0 beyond the end and for text arrays.
  double number(std::size_t index) const;
  std::int32_t integer(std::size_t index) const;
  // All values; the numbers of a text array are parsed, words that are no numbers are left out.
  std::vector<float> floats() const;
  std::vector<double> doubles() const;
  // Values outside the range of 32 bits, and not-a-numbers, become 0.
  std::vector<std::int32_t> integers() const;

 private:
  std::string_view bytes_;
  char tag_ = 0;
};

// A comment line, without its line break. Header lines are comments of the form "//---...---".
struct Comment {
  std::string_view text;
  Place place;
  bool header() const;
};

// The opening line of a block. An inline shader is a block too: `surface "vnt_diffuse" {` has the keyword "surface",
// `"diffuse" ! "texture_rgb" {` the keyword "!", both with their names in order.
struct Block {
  std::string_view directive;   // "#define", "#modify" or empty
  std::string_view keyword;     // the bare words joined by one blank: "group", "reflection map", "!", or empty
  std::span<const Word> words;  // every word after the directive
  Place place;

  // The n-th name of the line, empty when there are fewer.
  std::string_view name(std::size_t index = 0) const;
  std::size_t nameCount() const;
};

struct BlockEnd {
  Place place;
  bool missing = false;  // the file ended before the brace
};

// `"name" value,` or `name value`. Exactly one of `array` and `words` has content, but for a value of no text.
struct Parameter {
  std::string_view name;
  bool quoted = false;          // the form with quotes and comma
  std::string_view text;        // the value as it stands in the file, without the comma
  std::span<const Word> words;  // the words of a value that is no array
  std::optional<ArrayView> array;
  Place place;

  std::optional<double> number() const;            // a value of one number
  std::optional<bool> boolean() const;             // on or off
  std::optional<std::string_view> string() const;  // a value of one name
  bool numbers(std::span<double> values) const;    // exactly so many numbers; else false and untouched
};

// A line that is no parameter: transform, set transform, flags, id, material (a reference), instance, attribute,
// icon, render, photon counts, the flag lines of an object and so on.
struct Line {
  std::string_view keyword;     // as in Block: "transform", "set transform", "caustics store"
  std::span<const Word> words;  // what follows the keyword
  Place place;

  std::string_view name(std::size_t index = 0) const;
  bool numbers(std::span<double> values) const;
};

struct Fault {
  Place place;
  std::string path;  // the open blocks from the outside in: group "pump" / object "rotor"; cut names end in "..."
  std::string what;
};

// What the reader reports, in the order of the file. Views in the arguments that point into names and keywords live
// for the call only; arrays and `source` texts live as long as the range. Every openBlock() gets its closeBlock(), also
// in a damaged file.
class PackageVisitor {
 public:
  virtual ~PackageVisitor() = default;
  virtual void comment(const Comment&) {}
  virtual void openBlock(const Block&) {}
  virtual void closeBlock(const BlockEnd&) {}
  virtual void parameter(const Parameter&) {}
  virtual void line(const Line&) {}
  virtual void fault(const Fault&) {}
  // Every now and then within a long array of text: what stands before the offset has been gone through.
  virtual void passing(std::size_t /*offset*/) {}
};

struct ReadLimits {
  // Blocks nested deeper are passed over, with one fault.
  std::size_t depth = 200;
  // Faults beyond are counted but no longer reported.
  std::size_t faults = 1000;
};

// Reads the whole range and gives the number of faults.
std::size_t readPackage(std::string_view bytes, PackageVisitor& visitor, const ReadLimits& limits = {});

}  // namespace rpk
