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
    for (int y = 1; y <= h; ++y)
        for (int x = 1; x <= w; ++x) b.Set(x, y, grey, grey, grey);
    // x = width wraps into column 0 of the row above, so column 0 of the
    // bottom row is the one entry no pixel reaches; fill it as well.
    uint8_t* p = b.Entry(0);
    p[0] = p[1] = p[2] = static_cast<uint8_t>(grey);
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

TEST_F(AntiAliasTest, IntPartIsTheLargestWholeNumberNotAbove) {
    const double values[] = {2.0, 2.5, 2.7, 3.5, 0.49, -0.5, -1.5, -2.5, -2.0, -0.0,
                             1e-9, -1e-9, 123456.5, -123456.5, 0.5, -3.4999};
    for (double v : values) EXPECT_EQ(m_AntiAlias::IntPart(v), static_cast<long long>(std::floor(v))) << v;
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(AntiAliasTest, IntPartOfNoNumberIsReported) {
    for (double v : testing_support::BadValues()) {
        const long long r = m_AntiAlias::IntPart(v);
        if (std::isfinite(v) && std::fabs(v) < 1e15) EXPECT_EQ(r, static_cast<long long>(std::floor(v))) << v;
    }
    // NaN, both infinities and the four huge values.
    EXPECT_EQ(ErrorLabels().size(), 7u);
    for (const auto& label : ErrorLabels()) EXPECT_EQ(label, "Pondera.m_AntiAlias.IntPart");
}

// Only pixel (1, 1) is inside; it gets a quarter of the colour.
TEST_F(AntiAliasTest, DotAtHalfHalfTouchesOnlyPixelOneOneWithAQuarter) {
    PixelBuffer b = Filled(4, 4, 255);
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
    m_AntiAlias::AADot(0.5, 0.5, 0, 0, 0);
    EXPECT_EQ(Red(b, 1, 1), 191); // 255 * 0.75 = 191.25
    int touched = 0;
    for (long long i = 0; i < static_cast<long long>(b.EntryCount()); ++i) touched += b.Entry(i)[2] != 255;
    EXPECT_EQ(touched, 1);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(AntiAliasTest, WholeCoordinatesSetExactlyOnePixel) {
    PixelBuffer b = Filled(5, 5, 0);
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
    m_AntiAlias::AADot(2.0, 3.0, 10, 20, 30);
    EXPECT_EQ(b.Get(2, 3), 0x1E140Au);
    int touched = 0;
    for (long long i = 0; i < static_cast<long long>(b.EntryCount()); ++i)
        touched += (b.Entry(i)[0] | b.Entry(i)[1] | b.Entry(i)[2]) != 0;
    EXPECT_EQ(touched, 1);
}

TEST_F(AntiAliasTest, FractionalDotSplitsWithBilinearWeights) {
    struct Row {
        double X, Y;
    };
    const Row rows[] = {{2.25, 2.75}, {3.5, 1.5}, {1.9, 3.1}, {-0.25, 2.5}};
    for (const Row& row : rows) {
        PixelBuffer b = Filled(5, 5, 0);
        ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
        m_AntiAlias::AADot(row.X, row.Y, 255, 255, 255);
        const int ix = static_cast<int>(std::floor(row.X)), iy = static_cast<int>(std::floor(row.Y));
        const double fx = row.X - ix, fy = row.Y - iy;
        auto expected = [](double w) { return static_cast<int>(std::nearbyint(255 * w)); };
        auto inside = [&](int x, int y) { return x >= 1 && x <= 5 && y >= 1 && y <= 5; };
        if (inside(ix, iy)) EXPECT_EQ(Red(b, ix, iy), expected((1 - fx) * (1 - fy)));
        if (inside(ix + 1, iy)) EXPECT_EQ(Red(b, ix + 1, iy), expected(fx * (1 - fy)));
        if (inside(ix, iy + 1)) EXPECT_EQ(Red(b, ix, iy + 1), expected((1 - fx) * fy));
        if (inside(ix + 1, iy + 1)) EXPECT_EQ(Red(b, ix + 1, iy + 1), expected(fx * fy));
    }
}

TEST_F(AntiAliasTest, DotWithoutOpenAccessOrFarAwayChangesNothing) {
    PixelBuffer b = Filled(3, 3, 0);
    m_AntiAlias::AADot(1.5, 1.5, 255, 255, 255); // not open
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
    m_AntiAlias::AADot(-50.5, 2.5, 255, 255, 255);
    m_AntiAlias::AADot(2.5, 1e9, 255, 255, 255);
    for (long long i = 0; i < static_cast<long long>(b.EntryCount()); ++i) EXPECT_EQ(b.Entry(i)[2], 0);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(AntiAliasTest, DotAtNoNumberIsReportedNotDrawn) {
    PixelBuffer b = Filled(3, 3, 0);
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
    for (double bad : testing_support::BadValues()) m_AntiAlias::AADot(bad, bad, 255, 255, 255);
    EXPECT_FALSE(ErrorLabels().empty());
    for (const auto& label : ErrorLabels()) EXPECT_EQ(label, "Pondera.m_AntiAlias.AADot");
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
        {2, 6, 18, 6, false},      // horizontal on whole rows: one pixel per step
    };
    for (const Row& row : rows) {
        PixelBuffer b = Filled(20, 20, 255);
        ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
        m_AntiAlias::AALine(row.X1, row.Y1, row.X2, row.Y2, 0, 0, 0);
        const int from = static_cast<int>(row.Steep ? std::min(row.Y1, row.Y2) : std::min(row.X1, row.X2));
        const int to = static_cast<int>(row.Steep ? std::max(row.Y1, row.Y2) : std::max(row.X1, row.X2));
        for (int a = 1; a <= 19; ++a) {
            int ink = 0;
            for (int b2 = 1; b2 <= 19; ++b2) ink += 255 - (row.Steep ? Red(b, b2, a) : Red(b, a, b2));
            if (a >= from && a <= to) EXPECT_NEAR(ink, 255, 2) << "step " << a;
            else EXPECT_EQ(ink, 0) << "step " << a;
        }
    }
    EXPECT_TRUE(ErrorLabels().empty());
}
