// Named application settings in a registry-like store (key tree under
// HKEY_CURRENT_USER / HKEY_LOCAL_MACHINE, values REG_SZ or REG_DWORD).
#pragma once

#include <cstdint>
#include <string>
#include <utility>
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
    // Text is written as REG_SZ, a Boolean as a REG_DWORD 0 or 1, a number as its
    // decimal text (the shortest that reads back as the same double).
    // Raises "Failed saving the application setting" when the store refuses.
    void SaveSetting(const std::string& section, const std::string& setting, const Value& value);
    // Several settings of a section saved together: all of them or none.
    void SaveSettings(const std::string& section,
                      const std::vector<std::pair<std::string, Value>>& settings);
    // Returns the stored text (REG_SZ), the number (REG_DWORD) or the default.
    Value GetSetting(const std::string& section, const std::string& setting,
                     const Value& defaultValue);
    // An empty key deletes the section key; any other deletes its subkey "Key".
    void DeleteSetting(const std::string& section, const std::string& key);
    // The names of the section's values, in the order they were first written.
    void GetAllKeys(const std::string& section, std::vector<std::string>& keys);

  private:
    // MainBranch\CompanyName\AppName\section below the root.
    std::string SectionPath(const std::string& section) const;

    uint32_t rootKey_ = 0x80000002; // HKEY_LOCAL_MACHINE
    std::string mainBranch_ = "Software";
    std::string companyName_ = "MyCompany";
    std::string appName_ = "MyApplication";
};

// The program's one settings object, created and named at start-up.
CAppSettings& AppSettings();
