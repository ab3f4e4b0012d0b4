// The settings object through the real store on a private SQLite file; what
// it wrote is checked through the registry operations themselves.
#include "settings/CAppSettings.h"

#include "support/ErrorTrap.h"
#include "tests/settings/StoreFixture.h"

#include <cmath>
#include <csignal>
#include <sys/wait.h>

using namespace RegistryStore;
using Value = CAppSettings::Value;
namespace fs = std::filesystem;

namespace {

constexpr const char* kSection = "Application Settings";
constexpr const char* kKeyPath =
    "Software\\Qarvanto Labs, LLC\\Qarv Tools 3\\Pondera\\Application Settings";

class AppSettingsTest : public settings_test::StoreTest {
  protected:
    void SetUp() override {
        StoreTest::SetUp();
        settings_.Init("Qarvanto Labs, LLC\\Qarv Tools 3", "Pondera");
    }
    // The raw value as the store holds it: type and bytes.
    std::pair<uint32_t, std::string> Raw(const std::string& name, HKEY root = HKEY_LOCAL_MACHINE) {
        HKEY key = 0;
        if (RegOpenKeyExA(root, kKeyPath, 1, &key) != ERROR_SUCCESS) return {REG_NONE, "<no key>"};
        uint32_t type = 0, size = 0;
        std::string bytes = "<no value>";
        if (RegQueryValueExA(key, name, &type, nullptr, &size) == ERROR_SUCCESS) {
            bytes.assign(size, '\0');
            RegQueryValueExA(key, name, &type, bytes.data(), &size);
        }
        RegCloseKey(key);
        return {type, bytes};
    }
    Value Get(const std::string& name, const Value& fallback,
              const std::string& section = kSection) {
        return settings_.GetSetting(section, name, fallback);
    }

    CAppSettings settings_;
};

// The error body raises, or a RunTimeError with number 0 when it does not.
support::RunTimeError Raised(const std::function<void()>& body) {
    try {
        body();
    } catch (const support::RunTimeError& e) {
        return e;
    }
    return {};
}

std::pair<uint32_t, std::string> Sz(const char* text) {
    return {REG_SZ, std::string(text) + '\0'};
}

} // namespace

TEST_F(AppSettingsTest, ValuesGoUnderTheirRootAsTextExceptBooleansAndReadBack) {
    settings_.SaveSetting(kSection, "AppDecPlaces", int64_t{3});
    EXPECT_EQ(Raw("AppDecPlaces", HKEY_CURRENT_USER).second,
              "<no key>"); // the default root is HKLM
    settings_.SetRootKey(0x80000001);
    settings_.SaveSetting(kSection, "AppDecPlaces", int64_t{4});
    EXPECT_EQ(Raw("AppDecPlaces", HKEY_CURRENT_USER), Sz("4"));
    settings_.SetRootKey(0x80000002);
    EXPECT_EQ(Raw("AppDecPlaces"), Sz("3")); // the other root untouched

    settings_.SaveSetting(kSection, "Text", std::string("Tahoma"));
    settings_.SaveSetting(kSection, "Spread", 2.6);
    settings_.SaveSetting(kSection, "Flag", true);
    EXPECT_EQ(Raw("Text"), Sz("Tahoma"));
    EXPECT_EQ(Raw("Spread"), Sz("2.6"));
    EXPECT_EQ(Raw("Flag"), std::make_pair(REG_DWORD, std::string("\x01\0\0\0", 4)));

    EXPECT_EQ(Get("Text", std::string("x")), Value(std::string("Tahoma")));
    EXPECT_EQ(Get("Flag", false), Value(int64_t{1})) << "a Boolean comes back as a number";
    EXPECT_EQ(Get("Spread", 0.0), Value(std::string("2.6")));
    for (const double v : testing_support::BadValues()) {
        if (!std::isfinite(v)) continue;
        settings_.SaveSetting(kSection, "V", v);
        const auto text = std::get<std::string>(Get("V", std::string()));
        EXPECT_EQ(std::strtod(text.c_str(), nullptr), v) << text; // the same double
    }
}

TEST_F(AppSettingsTest, MissingSectionValueOrOtherTypeGivesTheDefaultUnchanged) {
    settings_.SaveSetting(kSection, "Present", std::string("here"));
    HKEY key = 0;
    ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kKeyPath, 0x3F, &key), ERROR_SUCCESS);
    ASSERT_EQ(RegSetValueExA(key, "Binary", REG_BINARY, "\1\2\3", 3), ERROR_SUCCESS);
    RegCloseKey(key);

    for (const Value& d : {Value(std::string("dflt")), Value(1.5), Value(int64_t{-7}), Value(true),
                           Value(std::string())}) {
        EXPECT_EQ(Get("Present", d, "Never Written"), d);
        EXPECT_EQ(Get("Absent", d), d);
        EXPECT_EQ(Get("Binary", d), d);
        EXPECT_EQ(Get("Present", d, "\\bad\\\\section"), d);
    }
}

TEST_F(AppSettingsTest, DeleteSettingRemovesOnlyASubkeyLiterallyNamedKey) {
    const std::string inner = std::string(kSection) + "\\Key";
    settings_.SaveSetting(kSection, "AppDecPlaces", int64_t{2});
    settings_.SaveSetting(inner, "Inner", int64_t{1});
    settings_.DeleteSetting(kSection, "AppDecPlaces");
    EXPECT_EQ(Get("AppDecPlaces", std::string()), Value(std::string("2")));
    EXPECT_EQ(Get("Inner", int64_t{0}, inner), Value(int64_t{0}));

    settings_.DeleteSetting(kSection, ""); // the whole section
    EXPECT_EQ(Get("AppDecPlaces", std::string("gone")), Value(std::string("gone")));
}

// A bad property keeps the old value; a failed operation changes nothing.
TEST_F(AppSettingsTest, FailuresRaiseTheirNumberSourceAndDescription) {
    settings_.SaveSetting(kSection, "AppDecPlaces", int64_t{2});
    CAppSettings s;
    s.SetRootKey(0x80000001);
    std::vector<std::string> keys;
    const std::tuple<const char*, std::function<void()>, uint32_t, const char*> cases[] = {
        {"root 0x80000003", [&] { s.SetRootKey(0x80000003); }, 0x80044280,
         "Invalid root key value"},
        {"empty branch", [&] { s.SetMainBranch(""); }, 0x8004427F, "Invalid MainBranch value"},
        {"Init with empty app", [&] { s.Init("Other", ""); }, 0x8004427D, "Invalid AppName value"},
        {"delete without a subkey Key", [&] { settings_.DeleteSetting(kSection, "AppDecPlaces"); },
         0x80044282, "Failed deleting the application setting"},
        {"keys of a section never written", [&] { settings_.GetAllKeys("Never Written", keys); },
         0x80044283, "Failed getting all the application keys"},
        {"section name too long",
         [&] { settings_.SaveSetting(std::string(300, 's'), "X", int64_t{1}); }, 0x80044281,
         "Failed saving the application setting"},
    };
    for (const auto& [what, operation, number, description] : cases) {
        const auto e = Raised(operation);
        EXPECT_EQ(e.Number, static_cast<int32_t>(number)) << what;
        // The properties' errors come from the class, the operations' from its old name.
        EXPECT_EQ(e.Source, number < 0x80044281 ? "Pondera.CAppSettings" : "Pondera.CAppSetting")
            << what;
        EXPECT_EQ(e.Description, description) << what;
    }
    EXPECT_EQ(s.RootKey(), 0x80000001u);
    EXPECT_EQ(s.MainBranch(), "Software");
    EXPECT_EQ(s.AppName(), "MyApplication"); // Init stops at the first bad name
    EXPECT_EQ(Get("AppDecPlaces", std::string()), Value(std::string("2"))) << "nothing deleted";
}

// Settings saved together are all stored or none: a program killed in the middle
// of them leaves the old ones, every one of them.
TEST_F(AppSettingsTest, SettingsSavedTogetherSurviveAKillAsAllOldOrAllNew) {
    settings_.SaveSettings(kSection, {{"AppXRange", int64_t{0}}, {"AppXMin", 1.5}});
    const pid_t child = fork();
    if (child == 0) {
        RegistryStore::AbandonAfterFork();
        RegistryStore::BeginBatch();
        settings_.SaveSetting(kSection, "AppXRange", int64_t{1});
        settings_.SaveSetting(kSection, "AppXMin", 7.0);
        kill(getpid(), SIGKILL); // before the batch ends
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    RegistryStore::Reopen();
    EXPECT_EQ(Get("AppXRange", ""), Value(std::string("0")));
    EXPECT_EQ(Get("AppXMin", ""), Value(std::string("1.5")));
    settings_.SaveSettings(kSection, {{"AppXRange", int64_t{1}}, {"AppXMin", 7.0}});
    EXPECT_EQ(Get("AppXRange", ""), Value(std::string("1")));
    EXPECT_EQ(Get("AppXMin", ""), Value(std::string("7")));
}
