// The remembered session: a round trip, and each damaged entry left empty on
// its own while the others still read.
#include "settings/Session.h"

#include "tests/settings/StoreFixture.h"

namespace {

using settings_test::OptionsStoreTest;

TEST_F(OptionsStoreTest, SessionRoundTripsAndADamagedEntryIsLeftEmptyAlone) {
    Session::State s;
    s.ByMoments = false;
    s.Distribution = "Weibull";
    s.Params = {"1.5", "4", "0", std::nullopt};
    s.Ticked = {true, false, true};
    s.Limits = {"0.5", "0", "9"};
    Session::Save(s);
    const Session::State back = Session::Load();
    EXPECT_EQ(back.Distribution, s.Distribution);
    EXPECT_EQ(back.Params, s.Params);
    EXPECT_EQ(back.Ticked, s.Ticked);
    EXPECT_EQ(back.Limits, s.Limits);
    EXPECT_EQ(back.ByMoments, false);
    EXPECT_FALSE(back.Moments[0] || back.Locks[0]);

    const struct {
        const char* Key;
        CAppSettings::Value Stored;
    } damaged[] = {{"Param1", std::string("abc")},
                   {"LSLTicked", std::string("2")},
                   {"ByMoments", true}, // a number, not the "1" written
                   {"USL", std::string("")}};
    for (const auto& d : damaged)
        AppSettings().SaveSetting(Session::kSection, d.Key, d.Stored);
    const Session::State hurt = Session::Load();
    EXPECT_FALSE(hurt.Params[0] || hurt.Ticked[0] || hurt.ByMoments || hurt.Limits[2]);
    EXPECT_EQ(hurt.Params[1], "4");
    EXPECT_EQ(hurt.Ticked[2], true);
    EXPECT_EQ(hurt.Distribution, "Weibull");
    EXPECT_TRUE(Rec().Messages.empty() && Rec().AllErrors().empty());
}

} // namespace
