// The report of a failure during the handling of a failure: the last thing the FW
// layer does before the process ends (fw_report_fatal, fw/fw_raise.h). It takes the
// exception that was being handled, then the one that came on top of it, and mails
// both, the later one first, with a line naming the build, to the product's support
// address (fw_support_address) through the default mail client (fw_send_mail).
//
// Without a support address, the default, it builds the text and sends nothing, and
// says nothing. When the mail cannot be sent it writes "Warning: Failed to send
// message" to the standard error stream. Holding Ctrl down while it runs opens the
// mail client's own window. The setting "attach id", when set, points at the path of
// a file to attach.
//
// The two fields may hold the same object (fw_raise hands a lone exception twice); it
// is deleted once. A third exception handed in is not kept: it is deleted at once.
#pragma once
#include "fw/fw_report.h"

class fw_error_report : public fw_report
{
public:
    fw_error_report() = default;
    ~fw_error_report() override;

    // The first call keeps the exception; the second keeps it too and sends.
    void handle(fw_exception* exception) override;

    // "Error Report - " and the product line.
    virtual fw_string subject();
    // The product line, two line feeds and `text`.
    virtual fw_string body(const fw_string& text);
    // fw_support_address().
    virtual fw_string address();
    // Mails `text` to address(); see above.
    virtual void send(const fw_string& text, bool showDialog);

    // "<product><suffix> <major>.<minor> build <build> <buildtime>", with the defaults
    // " 0.0 build 0 FWyymmdd-hhmm".
    static fw_string product_line();

protected:
    void deliver(const fw_string& message, const fw_string& details);

    fw_exception* first = nullptr;
    fw_exception* second = nullptr;
};
