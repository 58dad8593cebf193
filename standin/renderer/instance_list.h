// The renderers that run on this machine, each with a file of its own in the folder "instances" of the machine folder.
//
// A renderer holds an exclusive lock on its file as long as it lives, so whoever can lock a file knows that its
// renderer is gone, however it went, and deletes it. A file is made and locked under a temporary name first, so that no
// reader ever sees it unlocked or half written; final names are never used twice, so that nobody deletes the file of a
// renderer in the place of that of one before it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "standin/renderer/descriptor.h"

namespace standin {

// What a renderer says of itself: an XML element, with a line break.
std::string instanceElement(int port);

class InstanceAnnouncer {
 public:
  // Puts the text on the list. Throws std::system_error.
  InstanceAnnouncer(const std::filesystem::path& machineFolder, const std::string& element);
  // Takes it off.
  ~InstanceAnnouncer();
  InstanceAnnouncer(const InstanceAnnouncer&) = delete;
  InstanceAnnouncer& operator=(const InstanceAnnouncer&) = delete;

 private:
  std::filesystem::path file_;
  Descriptor locked_;
};

class InstanceList {
 public:
  // Of more than so many bytes in all, files that do not fit any more are left out.
  static constexpr std::size_t kMaxText = std::size_t{4} << 20;

  explicit InstanceList(const std::filesystem::path& machineFolder);

  // What the renderers that run say of themselves, as it stands up to a zero byte, in a `rendara_instances` element.
  // Deletes the files of those that are gone. What cannot be read is no renderer.
  std::string text() const;
  // The ports that they name, in no particular order.
  std::vector<int> ports() const;

 private:
  std::filesystem::path folder_;
};

}  // namespace standin
