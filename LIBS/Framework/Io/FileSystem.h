// The thin layer between path text and the disk. Each function hands the long form of
// its text (toLongForm, PathText.h) to one runtime or Win32 call and turns a failure
// into an Io::OsException that names the call in `operation` and says what failed,
// with the caller's text, not the long form:
//
//   createFile    "_wcreat"    "Failed to create file '<text>'"          GetLastError
//   createFolder  "_wmkdir"    "Failed to create folder '<text>'"        errno
//   removeFile    "_wremove"   "Failed to remove file '<text>'"          GetLastError
//   removeFolder  "_wrmdir"    "Failed to remove folder '<text>'"        errno
//   statMode      "_wstati64"  "Failed to get file attributes '<text>'"  errno
//   setFileMode   "_wchmod"    "Failed to set file attributes '<text>'"  errno
//   touch         "_wutime"    "Time error"                              errno
//   currentFolder "_wgetcwd"   "pwd error"                               errno, code 0
//   moduleFileName "GetModuleFileNameW", no text                         GetLastError, code 0
// The code of the others is all ones. The tests (exists, accessible, canOpen,
// isFolderOnDisk, removeFileQuietly) answer false instead of throwing.
//
// There is no listing of folders and no temporary names here, and no locks: two
// threads may race between a test and the act, and the platform call then fails.
#pragma once
#include "Framework/String.h"

namespace Framework { namespace Io { namespace FileSystem {

// mode as for _waccess: 0 exists, 2 writable, 4 readable. For mode 0 a file that is
// locked (code 32) or forbidden (code 5) counts as there. lastError, if given, gets
// the Win32 code of a failed existence test. An empty text is false, with no call.
bool accessible(const String& text, int mode, uint32_t* lastError = nullptr);
// accessible(text, 0), and for the codes that device names give (87, 1) whether the
// device opens.
bool exists(const String& text);
// Opens the text for reading and closes it again; true also for a sharing violation
// or a denied access. The text goes to the platform as it is, with no long form: this
// answers for device names. The call is the wide _wfopen, so a name outside the ANSI
// code page is asked for as it is.
bool canOpen(const String& text);
bool isFolderOnDisk(const String& text);
// Readable but not writable. An empty text throws PathNotFoundException.
bool isReadOnly(const String& text);

// An empty file, closed again; an existing file is emptied. The folder must exist.
void createFile(const String& text);
// One level: the folder above must exist.
void createFolder(const String& text);
// Empty text throws ErrorException before any call.
void removeFile(const String& text);
// True if the file was removed; false for an empty text and for any failure.
bool removeFileQuietly(const String& text);
// The folder must be empty. Empty text throws ErrorException before any call.
void removeFolder(const String& text);
uint16_t statMode(const String& text);
// statMode, with trailing separators cut first (except from a root, "C:\"), since the
// runtime refuses them: "C:\dir\" asks for "C:\dir".
uint16_t fileMode(const String& text);
void setFileMode(const String& text, uint16_t mode);
// Sets the write permission (0x80). A path that doesn't exist throws
// PathNotFoundException.
void makeWritable(const String& text);
// Sets the times of a file to now. Not for folders.
void touch(const String& text);

// The process's working folder in canonical form, with a trailing "\".
String currentFolder();
// The file of the process's main program (not of this library), without "\\?\".
String moduleFileName();

}}}  // namespace Framework::Io::FileSystem
