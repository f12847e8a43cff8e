// The cost of a Framework exception, which walks the stack when it is built, against
// a std::runtime_error, each thrown four calls deep and caught. The program looks for
// symbols as every Framework program does: the copy in symbols/ has a .pdb beside it,
// the one beside the other benchmarks has none. Run both.
#include "Framework/Exceptions.h"
#include "Framework/Io/FileSystem.h"
#include "Framework/Io/Path.h"
#include "bench/BenchClock.h"

#include <stdexcept>

using namespace bench;

namespace {

__attribute__((noinline)) void deep(int depth, void (*raise)())
{
    if (depth == 0)
        raise();
    else
        deep(depth - 1, raise);
    asm volatile("");
}

}  // namespace

int main()
{
    Framework::Io::Path pdb(Framework::Io::FileSystem::moduleFileName(), false);
    pdb.setExtension(L".pdb");
    const bool symbols = pdb.exists();
    const int rounds = symbols ? 40 : 200;

    compare(symbols ? "throw and catch 4 deep, with symbols" : "throw and catch 4 deep, no symbols",
            "std::runtime_error", rounds,
            [](int n) {
                for (int i = 0; i < n; ++i) {
                    try {
                        deep(4, [] { throw new Framework::ErrorException(SITE); });
                    } catch (Framework::Exception* caught) {
                        sink = caught->getStackDump()->length();
                        delete caught;
                    }
                }
            },
            [](int n) {
                for (int i = 0; i < n; ++i) {
                    try {
                        deep(4, [] { throw std::runtime_error("thrown"); });
                    } catch (const std::runtime_error& caught) {
                        sink = size_t(caught.what()[0]);
                    }
                }
            });
    return 0;
}
