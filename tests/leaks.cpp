// What the leak checker passes over: fontconfig loses a pattern while it reads the system's own settings.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions() {
    return "leak:libfontconfig\n";
}
