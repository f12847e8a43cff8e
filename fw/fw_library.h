// The lifetime of the FW layer. The layer is a set of process-wide objects that an
// fw_library object brings up in its constructor and takes down in its destructor;
// it is the base of every action call's object, so the layer exists exactly while an
// action runs, and between two calls nothing of it is left.
//
// While the layer is up:
// - operator new that finds no memory raises and throws fw_exception_memory, never
//   std::bad_alloc or null (the handler before is put back at teardown);
// - a hardware fault in this module's code is thrown as fw_exception_assert, on the
//   systems where fw_os_kind_translates (fw/fw_faults.h);
// - the settings table exists, holding "buildtime", a pointer to fw_build_stamp.
// A pure virtual call throws fw_exception_purecall from the first bring-up on, also
// after the teardown (fw/fw_purecall.h).
//
// One fw_library at a time, on one thread, with no lock: a second one while the first
// lives (on any thread) writes "\nterminate = 0 : Double initializing FW library\n"
// to the standard error stream and aborts the process. So do the getters and the
// settings while the layer is down, with "FW library must be initialized". Both stops
// call abort: no exception leaves them and no clean-up runs.
//
// A failure during the bring-up (no memory) throws out of the constructor after the
// steps already made are undone, so a later fw_library can still be made.
#pragma once
#include "fw/fw_hash_table.h"
#include "fw/fw_string.h"

#include <cstdint>

class fw_library
{
public:
    fw_library();
    fw_library(const fw_library&) = delete;
    fw_library& operator=(const fw_library&) = delete;
    virtual ~fw_library();
};

// The allocation-failure handler of the layer, also usable while it is down: raises
// and throws fw_exception_memory, made from a reserve kept for the purpose when the
// layer is up; std::bad_alloc when even that can't be made.
[[noreturn]] void fw_raise_memory();

// Set by the bring-up, cleared at the end of the teardown.
extern bool fw_initialized;
// The named settings of the layer; null while the layer is down.
extern fw_hash_table<uintptr_t>* fw_settings;
// "FWyymmdd-hhmm": the build's date and time, from the first bring-up on.
extern char fw_build_stamp[14];

// Stops the process (above) unless the layer is up.
void fw_require_initialized();

// The value stored under the key, 0 for a key never stored. Requires the layer.
uintptr_t fw_setting_get(const char* key);
// Stores the value; false if there is no table. The table keeps the key pointer, so
// the text must outlive the layer: a literal does. Requires the layer.
bool fw_setting_set(const char* key, uintptr_t value);

// The build stamp for the compiler's date and time texts:
//   "Feb 20 2013", "11:16:06" -> "FW130220-1116"
// An unknown month name counts as month 0.
fw_string fw_build_stamp_of(const char* date, const char* time);

// The layer's idea of the product, used by the error report (fw/fw_error_report.h).
// None of the actions sets these values, so there they stay at their defaults:
// "Vendor", empty texts for the others, version 0.0 build 0. A program that links the
// layer may name its product after each bring-up; the teardown forgets the values.
// Each getter and setter requires the layer (above).
struct fw_product_version
{
    uint32_t major;
    uint32_t minor;
    uint32_t build;
};

fw_string fw_product_name();
fw_string fw_vendor_name();
// Where the error report goes; empty: nowhere.
fw_string fw_support_address();
fw_product_version fw_product_version_get();

void fw_set_product_name(const fw_string& name);
void fw_set_vendor_name(const fw_string& name);
void fw_set_support_address(const fw_string& address);
void fw_set_product_version(const fw_product_version& version);
