// The translation files list every text the library shows: lupdate, run over the library's
// sources now, finds no text they lack and none they keep in vain, and every text in them has a
// finished translation.

#include <QDir>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

namespace {

struct Message {
    QString Translation;
    QString Type; // "unfinished", "vanished", "obsolete" or empty
};

// (context, source) -> the translation, as the file holds it.
QHash<QString, Message> ReadTs(const QString& File) {
    QHash<QString, Message> out;
    QFile f(File);
    if (!f.open(QIODevice::ReadOnly))
        return out;
    QXmlStreamReader xml(&f);
    QString context, source;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QLatin1String("name")) {
            context = xml.readElementText();
        } else if (xml.name() == QLatin1String("source")) {
            source = xml.readElementText();
        } else if (xml.name() == QLatin1String("translation")) {
            Message m;
            m.Type = xml.attributes().value(QLatin1String("type")).toString();
            m.Translation = xml.readElementText();
            out.insert(context + QStringLiteral(" | ") + source, m);
        }
    }
    EXPECT_FALSE(xml.hasError()) << File.toStdString() << ": " << xml.errorString().toStdString();
    return out;
}

class TranslationFiles : public ::testing::TestWithParam<const char*> {};

} // namespace

TEST_P(TranslationFiles, ListEveryShownTextOnceWithAFinishedTranslation) {
    const QString source = QStringLiteral(VDE_SOURCE_ROOT);
    const QString name = QStringLiteral("veldiagedit_%1.ts").arg(QLatin1String(GetParam()));
    const QString committed = source + QStringLiteral("/velDiagEdit/translations/") + name;
    ASSERT_TRUE(QFile::exists(committed)) << committed.toStdString();
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString fresh = dir.filePath(name);
    ASSERT_TRUE(QFile::copy(committed, fresh));

    // The options of the build's own update_translations target.
    QProcess lupdate;
    lupdate.setProcessChannelMode(QProcess::MergedChannels);
    lupdate.start(QStringLiteral(VDE_LUPDATE),
                  {QStringLiteral("-locations"), QStringLiteral("none"),
                   QStringLiteral("-no-obsolete"), QStringLiteral("-I"), source,
                   source + QStringLiteral("/velDiagEdit"), QStringLiteral("-ts"), fresh});
    ASSERT_TRUE(lupdate.waitForFinished(120000));
    const QString log = QString::fromLocal8Bit(lupdate.readAll());
    ASSERT_EQ(lupdate.exitCode(), 0) << log.toStdString();

    const QHash<QString, Message> now = ReadTs(fresh);
    const QHash<QString, Message> kept = ReadTs(committed);
    ASSERT_GT(now.size(), 100) << log.toStdString();
    QStringList missing, stale, unfinished;
    for (auto it = now.cbegin(); it != now.cend(); ++it)
        if (!kept.contains(it.key()))
            missing << it.key();
    for (auto it = kept.cbegin(); it != kept.cend(); ++it) {
        if (!now.contains(it.key()))
            stale << it.key();
        else if (!it->Type.isEmpty() || it->Translation.isEmpty())
            unfinished << it.key();
    }
    missing.sort();
    stale.sort();
    unfinished.sort();
    EXPECT_TRUE(missing.isEmpty()) << "shown but not in " << name.toStdString() << ":\n"
                                   << missing.join(QLatin1Char('\n')).toStdString();
    EXPECT_TRUE(stale.isEmpty()) << "in " << name.toStdString() << " but shown nowhere:\n"
                                 << stale.join(QLatin1Char('\n')).toStdString();
    EXPECT_TRUE(unfinished.isEmpty())
        << "without a finished translation in " << name.toStdString() << ":\n"
        << unfinished.join(QLatin1Char('\n')).toStdString();
}

INSTANTIATE_TEST_SUITE_P(Languages, TranslationFiles, ::testing::Values("en", "ru"));
