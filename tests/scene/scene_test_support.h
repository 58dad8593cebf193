// What the tests of the writer share: a writer on a temporary file, and the golden files.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

#include "scene/vntScene_api.h"
#include "tests/support/temporary_folder.h"

namespace rendara::testing {

enum class Arrays { kText, kPacked };

// The bytes that a new writer leaves in its file when the calls have been made and the writer is destroyed.
std::string written(const std::function<void(vntScene_api&)>& calls, Arrays arrays = Arrays::kText);

// The content of tests/data/scene/<name>.golden. A file that cannot be read fails the test.
std::string golden(const std::string& name);

// The same for the running test, whose file is named "<suite>.<test>.golden".
std::string golden();

}  // namespace rendara::testing
