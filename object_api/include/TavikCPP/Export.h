// The mark that makes a class or function of the object API visible to
// applications; everything else in libTavikCPP.so stays hidden.
#pragma once

#if defined(__GNUC__)
#define TVKCPP_EXPORT __attribute__((visibility("default")))
#else
#define TVKCPP_EXPORT
#endif
