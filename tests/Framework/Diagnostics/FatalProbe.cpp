// A program that breaks in the way its argument names, for the fatal handlers' tests.
// It logs nothing of its own but through the handlers (and "log", which logs a few
// messages); where it survives, standard output says how.
#include "Framework/Diagnostics/Crt.h"
#include "Framework/Exceptions.h"
#include "Framework/Log/Context.h"
#include "Framework/Log/Logger.h"
#include "fw/fw_exception.h"
#include "support/Exhaustion.h"

#include <cstdio>
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
    if (way == "insufficient")
        return expectCaught<fw_exception_memory>("fw_exception_memory", [] { Crt::handleInsufficientMemory(16); });
    if (way == "die")
        HardwareExceptionsHandling::die();
    std::printf("unknown way\n");
    return 2;
}
