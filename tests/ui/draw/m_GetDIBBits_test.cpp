// Pixel access (the bottom-up index rule, clamping, blending and the open/close
// bracket, on a plain buffer and over a surface's picture) and the anti-aliased
// dots and lines drawn through it.
#include "ui/draw/m_AntiAlias.h"
#include "ui/draw/m_GetDIBBits.h"

#include "tests/helpers/TestSupport.h"
#include "ui/draw/PictureBox.h"

#include <QImage>
#include <cmath>

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

int Changed(const PixelBuffer& b) {
    int n = 0;
    for (long long i = 0; i < static_cast<long long>(b.EntryCount()); ++i)
        n += (b.Entry(i)[0] | b.Entry(i)[1] | b.Entry(i)[2]) != 0;
    return n;
}

class DibTest : public testing_support::RecordingTest {
  protected:
    void TearDown() override {
        PixelBuffer dummy;
        m_GetDIBBits::FinishSetDIBPixel(dummy);
    }
};

} // namespace

// Entry (height - y) * width + x, entries from 0, column taken as given; -1
// outside, and x = width of the top row lies one past the last entry.
TEST_F(DibTest, PixelIndexFollowsBottomUpRuleWithColumnAsGiven) {
    const struct {
        int X, Y;
        long long Entry;
    } rows[] = {{1, 3, 1},  {1, 1, 9},  {3, 2, 7},  {4, 2, 8},  {2, 1, 10},      {4, 1, 12},
                {0, 1, -1}, {5, 1, -1}, {1, 0, -1}, {1, 4, -1}, {1 << 30, 2, -1}};
    for (const auto& row : rows) {
        PixelBuffer b = PixelBuffer::Make(4, 3);
        ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
        EXPECT_EQ(b.IndexOf(row.X, row.Y), row.Entry) << row.X << "," << row.Y;
        m_GetDIBBits::SetDIBPixel(row.X, row.Y, 10, 20, 30);
        m_GetDIBBits::BlendDIBPixel(row.X, row.Y, 10, 20, 30, 1.0);
        const bool inside = row.Entry >= 0 && row.Entry < 12;
        EXPECT_EQ(Changed(b), inside ? 1 : 0) << row.X << "," << row.Y;
        if (inside) {
            const uint8_t* p = b.Entry(row.Entry);
            EXPECT_EQ(p[0] * 65536 + p[1] * 256 + p[2], 30 * 65536 + 20 * 256 + 10); // blue first
        }
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DibTest, SetClampsAndBlendMixesRoundingHalvesToEven) {
    PixelBuffer b = PixelBuffer::Make(2, 2);
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
    m_GetDIBBits::SetDIBPixel(1, 1, 300, 128, -4);
    EXPECT_EQ(b.Get(1, 1), 0x0080FFu); // red 255, green 128, blue 0
    // old * (1 - w) + new * w, worked by hand.
    const struct {
        int Old, New;
        double Weight;
        int Expected;
    } rows[] = {{100, 200, 0.25, 125}, {0, 255, 1.0, 255}, {80, 255, 0.0, 80},   {0, 1, 0.5, 0},
                {0, 3, 0.5, 2},        {0, 5, 0.5, 2},     {255, 0, 0.1875, 207}};
    for (const auto& row : rows) {
        b.Set(1, 2, row.Old, row.Old, row.Old);
        m_GetDIBBits::BlendDIBPixel(1, 2, row.New, row.New, row.New, row.Weight);
        EXPECT_EQ(b.Get(1, 2), 0x010101u * row.Expected) << row.Old << " " << row.Weight;
    }
    // A weight outside 0..1 is reported and leaves the pixel: 2.0 and the nine
    // such bad values (NaN, +-inf, +-1e308, -1e-300, -1, +-1e150).
    b.Set(1, 2, 10, 10, 10);
    m_GetDIBBits::BlendDIBPixel(1, 2, 255, 255, 255, 2.0);
    for (double bad : testing_support::BadValues())
        m_GetDIBBits::BlendDIBPixel(1, 2, 10, 10, 10, bad);
    EXPECT_EQ(b.Get(1, 2), 0x0A0A0Au);
    EXPECT_EQ(ErrorLabels(), std::vector<std::string>(10, "Pondera.m_GetDIBBits.BlendDIBPixel"));
}

// Over a surface the buffer is its device picture, top-down underneath, and
// carries the surface's pixel ratio.
TEST_F(DibTest, ViewOverASurfaceWritesInPlace) {
    PictureBox box;
    box.SetPictureSize(30, 20);
    box.SetPixelRatio(1.5);
    box.Cls();
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(box));
    EXPECT_EQ(m_GetDIBBits::Current().Width, 45);
    EXPECT_EQ(m_GetDIBBits::Current().Ratio, 1.5);
    m_GetDIBBits::SetDIBPixel(15, 7, 0, 128, 255);
    m_GetDIBBits::SetDIBPixel(45, 30, 0, 0, 255); // wraps to column 0 of screen row 28
    m_GetDIBBits::FinishSetDIBPixel(box);
    EXPECT_FALSE(m_GetDIBBits::IsOpen());
    m_GetDIBBits::SetDIBPixel(1, 1, 255, 0, 0); // closed: nothing written
    const QImage& image = box.Image();
    EXPECT_EQ(image.pixel(15, 6), qRgb(0, 128, 255));
    EXPECT_EQ(image.pixel(0, 28), qRgb(0, 0, 255));
    EXPECT_EQ(image.pixel(1, 0), qRgb(255, 255, 255));
    EXPECT_EQ(box.GetPixel(10, 4), 0xFF8000u); // the logical pixel whose centre it is
}

TEST_F(DibTest, IntPartIsTheLargestWholeNumberNotAboveAndReportsNoNumber) {
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
TEST_F(DibTest, DotSharesItsColourByTheAreaItCovers) {
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
        {"bilinear", 1, 2.25, 2.75, {{2, 2, 48}, {3, 2, 16}, {2, 3, 143}, {3, 3, 48}}},
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
        EXPECT_EQ(Changed(b), static_cast<int>(row.Shares.size())) << row.Name;
        for (const Share& s : row.Shares)
            EXPECT_EQ(Red(b, s.X, s.Y), s.Red) << row.Name << " at " << s.X << "," << s.Y;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

// Every step along the longer axis puts one full colour's worth of ink,
// shared by the two pixels across the line.
TEST_F(DibTest, LineInksEachStepOnceAcrossItsMinorAxis) {
    const struct {
        double X1, Y1, X2, Y2;
        bool Steep;
    } rows[] = {
        {2, 3.5, 18, 9.25, false},
        {18, 9.25, 2, 3.5, false}, // either direction
        {4.5, 2, 10.75, 17, true},
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
