#include "settings/CAppSettings.h"

#include "settings/RegistryStore.h"
#include "support/ErrorTrap.h"

#include <charconv>
#include <cstring>
#include <new>

using namespace RegistryStore;

namespace {

// Property checks name the class; the four operations use the old component's
// source without the "s", which scripts that match on it expect.
const std::string kPropertySource = std::string(support::kAppTitle) + ".CAppSettings";
const std::string kOperationSource = std::string(support::kAppTitle) + ".CAppSetting";

constexpr int32_t kErrInvalidAppName = static_cast<int32_t>(0x8004427Du);
constexpr int32_t kErrInvalidCompanyName = static_cast<int32_t>(0x8004427Eu);
constexpr int32_t kErrInvalidMainBranch = static_cast<int32_t>(0x8004427Fu);
constexpr int32_t kErrInvalidRootKey = static_cast<int32_t>(0x80044280u);
constexpr int32_t kErrSaving = static_cast<int32_t>(0x80044281u);
constexpr int32_t kErrDeleting = static_cast<int32_t>(0x80044282u);
constexpr int32_t kErrGettingKeys = static_cast<int32_t>(0x80044283u);

constexpr const char* kComponentFailure = "CAppSettings component failure";
constexpr int32_t kErrOutOfMemory = 7;
constexpr int32_t kErrInternal = 51;

// Both operations open the section key with every key right but DELETE etc.
constexpr uint32_t kAllKeyRights = 0x3F;

// Lets the class's own errors through and turns anything else into the
// component failure, keeping the original number where there is one.
template <class Body> void Guarded(const std::string& source, Body&& body) {
    try {
        body();
    } catch (const support::RunTimeError& e) {
        if (e.Source == kPropertySource || e.Source == kOperationSource) throw;
        support::Raise(e.Number, source, kComponentFailure);
    } catch (const std::bad_alloc&) {
        support::Raise(kErrOutOfMemory, source, kComponentFailure);
    } catch (const std::exception&) {
        support::Raise(kErrInternal, source, kComponentFailure);
    }
}

// Closes a key handle when the operation leaves, however it leaves.
class OpenKey {
  public:
    OpenKey() = default;
    ~OpenKey() {
        if (handle_) RegCloseKey(handle_);
    }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;
    HKEY* Out() { return &handle_; }
    HKEY Get() const { return handle_; }

  private:
    HKEY handle_ = 0;
};

// The shortest text that reads back as the same double.
std::string TextOf(double value) {
    char buffer[64];
    const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return ec == std::errc() ? std::string(buffer, end) : std::string();
}

LONG WriteText(HKEY key, const std::string& name, const std::string& text) {
    // Stored with its terminating zero, as REG_SZ data always is.
    return RegSetValueExA(key, name, REG_SZ, text.c_str(), static_cast<uint32_t>(text.size() + 1));
}

} // namespace

uint32_t CAppSettings::RootKey() const {
    return rootKey_;
}

void CAppSettings::SetRootKey(uint32_t root) {
    if (root != HKEY_CURRENT_USER && root != HKEY_LOCAL_MACHINE)
        support::Raise(kErrInvalidRootKey, kPropertySource, "Invalid root key value");
    rootKey_ = root;
}

std::string CAppSettings::MainBranch() const {
    return mainBranch_;
}

void CAppSettings::SetMainBranch(const std::string& v) {
    if (v.empty())
        support::Raise(kErrInvalidMainBranch, kPropertySource, "Invalid MainBranch value");
    mainBranch_ = v;
}

std::string CAppSettings::CompanyName() const {
    return companyName_;
}

void CAppSettings::SetCompanyName(const std::string& v) {
    if (v.empty())
        support::Raise(kErrInvalidCompanyName, kPropertySource, "Invalid CompanyName value");
    companyName_ = v;
}

std::string CAppSettings::AppName() const {
    return appName_;
}

void CAppSettings::SetAppName(const std::string& v) {
    if (v.empty()) support::Raise(kErrInvalidAppName, kPropertySource, "Invalid AppName value");
    appName_ = v;
}

void CAppSettings::Init(const std::string& companyName, const std::string& appName) {
    SetCompanyName(companyName);
    SetAppName(appName);
}

std::string CAppSettings::SectionPath(const std::string& section) const {
    return mainBranch_ + "\\" + companyName_ + "\\" + appName_ + "\\" + section;
}

void CAppSettings::SaveSetting(const std::string& section, const std::string& setting,
                               const Value& value) {
    Guarded(kOperationSource, [&] {
        OpenKey key;
        if (RegCreateKeyExA(rootKey_, SectionPath(section), kAllKeyRights, key.Out()) !=
            ERROR_SUCCESS)
            support::Raise(kErrSaving, kOperationSource, "Failed saving the application setting");
        LONG rc = ERROR_SUCCESS;
        if (const auto* text = std::get_if<std::string>(&value)) {
            rc = WriteText(key.Get(), setting, *text);
        } else if (const auto* flag = std::get_if<bool>(&value)) {
            const uint32_t number = *flag ? 1 : 0;
            rc = RegSetValueExA(key.Get(), setting, REG_DWORD, &number, sizeof number);
        } else if (const auto* real = std::get_if<double>(&value)) {
            rc = WriteText(key.Get(), setting, TextOf(*real));
        } else {
            rc = WriteText(key.Get(), setting, std::to_string(std::get<int64_t>(value)));
        }
        if (rc != ERROR_SUCCESS)
            support::Raise(kErrSaving, kOperationSource, "Failed saving the application setting");
    });
}

void CAppSettings::SaveSettings(const std::string& section,
                                const std::vector<std::pair<std::string, Value>>& settings) {
    if (RegistryStore::BeginBatch() != ERROR_SUCCESS)
        support::Raise(kErrSaving, kOperationSource, "Failed saving the application setting");
    try {
        for (const auto& [setting, value] : settings)
            SaveSetting(section, setting, value);
    } catch (...) {
        RegistryStore::EndBatch(false);
        throw;
    }
    if (RegistryStore::EndBatch(true) != ERROR_SUCCESS)
        support::Raise(kErrSaving, kOperationSource, "Failed saving the application setting");
}

CAppSettings::Value CAppSettings::GetSetting(const std::string& section, const std::string& setting,
                                             const Value& defaultValue) {
    Value result = defaultValue;
    Guarded(kOperationSource, [&] {
        OpenKey key;
        if (RegOpenKeyExA(rootKey_, SectionPath(section), kAllKeyRights, key.Out()) !=
            ERROR_SUCCESS)
            return;
        uint32_t type = REG_NONE;
        uint32_t size = 0;
        if (RegQueryValueExA(key.Get(), setting, &type, nullptr, &size) != ERROR_SUCCESS) return;
        if (type == REG_SZ) {
            // Size first, then the text; a value that grew in between (another
            // Pondera writing) is read again with the new size.
            for (int attempt = 0; attempt < 3; ++attempt) {
                std::string buffer(size, '\0');
                const LONG rc = RegQueryValueExA(key.Get(), setting, &type, buffer.data(), &size);
                if (rc == ERROR_MORE_DATA) continue;
                if (rc != ERROR_SUCCESS || type != REG_SZ) return;
                buffer.resize(strnlen(buffer.data(), size));
                result = buffer;
                return;
            }
        } else if (type == REG_DWORD && size == 4) {
            int32_t number = 0;
            if (RegQueryValueExA(key.Get(), setting, &type, &number, &size) == ERROR_SUCCESS &&
                type == REG_DWORD)
                result = static_cast<int64_t>(number);
        }
    });
    return result;
}

void CAppSettings::DeleteSetting(const std::string& section, const std::string& key) {
    Guarded(kOperationSource, [&] {
        // Any non-empty key deletes the subkey literally named "Key", never a value;
        // the old component did so and stored settings rely on surviving it.
        const std::string path = SectionPath(section) + (key.empty() ? "" : "\\Key");
        if (RegDeleteKeyA(rootKey_, path) != ERROR_SUCCESS)
            support::Raise(kErrDeleting, kOperationSource,
                           "Failed deleting the application setting");
    });
}

void CAppSettings::GetAllKeys(const std::string& section, std::vector<std::string>& keys) {
    Guarded(kOperationSource, [&] {
        auto fail = [] {
            support::Raise(kErrGettingKeys, kOperationSource,
                           "Failed getting all the application keys");
        };
        OpenKey key;
        if (RegOpenKeyExA(rootKey_, SectionPath(section), KEY_QUERY_VALUE, key.Out()) !=
            ERROR_SUCCESS)
            fail();
        uint32_t count = 0;
        uint32_t longest = 0;
        if (RegQueryInfoKeyA(key.Get(), nullptr, nullptr, &count, &longest, nullptr) !=
            ERROR_SUCCESS)
            fail();
        std::vector<std::string> names;
        std::string buffer(longest + 1, '\0');
        for (uint32_t index = 0; index < count;) {
            uint32_t length = static_cast<uint32_t>(buffer.size());
            const LONG rc =
                RegEnumValueA(key.Get(), index, buffer.data(), &length, nullptr, nullptr, nullptr);
            if (rc == ERROR_MORE_DATA) { // a longer name arrived since the count
                buffer.resize(std::max<size_t>(length + 1, buffer.size() * 2));
                continue;
            }
            if (rc == ERROR_NO_MORE_ITEMS) break; // values removed since the count
            if (rc != ERROR_SUCCESS) fail();
            names.emplace_back(buffer.data(), length);
            ++index;
        }
        keys = std::move(names);
    });
}

CAppSettings& AppSettings() {
    static CAppSettings settings;
    return settings;
}
