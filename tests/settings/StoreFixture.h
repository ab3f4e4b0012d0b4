// A private store file and error log per test, the environment put back after.
#pragma once

#include "settings/CAppSettings.h"
#include "settings/DisplayOptions.h"
#include "settings/RegistryStore.h"
#include "tests/helpers/TestSupport.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <unistd.h>

namespace settings_test {

namespace fs = std::filesystem;

class StoreTest : public testing_support::RecordingTest {
  protected:
    void SetUp() override {
        RecordingTest::SetUp();
        dir_ = fs::temp_directory_path() /
               ("pondera-store-" + std::to_string(getpid()) + "-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(dir_);
        fs::create_directories(dir_);
        for (const char* name : {"PONDERA_REGISTRY", "PONDERA_ERROR_LOG"}) {
            const char* v = std::getenv(name);
            saved_.emplace_back(name, v ? v : "");
        }
        setenv("PONDERA_REGISTRY", StorePath().c_str(), 1);
        setenv("PONDERA_ERROR_LOG", (dir_ / "errorlog.txt").c_str(), 1);
        RegistryStore::Reopen();
    }
    void TearDown() override {
        RegistryStore::Reopen();
        for (const auto& [name, value] : saved_)
            value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
        std::error_code ec;
        fs::permissions(dir_, fs::perms::owner_all, ec);
        fs::remove_all(dir_, ec);
    }
    std::string StorePath() const { return (dir_ / "registry.sqlite3").string(); }
    static std::string FileText(const fs::path& p) {
        std::ifstream in(p, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }
    std::string LogText() const { return FileText(dir_ / "errorlog.txt"); }
    // Store files moved aside as damaged (not their WAL companions).
    std::vector<fs::path> MovedAside() const {
        std::vector<fs::path> found;
        for (const auto& entry : fs::directory_iterator(dir_)) {
            const std::string name = entry.path().filename().string();
            if (name.rfind("registry.sqlite3.damaged-", 0) == 0 && !name.ends_with("-wal") &&
                !name.ends_with("-shm"))
                found.push_back(entry.path());
        }
        return found;
    }

    fs::path dir_;

  private:
    std::vector<std::pair<std::string, std::string>> saved_;
};

// The program's settings object named as at start-up, the display options at
// their start values before and after each test.
class OptionsStoreTest : public StoreTest {
  protected:
    void SetUp() override {
        StoreTest::SetUp();
        AppSettings().Init(DisplayOptions::kCompanyName, DisplayOptions::kAppName);
        DisplayOptions::SetDefaults();
    }
    void TearDown() override {
        StoreTest::TearDown();
        DisplayOptions::SetDefaults();
    }
};

} // namespace settings_test
