// Demo page: the sample diagrams of examples/, loaded from their .dgm files into a diagram
// surface. Pick one in the list; "Save as text" writes the blocks in the text form beside it in
// the temporary folder and says where.
#include "demo_pages.h"
#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/platform/errors.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <memory>

namespace {

// The examples folder: VDE_EXAMPLES_DIR if set, else the nearest "examples" folder above the
// program (the build tree lives inside the source tree).
QString ExamplesFolder() {
    const QString env = qEnvironmentVariable("VDE_EXAMPLES_DIR");
    if (!env.isEmpty())
        return env;
    QDir dir(QCoreApplication::applicationDirPath());
    for (int up = 0; up < 6; ++up) {
        if (QFileInfo::exists(dir.filePath(QStringLiteral("examples/half_adder.dgm"))))
            return dir.filePath(QStringLiteral("examples"));
        if (!dir.cdUp())
            break;
    }
    return {};
}

// The surface and its container live as long as the page.
class ExamplesPage : public QWidget {
public:
    ExamplesPage() {
        setObjectName(QStringLiteral("examplesPage"));
        auto* layout = new QVBoxLayout(this);
        auto* row = new QHBoxLayout;
        FChoice = new QComboBox;
        FChoice->setObjectName(QStringLiteral("exampleChoice"));
        auto* toText = new QPushButton(QStringLiteral("Save as text"));
        FStatus = new QLabel;
        row->addWidget(new QLabel(QStringLiteral("Diagram:")));
        row->addWidget(FChoice);
        row->addWidget(toText);
        row->addWidget(FStatus, 1);
        layout->addLayout(row);

        FSurface = new QFrame;
        FSurface->setObjectName(QStringLiteral("diagramSurface"));
        FSurface->setAutoFillBackground(true);
        QPalette pal = FSurface->palette();
        pal.setColor(QPalette::Window, Qt::white);
        FSurface->setPalette(pal);
        FSurface->setMinimumSize(1200, 460);
        layout->addWidget(FSurface, 1);
        FCanvas.SetHandle(FSurface);
        FDiagram = std::make_unique<vde::TDiagContainer>(FSurface, &FCanvas, nullptr);

        const QString folder = ExamplesFolder();
        for (const QFileInfo& f :
             QDir(folder).entryInfoList({QStringLiteral("*.dgm")}, QDir::Files, QDir::Name))
            FChoice->addItem(f.completeBaseName(), f.filePath());
        if (FChoice->count() == 0)
            FStatus->setText(QStringLiteral("No examples folder found (set VDE_EXAMPLES_DIR)."));
        connect(FChoice, &QComboBox::currentIndexChanged, this, [this] { Load(); });
        connect(toText, &QPushButton::clicked, this, [this] { SaveText(); });
        Load();
    }

private:
    void Load() {
        const QString file = FChoice->currentData().toString();
        if (file.isEmpty())
            return;
        try {
            FDiagram->LoadDiagramFromFile(file);
            FStatus->setText(QStringLiteral("%1 blocks, %2 wires")
                                 .arg(FDiagram->ObjList->Count())
                                 .arg(FDiagram->ConList->Count()));
        } catch (const vde::Exception& e) {
            FStatus->setText(e.Message());
        }
    }
    void SaveText() {
        const QString name = QDir::temp().filePath(FChoice->currentText() + QStringLiteral(".txt"));
        try {
            FDiagram->SaveDiagramToText(name);
            FStatus->setText(QStringLiteral("Written: ") + name);
        } catch (const vde::Exception& e) {
            FStatus->setText(e.Message());
        }
    }

    QComboBox* FChoice = nullptr;
    QLabel* FStatus = nullptr;
    QFrame* FSurface = nullptr;
    vde::TCanvas FCanvas;
    // Declared last: goes first, while the surface still exists.
    std::unique_ptr<vde::TDiagContainer> FDiagram;
};

const bool registered =
    RegisterDemoPage(50, QStringLiteral("Examples"), [] { return new ExamplesPage; });

} // namespace
