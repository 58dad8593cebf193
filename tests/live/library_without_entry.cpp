// A library that is none of the live link.
extern "C" __attribute__((visibility("default"))) int anotherEntry();

extern "C" int anotherEntry() { return 1; }
