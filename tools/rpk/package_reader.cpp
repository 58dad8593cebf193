#include "tools/rpk/package_reader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <deque>
#include <limits>
#include <utility>

#include "tools/rpk/little_endian.h"

namespace rpk {
namespace {

constexpr std::size_t kMaxWords = 64;     // the longest line of the format has 18
constexpr std::size_t kMaxPathPart = 64;  // bytes of one block's opening line in a fault's path
constexpr std::size_t kPackedHeader = 8;  // 01 02 03, tag, 32-bit count
constexpr std::size_t kPassingStep = 16U << 20;
constexpr std::string_view kPackedMark = "\x01\x02\x03";

// Lines that are no parameters, by their bare words without "on" and "off".
constexpr std::array<std::string_view, 21> kLineKeywords = {
    "transform",     "set transform", "scale",          "rotate",          "translate",      "instance",
    "material",      "attribute",     "global photons", "caustic photons", "volume photons", "id",
    "flags",         "progress",      "icon",           "render",          "caustics store", "caustics trace",
    "ambient store", "ambient trace", "invisible"};

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }
bool isSpace(char c) { return isBlank(c) || c == '\n'; }
bool isStrange(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte < 0x20 && !isSpace(c)) || byte >= 0x7f;
}
bool endsWord(char c) {
  return isSpace(c) || isStrange(c) || c == '{' || c == '}' || c == '[' || c == ']' || c == ',' || c == '"';
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// "xX" before a name, "bX" before bytes.
bool isHex(std::string_view word, std::string_view mark) {
  return word.size() > 2 && word.starts_with(mark) &&
         std::all_of(word.begin() + 2, word.end(), [](char c) { return hexDigit(c) >= 0; });
}

std::string decodeHex(std::string_view digits) {
  std::string text;
  text.reserve(digits.size() / 2);
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    text += static_cast<char>(hexDigit(digits[i]) * 16 + hexDigit(digits[i + 1]));
  }
  return text;
}

std::optional<double> parseNumber(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (end != text.data() + text.size() || error == std::errc::invalid_argument) return std::nullopt;
  return value;
}

std::size_t valueSize(char tag) { return tag == 'r' ? 8 : 4; }
bool isArrayTag(char tag) { return tag == 'c' || tag == 'f' || tag == 'i' || tag == 'r'; }

// Packed values of the type that is asked for: copied as they lie.
template <typename Value>
std::vector<Value> copyLittleEndian(std::string_view bytes) {
  std::vector<Value> values(bytes.size() / sizeof(Value));
  if constexpr (std::endian::native == std::endian::little) {
    if (!values.empty()) std::memcpy(values.data(), bytes.data(), values.size() * sizeof(Value));
  } else {
    for (std::size_t i = 0; i < values.size(); ++i) {
      values[i] = loadLittleEndian<Value>(bytes.data() + i * sizeof(Value));
    }
  }
  return values;
}

template <typename Call>
void forEachTextNumber(std::string_view text, Call call) {
  std::size_t at = 0;
  while (at < text.size()) {
    if (isSpace(text[at]) || text[at] == ',') {
      ++at;
      continue;
    }
    std::size_t end = at;
    while (end < text.size() && !isSpace(text[end]) && text[end] != ',') ++end;
    if (const auto value = parseNumber(text.substr(at, end - at))) call(*value);
    at = end;
  }
}

std::int32_t toInteger(double value) {
  const bool fits =
      value >= std::numeric_limits<std::int32_t>::min() && value <= std::numeric_limits<std::int32_t>::max();
  return fits ? static_cast<std::int32_t>(value) : 0;
}

bool isFlag(std::string_view word) { return word == "on" || word == "off"; }

bool wordNumbers(std::span<const Word> words, std::span<double> values) {
  if (words.size() != values.size()) return false;
  for (const Word& word : words) {
    if (word.kind != Word::Kind::kNumber) return false;
  }
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = parseNumber(words[i].text).value_or(0);
  return true;
}

std::string_view nthName(std::span<const Word> words, std::size_t index) {
  for (const Word& word : words) {
    if (word.kind != Word::Kind::kName) continue;
    if (index == 0) return word.text;
    --index;
  }
  return {};
}

// Iterative, with the open blocks on a stack of its own: the depth of a file never becomes depth of calls.
class Reader {
 public:
  Reader(std::string_view bytes, PackageVisitor& visitor, const ReadLimits& limits)
      : bytes_(bytes), visitor_(visitor), limits_(limits) {}

  std::size_t run();

 private:
  struct OpenBlock {
    std::string_view source;
    bool commaFollows = false;  // the block is the value of a parameter
  };
  enum class End { kLineBreak, kComma, kBrace, kOtherBrace, kFile };

  bool atEnd() const { return at_ >= bytes_.size(); }
  bool startsWith(std::string_view text) const { return bytes_.substr(at_).starts_with(text); }
  Place here() const { return {at_, line_}; }
  bool muted() const { return passedOver_ > 0; }

  void skipSpace();
  void readStatement();
  void readComment();
  void readClosingBrace();
  void readLine();
  // Reads words and an array up to the end of the line, the comma or the brace, which is passed too.
  End collectWords();
  std::optional<End> tryEnd();
  void collectOther();
  void addWord(Word word);
  void readQuotedName();
  void readBareWord();
  void readArray();
  // The record at at_; false when it does not hold together.
  bool readPacked();
  void leaveDamagedArray();

  void reportBlock(const Place& start, bool byName);
  void pushBlock(const Block& block, const OpenBlock& open);
  void reportNamedParameter(const Place& start, End end);
  void reportPlainLine(const Place& start, End end);
  void reportParameter(const Place& start, std::string_view name, std::size_t firstValue, bool quoted);
  std::string_view joinBareWords(std::span<const Word> words);
  std::string_view valueText(std::size_t firstValue) const;

  void fault(const Place& place, std::string what);
  std::string path() const;

  std::string_view bytes_;
  PackageVisitor& visitor_;
  ReadLimits limits_;
  std::size_t at_ = 0;
  std::uint64_t line_ = 1;
  std::size_t faults_ = 0;
  std::vector<OpenBlock> open_;
  std::size_t passedOver_ = 0;  // open blocks beyond the depth limit

  // The line that is being read.
  std::vector<Word> words_;
  std::deque<std::string> decoded_;  // a deque, since words_ hold views of its texts
  std::string keyword_;
  std::optional<ArrayView> array_;
  std::string_view arraySource_;
  bool tooManyWords_ = false;
};

std::size_t Reader::run() {
  for (;;) {
    skipSpace();
    if (atEnd()) break;
    const std::size_t before = at_;
    readStatement();
    if (at_ == before) ++at_;
  }
  if (passedOver_ > 0 || !open_.empty()) {
    fault(here(), "the file ends with " + std::to_string(open_.size() + passedOver_) + " open blocks");
  }
  passedOver_ = 0;
  while (!open_.empty()) {
    open_.pop_back();
    visitor_.closeBlock({here(), true});
  }
  return faults_;
}

void Reader::skipSpace() {
  while (!atEnd() && isSpace(bytes_[at_])) {
    if (bytes_[at_] == '\n') ++line_;
    ++at_;
  }
}

void Reader::readStatement() {
  const char c = bytes_[at_];
  if (startsWith("//")) {
    readComment();
  } else if (c == '}') {
    readClosingBrace();
  } else if (c == ',' || c == ']') {
    fault(here(), std::string("a \"") + c + "\" that nothing before asks for");
    ++at_;
  } else {
    readLine();
  }
}

void Reader::readComment() {
  const Place start = here();
  const std::size_t end = std::min(bytes_.find('\n', at_), bytes_.size());
  std::string_view text = bytes_.substr(at_, end - at_);
  at_ = end;
  if (atEnd()) fault(start, "the file ends within a comment line");
  if (text.ends_with('\r')) text.remove_suffix(1);
  if (!muted()) visitor_.comment({text, start});
}

void Reader::readClosingBrace() {
  const Place start = here();
  ++at_;
  bool commaFollows = false;
  if (passedOver_ > 0) {
    --passedOver_;
  } else if (open_.empty()) {
    fault(start, "a closing brace without a block");
    return;
  } else {
    commaFollows = open_.back().commaFollows;
    open_.pop_back();
    visitor_.closeBlock({start, false});
  }
  std::size_t next = at_;
  while (next < bytes_.size() && isBlank(bytes_[next])) ++next;
  const bool comma = next < bytes_.size() && bytes_[next] == ',';
  if (comma && (commaFollows || muted())) {
    at_ = next + 1;
  } else if (commaFollows) {
    fault(start, "a shader that is a parameter's value lacks its comma");
  }
}

void Reader::readLine() {
  const Place start = here();
  words_.clear();
  decoded_.clear();
  array_.reset();
  arraySource_ = {};
  tooManyWords_ = false;
  const End end = collectWords();
  const bool byName = !words_.empty() && words_.front().kind == Word::Kind::kName;
  if (end == End::kFile) fault(start, "the file ends within a line");
  if (end == End::kBrace) {
    reportBlock(start, byName);
  } else if (words_.empty()) {
    if (array_) fault(start, "an array without a name");
  } else if (byName) {
    reportNamedParameter(start, end);
  } else {
    reportPlainLine(start, end);
  }
}

Reader::End Reader::collectWords() {
  for (;;) {
    while (!atEnd() && isBlank(bytes_[at_])) ++at_;
    if (const auto end = tryEnd()) return *end;
    collectOther();
  }
}

std::optional<Reader::End> Reader::tryEnd() {
  if (atEnd()) return End::kFile;
  const bool byName = !words_.empty() && words_.front().kind == Word::Kind::kName;
  switch (bytes_[at_]) {
    case '\n': {
      const Place lineEnd = here();
      const bool onlyDirective = words_.size() == 1 && words_.front().text.starts_with('#');
      skipSpace();
      if (onlyDirective) return tryEnd();  // "#modify" stands on a line before its camera
      if (byName && !atEnd() && bytes_[at_] == ',') {
        ++at_;
        return End::kComma;
      }
      at_ = lineEnd.offset;
      line_ = lineEnd.line;
      return End::kLineBreak;
    }
    case ',':
      if (!byName) return std::nullopt;
      ++at_;
      return End::kComma;
    case '{':
      ++at_;
      return End::kBrace;
    case '}':
      return End::kOtherBrace;
    default:
      return std::nullopt;
  }
}

void Reader::collectOther() {
  const char c = bytes_[at_];
  if (c == '"') {
    readQuotedName();
  } else if (c == '[') {
    readArray();
  } else if (c == ']' || c == ',') {
    fault(here(), std::string("a \"") + c + "\" that nothing before asks for");
    ++at_;
  } else if (isStrange(c)) {
    fault(here(), "bytes that are no text");
    at_ = std::min(bytes_.find('\n', at_), bytes_.size());
  } else {
    readBareWord();
  }
}

void Reader::addWord(Word word) {
  if (words_.size() < kMaxWords) {
    words_.push_back(word);
  } else if (!std::exchange(tooManyWords_, true)) {
    fault(here(), "a line of more than " + std::to_string(kMaxWords) + " words");
  }
}

void Reader::readQuotedName() {
  const std::size_t start = at_;
  const std::size_t end = bytes_.find_first_of("\"\n", at_ + 1);
  if (end == std::string_view::npos || bytes_[end] == '\n') {
    fault(here(), "a name without its closing quote");
    at_ = std::min(end, bytes_.size());
    addWord({Word::Kind::kName, bytes_.substr(start + 1, at_ - start - 1), bytes_.substr(start, at_ - start)});
    return;
  }
  at_ = end + 1;
  addWord({Word::Kind::kName, bytes_.substr(start + 1, end - start - 1), bytes_.substr(start, at_ - start)});
}

void Reader::readBareWord() {
  const Place start = here();
  while (!atEnd() && !endsWord(bytes_[at_])) ++at_;
  const std::string_view text = bytes_.substr(start.offset, at_ - start.offset);
  if (isHex(text, "xX")) {
    if (text.size() % 2 != 0) fault(start, "a name in hexadecimal form with half a byte");
    decoded_.push_back(decodeHex(text.substr(2)));
    addWord({Word::Kind::kName, decoded_.back(), text});
  } else if (isHex(text, "bX")) {
    addWord({Word::Kind::kBytes, text.substr(2), text});
  } else {
    addWord({parseNumber(text) ? Word::Kind::kNumber : Word::Kind::kBare, text, text});
  }
}

void Reader::readArray() {
  const Place start = here();
  if (array_) fault(start, "a second array in one line");
  ++at_;
  const std::size_t first = at_;
  while (!atEnd()) {
    if ((at_ - first) % kPassingStep == kPassingStep - 1) visitor_.passing(at_);
    const char c = bytes_[at_];
    if (startsWith(kPackedMark)) {
      if (!readPacked()) leaveDamagedArray();
      arraySource_ = bytes_.substr(start.offset, at_ - start.offset);
      return;
    }
    if (c == '{' || c == '}' || isStrange(c)) break;
    if (c == '"') {
      const std::size_t end = bytes_.find_first_of("\"\n", at_ + 1);
      at_ = std::min(end, bytes_.size() - 1);
    }
    if (bytes_[at_] == '\n') ++line_;
    ++at_;
    if (c == ']') {
      array_ = ArrayView::textValues(bytes_.substr(first, at_ - 1 - first));
      arraySource_ = bytes_.substr(start.offset, at_ - start.offset);
      return;
    }
  }
  fault(start, "an array without its closing bracket");
  array_ = ArrayView::textValues(bytes_.substr(first, at_ - first));
  arraySource_ = bytes_.substr(start.offset, at_ - start.offset);
}

bool Reader::readPacked() {
  const Place start = here();
  if (bytes_.size() - at_ < kPackedHeader) {
    fault(start, "the file ends within the head of a packed array");
    return false;
  }
  const char tag = bytes_[at_ + kPackedMark.size()];
  const auto count = loadLittleEndian<std::int32_t>(bytes_.data() + at_ + 4);
  if (!isArrayTag(tag) || count < 0) {
    fault(start, isArrayTag(tag) ? "a packed array of negative count" : "a packed array of unknown type");
    return false;
  }
  const std::uint64_t size = static_cast<std::uint64_t>(count) * valueSize(tag);
  if (size > bytes_.size() - at_ - kPackedHeader) {
    fault(start, "a packed array of " + std::to_string(count) + " values reaches beyond the end of the file");
    return false;
  }
  std::size_t next = at_ + kPackedHeader + static_cast<std::size_t>(size);
  while (next < bytes_.size() && isSpace(bytes_[next])) ++next;
  if (next >= bytes_.size() || bytes_[next] != ']') {
    fault(start, "no bracket stands behind the " + std::to_string(count) + " values of a packed array");
    return false;
  }
  if (tag == 'c' && count % 3 != 0) fault(start, "an array of vectors whose count is no multiple of 3");
  array_ = ArrayView::packedValues(tag, bytes_.substr(at_ + kPackedHeader, static_cast<std::size_t>(size)));
  at_ = next + 1;
  return true;
}

// The length cannot be believed, so the next text that ends an array's line is taken for this array's end.
void Reader::leaveDamagedArray() {
  array_ = ArrayView::textValues({});
  for (std::size_t next = bytes_.find(']', at_); next != std::string_view::npos; next = bytes_.find(']', next + 1)) {
    const std::string_view after = bytes_.substr(next + 1, 3);
    if (after.starts_with(" \n") || after.starts_with(" ,\n") || after.starts_with(",\n")) {
      at_ = next + 1;
      return;
    }
  }
  at_ = bytes_.size();
}

std::string_view Reader::joinBareWords(std::span<const Word> words) {
  keyword_.clear();
  for (const Word& word : words) {
    if (word.kind != Word::Kind::kBare) continue;
    if (!keyword_.empty()) keyword_ += ' ';
    keyword_ += word.text;
  }
  return keyword_;
}

void Reader::reportBlock(const Place& start, bool byName) {
  if (array_) fault(start, "an array before a brace");
  if (words_.empty()) fault(start, "a brace without a keyword");
  Block block;
  block.place = start;
  block.words = words_;
  if (!words_.empty() && words_.front().text.starts_with('#') && words_.front().kind == Word::Kind::kBare) {
    block.directive = words_.front().text;
    block.words = block.words.subspan(1);
  }
  block.keyword = joinBareWords(block.words);
  const std::string_view source = bytes_.substr(start.offset, at_ - start.offset);
  pushBlock(block, {source, byName && words_.size() > 1});
}

void Reader::pushBlock(const Block& block, const OpenBlock& open) {
  if (open_.size() < limits_.depth) {
    open_.push_back(open);
    visitor_.openBlock(block);
    return;
  }
  if (passedOver_ == 0) fault(block.place, "blocks nested deeper than " + std::to_string(limits_.depth));
  ++passedOver_;
}

std::string_view Reader::valueText(std::size_t firstValue) const {
  const char* begin = nullptr;
  const char* end = nullptr;
  const auto include = [&](std::string_view part) {
    if (!begin || part.data() < begin) begin = part.data();
    if (!end || part.data() + part.size() > end) end = part.data() + part.size();
  };
  for (std::size_t i = firstValue; i < words_.size(); ++i) include(words_[i].source);
  if (array_) include(arraySource_);
  return begin ? std::string_view(begin, static_cast<std::size_t>(end - begin)) : std::string_view();
}

void Reader::reportParameter(const Place& start, std::string_view name, std::size_t firstValue, bool quoted) {
  if (array_ && firstValue < words_.size()) fault(start, "a value of words and an array");
  if (muted()) return;
  Parameter parameter;
  parameter.name = name;
  parameter.quoted = quoted;
  parameter.text = valueText(firstValue);
  parameter.words = std::span<const Word>(words_).subspan(firstValue);
  parameter.array = array_;
  parameter.place = start;
  visitor_.parameter(parameter);
}

void Reader::reportNamedParameter(const Place& start, End end) {
  if (end != End::kComma && end != End::kFile) fault(start, "a parameter without its comma");
  if (open_.empty()) fault(start, "a parameter outside any block");
  reportParameter(start, words_.front().text, 1, true);
}

void Reader::reportPlainLine(const Place& start, End end) {
  if (end == End::kOtherBrace) fault(here(), "a closing brace within a line");
  std::size_t firstValue = 1;
  while (firstValue < words_.size() && words_[firstValue].kind == Word::Kind::kBare &&
         !isFlag(words_[firstValue].text)) {
    ++firstValue;
  }
  const std::span<const Word> all = words_;
  if (all.front().kind == Word::Kind::kNumber) {
    fault(start, "a line that begins with a number");
    return;
  }
  if (all.front().text.starts_with('#')) {
    fault(start, "a definition without its block");
    return;
  }
  const std::string_view keyword = joinBareWords(all.first(firstValue));
  if (!array_ && std::find(kLineKeywords.begin(), kLineKeywords.end(), keyword) != kLineKeywords.end()) {
    if (!muted()) visitor_.line({keyword, all.subspan(firstValue), start});
    return;
  }
  if (open_.empty()) {
    fault(start, "a line that is not known outside any block");
    return;
  }
  reportParameter(start, keyword, firstValue, false);
}

void Reader::fault(const Place& place, std::string what) {
  if (++faults_ > limits_.faults) return;
  visitor_.fault({place, path(), std::move(what)});
}

std::string Reader::path() const {
  std::string text;
  for (const OpenBlock& block : open_) {
    std::string_view part = block.source;
    while (!part.empty() && (part.back() == '{' || isSpace(part.back()))) part.remove_suffix(1);
    if (!text.empty()) text += " / ";
    text += part.substr(0, kMaxPathPart);
    if (part.size() > kMaxPathPart) text += "...";
  }
  return text;
}

}  // namespace

ArrayView ArrayView::packedValues(char tag, std::string_view values) {
  ArrayView view;
  view.tag_ = tag;
  view.bytes_ = values;
  return view;
}

ArrayView ArrayView::textValues(std::string_view text) {
  ArrayView view;
  view.bytes_ = text;
  return view;
}

std::size_t ArrayView::count() const {
  if (packed()) return bytes_.size() / valueSize(tag_);
  std::size_t count = 0;
  forEachTextNumber(bytes_, [&](double) { ++count; });
  return count;
}

double ArrayView::number(std::size_t index) const {
  if (!packed() || index >= count()) return 0;
  const char* value = bytes_.data() + index * valueSize(tag_);
  if (tag_ == 'r') return loadLittleEndian<double>(value);
  if (tag_ == 'i') return loadLittleEndian<std::int32_t>(value);
  return static_cast<double>(loadLittleEndian<float>(value));
}

std::int32_t ArrayView::integer(std::size_t index) const { return toInteger(number(index)); }

std::vector<double> ArrayView::doubles() const {
  std::vector<double> values;
  if (!packed()) {
    forEachTextNumber(bytes_, [&](double value) { values.push_back(value); });
    return values;
  }
  values.resize(count());
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = number(i);
  return values;
}

std::vector<float> ArrayView::floats() const {
  if (tag_ == 'c' || tag_ == 'f') return copyLittleEndian<float>(bytes_);
  const std::vector<double> values = doubles();
  std::vector<float> narrowed(values.size());
  std::transform(values.begin(), values.end(), narrowed.begin(), [](double value) {
    constexpr double kLargest = std::numeric_limits<float>::max();
    // Beyond the range a plain conversion is undefined; infinities stay what they are.
    return std::isfinite(value) ? static_cast<float>(std::clamp(value, -kLargest, kLargest))
                                : static_cast<float>(value);
  });
  return narrowed;
}

std::vector<std::int32_t> ArrayView::integers() const {
  if (tag_ == 'i') return copyLittleEndian<std::int32_t>(bytes_);
  const std::vector<double> values = doubles();
  std::vector<std::int32_t> narrowed(values.size());
  std::transform(values.begin(), values.end(), narrowed.begin(), toInteger);
  return narrowed;
}

bool Comment::header() const { return text.size() >= 8 && text.starts_with("//---") && text.ends_with("---"); }

std::string_view Block::name(std::size_t index) const { return nthName(words, index); }

std::size_t Block::nameCount() const {
  return static_cast<std::size_t>(
      std::count_if(words.begin(), words.end(), [](const Word& word) { return word.kind == Word::Kind::kName; }));
}

std::optional<double> Parameter::number() const {
  double value = 0;
  if (!wordNumbers(words, {&value, 1})) return std::nullopt;
  return value;
}

std::optional<bool> Parameter::boolean() const {
  if (words.size() != 1 || !isFlag(words.front().text) || words.front().kind != Word::Kind::kBare) return std::nullopt;
  return words.front().text == "on";
}

std::optional<std::string_view> Parameter::string() const {
  if (words.size() != 1 || words.front().kind != Word::Kind::kName) return std::nullopt;
  return words.front().text;
}

bool Parameter::numbers(std::span<double> values) const { return wordNumbers(words, values); }

std::string_view Line::name(std::size_t index) const { return nthName(words, index); }
bool Line::numbers(std::span<double> values) const { return wordNumbers(words, values); }

std::size_t readPackage(std::string_view bytes, PackageVisitor& visitor, const ReadLimits& limits) {
  return Reader(bytes, visitor, limits).run();
}

}  // namespace rpk
