// A mail client of the tests' own: a Simple MAPI library that records what it is
// handed and answers as the test tells it. It is test code, plain C, built apart
// from the library, and registered as the machine's default client by MailClient.cpp.
//
// Each call reads its orders from HKCU "Software\WixKorvalin Tests\Mail client":
//   "Record"  the file to which every call is appended (no file: nothing is recorded)
//   "Answer"  "success" (the default), "refuse" (MAPI_E_USER_ABORT), "logon refused"
//             (MAPILogon fails, sending succeeds), "attachment open" or "attachment
//             write" (12 or 13 while the mail carries a file, success without one),
//             "attachment missing" (11 while it carries one), or "crash" (a null
//             write inside MAPISendMail).
//
// The record is fields of key and value, each text ended by a NUL byte, and each call
// opened by "call" with its name and the "module" that took it. MAPISendMail adds
// "session", "flags", "subject", "note", "date", "messageFlags", "originator.name"
// and ".address", the same for "recipient0" and on, "files" and "file0.path" and on;
// MAPILogoff adds "session". A null pointer is written "<null>".
#include <windows.h>
#include <mapi.h>

#include <stdio.h>
#include <string.h>

#define CONTROL_KEY "Software\\WixKorvalin Tests\\Mail client"
#define SESSION 0x5E55

static void readOrder(const char* name, char* value, DWORD size)
{
    value[0] = 0;
    if (RegGetValueA(HKEY_CURRENT_USER, CONTROL_KEY, name, RRF_RT_REG_SZ, NULL, value, &size) != ERROR_SUCCESS)
        value[0] = 0;
}

static int answerIs(const char* wanted)
{
    char answer[64];
    readOrder("Answer", answer, sizeof answer);
    return strcmp(answer, wanted) == 0;
}

static void text(FILE* record, const char* key, const char* value)
{
    fprintf(record, "%s%c%s%c", key, 0, value ? value : "<null>", 0);
}

static void number(FILE* record, const char* key, unsigned long value)
{
    char digits[16];
    snprintf(digits, sizeof digits, "%lu", value);
    text(record, key, digits);
}

static FILE* openRecord(const char* call)
{
    char path[MAX_PATH];
    readOrder("Record", path, sizeof path);
    FILE* record = path[0] ? fopen(path, "ab") : NULL;
    if (!record)
        return NULL;
    char module[MAX_PATH] = "";
    HMODULE self = NULL;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       (LPCSTR)&openRecord, &self);
    GetModuleFileNameA(self, module, sizeof module);
    text(record, "call", call);
    text(record, "module", module);
    return record;
}

static void recipient(FILE* record, const char* prefix, const MapiRecipDesc* who)
{
    char key[64];
    snprintf(key, sizeof key, "%s.name", prefix);
    text(record, key, who ? who->lpszName : NULL);
    snprintf(key, sizeof key, "%s.address", prefix);
    text(record, key, who ? who->lpszAddress : NULL);
}

ULONG WINAPI MAPILogon(ULONG_PTR uiParam, LPSTR profile, LPSTR password, FLAGS flags, ULONG reserved,
                       LPLHANDLE session)
{
    FILE* record = openRecord("MAPILogon");
    if (record)
        fclose(record);
    if (answerIs("logon refused"))
        return MAPI_E_LOGIN_FAILURE;
    *session = SESSION;
    return SUCCESS_SUCCESS;
}

ULONG WINAPI MAPISendMail(LHANDLE session, ULONG_PTR uiParam, lpMapiMessage message, FLAGS flags, ULONG reserved)
{
    FILE* record = openRecord("MAPISendMail");
    if (record) {
        number(record, "session", (unsigned long)session);
        number(record, "flags", flags);
        text(record, "subject", message->lpszSubject);
        text(record, "note", message->lpszNoteText);
        text(record, "date", message->lpszDateReceived);
        number(record, "messageFlags", message->flFlags);
        recipient(record, "originator", message->lpOriginator);
        for (ULONG i = 0; i < message->nRecipCount; ++i) {
            char prefix[32];
            snprintf(prefix, sizeof prefix, "recipient%lu", i);
            recipient(record, prefix, &message->lpRecips[i]);
        }
        number(record, "files", message->nFileCount);
        for (ULONG i = 0; i < message->nFileCount; ++i) {
            char key[32];
            snprintf(key, sizeof key, "file%lu.path", i);
            text(record, key, message->lpFiles[i].lpszPathName);
        }
        fclose(record);
    }
    if (answerIs("crash"))
        *(volatile int*)NULL = 1;
    if (answerIs("refuse"))
        return MAPI_E_USER_ABORT;
    if (message->nFileCount != 0) {
        if (answerIs("attachment open"))
            return MAPI_E_ATTACHMENT_OPEN_FAILURE;
        if (answerIs("attachment write"))
            return MAPI_E_ATTACHMENT_WRITE_FAILURE;
        if (answerIs("attachment missing"))
            return MAPI_E_ATTACHMENT_NOT_FOUND;
    }
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
