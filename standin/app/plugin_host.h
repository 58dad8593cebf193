// The plug-in as the CAD system loads it: a library with an entry for the start and one for the end.
#pragma once

#include <filesystem>

#include "standin/app/system.h"
#include "standin/cad/session.h"

namespace standin {

class Plugin {
 public:
  virtual ~Plugin() = default;
  // Loads the plug-in unless it is loaded; it then has registered its commands with the active session. Throws
  // Failure when that cannot be done.
  virtual void load() = 0;
  virtual bool loaded() const = 0;
  // Ends the plug-in and drops its commands, whose actions are gone with it.
  virtual void unload(Session& session) = 0;
};

class PluginHost : public Plugin {
 public:
  explicit PluginHost(std::filesystem::path file) : file_(std::move(file)) {}
  // The session is still alive then only if the host was made after it; unload() before the session ends.
  ~PluginHost() override;
  PluginHost(const PluginHost&) = delete;
  PluginHost& operator=(const PluginHost&) = delete;

  void load() override;
  bool loaded() const override { return library_.loaded(); }
  void unload(Session& session) override;
  const std::filesystem::path& file() const { return file_; }

 private:
  void close();

  std::filesystem::path file_;
  Library library_;
  void (*terminate_)() = nullptr;
};

}  // namespace standin
