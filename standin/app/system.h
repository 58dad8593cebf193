// What the program asks of the operating system.
#pragma once

#include <filesystem>
#include <string>

namespace standin {

// The running program's file.
std::filesystem::path programFile();

// A new, empty folder for temporary files, for this user only where the system has that. Throws std::system_error.
std::filesystem::path makeTemporaryFolder();

// 0, or the error number that says why the file or folder cannot be changed by this user.
int writeRefused(const std::filesystem::path& fileOrFolder);

// Descriptors, which the caller closes; -1 on failure. Programs that are started do not get them, where the system can.
int makeNamelessBuffer();  // for writing and reading, gone when it is closed
int duplicate(int descriptor);

// Whether standard input is a terminal.
bool inputIsTerminal();

// A library in this process, until it is destroyed.
class Library {
 public:
  using Address = void (*)();

  Library() = default;
  // Loads it; throws std::runtime_error with the loader's reason, without the file's name.
  explicit Library(const std::filesystem::path& file);
  ~Library();
  Library(Library&& other) noexcept;
  Library& operator=(Library&& other) noexcept;

  bool loaded() const { return handle_ != nullptr; }
  // Null when it exports nothing of the name.
  Address find(const char* name) const;

 private:
  void* handle_ = nullptr;
};

}  // namespace standin
