// The text side of paths: the free functions that clean, split and canonicalise path
// text, and toLongForm, the one conversion from a path text to what the platform is
// handed. None of them touches the disk. Every comparison is exact, unit by unit, so
// case matters: "\\?\unc\" and "\\?\UNC\" are share prefixes, "\\?\Unc\" is not, and
// C:\A and c:\a are two different texts. A letter is what iswalpha accepts.
//
// Roots (splitRoot; rootEnd is the index behind the root in the text):
//   C:\dir\a.txt             -> "C:"            C:a.txt -> "C:" too (drive-relative)
//   \\srv\share\a.txt        -> "\\srv\share"   the "\" behind the share name is required:
//                                               \\srv\share alone throws ErrorException, so
//                                               does an empty server or share name
//   \\.\COM1, \\.\COM1\x     -> "\\.\COM1"      a device; \\.\ with no name throws
//   \\?\C:\dir\a.txt         -> "C:"            the long-form prefix goes; \\?\ not followed
//                                               by a drive throws ErrorException
//   \\?\UNC\srv\share\a.txt  -> "\\srv\share"   also with "\\?\unc\"
//   dir\a.txt, \dir\a.txt    -> ""
//
// Parts (parseParts; parseCanonical also makes root and folder canonical):
//   C:/dir/sub/../file.txt -> root "C:", folder "\dir\sub\..\" ("\dir\" canonical),
//                             name "file", extension ".txt"
//   archive.tar.gz -> "archive.tar" + ".gz"    .profile -> "" + ".profile"
//   name.          -> "name" + "."             dir.d\file -> folder "dir.d\", name "file"
//
// Canonical folders: "\" is the only separator, every component is followed by one
// "\", and no "." or ".." stands inside. A relative folder keeps leading "..", and the
// first component is never looked at, so ".\a\" and "..\a\" stay as they are:
//   \a\.\b\\c\ -> \a\b\c\        a\..\..\b\ -> ..\b\       dir -> dir\ (a setter's text)
//   x\..\      -> .\             a relative folder that cancels out is the current one
//   \a\..\..\b\ -> PathInvalidException: a rooted folder can't climb above its root
//
// The long form (toLongForm) is made for one platform call and never stored:
//   \\srv\share\a  -> \\?\unc\srv\share\a   a share, at any length
//   C:\... of 256 characters or more -> \\?\C:\...   (255 stays as it is)
//   a text that already starts with \\?\ is already the long form and stays as it is
//   anything else stays as it is, devices and relative texts included: \\?\ would
//   turn their first component into a device name
// In all of them "/" becomes "\". The platform doesn't resolve "." and ".." behind
// \\?\, so long texts must be canonical, as a Path's full text is.
#pragma once
#include "Framework/String.h"

namespace Framework { namespace Io {

struct PathParts
{
    String root;       // "C:", "\\srv\share", "\\.\NAME" or empty; never a trailing "\"
    String folder;     // between root and name; ends with "\" unless empty
    String name;       // without the extension, may be empty
    String extension;  // with its leading ".", or empty
};

String toLongForm(const String& text);

// Deletes every '"', cuts white space from the right end, turns "/" into "\".
String cleanPathText(const String& text);
String splitRoot(const String& text, uint32_t& rootEnd);
PathParts parseParts(const String& text);
PathParts parseCanonical(const String& text);

// Not empty, and the last character is "\" or "/".
bool endsWithSeparator(const String& text);
// Starts with "\\.\" and has more behind it.
bool isDeviceText(const String& text);
// A device text with no "\" behind the first four characters: \\.\COM1, not \\.\COM1\x.
bool isBareDeviceText(const String& text);
// Only separators, behind an optional drive: "C:\", "\", "\\" are; "C:" and "" are not.
bool isRootOnlyText(const String& text);

// "C:\" -> "C:",  "\\srv\share\" -> "\\srv\share"; anything else as it is.
String canonicalRoot(const String& root);
bool isCanonicalFolder(const String& text);
String canonicalFolder(const String& text);

// The checks of the setters of Path. Each throws ErrorException for a ':' anywhere.
// A folder text is cleaned first: "a/b" -> "a\b\".
String canonicalFolderText(const String& text);
// Nothing but the ':' check: a name may hold "\" at this level.
String checkName(const String& text);
// "" -> "",  ".c" -> ".c",  "cc" -> ".cc",  and a single "c" -> "" (not ".c").
String canonicalExtension(const String& text);
// "C", "C:", "C:\" -> "C:";  "\\srv\share\" -> "\\srv\share";  "\\.\COM1" -> "\\.\COM1".
// Anything else throws ErrorException, the long forms ("\\?\C:") included.
String canonicalRootText(const String& text);

// The folder text above a text that ends with "\": "C:\a\b\" -> "C:\a\", "a\" -> "",
// "C:\" -> "". A text without the trailing "\" throws ErrorException.
String parentFolderText(const String& text);

}}  // namespace Framework::Io
