#include "standin/renderer/instance_list.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <string_view>
#include <system_error>
#include <vector>

#include "standin/renderer/locked_file.h"
#include "standin/renderer/process.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFolder = "instances";
constexpr const char* kExtension = ".instance";
constexpr const char* kTemporaryExtension = ".new";

[[noreturn]] void fail(int error, const fs::path& path) {
  throw std::system_error(error, std::generic_category(), path.string());
}

// Process ids come again; the time of one does not.
std::string uniqueStem() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::to_string(processId()) + "-" + std::to_string(std::chrono::nanoseconds(now).count());
}

bool ours(const fs::path& path) { return path.extension() == kExtension || path.extension() == kTemporaryExtension; }

std::vector<fs::path> filesOf(const fs::path& folder) {
  std::vector<fs::path> files;
  std::error_code ignored;
  for (fs::directory_iterator entry(folder, ignored), end; entry != end; entry.increment(ignored)) {
    if (ours(entry->path())) files.push_back(entry->path());
    if (ignored) break;
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

std::string instanceElement(int port) {
  return "<rendara_instance>\n<pid>" + std::to_string(processId()) +
         "</pid>\n<version_major>5</version_major>\n<livelink_port>" + std::to_string(port) +
         "</livelink_port>\n</rendara_instance>\n";
}

InstanceAnnouncer::InstanceAnnouncer(const fs::path& machineFolder, const std::string& element) {
  const fs::path folder = machineFolder / kFolder;
  fs::create_directories(folder);
  // A reader may delete the temporary file as long as it is not locked; it does not do so again and again.
  for (int attempt = 0; attempt < 100; ++attempt) {
    const std::string stem = uniqueStem();
    const fs::path temporary = folder / (stem + kTemporaryExtension);
    Descriptor file = makeLockedFile(temporary);
    if (!file) continue;
    if (!file.writeAll(element)) fail(errno, temporary);
    file_ = folder / (stem + kExtension);
    if (renameLockedFile(temporary, file_)) {
      locked_ = std::move(file);
      return;
    }
  }
  fail(EAGAIN, folder);
}

InstanceAnnouncer::~InstanceAnnouncer() {
  std::error_code ignored;
  fs::remove(file_, ignored);
}

InstanceList::InstanceList(const fs::path& machineFolder) : folder_(machineFolder / kFolder) {}

std::vector<int> InstanceList::ports() const {
  constexpr std::string_view kTag = "<livelink_port>";
  const std::string all = text();
  std::vector<int> found;
  for (std::size_t at = all.find(kTag); at != std::string::npos; at = all.find(kTag, at + 1)) {
    int port = 0;
    const char* const begin = all.data() + at + kTag.size();
    if (std::from_chars(begin, all.data() + all.size(), port).ec == std::errc()) found.push_back(port);
  }
  return found;
}

std::string InstanceList::text() const {
  std::string elements;
  for (const fs::path& path : filesOf(folder_)) {
    const auto content = readLockedFile(path, kMaxText);
    if (!content || path.extension() != kExtension) continue;
    const std::string_view element = std::string_view(*content).substr(0, content->find('\0'));
    if (elements.size() + element.size() > kMaxText) continue;
    elements += element;
  }
  return "<rendara_instances>\n" + elements + "</rendara_instances>\n";
}

}  // namespace standin
