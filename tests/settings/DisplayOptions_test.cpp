// The twelve display options: start values, loading rules, the display pattern
// and the field checks of the options dialog, on a private store file.
#include "settings/DisplayOptions.h"

#include "settings/CAppSettings.h"
#include "tests/settings/StoreFixture.h"

#include <optional>

using namespace DisplayOptions;

namespace {

class DisplayOptionsTest : public settings_test::OptionsStoreTest {
  protected:
    static void Store(const char* key, const std::string& text) {
        AppSettings().SaveSetting(kSection, key, text);
    }
};

// The twelve values at once, for comparing whole option sets.
struct Snapshot {
    uint32_t back, in, out;
    int16_t xTicks, yTicks, places;
    int32_t xRange;
    double numStDev, xMin, xMax;
    bool display, rangeMode;
    bool operator==(const Snapshot&) const = default;
};

Snapshot Now() {
    return {AppBackColor, AppInSpecColor, AppOutSpecColor, AppXTicks, AppYTicks,  AppDecPlaces,
            AppXRange,    AppNumStDev,    AppXMin,         AppXMax,   AppDisplay, AppRangeMode};
}

const Snapshot kStart = {0xFFFFFF, 0xFF0000, 0x0000FF, 5, 5, 6, 0, 2.6, 0.0, 0.0, true, false};

} // namespace

TEST_F(DisplayOptionsTest, AnEmptyStoreKeepsTheStartValuesAndEveryKeyLoadsAsTheDialogStoresIt) {
    Load();
    EXPECT_EQ(Now(), kStart);
    const std::pair<const char*, const char*> stored[] = {
        {kAppBackColor, "12632256"}, {kAppInSpecColor, "65280"}, {kAppOutSpecColor, "0"},
        {kAppXTicks, "8"},           {kAppYTicks, "3"},          {kAppDecPlaces, "2"},
        {kAppXRange, "1"},           {kAppNumStDev, "3.5"},      {kAppXMin, "-12.75"},
        {kAppXMax, "1e3"},           {kAppDisplay, "0"},         {kAppRangeMode, "1"}};
    for (const auto& [key, text] : stored)
        Store(key, text);
    Load();
    EXPECT_EQ(Now(), (Snapshot{0xC0C0C0, 0x00FF00, 0x000000, 8, 3, 2, 1, 3.5, -12.75, 1000.0, false,
                               true}));
    EXPECT_TRUE(ErrorLabels().empty());
}

// A flag changes only for a stored 0 or 1 (as a number); any other value out of
// its range, or no number at all, keeps the start value.
TEST_F(DisplayOptionsTest, AStoredValueLoadsOnlyWithinItsRules) {
    constexpr int kKept = -1; // else the flag's loaded value
    const std::tuple<const char*, const char*, int> rows[] = {
        {kAppDisplay, "0", 0},           {kAppDisplay, " 0 ", 0},
        {kAppDisplay, "0.5", kKept},     {kAppDisplay, "", kKept},
        {kAppRangeMode, "1.0", 1},       {kAppRangeMode, "5", kKept},
        {kAppBackColor, "white", kKept}, {kAppBackColor, "16777216", kKept},
        {kAppInSpecColor, "1.5", kKept}, {kAppXTicks, "0", kKept},
        {kAppYTicks, "40000", kKept},    {kAppDecPlaces, "7", kKept},
        {kAppXRange, "2", kKept},        {kAppNumStDev, "0", kKept},
        {kAppNumStDev, "nan", kKept},    {kAppXMin, "inf", kKept},
        {kAppXMax, "1e400", kKept},      {kAppXMin, "", kKept}};
    for (const auto& [key, text, flag] : rows) {
        SetDefaults();
        Store(key, text);
        Load();
        Snapshot expected = kStart;
        if (flag != kKept) (key == kAppDisplay ? expected.display : expected.rangeMode) = flag;
        EXPECT_EQ(Now(), expected) << key << " = \"" << text << '"';
        AppSettings().DeleteSetting(kSection, ""); // clean section for the next row
    }
    AppSettings().SaveSetting(kSection, kAppDisplay, false); // a Boolean stored as REG_DWORD 0
    Load();
    EXPECT_FALSE(AppDisplay);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DisplayOptionsTest, CapabilityMethodAndLevelLoadWithinTheirRules) {
    Load();
    EXPECT_EQ(AppCapMethod, 0); // percentile: the figures shown before the option existed
    EXPECT_EQ(AppConfLevel, 0.95);
    Store(kAppCapMethod, "1");
    Store(kAppConfLevel, "0.9");
    Load();
    EXPECT_EQ(AppCapMethod, 1);
    EXPECT_EQ(AppConfLevel, 0.9);
    Store(kAppCapMethod, "2");
    Store(kAppConfLevel, "1");
    Load();
    EXPECT_EQ(AppCapMethod, 1);
    EXPECT_EQ(AppConfLevel, 0.9);
}

TEST_F(DisplayOptionsTest, DecimalPlacesAtProgramStart) {
    LoadDecPlaces();
    EXPECT_EQ(AppDecPlaces, 6); // nothing stored: unchanged
    for (const char* stored : {"abc", "9", "3"}) {
        Store(kAppDecPlaces, stored);
        LoadDecPlaces();
        EXPECT_EQ(AppDecPlaces, stored[0] == '3' ? 3 : 6) << stored;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DisplayOptionsTest, FieldChecksOfTheDialog) {
    using Num = std::optional<double>;
    EXPECT_EQ(NumStDevFrom("2.6"), Num(2.6));
    for (const char* bad : {"0", "-1", "", "abc", "inf"})
        EXPECT_EQ(NumStDevFrom(bad), std::nullopt) << bad;
    EXPECT_EQ(RangeEndFrom("-12.5"), Num(-12.5));
    for (const char* bad : {"", "x", "nan"})
        EXPECT_EQ(RangeEndFrom(bad), std::nullopt) << bad;

    using Ticks = std::optional<int16_t>;
    EXPECT_EQ(TicksFrom("3.0"), Ticks(3));
    EXPECT_EQ(TicksFrom("32767"), Ticks(32767));
    for (const char* bad : {"0", "2.5", "32768", "five"})
        EXPECT_EQ(TicksFrom(bad), std::nullopt) << bad;
}
