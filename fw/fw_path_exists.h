// The file test of the FW layer: does a path name an existing file, or an existing
// folder? Used by the mail sender before it attaches a file.
//
//   fw_path_exists(fw_string("C:/data//report.txt"), true, false)   -> true if a file
//   fw_path_exists(fw_string("\\\\server\\share\\dir\\"), false, false) -> true if a folder
//   fw_path_exists(fw_string(), ...)                                -> true, for both kinds
//
// Unless `pathIsNormal` says the text is already clean, separators are unified to "/",
// empty pieces dropped and a final separator cut; a network path ("\\server...")
// stays one. A rooted path ("/dir") is taken on the current drive. What cannot be
// accessed does not exist. Where the runtime gives no status for a path that can be
// accessed, a path that opens for reading counts as a file and any other as a folder.
#pragma once
#include "fw/fw_string.h"

bool fw_path_exists(const fw_string& path, bool wantFile, bool pathIsNormal);

// The rewriting above, on its own: pieces joined by "/", a leading separator kept,
// two leading ones written "\/" so that the platform still reads a network path.
fw_string fw_normal_path(const fw_string& path);
