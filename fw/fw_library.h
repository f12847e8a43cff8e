// The lifetime of the FW layer: one fw_library object at a time, the base of every
// action call's object, so the layer exists exactly while an action runs.
//
// The bring-up and teardown of the layer's process-wide objects (handlers, fault
// translation, settings, build stamp) arrive with the rest of the FW layer; until
// then the object marks the call's span and the product values keep their defaults.
#pragma once
#include "fw/fw_string.h"

class fw_library
{
public:
    fw_library() = default;
    fw_library(const fw_library&) = delete;
    fw_library& operator=(const fw_library&) = delete;
    virtual ~fw_library() = default;
};

// The layer's idea of the product. Nothing in the library sets these values, so
// they stay at their defaults: "Vendor" and empty texts.
fw_string fw_product_name();
fw_string fw_vendor_name();
fw_string fw_support_address();
