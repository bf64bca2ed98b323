// The library's texts through Qt's translation system: with no translator they are the original
// texts; the English and Russian translations built into the library replace them, also in menus
// made before the language changed; a translator that marks every text it is asked for shows
// that every menu caption and dialog text goes through it.

#include "commands/actions_test_util.h"
#include "velDiagEdit/dialogs/edit_segment_params.h"
#include "velDiagEdit/dialogs/edit_size_value.h"
#include "velDiagEdit/dialogs/select_item_dlg.h"
#include "velDiagEdit/platform/translations.h"

#include <QAbstractButton>
#include <QLabel>
#include <QMenu>
#include <QTranslator>

using namespace vde;
using namespace vde::test;

namespace {

// Every text it is asked for comes back between guillemets, so a text that went through the
// translation system can be told from one that did not.
class MarkingTranslator : public QTranslator {
public:
    QString translate(const char* context, const char* sourceText, const char* disambiguation,
                      int n) const override {
        (void)context;
        (void)disambiguation;
        (void)n;
        return QStringLiteral("«%1»").arg(QString::fromUtf8(sourceText));
    }
    bool isEmpty() const override { return false; }
};

struct TranslationsTest : ActionsFixture {
    void TearDown() override {
        RemoveTranslations();
        ActionsFixture::TearDown();
    }

    // Each item of the menu tree as "name=caption", depth first.
    static QStringList Captions(TMenuItem* root) {
        QStringList out;
        for (int i = 0; i < root->Count(); ++i) {
            TMenuItem* item = root->Items(i);
            out << item->GetName() + QLatin1Char('=') + item->GetCaption();
            out << Captions(item);
        }
        return out;
    }

    QStringList AllCaptions() {
        return Captions(dm->pmConnections->Items()) + Captions(dm->pmObjects->Items());
    }

    QString Caption(const char* name) {
        for (TPopupMenu* pm : {dm->pmConnections, dm->pmObjects})
            if (TMenuItem* item = pm->Find(QString::fromLatin1(name)))
                return item->GetCaption();
        return QStringLiteral("<no item %1>").arg(QLatin1String(name));
    }
};

} // namespace

TEST_F(TranslationsTest, WithoutATranslatorTheMenusShowTheOriginalTexts) {
    Surface();
    EXPECT_EQ(Caption("mnuDelSegment"), QStringLiteral("Del. Segment"));
    EXPECT_EQ(Caption("mnuAndLogic"), QStringLiteral("AndLogic"));
    EXPECT_EQ(Caption("mnuRSTrigger"), QStringLiteral("RSTrigger"));
    EXPECT_EQ(Caption("mnuInversion"), QStringLiteral("Inversion"));
    EXPECT_EQ(Caption("mnuSaveToFile"), QStringLiteral("Save To ..."));
    TfmSelectItem form(nullptr);
    EXPECT_EQ(form.bbCancel->text(), QStringLiteral("Отмена"));
    EXPECT_EQ(form.bbOk->text(), QStringLiteral("OK"));
}

TEST_F(TranslationsTest, TheLibraryHasEnglishAndRussian) {
    EXPECT_EQ(TranslationLanguages(), (QStringList{QStringLiteral("en"), QStringLiteral("ru")}));
}

TEST_F(TranslationsTest, TheEnglishTranslationShowsReadableCaptions) {
    ASSERT_TRUE(InstallTranslations(QLocale(QLocale::English, QLocale::UnitedKingdom)));
    Surface();
    EXPECT_EQ(Caption("mnuDelSegment"), QStringLiteral("Delete segment"));
    EXPECT_EQ(Caption("mnuAndLogic"), QStringLiteral("AND gate"));
    EXPECT_EQ(Caption("mnuOrLogic"), QStringLiteral("OR gate"));
    EXPECT_EQ(Caption("mnuRSTrigger"), QStringLiteral("RS flip-flop"));
    // The item names stay what hosts and tests find the items by.
    EXPECT_NE(dm->pmObjects->Find(QStringLiteral("mnuAndLogic")), nullptr);
    TfmSelectItem form(nullptr);
    EXPECT_EQ(form.bbCancel->text(), QStringLiteral("Cancel"));
    TfmEditSizeValue size(nullptr);
    EXPECT_EQ(size.btnOk->text(), QStringLiteral("OK"));
}

TEST_F(TranslationsTest, TheRussianTranslationShowsRussianCaptions) {
    ASSERT_TRUE(InstallTranslations(QLocale(QLocale::Russian, QLocale::Russia)));
    Surface();
    EXPECT_EQ(Caption("mnuDelSegment"), QStringLiteral("Удалить отрезок"));
    EXPECT_EQ(Caption("mnuAndLogic"), QStringLiteral("Элемент И"));
    TfmEditSizeValue size(nullptr);
    EXPECT_EQ(size.btnCancel->text(), QStringLiteral("Отмена"));
    EXPECT_EQ(size.windowTitle(), QStringLiteral("Размер"));
}

TEST_F(TranslationsTest, MenusMadeBeforeTheLanguageChangedFollowItAndComeBackByteForByte) {
    Surface();
    const QStringList original = AllCaptions();
    ASSERT_TRUE(InstallTranslations(QLocale(QLocale::English)));
    EXPECT_EQ(Caption("mnuDelSegment"), QStringLiteral("Delete segment"));
    EXPECT_EQ(Caption("mnuAndLogic"), QStringLiteral("AND gate"));
    // The submenu's title on screen follows its item.
    EXPECT_EQ(dm->mnuCreate->SubMenu()->title(), QStringLiteral("Create"));
    EXPECT_EQ(dm->mnuTextParams->SubMenu()->title(), QStringLiteral("Labels"));
    ASSERT_TRUE(InstallTranslations(QLocale(QLocale::Russian)));
    EXPECT_EQ(Caption("mnuAndLogic"), QStringLiteral("Элемент И"));
    RemoveTranslations();
    EXPECT_EQ(AllCaptions(), original);
    EXPECT_EQ(dm->mnuTextParams->SubMenu()->title(), QStringLiteral("Text Params"));
}

TEST_F(TranslationsTest, ALanguageWithoutTranslationTakesOutTheOneBefore) {
    Surface();
    ASSERT_TRUE(InstallTranslations(QLocale(QLocale::English)));
    EXPECT_FALSE(InstallTranslations(QLocale(QLocale::German)));
    EXPECT_EQ(Caption("mnuAndLogic"), QStringLiteral("AndLogic"));
    EXPECT_FALSE(InstallTranslations(QLocale::c()));
    EXPECT_EQ(Caption("mnuDelSegment"), QStringLiteral("Del. Segment"));
}

TEST_F(TranslationsTest, ACaptionAHostSetsStaysAsGivenWhateverTheLanguage) {
    Surface();
    dm->mnuRefresh->SetCaption(QStringLiteral("Redraw"));
    ASSERT_TRUE(InstallTranslations(QLocale(QLocale::Russian)));
    EXPECT_EQ(Caption("mnuRefresh"), QStringLiteral("Redraw"));
    EXPECT_EQ(Caption("mnuDelete"), QStringLiteral("Удалить"));
}

TEST_F(TranslationsTest, EveryMenuCaptionGoesThroughTheTranslationSystem) {
    Surface();
    const QStringList original = AllCaptions();
    ASSERT_GE(original.size(), 39);
    MarkingTranslator marking;
    ASSERT_TRUE(QCoreApplication::installTranslator(&marking));
    const QStringList marked = AllCaptions();
    QCoreApplication::removeTranslator(&marking);
    ASSERT_EQ(marked.size(), original.size());
    for (qsizetype i = 0; i < original.size(); ++i) {
        const QString name = original[i].section(QLatin1Char('='), 0, 0);
        const QString text = original[i].section(QLatin1Char('='), 1);
        EXPECT_EQ(marked[i], name + QStringLiteral("=«") + text + QStringLiteral("»"));
    }
    EXPECT_EQ(AllCaptions(), original);
}

TEST_F(TranslationsTest, EveryTextOfTheValueDialogsGoesThroughTheTranslationSystem) {
    MarkingTranslator marking;
    ASSERT_TRUE(QCoreApplication::installTranslator(&marking));
    TfmEditSizeValue size(nullptr);
    TfmEditSegmentParams segment(nullptr);
    TfmSelectItem select(nullptr);
    QCoreApplication::removeTranslator(&marking);
    QStringList texts = {size.windowTitle(), segment.windowTitle()};
    for (QWidget* form : {static_cast<QWidget*>(&size), static_cast<QWidget*>(&segment),
                          static_cast<QWidget*>(&select)}) {
        for (auto* b : form->findChildren<QAbstractButton*>())
            if (!b->text().isEmpty())
                texts << b->text();
        for (auto* l : form->findChildren<QLabel*>())
            if (!l->text().isEmpty())
                texts << l->text();
    }
    // Two titles, two buttons and a label of the size form, two buttons and two labels of the
    // segment form, two buttons of the list form.
    EXPECT_EQ(texts.size(), 11) << texts.join(QLatin1Char('|')).toStdString();
    for (const QString& t : texts)
        EXPECT_TRUE(t.startsWith(QStringLiteral("«")) && t.endsWith(QStringLiteral("»")))
            << t.toStdString();
}

TEST_F(TranslationsTest, PromptsAndUndoStepsOfTheCommandsAreTranslated) {
    Surface();
    dm->SetDesignMode(true);
    ASSERT_TRUE(InstallTranslations(QLocale(QLocale::English)));
    // No segment selected: the command says so.
    dialogs.Expect(TDialogAnswer::Message());
    dm->mnuEndWithSegment->trigger();
    ASSERT_FALSE(dialogs.Asked().empty());
    EXPECT_EQ(dialogs.Asked().back().Text, QStringLiteral("No segment is selected."));
    // A block made from the menu is one step named in the language.
    dm->pmObjects->Find(QStringLiteral("mnuAndLogic"))->trigger();
    ASSERT_EQ(dc().UndoStack()->count(), 1);
    EXPECT_EQ(dc().UndoStack()->text(0), QStringLiteral("Create AND gate"));
    RemoveTranslations();
    dm->pmObjects->Find(QStringLiteral("mnuOrLogic"))->trigger();
    ASSERT_EQ(dc().UndoStack()->count(), 2);
    EXPECT_EQ(dc().UndoStack()->text(1), QStringLiteral("Create OrLogic"));
}
