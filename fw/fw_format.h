// Messages with numbered arguments, so that a translated text can put them in
// another order while every caller passes them in one fixed order:
//
//   fw_format("%{1}s", "x")                      -> "x"
//   fw_format("%{2}s-%{1}s", "a", "b")           -> "b-a"
//   fw_format("[%{2}d|%{1}s]", "x", 7)           -> "[7|x]"   literal text stays with the item before it
//   fw_format("%{1}08X", 0xBEEFu)                -> "0000BEEF"
//   fw_format("%{1}d%%", 50)                     -> "50%"
//   fw_format("50%%")                            -> "50%%"    no item: copied as it is
//   fw_format("%{1}lld", int64_t(1) << 40)       -> "1099511627776"
//
// An item is "%{n}" followed by the rest of a printf conversion: flags, width,
// precision, size and type. The numbers run from 1 to the number of items, each
// exactly once, and stand for the arguments in the order they are passed. fw_string
// arguments go as c_str(). Whether the types fit the conversions is the caller's
// matter, as with printf; "ll" or "L" on an integer conversion (i d o u x X) means 64
// bits. A percent run is read in pairs ("%%%{1}s" is "%" and an item), and a format
// without items is no printf format, so its "%%" stays two characters. "%d", an odd
// percent run not followed by "{", a number out of range or used twice, and a missing
// "}" throw fw_exception_assert.
//
// The conversions are those of msvcrt's _vsnprintf, which does the rendering (not
// mingw's own printf, which the standard names would reach): %s narrow text, %S wide
// text, I64 as the 64-bit size. Items out of order are rendered in argument order
// with a control-character separator between them ("\x1F\x1F\x1F\x1F" unless the
// format holds it) and then moved back; an argument whose text holds the separator
// breaks that cut. Results above 64 MB throw fw_exception_assert.
//
// No state is kept between calls; any thread may format at once.
#pragma once
#include "fw/fw_string.h"

#include <cstdarg>

// A null or empty format gives "".
fw_string fw_format(const char* format, ...);
fw_string fw_vformat(const char* format, va_list args);
