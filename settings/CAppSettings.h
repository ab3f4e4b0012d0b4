// Named application settings in a registry-like store (key tree under
// HKEY_CURRENT_USER / HKEY_LOCAL_MACHINE, values REG_SZ or REG_DWORD).
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

class CAppSettings {
public:
    // A setting's value: text, number, Boolean.
    using Value = std::variant<std::string, double, int64_t, bool>;

    uint32_t RootKey() const;
    void SetRootKey(uint32_t root); // raises "Invalid root key value"
    std::string MainBranch() const;
    void SetMainBranch(const std::string& v);
    std::string CompanyName() const;
    void SetCompanyName(const std::string& v);
    std::string AppName() const;
    void SetAppName(const std::string& v);

    void Init(const std::string& companyName, const std::string& appName);
    void SaveSetting(const std::string& section, const std::string& setting, const Value& value);
    // Returns the stored text (REG_SZ), the number (REG_DWORD) or the default.
    Value GetSetting(const std::string& section, const std::string& setting,
                     const Value& defaultValue);
    void DeleteSetting(const std::string& section, const std::string& key);
    void GetAllKeys(const std::string& section, std::vector<std::string>& keys);
};

// The program's one settings object, created and named at start-up.
CAppSettings& AppSettings();
