#include "settings/package_export.h"

#include "settings/file_choice.h"

#include <gtest/gtest.h>

#include <string>

#include "standin/cad/session.h"

namespace rendara {
namespace {

TEST(PackageExport, LastPathIsTakenApartAtTheLastBackslash) {
  const DialogPath full = splitForDialog(L"C:\\models\\pump\\pump.rpk");
  EXPECT_EQ(full.directory, L"C:\\models\\pump");
  EXPECT_EQ(full.name, L"pump.rpk");
  EXPECT_EQ(splitForDialog(L"pump.rpk").directory, L"pump.rpk");
  EXPECT_EQ(splitForDialog(L"pump.rpk").name, L"");
  EXPECT_EQ(splitForDialog(L"").directory, L"");
  EXPECT_EQ(splitForDialog(L"d\\" + std::wstring(60, L'n')).name, std::wstring(39, L'n'));
  EXPECT_EQ(splitForDialog(std::wstring(300, L'd')).directory, std::wstring(259, L'd'));
}

TEST(PackageExport, AsksWithTheLastPathAndTellsACancelFromAFailure) {
  standin::Session session;
  session.fileAnswers = {standin::FileAnswer("/tmp/new.rpk"), std::nullopt, standin::FileAnswer(std::string(300, 'x'))};
  EXPECT_EQ(askPackagePath(L"C:\\old\\last.rpk"), L"/tmp/new.rpk");
  ASSERT_EQ(session.fileRequests.size(), 1U);
  EXPECT_EQ(session.fileRequests[0].title, L"Save as rpk");
  EXPECT_EQ(session.fileRequests[0].filter, L"*.rpk");
  EXPECT_EQ(session.fileRequests[0].directory, L"C:\\old");
  EXPECT_EQ(session.fileRequests[0].name, L"last.rpk");
  EXPECT_EQ(askPackagePath(L""), std::nullopt);
  EXPECT_EQ(askPackagePath(L""), L"") << "a dialog that fails is no cancel, and names no file";
}

}  // namespace
}  // namespace rendara
