#pragma once
// Translations of the texts the library shows: menu captions, prompts, messages, dialog captions
// and buttons, the names of the block kinds in menus. Every such text goes through Qt's
// translation system with the library's own text as the source text, so that with no translator
// installed each text is exactly what it always was.
//
// The library carries translations into English (readable captions: "Cancel" for "Отмена",
// "AND gate" for "AndLogic", "Delete segment" for "Del. Segment") and Russian, built into the
// library and also installed as veldiagedit_<language>.qm under share/velDiagEdit/translations
// for hosts that load them with a QTranslator of their own.
//
// What is on screen follows a change of language: menu items made by the library take their
// caption again when the application's translators change (QEvent::LanguageChange). Texts of a
// dialog or message take the language in force when it is shown. Error messages of the typed
// errors a host catches are not translated: they are for logs and reports.

#include "velDiagEdit/velDiagEdit_export.h"

#include <QByteArray>
#include <QLocale>
#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>

namespace vde {

// Installs the library's translation for the locale's language in the application, in place of
// one this function installed before. True when there was one for that language (see
// TranslationLanguages); otherwise the one installed before is taken out and false is returned,
// and the library's texts are the original ones. Needs a QCoreApplication.
VELDIAGEDIT_EXPORT bool InstallTranslations(const QLocale& Locale);
// Takes out the translation InstallTranslations installed, if any.
VELDIAGEDIT_EXPORT void RemoveTranslations();
// The languages the library has a translation for, as QLocale names them ("en", "ru").
VELDIAGEDIT_EXPORT QStringList TranslationLanguages();

// Calls Fn each time the application's translators change (a translator installed or removed),
// for as long as Receiver lives. A second call for the same Receiver replaces its function.
VELDIAGEDIT_EXPORT void OnLanguageChange(QObject* Receiver, std::function<void()> Fn);

// The text of a caption that can be translated: the context and the source text as the
// translation files name them, and the source text itself when there is no translation.
struct VELDIAGEDIT_EXPORT TTrText {
    QByteArray Context;
    QByteArray Source;
    bool IsEmpty() const { return Source.isEmpty(); }
    QString Translated() const;
};

} // namespace vde
