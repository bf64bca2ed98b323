#include "appearance.h"

#include <velDiagEdit/velDiagEdit.h>

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QHash>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QStyle>
#include <QStyleFactory>

namespace {

const QCommandLineOption kLanguage(QStringLiteral("language"),
                                   QStringLiteral("The library's texts in a language: en or ru."),
                                   QStringLiteral("code"));
const QCommandLineOption kDark(QStringLiteral("dark"),
                               QStringLiteral("A dark palette, which the diagrams follow."));

// Installs the library's translation for a language code; an empty code takes it out.
void UseLanguage(const QString& Code) {
    if (Code.isEmpty())
        vde::RemoveTranslations();
    else
        vde::InstallTranslations(QLocale(Code));
}

// Dark: the application and the diagram panels take the dark palette and the diagrams follow
// it. Light: everything as it was before.
void UseDark(bool On) {
    static QPalette appPalette = QApplication::palette();
    static QString appStyle = QApplication::style()->name();
    static QHash<QWidget*, QPalette> panelPalettes;
    vde::TDiagActionsList* list = vde::GetDiagActionsList();
    if (On) {
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
        QApplication::setPalette(vde::DarkFusionPalette());
    } else {
        QApplication::setStyle(QStyleFactory::create(appStyle));
        QApplication::setPalette(appPalette);
    }
    for (int i = 0; list && i < list->Count(); ++i) {
        vde::TdmDiagActions* m = list->Objects(i);
        vde::TDiagContainer* dc = m ? m->DiagContr.get() : nullptr;
        QWidget* panel = dc ? dc->GetParent() : nullptr;
        if (!panel)
            continue;
        if (!panelPalettes.contains(panel))
            panelPalettes.insert(panel, panel->palette());
        panel->setPalette(On ? vde::DarkFusionPalette() : panelPalettes.value(panel));
        dc->SetFollowPalette(On);
    }
}

} // namespace

void AddAppearanceOptions(QCommandLineParser& Options) {
    Options.addOption(kLanguage);
    Options.addOption(kDark);
}

void AddAppearanceMenu(QMainWindow* Window, const QCommandLineParser& Options) {
    QMenu* m = Window->menuBar()->addMenu(QStringLiteral("&Language"));
    auto* group = new QActionGroup(m);
    const QString start = Options.value(kLanguage);
    const struct {
        QString Code;
        QString Caption;
    } languages[] = {{QString(), QStringLiteral("&Original texts")},
                     {QStringLiteral("en"), QStringLiteral("&English")},
                     {QStringLiteral("ru"), QStringLiteral("&Русский")}};
    for (const auto& l : languages) {
        QAction* a = m->addAction(l.Caption);
        a->setCheckable(true);
        a->setChecked(l.Code == start);
        group->addAction(a);
        QObject::connect(a, &QAction::triggered, Window, [code = l.Code] { UseLanguage(code); });
    }
    UseLanguage(start);

    // The window's own View menu, when it has one, takes the palette too: one View menu.
    QMenu* view = nullptr;
    for (QAction* a : Window->menuBar()->actions())
        if (a->menu() && a->text() == QLatin1String("&View"))
            view = a->menu();
    if (view)
        view->addSeparator();
    else
        view = Window->menuBar()->addMenu(QStringLiteral("&View"));
    QAction* dark = view->addAction(QStringLiteral("&Dark palette"));
    dark->setCheckable(true);
    QObject::connect(dark, &QAction::toggled, Window, [](bool on) { UseDark(on); });
    dark->setChecked(Options.isSet(kDark));
}
