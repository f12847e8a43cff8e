// A mail client of the tests' own: a Simple MAPI library that records what it is
// handed and answers as the test tells it. It is test code, plain C, built apart
// from the library, and registered as the machine's default client by MailClient.cpp.
//
// Each call reads its orders from HKCU "Software\WixKorvalin Tests\Mail client":
//   "Record"  the file to which every call is appended (no file: nothing is recorded)
//   "Answer"  "success" (the default), "refuse" (MAPI_E_USER_ABORT), "logon refused"
//             (MAPILogon fails, sending succeeds), or "crash" (a null write inside
//             MAPISendMail).
//
// The record is fields of key and value, each text ended by a NUL byte, and each call
// opened by "call" with its name and the "module" that took it. MAPISendMail adds
// "session", "flags", "subject", "note", "date", "messageFlags", "originator.address",
// "recipient0.name" and ".address" and on for each recipient, and "files";
// MAPILogoff adds "session". A null pointer is written "<null>".
#include <windows.h>
#include <mapi.h>

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

extern IMAGE_DOS_HEADER __ImageBase;  // this library's own image, as the linker names it

#define CONTROL_KEY "Software\\WixKorvalin Tests\\Mail client"

static void readOrder(const char* name, char* value, DWORD size)
{
    if (RegGetValueA(HKEY_CURRENT_USER, CONTROL_KEY, name, RRF_RT_REG_SZ, NULL, value, &size) != ERROR_SUCCESS)
        value[0] = 0;
}

static int answerIs(const char* wanted)
{
    char answer[64];
    readOrder("Answer", answer, sizeof answer);
    return strcmp(answer, wanted) == 0;
}

// One field: its key, printf-style, and its text.
static void field(FILE* record, const char* value, const char* keyFormat, ...)
{
    va_list args;
    va_start(args, keyFormat);
    vfprintf(record, keyFormat, args);
    va_end(args);
    fprintf(record, "%c%s%c", 0, value ? value : "<null>", 0);
}

static void number(FILE* record, const char* key, unsigned long value)
{
    char digits[16];
    snprintf(digits, sizeof digits, "%lu", value);
    field(record, digits, "%s", key);
}

static FILE* openRecord(const char* call)
{
    char path[MAX_PATH];
    readOrder("Record", path, sizeof path);
    FILE* record = path[0] ? fopen(path, "ab") : NULL;
    if (!record)
        return NULL;
    char module[MAX_PATH] = "";
    GetModuleFileNameA((HMODULE)&__ImageBase, module, sizeof module);
    field(record, call, "call");
    field(record, module, "module");
    return record;
}

ULONG WINAPI MAPILogon(ULONG_PTR uiParam, LPSTR profile, LPSTR password, FLAGS flags, ULONG reserved,
                       LPLHANDLE session)
{
    FILE* record = openRecord("MAPILogon");
    if (record)
        fclose(record);
    if (answerIs("logon refused"))
        return MAPI_E_LOGIN_FAILURE;
    *session = 0x5E55;
    return SUCCESS_SUCCESS;
}

ULONG WINAPI MAPISendMail(LHANDLE session, ULONG_PTR uiParam, lpMapiMessage message, FLAGS flags, ULONG reserved)
{
    FILE* record = openRecord("MAPISendMail");
    if (record) {
        number(record, "session", (unsigned long)session);
        number(record, "flags", flags);
        field(record, message->lpszSubject, "subject");
        field(record, message->lpszNoteText, "note");
        field(record, message->lpszDateReceived, "date");
        number(record, "messageFlags", message->flFlags);
        field(record, message->lpOriginator ? message->lpOriginator->lpszAddress : NULL, "originator.address");
        for (ULONG i = 0; i < message->nRecipCount; ++i) {
            field(record, message->lpRecips[i].lpszName, "recipient%lu.name", i);
            field(record, message->lpRecips[i].lpszAddress, "recipient%lu.address", i);
        }
        number(record, "files", message->nFileCount);
        fclose(record);
    }
    if (answerIs("crash"))
        *(volatile int*)NULL = 1;
    if (answerIs("refuse"))
        return MAPI_E_USER_ABORT;
    return SUCCESS_SUCCESS;
}

ULONG WINAPI MAPILogoff(LHANDLE session, ULONG_PTR uiParam, FLAGS flags, ULONG reserved)
{
    FILE* record = openRecord("MAPILogoff");
    if (record) {
        number(record, "session", (unsigned long)session);
        fclose(record);
    }
    return SUCCESS_SUCCESS;
}
