// Binary data as hexadecimal text, two upper-case digits a byte:
//   hexText   of 00 AB 0F  ->  "00 AB 0F"     (one blank between two bytes)
//   hexDigits of 00 AB 0F  ->  "00AB0F"
//   fromHexText("00 ab,0F") -> 00 AB 0F       (anything that isn't a digit separates)
// The bytes travel in an AnsiString, one character a byte.
#pragma once
#include "Framework/String.h"

namespace Framework {

// Both make their result in one allocation of the exact size. An empty input gives an
// empty text; a non-empty input with no data throws ErrorException.
AnsiString hexText(const AnsiString& bytes);
AnsiString hexDigits(const AnsiString& bytes);

// Digits are 0-9, A-F, a-f. Two digits of one byte must stand together: a digit
// followed by anything else throws FormatException with the index of that other
// character, so an odd number of digits fails with position length.
//   "A" -> FormatException(1)    "A B" -> FormatException(1)    "" -> empty
AnsiString fromHexText(const AnsiString& text);

}  // namespace Framework
