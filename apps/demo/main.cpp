// The demo host: a window whose tab pages are host panels turned into diagram surfaces and
// other uses of the library. With no display (offscreen platform) every page is rendered to a
// PNG file instead: demo.png for the first page, demo-<n>.png for the others.
// --database URL keeps the "Stored diagram" page's diagram in a table instead of a file.
#include "demo_pages.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QMainWindow>
#include <QTabWidget>
#include <cstdio>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QCommandLineParser options;
    options.addHelpOption();
    const QCommandLineOption database(
        QStringLiteral("database"),
        QStringLiteral("Keep the stored diagram in a table: sqlite:PATH or "
                       "postgresql://USER@HOST:PORT/DB?table=NAME."),
        QStringLiteral("url"));
    options.addOption(database);
    options.process(app);
    SetDemoDatabaseUrl(options.value(database));
    QMainWindow window;
    window.setWindowTitle(QStringLiteral("velDiagEdit demo"));
    auto* tabs = new QTabWidget(&window);
    window.setCentralWidget(tabs);
    const auto pages = DemoPages();
    for (const auto& page : pages)
        tabs->addTab(page.Create(), page.Title);
    window.resize(900, 620);

    const bool offscreen = QGuiApplication::platformName() == QLatin1String("offscreen");
    if (!offscreen) {
        window.show();
        return app.exec();
    }
    window.show();
    for (int i = 0; i < tabs->count(); ++i) {
        tabs->setCurrentIndex(i);
        QApplication::processEvents();
        if (pages[size_t(i)].AfterShow)
            pages[size_t(i)].AfterShow(tabs->widget(i));
        QApplication::processEvents();
        QImage img(window.size(), QImage::Format_ARGB32);
        img.fill(Qt::white);
        window.render(&img);
        const QString name =
            i == 0 ? QStringLiteral("demo.png") : QStringLiteral("demo-%1.png").arg(i + 1);
        img.save(name);
        std::printf("%s: %s\n", qPrintable(pages[size_t(i)].Title),
                    qPrintable(QFileInfo(name).absoluteFilePath()));
    }
    return 0;
}
