// The drawing surface: colours in 0x00BBGGRR, lines and boxes where asked at
// every pixel ratio, text, resizing, and bars filled at once as one by one.
#include "ui/draw/PictureBox.h"

#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <limits>

namespace {

std::unique_ptr<PictureBox> MakeBox(int w, int h, uint32_t back = 0xFFFFFF, double ratio = 1) {
    auto box = std::make_unique<PictureBox>();
    box->SetPictureSize(w, h);
    box->SetPixelRatio(ratio);
    box->SetBackColor(back);
    box->Cls();
    return box;
}

// Device pixels not of `colour`, and their bounding box.
int CountNot(PictureBox& box, uint32_t colour, QRect* bounds = nullptr) {
    const QImage& image = box.Image();
    const QRgb c = qRgb(colour & 0xFF, (colour >> 8) & 0xFF, colour >> 16);
    int n = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if ((image.pixel(x, y) & 0xFFFFFF) != (c & 0xFFFFFF)) {
                ++n;
                if (bounds) *bounds = bounds->united(QRect(x, y, 1, 1));
            }
    return n;
}

} // namespace

// Lines and filled boxes cover their ends; at ratio r a logical pixel is
// r x r device pixels, so the same call covers r^2 times the pixels, edges
// rounded to device pixels and every line of one width equally wide.
TEST(PictureBox, LinesAndBoxesCoverTheSameLogicalAreaAtEveryRatio) {
    const struct {
        double Ratio;
        int Line, Box, Wide; // device pixels inked
        QRect LineBounds;    // the 1-wide line from (5, 2) to (5, 8)
    } rows[] = {
        {1, 7, 5 * 7, 3 * 21, QRect(5, 2, 1, 7)},
        {1.5, 2 * 11, 8 * 10, 5 * 31, QRect(8, 3, 2, 11)},
        {2, 2 * 14, 10 * 14, 6 * 42, QRect(10, 4, 2, 14)},
    };
    for (const auto& row : rows) {
        auto box = MakeBox(30, 30, 0xFFFFFF, row.Ratio);
        ASSERT_EQ(box->Image().size(), QSize(30, 30) * row.Ratio);
        box->SetForeColor(0xFF0000); // blue
        box->Line(5, 2, 5, 8);
        QRect bounds;
        EXPECT_EQ(CountNot(*box, 0xFFFFFF, &bounds), row.Line) << row.Ratio;
        EXPECT_EQ(bounds, row.LineBounds) << row.Ratio;
        EXPECT_EQ(box->GetPixel(5, 8), 0xFF0000u); // blue is 0xFF0000, red 0x0000FF
        box->Cls();
        box->Box(2, 3, 6, 9, 0x00FF00, true); // corners inclusive
        EXPECT_EQ(CountNot(*box, 0xFFFFFF), row.Box) << row.Ratio;
        box->Cls();
        box->SetDrawWidth(3);
        box->Line(10, 5, 10, 25, 0x000000);
        EXPECT_EQ(CountNot(*box, 0xFFFFFF), row.Wide) << row.Ratio;
    }
}

TEST(PictureBox, PrintMovesDownOneLineAndOpaqueTextFillsItsCell) {
    for (double ratio : {1.0, 2.0}) {
        auto box = MakeBox(120, 60, 0xFFFFFF, ratio);
        box->CurrentX = 30;
        box->CurrentY = 7;
        box->Print("0.00");
        EXPECT_EQ(box->CurrentX, 0);
        EXPECT_NEAR(box->CurrentY, 7 + box->TextHeight(), 1e-9);
        box->Box(0, 30, 119, 59, 0x00FF00, true); // green lower half
        // The cell's last row lies below the baseline: no ink from capitals,
        // the back colour unless the font is transparent (on green here).
        for (bool transparent : {false, true}) {
            box->SetFontTransparent(transparent);
            box->CurrentX = 5;
            box->CurrentY = transparent ? 42 : 31;
            box->Print("LSL");
            EXPECT_EQ(box->GetPixel(6, static_cast<int>(box->CurrentY) - 1),
                      transparent ? 0x00FF00u : 0xFFFFFFu);
        }
    }
}

TEST(PictureBox, ResizeAndRatioAlwaysLeaveAPictureToDrawOn) {
    auto box = MakeBox(30, 15);
    box->SetPixelRatio(1.5);
    EXPECT_EQ(box->Image().size(), QSize(45, 23));
    box->SetPictureSize(0, 0);
    EXPECT_EQ(box->ScaleWidth(), 1);
    box->Line(0, 0, 100, 100);
}

TEST(PictureBox, FarOrNoNumberCoordinatesDrawNothingHarmful) {
    auto box = MakeBox(20, 20);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    box->Line(nan, 1, inf, 5);
    box->Box(nan, 0, 3, 3, 0, true);
    box->FillArea(0, 0, inf, 3, 0);
    EXPECT_EQ(CountNot(*box, 0xFFFFFF), 0);
    box->Line(10, -1e300, 10, 1e300, 0x000000); // a vertical line through everything
    EXPECT_EQ(box->GetPixel(10, 0) | box->GetPixel(10, 19), 0u);
    box->CurrentX = nan;
    box->Print("x");
}

// Bars filled at once come out as the same bars filled one after another:
// overlaps go to the later bar, whatever their tops and bottoms, also in a clip.
TEST(PictureBox, BarsAtOnceEqualBarsOneByOne) {
    const std::vector<PictureBox::Bar> bars = {
        {2, 6, 3, 25, 0xFF0000},  {5, 9.5, 1, 25, 0x0000FF}, {8.3, 12, 12, 20, 0x00FF00},
        {10, 15, 4, 8, 0xFF0000}, {11, 11.2, 6, 30, 0},      {14, 40, -5, 14.5, 0x00FF00},
        {3, 4, 22, 23, 0x808080}, {std::nan(""), 5, 1, 2, 0}};
    for (double ratio : {1.0, 1.5}) { // clipped at 1.5
        auto atOnce = MakeBox(30, 28, 0xFFFFFF, ratio), oneByOne = MakeBox(30, 28, 0xFFFFFF, ratio);
        for (auto* box : {atOnce.get(), oneByOne.get()})
            if (ratio != 1) box->SetClip(QRect(6, 2, 6, 20));
        atOnce->FillBars(bars);
        for (const PictureBox::Bar& b : bars)
            oneByOne->FillArea(b.Left, b.Top, b.Right, b.Bottom, b.Bgr);
        EXPECT_TRUE(atOnce->Image() == oneByOne->Image()) << ratio;
    }
}
