// Whole pages of memory and who may touch them. Sizes are multiples of pageSize(), addresses those of pages.
#pragma once

#include <cstddef>

namespace standin {

std::size_t pageSize();

// Pages that nobody may touch yet; null when the system has no room.
char* reservePages(std::size_t size);
// Gives back what reservePages() gave; never a part of it.
void releasePages(char* begin, std::size_t size);

// Lets the pages be read and written. False when the system refuses.
bool openPages(char* begin, std::size_t size);
// Lets nobody touch them; what they hold may be kept.
void closePages(char* begin, std::size_t size);
// Lets nobody touch them and gives their memory back; their addresses stay taken. They are not opened again.
void discardPages(char* begin, std::size_t size);

// From now on an access that is not allowed asks the function, in the thread that tried it: after true the access is
// repeated, after false all goes on as without it. It may neither allocate nor lock. Once only; false on failure.
bool watchFaults(bool (*repeat)(const void* address));

}  // namespace standin
