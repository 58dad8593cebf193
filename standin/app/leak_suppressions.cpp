// What a build with the leak sanitizer is not to report: Open CASCADE keeps its registers and protocols until the
// process ends, and does not free them then.
#ifdef RENDARA_SANITIZED
extern "C" {

__attribute__((visibility("default"))) const char* __lsan_default_suppressions();
__attribute__((visibility("default"))) const char* __lsan_default_options();

const char* __lsan_default_suppressions() { return "leak:libTK"; }
const char* __lsan_default_options() { return "print_suppressions=0"; }
}
#endif
