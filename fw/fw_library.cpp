#include "fw/fw_library.h"

namespace {

// Owned, and null until someone names the product.
fw_string* productName = nullptr;
fw_string* vendorName = nullptr;
fw_string* supportAddress = nullptr;

fw_string valueOr(const fw_string* value, const char* fallback)
{
    return value ? *value : fw_string(fallback);
}

}  // namespace

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
