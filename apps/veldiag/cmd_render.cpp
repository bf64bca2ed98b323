// veldiag render: the diagram as the editor shows it outside design mode (the panel's
// background, the wires with their junction dots, the blocks over them), cropped to what is
// drawn plus a margin. PNG is a picture; SVG and PDF are vector drawings whose texts stay text.
//
// The surface is drawn the way its widgets draw it, with the painter lent to the canvases of
// the panel and of each block in turn: first the panel's paint handler (the wires), then every
// visible block at its place, clipped to its bounds. Drawing through the lent painter, rather
// than rendering the widgets, keeps vector devices vector and needs no panel as large as the
// diagram (blocks may sit at negative coordinates).
#include "cli_support.h"
#include "commands.h"
#include "diagram_surface.h"

#include <QColor>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgGenerator>
#include <algorithm>
#include <cmath>

namespace veldiag {

namespace {

// A raster picture larger than this many pixels (1 GiB at 4 bytes each) is refused.
constexpr int64_t kMaxPixels = int64_t(1) << 28;
constexpr int64_t kMaxSide = 32767;

// Half-open, in 64 bits so that hostile coordinates cannot overflow.
struct Extent {
    int64_t L = 0, T = 0, R = 0, B = 0;
    bool Empty = true;
    void Add(int64_t l, int64_t t, int64_t r, int64_t b) {
        if (r <= l || b <= t)
            return;
        if (Empty) {
            L = l, T = t, R = r, B = b;
            Empty = false;
            return;
        }
        L = std::min(L, l), T = std::min(T, t), R = std::max(R, r), B = std::max(B, b);
    }
};

// The pixels the diagram covers: every visible block's bounds, and every wire's stamped pen
// (a w x w square at offsets -w/2 .. w-1-w/2 around each point) and junction dot (the 8-pixel
// circle and its outline around the end point).
Extent DrawnExtent(DiagramSurface& s) {
    Extent e;
    vde::TDiagContainer& dc = s.Container();
    if (dc.ObjList) {
        for (const vde::TDiagObject* b : dc.ObjList->All()) {
            if (!b->isVisibleTo(&s.Panel()))
                continue;
            const vde::TRect r = b->BoundsRect();
            e.Add(r.Left, r.Top, int64_t(r.Left) + b->width(), int64_t(r.Top) + b->height());
        }
    }
    if (dc.ConList) {
        for (int i = 0; i < dc.ConList->Count(); ++i) {
            const vde::TDiagConnection* c = dc.ConList->Items(i);
            if (!c || c->FPoints.size() < 2)
                continue;
            const int64_t w = std::max<int64_t>(1, c->FPenWidth), off = w / 2;
            for (const vde::TPoint& p : c->FPoints)
                e.Add(p.X - off, p.Y - off, p.X - off + w, p.Y - off + w);
            if (!c->FDstCrossInfo.IsZero()) {
                const vde::TPoint p = c->FPoints.back();
                e.Add(int64_t(p.X) - 5, int64_t(p.Y) - 5, int64_t(p.X) + 5, int64_t(p.Y) + 5);
            }
        }
    }
    return e;
}

struct Frame {
    Extent Area; // diagram pixels shown, margin included
    double Scale = 1;
    int64_t Width = 1; // output units (pixels, SVG units, PDF points)
    int64_t Height = 1;
};

Frame FrameFor(DiagramSurface& s, int margin, double scale) {
    Frame f;
    f.Scale = scale;
    Extent e = DrawnExtent(s);
    if (e.Empty)
        e = Extent{0, 0, 0, 0, false};
    f.Area = Extent{e.L - margin, e.T - margin, e.R + margin, e.B + margin, false};
    const double w = std::ceil(double(f.Area.R - f.Area.L) * scale);
    const double h = std::ceil(double(f.Area.B - f.Area.T) * scale);
    if (w > double(kMaxSide) || h > double(kMaxSide))
        throw vde::EInvalidOperation(QStringLiteral("The picture would be %1 x %2; no side may "
                                                    "exceed %3 (try a smaller --scale)")
                                         .arg(w, 0, 'f', 0)
                                         .arg(h, 0, 'f', 0)
                                         .arg(kMaxSide));
    f.Width = std::max<int64_t>(1, int64_t(w));
    f.Height = std::max<int64_t>(1, int64_t(h));
    return f;
}

void Paint(QPainter& p, DiagramSurface& s, const Frame& f, const QColor& background) {
    if (background.alpha() > 0)
        p.fillRect(QRectF(0, 0, double(f.Width), double(f.Height)), background);
    p.scale(f.Scale, f.Scale);
    p.translate(-double(f.Area.L), -double(f.Area.T));
    vde::TDiagContainer& dc = s.Container();
    {
        const vde::TPaintScope scope(&s.Panel(), &p);
        dc.PaintEvent(&s.Panel());
    }
    if (!dc.ObjList)
        return;
    for (vde::TDiagObject* b : dc.ObjList->All()) {
        if (!b->isVisibleTo(&s.Panel()))
            continue;
        p.save();
        p.translate(b->x(), b->y());
        p.setClipRect(QRect(0, 0, b->width(), b->height()), Qt::IntersectClip);
        {
            const vde::TPaintScope scope(b, &p);
            b->Paint();
        }
        p.restore();
    }
}

enum class Format { Png, Svg, Pdf };

Format FormatOf(const QString& fileName, const QString& forced) {
    // Standard output has no extension: PNG unless --format says otherwise.
    if (forced.isEmpty() && fileName == QLatin1String("-"))
        return Format::Png;
    const QString f = forced.isEmpty() ? QFileInfo(fileName).suffix().toLower() : forced.toLower();
    if (f == QLatin1String("png"))
        return Format::Png;
    if (f == QLatin1String("svg"))
        return Format::Svg;
    if (f == QLatin1String("pdf"))
        return Format::Pdf;
    throw UsageError(QStringLiteral("cannot tell the picture format of \"%1\": use a .png, .svg "
                                    "or .pdf file or --format")
                         .arg(fileName));
}

} // namespace

int RunRender(const QStringList& args) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Draws DIAGRAM (binary .dgm, or the text form .ini/.txt) as the editor shows it outside "
        "design mode: blocks, wires and junction dots, cropped to what is drawn plus the "
        "margin. PNG is a picture; SVG and PDF are vector drawings whose texts stay text (PDF in "
        "points, one point per diagram pixel at scale 1). The output is replaced only when "
        "complete."));
    parser.addPositionalArgument(QStringLiteral("DIAGRAM"), QStringLiteral("The diagram file."));
    const QCommandLineOption output({QStringLiteral("o"), QStringLiteral("output")},
                                    QStringLiteral("The picture to write: .png, .svg or .pdf; "
                                                   "\"-\" writes it to standard output (PNG "
                                                   "unless --format says)."),
                                    QStringLiteral("OUT"));
    const QCommandLineOption format(QStringLiteral("format"),
                                    QStringLiteral("png, svg or pdf, whatever OUT's extension."),
                                    QStringLiteral("FORMAT"));
    const QCommandLineOption scale(QStringLiteral("scale"),
                                   QStringLiteral("Output units per diagram pixel (default 1; "
                                                  "from 0.01 to 16)."),
                                   QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption margin(QStringLiteral("margin"),
                                    QStringLiteral("Space around the drawing, in diagram pixels "
                                                   "(default 10; scaled with it)."),
                                    QStringLiteral("PX"), QStringLiteral("10"));
    const QCommandLineOption background(
        QStringLiteral("background"),
        QStringLiteral("Background colour: a name (white), #RRGGBB, #AARRGGBB or "
                       "\"transparent\" (default white)."),
        QStringLiteral("COLOR"), QStringLiteral("white"));
    const QCommandLineOption selection(
        QStringLiteral("selection"),
        QStringLiteral("Draw the editing selection stored in the diagram (the selected block's "
                       "frame, the selected wire segment), as the editor shows it; without "
                       "this option the picture shows no selection."));
    parser.addOptions({output, format, scale, margin, background, selection});
    ParseCommand(parser, args, 1, 1);

    const QString in = parser.positionalArguments().at(0);
    if (!parser.isSet(output))
        throw UsageError(QStringLiteral("no output file given (-o OUT)"));
    const QString out = parser.value(output);
    const Format fmt = FormatOf(out, parser.value(format));
    bool ok = false;
    const double sc = parser.value(scale).toDouble(&ok);
    if (!ok || !(sc >= 0.01 && sc <= 16))
        throw UsageError(QStringLiteral("--scale \"%1\" is not a number from 0.01 to 16")
                             .arg(parser.value(scale)));
    const int mg = parser.value(margin).toInt(&ok);
    if (!ok || mg < 0 || mg > 10000)
        throw UsageError(QStringLiteral("--margin \"%1\" is not a whole number from 0 to 10000")
                             .arg(parser.value(margin)));
    const QColor bg = QColor::fromString(parser.value(background));
    if (!bg.isValid())
        throw UsageError(
            QStringLiteral("--background \"%1\" is not a colour").arg(parser.value(background)));

    DiagramSurface surface;
    surface.LoadFile(in);
    if (!parser.isSet(selection))
        surface.ClearSelection();
    const Frame frame = FrameFor(surface, mg, sc);

    switch (fmt) {
    case Format::Png: {
        if (frame.Width * frame.Height > kMaxPixels)
            throw vde::EInvalidOperation(
                QStringLiteral("The picture would have %1 x %2 pixels, more than %3 (try a "
                               "smaller --scale)")
                    .arg(frame.Width)
                    .arg(frame.Height)
                    .arg(kMaxPixels));
        QImage img(int(frame.Width), int(frame.Height), QImage::Format_ARGB32_Premultiplied);
        if (img.isNull())
            throw vde::EInvalidOperation(
                QStringLiteral("Not enough memory for a picture of %1 x %2")
                    .arg(frame.Width)
                    .arg(frame.Height));
        img.fill(Qt::transparent);
        {
            QPainter p(&img);
            Paint(p, surface, frame, bg);
        }
        WriteFileAtomically(out, [&](QIODevice& d) {
            QImageWriter w(&d, "png");
            if (!w.write(img))
                throw vde::EWriteError(
                    QStringLiteral("Cannot write PNG \"%1\": %2").arg(out, w.errorString()));
        });
        break;
    }
    case Format::Svg:
        WriteFileAtomically(out, [&](QIODevice& d) {
            QSvgGenerator gen;
            gen.setOutputDevice(&d);
            gen.setSize(QSize(int(frame.Width), int(frame.Height)));
            gen.setViewBox(QRect(0, 0, int(frame.Width), int(frame.Height)));
            gen.setTitle(QFileInfo(in).completeBaseName());
            gen.setDescription(QStringLiteral("Drawn by veldiag render"));
            QPainter p;
            if (!p.begin(&gen))
                throw vde::EWriteError(QStringLiteral("Cannot draw into \"%1\"").arg(out));
            Paint(p, surface, frame, bg);
            p.end();
        });
        break;
    case Format::Pdf:
        WriteFileAtomically(out, [&](QIODevice& d) {
            QPdfWriter pdf(&d);
            pdf.setResolution(72);
            pdf.setCreator(QStringLiteral("veldiag"));
            pdf.setTitle(QFileInfo(in).completeBaseName());
            pdf.setPageMargins(QMarginsF(0, 0, 0, 0));
            pdf.setPageSize(QPageSize(QSizeF(double(frame.Width), double(frame.Height)),
                                      QPageSize::Point, QString(), QPageSize::ExactMatch));
            QPainter p;
            if (!p.begin(&pdf))
                throw vde::EWriteError(QStringLiteral("Cannot draw into \"%1\"").arg(out));
            Paint(p, surface, frame, bg);
            p.end();
        });
        break;
    }
    return kExitOk;
}

} // namespace veldiag
