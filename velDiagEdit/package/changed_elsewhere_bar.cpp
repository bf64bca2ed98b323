#include "velDiagEdit/package/changed_elsewhere_bar.h"

#include "velDiagEdit/package/diag_package.h"
#include "velDiagEdit/platform/event_boundary.h"
#include "velDiagEdit/platform/translations.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace vde {

TChangedElsewhereBar::TChangedElsewhereBar(QWidget* Parent) : QFrame(Parent) {
    setObjectName(QStringLiteral("changedElsewhereBar"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 4);
    FLabel = new QLabel(this);
    FReload = new QPushButton(this);
    FReload->setObjectName(QStringLiteral("reloadButton"));
    FKeep = new QPushButton(this);
    FKeep->setObjectName(QStringLiteral("keepMineButton"));
    row->addWidget(FLabel, 1);
    row->addWidget(FReload);
    row->addWidget(FKeep);
    Retranslate();
    OnLanguageChange(this, [this] { Retranslate(); });
    connect(FReload, &QPushButton::clicked, this, [this] {
        const QString name = FName;
        bool done = false;
        RunInEventBoundary("live reload", [&] {
            ReloadChangedDiagram(name);
            done = true;
        });
        if (!done)
            return;
        FName.clear();
        hide();
        emit Answered(name, true);
    });
    connect(FKeep, &QPushButton::clicked, this, [this] {
        const QString name = FName;
        KeepMyDiagram(name);
        FName.clear();
        hide();
        emit Answered(name, false);
    });
    hide();
}

void TChangedElsewhereBar::ShowFor(const QString& Name) {
    FName = Name;
    Retranslate();
    show();
}

QString TChangedElsewhereBar::ReloadedText(const QString& Name) {
    return tr("\"%1\" was saved by someone else and has been reloaded").arg(Name);
}

void TChangedElsewhereBar::Retranslate() {
    FLabel->setText(FName.isEmpty() ? tr("Changed by someone else")
                                    : tr("\"%1\" was changed by someone else").arg(FName));
    FReload->setText(tr("Reload"));
    FKeep->setText(tr("Keep mine"));
}

} // namespace vde
