// What the registry tells of the renderer's installation.
#pragma once

#include <optional>
#include <string>

namespace rendara {

inline constexpr int kMinimumRendererVersion = 5;  // major

// Full path of the renderer's program, empty when no renderer is installed. Of an installation older than the minimum
// the entries of "Rendara <minimum>" are taken.
std::wstring rendererProgram(int minimumVersion);

// Folder of the live-link library with a backslash at its end, or empty.
std::wstring liveLinkFolder();

// Starts a renderer and does not wait for it. False when there is none or it cannot be started.
bool launchRenderer(int minimumVersion);

struct PortLookup {
  enum class Status { kFound = 0, kNoMaximum = -1, kNoPort = -2, kNoKey = -3 };
  Status status = Status::kNoKey;
  int port = 0;  // valid with kFound and kNoMaximum
  int maximum = 0;
};

// The port that the user's settings name for the live link. The version that is part of the key is taken byte by byte
// from the wide text, so of "Rendara 5" only "R" arrives: this is how the keys are named that renderers look after.
PortLookup livePortInRegistry();

}  // namespace rendara
