/* A mail client of the tests' own: a Simple MAPI library that records everything it
   is handed and answers as the test tells it. It is test code, plain C, built apart
   from the library, and registered as the machine's default client by MailClient.cpp.

   Each call reads its orders from HKCU "Software\WixKorvalin Tests\Mail client":
     "Record"  the file to which every call is appended (no file: nothing is recorded)
     "Answer"  "success" (the default), "refuse" (MAPI_E_USER_ABORT), "logon refused"
               (MAPILogon fails, sending succeeds), "attachment open" or "attachment
               write" (12 or 13 while the mail carries a file, success without one),
               "attachment missing" (11 while it carries one), or "crash" (a null
               write inside MAPISendMail).

   The record is lines of "key=value", each call opened by "call=<name>"; CR, LF and
   backslash in texts are written \r, \n and \\, and a null pointer as <null>. */
#include <windows.h>
#include <mapi.h>

#include <stdio.h>
#include <string.h>

#define CONTROL_KEY "Software\\WixKorvalin Tests\\Mail client"
#define SESSION 0x5E55

static void readOrder(const char* name, char* value, DWORD size)
{
    HKEY key;
    value[0] = 0;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, CONTROL_KEY, 0, KEY_READ, &key) != ERROR_SUCCESS)
        return;
    DWORD type = 0;
    if (RegQueryValueExA(key, name, NULL, &type, (BYTE*)value, &size) != ERROR_SUCCESS || type != REG_SZ)
        value[0] = 0;
    else
        value[size < 1 ? 0 : size - 1] = 0;
    RegCloseKey(key);
}

static int answerIs(const char* wanted)
{
    char answer[64];
    readOrder("Answer", answer, sizeof answer);
    return strcmp(answer, wanted) == 0;
}

static void text(FILE* record, const char* key, const char* value)
{
    fprintf(record, "%s=", key);
    if (!value) {
        fputs("<null>\n", record);
        return;
    }
    for (; *value; ++value) {
        if (*value == '\r')
            fputs("\\r", record);
        else if (*value == '\n')
            fputs("\\n", record);
        else if (*value == '\\')
            fputs("\\\\", record);
        else
            fputc(*value, record);
    }
    fputc('\n', record);
}

static FILE* openRecord(const char* call)
{
    char path[MAX_PATH];
    readOrder("Record", path, sizeof path);
    if (!path[0])
        return NULL;
    FILE* record = fopen(path, "ab");
    if (!record)
        return NULL;
    char module[MAX_PATH] = "";
    HMODULE self = NULL;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       (LPCSTR)&openRecord, &self);
    GetModuleFileNameA(self, module, sizeof module);
    fprintf(record, "call=%s\n", call);
    text(record, "module", module);
    return record;
}

static void number(FILE* record, const char* key, unsigned long value)
{
    fprintf(record, "%s=%lu\n", key, value);
}

static void recipient(FILE* record, const char* prefix, const MapiRecipDesc* who)
{
    char key[64];
    snprintf(key, sizeof key, "%s", prefix);
    if (!who) {
        text(record, key, NULL);
        return;
    }
    snprintf(key, sizeof key, "%s.class", prefix);
    number(record, key, who->ulRecipClass);
    snprintf(key, sizeof key, "%s.name", prefix);
    text(record, key, who->lpszName);
    snprintf(key, sizeof key, "%s.address", prefix);
    text(record, key, who->lpszAddress);
    snprintf(key, sizeof key, "%s.entryIdSize", prefix);
    number(record, key, who->ulEIDSize);
}

ULONG WINAPI MAPILogon(ULONG_PTR uiParam, LPSTR profile, LPSTR password, FLAGS flags,
                                             ULONG reserved, LPLHANDLE session)
{
    FILE* record = openRecord("MAPILogon");
    if (record) {
        number(record, "ui", (unsigned long)uiParam);
        text(record, "profile", profile);
        text(record, "password", password);
        number(record, "flags", flags);
        number(record, "reserved", reserved);
        fclose(record);
    }
    if (answerIs("logon refused"))
        return MAPI_E_LOGIN_FAILURE;
    *session = SESSION;
    return SUCCESS_SUCCESS;
}

ULONG WINAPI MAPISendMail(LHANDLE session, ULONG_PTR uiParam, lpMapiMessage message,
                                                FLAGS flags, ULONG reserved)
{
    FILE* record = openRecord("MAPISendMail");
    if (record) {
        number(record, "session", (unsigned long)session);
        number(record, "ui", (unsigned long)uiParam);
        number(record, "flags", flags);
        number(record, "reserved", reserved);
        number(record, "message.reserved", message->ulReserved);
        text(record, "subject", message->lpszSubject);
        text(record, "note", message->lpszNoteText);
        text(record, "messageType", message->lpszMessageType);
        text(record, "date", message->lpszDateReceived);
        text(record, "conversationId", message->lpszConversationID);
        number(record, "messageFlags", message->flFlags);
        recipient(record, "originator", message->lpOriginator);
        number(record, "recipients", message->nRecipCount);
        for (ULONG i = 0; i < message->nRecipCount; ++i) {
            char prefix[32];
            snprintf(prefix, sizeof prefix, "recipient%lu", i);
            recipient(record, prefix, &message->lpRecips[i]);
        }
        number(record, "files", message->nFileCount);
        fprintf(record, "filesPointer=%s\n", message->lpFiles ? "set" : "<null>");
        for (ULONG i = 0; i < message->nFileCount; ++i) {
            const MapiFileDesc* file = &message->lpFiles[i];
            char key[32];
            snprintf(key, sizeof key, "file%lu.position", i);
            number(record, key, file->nPosition);
            snprintf(key, sizeof key, "file%lu.path", i);
            text(record, key, file->lpszPathName);
            snprintf(key, sizeof key, "file%lu.name", i);
            text(record, key, file->lpszFileName);
            snprintf(key, sizeof key, "file%lu.type", i);
            fprintf(record, "%s=%s\n", key, file->lpFileType ? "set" : "<null>");
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
        number(record, "ui", (unsigned long)uiParam);
        number(record, "flags", flags);
        number(record, "reserved", reserved);
        fclose(record);
    }
    return SUCCESS_SUCCESS;
}
