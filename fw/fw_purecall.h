// What a call of a pure virtual function does: a call through an object whose
// construction or destruction is under way in a base class, or through an object
// already destroyed. The compiler's code calls __cxa_pure_virtual for it, and this
// module brings its own, which runs the handler set here. The FW layer's bring-up
// sets fw_raise_purecall, which raises and throws an fw_exception_purecall; with no
// handler set the call writes "pure virtual method called" to the standard error
// stream and terminates, as the C++ runtime's own would.
//
// The handler is the module's, not the process's: other modules keep theirs. It stays
// set when the layer goes down.
#pragma once

using fw_purecall_handler = void (*)();

// Null sets none. Returns the handler set before.
fw_purecall_handler fw_set_purecall_handler(fw_purecall_handler handler);

// Makes an fw_exception_purecall, raises it (fw_raise) and throws it.
[[noreturn]] void fw_raise_purecall();
