#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/test_session.h"

namespace standin {
namespace {

using test::addBoxPart;
using test::handle;
using Lines = std::vector<std::string>;

class Strictness : public ::testing::Test {
 protected:
  ProTessellation tessellate() {
    ProTessellation tessellation = nullptr;
    EXPECT_EQ(ProSurfaceTessellationGet(&part, handle(part.surfaces[0]), nullptr, &tessellation), PRO_TK_NO_ERROR);
    return tessellation;
  }
  ProVector* vertices() {
    ProTessellation tessellation = tessellate();
    ProVector* result = nullptr;
    EXPECT_EQ(ProTessellationVerticesGet(tessellation, &result), PRO_TK_NO_ERROR);
    EXPECT_EQ(ProTessellationFree(&tessellation), PRO_TK_NO_ERROR);
    return result;
  }

  Session session;
  Model& part = addBoxPart(session, L"box");
};

// Reads that the compiler may neither drop nor move.
template <typename Element>
Element readAt(const volatile Element* elements, std::size_t index) {
  return elements[index];
}

TEST_F(Strictness, LeaksAreNamedByTheirOperation) {
  for (int count = 0; count < 3; ++count) {
    tessellate();
  }
  WVerstamp stamp = nullptr;
  ProMdlVerstampGet(&part, &stamp);
  vertices();
  session.finish();
  Lines lines = session.misuse();
  std::sort(lines.begin(), lines.end());
  EXPECT_EQ(lines, (Lines{"ProMdlVerstampGet: 1 version stamp was never freed",
                          "ProSurfaceTessellationGet: 3 tessellations were never freed",
                          "ProTessellationVerticesGet: 1 array was never freed"}));
}

TEST_F(Strictness, FreeingTwiceOrAForeignPointerIsNoted) {
  ProTessellation tessellation = tessellate();
  ProTessellation copy = tessellation;
  EXPECT_EQ(ProTessellationFree(&tessellation), PRO_TK_NO_ERROR);
  EXPECT_EQ(tessellation, nullptr);
  EXPECT_EQ(ProTessellationFree(&tessellation), PRO_TK_BAD_INPUTS) << "null is refused, and no more";
  EXPECT_TRUE(session.misuse().empty());
  EXPECT_EQ(ProTessellationFree(&copy), PRO_TK_BAD_INPUTS);
  ProVector* read = nullptr;
  EXPECT_EQ(ProTessellationVerticesGet(copy, &read), PRO_TK_BAD_INPUTS);

  ProVector own[2] = {};
  ProArray foreign = own;
  int size = 0;
  EXPECT_EQ(ProArrayFree(&foreign), PRO_TK_BAD_INPUTS);
  EXPECT_EQ(ProArraySizeGet(own, &size), PRO_TK_BAD_INPUTS);

  WVerstamp stamp = nullptr;
  ProMdlVerstampGet(&part, &stamp);
  ProArray disguised = stamp;
  EXPECT_EQ(ProArrayFree(&disguised), PRO_TK_BAD_INPUTS);
  ProVerstampFree(&stamp);
  EXPECT_EQ(session.misuse(),
            (Lines{"ProTessellationFree: the tessellation was freed before",
                   "ProTessellationVerticesGet: the tessellation was freed before",
                   "ProArrayFree: the array was never given out", "ProArraySizeGet: the array was never given out",
                   "ProArrayFree: what ProMdlVerstampGet gave out is no array"}));
}

TEST_F(Strictness, UnknownHandlesAreNoted) {
  int id = 0;
  ProMdlType type = PRO_MDL_UNUSED;
  int nothing = 0;
  EXPECT_EQ(ProSurfaceIdGet(reinterpret_cast<ProSurface>(&nothing), &id), PRO_TK_BAD_INPUTS);
  EXPECT_EQ(ProMdlTypeGet(&nothing, &type), PRO_TK_BAD_INPUTS);
  EXPECT_EQ(ProMdlTypeGet(nullptr, &type), PRO_TK_BAD_INPUTS);
  EXPECT_EQ(ProMdlTypeGet(&part, nullptr), PRO_TK_BAD_INPUTS);
  EXPECT_EQ(session.misuse(), (Lines{"ProSurfaceIdGet: the handle of a surface is unknown",
                                     "ProMdlTypeGet: the handle of a model is unknown"}));
}

TEST_F(Strictness, ReadingPastTheEndOfAnArrayIsNotedOnceAndGoesOn) {
  ProVector* array = vertices();
  const double* numbers = &array[0][0];
  readAt(numbers, 11);
  EXPECT_TRUE(session.misuse().empty()) << "the last number of the fourth vertex";
  readAt(numbers, 12);
  readAt(numbers, 13);
  EXPECT_EQ(session.misuse(), Lines{"ProTessellationVerticesGet: an array was read past its end"});
  ProArray freed = array;
  EXPECT_EQ(ProArrayFree(&freed), PRO_TK_NO_ERROR);
}

TEST_F(Strictness, ReadingAFreedArrayIsNoted) {
  ProVector* array = vertices();
  ProArray freed = array;
  EXPECT_EQ(ProArrayFree(&freed), PRO_TK_NO_ERROR);
  readAt(&array[0][0], 0);
  EXPECT_EQ(session.misuse(), Lines{"ProTessellationVerticesGet: an array was used after it was freed"});
}

TEST_F(Strictness, AGuardThatWasOpenedIsClosedAgainWhenTheMemoryIsReused) {
  ProVector* array = vertices();
  readAt(&array[0][0], 12);
  EXPECT_EQ(session.misuse().size(), 1U);
  ProArray freed = array;
  ProArrayFree(&freed);
  Session next;
  Model& box = addBoxPart(next, L"box");
  // The normals of one surface take as much room as the vertices.
  for (int count = 0; count < 2000; ++count) {
    ProTessellation tessellation = nullptr;
    ProVector* normals = nullptr;
    ProSurfaceTessellationGet(&box, handle(box.surfaces[0]), nullptr, &tessellation);
    ASSERT_EQ(ProTessellationNormalsGet(tessellation, &normals), PRO_TK_NO_ERROR);
    ProTessellationFree(&tessellation);
    if (normals == array && next.misuse().empty()) {
      readAt(&normals[0][0], 11);
      ASSERT_TRUE(next.misuse().empty());
      readAt(&normals[0][0], 12);
      EXPECT_EQ(next.misuse(), Lines{"ProTessellationNormalsGet: an array was read past its end"});
    }
    freed = normals;
    ProArrayFree(&freed);
  }
  EXPECT_EQ(next.misuse().size(), 1U) << "the memory came round again";
}

TEST_F(Strictness, ManyArraysPassThroughTheGuards) {
  std::vector<ProVector*> kept;
  for (int count = 0; count < 10000; ++count) {
    ProVector* array = vertices();
    if (count % 2 == 0) {
      kept.push_back(array);
    } else {
      ProArray freed = array;
      ASSERT_EQ(ProArrayFree(&freed), PRO_TK_NO_ERROR);
    }
  }
  for (ProVector* array : kept) {
    EXPECT_EQ(array[3][2], readAt(&array[3][2], 0));
    ProArray freed = array;
    ASSERT_EQ(ProArrayFree(&freed), PRO_TK_NO_ERROR);
  }
  session.finish();
  EXPECT_TRUE(session.misuse().empty());
}

TEST_F(Strictness, OtherFaultsStillEndTheProcess) {
  vertices();
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        vertices();
        std::raise(SIGSEGV);
        std::abort();
      },
      "");
  // A wild pointer, not one of the guards.
  const int* volatile wild = nullptr;
  EXPECT_DEATH(readAt(wild, 2), "");
}

}  // namespace
}  // namespace standin
