// What cannot be loaded: one line says why, nothing is printed, and the session stays as it was.
#include <gtest/gtest.h>
#include <unistd.h>
#include <BRepPrimAPI_MakeCylinder.hxx>

#include <sstream>
#include <string>
#include <vector>

#include "standin/step/step_loader.h"
#include "tests/step/made_step.h"
#include "tests/support/temporary_folder.h"

namespace standin::test {

namespace {

class DamagedFiles : public ::testing::Test {
 protected:
  DamagedFiles() : file_(folder_.path() / "file.stp") {}

  std::string errorOf(const std::string& content) {
    rendara::testing::writeFile(file_, content);
    return errorOfFile();
  }

  std::string errorOfFile() {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const LoadResult result = loadStep(session_, file_);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(result.model == nullptr, !result.error.empty());
    EXPECT_EQ(result.error.find('\n'), std::string::npos);
    if (result.model == nullptr) {
      EXPECT_TRUE(session_.models().empty());
      EXPECT_EQ(session_.current, nullptr);
    }
    return result.error;
  }

  std::string soundFile() {
    writeStep(file_, {{BRepPrimAPI_MakeCylinder(3.0, 8.0).Shape(), "cylinder"}});
    return rendara::testing::readFile(file_);
  }

  rendara::testing::TemporaryFolder folder_;
  std::filesystem::path file_;
  Session session_;
};

constexpr const char* kHead =
    "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
    "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n";
constexpr const char* kTail = "ENDSEC;\nEND-ISO-10303-21;\n";

TEST_F(DamagedFiles, WhatIsNoStepFileIsSaid) {
  EXPECT_EQ(errorOfFile(), "no such file");
  EXPECT_EQ(errorOf(""), "the file is empty");
  EXPECT_EQ(errorOf("solid x\nendsolid x\n"), "not a STEP file");
  EXPECT_NE(errorOf(std::string(kHead) + kTail), "");
  EXPECT_EQ(errorOf(std::string(kHead) + "#1=CARTESIAN_POINT('',(0.,0.,0.));\n" + kTail),
            "the STEP file holds no shapes");
  std::filesystem::remove(file_);
  std::filesystem::create_directory(file_);
  EXPECT_EQ(errorOfFile(), "is a folder, not a file");
}

TEST_F(DamagedFiles, AFileWithoutReadPermissionIsSaid) {
  if (geteuid() == 0) GTEST_SKIP() << "root reads everything";
  rendara::testing::writeFile(file_, soundFile());
  std::filesystem::permissions(file_, std::filesystem::perms::none);
  EXPECT_EQ(errorOfFile(), "cannot be read: Permission denied");
}

TEST_F(DamagedFiles, FilesThatWereCutOffAreRefusedWherever) {
  const std::string sound = soundFile();
  for (std::size_t share = 1; share < 20; ++share) {
    const std::string start = sound.substr(0, sound.size() * share / 20);
    EXPECT_EQ(errorOf(start), "the file is cut off: its end mark is missing");
    EXPECT_NE(errorOf(start + "\n" + kTail), "") << share;
  }
}

TEST_F(DamagedFiles, ReferencesThatLeadNowhereAreRefused) {
  const std::string sound = soundFile();
  // Each line of the data in turn goes missing. Some are of no consequence; none may do harm.
  std::vector<std::string> lines;
  std::string line;
  std::istringstream stream(sound);
  while (std::getline(stream, line)) lines.push_back(line);
  int refused = 0, tried = 0;
  for (std::size_t skipped = 10; skipped + 2 < lines.size(); skipped += 7) {
    std::string damaged;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (i != skipped) damaged += lines[i] + "\n";
    }
    Session session;
    rendara::testing::writeFile(file_, damaged);
    refused += loadStep(session, file_).model == nullptr ? 1 : 0;
    ++tried;
  }
  EXPECT_GT(tried, 10);
  EXPECT_GT(refused, tried / 2);
}

TEST_F(DamagedFiles, EntitiesOfAWrongKindAreRefused) {
  const std::string sound = soundFile();
  for (const char* entity : {"VERTEX_POINT", "EDGE_CURVE", "CYLINDRICAL_SURFACE", "AXIS2_PLACEMENT_3D"}) {
    // Its last reference becomes one to entity 1, which is of none of the kinds that it may be.
    std::string damaged = sound;
    const std::size_t start = sound.find(std::string("= ") + entity + "(");
    ASSERT_NE(start, std::string::npos) << entity;
    const std::size_t number = sound.rfind('#', sound.find(';', start)) + 1;
    ASSERT_GT(number, start) << entity;
    damaged.replace(number, sound.find_first_not_of("0123456789", number) - number, "1");
    EXPECT_EQ(errorOf(damaged).rfind("the STEP text is damaged: #", 0), 0U) << entity;
  }
}

TEST_F(DamagedFiles, BrokenExternalReferencesAreNamed) {
  const std::filesystem::path source = std::filesystem::path(RENDARA_MODEL_DIR) / "s1_pe_214";
  if (!std::filesystem::exists(source)) GTEST_SKIP() << "no models";
  const std::filesystem::path copy = folder_.path() / "copy";
  std::filesystem::copy(source, copy);
  file_ = copy / "s1_pe_214.stp";
  // Not referred to by the file itself but by one that it refers to.
  const std::filesystem::path part = copy / "foot_back_prt.stp";
  const std::string whole = rendara::testing::readFile(part);
  std::filesystem::remove(part);
  EXPECT_EQ(errorOfFile(), "refers to foot_back_prt.stp: no such file");
  rendara::testing::writeFile(part, whole.substr(0, whole.size() / 2));
  EXPECT_EQ(errorOfFile(), "refers to foot_back_prt.stp: the file is cut off: its end mark is missing");
  rendara::testing::writeFile(part, "no STEP");
  EXPECT_EQ(errorOfFile(), "refers to foot_back_prt.stp: not a STEP file");
  rendara::testing::writeFile(part, whole);
  EXPECT_EQ(errorOfFile(), "");
}

}  // namespace

}  // namespace standin::test
