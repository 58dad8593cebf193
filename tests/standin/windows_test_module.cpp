// A library that tests load at run time.
extern "C" __attribute__((visibility("default"))) int windowsTestEntry() { return 42; }
