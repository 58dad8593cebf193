// Memory whose end coincides with a page that may not be read, so that the first byte past it is noticed.
//
// A fault in such a page is noted with the name of the operation that the memory came from, the page is opened and
// the reader goes on; any other fault goes to whoever handled it before. Freed memory stays closed for a while, so
// that late readers are noticed in the same way. Safe to call from one thread; the fault handler from any.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace standin {

// Null when the system has no more room for guards; the caller then takes ordinary memory. What the memory holds is
// not said. It is aligned to the largest power of two (up to a page) that divides `size`. `owner` must live as long as
// the process.
void* allocateGuarded(std::size_t size, const char* owner);
// `memory` and `size` as they were allocated.
void freeGuarded(void* memory, std::size_t size);

// What the fault handler noticed since the last call, a line each beginning with the owner's name.
std::vector<std::string> takeGuardReports();
// A cheap look whether there is anything to take.
bool hasGuardReports();

}  // namespace standin
