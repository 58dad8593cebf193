// A library that is no plug-in.
extern "C" __attribute__((visibility("default"))) int rendaraTestNothing() { return 0; }
