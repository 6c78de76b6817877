// Linked into every test when built with ThreadSanitizer. Qt itself is not instrumented, so TSan
// cannot see the ordering that Qt's own thread joins and wait conditions provide (QtTest's
// watchdog thread among them) and reports races inside them: ignore what uninstrumented modules
// do through TSan's interceptors. The library's and the tests' own code stay fully checked.
extern "C" __attribute__((visibility("default"))) const char *__tsan_default_options()
{
    return "ignore_noninstrumented_modules=1";
}
