// The command-line tool, run as a process on the sample diagrams of examples/ and on files made
// here: pictures checked pixel by pixel and as SVG/PDF documents, conversions compared with
// what the library itself saves, validation of good and broken files, JSON dumps against the
// committed expected files, and copies through a table on SQLite and PostgreSQL.
#include "common/db_test_util.h"

#include <velDiagEdit/velDiagEdit.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QWidget>
#include <QXmlStreamReader>
#include <climits>
#include <functional>
#include <gtest/gtest.h>

using namespace vde;
using namespace vde::test;

namespace {

struct ToolRun {
    int Code = -1;
    QByteArray Out;
    QByteArray Err;
};

ToolRun Tool(const QStringList& args) {
    QProcess p;
    p.setProgram(QStringLiteral(VELDIAG_PATH));
    p.setArguments(args);
    p.start();
    ToolRun r;
    if (!p.waitForFinished(120000)) {
        p.kill();
        p.waitForFinished();
        r.Err = "did not finish";
        return r;
    }
    r.Code = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -2;
    r.Out = p.readAllStandardOutput();
    r.Err = p.readAllStandardError();
    return r;
}

QString Examples() {
    return QStringLiteral(VDE_EXAMPLES_DIR);
}

QStringList ExampleNames(const QString& ext) {
    QStringList names;
    for (const QString& f :
         QDir(Examples()).entryList({QStringLiteral("*.") + ext}, QDir::Files, QDir::Name))
        names << f.chopped(ext.size() + 1);
    return names;
}

QString Example(const QString& name, const QString& ext) {
    return Examples() + QLatin1Char('/') + name + QLatin1Char('.') + ext;
}

QByteArray ReadAll(const QString& file) {
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return f.readAll();
}

void WriteAll(const QString& file, const QByteArray& bytes) {
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    ASSERT_EQ(f.write(bytes), bytes.size());
}

QJsonObject DumpOf(const QString& file) {
    const ToolRun r = Tool({QStringLiteral("dump"), QStringLiteral("--json"), file});
    EXPECT_EQ(r.Code, 0) << r.Err.toStdString();
    return QJsonDocument::fromJson(r.Out).object();
}

// The union of the blocks' bounds of a dump: the part of the picture the blocks must fill.
QRect BlockArea(const QJsonObject& dump) {
    QRect area;
    for (const QJsonValue& v : dump[QStringLiteral("blocks")].toArray()) {
        const QJsonObject b = v.toObject()[QStringLiteral("bounds")].toObject();
        const QRect r(QPoint(b[QStringLiteral("left")].toInt(), b[QStringLiteral("top")].toInt()),
                      QPoint(b[QStringLiteral("right")].toInt() - 1,
                             b[QStringLiteral("bottom")].toInt() - 1));
        area = area.united(r);
    }
    return area;
}

// What a picture shows, by the documented rule, in diagram coordinates (half-open): the blocks'
// bounds, each wire point with the 2-pixel pen around it (one pixel before, one after), and a
// 5-pixel square around the end of a wire that lands on another wire (its junction dot).
QRect ContentArea(const QJsonObject& dump) {
    int l = INT_MAX, t = INT_MAX, r = INT_MIN, b = INT_MIN;
    const auto add = [&](int L, int T, int R, int B) {
        l = std::min(l, L), t = std::min(t, T), r = std::max(r, R), b = std::max(b, B);
    };
    for (const QJsonValue& v : dump[QStringLiteral("blocks")].toArray()) {
        const QJsonObject o = v.toObject()[QStringLiteral("bounds")].toObject();
        add(o[QStringLiteral("left")].toInt(), o[QStringLiteral("top")].toInt(),
            o[QStringLiteral("right")].toInt(), o[QStringLiteral("bottom")].toInt());
    }
    for (const QJsonValue& v : dump[QStringLiteral("connections")].toArray()) {
        const QJsonArray pts = v.toObject()[QStringLiteral("points")].toArray();
        if (pts.size() < 2)
            continue;
        for (const QJsonValue& p : pts)
            add(p[0].toInt() - 1, p[1].toInt() - 1, p[0].toInt() + 1, p[1].toInt() + 1);
        if (!v.toObject()[QStringLiteral("destination")]
                 .toObject()[QStringLiteral("onSegment")]
                 .isNull()) {
            const QJsonArray e = pts.last().toArray();
            add(e[0].toInt() - 5, e[1].toInt() - 5, e[0].toInt() + 5, e[1].toInt() + 5);
        }
    }
    return QRect(l, t, r - l, b - t);
}

// Bounding box of the pixels that differ from the background.
QRect Drawn(const QImage& img, QRgb background) {
    int l = img.width(), t = img.height(), r = -1, b = -1;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x)
            if (img.pixel(x, y) != background) {
                l = std::min(l, x), t = std::min(t, y), r = std::max(r, x), b = std::max(b, y);
            }
    return r < 0 ? QRect() : QRect(QPoint(l, t), QPoint(r, b));
}

// A diagram loaded in this process, the way a host loads it.
struct HostSurface {
    QWidget Panel;
    TCanvas Canvas;
    TDiagContainer Container{&Panel, &Canvas, nullptr};
    HostSurface() { Canvas.SetHandle(&Panel); }
    QByteArray Save() {
        TMemoryStream s;
        Container.SaveToStream(s);
        return QByteArray(reinterpret_cast<const char*>(s.Memory()), qsizetype(s.Bytes().size()));
    }
};

// A block record without its last four bytes, the key (which the block list makes up).
QByteArray RecordWithoutKey(const TDiagObject* b) {
    TMemoryStream s;
    b->SaveToStream(s);
    return QByteArray(reinterpret_cast<const char*>(s.Memory()), qsizetype(s.Bytes().size()) - 4);
}

class Veldiag : public ::testing::Test {
protected:
    QTemporaryDir Dir;
    QString Path(const QString& name) const { return Dir.filePath(name); }
};

// ---- commands and help

TEST_F(Veldiag, EveryCommandHasHelp) {
    for (const char* c : {"render", "convert", "validate", "dump", "simulate"}) {
        const ToolRun r = Tool({QString::fromLatin1(c), QStringLiteral("--help")});
        EXPECT_EQ(r.Code, 0) << c;
        EXPECT_TRUE(r.Out.startsWith(QByteArray("Usage: veldiag ") + c)) << r.Out.toStdString();
    }
    for (const char* c : {"get", "put", "list"}) {
        const ToolRun r =
            Tool({QStringLiteral("db"), QString::fromLatin1(c), QStringLiteral("--help")});
        EXPECT_EQ(r.Code, 0) << c;
        EXPECT_TRUE(r.Out.startsWith(QByteArray("Usage: veldiag db ") + c)) << r.Out.toStdString();
        EXPECT_TRUE(r.Out.contains("--database")) << c;
    }
    const ToolRun top = Tool({QStringLiteral("--help")});
    EXPECT_EQ(top.Code, 0);
    for (const char* c : {"render", "convert", "validate", "dump", "db", "simulate"})
        EXPECT_TRUE(top.Out.contains(c)) << c;
}

TEST_F(Veldiag, UnknownCommandOrOptionIsAUsageErrorOnStderr) {
    ToolRun r = Tool({QStringLiteral("paint")});
    EXPECT_EQ(r.Code, 2);
    EXPECT_TRUE(r.Err.contains("unknown command \"paint\""));
    r = Tool({QStringLiteral("dump"), QStringLiteral("--colour"), Example("half_adder", "dgm")});
    EXPECT_EQ(r.Code, 2);
    EXPECT_TRUE(r.Err.contains("colour"));
    EXPECT_TRUE(r.Out.isEmpty());
    r = Tool({QStringLiteral("render"), Example("half_adder", "dgm")});
    EXPECT_EQ(r.Code, 2);
    EXPECT_TRUE(r.Err.contains("-o OUT"));
}

// Two gates wired together, then the record fields a damaged or foreign file could hold.
void SaveWiredPair(const QString& file, const std::function<void(TDiagContainer&)>& spoil) {
    HostSurface host;
    TDiagObject* a = host.Container.CreateObjByDiagType(doAndLogic, {10, 20, 70, 90});
    TDiagObject* b = host.Container.CreateObjByDiagType(doOrLogic, {150, 20, 210, 90});
    a->SetObjKey(11);
    b->SetObjKey(22);
    auto* w = new TDiagObjConnection(host.Container.ConList.get(), a, 1, b, -1, {10, 10}, 0, 0, 0);
    w->FSrcKey = 11;
    w->FDstKey = 22;
    spoil(host.Container);
    host.Container.SaveDiagramToFile(file);
}

// ---- render

TEST_F(Veldiag, RenderPngOfEveryExampleIsCroppedToTheDrawingPlusTheMargin) {
    const QStringList names = ExampleNames(QStringLiteral("dgm"));
    ASSERT_GE(names.size(), 4);
    for (const QString& n : names) {
        SCOPED_TRACE(n.toStdString());
        const QString out = Path(n + QStringLiteral(".png"));
        const ToolRun r =
            Tool({QStringLiteral("render"), Example(n, QStringLiteral("dgm")), QStringLiteral("-o"),
                  out, QStringLiteral("--margin"), QStringLiteral("12")});
        ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
        const QImage img(out);
        ASSERT_FALSE(img.isNull());
        const QJsonObject dump = DumpOf(Example(n, QStringLiteral("dgm")));
        const QRect content = ContentArea(dump);
        EXPECT_EQ(img.size(), content.size() + QSize(24, 24));
        // Nothing is drawn in the margin, and the drawing reaches it on every side (within
        // the blank lead space a block keeps beside a side without markers).
        const QRect drawn = Drawn(img, qRgb(255, 255, 255));
        EXPECT_TRUE(QRect(12, 12, content.width(), content.height()).contains(drawn));
        EXPECT_LE(drawn.left() - 12, 8);
        EXPECT_LE(drawn.top() - 12, 8);
        EXPECT_LE(img.width() - 12 - (drawn.right() + 1), 8);
        EXPECT_LE(img.height() - 12 - (drawn.bottom() + 1), 8);
        const QRect blocks = BlockArea(dump);
        EXPECT_TRUE(content.contains(blocks));
    }
}

TEST_F(Veldiag, RenderPngHasNonBackgroundPixelsWhereEveryBlockIs) {
    for (const QString& n : ExampleNames(QStringLiteral("dgm"))) {
        SCOPED_TRACE(n.toStdString());
        const QString out = Path(n + QStringLiteral(".png"));
        ASSERT_EQ(Tool({QStringLiteral("render"), Example(n, QStringLiteral("dgm")),
                        QStringLiteral("-o"), out})
                      .Code,
                  0);
        const QImage img(out);
        const QJsonObject dump = DumpOf(Example(n, QStringLiteral("dgm")));
        // The picture's origin is the content's top-left less the default margin of 10. Block
        // bodies are gray ($C0C0C0): a good part of each block's area must be.
        const QRect content = ContentArea(dump);
        const int dx = 10 - content.left(), dy = 10 - content.top();
        int checked = 0;
        for (const QJsonValue& v : dump[QStringLiteral("blocks")].toArray()) {
            const QJsonObject b = v.toObject()[QStringLiteral("bounds")].toObject();
            const QRect r(b[QStringLiteral("left")].toInt() + dx,
                          b[QStringLiteral("top")].toInt() + dy,
                          b[QStringLiteral("right")].toInt() - b[QStringLiteral("left")].toInt(),
                          b[QStringLiteral("bottom")].toInt() - b[QStringLiteral("top")].toInt());
            int gray = 0, other = 0;
            for (int y = r.top(); y <= r.bottom(); ++y)
                for (int x = r.left(); x <= r.right(); ++x)
                    (img.pixel(x, y) == qRgb(0xC0, 0xC0, 0xC0) ? gray : other) += 1;
            EXPECT_GT(gray, (r.width() * r.height()) / 3) << "block at " << r.x() << "," << r.y();
            ++checked;
        }
        EXPECT_EQ(checked, dump[QStringLiteral("blocks")].toArray().size());
    }
}

TEST_F(Veldiag, RenderScaleTwoDoublesThePictureAndBackgroundFillsTheMargin) {
    const QString in = Example(QStringLiteral("half_adder"), QStringLiteral("dgm"));
    ASSERT_EQ(Tool({QStringLiteral("render"), in, QStringLiteral("-o"), Path("one.png")}).Code, 0);
    ASSERT_EQ(Tool({QStringLiteral("render"), in, QStringLiteral("-o"), Path("two.png"),
                    QStringLiteral("--scale"), QStringLiteral("2"), QStringLiteral("--background"),
                    QStringLiteral("#102030")})
                  .Code,
              0);
    const QImage one(Path("one.png")), two(Path("two.png"));
    EXPECT_EQ(two.size(), one.size() * 2);
    EXPECT_EQ(two.pixel(0, 0), qRgb(0x10, 0x20, 0x30));
    EXPECT_EQ(two.pixel(two.width() - 1, two.height() - 1), qRgb(0x10, 0x20, 0x30));
    EXPECT_EQ(one.pixel(0, 0), qRgb(255, 255, 255));
}

TEST_F(Veldiag, RenderSvgParsesAndHoldsEveryBlockTitleAsText) {
    for (const QString& n : ExampleNames(QStringLiteral("dgm"))) {
        SCOPED_TRACE(n.toStdString());
        const QString svg = Path(n + QStringLiteral(".svg")),
                      png = Path(n + QStringLiteral(".png"));
        const QString in = Example(n, QStringLiteral("dgm"));
        ASSERT_EQ(Tool({QStringLiteral("render"), in, QStringLiteral("-o"), svg}).Code, 0);
        ASSERT_EQ(Tool({QStringLiteral("render"), in, QStringLiteral("-o"), png}).Code, 0);
        const QByteArray bytes = ReadAll(svg);
        QXmlStreamReader xml(bytes);
        QStringList texts;
        QString viewBox;
        int lines = 0;
        while (!xml.atEnd()) {
            if (xml.readNext() != QXmlStreamReader::StartElement)
                continue;
            if (xml.name() == QLatin1String("svg"))
                viewBox = xml.attributes().value(QLatin1String("viewBox")).toString();
            else if (xml.name() == QLatin1String("text"))
                texts << xml.readElementText(QXmlStreamReader::IncludeChildElements).trimmed();
            else if (xml.name() == QLatin1String("polyline") || xml.name() == QLatin1String("line"))
                ++lines;
        }
        ASSERT_FALSE(xml.hasError()) << xml.errorString().toStdString();
        const QImage img(png);
        EXPECT_EQ(viewBox, QStringLiteral("0 0 %1 %2").arg(img.width()).arg(img.height()));
        EXPECT_GT(lines, 0); // wires are vector lines, not pixels
        for (const QJsonValue& b : DumpOf(in)[QStringLiteral("blocks")].toArray())
            for (const QJsonValue& l : b.toObject()[QStringLiteral("labels")].toArray())
                EXPECT_TRUE(texts.contains(l.toObject()[QStringLiteral("text")].toString()))
                    << l.toObject()[QStringLiteral("text")].toString().toStdString();
        EXPECT_TRUE(QSvgRenderer(bytes).isValid());
    }
}

TEST_F(Veldiag, RenderPdfIsOnePageOfThePictureSizeInPoints) {
    for (const QString& n : ExampleNames(QStringLiteral("dgm"))) {
        SCOPED_TRACE(n.toStdString());
        const QString in = Example(n, QStringLiteral("dgm"));
        ASSERT_EQ(Tool({QStringLiteral("render"), in, QStringLiteral("-o"), Path("p.pdf")}).Code,
                  0);
        ASSERT_EQ(Tool({QStringLiteral("render"), in, QStringLiteral("-o"), Path("p.png")}).Code,
                  0);
        const QByteArray pdf = ReadAll(Path("p.pdf"));
        const QImage img(Path("p.png"));
        EXPECT_TRUE(pdf.startsWith("%PDF-"));
        EXPECT_TRUE(pdf.trimmed().endsWith("%%EOF"));
        EXPECT_EQ(pdf.count("/Type /Page\n") + pdf.count("/Type /Page\r") +
                      pdf.count("/Type /Page/") + pdf.count("/Type /Page "),
                  1);
        const QRegularExpression box(QStringLiteral("/MediaBox \\[0 0 ([0-9.]+) ([0-9.]+)\\]"));
        const auto m = box.match(QString::fromLatin1(pdf));
        ASSERT_TRUE(m.hasMatch());
        EXPECT_DOUBLE_EQ(m.captured(1).toDouble(), img.width());
        EXPECT_DOUBLE_EQ(m.captured(2).toDouble(), img.height());
        // The titles are text: a font is embedded and text is shown with it.
        EXPECT_TRUE(pdf.contains("/Font"));
        EXPECT_TRUE(pdf.contains("DejaVu"));
    }
}

TEST_F(Veldiag, RenderOfTheTextFormDrawsItsBlocks) {
    const QString out = Path("t.png");
    const ToolRun r =
        Tool({QStringLiteral("render"), Example(QStringLiteral("rs_latch"), QStringLiteral("txt")),
              QStringLiteral("-o"), out, QStringLiteral("--margin"), QStringLiteral("0")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    const QImage img(out);
    // Blocks only, so the picture is exactly the blocks' area.
    const QRect blocks =
        BlockArea(DumpOf(Example(QStringLiteral("rs_latch"), QStringLiteral("txt"))));
    EXPECT_EQ(img.size(), blocks.size());
}

TEST_F(Veldiag, RenderOfABrokenFileFailsAndLeavesTheOutputAsItWas) {
    QByteArray bytes = ReadAll(Example(QStringLiteral("half_adder"), QStringLiteral("dgm")));
    WriteAll(Path("cut.dgm"), bytes.left(40));
    WriteAll(Path("old.png"), "previous picture");
    const ToolRun r =
        Tool({QStringLiteral("render"), Path("cut.dgm"), QStringLiteral("-o"), Path("old.png")});
    EXPECT_EQ(r.Code, 1);
    EXPECT_TRUE(r.Err.contains("byte offset")) << r.Err.toStdString();
    EXPECT_EQ(ReadAll(Path("old.png")), QByteArray("previous picture"));
    EXPECT_EQ(QDir(Dir.path()).entryList(QDir::Files).size(), 2); // no temporary file left
}

// Pixels of the two selection colours: the selected block's red frame and the magenta segment.
int SelectionPixels(const QImage& img) {
    int n = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x) {
            const QRgb p = img.pixel(x, y);
            n += p == qRgb(255, 0, 0) || p == qRgb(255, 0, 255);
        }
    return n;
}

TEST_F(Veldiag, RenderLeavesTheStoredSelectionOutUnlessAskedFor) {
    SaveWiredPair(Path("sel.dgm"), [](TDiagContainer& dc) {
        TDiagObject* b = dc.ObjList->Items(1);
        dc.SelObj = b;
        b->SetSelected(true);
        dc.SelInfo = LongRec{1, 1};
        dc.ConList->SelectSegmentByLongRec(dc.SelInfo);
    });
    ToolRun r =
        Tool({QStringLiteral("render"), Path("sel.dgm"), QStringLiteral("-o"), Path("plain.png")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    r = Tool({QStringLiteral("render"), Path("sel.dgm"), QStringLiteral("-o"), Path("sel.png"),
              QStringLiteral("--selection")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    const QImage plain(Path("plain.png")), sel(Path("sel.png"));
    ASSERT_EQ(plain.size(), sel.size());
    EXPECT_EQ(SelectionPixels(plain.convertToFormat(QImage::Format_RGB32)), 0);
    EXPECT_GT(SelectionPixels(sel.convertToFormat(QImage::Format_RGB32)), 0);
}

TEST_F(Veldiag, RenderToStandardOutputWritesThePictureThere) {
    ToolRun r = Tool({QStringLiteral("render"), Example("half_adder", "dgm"), QStringLiteral("-o"),
                      QStringLiteral("-")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    ASSERT_EQ(Tool({QStringLiteral("render"), Example("half_adder", "dgm"), QStringLiteral("-o"),
                    Path("file.png")})
                  .Code,
              0);
    // The same picture as written to a file, and nothing named "-" is made.
    EXPECT_EQ(r.Out, ReadAll(Path("file.png")));
    EXPECT_FALSE(QFile::exists(QStringLiteral("-")));
    r = Tool({QStringLiteral("render"), Example("half_adder", "dgm"), QStringLiteral("-o"),
              QStringLiteral("-"), QStringLiteral("--format"), QStringLiteral("svg")});
    ASSERT_EQ(r.Code, 0);
    EXPECT_TRUE(r.Out.contains("<svg"));
}

TEST_F(Veldiag, RenderRefusesAnUnknownPictureFormat) {
    const ToolRun r = Tool({QStringLiteral("render"), Example("half_adder", "dgm"),
                            QStringLiteral("-o"), Path("x.gif")});
    EXPECT_EQ(r.Code, 2);
    EXPECT_FALSE(QFile::exists(Path("x.gif")));
}

// A diagram reaching far beyond a fresh widget's 640 x 480 in every direction: gates at the
// four corners of a 2600 x 2200 area around the origin, wired across it and around it.
// Written twice, with and without the wires, into `withWires` and `withoutWires`.
void SaveSpreadDiagram(const QString& withWires, const QString& withoutWires) {
    for (const bool wires : {true, false}) {
        HostSurface host;
        TDiagObject* nw = host.Container.CreateObjByDiagType(doAndLogic, {-900, -700, -850, -650});
        TDiagObject* ne = host.Container.CreateObjByDiagType(doOrLogic, {1500, -600, 1550, -550});
        TDiagObject* sw = host.Container.CreateObjByDiagType(doAndLogic, {-800, 1300, -750, 1350});
        TDiagObject* se = host.Container.CreateObjByDiagType(doOrLogic, {1600, 1400, 1650, 1450});
        if (wires) {
            TDiagConnectList* l = host.Container.ConList.get();
            new TDiagObjConnection(l, nw, 1, ne, -1, {10, 10}, 0, 0, 0);
            new TDiagObjConnection(l, sw, 1, se, -1, {10, 10}, 0, 0, 0);
            new TDiagObjConnection(l, nw, 1, se, -2, {10, 10}, 0, 0, 0);
            new TDiagObjConnection(l, sw, 1, ne, -2, {10, 10}, 0, 0, 0);
        }
        host.Container.SaveDiagramToFile(wires ? withWires : withoutWires);
    }
}

TEST_F(Veldiag, RenderDrawsEveryWireHoweverFarItLiesFromTheOriginAtEveryScale) {
    SaveSpreadDiagram(Path("spread.dgm"), Path("bare.dgm"));
    const QJsonObject dump = DumpOf(Path("spread.dgm"));
    const QJsonArray wires = dump[QStringLiteral("connections")].toArray();
    ASSERT_EQ(wires.size(), 4);
    const QRect content = ContentArea(dump);
    ASSERT_LT(content.left(), -640);
    ASSERT_GT(content.right(), 1280);
    for (const double scale : {0.5, 1.0, 2.0}) {
        SCOPED_TRACE(scale);
        const QString out = Path(QStringLiteral("spread%1.png").arg(scale));
        ASSERT_EQ(Tool({QStringLiteral("render"), Path("spread.dgm"), QStringLiteral("-o"), out,
                        QStringLiteral("--margin"), QStringLiteral("0"), QStringLiteral("--scale"),
                        QString::number(scale)})
                      .Code,
                  0);
        const QImage img(out);
        ASSERT_FALSE(img.isNull());
        // The middle of every segment is inked (black, or grey where halving blends it).
        int segments = 0;
        for (const QJsonValue& w : wires) {
            const QJsonArray pts = w.toObject()[QStringLiteral("points")].toArray();
            for (qsizetype i = 1; i < pts.size(); ++i) {
                const QJsonArray a = pts[i - 1].toArray(), b = pts[i].toArray();
                if (a == b)
                    continue;
                const double mx = (a[0].toInt() + b[0].toInt()) / 2.0 - content.left();
                const double my = (a[1].toInt() + b[1].toInt()) / 2.0 - content.top();
                int darkest = 255;
                for (int dy = -1; dy <= 1; ++dy)
                    for (int dx = -1; dx <= 1; ++dx) {
                        const QPoint at(int(mx * scale) + dx, int(my * scale) + dy);
                        if (img.rect().contains(at))
                            darkest = std::min(darkest, qGray(img.pixel(at)));
                    }
                EXPECT_LT(darkest, 160) << "segment from " << a[0].toInt() << "," << a[1].toInt()
                                        << " to " << b[0].toInt() << "," << b[1].toInt();
                ++segments;
            }
        }
        EXPECT_GE(segments, 8);
    }
}

TEST_F(Veldiag, RenderSvgHoldsOneLineForEverySegmentOfEveryWire) {
    SaveSpreadDiagram(Path("spread.dgm"), Path("bare.dgm"));
    int segments = 0;
    for (const QJsonValue& w :
         DumpOf(Path("spread.dgm"))[QStringLiteral("connections")].toArray()) {
        const QJsonArray pts = w.toObject()[QStringLiteral("points")].toArray();
        for (qsizetype i = 1; i < pts.size(); ++i)
            segments += pts[i - 1] != pts[i] ? 1 : 0;
    }
    ASSERT_GE(segments, 8);
    const auto lineCount = [this](const QString& dgm) {
        const QString svg = Path("count.svg");
        EXPECT_EQ(Tool({QStringLiteral("render"), dgm, QStringLiteral("-o"), svg}).Code, 0);
        QXmlStreamReader xml(ReadAll(svg));
        int lines = 0;
        while (!xml.atEnd())
            if (xml.readNext() == QXmlStreamReader::StartElement &&
                (xml.name() == QLatin1String("polyline") || xml.name() == QLatin1String("line")))
                ++lines;
        EXPECT_FALSE(xml.hasError());
        return lines;
    };
    // The same blocks without their wires: what the wires add is theirs alone.
    EXPECT_EQ(lineCount(Path("spread.dgm")) - lineCount(Path("bare.dgm")), segments);
}

// ---- convert

TEST_F(Veldiag, ConvertBinaryToTextIsTheLibrarysOwnTextAndSaysWhatWasDropped) {
    for (const QString& n : ExampleNames(QStringLiteral("dgm"))) {
        SCOPED_TRACE(n.toStdString());
        const QString in = Example(n, QStringLiteral("dgm"));
        const ToolRun r = Tool({QStringLiteral("convert"), in, Path("out.ini")});
        ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
        HostSurface host;
        host.Container.LoadDiagramFromFile(in);
        host.Container.SaveDiagramToText(Path("lib.txt"));
        EXPECT_EQ(ReadAll(Path("out.ini")), ReadAll(Path("lib.txt")));
        // The committed text form was written by the library from the same diagram.
        EXPECT_EQ(ReadAll(Path("out.ini")), ReadAll(Example(n, QStringLiteral("txt"))));
        const int wires = host.Container.ConList->Count();
        ASSERT_GT(wires, 0);
        EXPECT_TRUE(r.Err.contains(QStringLiteral("drops %1 connection(s)").arg(wires).toUtf8()))
            << r.Err.toStdString();
        EXPECT_TRUE(r.Err.contains("block properties")) << r.Err.toStdString();
    }
}

TEST_F(Veldiag, ConvertTextToBinaryMatchesTheLibraryLoadingTheTextBesideTheKeys) {
    for (const QString& n : ExampleNames(QStringLiteral("txt"))) {
        SCOPED_TRACE(n.toStdString());
        const QString in = Example(n, QStringLiteral("txt"));
        const ToolRun r = Tool({QStringLiteral("convert"), in, Path("out.dgm")});
        ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
        EXPECT_TRUE(r.Err.isEmpty()) << r.Err.toStdString();
        HostSurface lib, tool;
        lib.Container.LoadDiagramFromText(in);
        tool.Container.LoadDiagramFromFile(Path("out.dgm"));
        // Keys come from the block list (addresses), so only they may differ.
        EXPECT_EQ(ReadAll(Path("out.dgm")).size(), lib.Save().size());
        ASSERT_EQ(tool.Container.ObjList->Count(), lib.Container.ObjList->Count());
        for (int i = 0; i < lib.Container.ObjList->Count(); ++i)
            EXPECT_EQ(RecordWithoutKey(tool.Container.ObjList->Items(i)),
                      RecordWithoutKey(lib.Container.ObjList->Items(i)));
        EXPECT_EQ(tool.Container.ConList->Count(), 0);
    }
}

TEST_F(Veldiag, ConvertToOverridesTheExtension) {
    const ToolRun r = Tool({QStringLiteral("convert"), Example("rs_latch", "dgm"),
                            Path("latch.out"), QStringLiteral("--to"), QStringLiteral("text")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    EXPECT_EQ(ReadAll(Path("latch.out")), ReadAll(Example("rs_latch", "txt")));
    const ToolRun back = Tool({QStringLiteral("convert"), Path("latch.out"), Path("latch.dgm"),
                               QStringLiteral("--from"), QStringLiteral("text")});
    ASSERT_EQ(back.Code, 0) << back.Err.toStdString();
    EXPECT_TRUE(ReadAll(Path("latch.dgm")).startsWith(QByteArray("\x4e\x5d\xf3\x98", 4)));
    EXPECT_EQ(Tool({QStringLiteral("convert"), Example("rs_latch", "dgm"), Path("x"),
                    QStringLiteral("--to"), QStringLiteral("yaml")})
                  .Code,
              2);
}

// ---- validate

TEST_F(Veldiag, ValidateSaysOkForEveryExample) {
    QStringList files;
    for (const QString& ext : {QStringLiteral("dgm"), QStringLiteral("txt")})
        for (const QString& n : ExampleNames(ext))
            files << Example(n, ext);
    ASSERT_GE(files.size(), 8);
    const ToolRun r = Tool(QStringList{QStringLiteral("validate")} + files);
    EXPECT_EQ(r.Code, 0);
    QStringList expected;
    for (const QString& f : files)
        expected << f + QStringLiteral(": OK");
    EXPECT_EQ(QString::fromUtf8(r.Out).trimmed().split(QLatin1Char('\n')), expected);
}

TEST_F(Veldiag, ValidateNamesTheErrorAndItsByteOffsetAndFailsIfAnyFileIsBad) {
    // Signature, then a block count of 5 with nothing behind it: the count (at offset 4) is
    // larger than the bytes left could hold.
    WriteAll(Path("count.dgm"), QByteArray("\x4e\x5d\xf3\x98\x05\x00\x00\x00\x00", 9));
    WriteAll(Path("sig.dgm"), QByteArray("PK\x03\x04 and more bytes", 20));
    WriteAll(Path("tiny.dgm"), QByteArray("\x4e\x5d\xf3", 3));
    const ToolRun r =
        Tool({QStringLiteral("validate"), Example("half_adder", "dgm"), Path("count.dgm"),
              Path("sig.dgm"), Path("tiny.dgm"), Path("missing.dgm")});
    EXPECT_EQ(r.Code, 1);
    const QStringList lines = QString::fromUtf8(r.Out).trimmed().split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 5);
    EXPECT_EQ(lines[0], Example("half_adder", "dgm") + QStringLiteral(": OK"));
    EXPECT_TRUE(
        lines[1].startsWith(Path("count.dgm") + QStringLiteral(": error: damaged diagram file: ")));
    EXPECT_TRUE(lines[1].endsWith(QStringLiteral("at byte offset 4"))) << lines[1].toStdString();
    EXPECT_EQ(lines[2], Path("sig.dgm") + QStringLiteral(": error: not a diagram file: Invalid "
                                                         "file format at byte offset 0"));
    EXPECT_TRUE(lines[3].startsWith(Path("tiny.dgm") +
                                    QStringLiteral(": error: not a diagram file: 3 bytes")));
    EXPECT_TRUE(
        lines[4].startsWith(Path("missing.dgm") + QStringLiteral(": error: Cannot open file \"")));
    // No exception class is named anywhere.
    EXPECT_FALSE(r.Out.contains("EFormatError") || r.Out.contains("EFOpenError"));
}

TEST_F(Veldiag, ValidateOfEveryTruncationOfAnExampleFails) {
    const QByteArray bytes = ReadAll(Example("junctions", "dgm"));
    // Cutting anywhere before the last selection word leaves a stream that runs out.
    QStringList files;
    for (qsizetype cut :
         {qsizetype(5), qsizetype(9), qsizetype(100), bytes.size() / 2, bytes.size() - 1}) {
        const QString f = Path(QStringLiteral("cut%1.dgm").arg(cut));
        WriteAll(f, bytes.left(cut));
        files << f;
    }
    const ToolRun r = Tool(QStringList{QStringLiteral("validate")} + files);
    EXPECT_EQ(r.Code, 1);
    const QStringList lines = QString::fromUtf8(r.Out).trimmed().split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), files.size());
    for (const QString& l : lines) {
        EXPECT_FALSE(l.endsWith(QStringLiteral(": OK"))) << l.toStdString();
        EXPECT_TRUE(l.contains(QStringLiteral(": error: "))) << l.toStdString();
    }
}

TEST_F(Veldiag, ValidateOfATextFileNamesTheLine) {
    WriteAll(Path("bad.txt"), "[Gate1]\nType=doAndLogic\nBounds=10,20,60,70\n"
                              "[Gate2]\nType=doOrLogic\nBounds=10,x,60,70\n");
    const ToolRun r = Tool({QStringLiteral("validate"), Path("bad.txt")});
    EXPECT_EQ(r.Code, 1);
    const QString line = QString::fromUtf8(r.Out).trimmed();
    EXPECT_TRUE(line.startsWith(Path("bad.txt") + QStringLiteral(": error: bad value: ")))
        << line.toStdString();
    EXPECT_TRUE(line.contains(QStringLiteral("[Gate2] (line 4)"))) << line.toStdString();
}

TEST_F(Veldiag, ValidateCallsATextFileWithoutSectionsNoDiagram) {
    WriteAll(Path("hello.txt"), "hello\n");
    WriteAll(Path("hello.dgm"), "hello\n");
    const ToolRun r = Tool({QStringLiteral("validate"), Path("hello.txt"), Path("hello.dgm")});
    EXPECT_EQ(r.Code, 1);
    const QStringList lines = QString::fromUtf8(r.Out).trimmed().split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 2) << r.Out.toStdString();
    EXPECT_EQ(lines[0], Path("hello.txt") + QStringLiteral(": error: not a diagram file: line 1 "
                                                           "(\"hello\") is not part of any "
                                                           "[section], and the file has no "
                                                           "section"));
    EXPECT_EQ(lines[1], Path("hello.dgm") + QStringLiteral(": error: not a diagram file: Invalid "
                                                           "file format at byte offset 0"));
}

TEST_F(Veldiag, ValidateWarnsOfTextSectionsThatMakeNoBlockWithTheirLines) {
    WriteAll(Path("odd.txt"), "; a comment\nstray\n[A]\nType=doFoo\nBounds=1,2,30,40\n"
                              "[B]\nType=doAndLogic\n[C]\nBounds=0,0,9,9\n"
                              "[D]\nType=doOrLogic\nBounds=10,20,60,70\n");
    ToolRun r = Tool({QStringLiteral("validate"), Path("odd.txt")});
    EXPECT_EQ(r.Code, 0) << r.Out.toStdString();
    const QString f = Path("odd.txt");
    EXPECT_EQ(QString::fromUtf8(r.Out).trimmed().split(QLatin1Char('\n')),
              (QStringList{
                  f + QStringLiteral(": warning: line 2 (\"stray\") comes before the first "
                                     "section and is ignored"),
                  f + QStringLiteral(": warning: section [A] (line 3): \"doFoo\" is no block "
                                     "type (doText, doAndLogic, doOrLogic, doRSTrigger); the "
                                     "section makes no block"),
                  f + QStringLiteral(": warning: section [B] (line 6) has no Bounds and makes "
                                     "no block"),
                  f + QStringLiteral(": warning: section [C] (line 8) has no Type and makes no "
                                     "block"),
                  f + QStringLiteral(": OK (4 warnings)"),
              }));
    r = Tool({QStringLiteral("validate"), QStringLiteral("--strict"), Path("odd.txt")});
    EXPECT_EQ(r.Code, 1);
}

TEST_F(Veldiag, ValidateWarnsOfWiresEndingNowhereWithTheirByteOffsets) {
    SaveWiredPair(Path("good.dgm"), [](TDiagContainer&) {});
    SaveWiredPair(Path("nokey.dgm"),
                  [](TDiagContainer& dc) { dc.ConList->Items(0)->FDstKey = 99; });
    SaveWiredPair(Path("marker.dgm"),
                  [](TDiagContainer& dc) { dc.ConList->Items(0)->FDstConIdx = -5; });
    SaveWiredPair(Path("cross.dgm"), [](TDiagContainer& dc) {
        TDiagConnection* c = dc.ConList->Items(0);
        c->FDstKey = 0;
        c->FDstCrossInfo = LongRec{3, 8}; // segment 2 of connection 7
    });
    SaveWiredPair(Path("loose.dgm"), [](TDiagContainer& dc) {
        TDiagConnection* c = dc.ConList->Items(0);
        c->FDstKey = 0;
    });
    // Blocks: count at 4, then two gate records; each gate record here is 1 kind + 16 bounds + 4
    // delta width + 4 label count + (8 + 1 + 4 + 2) label "&"/"1" + 4 + 2 * 12 inputs + 4 + 12
    // output + 4 key = 88 bytes. The connection count follows at 8 + 2 * 88 = 184, the record
    // at 188.
    const ToolRun r = Tool({QStringLiteral("validate"), Path("good.dgm"), Path("nokey.dgm"),
                            Path("marker.dgm"), Path("cross.dgm"), Path("loose.dgm")});
    EXPECT_EQ(r.Code, 0) << r.Out.toStdString();
    EXPECT_EQ(QString::fromUtf8(r.Out).trimmed().split(QLatin1Char('\n')),
              (QStringList{
                  Path("good.dgm") + QStringLiteral(": OK"),
                  Path("nokey.dgm") + QStringLiteral(": warning: connection 0 (byte offset 188): "
                                                     "its end is at block key 99, which no "
                                                     "block holds"),
                  Path("nokey.dgm") + QStringLiteral(": OK (1 warning)"),
                  Path("marker.dgm") + QStringLiteral(": warning: connection 0 (byte offset "
                                                      "188): its end is at input 5 of block 1 "
                                                      "(key 22), which has 2 inputs and 1 "
                                                      "outputs"),
                  Path("marker.dgm") + QStringLiteral(": OK (1 warning)"),
                  Path("cross.dgm") + QStringLiteral(": warning: connection 0 (byte offset 188): "
                                                     "its end lies on segment 2 of connection 7, "
                                                     "which does not exist"),
                  Path("cross.dgm") + QStringLiteral(": OK (1 warning)"),
                  Path("loose.dgm") + QStringLiteral(": warning: connection 0 (byte offset 188): "
                                                     "its end is at no block and on no wire"),
                  Path("loose.dgm") + QStringLiteral(": OK (1 warning)"),
              }));
    const ToolRun strict = Tool({QStringLiteral("validate"), QStringLiteral("--strict"),
                                 Path("good.dgm"), Path("loose.dgm")});
    EXPECT_EQ(strict.Code, 1);
    EXPECT_EQ(Tool({QStringLiteral("validate"), QStringLiteral("--strict"), Path("good.dgm")}).Code,
              0);
}

TEST_F(Veldiag, ValidateWarnsOfBlocksSharingAKeyAndTheFileStillLoads) {
    SaveWiredPair(Path("shared.dgm"), [](TDiagContainer& dc) {
        TDiagObject* c = dc.CreateObjByDiagType(doAndLogic, {300, 20, 360, 90});
        c->SetObjKey(22);
    });
    const ToolRun r = Tool({QStringLiteral("validate"), Path("shared.dgm")});
    EXPECT_EQ(r.Code, 0);
    // The third block's record starts after the count and two 88-byte gate records.
    EXPECT_EQ(QString::fromUtf8(r.Out).trimmed().split(QLatin1Char('\n')),
              (QStringList{Path("shared.dgm") +
                               QStringLiteral(": warning: block 2 (byte offset 184) has key 22, "
                                              "which block 1 holds already; wires and the "
                                              "selection find block 1"),
                           Path("shared.dgm") + QStringLiteral(": OK (1 warning)")}));
    // The tool's stderr stays quiet: the finding is said once, on stdout.
    EXPECT_TRUE(r.Err.isEmpty()) << r.Err.toStdString();
    // Other commands load it too.
    const QJsonObject d = DumpOf(Path("shared.dgm"));
    EXPECT_EQ(d[QStringLiteral("blocks")].toArray().size(), 3);
}

// ---- dump

TEST_F(Veldiag, DumpJsonOfEveryBinaryExampleIsTheCommittedDocument) {
    for (const QString& n : ExampleNames(QStringLiteral("dgm"))) {
        SCOPED_TRACE(n.toStdString());
        const ToolRun r =
            Tool({QStringLiteral("dump"), QStringLiteral("--json"), Example(n, "dgm")});
        ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
        const QByteArray expected =
            ReadAll(QStringLiteral(VDE_EXPECTED_DIR "/") + n + QStringLiteral(".dgm.json"));
        ASSERT_FALSE(expected.isEmpty());
        EXPECT_EQ(r.Out, expected);
    }
}

QJsonValue WithoutKeys(const QJsonValue& v) {
    if (v.isArray()) {
        QJsonArray a;
        for (const QJsonValue& e : v.toArray())
            a.append(WithoutKeys(e));
        return a;
    }
    if (!v.isObject())
        return v;
    QJsonObject o;
    const QJsonObject in = v.toObject();
    for (auto it = in.begin(); it != in.end(); ++it)
        if (it.key() != QLatin1String("key"))
            o.insert(it.key(), WithoutKeys(it.value()));
    return o;
}

TEST_F(Veldiag, DumpJsonOfEveryTextExampleIsTheCommittedDocumentBesideTheKeys) {
    for (const QString& n : ExampleNames(QStringLiteral("txt"))) {
        SCOPED_TRACE(n.toStdString());
        const QJsonObject got = DumpOf(Example(n, "txt"));
        const QJsonObject expected =
            QJsonDocument::fromJson(
                ReadAll(QStringLiteral(VDE_EXPECTED_DIR "/") + n + QStringLiteral(".txt.json")))
                .object();
        ASSERT_FALSE(expected.isEmpty());
        EXPECT_EQ(WithoutKeys(got), WithoutKeys(expected));
    }
}

TEST_F(Veldiag, DumpJsonOfTheFirstBlockOfTheHalfAdderIsItsRecord) {
    // The record as laid out byte by byte in docs/formats.md.
    const QJsonObject b =
        DumpOf(Example("half_adder", "dgm"))[QStringLiteral("blocks")].toArray().at(0).toObject();
    EXPECT_EQ(b[QStringLiteral("kind")].toString(), QStringLiteral("Text"));
    EXPECT_EQ(b[QStringLiteral("key")].toInt(), 1);
    EXPECT_EQ(b[QStringLiteral("bounds")].toObject(),
              (QJsonObject{{"left", 20}, {"top", 40}, {"right", 80}, {"bottom", 80}}));
    EXPECT_EQ(b[QStringLiteral("deltaWidth")].toInt(), 8);
    EXPECT_EQ(b[QStringLiteral("labels")].toArray(),
              (QJsonArray{QJsonObject{{"x", 22}, {"y", 7}, {"height", 26}, {"text", "A"}}}));
    EXPECT_TRUE(b[QStringLiteral("inputs")].toArray().isEmpty());
    EXPECT_EQ(b[QStringLiteral("outputs")].toArray(),
              (QJsonArray{QJsonObject{
                  {"index", 1}, {"x", 58}, {"y", 18}, {"type", "Direct"}, {"size", 0}}}));
}

TEST_F(Veldiag, DumpShowsForeignControlsAndTheSelection) {
    // A host surface with a button of its own, a selected block and a selected segment.
    {
        HostSurface host;
        auto* button = new QWidget(&host.Panel);
        button->setObjectName(QStringLiteral("btnStart"));
        button->setGeometry(300, 40, 90, 25);
        host.Container.CntList->Add(button);
        TDiagObject* a = host.Container.CreateObjByDiagType(doAndLogic, {10, 20, 60, 70});
        TDiagObject* b = host.Container.CreateObjByDiagType(doOrLogic, {150, 20, 200, 70});
        a->SetObjKey(11);
        b->SetObjKey(22);
        new TDiagObjConnection(host.Container.ConList.get(), a, 1, b, -1, {10, 10}, 0, 0, 0);
        host.Container.ConList->Items(0)->FSrcKey = 11;
        host.Container.ConList->Items(0)->FDstKey = 22;
        host.Container.SelObj = b;
        b->SetSelected(true);
        host.Container.SelInfo = LongRec{2, 1}; // connection 0, segment 1
        host.Container.SaveDiagramToFile(Path("host.dgm"));
    }
    const QJsonObject d = DumpOf(Path("host.dgm"));
    EXPECT_EQ(
        d[QStringLiteral("controls")].toArray(),
        (QJsonArray{QJsonObject{
            {"name", "btnStart"},
            {"bounds", QJsonObject{{"left", 300}, {"top", 40}, {"right", 390}, {"bottom", 65}}}}}));
    EXPECT_EQ(
        d[QStringLiteral("selection")].toObject(),
        (QJsonObject{{"block", 22}, {"segment", QJsonObject{{"connection", 0}, {"segment", 1}}}}));
    const QJsonObject c = d[QStringLiteral("connections")].toArray().at(0).toObject();
    EXPECT_EQ(c[QStringLiteral("source")].toObject()[QStringLiteral("key")].toInt(), 11);
    EXPECT_EQ(c[QStringLiteral("source")].toObject()[QStringLiteral("marker")].toInt(), 1);
    EXPECT_EQ(c[QStringLiteral("destination")].toObject()[QStringLiteral("key")].toInt(), 22);
    EXPECT_EQ(c[QStringLiteral("destination")].toObject()[QStringLiteral("marker")].toInt(), -1);

    const ToolRun text = Tool({QStringLiteral("dump"), Path("host.dgm")});
    ASSERT_EQ(text.Code, 0);
    EXPECT_TRUE(text.Out.contains("Controls: 1\n  btnStart  bounds 300,40,390,65\n"));
    EXPECT_TRUE(text.Out.contains("Selection: segment connection 0 segment 1; block key 22"));
    EXPECT_TRUE(text.Out.contains("Blocks: 2\n"));
    EXPECT_TRUE(text.Out.contains("Connections: 1\n"));

    // The text form keeps none of that, and converting says so.
    const ToolRun conv = Tool({QStringLiteral("convert"), Path("host.dgm"), Path("host.txt")});
    EXPECT_EQ(conv.Code, 0);
    EXPECT_TRUE(conv.Err.contains("1 foreign control(s)"));
    EXPECT_TRUE(conv.Err.contains("the selection"));
}

// ---- db

class VeldiagDb : public ::testing::TestWithParam<DbKind> {
protected:
    void SetUp() override {
        VDE_SKIP_WITHOUT_PG(GetParam());
        Db = std::make_unique<TestDatabase>(GetParam());
        ASSERT_TRUE(Db->Error().isEmpty()) << Db->Error().toStdString();
        TableName = Db->NewTableName(QStringLiteral("cli_config"));
        Db->CreateConfigTable(
            TableName, QStringLiteral("\"BinData\" %1, \"BinData_Main\" %1").arg(Db->BlobType()));
        const QString base = GetParam() == DbKind::SQLite
                                 ? QStringLiteral("sqlite:") + Db->Db().databaseName()
                                 : qEnvironmentVariable("VDE_PG_URL");
        Url = base + QStringLiteral("?table=") + TableName;
    }
    ToolRun Db_(const QStringList& args) {
        return Tool(QStringList{QStringLiteral("db")} + args +
                    QStringList{QStringLiteral("--database"), Url});
    }
    std::unique_ptr<TestDatabase> Db;
    QString TableName, Url;
    QTemporaryDir Dir;
};

TEST_P(VeldiagDb, PutListGetRoundTripKeepsTheBytesUnderTheStorageKeys) {
    const QString in = Example("junctions", "dgm");
    ToolRun r = Db_({QStringLiteral("put"), in, QStringLiteral("Chart1")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    r = Db_({QStringLiteral("put"), Example("half_adder", "dgm"), QStringLiteral("Adder")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    // Keys as the table storage makes them for an empty tab name.
    EXPECT_EQ(Db->Column(TableName, QStringLiteral("Section")),
              (QVariantList{QStringLiteral("frmMain.frmConfig.Chart1"),
                            QStringLiteral("frmMain.frmConfig.Adder")}));
    EXPECT_EQ(Db->Column(TableName, QStringLiteral("Key")),
              (QVariantList{QStringLiteral("DiagramChart"), QStringLiteral("DiagramChart")}));
    EXPECT_EQ(Db->Column(TableName, QStringLiteral("BinData")).at(0).toByteArray(), ReadAll(in));

    r = Db_({QStringLiteral("list")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    EXPECT_EQ(QString::fromUtf8(r.Out), QStringLiteral("Adder\t%1\nChart1\t%2\n")
                                            .arg(ReadAll(Example("half_adder", "dgm")).size())
                                            .arg(ReadAll(in).size()));

    const QString out = Dir.filePath(QStringLiteral("back.dgm"));
    r = Db_({QStringLiteral("get"), QStringLiteral("Chart1"), out});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    EXPECT_EQ(ReadAll(out), ReadAll(in));

    // Storing again replaces the data of the same record.
    r = Db_({QStringLiteral("put"), Example("rs_latch", "dgm"), QStringLiteral("Chart1")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    EXPECT_EQ(Db->RowCount(TableName), 2);
    EXPECT_EQ(Db->Column(TableName, QStringLiteral("BinData")).at(0).toByteArray(),
              ReadAll(Example("rs_latch", "dgm")));
}

TEST_P(VeldiagDb, TabAndSuffixChooseTheSectionAndTheDataColumn) {
    ToolRun r = Db_({QStringLiteral("put"), Example("rs_latch", "dgm"), QStringLiteral("Latch"),
                     QStringLiteral("--tab"), QStringLiteral("frmPlant"),
                     QStringLiteral("--suffix"), QStringLiteral("Main")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    EXPECT_EQ(Db->Column(TableName, QStringLiteral("Section")),
              (QVariantList{QStringLiteral("frmMain.frmPlant.Latch")}));
    EXPECT_EQ(Db->Column(TableName, QStringLiteral("BinData_Main")).at(0).toByteArray(),
              ReadAll(Example("rs_latch", "dgm")));
    EXPECT_TRUE(Db->Column(TableName, QStringLiteral("BinData")).at(0).isNull());
    r = Db_({QStringLiteral("list")});
    EXPECT_EQ(r.Code, 0);
    EXPECT_TRUE(r.Out.isEmpty()); // nothing in the default tab
    r = Db_({QStringLiteral("list"), QStringLiteral("--tab"), QStringLiteral("frmPlant"),
             QStringLiteral("--suffix"), QStringLiteral("Main")});
    EXPECT_TRUE(r.Out.startsWith("Latch\t"));
}

TEST_P(VeldiagDb, TextFilesAreStoredInTheBinaryForm) {
    const ToolRun r =
        Db_({QStringLiteral("put"), Example("half_adder", "txt"), QStringLiteral("T")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    const QByteArray stored = Db->Column(TableName, QStringLiteral("BinData")).at(0).toByteArray();
    HostSurface host;
    TMemoryStream s(std::vector<uint8_t>(stored.begin(), stored.end()));
    host.Container.LoadFromStream(s);
    EXPECT_EQ(host.Container.ObjList->Count(), 7);
}

TEST_P(VeldiagDb, BrokenFilesAndMissingDiagramsChangeNothing) {
    WriteAll(Dir.filePath(QStringLiteral("bad.dgm")), QByteArray("\x4e\x5d\xf3\x98\x09", 5));
    ToolRun r =
        Db_({QStringLiteral("put"), Dir.filePath(QStringLiteral("bad.dgm")), QStringLiteral("X")});
    EXPECT_EQ(r.Code, 1);
    EXPECT_TRUE(r.Err.contains("damaged diagram file")) << r.Err.toStdString();
    EXPECT_EQ(Db->RowCount(TableName), 0);
    const QString out = Dir.filePath(QStringLiteral("none.dgm"));
    r = Db_({QStringLiteral("get"), QStringLiteral("Nothing"), out});
    EXPECT_EQ(r.Code, 1);
    EXPECT_TRUE(r.Err.contains("No diagram \"Nothing\"")) << r.Err.toStdString();
    EXPECT_FALSE(QFile::exists(out));
    EXPECT_EQ(Db->RowCount(TableName), 0); // reading never appends here
    r = Tool({QStringLiteral("db"), QStringLiteral("list"), QStringLiteral("--database"),
              QStringLiteral("mysql://nowhere")});
    EXPECT_EQ(r.Code, 1);
    EXPECT_TRUE(r.Err.contains("database error")) << r.Err.toStdString();
}

TEST_P(VeldiagDb, GetPrintsTheFingerprintAndPutIfFingerprintRefusesAChangedDiagram) {
    const QByteArray latch = ReadAll(Example("rs_latch", "dgm"));
    const QByteArray adder = ReadAll(Example("half_adder", "dgm"));
    const auto sha = [](const QByteArray& b) {
        return QCryptographicHash::hash(b, QCryptographicHash::Sha256).toHex();
    };
    // Only where nothing is stored yet.
    ToolRun r = Db_({QStringLiteral("put"), Example("rs_latch", "dgm"), QStringLiteral("Chart"),
                     QStringLiteral("--if-fingerprint"), QStringLiteral("none")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    EXPECT_EQ(r.Out, sha(latch) + "\n");
    const QString out = Dir.filePath(QStringLiteral("back.dgm"));
    r = Db_({QStringLiteral("get"), QStringLiteral("Chart"), out});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    EXPECT_EQ(r.Out, sha(latch) + "\n");
    const QByteArray seen = r.Out.trimmed();

    // Someone else stores another diagram; a put over what was seen is refused.
    r = Db_({QStringLiteral("put"), Example("half_adder", "dgm"), QStringLiteral("Chart")});
    ASSERT_EQ(r.Code, 0);
    EXPECT_TRUE(r.Out.isEmpty()); // a plain put prints nothing, as before
    r = Db_({QStringLiteral("put"), Example("junctions", "dgm"), QStringLiteral("Chart"),
             QStringLiteral("--if-fingerprint"), QString::fromLatin1(seen)});
    EXPECT_EQ(r.Code, 3);
    EXPECT_TRUE(r.Err.contains("changed: stored now " + sha(adder))) << r.Err.toStdString();
    EXPECT_EQ(Db->Column(TableName, QStringLiteral("BinData")).at(0).toByteArray(), adder);
    r = Db_({QStringLiteral("put"), Example("junctions", "dgm"), QStringLiteral("Chart"),
             QStringLiteral("--if-fingerprint"), QStringLiteral("none")});
    EXPECT_EQ(r.Code, 3);

    // Over the fingerprint of what is stored now it goes through, in upper case as well.
    r = Db_({QStringLiteral("put"), Example("junctions", "dgm"), QStringLiteral("Chart"),
             QStringLiteral("--if-fingerprint"), QString::fromLatin1(sha(adder).toUpper())});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    EXPECT_EQ(Db->Column(TableName, QStringLiteral("BinData")).at(0).toByteArray(),
              ReadAll(Example("junctions", "dgm")));
    EXPECT_EQ(Db->RowCount(TableName), 1);

    // To standard output the diagram goes alone; the fingerprint to standard error.
    r = Db_({QStringLiteral("get"), QStringLiteral("Chart"), QStringLiteral("-")});
    ASSERT_EQ(r.Code, 0);
    EXPECT_EQ(r.Out, ReadAll(Example("junctions", "dgm")));
    EXPECT_TRUE(r.Err.contains(sha(ReadAll(Example("junctions", "dgm")))));

    r = Db_({QStringLiteral("put"), Example("junctions", "dgm"), QStringLiteral("Chart"),
             QStringLiteral("--if-fingerprint"), QStringLiteral("abc")});
    EXPECT_EQ(r.Code, 2);
}

TEST_P(VeldiagDb, NamesAndTabsTheLibraryRefusesAreRefusedBeforeTheDatabaseIsTouched) {
    ToolRun r = Db_({QStringLiteral("put"), Example("rs_latch", "dgm"), QStringLiteral("A|B")});
    EXPECT_EQ(r.Code, 2);
    r = Db_({QStringLiteral("put"), Example("rs_latch", "dgm"), QStringLiteral("A"),
             QStringLiteral("--tab"), QStringLiteral("frmConfig.X|DiagramChart")});
    EXPECT_EQ(r.Code, 2);
    EXPECT_TRUE(r.Err.contains("holds \"|\"")) << r.Err.toStdString();
    EXPECT_EQ(Db->RowCount(TableName), 0);
}

// ---- db on a new database: the README's example, from nothing.

TEST(VeldiagDbInit, TheReadmeExampleWorksFromNothing) {
    QTemporaryDir dir;
    const QString db = dir.filePath(QStringLiteral("config.db"));
    const QString url = QStringLiteral("sqlite:") + db;
    // Without a table there is no database yet, and nothing is left behind.
    ToolRun r = Tool({QStringLiteral("db"), QStringLiteral("put"), Example("rs_latch", "dgm"),
                      QStringLiteral("Latch"), QStringLiteral("--database"), url});
    EXPECT_EQ(r.Code, 1);
    EXPECT_TRUE(r.Err.contains("veldiag db init")) << r.Err.toStdString();
    EXPECT_FALSE(QFile::exists(db));
    r = Tool({QStringLiteral("db"), QStringLiteral("list"), QStringLiteral("--database"), url});
    EXPECT_EQ(r.Code, 1);
    EXPECT_FALSE(QFile::exists(db));

    r = Tool({QStringLiteral("db"), QStringLiteral("init"), QStringLiteral("--database"), url});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    r = Tool({QStringLiteral("db"), QStringLiteral("put"), Example("rs_latch", "dgm"),
              QStringLiteral("Latch"), QStringLiteral("--database"), url});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    r = Tool({QStringLiteral("db"), QStringLiteral("list"), QStringLiteral("--database"), url});
    EXPECT_EQ(r.Out, QByteArray("Latch\t") +
                         QByteArray::number(ReadAll(Example("rs_latch", "dgm")).size()) + "\n");
    const QString back = dir.filePath(QStringLiteral("back.dgm"));
    r = Tool({QStringLiteral("db"), QStringLiteral("get"), QStringLiteral("Latch"), back,
              QStringLiteral("--database"), url});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    EXPECT_EQ(ReadAll(back), ReadAll(Example("rs_latch", "dgm")));
    // Run again, init leaves the table and its diagram alone.
    r = Tool({QStringLiteral("db"), QStringLiteral("init"), QStringLiteral("--database"), url});
    EXPECT_EQ(r.Code, 0);
    r = Tool({QStringLiteral("db"), QStringLiteral("list"), QStringLiteral("--database"), url});
    EXPECT_TRUE(r.Out.startsWith("Latch\t"));
}

TEST(VeldiagDbInit, AFailedInitLeavesNoFileBehind) {
    QTemporaryDir dir;
    const QString db = dir.filePath(QStringLiteral("config.db"));
    // A table name SQLite cannot take ("sqlite_" names are the engine's own).
    const ToolRun r = Tool({QStringLiteral("db"), QStringLiteral("init"),
                            QStringLiteral("--database"), QStringLiteral("sqlite:") + db,
                            QStringLiteral("--table"), QStringLiteral("sqlite_mine")});
    EXPECT_EQ(r.Code, 1);
    EXPECT_TRUE(r.Err.contains("Cannot create table")) << r.Err.toStdString();
    EXPECT_FALSE(QFile::exists(db));
}

TEST_P(VeldiagDb, InitMakesATableThatPutAndGetUse) {
    const QString fresh = Db->NewTableName(QStringLiteral("cli_init"));
    const QString base = GetParam() == DbKind::SQLite
                             ? QStringLiteral("sqlite:") + Db->Db().databaseName()
                             : qEnvironmentVariable("VDE_PG_URL");
    const QStringList at = {QStringLiteral("--database"), base,
                            QStringLiteral("--table"),    fresh,
                            QStringLiteral("--suffix"),   QStringLiteral("Main")};
    ASSERT_EQ(Tool(QStringList{QStringLiteral("db"), QStringLiteral("init")} + at).Code, 0);
    const ToolRun r = Tool(QStringList{QStringLiteral("db"), QStringLiteral("put"),
                                       Example("half_adder", "dgm"), QStringLiteral("H")} +
                           at);
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    EXPECT_EQ(Db->Column(fresh, QStringLiteral("Section")),
              (QVariantList{QStringLiteral("frmMain.frmConfig.H")}));
    EXPECT_EQ(Db->Column(fresh, QStringLiteral("BinData_Main")).at(0).toByteArray(),
              ReadAll(Example("half_adder", "dgm")));
    if (GetParam() == DbKind::PostgreSQL) {
        // The data column is compressed with lz4 where the server has it ('l'), else with the
        // server's default (empty).
        QSqlQuery col(Db->Db());
        ASSERT_TRUE(col.exec(QStringLiteral("SELECT a.attcompression FROM pg_attribute a JOIN "
                                            "pg_class c ON c.oid = a.attrelid WHERE c.relname = "
                                            "'%1' AND a.attname = 'BinData_Main'")
                                 .arg(fresh)))
            << col.lastError().text().toStdString();
        ASSERT_TRUE(col.next());
        QSqlQuery has(Db->Db());
        const bool serverHasLz4 =
            has.exec(QStringLiteral("CREATE TEMP TABLE vde_lz4_probe (b BYTEA COMPRESSION lz4)"));
        EXPECT_EQ(col.value(0).toString(), serverHasLz4 ? QStringLiteral("l") : QString());
    }
}

INSTANTIATE_TEST_SUITE_P(Databases, VeldiagDb,
                         ::testing::Values(DbKind::SQLite, DbKind::PostgreSQL), DbKindName());

} // namespace

// ---- simulate

namespace {

// The half adder's stimuli: A B held 4 steps each as 00, 01, 10, 11.
QString HalfAdderStimuli() {
    return Example("half_adder.stimuli", "json");
}

// A wire from output 1 of a to input `to` of b, drawn with the list's commands.
void DrawWire(TDiagConnectList& wires, TDiagObject* a, TDiagObject* b, int to) {
    TPoint from, dst;
    a->GetConPoint(1, from, false);
    b->GetConPoint(to, dst, false);
    const int k = wires.AddConnection(a, 1, 20);
    if (dst.Y != from.Y)
        wires.AddSegmentToConnection(k, std::abs(dst.Y - from.Y), dst.Y < from.Y ? -2 : 2);
    b->SetSelMarkerIndex(to);
    wires.EndConnectionByLongRec(LongRec{1, uint16_t(k + 1)}, b, nullptr);
    b->SetSelMarkerIndex(0);
}

} // namespace

TEST_F(Veldiag, SimulateHalfAdderWritesTheDumpWorkedOutByHand) {
    const ToolRun r =
        Tool({QStringLiteral("simulate"), Example("half_adder", "dgm"), QStringLiteral("--stimuli"),
              HalfAdderStimuli(), QStringLiteral("-o"), Path("ha.vcd")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    EXPECT_TRUE(r.Err.isEmpty()) << r.Err.toStdString();
    // S = (A or B) and not (A and B): OR and AND answer one step after the inputs, the last
    // AND one step later. B rises at 4: OR at 5, S at 6. A and B both 1 at 12: C (the first
    // AND) at 13, S falls at 14.
    const QByteArray expected = "$version velDiagEdit simulation $end\n"
                                "$timescale 1ns $end\n"
                                "$scope module half_adder $end\n"
                                "$var wire 1 ! A $end\n"
                                "$var wire 1 \" B $end\n"
                                "$var wire 1 # S $end\n"
                                "$var wire 1 $ C $end\n"
                                "$upscope $end\n"
                                "$enddefinitions $end\n"
                                "#0\n$dumpvars\n0!\n0\"\n0#\n0$\n$end\n"
                                "#4\n1\"\n"
                                "#6\n1#\n"
                                "#8\n1!\n0\"\n"
                                "#12\n1\"\n"
                                "#13\n1$\n"
                                "#14\n0#\n"
                                "#20\n";
    EXPECT_EQ(ReadAll(Path("ha.vcd")).toStdString(), expected.toStdString());

    const ToolRun shorter =
        Tool({QStringLiteral("simulate"), Example("half_adder", "dgm"), QStringLiteral("--stimuli"),
              HalfAdderStimuli(), QStringLiteral("--steps"), QStringLiteral("10"),
              QStringLiteral("-o"), Path("ha10.vcd")});
    ASSERT_EQ(shorter.Code, 0) << shorter.Err.toStdString();
    EXPECT_TRUE(ReadAll(Path("ha10.vcd")).endsWith("#8\n1!\n0\"\n#10\n"));
}

TEST_F(Veldiag, SimulateChartIsTheLibrarysChartOfTheSameRun) {
    const ToolRun r =
        Tool({QStringLiteral("simulate"), Example("half_adder", "dgm"), QStringLiteral("--stimuli"),
              HalfAdderStimuli(), QStringLiteral("-o"), Path("ha.png")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    HostSurface host;
    {
        TFileStream in(Example("half_adder", "dgm"), fmOpenRead);
        host.Container.LoadFromStream(in);
    }
    TDiagSimulator sim(*host.Container.ObjList, *host.Container.ConList);
    sim.SetStimuli(TSimStimuli::LoadFromFile(HalfAdderStimuli()));
    sim.Reset();
    sim.Run(20);
    const QImage expected = RenderSimChart(sim.Record());
    const QImage png(Path("ha.png"));
    ASSERT_EQ(png.size(), expected.size());
    EXPECT_EQ(png.convertToFormat(QImage::Format_ARGB32), expected);
    for (const char* ext : {"svg", "pdf"}) {
        const QString out = Path(QStringLiteral("ha.") + ext);
        const ToolRun v =
            Tool({QStringLiteral("simulate"), Example("half_adder", "dgm"),
                  QStringLiteral("--stimuli"), HalfAdderStimuli(), QStringLiteral("-o"), out});
        ASSERT_EQ(v.Code, 0) << ext << v.Err.toStdString();
        EXPECT_TRUE(ReadAll(out).startsWith(qstrcmp(ext, "svg") == 0 ? "<?xml" : "%PDF")) << ext;
    }
}

TEST_F(Veldiag, SimulateHalfAdderChartShowsTheWaveformsWorkedOutByHand) {
    const ToolRun r =
        Tool({QStringLiteral("simulate"), Example("half_adder", "dgm"), QStringLiteral("--stimuli"),
              HalfAdderStimuli(), QStringLiteral("-o"), Path("ha.png")});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    const QImage png = QImage(Path("ha.png")).convertToFormat(QImage::Format_ARGB32);
    ASSERT_FALSE(png.isNull());
    // Where rows and steps stand depends only on the names and the number of steps: four
    // traces of 20 steps, whatever their values.
    TSimRecord layout;
    layout.Steps = 20;
    for (const char* n : {"A", "B", "S", "C"})
        layout.Traces.push_back({QString::fromLatin1(n), false, -1, 0, {}});
    const TSimChartGeometry g = SimChartGeometry(layout);
    ASSERT_EQ(png.size(), g.Size);
    // Rows in diagram order: the sources A and B, the probes S and C. A and B as in the stimuli
    // file, their last bit held from step 16; the OR and the first AND (C) answer a step after
    // their inputs, S (the AND of the OR with the first AND inverted) a step later: B rises at 4, S
    // at 6; both 1 at 12: C at 13, S falls at 14.
    const char* rows[4] = {"00000000111111111111", "00001111000011111111", "00000011111111000000",
                           "00000000000001111111"};
    const auto dark = [&png](int x, int y) { return qGray(png.pixel(x, y)) < 80; };
    for (int row = 0; row < 4; ++row) {
        for (int k = 0; k < 20; ++k) {
            const int x = g.StepX(k) + g.StepWidth / 2;
            const bool one = rows[row][k] == '1';
            EXPECT_EQ(dark(x, g.HighY(row)), one) << "row " << row << " step " << k;
            EXPECT_EQ(dark(x, g.LowY(row)), !one) << "row " << row << " step " << k;
        }
    }
}

TEST_F(Veldiag, SimulateWarnsOnStderrAndGoesOn) {
    WriteAll(Path("s.json"), R"({"steps": 6, "signals": {"A": "1", "Z": "0"}})");
    const ToolRun r =
        Tool({QStringLiteral("simulate"), Example("half_adder", "dgm"), QStringLiteral("--stimuli"),
              Path("s.json"), QStringLiteral("-o"), Path("w.vcd")});
    EXPECT_EQ(r.Code, 0) << r.Err.toStdString();
    EXPECT_TRUE(r.Err.contains("veldiag simulate: warning: Source \"B\"")) << r.Err.toStdString();
    EXPECT_TRUE(r.Err.contains("\"Z\"")) << r.Err.toStdString();
    EXPECT_TRUE(ReadAll(Path("w.vcd")).endsWith("#6\n"));
}

TEST_F(Veldiag, SimulateOfACircuitWithTwoDriversOnANetFailsAndWritesNothing) {
    {
        HostSurface host;
        TDiagObjectList& blocks = *host.Container.ObjList;
        auto* a = qobject_cast<TDiagText*>(blocks.CreateObjByDiagType(doText, {0, 0, 80, 60}));
        auto* b = qobject_cast<TDiagText*>(blocks.CreateObjByDiagType(doText, {0, 100, 80, 160}));
        TDiagObject* g = blocks.CreateObjByDiagType(doOrLogic, {200, 0, 260, 100});
        a->SetOutCount(1);
        a->SetTextValues("A");
        b->SetOutCount(1);
        b->SetTextValues("B");
        DrawWire(*host.Container.ConList, a, g, -1);
        DrawWire(*host.Container.ConList, b, g, -1);
        WriteAll(Path("two.dgm"), host.Save());
    }
    WriteAll(Path("s.json"), R"({"steps": 4, "signals": {"A": "1", "B": "0"}})");
    const ToolRun r =
        Tool({QStringLiteral("simulate"), Path("two.dgm"), QStringLiteral("--stimuli"),
              Path("s.json"), QStringLiteral("-o"), Path("two.png")});
    EXPECT_EQ(r.Code, 1);
    EXPECT_TRUE(r.Err.contains("veldiag simulate: error: Net 1 has 2 drivers: output 1 of block "
                               "1 (source \"A\"), output 1 of block 2 (source \"B\")"))
        << r.Err.toStdString();
    EXPECT_FALSE(QFile::exists(Path("two.png")));
}

TEST_F(Veldiag, SimulateOfAMalformedStimuliFileNamesLineAndColumn) {
    WriteAll(Path("bad.json"), "{\"steps\": 8,\n \"signals\": {\n  \"A\": \"clock 4\",\n  \"B\": "
                               "\"0, 1@x\"}}");
    const ToolRun r =
        Tool({QStringLiteral("simulate"), Example("half_adder", "dgm"), QStringLiteral("--stimuli"),
              Path("bad.json"), QStringLiteral("-o"), Path("bad.vcd")});
    EXPECT_EQ(r.Code, 1);
    EXPECT_TRUE(r.Err.contains("bad stimuli: ")) << r.Err.toStdString();
    // Line 4: `  "B": "0, 1@x"}}`, the x at column 14.
    EXPECT_TRUE(r.Err.contains("(line 4, column 14)")) << r.Err.toStdString();
    EXPECT_FALSE(QFile::exists(Path("bad.vcd")));
}

TEST_F(Veldiag, SimulateCommandLineMistakesAreUsageErrors) {
    WriteAll(Path("nosteps.json"), R"({"signals": {"A": "1"}})");
    const QString d = Example("half_adder", "dgm");
    const QString st = QStringLiteral("--stimuli");
    const QString o = QStringLiteral("-o");
    const QString sim = QStringLiteral("simulate");
    EXPECT_EQ(Tool({sim, d, st, Path("nosteps.json"), o, Path("x.vcd")}).Code, 2);
    EXPECT_EQ(Tool({sim, d, st, Path("nosteps.json"), QStringLiteral("--steps"),
                    QStringLiteral("3"), o, Path("x.vcd")})
                  .Code,
              0);
    EXPECT_EQ(Tool({sim, d, o, Path("x.vcd")}).Code, 2) << "no stimuli";
    EXPECT_EQ(Tool({sim, d, st, HalfAdderStimuli()}).Code, 2) << "no output";
    EXPECT_EQ(Tool({sim, d, st, HalfAdderStimuli(), o, Path("x.bmp")}).Code, 2);
    EXPECT_EQ(Tool({sim, d, st, HalfAdderStimuli(), QStringLiteral("--steps"), QStringLiteral("0"),
                    o, Path("x.vcd")})
                  .Code,
              2);
    EXPECT_EQ(Tool({sim, d, st, Path("missing.json"), o, Path("x.vcd")}).Code, 1);
}

TEST_F(Veldiag, SimulateEveryExampleOnItsStimuli) {
    const QStringList names = ExampleNames(QStringLiteral("dgm"));
    ASSERT_FALSE(names.isEmpty());
    for (const QString& name : names) {
        const QString stimuli = Example(name + QStringLiteral(".stimuli"), QStringLiteral("json"));
        ASSERT_TRUE(QFile::exists(stimuli)) << name.toStdString() << " has no stimuli file";
        for (const char* ext : {"vcd", "png"}) {
            const QString out = Path(name + QLatin1Char('.') + QLatin1String(ext));
            const ToolRun r =
                Tool({QStringLiteral("simulate"), Example(name, "dgm"), QStringLiteral("--stimuli"),
                      stimuli, QStringLiteral("-o"), out});
            EXPECT_EQ(r.Code, 0) << name.toStdString() << ": " << r.Err.toStdString();
            EXPECT_TRUE(QFile::exists(out)) << name.toStdString();
        }
        EXPECT_TRUE(ReadAll(Path(name + QStringLiteral(".vcd"))).startsWith("$version"));
    }
}

namespace {

// The values of each wire of a value-change dump at every step 0 .. steps - 1, read from its
// text: the $var lines name the codes, then "#t" lines set the time and "0c" / "1c" lines the
// values from that time on.
QHash<QString, QString> VcdWaves(const QByteArray& vcd, int steps) {
    QHash<QString, QString> nameOf; // code -> name
    QHash<QString, QString> waves;  // name -> '0'/'1' per step
    int t = 0;
    for (const QByteArray& raw : vcd.split('\n')) {
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.startsWith(QLatin1String("$var"))) {
            const QStringList w = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
            nameOf.insert(w.at(3), w.at(4));
            waves.insert(w.at(4), QString(steps, QLatin1Char('0')));
        } else if (line.startsWith(QLatin1Char('#'))) {
            t = line.mid(1).toInt();
        } else if (!line.isEmpty() &&
                   (line[0] == QLatin1Char('0') || line[0] == QLatin1Char('1'))) {
            QString& w = waves[nameOf.value(line.mid(1))];
            for (int k = t; k < steps && k < w.size(); ++k)
                w[k] = line[0];
        }
    }
    return waves;
}

// Runs an example on its own stimuli file to a dump and reads it back.
QHash<QString, QString> SimulatedExample(const QString& dir, const QString& name, int steps,
                                         QByteArray* err = nullptr) {
    const QString out = dir + QLatin1Char('/') + name + QStringLiteral(".vcd");
    const ToolRun r = Tool({QStringLiteral("simulate"), Example(name, QStringLiteral("dgm")),
                            QStringLiteral("--stimuli"),
                            Example(name + QStringLiteral(".stimuli"), QStringLiteral("json")),
                            QStringLiteral("-o"), out});
    EXPECT_EQ(r.Code, 0) << name.toStdString() << ": " << r.Err.toStdString();
    if (err)
        *err = r.Err;
    else
        EXPECT_TRUE(r.Err.isEmpty()) << name.toStdString() << ": " << r.Err.toStdString();
    return VcdWaves(ReadAll(out), steps);
}

QString Bits(const char* groups) {
    return QString::fromLatin1(groups).remove(QLatin1Char(' '));
}

QChar Bit(bool one) {
    return one ? QLatin1Char('1') : QLatin1Char('0');
}

} // namespace

TEST_F(Veldiag, SimulatedHalfAdderAddsTwoBits) {
    const auto w = SimulatedExample(Dir.path(), QStringLiteral("half_adder"), 20);
    // A and B hold each of 00, 01, 10, 11 for four steps; the sum needs two gate delays.
    for (int k = 0; k < 4; ++k) {
        const int a = k >> 1, b = k & 1, step = 4 * k + 3;
        EXPECT_EQ(w[QStringLiteral("S")][step], Bit(a != b)) << k;
        EXPECT_EQ(w[QStringLiteral("C")][step], Bit(a && b)) << k;
    }
}

TEST_F(Veldiag, SimulatedFullAdderFollowsItsTruthTable) {
    const auto w = SimulatedExample(Dir.path(), QStringLiteral("full_adder"), 48);
    // The clocks of 48, 24 and 12 steps count A B Cin through 000 .. 111, six steps each. The
    // longest path (A, OR, AND, OR, AND) takes four steps, so the last step of each six shows
    // the settled sum: S is 1 for an odd number of ones, Cout for two or more.
    for (int k = 0; k < 8; ++k) {
        const int ones = (k & 1) + ((k >> 1) & 1) + ((k >> 2) & 1), step = 6 * k + 5;
        EXPECT_EQ(w[QStringLiteral("A")][step], Bit((k >> 2) & 1)) << k;
        EXPECT_EQ(w[QStringLiteral("B")][step], Bit((k >> 1) & 1)) << k;
        EXPECT_EQ(w[QStringLiteral("Cin")][step], Bit(k & 1)) << k;
        EXPECT_EQ(w[QStringLiteral("S")][step], Bit(ones % 2 == 1)) << k;
        EXPECT_EQ(w[QStringLiteral("Cout")][step], Bit(ones >= 2)) << k;
    }
}

TEST_F(Veldiag, SimulatedNorLatchIsResetSetAndResetAgain) {
    const auto w = SimulatedExample(Dir.path(), QStringLiteral("rs_latch"), 20);
    // R is 1 at steps 0-1: Q stays 0 and /Q (not S or Q) rises at 1. S is 1 at 6-7: /Q falls
    // at 7, Q (not R or /Q) rises at 8 and holds. R is 1 at 14-15: Q falls at 15, /Q rises at
    // 16.
    EXPECT_EQ(w[QStringLiteral("Q")], Bits("00000000 1111111 00000"));
    EXPECT_EQ(w[QStringLiteral("/Q")], Bits("0 111111 000000000 1111"));
    // Without the first reset both gates start alike and flip together.
    WriteAll(Path("idle.json"), R"({"steps": 20, "signals": {"S": "0", "R": "0"}})");
    const ToolRun r =
        Tool({QStringLiteral("simulate"), Example("rs_latch", "dgm"), QStringLiteral("--stimuli"),
              Path("idle.json"), QStringLiteral("-o"), Path("idle.vcd")});
    EXPECT_EQ(r.Code, 0);
    EXPECT_TRUE(r.Err.contains("warning: Oscillation")) << r.Err.toStdString();
}

TEST_F(Veldiag, SimulatedFlipFlopBlockHoldsAndReportsTheForbiddenInput) {
    QByteArray err;
    const auto w = SimulatedExample(Dir.path(), QStringLiteral("rs_flipflop"), 22, &err);
    // S at 2-3 sets (Q at 3), R at 7-8 resets (8), S at 12 sets (13), R and S both 1 at 14-15
    // hold, S falls at 16 with R still 1: reset at 17.
    EXPECT_EQ(w[QStringLiteral("Q")], Bits("000 11111 00000 1111 00000"));
    EXPECT_TRUE(err.contains("R = S = 1 (forbidden) 1 time(s), first at step 14"))
        << err.toStdString();
}

TEST_F(Veldiag, SimulatedDLatchFollowsDWhileEnabledAndHoldsOtherwise) {
    const auto w = SimulatedExample(Dir.path(), QStringLiteral("d_latch"), 30);
    // Two steps behind D while EN is 1 (4-11 and 22-25): 1 at 6, 0 at 10, 1 at 12; EN falls at
    // 12 and Q holds 1 through D's changes until EN is 1 again and D falls at 24: 0 at 26.
    EXPECT_EQ(w[QStringLiteral("Q")], Bits("000000 1111 00 11111111111111 0000"));
}

TEST_F(Veldiag, SimulatedRippleCounterCountsTheFallingEdgesOfItsClock) {
    const auto w = SimulatedExample(Dir.path(), QStringLiteral("ripple_counter"), 280);
    // CLK falls at 16, 32, ...; each stage toggles two steps after its clock falls, so the
    // count has rippled through all four stages by 8 steps after the edge.
    for (int n = 0; n <= 16; ++n) {
        const int step = 16 * n + 12;
        int count = 0;
        for (int bit = 0; bit < 4; ++bit)
            if (w[QStringLiteral("Q%1").arg(bit)][step] == QLatin1Char('1'))
                count |= 1 << bit;
        EXPECT_EQ(count, n % 16) << "at step " << step;
    }
    // Q0 itself: 0 until 18, then toggling every 16 steps.
    const QString q0 = w[QStringLiteral("Q0")];
    for (int t = 0; t < 280; ++t)
        EXPECT_EQ(q0[t], Bit(t >= 18 && ((t - 18) / 16) % 2 == 0)) << t;
}

TEST_F(Veldiag, SimulatedJunctionsGateTheirInputsWithEnable) {
    const auto w = SimulatedExample(Dir.path(), QStringLiteral("junctions"), 16);
    // Y1 = A and EN, Y2 = IN and EN, Y3 = IN or EN, one step after the inputs.
    const QString a = w[QStringLiteral("A")], in = w[QStringLiteral("IN")],
                  en = w[QStringLiteral("EN")];
    ASSERT_EQ(a.size(), 16);
    for (int t = 1; t < 16; ++t) {
        const bool A = a[t - 1] == QLatin1Char('1'), IN = in[t - 1] == QLatin1Char('1'),
                   EN = en[t - 1] == QLatin1Char('1');
        EXPECT_EQ(w[QStringLiteral("Y1")][t], Bit(A && EN)) << t;
        EXPECT_EQ(w[QStringLiteral("Y2")][t], Bit(IN && EN)) << t;
        EXPECT_EQ(w[QStringLiteral("Y3")][t], Bit(IN || EN)) << t;
    }
}
