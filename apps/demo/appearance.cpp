#include "appearance.h"

#include <velDiagEdit/velDiagEdit.h>

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>

namespace {

const QCommandLineOption kLanguage(QStringLiteral("language"),
                                   QStringLiteral("The library's texts in a language: en or ru."),
                                   QStringLiteral("code"));

// Installs the library's translation for a language code; an empty code takes it out.
void UseLanguage(const QString& Code) {
    if (Code.isEmpty())
        vde::RemoveTranslations();
    else
        vde::InstallTranslations(QLocale(Code));
}

} // namespace

void AddAppearanceOptions(QCommandLineParser& Options) {
    Options.addOption(kLanguage);
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
}
