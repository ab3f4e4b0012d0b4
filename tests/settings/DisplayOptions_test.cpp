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

TEST_F(DisplayOptionsTest, FlagsChangeOnlyForAStoredZeroOrOne) {
    const std::tuple<const char*, bool, bool> cases[] = {
        {"0", true, false}, {"1", false, true},   {"5", true, true},    {"5", false, false},
        {"", true, true},   {"1.0", false, true}, {" 0 ", true, false}, {"0.5", true, true}};
    for (const auto& [stored, start, expected] : cases) {
        Store(kAppDisplay, stored);
        Store(kAppRangeMode, stored);
        AppDisplay = AppRangeMode = start;
        Load();
        EXPECT_EQ(AppDisplay, expected) << '"' << stored << '"';
        EXPECT_EQ(AppRangeMode, expected) << '"' << stored << '"';
    }
    AppSettings().SaveSetting(kSection, kAppDisplay, false); // a Boolean stored as REG_DWORD 0
    AppDisplay = true;
    Load();
    EXPECT_FALSE(AppDisplay);
}

TEST_F(DisplayOptionsTest, AStoredValueThatIsNoNumberOrOutOfReachKeepsTheDefault) {
    const std::pair<const char*, const char*> bad[] = {
        {kAppBackColor, "white"}, {kAppBackColor, "16777216"}, {kAppInSpecColor, "1.5"},
        {kAppXTicks, "0"},        {kAppYTicks, "40000"},       {kAppDecPlaces, "7"},
        {kAppXRange, "2"},        {kAppNumStDev, "0"},         {kAppNumStDev, "nan"},
        {kAppXMin, "inf"},        {kAppXMax, "1e400"},         {kAppXMin, ""}};
    for (const auto& [key, text] : bad) {
        SetDefaults();
        Store(key, text);
        Load();
        EXPECT_EQ(Now(), kStart) << key << " = \"" << text << '"';
        AppSettings().DeleteSetting(kSection, ""); // clean section for the next row
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DisplayOptionsTest, DecimalPlacesAtProgramStart) {
    LoadDecPlaces();
    EXPECT_EQ(AppDecPlaces, 6); // nothing stored: unchanged
    for (const char* stored : {"", "abc", "9", "3"}) {
        Store(kAppDecPlaces, stored);
        LoadDecPlaces();
        EXPECT_EQ(AppDecPlaces, stored[0] == '3' ? 3 : 6) << stored;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DisplayOptionsTest, FieldChecksOfTheDialog) {
    using Num = std::optional<double>;
    EXPECT_EQ(NumStDevFrom("2.6"), Num(2.6));
    EXPECT_EQ(NumStDevFrom("1e-3"), Num(0.001));
    for (const char* bad : {"0", "-1", "", "abc", "0.0", "inf"})
        EXPECT_EQ(NumStDevFrom(bad), std::nullopt) << bad;
    EXPECT_EQ(RangeEndFrom("-12.5"), Num(-12.5));
    EXPECT_EQ(RangeEndFrom("0"), Num(0.0));
    for (const char* bad : {"", "x", "1,5", "nan"})
        EXPECT_EQ(RangeEndFrom(bad), std::nullopt) << bad;

    using Ticks = std::optional<int16_t>;
    EXPECT_EQ(TicksFrom("1"), Ticks(1));
    EXPECT_EQ(TicksFrom("3.0"), Ticks(3));
    EXPECT_EQ(TicksFrom("32767"), Ticks(32767));
    for (const char* bad : {"0", "-2", "2.5", "32768", "", "five", "1e10"})
        EXPECT_EQ(TicksFrom(bad), std::nullopt) << bad;
}
