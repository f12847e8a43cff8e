// The printf dialect of String::format and AnsiString::format, the same in narrow and
// wide formats, put in front of the runtime library's printf (msvcrt):
//
//   %s            a zero-terminated narrow text, in narrow and wide formats alike
//   %S            a zero-terminated wide text, in narrow and wide formats alike
//   %ll, %L       a 64-bit integer: "%Ld", "%Lu", "%LX", "%lld"
//   %%            one percent sign
//   anything else as in the runtime's printf; flags "+-0 #", width, precision and
//                 the lengths h, l, hh, I32, I64 pass as they stand
//
//   AnsiString::format("Code 0x%LX\n", 0x1Full)  ->  "Code 0x1F\n"
//   String::format(L"%S%03d", L"n", 7)           ->  "n007"
//   String::format(L"%s=%X", "k", 255u)          ->  "k=FF"
//   "100%%" -> "100%",  "%%lld" -> "%lld"
//
// The engine rewrites the format into what msvcrt wants (step 1: ll and L become I64;
// step 2, wide formats only: s and S swap, because msvcrt's wide functions read %s as
// wide text), counts the result, allocates once and renders. A result above 0xA00000
// characters throws ErrorException from String::format; AnsiString::format has no
// limit. A format that doesn't follow the grammar is copied and left to the runtime.
#pragma once
#include "Framework/String.h"

namespace Framework {

// Step 1: ll and L in front of a conversion become I64; all else is copied.
AnsiString normalizeFormat(const char* format);
String normalizeFormat(const wchar_t* format);
// Step 2: each conversion letter s becomes S and S becomes s, in place. Detaches.
void swapStringConversions(String& format);

}  // namespace Framework
