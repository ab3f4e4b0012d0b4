// The settings object through the real store on a private SQLite file; what
// it wrote is checked through the registry operations themselves.
#include "settings/CAppSettings.h"

#include "settings/RegistryStore.h"
#include "support/ErrorTrap.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

using namespace RegistryStore;
namespace fs = std::filesystem;

namespace {

constexpr const char* kSection = "Application Settings";
constexpr const char* kKeyPath =
    "Software\\Qarvanto Labs, LLC\\Qarv Tools 3\\Pondera\\Application Settings";

class AppSettingsTest : public testing_support::RecordingTest {
protected:
    void SetUp() override {
        RecordingTest::SetUp();
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir_ = fs::temp_directory_path() /
               ("pondera-settings-" + std::to_string(getpid()) + "-" + info->name());
        fs::remove_all(dir_);
        fs::create_directories(dir_);
        const char* old = std::getenv("PONDERA_REGISTRY");
        savedStore_ = old ? old : "";
        setenv("PONDERA_REGISTRY", (dir_ / "registry.sqlite3").c_str(), 1);
        Reopen();
        settings_.Init("Qarvanto Labs, LLC\\Qarv Tools 3", "Pondera");
    }
    void TearDown() override {
        Reopen();
        setenv("PONDERA_REGISTRY", savedStore_.c_str(), 1);
        std::error_code ec;
        fs::remove_all(dir_, ec);
    }

    // The raw value as the store holds it: type and bytes.
    std::pair<uint32_t, std::string> Raw(const std::string& name, HKEY root = HKEY_LOCAL_MACHINE) {
        HKEY key = 0;
        if (RegOpenKeyExA(root, kKeyPath, 1, &key) != ERROR_SUCCESS) return {REG_NONE, "<no key>"};
        uint32_t type = 0, size = 0;
        std::string bytes;
        if (RegQueryValueExA(key, name, &type, nullptr, &size) == ERROR_SUCCESS) {
            bytes.resize(size);
            RegQueryValueExA(key, name, &type, bytes.data(), &size);
        } else {
            bytes = "<no value>";
        }
        RegCloseKey(key);
        return {type, bytes};
    }

    CAppSettings settings_;
    fs::path dir_;
    std::string savedStore_;
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

int32_t N(uint32_t n) { return static_cast<int32_t>(n); }

} // namespace

TEST_F(AppSettingsTest, StartsWithTheDocumentedDefaults) {
    const CAppSettings fresh;
    EXPECT_EQ(fresh.RootKey(), 0x80000002u);
    EXPECT_EQ(fresh.MainBranch(), "Software");
    EXPECT_EQ(fresh.CompanyName(), "MyCompany");
    EXPECT_EQ(fresh.AppName(), "MyApplication");
    EXPECT_EQ(&AppSettings(), &AppSettings());
}

TEST_F(AppSettingsTest, PropertyChecksRaiseTheirErrorAndKeepTheOldValue) {
    struct Case {
        const char* what;
        std::function<void(CAppSettings&)> assign;
        uint32_t number;
        const char* description;
    };
    const Case cases[] = {
        {"root 0x80000003", [](CAppSettings& s) { s.SetRootKey(0x80000003); }, 0x80044280, "Invalid root key value"},
        {"root 0", [](CAppSettings& s) { s.SetRootKey(0); }, 0x80044280, "Invalid root key value"},
        {"empty branch", [](CAppSettings& s) { s.SetMainBranch(""); }, 0x8004427F, "Invalid MainBranch value"},
        {"empty company", [](CAppSettings& s) { s.SetCompanyName(""); }, 0x8004427E, "Invalid CompanyName value"},
        {"empty app", [](CAppSettings& s) { s.SetAppName(""); }, 0x8004427D, "Invalid AppName value"},
        {"Init with empty company", [](CAppSettings& s) { s.Init("", "Other"); }, 0x8004427E, "Invalid CompanyName value"},
        {"Init with empty app", [](CAppSettings& s) { s.Init("Other", ""); }, 0x8004427D, "Invalid AppName value"},
    };
    for (const auto& c : cases) {
        CAppSettings s;
        s.SetRootKey(0x80000001);
        const auto e = Raised([&] { c.assign(s); });
        EXPECT_EQ(e.Number, N(c.number)) << c.what;
        EXPECT_EQ(e.Source, "Pondera.CAppSettings") << c.what;
        EXPECT_EQ(e.Description, c.description) << c.what;
        EXPECT_EQ(s.RootKey(), 0x80000001u) << c.what;
        EXPECT_EQ(s.MainBranch(), "Software") << c.what;
        EXPECT_EQ(s.AppName(), "MyApplication") << c.what; // Init stops at the first bad name
    }
}

TEST_F(AppSettingsTest, EachValueGoesUnderRootBranchCompanyAppAndSection) {
    settings_.SaveSetting(kSection, "AppDecPlaces", int64_t{3});
    EXPECT_EQ(Raw("AppDecPlaces"), std::make_pair(REG_SZ, std::string("3\0", 2)));
    EXPECT_EQ(Raw("AppDecPlaces", HKEY_CURRENT_USER).second, "<no key>");

    settings_.SetRootKey(0x80000001);
    settings_.SaveSetting(kSection, "AppDecPlaces", int64_t{4});
    EXPECT_EQ(Raw("AppDecPlaces", HKEY_CURRENT_USER).second, std::string("4\0", 2));
    EXPECT_EQ(Raw("AppDecPlaces").second, std::string("3\0", 2)); // the other root untouched
}

TEST_F(AppSettingsTest, ValuesAreWrittenAsTextExceptBooleans) {
    settings_.SaveSetting(kSection, "Text", std::string("Tahoma"));
    settings_.SaveSetting(kSection, "Colour", int64_t{0xFF0000});
    settings_.SaveSetting(kSection, "Spread", 2.6);
    settings_.SaveSetting(kSection, "Tiny", -1.25e-300);
    settings_.SaveSetting(kSection, "Flag", true);
    settings_.SaveSetting(kSection, "Off", false);

    EXPECT_EQ(Raw("Text"), std::make_pair(REG_SZ, std::string("Tahoma\0", 7)));
    EXPECT_EQ(Raw("Colour").second, std::string("16711680\0", 9));
    EXPECT_EQ(Raw("Spread").second, std::string("2.6\0", 4));
    EXPECT_EQ(Raw("Tiny").second, std::string("-1.25e-300\0", 11));
    EXPECT_EQ(Raw("Flag"), std::make_pair(REG_DWORD, std::string("\x01\0\0\0", 4)));
    EXPECT_EQ(Raw("Off"), std::make_pair(REG_DWORD, std::string("\0\0\0\0", 4)));
}

TEST_F(AppSettingsTest, ReadsTextAsTextAndABooleanBackAsANumber) {
    settings_.SaveSetting(kSection, "Text", std::string("some text"));
    settings_.SaveSetting(kSection, "Flag", true);
    settings_.SaveSetting(kSection, "Number", 2.6);

    EXPECT_EQ(settings_.GetSetting(kSection, "Text", std::string("x")), CAppSettings::Value(std::string("some text")));
    const auto flag = settings_.GetSetting(kSection, "Flag", false);
    ASSERT_TRUE(std::holds_alternative<int64_t>(flag)) << "a Boolean comes back as a number";
    EXPECT_EQ(std::get<int64_t>(flag), 1);
    EXPECT_EQ(settings_.GetSetting(kSection, "Number", 0.0), CAppSettings::Value(std::string("2.6")));
}

TEST_F(AppSettingsTest, MissingSectionValueOrOtherTypeGivesTheDefaultUnchanged) {
    settings_.SaveSetting(kSection, "Present", std::string("here"));
    HKEY key = 0;
    ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kKeyPath, 0x3F, &key), ERROR_SUCCESS);
    const char blob[] = {1, 2, 3};
    ASSERT_EQ(RegSetValueExA(key, "Binary", REG_BINARY, blob, 3), ERROR_SUCCESS);
    RegCloseKey(key);

    const CAppSettings::Value defaults[] = {std::string("dflt"), 1.5, int64_t{-7}, true, std::string()};
    for (const auto& d : defaults) {
        EXPECT_EQ(settings_.GetSetting("Never Written", "Present", d), d);
        EXPECT_EQ(settings_.GetSetting(kSection, "Absent", d), d);
        EXPECT_EQ(settings_.GetSetting(kSection, "Binary", d), d);
        EXPECT_EQ(settings_.GetSetting("\\bad\\\\section", "Present", d), d);
    }
}

TEST_F(AppSettingsTest, DeleteSettingRemovesOnlyASubkeyLiterallyNamedKey) {
    settings_.SaveSetting(kSection, "AppDecPlaces", int64_t{2});

    // No subkey "Key" yet: nothing to delete, and the value is not touched.
    const auto e = Raised([&] { settings_.DeleteSetting(kSection, "AppDecPlaces"); });
    EXPECT_EQ(e.Number, N(0x80044282));
    EXPECT_EQ(e.Source, "Pondera.CAppSetting");
    EXPECT_EQ(e.Description, "Failed deleting the application setting");
    EXPECT_EQ(settings_.GetSetting(kSection, "AppDecPlaces", std::string()), CAppSettings::Value(std::string("2")));

    settings_.SaveSetting(std::string(kSection) + "\\Key", "Inner", int64_t{1});
    settings_.DeleteSetting(kSection, "AppDecPlaces");
    EXPECT_EQ(settings_.GetSetting(kSection, "AppDecPlaces", std::string()), CAppSettings::Value(std::string("2")));
    EXPECT_EQ(settings_.GetSetting(std::string(kSection) + "\\Key", "Inner", int64_t{0}), CAppSettings::Value(int64_t{0}));

    settings_.DeleteSetting(kSection, ""); // the whole section
    EXPECT_EQ(settings_.GetSetting(kSection, "AppDecPlaces", std::string("gone")),
              CAppSettings::Value(std::string("gone")));
}

TEST_F(AppSettingsTest, GetAllKeysListsValueNamesInWrittenOrder) {
    for (const char* name : {"AppBackColor", "AppXTicks", "A rather long setting name indeed"})
        settings_.SaveSetting(kSection, name, int64_t{1});
    std::vector<std::string> keys = {"stale", "entries", "here", "and", "more"};
    settings_.GetAllKeys(kSection, keys);
    EXPECT_EQ(keys, (std::vector<std::string>{"AppBackColor", "AppXTicks", "A rather long setting name indeed"}));

    const auto e = Raised([&] { settings_.GetAllKeys("Never Written", keys); });
    EXPECT_EQ(e.Number, N(0x80044283));
    EXPECT_EQ(e.Source, "Pondera.CAppSetting");
    EXPECT_EQ(e.Description, "Failed getting all the application keys");
}

TEST_F(AppSettingsTest, SavingToAStoreThatCannotBeWrittenRaisesAndReadsGiveDefaults) {
    std::ofstream(dir_ / "blocker") << "x";
    setenv("PONDERA_REGISTRY", (dir_ / "blocker" / "registry.sqlite3").c_str(), 1);
    Reopen();
    const auto e = Raised([&] { settings_.SaveSetting(kSection, "AppXTicks", int64_t{5}); });
    EXPECT_EQ(e.Number, N(0x80044281));
    EXPECT_EQ(e.Source, "Pondera.CAppSetting");
    EXPECT_EQ(e.Description, "Failed saving the application setting");
    EXPECT_EQ(settings_.GetSetting(kSection, "AppXTicks", 2.0), CAppSettings::Value(2.0));
}

TEST_F(AppSettingsTest, ABadSectionNameFailsTheSaveWithItsError) {
    for (const std::string& section : std::vector<std::string>{"\\Leading", "Doubled\\\\Slash", std::string(300, 's')}) {
        const auto e = Raised([&] { settings_.SaveSetting(section, "X", int64_t{1}); });
        EXPECT_EQ(e.Number, N(0x80044281)) << section;
    }
}

TEST_F(AppSettingsTest, NumbersReadBackAsTheSameDouble) {
    for (const double v : testing_support::BadValues()) {
        if (!std::isfinite(v)) continue;
        settings_.SaveSetting(kSection, "V", v);
        const auto text = std::get<std::string>(settings_.GetSetting(kSection, "V", std::string()));
        EXPECT_EQ(std::strtod(text.c_str(), nullptr), v) << text;
    }
}

TEST_F(AppSettingsTest, SettingsSurviveARestartOfTheProcess) {
    settings_.SaveSetting(kSection, "AppYTicks", int64_t{9});
    const pid_t pid = fork();
    if (pid == 0) {
        // A new process: its own connection and a settings object named anew.
        AbandonAfterFork();
        CAppSettings again;
        again.Init("Qarvanto Labs, LLC\\Qarv Tools 3", "Pondera");
        const bool seen = again.GetSetting(kSection, "AppYTicks", std::string()) ==
                          CAppSettings::Value(std::string("9"));
        again.SaveSetting(kSection, "FromChild", std::string("hello"));
        _exit(seen ? 0 : 1);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(settings_.GetSetting(kSection, "FromChild", std::string()), CAppSettings::Value(std::string("hello")));
}
