// Which Windows the process runs on, as the FW layer counts them. The kind decides
// whether hardware faults are translated into exceptions (fw/fw_faults.h): only on
// XP to 7, the systems the translation was made for.
//
//   kind  platform id, version                known as   translation
//   0     0                                   "3.1"      no
//   1     1, minor below 10                   "95"       no
//   2     1, minor 10 to 89                   "98"       no
//   3     1, minor 90 or more                 "ME"       no
//   4     2, major below 5                    "NT"       no
//   5     2, 5.0                              "2000"     no
//   6     2, 5.1                              "XP"       yes
//   7     2, 5.2                              "2003"     yes
//   8     2, 6.0                              "Vista"    yes
//   9     2, 6.1                              "7"        yes
//   10    anything else, a failed query too   "Unknown"  no
//
// So a version newer than 6.1 (8, 10, 11) is "Unknown" and leaves faults alone. Wine
// reports 6.1 unless a program's version is set under
// HKCU\Software\Wine\AppDefaults\<program>.exe\Version; the system reads it when a
// process starts, so changing it affects only processes started afterwards.
#pragma once
#include <cstdint>

// Asks the system (GetVersionExA) once per process and keeps the answer: the version
// a process is told cannot change while it runs.
int fw_os_kind();
// The table above, for a version record's platform id, major and minor version.
int fw_os_kind_of(uint32_t platformId, uint32_t major, uint32_t minor);
// "3.1", "95", ... "Unknown"; "Unknown" for a number outside the table too.
const char* fw_os_kind_name(int kind);
// True for the kinds whose faults are translated: 6 to 9.
bool fw_os_kind_translates(int kind);
