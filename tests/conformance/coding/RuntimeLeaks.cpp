// For the leak sanitizer: memory that the Objective-C runtime and GNUstep keep for the life of a process is
// not a leak of ours.

extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libobjc.so\nleak:libgnustep-base.so\n";
}
