#include "settings/RegistryStore.h"

#include "support/ErrorReporter.h"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <pwd.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace RegistryStore {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLabelOpen = "Pondera.RegistryStore.Open";
constexpr const char* kLabelOperation = "Pondera.RegistryStore.Operation";
constexpr const char* kSource = "Pondera.RegistryStore";

// SQLite's own wait for a lock in one attempt; an operation that still finds the
// store locked tries again with growing pauses until kLockPatienceMs have passed:
// long enough for a writer starved by several others, short enough that a stuck
// lock does not freeze the window for good.
constexpr int kBusyTimeoutMs = 2000;
constexpr int kLockPatienceMs = 30000;
constexpr int kHookedWaitMs = 100;
constexpr int kBusyOpenRetries = 250; // with the pause: about five seconds
constexpr int kBusyOpenPauseMs = 20;

// Row ids of the two roots in the key table.
constexpr int64_t kCurrentUserId = 1;
constexpr int64_t kLocalMachineId = 2;

// The first handle number given out; predefined roots have the top bit set.
constexpr HKEY kFirstHandle = 0x100;

constexpr const char* kSchema = R"sql(
CREATE TABLE IF NOT EXISTS keys(
    id INTEGER PRIMARY KEY,
    parent INTEGER NOT NULL,
    name TEXT NOT NULL COLLATE NOCASE,
    UNIQUE(parent, name));
CREATE TABLE IF NOT EXISTS vals(
    key INTEGER NOT NULL,
    name TEXT NOT NULL COLLATE NOCASE,
    type INTEGER NOT NULL,
    data BLOB NOT NULL,
    UNIQUE(key, name));
INSERT OR IGNORE INTO keys(id, parent, name) VALUES
    (1, 0, 'HKEY_CURRENT_USER'), (2, 0, 'HKEY_LOCAL_MACHINE');
)sql";

// A failed SQLite call, carried to the operation's outer loop.
struct DbError {
    int Code = SQLITE_ERROR;
    std::string Message;
};

struct Handle {
    int64_t Root = 0;
    std::vector<std::string> Path;
    uint32_t Access = 0;
};

struct State {
    std::mutex Lock;
    sqlite3* Db = nullptr;
    Mode CurrentMode = Mode::Closed;
    std::string Path;
    std::map<HKEY, Handle> Handles;
    HKEY NextHandle = kFirstHandle;
    std::string LastLogged; // the same trouble is logged once, not at every read
    bool InBatch = false;   // a batch's transaction is open
    std::function<void()> WaitHook;

    ~State() {
        if (Db) sqlite3_close_v2(Db);
    }
};

State& S() {
    static State state;
    return state;
}

bool IsDamage(int code) {
    const int primary = code & 0xFF;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

void Log(const std::string& label, int number, const std::string& description) {
    if (description == S().LastLogged) return;
    S().LastLogged = description;
    support::ErrorReporter::Instance().AppendLog(label, number, kSource, description);
}

// ---- thin SQLite wrappers ------------------------------------------------

[[noreturn]] void Fail(sqlite3* db, int code) {
    throw DbError{code, db ? sqlite3_errmsg(db) : sqlite3_errstr(code)};
}

void Exec(sqlite3* db, const char* sql) {
    char* message = nullptr;
    const int rc = sqlite3_exec(db, sql, nullptr, nullptr, &message);
    if (rc != SQLITE_OK) {
        DbError error{rc, message ? message : sqlite3_errstr(rc)};
        sqlite3_free(message);
        throw error;
    }
}

class Statement {
  public:
    Statement(sqlite3* db, const char* sql) : db_(db) {
        const int rc = sqlite3_prepare_v2(db, sql, -1, &stmt_, nullptr);
        if (rc != SQLITE_OK) Fail(db, rc);
    }
    ~Statement() { sqlite3_finalize(stmt_); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& Bind(int index, int64_t value) {
        Check(sqlite3_bind_int64(stmt_, index, value));
        return *this;
    }
    Statement& Bind(int index, const std::string& text) {
        Check(sqlite3_bind_text(stmt_, index, text.data(), static_cast<int>(text.size()),
                                SQLITE_TRANSIENT));
        return *this;
    }
    Statement& BindBlob(int index, const void* data, uint32_t size) {
        static const char kEmpty = 0; // a null pointer would bind NULL, not an empty blob
        Check(sqlite3_bind_blob(stmt_, index, size ? data : &kEmpty, static_cast<int>(size),
                                SQLITE_TRANSIENT));
        return *this;
    }

    // True while there is a row.
    bool Step() {
        const int rc = sqlite3_step(stmt_);
        if (rc == SQLITE_ROW) return true;
        if (rc == SQLITE_DONE) return false;
        Fail(db_, rc);
    }
    void Reset() { sqlite3_reset(stmt_); }
    int64_t Int(int column) const { return sqlite3_column_int64(stmt_, column); }
    std::string Text(int column) const {
        const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, column));
        return p ? std::string(p, static_cast<size_t>(sqlite3_column_bytes(stmt_, column)))
                 : std::string();
    }
    std::vector<unsigned char> Blob(int column) const {
        const auto* p = static_cast<const unsigned char*>(sqlite3_column_blob(stmt_, column));
        const int n = sqlite3_column_bytes(stmt_, column);
        return p ? std::vector<unsigned char>(p, p + n) : std::vector<unsigned char>();
    }

  private:
    void Check(int rc) {
        if (rc != SQLITE_OK) Fail(db_, rc);
    }
    sqlite3* db_;
    sqlite3_stmt* stmt_ = nullptr;
};

// One transaction; rolled back unless committed. Inside a batch's transaction it
// is a savepoint of it, so a failed operation still leaves nothing behind.
class Transaction {
  public:
    Transaction(sqlite3* db, bool write) : db_(db), nested_(!sqlite3_get_autocommit(db)) {
        Exec(db, nested_ ? "SAVEPOINT op" : write ? "BEGIN IMMEDIATE" : "BEGIN");
    }
    ~Transaction() {
        if (open_)
            sqlite3_exec(db_, nested_ ? "ROLLBACK TO op; RELEASE op" : "ROLLBACK", nullptr, nullptr,
                         nullptr);
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void Commit() {
        Exec(db_, nested_ ? "RELEASE op" : "COMMIT");
        open_ = false;
    }

  private:
    sqlite3* db_;
    bool nested_;
    bool open_ = true;
};

// ---- opening, checking and replacing the file ----------------------------

std::string HomeFolder() {
    if (const char* home = std::getenv("HOME"); home && *home) return home;
    if (const passwd* pw = getpwuid(getuid()); pw && pw->pw_dir) return pw->pw_dir;
    return "/tmp";
}

bool FileExists(const std::string& path) {
    std::error_code ec;
    return fs::exists(path, ec);
}

bool FileReadable(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    char byte;
    const bool ok = ::read(fd, &byte, 1) >= 0;
    ::close(fd);
    return ok;
}

// Checks that the file holds our tables intact.
void Verify(sqlite3* db) {
    {
        Statement check(db, "PRAGMA quick_check");
        if (!check.Step() || check.Text(0) != "ok")
            throw DbError{SQLITE_CORRUPT, "integrity check failed: " + check.Text(0)};
    }
    // Preparing statements on every column we use also proves the schema is ours.
    Statement keys(db, "SELECT id, parent, name FROM keys LIMIT 1");
    Statement vals(db, "SELECT key, name, type, data FROM vals LIMIT 1");
}

// Opens the file for reading and writing; falls back to reading when the
// file cannot be written. Returns the connection or throws DbError.
sqlite3* OpenReadWrite(const std::string& path, bool& readOnly) {
    sqlite3* db = nullptr;
    int rc =
        sqlite3_open_v2(path.c_str(), &db,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    try {
        if (rc != SQLITE_OK) Fail(db, rc);
        sqlite3_busy_timeout(db, kBusyTimeoutMs);
        readOnly = sqlite3_db_readonly(db, "main") == 1;
        auto verify = [&] {
            try {
                Verify(db);
            } catch (const DbError& e) {
                // Tables of the same names but other columns: some other program's
                // database, as useless to us as a damaged one.
                if ((e.Code & 0xFF) != SQLITE_ERROR) throw;
                throw DbError{SQLITE_NOTADB, "not a settings store (" + e.Message + ")"};
            }
        };
        // A file that already holds tables is checked before anything is
        // changed in it, so one that is not ours is moved aside untouched.
        bool existing = false;
        if (Statement tables(db, "SELECT count(*) FROM sqlite_master"); tables.Step())
            existing = tables.Int(0) > 0;
        if (existing) verify();
        if (!readOnly) {
            // WAL lets a reader and a writer work at once; FULL makes each
            // commit durable on its own.
            Exec(db, "PRAGMA journal_mode=WAL");
            Exec(db, "PRAGMA synchronous=FULL");
        }
        // Only a new store is written to while opening: one that is ours
        // opens without the write lock, which another program may hold.
        if (!existing) {
            if (!readOnly) {
                Transaction schema(db, true);
                Exec(db, kSchema);
                schema.Commit();
            }
            verify();
        }
    } catch (...) {
        sqlite3_close_v2(db);
        throw;
    }
    return db;
}

// Opens the file as it stands, for reading only (a store in a place that cannot
// be written, where even the WAL index cannot be made).
sqlite3* OpenImmutable(const std::string& path) {
    std::string uri = "file:";
    for (const char c : path) {
        if (c == '%' || c == '?' || c == '#') {
            char escaped[4];
            std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned char>(c));
            uri += escaped;
        } else {
            uri += c;
        }
    }
    uri += "?immutable=1";
    sqlite3* db = nullptr;
    const int rc =
        sqlite3_open_v2(uri.c_str(), &db, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
    try {
        if (rc != SQLITE_OK) Fail(db, rc);
        Verify(db);
    } catch (...) {
        sqlite3_close_v2(db);
        throw;
    }
    return db;
}

// Renames the damaged file (and its WAL files) to <path>.damaged-<time>; the
// data may still be rescued by hand, so it is never deleted.
std::string MoveAside(const std::string& path) {
    char stamp[32];
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::strftime(stamp, sizeof stamp, "%Y%m%d-%H%M%S", &local);
    std::string target = path + ".damaged-" + stamp;
    for (int n = 1; FileExists(target); ++n)
        target = path + ".damaged-" + stamp + "-" + std::to_string(n);
    if (std::rename(path.c_str(), target.c_str()) != 0) return {};
    for (const char* suffix : {"-wal", "-shm"})
        if (FileExists(path + suffix))
            std::rename((path + suffix).c_str(), (target + suffix).c_str());
    return target;
}

void CloseDb() {
    S().InBatch = false; // closing the connection rolls an open batch back
    if (S().Db) sqlite3_close_v2(S().Db);
    S().Db = nullptr;
    S().CurrentMode = Mode::Closed;
}

void Replace(const std::string& path, const DbError& why) {
    CloseDb();
    const std::string target = MoveAside(path);
    if (target.empty()) {
        Log(kLabelOpen, why.Code,
            "The settings store \"" + path + "\" cannot be read (" + why.Message +
                ") and could not be moved aside: " + std::strerror(errno));
        return;
    }
    Log(kLabelOpen, why.Code,
        "The settings store \"" + path + "\" cannot be read (" + why.Message +
            "); it was moved to \"" + target + "\" and a new store was started.");
}

void Open() {
    State& s = S();
    s.Path = DefaultPath();
    std::error_code ec;
    fs::create_directories(fs::path(s.Path).parent_path(), ec);

    DbError failure;
    auto isBusy = [&] {
        return (failure.Code & 0xFF) == SQLITE_BUSY || (failure.Code & 0xFF) == SQLITE_LOCKED;
    };
    // Two programs starting on a new store race to switch it to WAL and create
    // the tables; SQLite answers the loser "busy" at once, without waiting, so
    // such an open is tried again for a while.
    int busyRetries = 0;
    for (int attempt = 0; attempt < 2; ++attempt) {
        try {
            bool readOnly = false;
            s.Db = OpenReadWrite(s.Path, readOnly);
            s.CurrentMode = readOnly ? Mode::ReadOnly : Mode::ReadWrite;
            if (readOnly)
                Log(kLabelOpen, SQLITE_READONLY,
                    "The settings store \"" + s.Path +
                        "\" cannot be written; settings will not be saved.");
            return;
        } catch (const DbError& e) {
            failure = e;
        }
        if (isBusy() && busyRetries < kBusyOpenRetries) {
            ++busyRetries;
            --attempt;
            std::this_thread::sleep_for(std::chrono::milliseconds(kBusyOpenPauseMs));
            continue;
        }
        const bool damaged =
            IsDamage(failure.Code) || (FileExists(s.Path) && !FileReadable(s.Path));
        if (attempt > 0 || !damaged) break;
        Replace(s.Path, failure);
    }

    // Another Pondera holding the lock past all that is passing trouble: do not
    // settle for reading only.
    const bool busy = isBusy();
    if (FileExists(s.Path) && !IsDamage(failure.Code) && !busy) {
        try {
            s.Db = OpenImmutable(s.Path);
            s.CurrentMode = Mode::ReadOnly;
            Log(kLabelOpen, failure.Code,
                "The settings store \"" + s.Path + "\" cannot be written (" + failure.Message +
                    "); settings will not be saved.");
            return;
        } catch (const DbError&) {
        }
    }
    s.CurrentMode = Mode::Unavailable;
    Log(kLabelOpen, failure.Code,
        "The settings store \"" + s.Path + "\" cannot be opened (" + failure.Message +
            "); stored settings are not available and will not be saved.");
}

// Opens the store when needed; true when it can at least be read.
bool EnsureOpen() {
    if (S().CurrentMode == Mode::Unavailable) S().CurrentMode = Mode::Closed; // try again
    if (S().CurrentMode == Mode::Closed) Open();
    return S().CurrentMode == Mode::ReadWrite || S().CurrentMode == Mode::ReadOnly;
}

LONG MapError(const DbError& e, bool write) {
    switch (e.Code & 0xFF) {
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return ERROR_ACCESS_DENIED;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return ERROR_BADDB;
    default:
        return write ? ERROR_CANTWRITE : ERROR_CANTREAD;
    }
}

// Runs one operation under the lock with the store open. A file found damaged
// on the way is replaced and the operation tried once more on the fresh store.
template <class Op> LONG Run(bool write, Op&& op) {
    std::unique_lock<std::mutex> guard(S().Lock);
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(kLockPatienceMs);
    int pauseMs = 20;
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!EnsureOpen()) return write ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND;
        if (write && S().CurrentMode != Mode::ReadWrite) return ERROR_ACCESS_DENIED;
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        // With a wait hook the waits are short, so that the window paints between them.
        const int wait = S().WaitHook ? kHookedWaitMs : kBusyTimeoutMs;
        sqlite3_busy_timeout(S().Db, static_cast<int>(std::clamp<long long>(left, 1, wait)));
        try {
            return op(S().Db);
        } catch (const DbError& e) {
            if (IsDamage(e.Code) && attempt == 0 && S().CurrentMode == Mode::ReadWrite) {
                Replace(S().Path, e);
                continue;
            }
            const int primary = e.Code & 0xFF;
            if ((primary == SQLITE_BUSY || primary == SQLITE_LOCKED) && Clock::now() < deadline &&
                !S().InBatch) {
                // The hook may paint and so read the store: the store is free meanwhile.
                const std::function<void()> hook = S().WaitHook;
                guard.unlock();
                if (hook) hook();
                // Jitter, so writers that collided do not collide again in step.
                std::this_thread::sleep_for(
                    std::chrono::milliseconds(pauseMs / 2 + std::rand() % (pauseMs / 2 + 1)));
                guard.lock();
                pauseMs = std::min(pauseMs * 2, S().WaitHook ? kHookedWaitMs : 1000);
                --attempt;
                continue;
            }
            Log(kLabelOperation, e.Code,
                "Settings store operation failed on \"" + S().Path + "\": " + e.Message);
            return MapError(e, write);
        }
    }
    return write ? ERROR_CANTWRITE : ERROR_CANTREAD;
}

// ---- keys ----------------------------------------------------------------

int64_t RootId(HKEY key) {
    if (key == HKEY_CURRENT_USER) return kCurrentUserId;
    if (key == HKEY_LOCAL_MACHINE) return kLocalMachineId;
    return 0;
}

// The handle's root and path; false for an unknown handle.
bool LookUp(HKEY key, Handle& out) {
    if (const int64_t root = RootId(key)) {
        out = Handle{root, {}, 0xFFFFFFFF};
        return true;
    }
    const auto it = S().Handles.find(key);
    if (it == S().Handles.end()) return false;
    out = it->second;
    return true;
}

// Splits "A\B\C" into its levels; one trailing backslash is allowed, a leading
// or doubled one is not.
LONG SplitPath(const std::string& text, std::vector<std::string>& levels) {
    const std::string path(text.c_str()); // an ANSI name ends at its first zero
    if (path.empty()) return ERROR_SUCCESS;
    if (path.front() == '\\') return ERROR_BAD_PATHNAME;
    size_t start = 0;
    while (start < path.size()) {
        const size_t end = std::min(path.find('\\', start), path.size());
        if (end == start) return ERROR_BAD_PATHNAME;
        if (end - start > kMaxKeyNameLength) return ERROR_INVALID_PARAMETER;
        levels.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    return ERROR_SUCCESS;
}

// Row id of the key at path below the root, 0 when a level is missing.
int64_t Resolve(sqlite3* db, int64_t root, const std::vector<std::string>& path) {
    Statement find(db, "SELECT id FROM keys WHERE parent = ?1 AND name = ?2");
    int64_t id = root;
    for (const auto& level : path) {
        find.Bind(1, id).Bind(2, level);
        if (!find.Step()) return 0;
        id = find.Int(0);
        find.Reset();
    }
    return id;
}

HKEY NewHandle(const Handle& h) {
    HKEY key = S().NextHandle;
    while (S().Handles.count(key) || RootId(key))
        key += 4;
    S().NextHandle = key + 4;
    S().Handles[key] = h;
    return key;
}

// The key a handle names, for an operation that needs `right`.
LONG KeyOf(sqlite3* db, HKEY key, uint32_t right, int64_t& id) {
    Handle h;
    if (!LookUp(key, h)) return ERROR_INVALID_HANDLE;
    if ((h.Access & right) != right) return ERROR_ACCESS_DENIED;
    id = Resolve(db, h.Root, h.Path);
    return id ? ERROR_SUCCESS : ERROR_KEY_DELETED;
}

// Copies value data into a caller's buffer with the size-first protocol.
LONG CopyData(const std::vector<unsigned char>& bytes, void* data, uint32_t* cbData) {
    const auto size = static_cast<uint32_t>(bytes.size());
    if (!data) {
        if (cbData) *cbData = size;
        return ERROR_SUCCESS;
    }
    if (*cbData < size) {
        *cbData = size;
        return ERROR_MORE_DATA;
    }
    if (size) std::memcpy(data, bytes.data(), size);
    *cbData = size;
    return ERROR_SUCCESS;
}

} // namespace

// ---- the registry operations ---------------------------------------------

LONG RegCreateKeyExA(HKEY key, const std::string& subKey, uint32_t samDesired, HKEY* result,
                     uint32_t* disposition) {
    if (!result) return ERROR_INVALID_PARAMETER;
    std::vector<std::string> levels;
    if (const LONG rc = SplitPath(subKey, levels); rc != ERROR_SUCCESS) return rc;
    return Run(true, [&](sqlite3* db) -> LONG {
        Handle base;
        if (!LookUp(key, base)) return ERROR_INVALID_HANDLE;
        Transaction txn(db, true);
        int64_t id = Resolve(db, base.Root, base.Path);
        if (!id) return ERROR_KEY_DELETED;
        bool created = false;
        Statement find(db, "SELECT id FROM keys WHERE parent = ?1 AND name = ?2");
        Statement insert(db, "INSERT INTO keys(parent, name) VALUES(?1, ?2)");
        for (const auto& level : levels) {
            find.Bind(1, id).Bind(2, level);
            if (find.Step()) {
                id = find.Int(0);
                created = false;
            } else {
                if (!RootId(key) && !(base.Access & KEY_CREATE_SUB_KEY)) return ERROR_ACCESS_DENIED;
                insert.Bind(1, id).Bind(2, level);
                insert.Step();
                insert.Reset();
                id = sqlite3_last_insert_rowid(db);
                created = true;
            }
            find.Reset();
        }
        txn.Commit();
        Handle opened = base;
        opened.Path.insert(opened.Path.end(), levels.begin(), levels.end());
        opened.Access = samDesired;
        *result = NewHandle(opened);
        if (disposition) *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
        return ERROR_SUCCESS;
    });
}

LONG RegOpenKeyExA(HKEY key, const std::string& subKey, uint32_t samDesired, HKEY* result) {
    if (!result) return ERROR_INVALID_PARAMETER;
    std::vector<std::string> levels;
    if (const LONG rc = SplitPath(subKey, levels); rc != ERROR_SUCCESS) return rc;
    return Run(false, [&](sqlite3* db) -> LONG {
        Handle base;
        if (!LookUp(key, base)) return ERROR_INVALID_HANDLE;
        Handle opened = base;
        opened.Path.insert(opened.Path.end(), levels.begin(), levels.end());
        if (!Resolve(db, opened.Root, opened.Path))
            return Resolve(db, base.Root, base.Path) ? ERROR_FILE_NOT_FOUND : ERROR_KEY_DELETED;
        opened.Access = samDesired;
        *result = NewHandle(opened);
        return ERROR_SUCCESS;
    });
}

LONG RegSetValueExA(HKEY key, const std::string& valueName, uint32_t type, const void* data,
                    uint32_t cbData) {
    const std::string name(valueName.c_str());
    if (name.size() > kMaxValueNameLength) return ERROR_INVALID_PARAMETER;
    if (!data && cbData) return ERROR_INVALID_PARAMETER;
    if (type == REG_DWORD && cbData != 4) return ERROR_INVALID_PARAMETER;
    return Run(true, [&](sqlite3* db) -> LONG {
        Transaction txn(db, true);
        int64_t id = 0;
        if (const LONG rc = KeyOf(db, key, KEY_SET_VALUE, id); rc != ERROR_SUCCESS) return rc;
        Statement upsert(db, "INSERT INTO vals(key, name, type, data) VALUES(?1, ?2, ?3, ?4) "
                             "ON CONFLICT(key, name) DO UPDATE SET type = excluded.type, "
                             "data = excluded.data");
        upsert.Bind(1, id)
            .Bind(2, name)
            .Bind(3, static_cast<int64_t>(type))
            .BindBlob(4, data, cbData);
        upsert.Step();
        txn.Commit();
        return ERROR_SUCCESS;
    });
}

LONG RegQueryValueExA(HKEY key, const std::string& valueName, uint32_t* type, void* data,
                      uint32_t* cbData) {
    if (data && !cbData) return ERROR_INVALID_PARAMETER;
    const std::string name(valueName.c_str());
    return Run(false, [&](sqlite3* db) -> LONG {
        int64_t id = 0;
        if (const LONG rc = KeyOf(db, key, KEY_QUERY_VALUE, id); rc != ERROR_SUCCESS) return rc;
        Statement find(db, "SELECT type, data FROM vals WHERE key = ?1 AND name = ?2");
        find.Bind(1, id).Bind(2, name);
        if (!find.Step()) return ERROR_FILE_NOT_FOUND;
        if (type) *type = static_cast<uint32_t>(find.Int(0));
        return CopyData(find.Blob(1), data, cbData);
    });
}

LONG RegQueryInfoKeyA(HKEY key, uint32_t* subKeys, uint32_t* maxSubKeyLen, uint32_t* values,
                      uint32_t* maxValueNameLen, uint32_t* maxValueLen) {
    return Run(false, [&](sqlite3* db) -> LONG {
        Transaction txn(db, false); // both counts from one snapshot
        int64_t id = 0;
        if (const LONG rc = KeyOf(db, key, KEY_QUERY_VALUE, id); rc != ERROR_SUCCESS) return rc;
        Statement keys(db, "SELECT count(*), coalesce(max(length(CAST(name AS BLOB))), 0) "
                           "FROM keys WHERE parent = ?1");
        keys.Bind(1, id).Step();
        Statement vals(db, "SELECT count(*), coalesce(max(length(CAST(name AS BLOB))), 0), "
                           "coalesce(max(length(data)), 0) FROM vals WHERE key = ?1");
        vals.Bind(1, id).Step();
        if (subKeys) *subKeys = static_cast<uint32_t>(keys.Int(0));
        if (maxSubKeyLen) *maxSubKeyLen = static_cast<uint32_t>(keys.Int(1));
        if (values) *values = static_cast<uint32_t>(vals.Int(0));
        if (maxValueNameLen) *maxValueNameLen = static_cast<uint32_t>(vals.Int(1));
        if (maxValueLen) *maxValueLen = static_cast<uint32_t>(vals.Int(2));
        return ERROR_SUCCESS;
    });
}

LONG RegEnumValueA(HKEY key, uint32_t index, char* valueName, uint32_t* cchValueName,
                   uint32_t* type, void* data, uint32_t* cbData) {
    if (!valueName || !cchValueName) return ERROR_INVALID_PARAMETER;
    if (data && !cbData) return ERROR_INVALID_PARAMETER;
    return Run(false, [&](sqlite3* db) -> LONG {
        int64_t id = 0;
        if (const LONG rc = KeyOf(db, key, KEY_QUERY_VALUE, id); rc != ERROR_SUCCESS) return rc;
        Statement row(db, "SELECT name, type, data FROM vals WHERE key = ?1 "
                          "ORDER BY rowid LIMIT 1 OFFSET ?2");
        row.Bind(1, id).Bind(2, static_cast<int64_t>(index));
        if (!row.Step()) return ERROR_NO_MORE_ITEMS;
        const std::string name = row.Text(0);
        if (*cchValueName < name.size() + 1) {
            *cchValueName = static_cast<uint32_t>(name.size());
            return ERROR_MORE_DATA;
        }
        std::memcpy(valueName, name.c_str(), name.size() + 1);
        *cchValueName = static_cast<uint32_t>(name.size());
        if (type) *type = static_cast<uint32_t>(row.Int(1));
        return CopyData(row.Blob(2), data, cbData);
    });
}

LONG RegDeleteKeyA(HKEY key, const std::string& subKey) {
    std::vector<std::string> levels;
    if (const LONG rc = SplitPath(subKey, levels); rc != ERROR_SUCCESS) return rc;
    return Run(true, [&](sqlite3* db) -> LONG {
        Handle target;
        if (!LookUp(key, target)) return ERROR_INVALID_HANDLE;
        const std::vector<std::string> basePath = target.Path;
        target.Path.insert(target.Path.end(), levels.begin(), levels.end());
        if (target.Path.empty()) return ERROR_ACCESS_DENIED; // a root stays
        Transaction txn(db, true);
        const int64_t id = Resolve(db, target.Root, target.Path);
        if (!id)
            return Resolve(db, target.Root, basePath) ? ERROR_FILE_NOT_FOUND : ERROR_KEY_DELETED;
        Statement children(db, "SELECT 1 FROM keys WHERE parent = ?1 LIMIT 1");
        if (children.Bind(1, id).Step()) return ERROR_ACCESS_DENIED;
        Statement dropValues(db, "DELETE FROM vals WHERE key = ?1");
        dropValues.Bind(1, id).Step();
        Statement dropKey(db, "DELETE FROM keys WHERE id = ?1");
        dropKey.Bind(1, id).Step();
        txn.Commit();
        return ERROR_SUCCESS;
    });
}

LONG RegCloseKey(HKEY key) {
    std::lock_guard<std::mutex> guard(S().Lock);
    if (RootId(key)) return ERROR_SUCCESS;
    return S().Handles.erase(key) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

// ---- the store itself ----------------------------------------------------

std::string DefaultPath() {
    if (const char* path = std::getenv("PONDERA_REGISTRY"); path && *path) return path;
    std::string config;
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg == '/')
        config = xdg; // the XDG rules ignore a relative path
    else
        config = HomeFolder() + "/.config";
    return config + "/Pondera/registry.sqlite3";
}

Mode CurrentMode() {
    std::lock_guard<std::mutex> guard(S().Lock);
    EnsureOpen();
    return S().CurrentMode;
}

std::string CurrentPath() {
    std::lock_guard<std::mutex> guard(S().Lock);
    return S().CurrentMode == Mode::Closed ? std::string() : S().Path;
}

void Reopen() {
    std::lock_guard<std::mutex> guard(S().Lock);
    CloseDb();
    S().Handles.clear();
    S().LastLogged.clear();
}

LONG BeginBatch() {
    if (S().InBatch) return ERROR_SUCCESS;
    return Run(true, [](sqlite3* db) -> LONG {
        Exec(db, "BEGIN IMMEDIATE");
        S().InBatch = true;
        return ERROR_SUCCESS;
    });
}

LONG EndBatch(bool commit) {
    std::lock_guard<std::mutex> guard(S().Lock);
    if (!S().InBatch) return ERROR_SUCCESS;
    S().InBatch = false;
    if (commit && sqlite3_exec(S().Db, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK)
        return ERROR_SUCCESS;
    sqlite3_exec(S().Db, "ROLLBACK", nullptr, nullptr, nullptr);
    return commit ? ERROR_CANTWRITE : ERROR_SUCCESS;
}

void SetWaitHook(std::function<void()> hook) {
    std::lock_guard<std::mutex> guard(S().Lock);
    S().WaitHook = std::move(hook);
}

void AbandonAfterFork() {
    // The mutex may have been held by another thread at fork time; this
    // program has one thread, so it is free here.
    S().Db = nullptr; // the parent still owns that connection
    S().InBatch = false;
    S().CurrentMode = Mode::Closed;
    S().Handles.clear();
    S().LastLogged.clear();
}

} // namespace RegistryStore
