// A program that breaks in the ways its arguments name, in order, for the fatal
// handlers' tests; "log" logs a few messages instead, and "TZ=<zone>" prints the log's
// clock in that zone. It logs nothing else of its own, and after each way it survives
// prints what it caught. Built twice: as a console program and as one of the windows
// subsystem, where msvcrt would report in a box.
#include "Framework/Exceptions.h"
#include "Framework/Log/Context.h"
#include "Framework/Log/Logger.h"
#include "fw/fw_exception.h"
#include "support/Exhaustion.h"

#include <assert.h>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
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

const std::map<std::string, std::function<void()>> ways = {
    {"log",
     [] {
         Log::Context framework(L"Framework", Log::Logger::instance);
         Log::Context other(L"Other", Log::Logger::instance);
         framework.error(LOG_SITE, "first %S", L"100% %d");
         other.debug(LOG_SITE, "not at ERROR");
         other.error(LOG_SITE, "second");
     }},
    {"purecall", [] { FatalProbeDerived derived; }},
    {"invalid",
     [] {
         Cleanup cleanup;
         char buffer[2];
         strcpy_s(buffer, sizeof buffer, "too long");
     }},
    {"new", exhaustion::allocateTooMuch},
    {"malloc",
     [] {
         void* volatile block = std::malloc(exhaustion::tooMuch());
         std::printf(block ? "malloc gave a block\n" : "malloc gave null\n");
         std::free(block);
     }},
    // No Framework exception is in flight, so the handler has no previous one to print.
    {"unrecoverable",
     [] {
         try {
             BuildsWhileUnwinding builds;
             throw 1;
         } catch (int) {
         }
     }},
    {"runtime-assert", [] { _assert("false", __FILE__, __LINE__); }},
};

}  // namespace

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "TZ=", 3) == 0) {
            _putenv(argv[i]);
            std::printf("%" PRIu64 "\n", Log::Logger::currentTime());
            continue;
        }
        try {
            ways.at(argv[i])();
            std::printf("returned\n");
        } catch (ErrorException* raw) {
            delete raw;
            std::printf("caught ErrorException\n");
        } catch (fw_exception_memory* raw) {
            delete raw;
            std::printf("caught fw_exception_memory\n");
        }
    }
    return 0;
}
