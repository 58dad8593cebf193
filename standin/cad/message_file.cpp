#include "standin/cad/message_file.h"

#include <array>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>
#include <vector>

#include "standin/windows/code_page.h"

namespace standin {
namespace {

std::vector<std::string> splitLines(const std::string& content) {
  std::vector<std::string> lines;
  std::istringstream stream(content);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty() && line.back() == '\r') {
      line.pop_back();
    }
    lines.push_back(line);
  }
  return lines;
}

bool isArgument(const std::wstring& text, std::size_t at) {
  return at + 2 < text.size() && text[at] == L'%' && text[at + 1] >= L'0' && text[at + 1] <= L'9' &&
         std::wstring(L"swdf").find(text[at + 2]) != std::wstring::npos;
}

std::wstring numberText(double number) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << number;
  return wideFromUtf8(stream.str());
}

// Takes the arguments in their order, each in the type that its first use in the text gives it. An argument that the
// text does not use ends the list: its type is unknown.
std::array<std::wstring, 10> takeArguments(const std::wstring& text, std::va_list arguments) {
  std::array<wchar_t, 10> types{};
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (isArgument(text, at)) {
      wchar_t& type = types[static_cast<std::size_t>(text[at + 1] - L'0')];
      type = type != L'\0' ? type : text[at + 2];
    }
  }
  std::array<std::wstring, 10> values;
  for (std::size_t index = 0; index < types.size() && types[index] != L'\0'; ++index) {
    if (types[index] == L's') {
      const char* narrow = va_arg(arguments, const char*);
      values[index] = narrow != nullptr ? wideFromUtf8(narrow) : std::wstring();
    } else if (types[index] == L'w') {
      const wchar_t* wide = va_arg(arguments, const wchar_t*);
      values[index] = wide != nullptr ? std::wstring(wide) : std::wstring();
    } else if (types[index] == L'd') {
      values[index] = std::to_wstring(va_arg(arguments, int));
    } else {
      values[index] = numberText(va_arg(arguments, double));
    }
  }
  return values;
}

}  // namespace

bool MessageFile::refresh(const std::filesystem::path& path) {
  std::error_code error;
  const auto written = std::filesystem::last_write_time(path, error);
  const auto size = error ? 0 : std::filesystem::file_size(path, error);
  if (error) {
    read_ = false;
    return false;
  }
  if (read_ && written == written_ && size == size_) {
    return true;
  }
  std::ifstream file(path, std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  read_ = file.good() || file.eof();
  written_ = written;
  size_ = size;
  texts_.clear();
  parse(content);
  return read_;
}

const std::wstring* MessageFile::text(const std::string& key) const {
  const auto found = texts_.find(key);
  return found != texts_.end() ? &found->second : nullptr;
}

void MessageFile::parse(const std::string& content) {
  constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";
  const std::vector<std::string> lines =
      splitLines(content.rfind(kByteOrderMark, 0) == 0 ? content.substr(3) : content);
  std::size_t at = 0;
  while (at < lines.size()) {
    if (lines[at].empty() || lines[at][0] == '!') {
      ++at;
      continue;
    }
    const auto line = [&](std::size_t offset) { return at + offset < lines.size() ? lines[at + offset] : "#"; };
    const std::string translation = line(2);
    const std::string& text = translation.empty() || translation == "#" ? line(1) : translation;
    texts_.emplace(lines[at], wideFromUtf8(text));
    at += 4;
  }
}

std::wstring formatMessage(const std::wstring& text, std::va_list arguments) {
  const std::array<std::wstring, 10> values = takeArguments(text, arguments);
  const bool hasClass = text.size() >= 3 && text[0] == L'%' && text[1] == L'C' && text[2] >= L'A' && text[2] <= L'Z';
  std::wstring result;
  for (std::size_t at = hasClass ? 3 : 0; at < text.size(); ++at) {
    if (isArgument(text, at)) {
      result += values[static_cast<std::size_t>(text[at + 1] - L'0')];
      at += 2;
    } else {
      result += text[at];
      at += text[at] == L'%' && at + 1 < text.size() && text[at + 1] == L'%' ? 1 : 0;
    }
  }
  return result;
}

}  // namespace standin
