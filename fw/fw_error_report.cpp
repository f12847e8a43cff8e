#include "fw/fw_error_report.h"

#include "fw/fw_format.h"
#include "fw/fw_library.h"
#include "fw/fw_send_mail.h"

#include <windows.h>

#include <cstdio>

namespace {

// A setting that holds a pointer to text; null when it is not set.
const char* settingText(const char* key)
{
    return reinterpret_cast<const char*>(uintptr_t(fw_setting_get(key)));
}

}  // namespace

fw_error_report::~fw_error_report()
{
    if (second != first)
        delete second;
    delete first;
}

fw_string fw_error_report::product_line()
{
    // A failure may strike while the layer is down; the line then names no build.
    const bool up = fw_initialized;
    const char* buildTime = up ? settingText("buildtime") : nullptr;
    const fw_product_version version = up ? fw_product_version_get() : fw_product_version{};
    return fw_format("%{1}s%{2}s %{3}d.%{4}d build %{5}d %{6}s", up ? fw_product_name().c_str() : "", "",
                     version.major, version.minor, version.build, buildTime ? buildTime : "");
}

void fw_error_report::handle(fw_exception* exception)
{
    if (!first) {
        first = exception;
        return;
    }
    if (!second)
        second = exception;
    else if (exception != first && exception != second)
        delete exception;
    const fw_string text1 = fw_format("Internal error:\r\n%{1}s", first->message().c_str());
    const fw_string text2 = fw_format("Double nested error:\r\n%{1}s\r\n", second->message().c_str());
    fw_string message = text2;
    message.append(text1.c_str());
    fw_string details = second->details();
    details.append("\r\n");
    details.append(first->details().c_str());
    deliver(message, details);
}

void fw_error_report::deliver(const fw_string& message, const fw_string& details)
{
    const fw_string text =
        details.empty() ? message : fw_format("%{1}s\r\n\r\n%{2}s", message.c_str(), details.c_str());
    // The Ctrl key held down asks for the mail client's window.
    send(body(text), GetKeyState(VK_CONTROL) < 0);
}

fw_string fw_error_report::subject()
{
    fw_string text("Error Report - ");
    text.append(product_line().c_str());
    return text;
}

fw_string fw_error_report::body(const fw_string& text)
{
    fw_string result = product_line();
    result.append("\n\n");
    result.append(text.c_str());
    return result;
}

fw_string fw_error_report::address()
{
    // With the layer down there is no support address to be had.
    return fw_initialized ? fw_support_address() : fw_string();
}

void fw_error_report::send(const fw_string& text, bool showDialog)
{
    const fw_string to = address();
    if (to.empty())
        return;
    const char* attachment = fw_initialized ? settingText("attach id") : nullptr;
    if (!fw_send_mail(to, subject(), text, fw_vendor_name(), fw_string(attachment), showDialog))
        std::fprintf(stderr, "\n%s%s\n", "Warning: ", "Failed to send message");
}
