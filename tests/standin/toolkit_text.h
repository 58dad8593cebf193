// Texts as the toolkit declares them: it takes pointers to what it does not change.
#pragma once

namespace standin::test {

inline char* text(const char* literal) { return const_cast<char*>(literal); }
inline wchar_t* text(const wchar_t* literal) { return const_cast<wchar_t*>(literal); }

}  // namespace standin::test
