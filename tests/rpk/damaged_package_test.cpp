// A reader of untrusted bytes: whatever a file holds, reading ends, never leaves the range, and blocks stay balanced.
#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "tests/rpk/package_text.h"
#include "tools/rpk/package_counts.h"
#include "tools/rpk/package_reader.h"
#include "tools/rpk/scene_summary.h"

namespace {

class Balance : public rpk::PackageVisitor {
 public:
  explicit Balance(std::string_view range) : range_(range) {}
  void openBlock(const rpk::Block& block) override {
    ++depth_;
    expectInside(block.place);
  }
  void closeBlock(const rpk::BlockEnd& end) override {
    --depth_;
    ASSERT_GE(depth_, 0);
    expectInside(end.place);
  }
  void parameter(const rpk::Parameter& parameter) override {
    expectInside(parameter.place);
    if (!parameter.array) return;
    values_ += parameter.array->doubles().size();
    values_ += parameter.array->floats().size() + parameter.array->integers().size();
  }
  void fault(const rpk::Fault& fault) override {
    ++faults_;
    expectInside(fault.place);
  }
  int depth() const { return depth_; }
  int faults() const { return faults_; }

 private:
  void expectInside(const rpk::Place& place) { EXPECT_LE(place.offset, range_.size()); }

  std::string_view range_;
  int depth_ = 0;
  int faults_ = 0;
  std::size_t values_ = 0;
};

// Reads a copy of its own size, so that a sanitizer sees any byte read beyond the end.
int readDamaged(std::string_view text) {
  const auto copy = std::make_unique<char[]>(text.size());
  text.copy(copy.get(), text.size());
  const std::string_view bytes(copy.get(), text.size());
  Balance balance(bytes);
  rpk::readPackage(bytes, balance);
  EXPECT_EQ(balance.depth(), 0);
  const rpk::Scene scene = rpk::readScene(bytes);
  const rpk::PackageCounts counts = rpk::countPackage(bytes);
  EXPECT_EQ(scene.faultCount, counts.faultCount);
  const rpk::ByteCounts& kinds = counts.bytes;
  EXPECT_EQ(kinds.mesh + kinds.nurbs + kinds.animation + kinds.text, text.size());
  return balance.faults();
}

TEST(DamagedPackage, CutAnywhereIsSeen) {
  const std::string whole = rpk_test::pumpPackage();
  const std::size_t content = whole.find("group \"pump\"");
  const std::size_t lastBrace = whole.rfind('}');
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const int faults = readDamaged(std::string_view(whole).substr(0, size));
    if (size > content && size <= lastBrace) {
      EXPECT_GT(faults, 0) << "cut at " << size;
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
