/* Makes the settings of the Windows program a key that can neither be opened nor created, a link that
   leads nowhere, and removes that link again:

     settings_lock close|open */
#include <stdio.h>
#include <string.h>
#include <windows.h>
#include <winternl.h>

NTSTATUS NTAPI NtDeleteKey(HANDLE key);

static const char name[] = "Software\\Ostrel\\vistel";
static const wchar_t nowhere[] = L"\\Registry\\Machine\\Software\\Ostrel\\nowhere\\at\\all";

static int close_settings(void) {
    HKEY key;
    RegDeleteTreeA(HKEY_CURRENT_USER, name);
    if (RegCreateKeyExA(HKEY_CURRENT_USER, name, 0, NULL, REG_OPTION_CREATE_LINK, KEY_ALL_ACCESS, NULL, &key, NULL))
        return 1;
    return RegSetValueExW(key, L"SymbolicLinkValue", 0, REG_LINK, (const BYTE*)nowhere, sizeof nowhere - sizeof *nowhere) != 0;
}

static int open_settings(void) {
    HKEY key;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, name, REG_OPTION_OPEN_LINK, KEY_ALL_ACCESS, &key)) return 1;
    return NtDeleteKey(key) != 0;
}

int main(int argc, char** argv) {
    if (argc == 2 && strcmp(argv[1], "close") == 0) return close_settings();
    if (argc == 2 && strcmp(argv[1], "open") == 0) return open_settings();
    return 2;
}
