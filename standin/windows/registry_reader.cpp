// Reads the text form of a registry: UTF-16LE with its mark, or UTF-8; lines end with CR LF or LF.
#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "standin/windows/code_page.h"
#include "standin/windows/registry.h"
#include "standin/windows/registry_text.h"

namespace standin {
namespace {

// What is wrong with a line.
class LineFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool isEmptyOrComment(std::string_view text) { return text.empty() || text.front() == ';'; }

// The whole file as UTF-8 without a byte-order mark; empty when there is none.
std::string readText(const std::filesystem::path& file) {
  std::error_code error;
  if (!std::filesystem::exists(file, error) && !error) {
    return {};
  }
  std::ifstream stream(file, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  if (!stream.is_open() || stream.bad() || std::filesystem::is_directory(file, error)) {
    throw std::runtime_error(file.string() + ": cannot be read");
  }
  if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) {
    return bytes.substr(3);
  }
  if (bytes.compare(0, 2, "\xFF\xFE") == 0) {
    return utf8FromWide(wideFromUtf16Bytes(reinterpret_cast<const unsigned char*>(bytes.data()) + 2, bytes.size() - 2));
  }
  return bytes;
}

std::uint32_t hexadecimal(std::string_view digits, std::size_t mostDigits, const char* what) {
  std::uint32_t number = 0;
  const char* end = digits.data() + digits.size();
  const auto [stopped, error] = std::from_chars(digits.data(), end, number, 16);
  if (digits.empty() || digits.size() > mostDigits || stopped != end || error != std::errc()) {
    throw LineFault("\"" + std::string(digits) + "\" is no " + what);
  }
  return number;
}

// Takes a quoted text off the front of the rest.
std::string takeQuoted(std::string_view& rest) {
  std::string text;
  for (std::size_t at = 1; at < rest.size(); ++at) {
    if (rest[at] == '"') {
      rest.remove_prefix(at + 1);
      return text;
    }
    if (rest[at] == '\\') {
      ++at;
      if (at == rest.size() || (rest[at] != '\\' && rest[at] != '"')) {
        throw LineFault("a backslash in a text is written \\\\");
      }
    }
    text.push_back(rest[at]);
  }
  throw LineFault("the text has no closing quote");
}

void expectEnd(std::string_view rest) {
  if (!isEmptyOrComment(withoutBlanks(rest))) {
    throw LineFault("\"" + std::string(withoutBlanks(rest)) + "\" is one too many");
  }
}

std::vector<unsigned char> hexadecimalBytes(std::string_view list) {
  std::vector<unsigned char> bytes;
  list = withoutBlanks(list);
  while (!list.empty()) {
    const std::size_t comma = list.find(',');
    bytes.push_back(static_cast<unsigned char>(hexadecimal(withoutBlanks(list.substr(0, comma)), 2, "byte")));
    if (comma == std::string_view::npos) {
      return bytes;
    }
    list.remove_prefix(comma + 1);
    if (withoutBlanks(list).empty()) {
      throw LineFault("a byte is missing after the last comma");
    }
  }
  return bytes;
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
  if (foldedCase(text.substr(0, prefix.size())) != foldedCase(prefix)) {
    return false;
  }
  text.remove_prefix(prefix.size());
  return true;
}

class Reader {
 public:
  Reader(std::string_view text, Registry& registry, std::vector<RegistryFault>& faults)
      : rest_(text), registry_(registry), faults_(faults) {}

  void read() {
    bool isFirst = true;
    while (nextLine()) {
      const std::size_t number = lineNumber_;
      try {
        if (isEmptyOrComment(line_)) {
          continue;
        }
        if (isFirst) {
          isFirst = false;
          readHeading();
        } else if (line_.front() == '[') {
          readKey();
        } else {
          readValue();
        }
      } catch (const std::logic_error& fault) {  // of the registry
        faults_.push_back({number, fault.what()});
      } catch (const LineFault& fault) {
        faults_.push_back({number, fault.what()});
      }
    }
  }

 private:
  enum class Section { kNone, kKey, kRemoved, kDamaged };

  // The next line without the blanks around it; false at the end.
  bool nextLine() {
    if (rest_.empty()) {
      return false;
    }
    const std::size_t end = rest_.find('\n');
    line_ = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    if (!line_.empty() && line_.back() == '\r') {
      line_.remove_suffix(1);
    }
    line_ = withoutBlanks(line_);
    ++lineNumber_;
    return true;
  }

  void readHeading() {
    if (line_ == kRegistryHeading) {
      return;
    }
    // A file without its heading may be one otherwise.
    const std::string fault = "the first line is not \"" + std::string(kRegistryHeading) + "\"";
    if (line_.front() == '[') {
      readKey();
    }
    throw LineFault(fault);
  }

  void readKey() {
    section_ = Section::kDamaged;
    const std::size_t end = line_.rfind(']');  // keys may hold one
    if (end == std::string_view::npos) {
      throw LineFault("the key has no closing bracket");
    }
    expectEnd(line_.substr(end + 1));
    std::string_view path = line_.substr(1, end - 1);
    const bool removes = !path.empty() && path.front() == '-';
    path.remove_prefix(removes ? 1 : 0);
    const std::string_view hive = path.substr(0, path.find('\\'));
    for (const Hive each :
         {Hive::kClassesRoot, Hive::kCurrentUser, Hive::kLocalMachine, Hive::kUsers, Hive::kCurrentConfig}) {
      if (foldedCase(hive) == hiveName(each)) {
        hive_ = each;
        key_ = path.substr(hive.size());
        section_ = removes ? Section::kRemoved : Section::kKey;
      }
    }
    if (section_ == Section::kDamaged) {
      throw LineFault("\"" + std::string(hive) + "\" is no hive");
    }
    if (removes) {
      registry_.removeKey(hive_, key_);
    } else {
      registry_.addKey(hive_, key_);
    }
  }

  void readValue() {
    std::string_view rest = line_;
    if (rest.front() != '@' && rest.front() != '"') {
      throw LineFault("neither a key, a value nor a comment");
    }
    std::string name;
    if (rest.front() == '@') {
      rest.remove_prefix(1);
    } else {
      name = takeQuoted(rest);
    }
    rest = withoutBlanks(rest);
    if (rest.empty() || rest.front() != '=') {
      throw LineFault("there is no = after the name");
    }
    rest = withoutBlanks(rest.substr(1));
    const std::string bytes = takeByteLines(rest);
    if (section_ == Section::kDamaged) {
      return;  // its heading was told
    }
    if (section_ != Section::kKey) {
      throw LineFault("the value stands below no key");
    }
    store(name, rest, bytes);
  }

  // The text of bytes with the lines that continue it; empty for other values.
  std::string takeByteLines(std::string_view rest) {
    std::string text;
    if (!takePrefix(rest, "hex")) {
      return text;
    }
    std::string_view part = rest;
    while (true) {
      part = withoutBlanks(part.substr(0, part.find(';')));
      const bool continues = !part.empty() && part.back() == '\\';
      text += part.substr(0, part.size() - (continues ? 1 : 0));
      if (!continues || !nextLine()) {
        return text;
      }
      part = line_;
    }
  }

  void store(const std::string& name, std::string_view rest, std::string_view bytes) {
    if (rest.empty()) {
      throw LineFault("there is nothing after =");
    }
    if (rest.front() == '"') {
      const std::string text = takeQuoted(rest);
      expectEnd(rest);
      registry_.setText(hive_, key_, name, text);
    } else if (rest.front() == '-') {
      expectEnd(rest.substr(1));
      registry_.remove(hive_, key_, name);
    } else if (takePrefix(rest, "dword:")) {
      const std::string_view digits = withoutBlanks(rest.substr(0, rest.find(';')));
      registry_.setNumber(hive_, key_, name, hexadecimal(digits, 8, "number of 32 bits"));
    } else if (takePrefix(rest, "hex")) {
      storeBytes(name, bytes);
    } else {
      throw LineFault("\"" + std::string(rest) + "\" is no value");
    }
  }

  // `text` begins after "hex".
  void storeBytes(const std::string& name, std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) {
      throw LineFault("there is no colon after the type");
    }
    std::uint32_t type = kRegistryBytes;
    if (colon != 0) {
      if (text.front() != '(' || text[colon - 1] != ')' || colon < 3) {
        throw LineFault("\"hex" + std::string(text.substr(0, colon)) + "\" is no type");
      }
      type = hexadecimal(text.substr(1, colon - 2), 8, "type");
    }
    registry_.setBytes(hive_, key_, name, type, hexadecimalBytes(text.substr(colon + 1)));
  }

  std::string_view rest_;
  Registry& registry_;
  std::vector<RegistryFault>& faults_;
  std::string_view line_;
  std::size_t lineNumber_ = 0;
  Section section_ = Section::kNone;
  Hive hive_ = Hive::kCurrentUser;
  std::string key_;
};

}  // namespace

Registry Registry::load(const std::filesystem::path& file, std::vector<RegistryFault>& faults) {
  Registry registry;
  const std::string text = readText(file);
  Reader(text, registry, faults).read();
  return registry;
}

Registry Registry::load(const std::filesystem::path& file) {
  std::vector<RegistryFault> faults;
  Registry registry = load(file, faults);
  if (!faults.empty()) {
    throw std::runtime_error(file.string() + ":" + std::to_string(faults[0].line) + ": " + faults[0].text);
  }
  return registry;
}

}  // namespace standin
