// SPDX-License-Identifier: MIT
// Part of every test program: what ThreadSanitizer must not report.

#if defined(__SANITIZE_THREAD__)
// The thread that starts wxWidgets holds a mutex of it until it stops it. Every mutex that is held
// during the start and locked again later therefore seems to be taken in both orders.
//
// The C library keeps its time zone behind a lock of its own, which the sanitizer does not see; it sees the
// memory that is taken and given back behind it.
//
// The first thread that asks wxWidgets whether it may log makes a mutex there, in a local static. The
// others learn that it is made from code that the sanitizer does not see.
extern "C" const char* __tsan_default_suppressions()
{
    return "deadlock:libwx_baseu\n"
           "race:tzset_internal\n"
           "race:wxMutex::wxMutex\n";
}
#endif
