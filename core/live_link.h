// What the renderer's live-link library offers: tables of operations in a fixed slot order.
//
// The order is a binary contract, as that of vntScene_api is: the library is built by another compiler, so slot n sits
// at index n of the virtual table in every build. The classes have no virtual destructor and no overloads. Everything
// that the library hands out stays its own; nothing is destroyed through these tables.
#pragma once

namespace rendara {

class vntScene_api;

// The renderers that run on this machine.
class LiveLinkInstances {
 public:
  virtual const char* listText() = 0;  // 0: the list as of now, zero-terminated, valid until the next call; or null
  virtual void reserved1() = 0;        // 1
  virtual bool isOpen() = 0;           // 2
  virtual void close() = 0;            // 3

 protected:
  ~LiveLinkInstances() = default;
};

class LiveLinkInterface {
 public:
  virtual void shutdown() = 0;                 // 0: ends every connection; scenes and instances are gone afterwards
  virtual vntScene_api* createScene() = 0;     // 1: a scene that `connect` ties to a renderer; or null
  virtual LiveLinkInstances* instances() = 0;  // 2: or null

 protected:
  ~LiveLinkInterface() = default;
};

// The entry of the library; null when it cannot start.
inline constexpr char kLiveLinkEntry[] = "rendara_live_initialize";
using InitializeLiveLink = LiveLinkInterface* (*)();

}  // namespace rendara
