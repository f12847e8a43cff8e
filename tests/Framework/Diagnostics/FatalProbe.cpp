// A program that breaks in the ways its arguments name, in order, for the fatal
// handlers' tests; "log" logs a few messages instead. It logs nothing else of its own;
// where it survives, standard output says how. Built twice: as a console program and
// as one of the windows subsystem, where msvcrt would report in a box.
#include "Framework/Diagnostics/Crt.h"
#include "Framework/Exceptions.h"
#include "Framework/Log/Context.h"
#include "Framework/Log/Logger.h"
#include "fw/fw_exception.h"
#include "support/Exhaustion.h"

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
void expectCaught(const char* what, Body body)
{
    try {
        body();
        std::printf("returned\n");
    } catch (E* raw) {
        std::unique_ptr<E> caught(raw);
        std::printf("caught %s\n", what);
    }
}

}  // namespace

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        const std::string way = argv[i];
        if (way == "log") {
            Log::Context framework(L"Framework", Log::Logger::instance);
            Log::Context other(L"Other", Log::Logger::instance);
            framework.debug(LOG_SITE, "not at INFO");
            framework.error(LOG_SITE, "first %S", L"100% %d");
            other.debug(LOG_SITE, "not at WARNING");
            other.error(LOG_SITE, "second");
        } else if (way == "purecall") {
            expectCaught<ErrorException>("ErrorException", [] { FatalProbeDerived derived; });
        } else if (way == "invalid") {
            expectCaught<ErrorException>("ErrorException", [] {
                Cleanup cleanup;
                char buffer[2];
                strcpy_s(buffer, sizeof buffer, "too long");
            });
        } else if (way == "insufficient") {
            expectCaught<fw_exception_memory>("fw_exception_memory", [] { Crt::handleInsufficientMemory(16); });
        } else if (way == "new") {
            expectCaught<fw_exception_memory>("fw_exception_memory", exhaustion::allocateTooMuch);
        } else if (way == "malloc") {
            void* volatile block = std::malloc(exhaustion::tooMuch());
            std::printf(block ? "malloc gave a block\n" : "malloc gave null\n");
            std::free(block);
        } else if (way == "unrecoverable") {
            // No Framework exception is in flight, so the handler has no previous one to print.
            try {
                BuildsWhileUnwinding builds;
                throw 1;
            } catch (int) {
            }
            std::printf("returned\n");
        } else if (way == "runtime-assert") {
            _assert("false", __FILE__, __LINE__);
        } else {
            std::printf("unknown way\n");
            return 2;
        }
    }
    return 0;
}
