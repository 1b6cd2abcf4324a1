// Memory that Qt's fonts keep until the end of the process would be reported as a leak. The client's other tests look
// for leaks.
extern "C" const char*
__asan_default_options() // NOLINT(bugprone-reserved-identifier): the sanitizer asks for this name
{
    return "detect_leaks=0";
}
