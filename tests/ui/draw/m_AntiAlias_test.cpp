// Anti-aliased dots and lines: the bilinear split, whole coordinates, the
// rounding helper, and the ink a line leaves per step.
#include "ui/draw/m_AntiAlias.h"

#include "tests/helpers/TestSupport.h"
#include "ui/draw/m_GetDIBBits.h"

#include <cmath>
#include <gtest/gtest.h>

using m_GetDIBBits::PixelBuffer;

namespace {

PixelBuffer Filled(int w, int h, int grey) {
    PixelBuffer b = PixelBuffer::Make(w, h);
    for (long long i = 0; i < static_cast<long long>(b.EntryCount()); ++i)
        b.Entry(i)[0] = b.Entry(i)[1] = b.Entry(i)[2] = static_cast<uint8_t>(grey);
    return b;
}

int Red(const PixelBuffer& b, int x, int y) {
    return static_cast<int>(b.Get(x, y) & 0xFF);
}

int EntriesNot(const PixelBuffer& b, int grey) {
    int n = 0;
    for (long long i = 0; i < static_cast<long long>(b.EntryCount()); ++i)
        n += b.Entry(i)[2] != grey;
    return n;
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
    const double values[] = {2.0,  2.5,  2.7,  3.5,   0.49,     -0.5,      -1.5, -2.5,
                             -2.0, -0.0, 1e-9, -1e-9, 123456.5, -123456.5, 0.5,  -3.4999};
    for (double v : values)
        EXPECT_EQ(m_AntiAlias::IntPart(v), static_cast<long long>(std::floor(v))) << v;
    EXPECT_TRUE(ErrorLabels().empty());
    for (double v : testing_support::BadValues()) {
        const long long r = m_AntiAlias::IntPart(v);
        if (std::isfinite(v) && std::fabs(v) < 1e15) {
            EXPECT_EQ(r, static_cast<long long>(std::floor(v))) << v;
        }
    }
    // NaN, both infinities and the four huge values.
    EXPECT_EQ(ErrorLabels(), std::vector<std::string>(7, "Pondera.m_AntiAlias.IntPart"));
}

// Dots in white on black; the shares worked by hand (255 * weight, halves to even).
TEST_F(AntiAliasTest, DotSplitsWithBilinearWeightsAndWholeCoordinatesSetOnePixel) {
    struct Share {
        int X, Y, Red;
    };
    const std::pair<std::pair<double, double>, std::vector<Share>> rows[] = {
        {{0.5, 0.5}, {{1, 1, 64}}}, // only (1, 1) is inside, with a quarter
        {{2.0, 3.0}, {{2, 3, 255}}},
        {{2.25, 2.75}, {{2, 2, 48}, {3, 2, 16}, {2, 3, 143}, {3, 3, 48}}},
        {{3.5, 1.5}, {{3, 1, 64}, {4, 1, 64}, {3, 2, 64}, {4, 2, 64}}},
        {{1.9, 3.1}, {{1, 3, 23}, {2, 3, 207}, {1, 4, 3}, {2, 4, 23}}},
        {{-0.25, 2.5}, {}}, // left of the first column
    };
    for (const auto& [at, shares] : rows) {
        PixelBuffer b = Filled(5, 5, 0);
        ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
        m_AntiAlias::AADot(at.first, at.second, 255, 255, 255);
        for (const Share& s : shares)
            EXPECT_EQ(Red(b, s.X, s.Y), s.Red) << at.first << "," << at.second;
        EXPECT_EQ(EntriesNot(b, 0), static_cast<int>(shares.size()))
            << at.first << "," << at.second;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(AntiAliasTest, DotWithoutOpenAccessFarAwayOrAtNoNumberChangesNothing) {
    PixelBuffer b = Filled(3, 3, 0);
    m_AntiAlias::AADot(1.5, 1.5, 255, 255, 255); // not open
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
    m_AntiAlias::AADot(-50.5, 2.5, 255, 255, 255);
    m_AntiAlias::AADot(2.5, 1e9, 255, 255, 255);
    EXPECT_TRUE(ErrorLabels().empty());
    for (double bad : testing_support::BadValues())
        if (!std::isfinite(bad) || std::fabs(bad) > 1e15)
            m_AntiAlias::AADot(bad, bad, 255, 255, 255);
    EXPECT_EQ(EntriesNot(b, 0), 0);
    EXPECT_EQ(ErrorLabels(), std::vector<std::string>(7, "Pondera.m_AntiAlias.AADot"));
}

// Every step along the longer axis puts one full colour's worth of ink,
// shared by the two pixels across the line.
TEST_F(AntiAliasTest, LineInksEachStepOnceAcrossItsMinorAxis) {
    struct Row {
        double X1, Y1, X2, Y2;
        bool Steep;
    };
    const Row rows[] = {
        {2, 3.5, 18, 9.25, false},
        {18, 9.25, 2, 3.5, false}, // either direction
        {4.5, 2, 10.75, 17, true},
        {2, 6, 18, 6, false}, // horizontal on whole rows: one pixel per step
    };
    for (const Row& row : rows) {
        PixelBuffer b = Filled(20, 20, 255);
        ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
        m_AntiAlias::AALine(row.X1, row.Y1, row.X2, row.Y2, 0, 0, 0);
        const int from =
            static_cast<int>(row.Steep ? std::min(row.Y1, row.Y2) : std::min(row.X1, row.X2));
        const int to =
            static_cast<int>(row.Steep ? std::max(row.Y1, row.Y2) : std::max(row.X1, row.X2));
        for (int a = 1; a <= 19; ++a) {
            int ink = 0;
            for (int b2 = 1; b2 <= 19; ++b2)
                ink += 255 - (row.Steep ? Red(b, b2, a) : Red(b, a, b2));
            if (a >= from && a <= to)
                EXPECT_NEAR(ink, 255, 2) << "step " << a;
            else
                EXPECT_EQ(ink, 0) << "step " << a;
        }
    }
    EXPECT_TRUE(ErrorLabels().empty());
}
