// Something that takes the exceptions of a failure that is about to end the process.
//
// fw_report_fatal (fw/fw_raise.h) calls handle exactly twice, on the thread that
// faulted and while an exception is still unwinding its stack: first with the
// exception that was being handled, then with the one that came on top of it (the
// same pointer twice when there was only one). A report acts on the second call.
// handle owns what it is handed, may be given one object twice and deletes it once,
// and must not throw: fw_report_fatal swallows whatever gets out, and the process
// ends with exit code 1 either way.
#pragma once
#include "fw/fw_exception.h"

class fw_report
{
public:
    fw_report() = default;
    fw_report(const fw_report&) = delete;
    fw_report& operator=(const fw_report&) = delete;
    virtual ~fw_report() = default;
    virtual void handle(fw_exception* exception) = 0;
};
