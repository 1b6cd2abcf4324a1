// What Qt's fonts keep until the end of the process would be reported as a finding. Leaks of the client are looked for
// by its other tests.
extern "C" const char*
__asan_default_options() // NOLINT(bugprone-reserved-identifier): the sanitizer asks for this name
{
    return "detect_leaks=0";
}
