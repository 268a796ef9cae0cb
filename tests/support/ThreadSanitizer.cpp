// Part of every test program: what ThreadSanitizer must not report.

#if defined(__SANITIZE_THREAD__)
// The thread that starts the base library holds a mutex of it until it stops it. Every mutex that is held
// during the start and locked again later therefore seems to be taken in both orders.
extern "C" const char* __tsan_default_suppressions()
{
    return "deadlock:libwx_baseu\n";
}
#endif
