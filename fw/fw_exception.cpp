#include "fw/fw_exception.h"

#include "fw/fw_format.h"
#include "fw/fw_library.h"
#include "fw/fw_raise.h"
#include "fw/fw_stack_dump.h"

int32_t fw_exception_nesting = 0;

namespace {

// From this many live exceptions on, assertion messages are left out.
const int32_t deepNesting = 4;

fw_string joined(const fw_string& message, const fw_string& detail)
{
    if (detail.empty())
        return message;
    if (message.empty())
        return detail;
    return message + " : " + detail;
}

}  // namespace

fw_exception::fw_exception(const fw_string& message, const fw_string& stack)
    : messageText(message), stackDump(stack)
{
    ++fw_exception_nesting;
}

fw_exception::~fw_exception()
{
    if (fw_exception_nesting > 0)
        --fw_exception_nesting;
    if (fw_current_exception() == this)
        fw_clear_current();
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
        // The product name exists only while the layer is up; an exception outlives
        // it (the terminate handler may ask after the teardown) and then has none.
        whatText = (fw_initialized ? fw_product_name() : fw_string()) + " Error";
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

// The stack dump is taken here, so that its first address is where the exception is
// made, not somewhere inside the family.
fw_exception_assert::fw_exception_assert(const fw_string& where, const fw_string& message,
                                         const fw_string& detail, const fw_string& more)
    : fw_exception(joined(message, detail), fw_stack_dump(nullptr)), location(where), extra(more)
{
}

fw_string fw_exception_assert::message() const
{
    if (fw_exception_nesting >= deepNesting)
        return fw_string();
    return messageText;
}

const char* fw_exception_assert::title() const
{
    return "Assert exception";
}

fw_string fw_exception_assert::details() const
{
    if (extra.empty())
        return stackDump;
    return fw_format("%{1}s\r\n\r\n%{2}s", stackDump.c_str(), extra.c_str());
}

fw_exception_purecall::fw_exception_purecall()
    : fw_exception_assert(fw_string(), fw_string("Pure Virtual Function Call"), fw_string(), fw_string())
{
}

fw_exception_info::fw_exception_info(const fw_string& message) : fw_exception(message, fw_stack_dump(nullptr))
{
}

const char* fw_exception_info::title() const
{
    return "Info exception";
}

fw_exception_memory::fw_exception_memory()
    : fw_exception_info(fw_string("Insufficient memory to perform the operation.\r\n\r\n"
                                  "You can free additional memory by closing\r\nother applications."))
{
}

const char* fw_exception_memory::title() const
{
    return "memory exception";
}
