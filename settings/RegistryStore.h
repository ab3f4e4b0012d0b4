// The registry operations the settings object needs, kept in one SQLite file.
//
// Keys form a tree under the predefined roots HKEY_CURRENT_USER and
// HKEY_LOCAL_MACHINE; a key holds named values with a type (REG_SZ, REG_DWORD, or
// any other type number as raw bytes). Key and value names compare without regard
// to ASCII case. Each operation means what its Win32 namesake means and returns
// the same error codes; handles are small numbers valid in this process only.
//
// The file is PONDERA_REGISTRY when set, else $XDG_CONFIG_HOME/Pondera/
// registry.sqlite3 (default ~/.config/Pondera/). Every write is one transaction;
// several processes may read and write at once. A damaged or unreadable file is
// moved aside under a timestamped name, the event is logged and a fresh store
// takes its place; a store that cannot be written makes every write fail with
// ERROR_ACCESS_DENIED while reads still see what the file holds (or nothing).
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace RegistryStore {

using HKEY = uint32_t;
using LONG = int32_t;

inline constexpr HKEY HKEY_CURRENT_USER = 0x80000001;
inline constexpr HKEY HKEY_LOCAL_MACHINE = 0x80000002;

// Value types.
inline constexpr uint32_t REG_NONE = 0;
inline constexpr uint32_t REG_SZ = 1;
inline constexpr uint32_t REG_BINARY = 3;
inline constexpr uint32_t REG_DWORD = 4;

// Access rights of a key handle.
inline constexpr uint32_t KEY_QUERY_VALUE = 0x0001;
inline constexpr uint32_t KEY_SET_VALUE = 0x0002;
inline constexpr uint32_t KEY_CREATE_SUB_KEY = 0x0004;
inline constexpr uint32_t KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr uint32_t KEY_NOTIFY = 0x0010;
inline constexpr uint32_t KEY_CREATE_LINK = 0x0020;

// Dispositions reported by RegCreateKeyExA.
inline constexpr uint32_t REG_CREATED_NEW_KEY = 1;
inline constexpr uint32_t REG_OPENED_EXISTING_KEY = 2;

// Return codes.
inline constexpr LONG ERROR_SUCCESS = 0;
inline constexpr LONG ERROR_FILE_NOT_FOUND = 2;
inline constexpr LONG ERROR_ACCESS_DENIED = 5;
inline constexpr LONG ERROR_INVALID_HANDLE = 6;
inline constexpr LONG ERROR_INVALID_PARAMETER = 87;
inline constexpr LONG ERROR_BAD_PATHNAME = 161;
inline constexpr LONG ERROR_MORE_DATA = 234;
inline constexpr LONG ERROR_NO_MORE_ITEMS = 259;
inline constexpr LONG ERROR_BADDB = 1009;
inline constexpr LONG ERROR_CANTREAD = 1012;
inline constexpr LONG ERROR_CANTWRITE = 1013;
inline constexpr LONG ERROR_KEY_DELETED = 1018;

// Longest key name (one level) and value name.
inline constexpr size_t kMaxKeyNameLength = 255;
inline constexpr size_t kMaxValueNameLength = 16383;

// Creates every missing level of subKey below key (levels separated by single
// backslashes) and opens the last with the access mask. disposition (optional)
// tells whether the key was new.
LONG RegCreateKeyExA(HKEY key, const std::string& subKey, uint32_t samDesired, HKEY* result,
                     uint32_t* disposition = nullptr);
// Opens an existing key; an empty subKey opens key itself again.
LONG RegOpenKeyExA(HKEY key, const std::string& subKey, uint32_t samDesired, HKEY* result);
// Writes a value (needs KEY_SET_VALUE). A REG_DWORD takes exactly four bytes.
LONG RegSetValueExA(HKEY key, const std::string& valueName, uint32_t type, const void* data,
                    uint32_t cbData);
// Reads a value (needs KEY_QUERY_VALUE). With data null only the size is put into
// *cbData; a buffer too small gives ERROR_MORE_DATA and the size needed.
LONG RegQueryValueExA(HKEY key, const std::string& valueName, uint32_t* type, void* data,
                      uint32_t* cbData);
// Counts of subkeys and values, the longest subkey and value names (without the
// terminating zero) and the largest value data. Any pointer may be null.
LONG RegQueryInfoKeyA(HKEY key, uint32_t* subKeys, uint32_t* maxSubKeyLen, uint32_t* values,
                      uint32_t* maxValueNameLen, uint32_t* maxValueLen);
// The value at index (0, 1, ... in the order the values were first written).
// *cchValueName is the buffer size in characters on entry and the name's length
// without the terminating zero on return; ERROR_NO_MORE_ITEMS past the last.
LONG RegEnumValueA(HKEY key, uint32_t index, char* valueName, uint32_t* cchValueName,
                   uint32_t* type, void* data, uint32_t* cbData);
// Deletes a key that has no subkeys, with its values; an empty subKey deletes key.
LONG RegDeleteKeyA(HKEY key, const std::string& subKey);
LONG RegCloseKey(HKEY key);

// The writes between BeginBatch and EndBatch are one transaction: all of them
// are stored or none (a kill in between leaves none). BeginBatch waits for the
// write lock as a single write does; EndBatch(false) drops the writes.
LONG BeginBatch();
LONG EndBatch(bool commit);
// Called at each pause while a write waits for another program's lock (the
// window keeps painting and shows that it waits); empty for none.
void SetWaitHook(std::function<void()> hook);

// Where the store lives, from the environment as it is now.
std::string DefaultPath();

enum class Mode { Closed, ReadWrite, ReadOnly, Unavailable };
// The state of the store; opens it when it is closed.
Mode CurrentMode();
// The file in use (empty while closed).
std::string CurrentPath();

// Closes the file and forgets every open handle; the next operation opens the
// store named by the environment then. Tests use it to switch files and to
// stand for a restart of the program.
void Reopen();
// For a child made by fork(): drops the parent's connection without touching
// it (SQLite connections must not cross fork), so the child opens its own.
void AbandonAfterFork();

} // namespace RegistryStore
