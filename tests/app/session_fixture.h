// A session in memory with an assembly, and a plug-in that is part of the test.
#pragma once

#include <cstdio>
#include <string>

#include "platform/windows_api.h"
#include "standin/app/plugin_host.h"
#include "standin/app/workbench.h"
#include "standin/cad/session.h"
#include "tests/support/temporary_folder.h"

namespace standin::testing {

inline const std::string kCompletePackage = "//---vantor:dal:7---\n\ngroup \"pair\" {\n}\n";

// What the next export writes, to the file that the user names.
inline std::string packageToWrite = kCompletePackage;

inline int exportAction(uiCmdCmdId, uiCmdValue*, void*) {
  ProPath path = L"";
  ProPath folder = L"";
  ProFileName name = L"";
  wchar_t title[] = L"Save as rpk";
  wchar_t filter[] = L"*.rpk";
  if (ProFileSave(title, filter, nullptr, nullptr, folder, name, path) != PRO_TK_NO_ERROR) return 0;
  if (packageToWrite.empty()) return 0;
  if (std::FILE* file = _wfopen(path, L"wb+")) {
    std::fwrite(packageToWrite.data(), 1, packageToWrite.size(), file);
    std::fclose(file);
  }
  return 0;
}

class FakePlugin : public Plugin {
 public:
  void load() override {
    if (loaded_) return;
    ++timesLoaded;
    loaded_ = true;
    char name[] = "Rendara Export";
    uiCmdCmdId id = 0;
    ProCmdActionAdd(name, exportAction, 0, nullptr, PRO_B_TRUE, PRO_B_TRUE, &id);
  }
  bool loaded() const override { return loaded_; }
  void unload(Session& session) override {
    loaded_ = false;
    session.commands().clear();
  }

  int timesLoaded = 0;

 private:
  bool loaded_ = false;
};

// PAIR.asm holds BLOCK.prt twice and AXLE.asm, which holds ROD.prt. The ids of the components are 1, 2, 3 and 3/1
// unless the session numbers differently; the tests ask the features.
struct PairModel {
  explicit PairModel(Session& session)
      : block(session.addModel(PRO_MDL_PART, L"BLOCK")),
        rod(session.addModel(PRO_MDL_PART, L"ROD")),
        axle(session.addModel(PRO_MDL_ASSEMBLY, L"AXLE")),
        pair(session.addModel(PRO_MDL_ASSEMBLY, L"PAIR")),
        rodInAxle(axle.addComponent(rod, kIdentity)),
        first(pair.addComponent(block, kIdentity)),
        second(pair.addComponent(block, kIdentity)),
        axleInPair(pair.addComponent(axle, kIdentity)) {
    session.current = &pair;
    session.mode = PRO_MODE_ASSEMBLY;
  }

  Model &block, &rod, &axle, &pair;
  Feature &rodInAxle, &first, &second, &axleInPair;
};

}  // namespace standin::testing
