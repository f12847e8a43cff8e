#include "Framework/Io/FileInputStream.h"

namespace Framework { namespace Io {

FileInputStream::~FileInputStream() = default;

uint32_t FileInputStream::read(void* buffer, uint32_t count)
{
    FILE* const stream = file.require();
    if (count == String::npos) {
        const uint64_t rest = file.remaining();
        count = rest < String::npos ? uint32_t(rest) : String::npos;
    }
    const uint32_t got = readFile(stream, buffer, count);
    file.passed(got, false);
    return got;
}

}}  // namespace Framework::Io
