// A program that breaks in the way its argument names, for the fatal handlers' tests.
// It logs nothing of its own but through the handlers (and "log", which logs a few
// messages); where it survives, standard output says how. Built twice: as a console
// program and as one of the windows subsystem, where msvcrt would report in a box.
#include "Framework/Diagnostics/Crt.h"
#include "Framework/Exceptions.h"
#include "Framework/Log/Context.h"
#include "Framework/Log/Logger.h"
#include "fw/fw_exception.h"
#include "fw/fw_library.h"
#include "support/Exhaustion.h"

#include <windows.h>

#include <assert.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

using namespace Framework;

// Outside the anonymous namespace: seeing the whole class tree, the compiler would
// find that the only call allowed is the derived one and drop the pure call.
struct FatalProbeBase;
FatalProbeBase* volatile underConstruction = nullptr;

// Calls its pure function while it is being made, through the base's table.
struct FatalProbeBase
{
    FatalProbeBase()
    {
        underConstruction = this;
        underConstruction->run();
    }
    virtual ~FatalProbeBase() = default;
    virtual void run() = 0;
};

struct FatalProbeDerived : FatalProbeBase
{
    void run() override {}
};

namespace {

struct Cleanup
{
    ~Cleanup() { std::printf("cleaned up\n"); }
};

// Builds an exception while another one unwinds the stack: the unrecoverable case.
struct BuildsWhileUnwinding
{
    ~BuildsWhileUnwinding() { delete new ErrorException(SITE); }
};

template <class E, class Body>
int expectCaught(const char* what, Body body)
{
    try {
        body();
        std::printf("returned\n");
    } catch (E* raw) {
        std::unique_ptr<E> caught(raw);
        std::printf("caught %s\n", what);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    const std::string way = argc > 1 ? argv[1] : "";
    if (way == "log") {
        Log::Context framework(L"Framework", Log::Logger::instance);
        Log::Context other(L"Other", Log::Logger::instance);
        framework.debug(LOG_SITE, "not at INFO");
        framework.error(LOG_SITE, "first %S", L"error");
        other.debug(LOG_SITE, "not at WARNING");
        other.error(LOG_SITE, "second");
        return 0;
    }
    if (way == "terminate")
        throw new ErrorException(SITE);
    if (way == "purecall")
        return expectCaught<ErrorException>("ErrorException", [] { FatalProbeDerived derived; });
    if (way == "invalid") {
        return expectCaught<ErrorException>("ErrorException", [] {
            Cleanup cleanup;
            char buffer[2];
            strcpy_s(buffer, sizeof buffer, "too long");
        });
    }
    if (way == "memory") {
        return expectCaught<fw_exception_memory>("fw_exception_memory", exhaustion::allocateTooMuch);
    }
    if (way == "malloc") {
        void* volatile block = std::malloc(exhaustion::tooMuch());
        std::printf(block ? "malloc gave a block\n" : "malloc gave null\n");
        std::free(block);
        return 0;
    }
    if (way == "insufficient")
        return expectCaught<fw_exception_memory>("fw_exception_memory", [] { Crt::handleInsufficientMemory(16); });
    if (way == "die")
        HardwareExceptionsHandling::die();
    if (way == "unrecoverable") {
        // Not a Framework exception in flight, so the handler has no previous one to print.
        try {
            BuildsWhileUnwinding builds;
            throw 1;
        } catch (int) {
        }
        std::printf("returned\n");
        return 0;
    }
    // The ways to abort: our own code, the FW layer's stop, and two of msvcrt's own
    // roads (its C++ terminate without a handler, and a failed assertion).
    if (way == "abort")
        std::abort();
    if (way == "double-bring-up") {
        fw_library first;
        fw_library second;
    }
    if (way == "runtime-terminate") {
        using Terminate = void(__cdecl*)();
        const auto terminate = reinterpret_cast<Terminate>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"msvcrt.dll"), "?terminate@@YAXXZ")));
        if (terminate)
            terminate();
    }
    if (way == "runtime-assert")
        _assert("false", __FILE__, __LINE__);
    std::printf("unknown way\n");
    return 2;
}
