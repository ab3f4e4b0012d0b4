// The registry operations on a real SQLite file in a private temp folder.
#include "settings/RegistryStore.h"

#include "tests/helpers/TestSupport.h"

#include <sqlite3.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace RegistryStore;
namespace fs = std::filesystem;

namespace {

// Every test gets its own store file and error log, and leaves the
// environment as it found it.
class StoreTest : public testing_support::RecordingTest {
protected:
    void SetUp() override {
        RecordingTest::SetUp();
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir_ = fs::temp_directory_path() /
               ("pondera-store-" + std::to_string(getpid()) + "-" + info->name());
        fs::remove_all(dir_);
        fs::create_directories(dir_);
        Remember("PONDERA_REGISTRY");
        Remember("PONDERA_ERROR_LOG");
        setenv("PONDERA_REGISTRY", StorePath().c_str(), 1);
        setenv("PONDERA_ERROR_LOG", (dir_ / "errorlog.txt").c_str(), 1);
        Reopen();
    }
    void TearDown() override {
        Reopen();
        for (const auto& [name, value] : saved_)
            value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
        std::error_code ec;
        fs::permissions(dir_, fs::perms::owner_all, ec);
        fs::remove_all(dir_, ec);
    }
    std::string StorePath() const { return (dir_ / "registry.sqlite3").string(); }
    std::string LogText() const {
        std::ifstream in(dir_ / "errorlog.txt");
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }
    std::vector<fs::path> MovedAside() const {
        std::vector<fs::path> found;
        for (const auto& entry : fs::directory_iterator(dir_)) {
            const std::string name = entry.path().filename().string();
            const std::string tail = name.size() > 4 ? name.substr(name.size() - 4) : name;
            if (name.rfind("registry.sqlite3.damaged-", 0) == 0 && tail != "-wal" && tail != "-shm")
                found.push_back(entry.path());
        }
        return found;
    }

    fs::path dir_;

private:
    void Remember(const char* name) {
        const char* v = std::getenv(name);
        saved_.emplace_back(name, v ? v : "");
    }
    std::vector<std::pair<std::string, std::string>> saved_;
};

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

std::vector<char> ReadFile(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Runs body in a child process with its own connection; the child's exit
// status is body's result (0 = success).
int InChild(const std::function<int()>& body) {
    const pid_t pid = fork();
    if (pid == 0) {
        AbandonAfterFork();
        _exit(body());
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

TEST_F(StoreTest, TextIsReadSizeFirstThenIntoABufferOfThatSize) {
    const HKEY key = Create(HKEY_CURRENT_USER, "Software\\Test");
    ASSERT_EQ(SetText(key, "Greeting", "hello"), ERROR_SUCCESS);

    uint32_t type = 0, size = 0;
    ASSERT_EQ(RegQueryValueExA(key, "Greeting", &type, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(type, REG_SZ);
    EXPECT_EQ(size, 6u); // with the terminating zero

    char small[3];
    uint32_t smallSize = sizeof small;
    EXPECT_EQ(RegQueryValueExA(key, "Greeting", &type, small, &smallSize), ERROR_MORE_DATA);
    EXPECT_EQ(smallSize, 6u);

    char exact[6];
    uint32_t exactSize = sizeof exact;
    ASSERT_EQ(RegQueryValueExA(key, "Greeting", &type, exact, &exactSize), ERROR_SUCCESS);
    EXPECT_STREQ(exact, "hello");
    EXPECT_EQ(RegQueryValueExA(key, "Greeting", &type, exact, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegQueryValueExA(key, "Absent", &type, nullptr, &size), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
}

TEST_F(StoreTest, KeyAndValueNamesIgnoreCase) {
    const HKEY key = Create(HKEY_LOCAL_MACHINE, "Software\\Qarvanto Labs, LLC\\Pondera");
    ASSERT_EQ(SetText(key, "AppDecPlaces", "3"), ERROR_SUCCESS);
    ASSERT_EQ(SetText(key, "APPDECPLACES", "4"), ERROR_SUCCESS); // the same value

    HKEY other = 0;
    ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\qarvanto labs, llc\\PONDERA", 0x3F, &other),
              ERROR_SUCCESS);
    EXPECT_EQ(GetText(other, "appdecplaces"), "4");
    uint32_t values = 0;
    ASSERT_EQ(RegQueryInfoKeyA(other, nullptr, nullptr, &values, nullptr, nullptr), ERROR_SUCCESS);
    EXPECT_EQ(values, 1u);
    RegCloseKey(key);
    RegCloseKey(other);
}

TEST_F(StoreTest, CreateReportsWhetherTheKeyWasNewAndMakesEveryLevel) {
    HKEY key = 0;
    uint32_t disposition = 0;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "A\\B\\C\\", 0x3F, &key, &disposition), ERROR_SUCCESS);
    EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
    RegCloseKey(key);
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "a\\b\\c", 0x3F, &key, &disposition), ERROR_SUCCESS);
    EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
    RegCloseKey(key);

    HKEY middle = 0;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "A\\B", 1, &middle), ERROR_SUCCESS);
    uint32_t subKeys = 0, longest = 0;
    ASSERT_EQ(RegQueryInfoKeyA(middle, &subKeys, &longest, nullptr, nullptr, nullptr), ERROR_SUCCESS);
    EXPECT_EQ(subKeys, 1u);
    EXPECT_EQ(longest, 1u);
    RegCloseKey(middle);
}

TEST_F(StoreTest, RefusesWhatThePlatformRefuses) {
    const HKEY queryOnly = [] {
        HKEY k = Create(HKEY_CURRENT_USER, "Software\\Rights");
        RegCloseKey(k);
        HKEY q = 0;
        EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Rights", KEY_QUERY_VALUE, &q), ERROR_SUCCESS);
        return q;
    }();
    HKEY setOnly = 0;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Rights", KEY_SET_VALUE, &setOnly), ERROR_SUCCESS);
    HKEY out = 0;
    uint32_t size = 0;
    char name[8];
    uint32_t cch = sizeof name;

    struct Case {
        const char* what;
        LONG got;
        LONG expected;
    };
    const Case cases[] = {
        {"set through a query-only handle", SetText(queryOnly, "X", "1"), ERROR_ACCESS_DENIED},
        {"query through a set-only handle", RegQueryValueExA(setOnly, "X", nullptr, nullptr, &size), ERROR_ACCESS_DENIED},
        {"enumerate through a set-only handle", RegEnumValueA(setOnly, 0, name, &cch, nullptr, nullptr, nullptr), ERROR_ACCESS_DENIED},
        {"leading backslash", RegCreateKeyExA(HKEY_CURRENT_USER, "\\Software", 0x3F, &out), ERROR_BAD_PATHNAME},
        {"doubled backslash", RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\\\X", 0x3F, &out), ERROR_BAD_PATHNAME},
        {"level name too long", RegCreateKeyExA(HKEY_CURRENT_USER, std::string(256, 'k'), 0x3F, &out), ERROR_INVALID_PARAMETER},
        {"value name too long", SetText(setOnly, std::string(kMaxValueNameLength + 1, 'v'), "1"), ERROR_INVALID_PARAMETER},
        {"unknown handle", SetText(0x12345, "X", "1"), ERROR_INVALID_HANDLE},
        {"no result pointer", RegCreateKeyExA(HKEY_CURRENT_USER, "Software", 0x3F, nullptr), ERROR_INVALID_PARAMETER},
        {"data pointer without size", RegSetValueExA(setOnly, "X", REG_SZ, nullptr, 4), ERROR_INVALID_PARAMETER},
        {"DWORD of three bytes", RegSetValueExA(setOnly, "X", REG_DWORD, "abc", 3), ERROR_INVALID_PARAMETER},
        {"unknown root", RegOpenKeyExA(0x80000003, "Software", 0x3F, &out), ERROR_INVALID_HANDLE},
        {"deleting a root", RegDeleteKeyA(HKEY_CURRENT_USER, ""), ERROR_ACCESS_DENIED},
        {"deleting a key that has subkeys", RegDeleteKeyA(HKEY_CURRENT_USER, "Software"), ERROR_ACCESS_DENIED},
        {"deleting a missing key", RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\Nothing"), ERROR_FILE_NOT_FOUND},
        {"closing a root", RegCloseKey(HKEY_LOCAL_MACHINE), ERROR_SUCCESS},
    };
    for (const auto& c : cases) EXPECT_EQ(c.got, c.expected) << c.what;

    EXPECT_EQ(RegCloseKey(queryOnly), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(queryOnly), ERROR_INVALID_HANDLE);
    RegCloseKey(setOnly);
}

TEST_F(StoreTest, ValuesEnumerateInTheOrderFirstWritten) {
    const HKEY key = Create(HKEY_CURRENT_USER, "Software\\Order");
    for (const char* name : {"Zeta", "Alpha", "Mid", "A much longer value name"})
        ASSERT_EQ(SetText(key, name, "x"), ERROR_SUCCESS);
    ASSERT_EQ(SetText(key, "zeta", "rewritten"), ERROR_SUCCESS); // keeps its place

    uint32_t values = 0, longest = 0, largest = 0;
    ASSERT_EQ(RegQueryInfoKeyA(key, nullptr, nullptr, &values, &longest, &largest), ERROR_SUCCESS);
    EXPECT_EQ(values, 4u);
    EXPECT_EQ(longest, std::strlen("A much longer value name"));
    EXPECT_EQ(largest, std::strlen("rewritten") + 1);

    std::vector<std::string> names;
    for (uint32_t i = 0;; ++i) {
        char name[64];
        uint32_t cch = sizeof name;
        const LONG rc = RegEnumValueA(key, i, name, &cch, nullptr, nullptr, nullptr);
        if (rc == ERROR_NO_MORE_ITEMS) break;
        ASSERT_EQ(rc, ERROR_SUCCESS);
        EXPECT_EQ(cch, std::strlen(name));
        names.push_back(name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"Zeta", "Alpha", "Mid", "A much longer value name"}));

    char tiny[4];
    uint32_t cch = sizeof tiny;
    EXPECT_EQ(RegEnumValueA(key, 3, tiny, &cch, nullptr, nullptr, nullptr), ERROR_MORE_DATA);
    RegCloseKey(key);
}

TEST_F(StoreTest, DeletingAKeyTakesItsValuesAndStalesItsHandles) {
    const HKEY key = Create(HKEY_CURRENT_USER, "Software\\Gone");
    ASSERT_EQ(SetText(key, "V", "1"), ERROR_SUCCESS);
    ASSERT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\Gone"), ERROR_SUCCESS);
    EXPECT_EQ(GetText(key, "V"), "<missing>");
    EXPECT_EQ(SetText(key, "V", "2"), ERROR_KEY_DELETED);
    RegCloseKey(key);

    const HKEY again = Create(HKEY_CURRENT_USER, "Software\\Gone");
    uint32_t values = 99;
    ASSERT_EQ(RegQueryInfoKeyA(again, nullptr, nullptr, &values, nullptr, nullptr), ERROR_SUCCESS);
    EXPECT_EQ(values, 0u); // the old values did not come back with the name
    RegCloseKey(again);
}

TEST_F(StoreTest, OddNamesAndTextsRoundTrip) {
    const std::vector<std::string> texts = {
        "", "'; DROP TABLE vals; --", "Qarvanto Labs, LLC", "tab\there", "ünïcödé ✓",
        std::string(100000, 'x')};
    const HKEY key = Create(HKEY_CURRENT_USER, "Software\\It's \"quoted\"\\%?#");
    for (size_t i = 0; i < texts.size(); ++i) {
        const std::string name = "name " + texts[i].substr(0, 30);
        ASSERT_EQ(SetText(key, name, texts[i]), ERROR_SUCCESS) << i;
        EXPECT_EQ(GetText(key, name), texts[i]) << i;
    }
    RegCloseKey(key);
}

TEST_F(StoreTest, TwoProcessesWritingAThousandValuesEachAtOnceLoseNone) {
    constexpr int kEach = 1000;
    int gate[2];
    ASSERT_EQ(pipe(gate), 0);
    std::vector<pid_t> children;
    for (int writer = 0; writer < 2; ++writer) {
        const pid_t pid = fork();
        if (pid == 0) {
            AbandonAfterFork();
            close(gate[1]);
            char go;
            if (read(gate[0], &go, 1) != 0) _exit(10); // both start when the gate closes
            for (int i = 0; i < kEach; ++i) {
                HKEY k = 0;
                if (RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\Race", 0x3F, &k) != ERROR_SUCCESS)
                    _exit(11);
                const std::string name = "w" + std::to_string(writer) + "-" + std::to_string(i);
                if (SetText(k, name, std::to_string(i * 7 + writer)) != ERROR_SUCCESS) _exit(12);
                if (SetText(k, "Shared", name) != ERROR_SUCCESS) _exit(13); // both fight over one
                RegCloseKey(k);
            }
            _exit(0);
        }
        children.push_back(pid);
    }
    close(gate[0]);
    close(gate[1]);
    for (const pid_t pid : children) {
        int status = 0;
        waitpid(pid, &status, 0);
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0);
    }

    Reopen();
    HKEY key = 0;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Race", 1, &key), ERROR_SUCCESS);
    uint32_t values = 0;
    ASSERT_EQ(RegQueryInfoKeyA(key, nullptr, nullptr, &values, nullptr, nullptr), ERROR_SUCCESS);
    EXPECT_EQ(values, 2u * kEach + 1);
    for (int writer = 0; writer < 2; ++writer)
        for (int i = 0; i < kEach; i += 97)
            EXPECT_EQ(GetText(key, "w" + std::to_string(writer) + "-" + std::to_string(i)),
                      std::to_string(i * 7 + writer));
    const std::string last = GetText(key, "Shared");
    EXPECT_TRUE(last == "w0-999" || last == "w1-999") << last;
    RegCloseKey(key);
}

TEST_F(StoreTest, AGarbageFileIsMovedAsideAndAFreshStoreTakesItsPlace) {
    Reopen();
    const std::string garbage(5000, 'G');
    std::ofstream(StorePath(), std::ios::binary) << garbage;

    HKEY key = 0;
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Any", 1, &key), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(CurrentMode(), Mode::ReadWrite);

    const auto moved = MovedAside();
    ASSERT_EQ(moved.size(), 1u);
    const auto kept = ReadFile(moved[0]);
    EXPECT_EQ(std::string(kept.begin(), kept.end()), garbage); // never deleted, never changed
    EXPECT_NE(LogText().find("Pondera.RegistryStore.Open"), std::string::npos);
    EXPECT_NE(LogText().find(moved[0].filename().string()), std::string::npos);

    key = Create(HKEY_CURRENT_USER, "Software\\Any");
    EXPECT_EQ(SetText(key, "Works", "again"), ERROR_SUCCESS);
    EXPECT_EQ(GetText(key, "Works"), "again");
    RegCloseKey(key);
}

TEST_F(StoreTest, ATruncatedFileIsMovedAsideAndAFreshStoreTakesItsPlace) {
    HKEY key = Create(HKEY_CURRENT_USER, "Software\\Big");
    for (int i = 0; i < 400; ++i)
        ASSERT_EQ(SetText(key, "Value" + std::to_string(i), std::string(200, 'a' + i % 26)), ERROR_SUCCESS);
    RegCloseKey(key);
    Reopen(); // closing checkpoints the WAL into the file
    ASSERT_FALSE(fs::exists(StorePath() + "-wal"));
    const auto size = fs::file_size(StorePath());
    ASSERT_GT(size, 40000u);
    fs::resize_file(StorePath(), size / 2);

    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Big", 1, &key), ERROR_FILE_NOT_FOUND);
    ASSERT_EQ(MovedAside().size(), 1u);
    EXPECT_EQ(fs::file_size(MovedAside()[0]), size / 2);
    key = Create(HKEY_CURRENT_USER, "Software\\Big");
    EXPECT_EQ(SetText(key, "Fresh", "1"), ERROR_SUCCESS);
    RegCloseKey(key);
}

TEST_F(StoreTest, AnotherProgramsDatabaseIsTreatedAsDamaged) {
    Reopen();
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(StorePath().c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, "CREATE TABLE keys(x); CREATE TABLE vals(y);", nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(db);

    const HKEY key = Create(HKEY_CURRENT_USER, "Software\\Mine");
    EXPECT_EQ(SetText(key, "V", "1"), ERROR_SUCCESS);
    EXPECT_EQ(MovedAside().size(), 1u);
    RegCloseKey(key);
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

TEST_F(StoreTest, AStoreInAReadOnlyFolderIsReadButNotWritten) {
    HKEY key = Create(HKEY_CURRENT_USER, "Software\\RO");
    ASSERT_EQ(SetText(key, "Old", "kept"), ERROR_SUCCESS);
    RegCloseKey(key);
    Reopen();
    fs::permissions(StorePath(), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    fs::permissions(dir_, fs::perms::owner_read | fs::perms::owner_exec | fs::perms::group_read |
                              fs::perms::group_exec | fs::perms::others_read | fs::perms::others_exec);
    const std::string log = (fs::temp_directory_path() / ("pondera-ro-log-" + std::to_string(getpid()))).string();

    // root ignores permissions, so the check runs as an ordinary user then.
    const int result = InChild([&] {
        setenv("PONDERA_ERROR_LOG", log.c_str(), 1);
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) return 20;
        HKEY k = 0;
        if (RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\RO", 0x3F, &k) != ERROR_SUCCESS) return 1;
        if (GetText(k, "Old") != "kept") return 2;
        if (SetText(k, "New", "x") != ERROR_ACCESS_DENIED) return 3;
        HKEY created = 0;
        if (RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\Other", 0x3F, &created) != ERROR_ACCESS_DENIED)
            return 4;
        return CurrentMode() == Mode::ReadOnly ? 0 : 5;
    });
    EXPECT_EQ(result, 0);
    std::error_code ec;
    fs::remove(log, ec);
}
