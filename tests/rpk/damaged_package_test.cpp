// A reader of untrusted bytes: whatever a file holds, reading ends, never leaves the range, and blocks stay balanced.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <random>
#include <utility>

#include "tests/rpk/damage.h"
#include "tests/rpk/exact_model.h"
#include "tests/rpk/model_text.h"
#include "tests/rpk/package_text.h"
#include "tests/rpk/read_everything.h"
#include "tests/rpk/whole_package.h"
#include "tests/support/temporary_folder.h"

namespace {

using rpk_test::Reading;

// Reads a copy of its own size, so that a sanitizer sees any byte read beyond the end.
Reading readDamaged(std::string_view text) {
  const auto copy = std::make_unique<char[]>(text.size());
  text.copy(copy.get(), text.size());
  Reading reading = rpk_test::readEverything({copy.get(), text.size()});
  EXPECT_TRUE(reading.promisesKept);
  return reading;
}

// The plain meaning of a package without faults, apart from the code that checks one: every block is closed, and each
// mesh has whole triangles of vertices that are there and finite.
class PlainStructure : public rpk::PackageVisitor {
 public:
  void openBlock(const rpk::Block& block) override {
    if (block.keyword == "geometry" && block.directive.empty()) {
      mesh_ = block.name() == "triangles";
      vertices_.clear();
      triangles_.clear();
    }
  }
  void parameter(const rpk::Parameter& parameter) override {
    if (!mesh_ || !parameter.array) return;
    if (parameter.name == "vertices") vertices_ = parameter.array->doubles();
    if (parameter.name == "triangles") triangles_ = parameter.array->doubles();
  }
  void closeBlock(const rpk::BlockEnd& end) override {
    valid_ = valid_ && !end.missing;
    if (std::exchange(mesh_, false)) valid_ = valid_ && meshIsValid();
  }
  bool valid() const { return valid_; }

 private:
  bool meshIsValid() const {
    const std::size_t count = vertices_.size() / 3;
    const auto inRange = [&](double index) {
      return index >= 0 && index < static_cast<double>(count) && index == std::floor(index);
    };
    return vertices_.size() % 3 == 0 && triangles_.size() % 3 == 0 &&
           std::all_of(vertices_.begin(), vertices_.end(), [](double value) { return std::isfinite(value); }) &&
           std::all_of(triangles_.begin(), triangles_.end(), inRange);
  }

  bool mesh_ = false;
  bool valid_ = true;
  std::vector<double> vertices_;
  std::vector<double> triangles_;
};

bool isPlainlyValid(std::string_view text) {
  PlainStructure structure;
  return rpk::readPackage(text, structure) == 0 && structure.valid();
}

TEST(DamagedPackage, CutAnywhereIsSeen) {
  const std::string whole = rpk_test::pumpPackage();
  const std::size_t content = whole.find("group \"pump\"");
  const std::size_t lastBrace = whole.rfind('}');
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const Reading reading = readDamaged(std::string_view(whole).substr(0, size));
    if (size > content && size <= lastBrace) {
      EXPECT_GT(reading.check.count(rpk::CheckKind::kSyntax), 0U) << "cut at " << size;
    }
  }
}

TEST(DamagedPackage, MissingBytesAreSurvived) {
  const std::string whole = rpk_test::pumpPackage();
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string text = whole;
    text.erase(at, 1);
    readDamaged(text);
  }
}

TEST(DamagedPackage, FlippedBitsAreSurvived) {
  const std::string whole = rpk_test::pumpPackage();
  std::mt19937 random(20240611);  // NOLINT(bugprone-random-generator-seed): the same damage at every run
  std::uniform_int_distribution<std::size_t> place(0, whole.size() - 1);
  std::uniform_int_distribution<int> bit(0, 7);
  std::uniform_int_distribution<int> number(1, 12);
  for (int round = 0; round < 3000; ++round) {
    std::string text = whole;
    for (int flips = number(random); flips > 0; --flips) {
      char& byte = text[place(random)];
      byte = static_cast<char>(byte ^ (1 << bit(random)));
    }
    readDamaged(text);
  }
}

TEST(DamagedPackage, ShuffledLinesAreSurvived) {
  const std::string whole = rpk_test::pumpPackage();
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < whole.size();) {
    const std::size_t end = std::min(whole.find('\n', at), whole.size() - 1);
    lines.push_back(whole.substr(at, end + 1 - at));
    at = end + 1;
  }
  std::mt19937 random(7);  // NOLINT(bugprone-random-generator-seed)
  for (int round = 0; round < 300; ++round) {
    std::shuffle(lines.begin(), lines.end(), random);
    std::string text;
    for (const std::string& line : lines) text += line;
    readDamaged(text);
  }
}

// What damage leaves is told, or what is left is still a package.
TEST(DamagedPackage, IsToldOrStillValid) {
  const std::string whole = rpk_test::wholePackage();
  ASSERT_TRUE(isPlainlyValid(whole));
  int told = 0;
  std::size_t exactSurfaces = 0;
  for (std::uint32_t seed = 0; seed < 1000; ++seed) {
    const std::string text = rpk_test::Damager(seed).damage(whole);
    const Reading reading = readDamaged(text);
    const bool faulty = reading.check.count(rpk::Severity::kFault) > 0;
    told += faulty ? 1 : 0;
    exactSurfaces += reading.exactSurfaces;
    EXPECT_TRUE(faulty || isPlainlyValid(text)) << "seed " << seed;
  }
  EXPECT_GT(told, 700);
  EXPECT_GT(exactSurfaces, 300U) << "what is left of them is evaluated";
}

// The same over every form that the writer knows, each built from the last: what a fuzzer does, with a fixed end.
TEST(DamagedPackage, DamageUponDamageIsSurvived) {
  std::vector<std::string> texts = {
      rpk_test::pumpPackage(), rpk_test::wholePackage(),
      rpk_test::group("pipe", {rpk_test::object(rpk_test::exactGeometry(rpk_test::cylinderWithHole()))})};
  for (const auto& entry : std::filesystem::directory_iterator(RENDARA_TEST_DATA "/scene")) {
    if (entry.path().extension() == ".golden") texts.push_back(rendara::testing::readFile(entry.path()));
  }
  std::sort(texts.begin(), texts.end());
  ASSERT_GT(texts.size(), 20U);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    rpk_test::Damager damager(static_cast<std::uint32_t>(i));
    std::string text = texts[i];
    for (int round = 0; round < 200; ++round) {
      text = round % 10 == 0 ? texts[i] : damager.damage(text);
      readDamaged(text);
    }
  }
}

// Deep paths, long names and many faults at once must not multiply.
TEST(DamagedPackage, HostileSizesStayCheap) {
  std::string text;
  for (int i = 0; i < 300; ++i) text += "group \"" + std::string(20000, 'n') + "\" {\n";
  for (int i = 0; i < 100000; ++i) text += "] ";
  text += "\n\"x\" " + std::string(1000000, '[') + "\n";
  for (int i = 0; i < 20000; ++i) text += "\"x\" [ " + rpk_test::packedHead('i', 0x7fffffff) + "\n";
  readDamaged(text);
}

}  // namespace
