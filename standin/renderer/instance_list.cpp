#include "standin/renderer/instance_list.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <string_view>
#include <system_error>
#include <vector>

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
  return std::to_string(getpid()) + "-" + std::to_string(std::chrono::nanoseconds(now).count());
}

void writeAll(const Descriptor& file, std::string_view text, const fs::path& path) {
  while (!text.empty()) {
    const ssize_t written = write(file.get(), text.data(), text.size());
    if (written < 0 && errno != EINTR) fail(errno, path);
    if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
  }
}

// The file, locked; none when a reader got hold of it between its making and its locking, and deletes it.
Descriptor makeLocked(const fs::path& path) {
  Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!file) fail(errno, path);
  if (flock(file.get(), LOCK_EX | LOCK_NB) == 0) return file;
  if (errno != EWOULDBLOCK) fail(errno, path);
  return {};
}

std::string readText(const Descriptor& file, std::size_t limit) {
  std::string text;
  std::array<char, 4096> bytes;
  ssize_t count = 0;
  while (text.size() <= limit && (count = read(file.get(), bytes.data(), bytes.size())) > 0) {
    text.append(bytes.data(), static_cast<std::size_t>(count));
  }
  return text.substr(0, text.find('\0'));
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

// Nothing when the file's renderer is gone.
Descriptor openHeld(const fs::path& path) {
  // Neither a link nor a pipe, which would have the reader wait.
  Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  if (flock(file.get(), LOCK_SH | LOCK_NB) != 0) return file;
  unlink(path.c_str());
  return {};
}

}  // namespace

std::string instanceElement(int port) {
  return "<rendara_instance>\n<pid>" + std::to_string(getpid()) +
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
    Descriptor file = makeLocked(temporary);
    if (!file) continue;
    writeAll(file, element, temporary);
    const fs::path final = folder / (stem + kExtension);
    if (rename(temporary.c_str(), final.c_str()) == 0) {
      file_ = final;
      locked_ = std::move(file);
      return;
    }
    if (errno != ENOENT) fail(errno, final);
  }
  fail(EAGAIN, folder);
}

InstanceAnnouncer::~InstanceAnnouncer() { unlink(file_.c_str()); }

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
    const Descriptor file = openHeld(path);
    if (!file || path.extension() != kExtension) continue;
    const std::string element = readText(file, kMaxText);
    if (elements.size() + element.size() > kMaxText) continue;
    elements += element;
  }
  return "<rendara_instances>\n" + elements + "</rendara_instances>\n";
}

}  // namespace standin
