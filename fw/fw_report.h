// Something that takes the exceptions of a failure that is about to end the process.
// It owns what it is handed.
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
