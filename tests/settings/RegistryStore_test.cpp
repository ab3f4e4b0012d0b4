// The registry operations on a real SQLite file in a private temp folder.
#include "settings/RegistryStore.h"

#include "tests/settings/StoreFixture.h"

#include <sqlite3.h>

#include <cstring>
#include <sys/wait.h>

using namespace RegistryStore;
using settings_test::StoreTest;
namespace fs = std::filesystem;

namespace {

HKEY Create(HKEY root, const std::string& path, uint32_t access = 0x3F) {
    HKEY key = 0;
    EXPECT_EQ(RegCreateKeyExA(root, path, access, &key), ERROR_SUCCESS) << path;
    return key;
}

LONG SetText(HKEY key, const std::string& name, const std::string& text) {
    return RegSetValueExA(key, name, REG_SZ, text.c_str(), static_cast<uint32_t>(text.size() + 1));
}

// The text of a REG_SZ value, read size first as the settings object does.
std::string GetText(HKEY key, const std::string& name) {
    uint32_t type = 0, size = 0;
    if (RegQueryValueExA(key, name, &type, nullptr, &size) != ERROR_SUCCESS) return "<missing>";
    std::string buffer(size, '\0');
    if (RegQueryValueExA(key, name, &type, buffer.data(), &size) != ERROR_SUCCESS) return "<error>";
    EXPECT_EQ(type, REG_SZ);
    return buffer.substr(0, buffer.find('\0'));
}

// What RegQueryInfoKeyA tells of a key. Handles left open are forgotten by the
// fixture's Reopen.
struct Info {
    uint32_t SubKeys = 99, LongestSubKey = 99, Values = 99, LongestName = 99, LargestData = 99;
};
Info InfoOf(HKEY key) {
    Info i;
    EXPECT_EQ(RegQueryInfoKeyA(key, &i.SubKeys, &i.LongestSubKey, &i.Values, &i.LongestName,
                               &i.LargestData),
              ERROR_SUCCESS);
    return i;
}

} // namespace

TEST_F(StoreTest, NamesIgnoreCaseAndCreateMakesEveryLevel) {
    HKEY key = 0, other = 0;
    uint32_t disposition = 0;
    ASSERT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, "Software\\Qarvanto Labs, LLC\\Pondera\\", 0x3F,
                              &key, &disposition),
              ERROR_SUCCESS);
    EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
    ASSERT_EQ(SetText(key, "AppDecPlaces", "3"), ERROR_SUCCESS);
    ASSERT_EQ(SetText(key, "APPDECPLACES", "4"), ERROR_SUCCESS); // the same value
    ASSERT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\qarvanto labs, llc\\PONDERA", 0x3F,
                              &other, &disposition),
              ERROR_SUCCESS);
    EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
    EXPECT_EQ(GetText(other, "appdecplaces"), "4");
    EXPECT_EQ(InfoOf(other).Values, 1u);
}

TEST_F(StoreTest, RefusesWhatThePlatformRefuses) {
    Create(HKEY_CURRENT_USER, "Software\\Rights");
    HKEY queryOnly = 0, setOnly = 0, out = 0;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Rights", KEY_QUERY_VALUE, &queryOnly),
              ERROR_SUCCESS);
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Rights", KEY_SET_VALUE, &setOnly),
              ERROR_SUCCESS);

    const std::tuple<const char*, LONG, LONG> cases[] = {
        {"set through a query-only handle", SetText(queryOnly, "X", "1"), ERROR_ACCESS_DENIED},
        {"leading backslash", RegCreateKeyExA(HKEY_CURRENT_USER, "\\Software", 0x3F, &out),
         ERROR_BAD_PATHNAME},
        {"level name too long",
         RegCreateKeyExA(HKEY_CURRENT_USER, std::string(256, 'k'), 0x3F, &out),
         ERROR_INVALID_PARAMETER},
        {"value name too long", SetText(setOnly, std::string(kMaxValueNameLength + 1, 'v'), "1"),
         ERROR_INVALID_PARAMETER},
        {"deleting a key that has subkeys", RegDeleteKeyA(HKEY_CURRENT_USER, "Software"),
         ERROR_ACCESS_DENIED},
        {"closing a handle twice", (RegCloseKey(queryOnly), RegCloseKey(queryOnly)),
         ERROR_INVALID_HANDLE},
    };
    for (const auto& [what, got, expected] : cases)
        EXPECT_EQ(got, expected) << what;
}

TEST_F(StoreTest, ValuesEnumerateInTheOrderFirstWritten) {
    const HKEY key = Create(HKEY_CURRENT_USER, "Software\\Order");
    const std::vector<std::string> written = {"Zeta", "Alpha", "Mid", "A much longer value name"};
    for (const auto& name : written)
        ASSERT_EQ(SetText(key, name, "x"), ERROR_SUCCESS);
    ASSERT_EQ(SetText(key, "zeta", "rewritten"), ERROR_SUCCESS); // keeps its place
    const Info info = InfoOf(key); // the sizes the settings object's key listing relies on
    EXPECT_EQ(info.Values, 4u);
    EXPECT_EQ(info.LongestName, written[3].size());
    EXPECT_EQ(info.LargestData, std::strlen("rewritten") + 1);

    std::vector<std::string> names;
    char name[64];
    for (uint32_t i = 0, cch = sizeof name;
         RegEnumValueA(key, i, name, &cch, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++i, cch = sizeof name) {
        EXPECT_EQ(cch, std::strlen(name));
        names.push_back(name);
    }
    EXPECT_EQ(names, written);
}

TEST_F(StoreTest, DeletingAKeyTakesItsValuesAndStalesItsHandles) {
    const HKEY key = Create(HKEY_CURRENT_USER, "Software\\Gone");
    ASSERT_EQ(SetText(key, "V", "1"), ERROR_SUCCESS);
    ASSERT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\Gone"), ERROR_SUCCESS);
    EXPECT_EQ(GetText(key, "V"), "<missing>");
    EXPECT_EQ(SetText(key, "V", "2"), ERROR_KEY_DELETED);
    // The old values do not come back with the name.
    EXPECT_EQ(InfoOf(Create(HKEY_CURRENT_USER, "Software\\Gone")).Values, 0u);
}

TEST_F(StoreTest, OddNamesAndTextsRoundTrip) {
    const HKEY key = Create(HKEY_CURRENT_USER, "Software\\It's \"quoted\"\\%?#");
    for (const std::string& text :
         {std::string(), std::string("'; DROP TABLE vals; --"), std::string("tab\there"),
          std::string("ünïcödé ✓"), std::string(100000, 'x')}) {
        const std::string name = "name " + text.substr(0, 30);
        ASSERT_EQ(SetText(key, name, text), ERROR_SUCCESS) << name;
        EXPECT_EQ(GetText(key, name), text) << name;
    }
}

TEST_F(StoreTest, ADamagedFileIsMovedAsideUnchangedLoggedAndAFreshStoreTakesItsPlace) {
    const std::pair<const char*, std::function<void()>> damages[] = {
        {"garbage",
         [&] { std::ofstream(StorePath(), std::ios::binary) << std::string(5000, 'G'); }},
        {"truncated", [&] { fs::resize_file(StorePath(), fs::file_size(StorePath()) / 2); }},
        {"another program's database",
         [&] {
             fs::remove(StorePath());
             sqlite3* db = nullptr;
             sqlite3_open(StorePath().c_str(), &db);
             sqlite3_exec(db, "CREATE TABLE keys(x); CREATE TABLE vals(y);", nullptr, nullptr,
                          nullptr);
             sqlite3_close(db);
         }},
    };
    for (const auto& [what, damage] : damages) {
        SCOPED_TRACE(what);
        for (const auto& entry : fs::directory_iterator(dir_))
            fs::remove(entry.path());
        HKEY key = Create(HKEY_CURRENT_USER, "Software\\Big");
        for (int i = 0; i < 400; ++i)
            ASSERT_EQ(SetText(key, "Value" + std::to_string(i),
                              std::string(200, static_cast<char>('a' + i % 26))),
                      ERROR_SUCCESS);
        Reopen(); // closing checkpoints the WAL into the file
        ASSERT_FALSE(fs::exists(StorePath() + "-wal"));
        damage();
        const std::string damaged = FileText(StorePath());

        EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Big", 1, &key), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(CurrentMode(), Mode::ReadWrite);
        const auto moved = MovedAside();
        ASSERT_EQ(moved.size(), 1u);
        EXPECT_TRUE(FileText(moved[0]) == damaged) << "never deleted, nor changed when moved aside";
        EXPECT_NE(LogText().find("Pondera.RegistryStore.Open"), std::string::npos);
        EXPECT_NE(LogText().find(moved[0].filename().string()), std::string::npos);
        key = Create(HKEY_CURRENT_USER, "Software\\Big");
        EXPECT_EQ(SetText(key, "Works", "again"), ERROR_SUCCESS);
        EXPECT_EQ(GetText(key, "Works"), "again");
        Reopen();
    }
}

TEST_F(StoreTest, AStoreThatCannotBeCreatedGivesDefaultsAndRefusesWrites) {
    // A file where the store's folder should be: nothing can be created there.
    std::ofstream(dir_ / "blocker") << "x";
    setenv("PONDERA_REGISTRY", (dir_ / "blocker" / "Pondera" / "registry.sqlite3").c_str(), 1);
    Reopen();

    HKEY key = 0;
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software", 1, &key), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Software", 0x3F, &key), ERROR_ACCESS_DENIED);
    EXPECT_EQ(CurrentMode(), Mode::Unavailable);
    EXPECT_NE(LogText().find("cannot be opened"), std::string::npos);
}

TEST_F(StoreTest, ASaveWaitsOutAWriteLockHeldLongerThanOneWaitOfSQLite) {
    const HKEY key = Create(HKEY_CURRENT_USER, "Software\\Held");
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    // Another program holds the write lock for three seconds, then lets go.
    const pid_t holder = fork();
    if (holder == 0) {
        RegistryStore::AbandonAfterFork();
        sqlite3* other = nullptr;
        sqlite3_open(StorePath().c_str(), &other);
        const bool held = sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) == 0;
        if (write(ready[1], "x", 1) != 1 || !held) _exit(1);
        sleep(3);
        sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr);
        _exit(0);
    }
    char byte;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    int waits = 0; // the window paints and shows that it waits meanwhile
    RegistryStore::SetWaitHook([&] { ++waits; });
    EXPECT_EQ(SetText(key, "Late", "saved"), ERROR_SUCCESS);
    RegistryStore::SetWaitHook(nullptr);
    EXPECT_GT(waits, 10);
    int status = 1;
    waitpid(holder, &status, 0);
    EXPECT_EQ(status, 0) << "the other program held the lock and let go";
    EXPECT_EQ(GetText(key, "Late"), "saved");
}
