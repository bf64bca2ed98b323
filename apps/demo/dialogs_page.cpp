// Demo page: opens each prompt of the library through the dialog service and shows what it
// gave back.
#include "demo_pages.h"
#include "velDiagEdit/dialogs/edit_segment_params.h"
#include "velDiagEdit/dialogs/edit_size_value.h"
#include "velDiagEdit/platform/dialog_service.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <functional>

using namespace vde;

namespace {

QWidget* CreateDialogsPage() {
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    auto* intro = new QLabel(QStringLiteral(
        "Every prompt of the editor goes through the dialog service. Press a button to open the "
        "dialog; its answer is shown below."));
    intro->setWordWrap(true);
    layout->addWidget(intro);
    auto* grid = new QGridLayout;
    layout->addLayout(grid);
    auto* answer = new QLabel(QStringLiteral("Answer: none yet"));
    answer->setObjectName(QStringLiteral("answer"));

    int row = 0;
    const auto add = [&](const QString& caption, std::function<QString()> ask) {
        auto* button = new QPushButton(caption);
        QObject::connect(button, &QPushButton::clicked, answer,
                         [answer, ask] { answer->setText(QStringLiteral("Answer: ") + ask()); });
        grid->addWidget(button, row / 3, row % 3);
        ++row;
    };

    auto segment = std::make_shared<TSegmentParamRec>(TSegmentParamRec{100, 90, false});
    add(QStringLiteral("Edit Segment ..."), [segment] {
        const bool ok = DialogService().EditSegmentParams(*segment, QString(), Point(-1, -1));
        return QStringLiteral("%1, size %2, angle %3")
            .arg(ok ? QStringLiteral("OK") : QStringLiteral("cancelled"))
            .arg(segment->Size)
            .arg(segment->Angle);
    });
    auto count = std::make_shared<int32_t>(3);
    add(QStringLiteral("Set In Count ..."), [count] {
        const bool ok =
            DialogService().EditSizeValue(*count, 0, 30, 1, QStringLiteral("Input Count"));
        return QStringLiteral("%1, count %2")
            .arg(ok ? QStringLiteral("OK") : QStringLiteral("cancelled"))
            .arg(*count);
    });
    add(QStringLiteral("Select marker type ..."), [] {
        const int k = DialogService().SelectItemFromArray(
            QStringLiteral("Select marker type"),
            {QStringLiteral("Direct"), QStringLiteral("Inversion"), QStringLiteral("Arrow")}, 0);
        return QStringLiteral("item %1").arg(k);
    });
    add(QStringLiteral("Shift By Delta ..."), [] {
        QString text = QStringLiteral("0,0");
        const bool ok = DialogService().InputQuery(QStringLiteral("Shift x,y Values"),
                                                   QStringLiteral("Values:"), text);
        return ok ? text : QStringLiteral("cancelled");
    });
    add(QStringLiteral("Add several connections"), [] {
        const TModalResult r = DialogService().MessageDlg(QStringLiteral("Add several connections"),
                                                          mtConfirmation, mbYesNo, 0, mbNo);
        return r == mrYes  ? QStringLiteral("Yes")
               : r == mrNo ? QStringLiteral("No")
                           : QStringLiteral("closed");
    });
    add(QStringLiteral("Marker is not free"), [] {
        DialogService().ErrorMessageDlg(QStringLiteral("Marker is not free"));
        return QStringLiteral("acknowledged");
    });
    add(QStringLiteral("Save To ..."), [] {
        TSaveDialog save;
        save.DefaultExt = QStringLiteral("dgm");
        save.Filter = QStringLiteral("Diagram files (*.dgm)|*.dgm");
        return save.Execute() ? save.FileName : QStringLiteral("cancelled");
    });

    layout->addWidget(answer);
    layout->addStretch();
    return page;
}

const bool registered = RegisterDemoPage(70, QStringLiteral("Dialogs"), &CreateDialogsPage);

} // namespace
