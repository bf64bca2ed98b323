// A surface that follows its palette: off (the default) it draws exactly what it always drew;
// on, its text and wires read at 4.5:1 or better against what they are drawn on under the light
// and the dark Fusion palettes, measured on rendered pixels.

#include "editor_test_util.h"

#include "common/test_util.h"
#include "velDiagEdit/platform/dark_palette.h"

#include <QGuiApplication>
#include <QStyle>
#include <QStyleFactory>
#include <QTest>
#include <cmath>
#include <memory>

using namespace vde;
using namespace vde::test;

namespace {

// The palettes a Qt application shows with the Fusion style: Fusion's own light one, and the
// dark one such applications set (DarkFusionPalette, Qt 6.4 has no dark scheme of its own).
QPalette LightFusion() {
    std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("Fusion")));
    return fusion->standardPalette();
}

// The size of a label's text cell at a font height, as the block canvas measures it.
int CellW(const QString& text, int height) {
    TFont f;
    f.Height = height;
    return FontTextWidth(f, text);
}
int CellH(int height) {
    TFont f;
    f.Height = height;
    return FontTextHeight(f);
}

// Contrast ratio of the web's accessibility guidelines, from the sRGB channels.
double Lum(TColor c) {
    auto lin = [](unsigned v) {
        const double s = v / 255.0;
        return s <= 0.03928 ? s / 12.92 : std::pow((s + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * lin(c & 0xFF) + 0.7152 * lin((c >> 8) & 0xFF) + 0.0722 * lin(c >> 16);
}

double Ratio(TColor a, TColor b) {
    const double x = Lum(a), y = Lum(b);
    return (std::max(x, y) + 0.05) / (std::min(x, y) + 0.05);
}

class SurfacePalette : public EditorFixture {
protected:
    void SetUp() override {
        EditorFixture::SetUp();
        // The half adder reaches x = 500 and y = 220.
        panel.resize(520, 240);
        dc->LoadDiagramFromFile(QStringLiteral(VDE_EXAMPLES_DIR "/half_adder.dgm"));
        ASSERT_GT(dc->ObjList->Count(), 3);
        ASSERT_GT(dc->ConList->Count(), 3);
    }

    QImage RenderWith(const QPalette& palette) {
        panel.setPalette(palette);
        panel.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&panel));
        return Render();
    }

    bool OnABlock(int x, int y) const {
        for (int i = 0; i < dc->ObjList->Count(); ++i)
            if (dc->ObjList->Items(i)->geometry().adjusted(-12, -12, 12, 12).contains(x, y))
                return true;
        return false;
    }

    // Every middle pixel of a wire's segment (of every wire but `skip`) that lies clear of the
    // blocks, each with the panel's background pixel 6 pixels beside it (above a horizontal
    // segment, left of a vertical one), as (wire, background).
    std::vector<std::pair<TColor, TColor>> WireSamples(const QImage& img, int skip = -1) const {
        std::vector<std::pair<TColor, TColor>> out;
        for (int i = 0; i < dc->ConList->Count(); ++i) {
            if (i == skip)
                continue;
            const TPoints& p = dc->ConList->Items(i)->FPoints;
            for (size_t k = 1; k < p.size(); ++k) {
                const int x = (p[k - 1].X + p[k].X) / 2, y = (p[k - 1].Y + p[k].Y) / 2;
                const bool horizontal = p[k - 1].Y == p[k].Y;
                const int bx = horizontal ? x : x - 6, by = horizontal ? y - 6 : y;
                if (std::abs(p[k].X - p[k - 1].X) + std::abs(p[k].Y - p[k - 1].Y) < 10 ||
                    OnABlock(x, y) || OnABlock(bx, by))
                    continue;
                out.emplace_back(PixelColor(img, x, y), PixelColor(img, bx, by));
            }
        }
        return out;
    }

    // For each label cell: (the colour most of the cell has: the body; the colour of the cell
    // standing out most from it: the text).
    std::vector<std::pair<TColor, TColor>> TextSamples(const QImage& img) const {
        std::vector<std::pair<TColor, TColor>> out;
        for (int i = 0; i < dc->ObjList->Count(); ++i) {
            const TDiagObject* o = dc->ObjList->Items(i);
            for (const TDiagLabel& l : o->FLabels) {
                if (l.Text.trimmed().isEmpty())
                    continue;
                const int h = o->GetLabelHeight(l);
                const int x0 = o->x() + l.Start.X, y0 = o->y() + l.Start.Y;
                QHash<TColor, int> count;
                for (int y = y0; y < y0 + CellH(h); ++y)
                    for (int x = x0; x < x0 + CellW(l.Text, h); ++x)
                        ++count[PixelColor(img, x, y)];
                TColor body = 0;
                int most = -1;
                for (auto it = count.cbegin(); it != count.cend(); ++it)
                    if (it.value() > most)
                        most = it.value(), body = it.key();
                TColor text = body;
                for (auto it = count.cbegin(); it != count.cend(); ++it)
                    if (Ratio(it.key(), body) > Ratio(text, body))
                        text = it.key();
                out.emplace_back(body, text);
            }
        }
        return out;
    }
};

} // namespace

TEST(DarkFusionPalette, HasTheDarkGreysWhiteTextAndTheBlueHighlight) {
    const QPalette p = DarkFusionPalette();
    EXPECT_EQ(p.color(QPalette::Window), QColor(53, 53, 53));
    EXPECT_EQ(p.color(QPalette::Button), QColor(53, 53, 53));
    EXPECT_EQ(p.color(QPalette::Base), QColor(42, 42, 42));
    for (QPalette::ColorRole r : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        EXPECT_EQ(p.color(QPalette::Active, r), QColor(255, 255, 255)) << r;
    EXPECT_EQ(p.color(QPalette::Highlight), QColor(42, 130, 218));
    EXPECT_EQ(p.color(QPalette::HighlightedText), QColor(0, 0, 0));
    // Disabled text is greyed, and the same in every role.
    EXPECT_EQ(p.color(QPalette::Disabled, QPalette::Text), QColor(127, 127, 127));
    EXPECT_EQ(p.color(QPalette::Disabled, QPalette::WindowText), QColor(127, 127, 127));
}

TEST_F(SurfacePalette, IsOffByDefaultAndOffDrawsWhatANeverSwitchedSurfaceDraws) {
    EXPECT_FALSE(dc->GetFollowPalette());
    const QImage before = RenderWith(DarkFusionPalette());
    dc->SetFollowPalette(true);
    EXPECT_TRUE(dc->GetFollowPalette());
    const QImage on = RenderWith(DarkFusionPalette());
    dc->SetFollowPalette(false);
    const QImage after = RenderWith(DarkFusionPalette());
    EXPECT_EQ(after, before);
    EXPECT_NE(on, before);
}

TEST_F(SurfacePalette, OffUnderTheDarkPaletteBlackWiresAllButVanishAndLabelsKeepTheirColours) {
    // What the option is for: the wires keep their black on the dark window. The whole
    // application runs under the dark palette, as on a dark desktop.
    const QPalette before = QGuiApplication::palette();
    QGuiApplication::setPalette(DarkFusionPalette());
    const QImage img = RenderWith(DarkFusionPalette());
    QGuiApplication::setPalette(before);
    const auto wires = WireSamples(img);
    ASSERT_GE(wires.size(), 4u);
    for (const auto& [wire, ground] : wires) {
        EXPECT_EQ(wire, 0x000000u);
        EXPECT_LT(Ratio(wire, ground), 2.0);
    }
    // The labels keep the block's own text colour (black) on the block's own light grey body,
    // not the palette's white text.
    const auto texts = TextSamples(img);
    ASSERT_GE(texts.size(), 4u);
    for (const auto& [body, text] : texts) {
        EXPECT_EQ(body, 0xC0C0C0u);
        EXPECT_EQ(text, 0x000000u);
    }
}

class SurfacePaletteOn : public SurfacePalette, public ::testing::WithParamInterface<bool> {};

TEST_P(SurfacePaletteOn, TextAndWiresReadAtFourAndAHalfToOne) {
    dc->SetFollowPalette(true);
    const QPalette palette = GetParam() ? DarkFusionPalette() : LightFusion();
    const QImage img = RenderWith(palette);
    const auto wires = WireSamples(img);
    ASSERT_GE(wires.size(), 4u);
    for (const auto& [wire, ground] : wires) {
        EXPECT_EQ(ground, FromQColor(palette.color(QPalette::Window)));
        EXPECT_GE(Ratio(wire, ground), 4.5) << std::hex << wire << " on " << ground;
    }
    const auto texts = TextSamples(img);
    ASSERT_GE(texts.size(), 4u);
    for (const auto& [body, text] : texts) {
        EXPECT_EQ(body, FromQColor(palette.color(QPalette::Base)));
        EXPECT_GE(Ratio(text, body), 4.5) << std::hex << text << " on " << body;
    }
}

TEST_P(SurfacePaletteOn, ASelectedSegmentStandsOutFromTheOtherWiresAndTheWindow) {
    dc->SetFollowPalette(true);
    // The longest segment of the first wire is selected.
    TDiagConnection* w = dc->ConList->Items(0);
    size_t longest = 1;
    auto length = [&](size_t k) {
        return std::abs(w->FPoints[k].X - w->FPoints[k - 1].X) +
               std::abs(w->FPoints[k].Y - w->FPoints[k - 1].Y);
    };
    for (size_t k = 2; k < w->FPoints.size(); ++k)
        if (length(k) > length(longest))
            longest = k;
    w->FSelectedIndex = int(longest) - 1;
    const QPalette palette = GetParam() ? DarkFusionPalette() : LightFusion();
    const QImage img = RenderWith(palette);
    const TPoint a = w->FPoints[longest - 1], b = w->FPoints[longest];
    ASSERT_FALSE(OnABlock((a.X + b.X) / 2, (a.Y + b.Y) / 2));
    const TColor selected = PixelColor(img, (a.X + b.X) / 2, (a.Y + b.Y) / 2);
    const TColor window = FromQColor(palette.color(QPalette::Window));
    EXPECT_GE(Ratio(selected, window), 4.5) << std::hex << selected;
    const auto others = WireSamples(img, 0);
    ASSERT_FALSE(others.empty());
    for (const auto& [wire, ground] : others)
        EXPECT_NE(selected, wire);
}

INSTANTIATE_TEST_SUITE_P(LightAndDark, SurfacePaletteOn, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& i) {
                             return std::string(i.param ? "DarkFusion" : "LightFusion");
                         });
