// The bytes of a snapshot. Both directions follow one description of each record: a function
//   template <typename Archive> void fields(Archive& archive, FieldOf<Archive, Record> record)
// that names its members in their order in the file. So nothing is written that is not read again.
//
// Values are little-endian, whatever the machine: doubles of 64 bits with every bit kept, `int` and enumerations of 32
// bits, unsigned ones of 64 bits so that sizes are the same in 32-bit programs, truth values of one byte, texts and
// lists behind their 32-bit count, wide texts as UTF-8.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <istream>
#include <limits>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "standin/windows/code_page.h"

namespace standin {

struct Model;

// What is wrong with a snapshot, in one line.
class SnapshotError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

inline constexpr std::uint64_t kEmptyChecksum = 0xCBF29CE484222325;
// The checksum (FNV-1a) of bytes that follow those of `before`.
std::uint64_t checksum(const char* bytes, std::size_t size, std::uint64_t before = kEmptyChecksum);

// A stretch of the file.
struct BlobPlace {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
  std::uint64_t checksum = kEmptyChecksum;
};

// The record as `fields` gets it: constant for an archive that writes.
template <typename Archive, typename Record>
using FieldOf = std::conditional_t<Archive::kReads, Record&, const Record&>;

// The lowest and the highest value of an enumeration, inclusive.
template <typename Enumeration>
struct EnumRange;

namespace archive_detail {

template <typename Value>
inline constexpr bool kIsScalar = std::is_same_v<Value, int> || std::is_same_v<Value, double>;
template <typename Value>
inline constexpr bool kIsUnsigned = std::is_unsigned_v<Value> && !std::is_same_v<Value, bool>;

// The scalars that lie one after the other in a value that is made of nothing else.
template <typename Value>
struct Packed {
  static constexpr bool kIs = kIsScalar<Value>;
  using Scalar = Value;
  static constexpr std::size_t kCount = 1;
};
template <typename Value, std::size_t size>
struct Packed<std::array<Value, size>> {
  static constexpr bool kIs = Packed<Value>::kIs;
  using Scalar = typename Packed<Value>::Scalar;
  static constexpr std::size_t kCount = size * Packed<Value>::kCount;
};

// Turns the bytes of numbers around where the machine's order is not the file's.
template <typename Scalar>
void toFileOrder(char* bytes, std::size_t count) {
  if constexpr (std::endian::native != std::endian::little) {
    for (std::size_t i = 0; i < count; ++i) std::reverse(bytes + i * sizeof(Scalar), bytes + (i + 1) * sizeof(Scalar));
  }
}

}  // namespace archive_detail

class ArchiveWriter {
 public:
  static constexpr bool kReads = false;

  // Throws std::length_error for a text or list with more than 2^32 - 1 elements.
  template <typename... Values>
  void operator()(const Values&... values) {
    (write(values), ...);
  }

  const std::string& bytes() const { return bytes_; }

  // The numbers that stand for models.
  std::unordered_map<const Model*, std::size_t> modelNumbers;

 private:
  template <typename Scalar>
  void scalars(const Scalar* values, std::size_t count) {
    const std::size_t begin = bytes_.size();
    bytes_.append(reinterpret_cast<const char*>(values), count * sizeof(Scalar));
    archive_detail::toFileOrder<Scalar>(bytes_.data() + begin, count);
  }
  void count(std::size_t elements) {
    if (elements > std::numeric_limits<std::uint32_t>::max()) throw std::length_error("a list is too long");
    const auto narrow = static_cast<std::uint32_t>(elements);
    scalars(&narrow, 1);
  }
  template <typename List>
  void each(const List& list) {
    count(list.size());
    for (const auto& element : list) write(element);
  }

  template <typename Value>
  void write(const Value& value) {
    if constexpr (std::is_same_v<Value, bool>) {
      bytes_.push_back(value ? '\1' : '\0');
    } else if constexpr (archive_detail::kIsUnsigned<Value>) {
      const std::uint64_t wide = value;
      scalars(&wide, 1);
    } else if constexpr (std::is_enum_v<Value>) {
      write(static_cast<int>(value));
    } else if constexpr (archive_detail::Packed<Value>::kIs) {
      using Packed = archive_detail::Packed<Value>;
      scalars(reinterpret_cast<const typename Packed::Scalar*>(&value), Packed::kCount);
    } else {
      fields(*this, value);
    }
  }
  void write(const std::string& text) {
    count(text.size());
    bytes_ += text;
  }
  void write(const std::wstring& text) { write(utf8FromWide(text)); }
  void write(Model* const& model) {
    write(model != nullptr);
    if (model != nullptr) write(modelNumbers.at(model));
  }
  template <typename Value, std::size_t size>
  requires(!archive_detail::Packed<Value>::kIs) void write(const std::array<Value, size>& values) {
    for (const Value& value : values) write(value);
  }
  template <typename First, typename Second>
  void write(const std::pair<First, Second>& pair) {
    write(pair.first);
    write(pair.second);
  }
  template <typename Value>
  void write(const std::optional<Value>& value) {
    write(value.has_value());
    if (value) write(*value);
  }
  template <typename Value>
  void write(const std::vector<Value>& list) {
    if constexpr (archive_detail::Packed<Value>::kIs) {
      using Packed = archive_detail::Packed<Value>;
      count(list.size());
      scalars(reinterpret_cast<const typename Packed::Scalar*>(list.data()), list.size() * Packed::kCount);
    } else {
      each(list);
    }
  }
  template <typename Value>
  void write(const std::deque<Value>& list) {
    each(list);
  }
  template <typename Key, typename Value>
  void write(const std::map<Key, Value>& map) {
    each(map);
  }

  std::string bytes_;
};

// Reads a stretch of a file that is known to lie within it. Throws SnapshotError; nothing is allocated that the bytes
// that are left could not fill.
class ArchiveReader {
 public:
  static constexpr bool kReads = true;

  ArchiveReader(std::istream& file, const BlobPlace& place);

  template <typename... Values>
  void operator()(Values&... values) {
    (read(values), ...);
  }

  // To be called after the last value: throws when bytes are left, or when they are not those that were written.
  void finish() const;
  [[noreturn]] static void fail(const std::string& what);

  // The models that records point to, by their numbers, for whoever knows the models.
  std::vector<std::pair<Model**, std::size_t>> modelLinks;

 private:
  void bytes(char* target, std::uint64_t size);
  template <typename Scalar>
  void scalars(Scalar* values, std::size_t count) {
    auto* const target = reinterpret_cast<char*>(values);
    bytes(target, std::uint64_t{count} * sizeof(Scalar));
    archive_detail::toFileOrder<Scalar>(target, count);
  }
  // A count of elements that take at least so many bytes each.
  std::size_t count(std::uint64_t bytesEach);
  template <typename List>
  void each(List& list) {
    list.clear();
    for (std::size_t left = count(1); left > 0; --left) read(list.emplace_back());
  }

  template <typename Value>
  void read(Value& value) {
    if constexpr (std::is_same_v<Value, bool>) {
      char byte = 0;
      bytes(&byte, 1);
      if (byte != '\0' && byte != '\1') fail("a value is out of its range");
      value = byte == '\1';
    } else if constexpr (archive_detail::kIsUnsigned<Value>) {
      std::uint64_t wide = 0;
      scalars(&wide, 1);
      if (wide > std::numeric_limits<Value>::max()) fail("a value is out of its range");
      value = static_cast<Value>(wide);
    } else if constexpr (std::is_enum_v<Value>) {
      int number = 0;
      scalars(&number, 1);
      if (number < EnumRange<Value>::kLowest || number > EnumRange<Value>::kHighest) {
        fail("a value is out of its range");
      }
      value = static_cast<Value>(number);
    } else if constexpr (archive_detail::Packed<Value>::kIs) {
      using Packed = archive_detail::Packed<Value>;
      scalars(reinterpret_cast<typename Packed::Scalar*>(&value), Packed::kCount);
    } else {
      fields(*this, value);
    }
  }
  void read(std::string& text) {
    text.resize(count(1));
    bytes(text.data(), text.size());
  }
  void read(std::wstring& text) {
    std::string narrow;
    read(narrow);
    text = wideFromUtf8(narrow);
  }
  void read(Model*& model) {
    model = nullptr;
    bool there = false;
    read(there);
    if (there) read(modelLinks.emplace_back(&model, 0).second);
  }
  template <typename Value, std::size_t size>
  requires(!archive_detail::Packed<Value>::kIs) void read(std::array<Value, size>& values) {
    for (Value& value : values) read(value);
  }
  template <typename First, typename Second>
  void read(std::pair<First, Second>& pair) {
    read(pair.first);
    read(pair.second);
  }
  template <typename Value>
  void read(std::optional<Value>& value) {
    bool there = false;
    read(there);
    value.reset();
    if (there) read(value.emplace());
  }
  template <typename Value>
  void read(std::vector<Value>& list) {
    if constexpr (archive_detail::Packed<Value>::kIs) {
      using Packed = archive_detail::Packed<Value>;
      list.resize(count(sizeof(Value)));
      scalars(reinterpret_cast<typename Packed::Scalar*>(list.data()), list.size() * Packed::kCount);
    } else {
      each(list);
    }
  }
  template <typename Value>
  void read(std::deque<Value>& list) {
    each(list);
  }
  template <typename Key, typename Value>
  void read(std::map<Key, Value>& map) {
    map.clear();
    for (std::size_t left = count(1); left > 0; --left) {
      std::pair<Key, Value> entry;
      read(entry);
      map.insert(std::move(entry));
    }
  }

  std::istream& file_;
  std::uint64_t left_;
  std::uint64_t wantedChecksum_;
  std::uint64_t checksum_ = kEmptyChecksum;
};

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, BlobPlace> place) {
  archive(place.offset, place.size, place.checksum);
}

}  // namespace standin
