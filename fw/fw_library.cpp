#include "fw/fw_library.h"

#include "fw/fw_exception.h"
#include "fw/fw_faults.h"
#include "fw/fw_format.h"
#include "fw/fw_purecall.h"
#include "fw/fw_raise.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

bool fw_initialized = false;
fw_hash_table<uintptr_t>* fw_settings = nullptr;
char fw_build_stamp[14] = "FWyymmdd-hhmm";

namespace {

// Owned, and null until someone names the product.
fw_string* productName = nullptr;
fw_string* vendorName = nullptr;
fw_string* supportAddress = nullptr;
fw_product_version productVersion = {};

std::new_handler previousNewHandler = nullptr;

// Given back when memory runs out, so that the exception that says so, and its stack
// dump, can still be made; made anew at the next bring-up.
void* volatile memoryReserve = nullptr;
const size_t memoryReserveSize = 16 * 1024;
// The thread that is making the memory exception, 0 when none is.
volatile LONG buildingThread = 0;

const char* const monthNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

[[noreturn]] void stop(const char* why)
{
    std::fprintf(stderr, "\nterminate = %d : %s\n", 0, why);
    std::fflush(stderr);
    std::abort();
}

fw_string valueOr(const fw_string* value, const char* fallback)
{
    fw_require_initialized();
    return value ? *value : fw_string(fallback);
}

void deleteValue(fw_string*& value)
{
    delete value;
    value = nullptr;
}

// The teardown, also of a bring-up that failed half way.
void takeDown()
{
    if (fw_initialized) {
        deleteValue(productName);
        deleteValue(vendorName);
        deleteValue(supportAddress);
        productVersion = fw_product_version{};
        delete fw_settings;
        fw_settings = nullptr;
        fw_faults_stop();
        fw_initialized = false;
    }
    std::set_new_handler(previousNewHandler);
    previousNewHandler = nullptr;
    std::free(InterlockedExchangePointer(const_cast<void**>(&memoryReserve), nullptr));
}

}  // namespace

void fw_raise_memory()
{
    const LONG thisThread = LONG(GetCurrentThreadId());
    // Not even the exception could be made, the reserve given back: the one answer
    // left is the standard one.
    if (buildingThread == thisThread)
        throw std::bad_alloc();
    std::free(InterlockedExchangePointer(const_cast<void**>(&memoryReserve), nullptr));
    const bool marked = InterlockedCompareExchange(&buildingThread, thisThread, 0) == 0;
    fw_exception_memory* exception = nullptr;
    try {
        exception = new fw_exception_memory();
    } catch (...) {
        if (marked)
            buildingThread = 0;
        throw;
    }
    if (marked)
        buildingThread = 0;
    fw_raise(exception);
    throw exception;
}

fw_library::fw_library()
{
    const std::new_handler before = std::set_new_handler(fw_raise_memory);
    if (fw_initialized)
        stop("Double initializing FW library");
    previousNewHandler = before;
    if (!memoryReserve)
        memoryReserve = std::malloc(memoryReserveSize);
    // The exception titles are constants of their classes: nothing to set.
    fw_initialized = true;
    try {
        fw_faults_start();
        fw_settings = new fw_hash_table<uintptr_t>();
        const fw_string stamp = fw_build_stamp_of(__DATE__, __TIME__);
        std::strncpy(fw_build_stamp, stamp.c_str(), sizeof fw_build_stamp - 1);
        fw_setting_set("buildtime", reinterpret_cast<uintptr_t>(fw_build_stamp));
        fw_set_purecall_handler(fw_raise_purecall);
    } catch (...) {
        takeDown();
        throw;
    }
}

fw_library::~fw_library()
{
    takeDown();
}

void fw_require_initialized()
{
    if (!fw_initialized)
        stop("FW library must be initialized");
}

uintptr_t fw_setting_get(const char* key)
{
    fw_require_initialized();
    if (!fw_settings)
        return 0;
    const fw_hash_table<uintptr_t>::iterator found = fw_settings->find(key);
    return found == fw_settings->end() ? 0 : fw_settings->at(found).value;
}

bool fw_setting_set(const char* key, uintptr_t value)
{
    fw_require_initialized();
    if (!fw_settings)
        return false;
    fw_settings->set(key, value);
    return true;
}

fw_string fw_build_stamp_of(const char* date, const char* time)
{
    int month = 0;
    for (int i = 0; i < 12; ++i) {
        if (std::strncmp(date, monthNames[i], 3) == 0)
            month = i + 1;
    }
    // The day is padded with a blank below 10: "Feb  5 2013".
    const int day = std::atoi(date + 4);
    const int year = std::atoi(date + 7);
    const int hour = std::atoi(time);
    const int minute = std::atoi(time + 3);
    return fw_format("FW%{1}02d%{2}02d%{3}02d-%{4}02d%{5}02d", year % 100, month, day, hour, minute);
}

fw_string fw_product_name()
{
    return valueOr(productName, "");
}

fw_string fw_vendor_name()
{
    return valueOr(vendorName, "Vendor");
}

fw_string fw_support_address()
{
    return valueOr(supportAddress, "");
}

fw_product_version fw_product_version_get()
{
    fw_require_initialized();
    return productVersion;
}

namespace {

void replaceValue(fw_string*& value, const fw_string& text)
{
    fw_require_initialized();
    fw_string* const made = new fw_string(text);
    delete value;
    value = made;
}

}  // namespace

void fw_set_product_name(const fw_string& name)
{
    replaceValue(productName, name);
}

void fw_set_vendor_name(const fw_string& name)
{
    replaceValue(vendorName, name);
}

void fw_set_support_address(const fw_string& address)
{
    replaceValue(supportAddress, address);
}

void fw_set_product_version(const fw_product_version& version)
{
    fw_require_initialized();
    productVersion = version;
}
