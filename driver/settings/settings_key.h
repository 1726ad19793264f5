// A registry key by its path, opened afresh for every call: no registry handle stays open between them.
#pragma once

#include <windows.h>

namespace kestvox {

class SettingsKey {
public:
    explicit SettingsKey(HKEY root);
    virtual ~SettingsKey();
    SettingsKey(const SettingsKey&) = delete;
    SettingsKey& operator=(const SettingsKey&) = delete;
    // Lives on the stack only; the C++ library's would bring that library's heap into this one.
    static void operator delete(void*) {}  // NOLINT(misc-new-delete-overloads): nothing is made with new

    // Keeps a copy of `path`. Until this has been called, or when there is no memory for the copy,
    // every operation fails.
    void SetPath(const WCHAR* path);

    BOOL KeyExists() const;
    BOOL ValueExists(const WCHAR* name) const;
    BOOL QuerySize(const WCHAR* name, DWORD* size) const;  // bytes
    BOOL QueryType(const WCHAR* name, DWORD* type) const;

    // A REG_SZ value in a buffer from the process heap, which the caller frees (FreeHeapArray). Always
    // terminated, whatever is stored.
    BOOL QueryString(const WCHAR* name, WCHAR** string) const;

    // A REG_BINARY value of at most `maxSize` bytes; a shorter one fills the buffer's first bytes.
    BOOL QueryBinary(const WCHAR* name, void* buffer, DWORD maxSize) const;

    BOOL DeleteValue(const WCHAR* name) const;

    // Creates the key when it is missing. Refuses to change the type or the size of a value that is
    // there already: delete it first.
    BOOL SetValue(const WCHAR* name, const void* data, DWORD size, DWORD type) const;

private:
    BOOL Open(REGSAM access, HKEY* key) const;
    BOOL Query(const WCHAR* name, DWORD* type, void* data, DWORD* size) const;

    HKEY root_;
    WCHAR* path_;
};

}  // namespace kestvox
