// Anti-aliased dots and lines: the bilinear split, its area-weighted form at
// other pixel ratios, the rounding helper, and the ink a line leaves per step.
#include "ui/draw/m_AntiAlias.h"

#include "tests/helpers/TestSupport.h"
#include "ui/draw/m_GetDIBBits.h"

#include <cmath>
#include <gtest/gtest.h>

using m_GetDIBBits::PixelBuffer;

namespace {

PixelBuffer Filled(int w, int h, int grey, double ratio = 1) {
    PixelBuffer b = PixelBuffer::Make(w, h);
    for (long long i = 0; i < static_cast<long long>(b.EntryCount()); ++i)
        b.Entry(i)[0] = b.Entry(i)[1] = b.Entry(i)[2] = static_cast<uint8_t>(grey);
    b.Ratio = ratio;
    return b;
}

int Red(const PixelBuffer& b, int x, int y) {
    return static_cast<int>(b.Get(x, y) & 0xFF);
}

class AntiAliasTest : public testing_support::RecordingTest {
  protected:
    void TearDown() override {
        PixelBuffer dummy;
        m_GetDIBBits::FinishSetDIBPixel(dummy);
    }
};

} // namespace

TEST_F(AntiAliasTest, IntPartIsTheLargestWholeNumberNotAboveAndReportsNoNumber) {
    for (double v : {2.0, 2.5, 2.7, 3.5, 0.49, -0.5, -1.5, -2.5, -0.0, 1e-9, -1e-9, -123456.5})
        EXPECT_EQ(m_AntiAlias::IntPart(v), static_cast<long long>(std::floor(v))) << v;
    EXPECT_TRUE(ErrorLabels().empty());
    for (double v : testing_support::BadValues())
        m_AntiAlias::IntPart(v);
    // NaN, both infinities and the four huge values.
    EXPECT_EQ(ErrorLabels(), std::vector<std::string>(7, "Pondera.m_AntiAlias.IntPart"));
}

// White dots on black; each share is 255 times the area of the pixel the dot
// (ratio device pixels a side) covers, worked by hand, halves to even.
TEST_F(AntiAliasTest, DotSharesItsColourByTheAreaItCovers) {
    struct Share {
        int X, Y, Red;
    };
    const struct {
        const char* Name;
        double Ratio, X, Y;
        std::vector<Share> Shares;
    } rows[] = {
        // clang-format off
        {"corner: only (1, 1) is inside", 1, 0.5, 0.5, {{1, 1, 64}}},
        {"whole coordinates", 1, 2.0, 3.0, {{2, 3, 255}}},
        {"bilinear", 1, 2.25, 2.75, {{2, 2, 48}, {3, 2, 16}, {2, 3, 143}, {3, 3, 48}}},
        {"bilinear 2", 1, 1.9, 3.1, {{1, 3, 23}, {2, 3, 207}, {1, 4, 3}, {2, 4, 23}}},
        {"left of the first column", 1, -0.25, 2.5, {}},
        {"ratio 2, whole", 2, 2.0, 3.0, {{4, 5, 255}, {5, 5, 255}, {4, 6, 255}, {5, 6, 255}}},
        {"ratio 2, a quarter across", 2, 2.25, 3.0,
         {{4, 5, 128}, {5, 5, 255}, {6, 5, 128}, {4, 6, 128}, {5, 6, 255}, {6, 6, 128}}},
        {"ratio 1.5", 1.5, 2.0, 3.0, {{3, 4, 255}, {4, 4, 128}, {3, 5, 128}, {4, 5, 64}}},
        // clang-format on
    };
    for (const auto& row : rows) {
        PixelBuffer b = Filled(9, 9, 0, row.Ratio);
        ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
        m_AntiAlias::AADot(row.X, row.Y, 255, 255, 255);
        int inked = 0;
        for (long long i = 0; i < static_cast<long long>(b.EntryCount()); ++i)
            inked += b.Entry(i)[2] != 0;
        EXPECT_EQ(inked, static_cast<int>(row.Shares.size())) << row.Name;
        for (const Share& s : row.Shares)
            EXPECT_EQ(Red(b, s.X, s.Y), s.Red) << row.Name << " at " << s.X << "," << s.Y;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(AntiAliasTest, DotFarAwayOrAtNoNumberChangesNothing) {
    PixelBuffer b = Filled(3, 3, 0);
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
    m_AntiAlias::AADot(-50.5, 2.5, 255, 255, 255);
    m_AntiAlias::AADot(2.5, 1e9, 255, 255, 255);
    for (double bad : {double(NAN), double(INFINITY), 1e300})
        m_AntiAlias::AADot(bad, 1, 255, 255, 255);
    EXPECT_EQ(b.Get(1, 1) | b.Get(2, 2) | b.Get(3, 3), 0u);
    EXPECT_EQ(ErrorLabels(), std::vector<std::string>(3, "Pondera.m_AntiAlias.AADot"));
}

// Every step along the longer axis puts one full colour's worth of ink,
// shared by the two pixels across the line.
TEST_F(AntiAliasTest, LineInksEachStepOnceAcrossItsMinorAxis) {
    const struct {
        double X1, Y1, X2, Y2;
        bool Steep;
    } rows[] = {
        {2, 3.5, 18, 9.25, false},
        {18, 9.25, 2, 3.5, false}, // either direction
        {4.5, 2, 10.75, 17, true},
        {2, 6, 18, 6, false}, // horizontal on whole rows: one pixel per step
    };
    for (const auto& row : rows) {
        PixelBuffer b = Filled(20, 20, 255);
        ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
        m_AntiAlias::AALine(row.X1, row.Y1, row.X2, row.Y2, 0, 0, 0);
        const double from = row.Steep ? std::min(row.Y1, row.Y2) : std::min(row.X1, row.X2);
        const double to = row.Steep ? std::max(row.Y1, row.Y2) : std::max(row.X1, row.X2);
        for (int a = 1; a <= 19; ++a) {
            int ink = 0;
            for (int c = 1; c <= 19; ++c)
                ink += 255 - (row.Steep ? Red(b, c, a) : Red(b, a, c));
            EXPECT_NEAR(ink, a >= static_cast<int>(from) && a <= to ? 255 : 0, 2) << "step " << a;
        }
    }
    EXPECT_TRUE(ErrorLabels().empty());
}
