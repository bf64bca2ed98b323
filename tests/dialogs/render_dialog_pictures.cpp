// Renders the three value dialogs, as a user sees them, to PNG files in the directory given
// as the first argument: dialog_edit_params.png, dialog_edit_size.png, dialog_select_item.png.
// The window frame is drawn as a plain title bar with the caption.
#include "velDiagEdit/dialogs/edit_segment_params.h"
#include "velDiagEdit/dialogs/edit_size_value.h"
#include "velDiagEdit/dialogs/select_item_dlg.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QRadioButton>
#include <cstdio>

namespace {

QImage Framed(QWidget& form) {
    form.show();
    QApplication::processEvents();
    const QPixmap client = form.grab();
    const int title = 24;
    QImage img(client.width() + 2, client.height() + title + 1, QImage::Format_RGB32);
    img.fill(QColor(0x80, 0x80, 0x80));
    QPainter p(&img);
    p.fillRect(1, 1, client.width(), title - 1, QColor(0x2b, 0x4f, 0x81));
    QFont f = vde::DialogFont();
    f.setBold(true);
    p.setFont(f);
    p.setPen(Qt::white);
    p.drawText(QRect(8, 1, client.width() - 30, title - 1), Qt::AlignVCenter | Qt::AlignLeft,
               form.windowTitle());
    p.drawText(QRect(client.width() - 22, 1, 20, title - 1), Qt::AlignCenter,
               QStringLiteral("\u2715"));
    p.drawPixmap(1, title, client);
    p.end();
    form.hide();
    return img;
}

bool Save(const QImage& img, const QDir& dir, const char* name) {
    const QString path = dir.filePath(QString::fromLatin1(name));
    if (!img.save(path)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return false;
    }
    std::printf("%s\n", qPrintable(path));
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QDir dir(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("."));
    bool ok = true;

    vde::TfmEditSegmentParams segment(nullptr);
    segment.AcceptParams({100, 90, false}, QString(), vde::Point(-1, -1));
    ok &= Save(Framed(segment), dir, "dialog_edit_params.png");

    vde::TfmEditSizeValue size(nullptr);
    size.AcceptParams({3, 0, 30, 1}, QStringLiteral("Input Count"), vde::Point(-1, -1));
    ok &= Save(Framed(size), dir, "dialog_edit_size.png");

    // Laid out as SelectItemFromArray lays it out for three items.
    vde::TfmSelectItem select(nullptr);
    select.setWindowTitle(QStringLiteral("Select marker type"));
    select.RadioGroup1->SetBounds(8, 1, 185, 99);
    select.bbOk->move(16, 106);
    select.bbCancel->move(112, 106);
    select.SetClientSize(209, 138);
    for (const char* item : {"Direct", "Inversion", "Arrow"})
        select.RadioGroup1->AddItem(QString::fromLatin1(item));
    select.RadioGroup1->SetItemIndex(0);
    ok &= Save(Framed(select), dir, "dialog_select_item.png");
    return ok ? 0 : 1;
}
