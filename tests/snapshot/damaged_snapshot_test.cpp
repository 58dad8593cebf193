// Files that are no whole snapshot: one clear line, whatever their bytes say.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>

#include "standin/snapshot/records.h"
#include "standin/snapshot/snapshot_reader.h"
#include "tests/snapshot/largest_block.h"
#include "tests/snapshot/saved_session.h"
#include "tests/support/temporary_folder.h"

namespace standin::test {
namespace {

using rendara::testing::TemporaryFolder;
using rendara::testing::writeFile;

constexpr std::size_t kPlaceSize = 24;

std::uint64_t numberAt(const std::string& bytes, std::size_t offset) {
  std::uint64_t number = 0;
  std::memcpy(&number, bytes.data() + offset, sizeof(number));
  return number;
}

void setNumber(std::string& bytes, std::size_t offset, std::uint64_t number) {
  std::memcpy(bytes.data() + offset, &number, sizeof(number));
}

std::size_t footerOf(const std::string& bytes) { return bytes.size() - kSnapshotFooterSize; }

// Gives the records the checksum that their bytes have now.
std::string sealed(std::string bytes) {
  const std::size_t footer = footerOf(bytes);
  const auto offset = static_cast<std::size_t>(numberAt(bytes, footer));
  setNumber(bytes, footer + kPlaceSize - 8, checksum(bytes.data() + offset, footer - offset));
  return bytes;
}

// A snapshot of a session that was spoilt first.
std::string spoilt(const std::function<void(Session&, Model& part)>& spoil) {
  Session session;
  fillSession(session, "/textures");
  spoil(session, *session.models()[0]);
  return snapshotOf(session);
}

class DamagedSnapshot : public ::testing::Test {
 protected:
  DamagedSnapshot() { fillSession(saved_, "/textures"); }

  LoadResult open(Session& session, const std::string& bytes) {
    writeFile(file_, bytes);
    return readSnapshot(session, file_);
  }

  Session saved_;
  TemporaryFolder folder_;
  std::filesystem::path file_ = folder_.path() / "saved.snap";
};

TEST_F(DamagedSnapshot, IsRefusedWithTheReason) {
  const std::string whole = snapshotOf(saved_);
  const auto with = [&whole](std::size_t offset, std::uint64_t number) {
    std::string bytes = whole;
    setNumber(bytes, offset, number);
    return bytes;
  };
  const std::size_t footer = footerOf(whole);
  const auto records = static_cast<std::size_t>(numberAt(whole, footer));
  std::string flipped = whole;
  flipped[records + 40] = static_cast<char>(flipped[records + 40] ^ 4);
  const auto badFacet = [](Session&, Model& part) { mesherOf(part).meshes[0].facets[0][1] = 4; };
  const struct {
    const char* name;
    std::string bytes, error;
  } cases[] = {
      {"nothing", "", "the file is no snapshot"},
      {"text", "ISO-10303-21;\nHEADER;\n", "the file is no snapshot"},
      {"the mark alone", whole.substr(0, 8), "the snapshot is cut short"},
      {"line breaks changed", "RDSNAP\n" + whole.substr(8), "the file is no snapshot"},
      {"half", whole.substr(0, whole.size() / 2), "the snapshot is cut short"},
      {"a byte less", whole.substr(0, whole.size() - 1), "the snapshot is cut short"},
      {"a newer version", with(8, 2), "the snapshot has version 2, this program reads version 1"},
      {"records elsewhere", with(footer, records + 8), "the snapshot is damaged: the place of its records is wrong"},
      {"records past all", with(footer, ~0ULL - 4), "the snapshot is damaged: the place of its records is wrong"},
      {"a middle left out", whole.substr(0, 40) + whole.substr(60),
       "the snapshot is damaged: the place of its records is wrong"},
      {"another code page", flipped, ""},
      {"a list of 2^32 options", sealed(with(records + 12, ~0ULL)),
       "the snapshot is damaged: a list is longer than its place"},
      {"no open model", spoilt([](Session& session, Model&) { session.current = nullptr; }),
       "the snapshot is damaged: it holds no open model"},
      {"a mode that is none", spoilt([](Session& session, Model&) { session.mode = static_cast<ProMode>(7); }),
       "the snapshot is damaged: a value is out of its range"},
      {"a surface too many", spoilt([](Session&, Model& part) { part.solidSurfaces.push_back(7); }),
       "the snapshot is damaged: a surface is listed that is not there"},
      {"an assembly in itself",
       spoilt([](Session& session, Model&) { session.models()[2]->addComponent(*session.current, kIdentity); }),
       "the snapshot is damaged: an assembly holds itself"},
      {"a facet without a corner", spoilt(badFacet), ""},
  };
  for (const auto& [name, bytes, error] : cases) {
    Session session;
    const LoadResult result = open(session, bytes);
    if (std::string(name) == "another code page") {
      EXPECT_NE(result.error.find("the snapshot is damaged: "), std::string::npos) << result.error;
    } else {
      EXPECT_EQ(result.error, error) << name;
    }
    EXPECT_EQ(result.model == nullptr, !result.error.empty()) << name;
    EXPECT_EQ(session.models().empty(), result.model == nullptr) << name << ": nothing may stay of a refused file";
  }
  EXPECT_TRUE(isSnapshot((writeFile(file_, whole), file_)));
  EXPECT_FALSE(isSnapshot((writeFile(file_, "RDSNAP"), file_)));
  EXPECT_FALSE(isSnapshot(folder_.path()));
  Session session;
  EXPECT_EQ(readSnapshot(session, folder_.path() / "absent").error, "the snapshot cannot be read");
}

// Geometry is read later, and then it is the surface that fails.
TEST_F(DamagedSnapshot, GeometryFailsAlone) {
  std::string bytes = spoilt([](Session&, Model& part) { mesherOf(part).meshes[0].facets[0][1] = 4; });
  bytes[kSnapshotHeaderSize + 4] = static_cast<char>(bytes[kSnapshotHeaderSize + 4] ^ 1);
  Session session;
  ASSERT_EQ(open(session, bytes).error, "");
  PartMesher& mesher = *session.models()[0]->mesher;
  std::string failure;
  EXPECT_EQ(mesher.mesh(0, kChord, failure), nullptr);
  EXPECT_EQ(failure, "the snapshot is damaged: its bytes are not those that were written");
  EXPECT_NE(mesher.mesh(1, kChord, failure), nullptr);
  EXPECT_EQ(failure, "");

  Session other;
  ASSERT_EQ(open(other, spoilt([](Session&, Model& part) {
                   mesherOf(part).meshes[0].facets[0][1] = 4;
                   dynamic_cast<FixedConverter&>(*part.converter).part->solid[0].weights.pop_back();
                 }))
                .error,
            "");
  EXPECT_EQ(other.models()[0]->mesher->mesh(0, kChord, failure), nullptr);
  EXPECT_EQ(failure, "the snapshot is damaged: a facet has a corner that is not there");
  EXPECT_THROW(other.models()[0]->converter->convert(), SnapshotError);
}

// Mostly in the records, with their checksum set right, so that every check of them is reached.
TEST_F(DamagedSnapshot, ChangedBytesNeitherCrashNorTakeMemory) {
  const std::string whole = snapshotOf(saved_);
  const std::size_t footer = footerOf(whole);
  const auto records = static_cast<std::size_t>(numberAt(whole, footer));
  std::mt19937 random(20);
  const auto below = [&random](std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
  };
  std::size_t refused = 0;
  std::size_t failed = 0;
  for (int round = 0; round < 2500; ++round) {
    std::string bytes = whole;
    const bool anywhere = round % 4 == 0;
    for (std::size_t change = below(4); change < 4; ++change) {
      const std::size_t at = anywhere ? below(bytes.size()) : records + below(footer - records);
      bytes[at] = below(2) == 0 ? static_cast<char>(below(256)) : static_cast<char>(bytes[at] ^ (1 << below(8)));
    }
    writeFile(file_, anywhere ? bytes : sealed(bytes));
    Session session;
    largestBlock = 0;
    const LoadResult result = readSnapshot(session, file_);
    ASSERT_EQ(result.model == nullptr, !result.error.empty());
    ASSERT_EQ(result.error.find('\n'), std::string::npos) << result.error;
    refused += result.model == nullptr ? 1 : 0;
    for (const auto& model : session.models()) {
      std::string failure;
      for (std::size_t surface = 0; model->mesher && surface < model->surfaces.size(); ++surface) {
        failed += model->mesher->mesh(surface, kOtherChord, failure) ? 0 : 1;
      }
      try {
        if (model->converter) model->converter->convert();
      } catch (const SnapshotError&) {
        ++failed;
      }
    }
    ASSERT_LT(largestBlock, 8 * whole.size()) << round;
  }
  EXPECT_GT(refused, 300U);
  EXPECT_LT(refused, 2200U) << "else the records are hardly looked at";
  EXPECT_GT(failed, 100U);
}

}  // namespace
}  // namespace standin::test
