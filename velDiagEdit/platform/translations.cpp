#include "velDiagEdit/platform/translations.h"

#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QHash>
#include <QPointer>
#include <QTranslator>
#include <memory>

namespace vde {

namespace {

// The library's .qm files are built into it under this resource folder.
const QString kQmFolder = QStringLiteral(":/velDiagEdit/translations");
const QString kQmPrefix = QStringLiteral("veldiagedit_");

std::unique_ptr<QTranslator>& Installed() {
    static std::unique_ptr<QTranslator> t;
    return t;
}

// Hears the application's LanguageChange (sent to the application object itself whenever a
// translator is installed or removed) and calls what was registered for it.
class TLanguageWatcher : public QObject {
public:
    static TLanguageWatcher& Instance() {
        static TLanguageWatcher* w = new TLanguageWatcher;
        return *w;
    }

    void Set(QObject* Receiver, std::function<void()> Fn) {
        Hook();
        if (!FCalls.contains(Receiver))
            connect(Receiver, &QObject::destroyed, this,
                    [this](QObject* gone) { FCalls.remove(gone); });
        FCalls.insert(Receiver, std::move(Fn));
    }

    bool eventFilter(QObject* Watched, QEvent* Event) override {
        if (Event->type() == QEvent::LanguageChange && Watched == QCoreApplication::instance()) {
            // A call may register or drop others; it works on a copy.
            const auto calls = FCalls;
            for (auto it = calls.cbegin(); it != calls.cend(); ++it)
                if (FCalls.contains(it.key()) && it.value())
                    it.value()();
        }
        return false;
    }

private:
    void Hook() {
        QCoreApplication* app = QCoreApplication::instance();
        if (app == FHookedOn || !app)
            return;
        app->installEventFilter(this);
        FHookedOn = app;
    }
    QHash<QObject*, std::function<void()>> FCalls;
    QPointer<QCoreApplication> FHookedOn;
};

} // namespace

QStringList TranslationLanguages() {
    QStringList result;
    const QStringList files =
        QDir(kQmFolder).entryList({kQmPrefix + QStringLiteral("*.qm")}, QDir::Files, QDir::Name);
    for (const QString& f : files)
        result << f.mid(kQmPrefix.size(), f.size() - kQmPrefix.size() - 3);
    return result;
}

bool InstallTranslations(const QLocale& Locale) {
    RemoveTranslations();
    auto t = std::make_unique<QTranslator>();
    // Only the language counts ("en_GB" and "en_US" both read veldiagedit_en.qm): the
    // translation holds no regional variants.
    const QString language = QLocale::languageToCode(Locale.language());
    if (language.isEmpty() || !TranslationLanguages().contains(language))
        return false;
    if (!t->load(kQmPrefix + language, kQmFolder))
        return false;
    if (!QCoreApplication::installTranslator(t.get()))
        return false;
    Installed() = std::move(t);
    return true;
}

void RemoveTranslations() {
    std::unique_ptr<QTranslator>& t = Installed();
    if (!t)
        return;
    QCoreApplication::removeTranslator(t.get());
    t.reset();
}

void OnLanguageChange(QObject* Receiver, std::function<void()> Fn) {
    if (Receiver)
        TLanguageWatcher::Instance().Set(Receiver, std::move(Fn));
}

QString TTrText::Translated() const {
    return QCoreApplication::translate(Context.constData(), Source.constData());
}

} // namespace vde
