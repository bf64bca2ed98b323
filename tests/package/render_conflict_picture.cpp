// Not a test: writes docs/images/save_conflict.png, the question the Qt dialog service asks when a
// save with the conflict check on finds that someone else saved the diagram after it was loaded.
// Two modules on two connections to one SQLite configuration table play the two users; the
// second one's save raises the real box, which is grabbed and closed with Cancel. The window
// frame is drawn as a plain title bar.
// Usage: vde_conflict_picture <folder>

#include <velDiagEdit/velDiagEdit.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QImage>
#include <QMessageBox>
#include <QPainter>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <memory>

using namespace vde;

namespace {

QImage Framed(QWidget& form) {
    const QPixmap client = form.grab();
    const int title = 24;
    QImage img(client.width() + 2, client.height() + title + 1, QImage::Format_RGB32);
    img.fill(QColor(0x80, 0x80, 0x80));
    QPainter p(&img);
    p.fillRect(1, 1, client.width(), title - 1, QColor(0x2b, 0x4f, 0x81));
    QFont f = DialogFont();
    f.setBold(true);
    p.setFont(f);
    p.setPen(Qt::white);
    p.drawText(QRect(8, 1, client.width() - 30, title - 1), Qt::AlignVCenter | Qt::AlignLeft,
               form.windowTitle());
    p.drawText(QRect(client.width() - 22, 1, 20, title - 1), Qt::AlignCenter,
               QStringLiteral("\u2715"));
    p.drawPixmap(1, title, client);
    p.end();
    return img;
}

// One user's window on the diagram "Plant" of the tab "frmPlant", with a connection of its own.
struct User {
    QObject owner;
    QWidget panel;
    TCanvas canvas;
    std::unique_ptr<TDataSet> table;
    std::unique_ptr<TdmTableDiagActions> m;
    TMenuItem andItem{nullptr};

    User(const QString& file, const QString& connection) {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        db.setDatabaseName(file);
        db.open();
        table = std::make_unique<TDataSet>(connection, QStringLiteral("Config"));
        table->Open();
        canvas.SetHandle(&panel);
        m = std::make_unique<TdmTableDiagActions>(&owner, table.get(), QStringLiteral("Config"));
        m->SetName(QStringLiteral("Plant"));
        m->CreateContainer(&panel, &canvas);
        m->SetConflictCheck(true);
        andItem.Tag = doAndLogic;
    }
    void Load() { m->LoadDiagramEx(QStringLiteral("Plant"), QStringLiteral("frmPlant")); }
    void AddGate(int x, int y) {
        m->DiagContr->FClickPoint = {x, y};
        m->DiagContr->CreateDiagObEvent(&andItem);
        m->SetDesignMode(true); // marks the diagram to be saved
    }
};

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QDir out(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("."));
    QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/plant-XXXXXX"));
    if (!dir.isValid())
        return 1;
    const QString file = dir.filePath(QStringLiteral("config.db"));
    {
        QSqlDatabase db =
            QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("make"));
        db.setDatabaseName(file);
        if (!db.open() ||
            !QSqlQuery(db).exec(QStringLiteral(
                "CREATE TABLE \"Config\" (\"id\" INTEGER PRIMARY KEY, \"Section\" TEXT, "
                "\"Key\" TEXT, \"BinData\" BLOB, UNIQUE (\"Section\", \"Key\"))")))
            return 1;
        db.close();
    }
    SetDialogService(&QtDialogService());
    try {
        User first(file, QStringLiteral("first")), second(file, QStringLiteral("second"));
        first.Load();
        first.AddGate(10, 10);
        first.m->SaveDiagram(QString());
        first.Load();
        second.Load();
        first.AddGate(100, 10);
        first.m->SaveDiagram(QString());
        second.AddGate(10, 120);

        QImage picture;
        QTimer::singleShot(0, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box) {
                std::fprintf(stderr, "no question was shown\n");
                QApplication::exit(2);
                return;
            }
            box->adjustSize();
            QApplication::processEvents();
            picture = Framed(*box);
            box->button(QMessageBox::Cancel)->click();
        });
        try {
            second.m->SaveDiagram(QString());
        } catch (const EDiagramConflict&) {
            // Cancel: nothing written, as expected.
        }
        if (picture.isNull())
            return 2;
        const QString path = out.filePath(QStringLiteral("save_conflict.png"));
        if (!picture.save(path)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
            return 1;
        }
        std::printf("%s\n", qPrintable(path));
    } catch (const Exception& e) {
        std::fprintf(stderr, "%s\n", qPrintable(e.Message()));
        return 1;
    }
    return 0;
}
