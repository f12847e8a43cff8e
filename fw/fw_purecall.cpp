#include "fw/fw_purecall.h"

#include "fw/fw_exception.h"
#include "fw/fw_raise.h"

#include <cstdio>
#include <exception>

namespace {

fw_purecall_handler purecallHandler = nullptr;

[[noreturn]] void runtime_default(const char* what)
{
    std::fputs(what, stderr);
    std::terminate();
}

}  // namespace

// Defined here rather than taken from the C++ runtime, so that the layer can make a
// pure call an exception; both entries of the runtime's own file are given, so that
// its copy is never linked beside this one.
extern "C" void __cxa_pure_virtual()
{
    if (purecallHandler)
        purecallHandler();
    runtime_default("pure virtual method called\n");
}

extern "C" void __cxa_deleted_virtual()
{
    runtime_default("deleted virtual method called\n");
}

fw_purecall_handler fw_set_purecall_handler(fw_purecall_handler handler)
{
    const fw_purecall_handler previous = purecallHandler;
    purecallHandler = handler;
    return previous;
}

void fw_raise_purecall()
{
    fw_exception_purecall* exception = new fw_exception_purecall();
    fw_raise(exception);
    throw exception;
}
