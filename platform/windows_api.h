// The operations of Windows that the plug-in calls. On Windows they are the system's own; elsewhere the process that
// loads the plug-in provides operations of the same names and shapes.
#pragma once

#include <cstdint>
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
using BYTE = unsigned char;
using WORD = unsigned short;
using LSTATUS = int;
using REGSAM = DWORD;
using HANDLE = void*;
using HKEY = struct HKEY__*;
using HMODULE = struct HINSTANCE__*;
using FARPROC = std::intptr_t (*)();
struct SECURITY_ATTRIBUTES;

inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD WC_COMPOSITECHECK = 0x00000200;
inline constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x00000400;

// NOLINTBEGIN(performance-no-int-to-ptr): numbers that stand for keys
inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(static_cast<std::intptr_t>(-0x7FFFFFFF));
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(static_cast<std::intptr_t>(-0x7FFFFFFE));
// NOLINTEND(performance-no-int-to-ptr)
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_WOW64_32KEY = 0x0200;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr LSTATUS ERROR_SUCCESS = 0;

struct STARTUPINFOW {
  DWORD cb;  // size of this record in bytes
  wchar_t* lpReserved;
  wchar_t* lpDesktop;
  wchar_t* lpTitle;
  DWORD dwX, dwY, dwXSize, dwYSize, dwXCountChars, dwYCountChars, dwFillAttribute, dwFlags;
  WORD wShowWindow, cbReserved2;
  BYTE* lpReserved2;
  HANDLE hStdInput, hStdOutput, hStdError;
};

struct PROCESS_INFORMATION {
  HANDLE hProcess;
  HANDLE hThread;
  DWORD dwProcessId;
  DWORD dwThreadId;
};

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
// 0, or an error number with a null stream.
int _wfopen_s(std::FILE** stream, const wchar_t* path, const wchar_t* mode);

// The registry. Results are ERROR_SUCCESS or an error number; a key that was opened is closed by its user. Key paths
// have backslashes; names are compared without regard to case.
LSTATUS RegOpenKeyExW(HKEY key, const wchar_t* path, DWORD options, REGSAM access, HKEY* result);
LSTATUS RegOpenKeyExA(HKEY key, const char* path, DWORD options, REGSAM access, HKEY* result);
// `size` holds the room in bytes and receives the bytes of the value, also when they do not fit. Text comes in units of
// wchar_t and need not be terminated; nothing says that its size is a whole number of them.
LSTATUS RegQueryValueExW(HKEY key, const wchar_t* name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* size);
LSTATUS RegCloseKey(HKEY key);

// Starts a program; both handles of `process` are the caller's to close. 0 on failure.
BOOL CreateProcessW(const wchar_t* program, wchar_t* commandLine, SECURITY_ATTRIBUTES* processSecurity,
                    SECURITY_ATTRIBUTES* threadSecurity, BOOL inheritHandles, DWORD creationFlags, void* environment,
                    const wchar_t* folder, STARTUPINFOW* startup, PROCESS_INFORMATION* process);
BOOL CloseHandle(HANDLE handle);
void Sleep(DWORD milliseconds);

// Null on failure. A module is counted: each load needs its own FreeLibrary.
HMODULE LoadLibraryW(const wchar_t* file);
FARPROC GetProcAddress(HMODULE module, const char* name);
BOOL FreeLibrary(HMODULE module);
}

#endif
