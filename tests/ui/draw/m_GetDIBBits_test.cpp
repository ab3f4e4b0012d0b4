// Pixel access: the bottom-up index rule, clamping, blending and the open/close
// bracket, on a plain buffer and over a surface's picture.
#include "ui/draw/m_GetDIBBits.h"

#include "tests/helpers/TestSupport.h"
#include "ui/draw/PictureBox.h"

#include <QImage>
#include <gtest/gtest.h>

#include <array>

using m_GetDIBBits::PixelBuffer;

namespace {

// Every entry of the buffer except `except` is still 0.
void ExpectOthersUntouched(const PixelBuffer& b, long long except) {
    for (long long i = 0; i < static_cast<long long>(b.EntryCount()); ++i) {
        if (i == except) continue;
        const uint8_t* p = b.Entry(i);
        EXPECT_EQ(p[0] | p[1] | p[2], 0) << "entry " << i;
    }
}

class DibTest : public testing_support::RecordingTest {
  protected:
    void TearDown() override {
        PixelBuffer dummy;
        m_GetDIBBits::FinishSetDIBPixel(dummy);
    }
};

} // namespace

// Entry (height - y) * width + x, entries from 0, column taken as given.
TEST_F(DibTest, PixelIndexFollowsBottomUpRuleWithColumnAsGiven) {
    struct Row {
        int X, Y;
        long long Entry;
    };
    // 4 x 3 buffer: 12 entries.
    const Row rows[] = {
        {1, 3, 1},             // bottom row on screen, first entry after the row start
        {1, 1, 9},             // top row
        {3, 2, 7},  {4, 2, 8}, // x = width wraps to column 0 of the row above
        {2, 1, 10},
    };
    for (const Row& row : rows) {
        PixelBuffer b = PixelBuffer::Make(4, 3);
        ASSERT_EQ(b.IndexOf(row.X, row.Y), row.Entry) << row.X << "," << row.Y;
        b.Set(row.X, row.Y, 10, 20, 30);
        const uint8_t* p = b.Entry(row.Entry);
        EXPECT_EQ((std::array<int, 3>{p[0], p[1], p[2]}),
                  (std::array<int, 3>{30, 20, 10})); // blue first
        ExpectOthersUntouched(b, row.Entry);
    }
}

TEST_F(DibTest, PositionsOutsideAndTheTopRightPixelAreIgnoredWithoutError) {
    const int outside[][2] = {{0, 1}, {5, 1}, {1, 0}, {1, 4}, {-3, -3}, {1 << 30, 2}};
    PixelBuffer b = PixelBuffer::Make(4, 3);
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
    for (const auto& xy : outside) {
        m_GetDIBBits::SetDIBPixel(xy[0], xy[1], 255, 255, 255);
        m_GetDIBBits::BlendDIBPixel(xy[0], xy[1], 255, 255, 255, 0.5);
        EXPECT_EQ(b.IndexOf(xy[0], xy[1]), -1);
    }
    EXPECT_EQ(b.IndexOf(4, 1), 12); // one past the last entry
    m_GetDIBBits::SetDIBPixel(4, 1, 255, 255, 255);
    m_GetDIBBits::BlendDIBPixel(4, 1, 255, 255, 255, 1.0);
    ExpectOthersUntouched(b, -1);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DibTest, SetClampsEachComponent) {
    PixelBuffer b = PixelBuffer::Make(2, 2);
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
    m_GetDIBBits::SetDIBPixel(1, 1, 300, 128, -4);
    EXPECT_EQ(b.Get(1, 1), 0x0080FFu); // red 255, green 128, blue 0
    m_GetDIBBits::SetDIBPixel(1, 2, -1, 256, 255);
    EXPECT_EQ(b.Get(1, 2), 0xFFFF00u);
}

TEST_F(DibTest, BlendMixesOldAndNewAndRoundsHalvesToEven) {
    struct Row {
        int Old, New;
        double Weight;
        int Expected;
    };
    // old * (1 - w) + new * w, worked by hand.
    const Row rows[] = {
        {100, 200, 0.25, 125}, {0, 255, 1.0, 255}, {80, 255, 0.0, 80}, {0, 1, 0.5, 0}, // 0.5 -> 0
        {0, 3, 0.5, 2},                                                                // 1.5 -> 2
        {0, 5, 0.5, 2},                                                                // 2.5 -> 2
        {255, 0, 0.1875, 207},                                                         // 207.1875
    };
    for (const Row& row : rows) {
        PixelBuffer b = PixelBuffer::Make(2, 2);
        b.Set(1, 2, row.Old, row.Old, row.Old);
        ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
        m_GetDIBBits::BlendDIBPixel(1, 2, row.New, row.New, row.New, row.Weight);
        const uint32_t c = b.Get(1, 2);
        EXPECT_EQ(static_cast<int>(c & 0xFF), row.Expected)
            << row.Old << " " << row.New << " " << row.Weight;
        EXPECT_EQ(static_cast<int>((c >> 16) & 0xFF), row.Expected);
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DibTest, BlendWeightOutsideZeroToOneIsReportedAndLeavesThePixel) {
    PixelBuffer b = PixelBuffer::Make(2, 2);
    b.Set(1, 2, 10, 10, 10);
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
    m_GetDIBBits::BlendDIBPixel(1, 2, 255, 255, 255, 2.0);
    EXPECT_EQ(b.Get(1, 2), 0x0A0A0Au);
    // Blending a pixel's own colour changes nothing for a weight in 0..1; any
    // other weight is reported.
    for (double bad : testing_support::BadValues())
        m_GetDIBBits::BlendDIBPixel(1, 2, 10, 10, 10, bad);
    EXPECT_EQ(b.Get(1, 2), 0x0A0A0Au);
    // 2.0 and the nine bad values outside 0..1 (NaN, +-inf, +-1e308, -1e-300,
    // -1, +-1e150).
    const auto labels = ErrorLabels();
    EXPECT_EQ(labels.size(), 10u);
    for (const auto& label : labels)
        EXPECT_EQ(label, "Pondera.m_GetDIBBits.BlendDIBPixel");
}

TEST_F(DibTest, NothingIsWrittenOutsideOneOpenAndClose) {
    PixelBuffer b = PixelBuffer::Make(2, 2);
    m_GetDIBBits::SetDIBPixel(1, 1, 255, 0, 0); // not open
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(b));
    EXPECT_TRUE(m_GetDIBBits::IsOpen());
    m_GetDIBBits::FinishSetDIBPixel(b);
    EXPECT_FALSE(m_GetDIBBits::IsOpen());
    m_GetDIBBits::SetDIBPixel(1, 1, 255, 0, 0);
    ExpectOthersUntouched(b, -1);

    PixelBuffer empty;
    EXPECT_FALSE(m_GetDIBBits::InitSetDIBPixel(empty));
    EXPECT_FALSE(m_GetDIBBits::IsOpen());
}

// Over a top-down image the same rule holds: pixel (x, y) is screen column x,
// row y - 1; over a surface the colours show through GetPixel (0x00BBGGRR).
TEST_F(DibTest, ViewsOverAnImageAndASurfaceWriteInPlace) {
    QImage image(5, 4, QImage::Format_RGB32);
    image.fill(Qt::white);
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(image));
    m_GetDIBBits::SetDIBPixel(2, 3, 255, 0, 0);
    m_GetDIBBits::SetDIBPixel(5, 4, 0, 0, 255); // wraps to column 0 of screen row 2
    m_GetDIBBits::FinishSetDIBPixel(image);
    EXPECT_EQ(image.pixel(2, 2), qRgb(255, 0, 0));
    EXPECT_EQ(image.pixel(0, 2), qRgb(0, 0, 255));
    int changed = 0;
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 5; ++x)
            changed += image.pixel(x, y) != qRgb(255, 255, 255);
    EXPECT_EQ(changed, 2);

    PictureBox box;
    box.SetPictureSize(30, 20);
    box.SetBackColor(0xFFFFFF);
    box.Cls();
    ASSERT_TRUE(m_GetDIBBits::InitSetDIBPixel(box));
    m_GetDIBBits::SetDIBPixel(10, 5, 0, 128, 255);
    m_GetDIBBits::FinishSetDIBPixel(box);
    EXPECT_EQ(box.GetPixel(10, 4), 0xFF8000u);
    EXPECT_EQ(box.GetPixel(9, 4), 0xFFFFFFu);
}
