// The root of every exception in the library, of both layers. All of them are
// thrown as pointers to objects made with new; whoever catches one owns it and
// deletes it through the virtual destructor.
//
// fw_exception_nesting counts the live objects of the family (Framework exceptions
// included, since they derive from this root). It is a plain, unlocked counter that
// never goes below 0: an indication used to keep texts short at depth.
#pragma once
#include "fw/fw_string.h"

extern int32_t fw_exception_nesting;

class fw_exception
{
public:
    fw_exception(const fw_string& message, const fw_string& stackDump);
    fw_exception(const fw_exception&) = delete;
    fw_exception& operator=(const fw_exception&) = delete;
    virtual ~fw_exception();

    // The virtual operations keep this slot order in every derived class.
    virtual fw_string message() const;
    virtual const char* title() const;
    virtual fw_string details() const;
    // "<product> Error" with blanks cut at both ends; built on the first call and
    // good for the life of the object.
    virtual const char* what();
    // Replaces the stack dump, unless it is the very same text block.
    virtual void setDetails(const fw_string& text);

protected:
    fw_string messageText;
    fw_string stackDump;
    fw_string whatText;
};
