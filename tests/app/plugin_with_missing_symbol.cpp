// A plug-in that needs what no host has.
extern "C" int rendaraTestNobodyHasThis();
extern "C" __attribute__((visibility("default"))) int user_initialize_plus() { return rendaraTestNobodyHasThis(); }
extern "C" __attribute__((visibility("default"))) void user_terminate_plus() {}
