// A library that tests load at run time; it needs another one.
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) int windowsTestEntry() { return getpid(); }
