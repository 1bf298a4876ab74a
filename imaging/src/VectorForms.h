// Whether this build has the vector forms of the image transform. They use
// SSSE3 and SSE4.1, so they are built for x86-64 only; the plain forms are
// built everywhere and give the same bytes.
#pragma once

namespace img {

#if TAVIK_VECTOR_FORMS
inline constexpr bool kVectorForms = true;
// Whether the vector forms for SSSE3 (and for SSE4.1) run: the processor has
// the instructions and the forms are not switched off (tests switch them off
// to compare them with the plain forms).
bool HaveSsse3();
bool HaveSse41();
void UseVectorForms(bool aUse);
#else
inline constexpr bool kVectorForms = false;
inline bool HaveSsse3() {
    return false;
}
inline bool HaveSse41() {
    return false;
}
inline void UseVectorForms(bool) {}
#endif

} // namespace img
