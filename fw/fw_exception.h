// The root of every exception in the library, of both layers, and the FW layer's own
// family under it. All of them are thrown as pointers to objects made with new;
// whoever catches one owns it and deletes it through the virtual destructor. Before
// an FW exception is thrown it goes through fw_raise (fw/fw_raise.h); assertion sites
// use FW_ASSERT (fw/fw_assert.h), which does both.
//
//   fw_exception                 "General exception"
//     fw_exception_assert        "Assert exception"   failed assertions, hardware faults
//       fw_exception_purecall    "Assert exception"   a call of a pure virtual function
//     fw_exception_info          "Info exception"     a message for the user
//       fw_exception_memory      "memory exception"   exhausted memory
//
// fw_exception_nesting counts the live objects of the family (Framework exceptions
// included, since they derive from this root). It is a plain, unlocked counter that
// never goes below 0: an indication used to keep texts short at depth. With 4 or more
// alive, an assertion's message() is empty; an info exception still gives its text.
//
// The constructors of fw_exception_assert and fw_exception_info take a stack dump of
// return addresses (fw_stack_dump), so building one costs a walk of the stack.
#pragma once
#include "fw/fw_string.h"

extern int32_t fw_exception_nesting;

class fw_exception
{
public:
    fw_exception(const fw_string& message, const fw_string& stackDump);
    fw_exception(const fw_exception&) = delete;
    fw_exception& operator=(const fw_exception&) = delete;
    // Also empties the thread's current-exception slot if it holds this object.
    virtual ~fw_exception();

    // The virtual operations keep this slot order in every derived class.
    virtual fw_string message() const;
    virtual const char* title() const;
    virtual fw_string details() const;
    // "<product> Error" with blanks cut at both ends, "Error" when the product has no
    // name or the layer is down; built on the first call and good for the life of
    // the object. Callable with the layer down.
    virtual const char* what();
    // Replaces the stack dump, unless it is the very same text block.
    virtual void setDetails(const fw_string& text);

protected:
    fw_string messageText;
    fw_string stackDump;
    fw_string whatText;
};

class fw_exception_assert : public fw_exception
{
public:
    // The message is `message` and `detail` joined with " : ", or whichever of the two
    // is not empty. `location` is the source tag and the line in upper-case hex, as
    // FW_ASSERT makes it; `extra` goes behind the stack dump in details().
    fw_exception_assert(const fw_string& location, const fw_string& message, const fw_string& detail,
                        const fw_string& extra);

    // Empty while 4 or more exceptions are alive.
    fw_string message() const override;
    const char* title() const override;
    // The stack dump, and with a non-empty `extra` "\r\n\r\n" and `extra` behind it; the
    // dump ends in a line end already, so two blank lines stand between them.
    fw_string details() const override;

    const fw_string& get_location() const { return location; }

protected:
    fw_string location;
    fw_string extra;
};

class fw_exception_purecall : public fw_exception_assert
{
public:
    // "Pure Virtual Function Call", no location.
    fw_exception_purecall();
};

class fw_exception_info : public fw_exception
{
public:
    explicit fw_exception_info(const fw_string& message);

    const char* title() const override;
};

class fw_exception_memory : public fw_exception_info
{
public:
    // The fixed text that tells the user to close other applications.
    fw_exception_memory();

    const char* title() const override;
};
