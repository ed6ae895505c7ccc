// For ThreadSanitizer alone: a worker's result is handed over under locks inside Qt, which it cannot
// see, so the end of a service right after the end of its worker looks like a race.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name that ThreadSanitizer looks for
extern "C" const char *__tsan_default_suppressions() {
    return "race:QtPrivate::ResultStoreBase\n";
}
