#include "fw/fw_exception.h"

#include "fw/fw_library.h"

int32_t fw_exception_nesting = 0;

fw_exception::fw_exception(const fw_string& message, const fw_string& stackDump)
    : messageText(message), stackDump(stackDump)
{
    ++fw_exception_nesting;
}

fw_exception::~fw_exception()
{
    if (fw_exception_nesting > 0)
        --fw_exception_nesting;
}

fw_string fw_exception::message() const
{
    return messageText;
}

const char* fw_exception::title() const
{
    return "General exception";
}

fw_string fw_exception::details() const
{
    return stackDump;
}

const char* fw_exception::what()
{
    if (whatText.empty()) {
        whatText = fw_product_name() + " Error";
        whatText.trim_left();
        whatText.trim_right();
    }
    return whatText.c_str();
}

void fw_exception::setDetails(const fw_string& text)
{
    if (text.c_str() != stackDump.c_str())
        stackDump = text;
}
