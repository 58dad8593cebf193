// The operations of Windows that the plug-in calls. On Windows they are the system's own; elsewhere the process that
// loads the plug-in provides operations of the same names and shapes.
#pragma once

#include <cstdio>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
#else

using UINT = unsigned int;
using DWORD = unsigned int;
using BOOL = int;

inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD WC_COMPOSITECHECK = 0x00000200;
inline constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x00000400;

extern "C" {

// Both conversions: a length of -1 stands for a zero-terminated text, whose terminator is then converted too; an
// output size of 0 asks for the size. The result is the number of units written, 0 on failure (also when the output
// is too small).
int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* wide, int wideLength, char* narrow, int narrowSize,
                        const char* defaultCharacter, BOOL* usedDefaultCharacter);
int MultiByteToWideChar(UINT codePage, DWORD flags, const char* narrow, int narrowLength, wchar_t* wide, int wideSize);

// The system code page, which CP_ACP stands for.
UINT GetACP();

// True when the byte begins a double-byte character of the system code page.
BOOL IsDBCSLeadByte(unsigned char byte);

std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode);
}

#endif
