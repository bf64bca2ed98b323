// The INI reader and writer: file order, repeated sections kept apart, case-insensitive keys,
// UTF-8 with "\n" written and "\r\n" accepted.
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/ini_file.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace vde {
namespace {

TEST(IniFile, SectionsComeInFileOrderNotSorted) {
    const TIniFile ini = TIniFile::FromUtf8("[zeta]\na=1\n[alpha]\nb=2\n[Mid]\n");
    EXPECT_EQ(ini.ReadSections(), (QStringList{"zeta", "alpha", "Mid"}));
}

TEST(IniFile, RepeatedSectionNamesStaySeparateSections) {
    const TIniFile ini = TIniFile::FromUtf8("[]\nType=a\n[]\nType=b\n[x]\n[x]\nType=c\n");
    ASSERT_EQ(ini.SectionCount(), 4);
    EXPECT_EQ(ini.ReadString(0, "Type"), "a");
    EXPECT_EQ(ini.ReadString(1, "Type"), "b");
    EXPECT_EQ(ini.ReadString(2, "Type"), "");
    EXPECT_EQ(ini.ReadString(3, "Type"), "c");
    EXPECT_EQ(ini.Section(0).Name, "");
}

TEST(IniFile, KeysMatchIgnoringCaseAndTheFirstEntryWins) {
    const TIniFile ini = TIniFile::FromUtf8("[s]\nBOUNDS=1,2\nbounds=3,4\n");
    EXPECT_EQ(ini.ReadString(0, "Bounds"), "1,2");
    EXPECT_EQ(ini.ReadString(0, "Type", "none"), "none");
    EXPECT_EQ(ini.ReadSectionValues(0), (QStringList{"BOUNDS=1,2", "bounds=3,4"}));
}

TEST(IniFile, WindowsLineEndsBlanksCommentsAndStrayLinesAreHandled) {
    const TIniFile ini = TIniFile::FromUtf8("before=1\r\n; comment\r\n  [ Gate 1 ] trailing\r\n"
                                            "\tType = doText \r\n# note\r\nno equals sign\r\n"
                                            "\r\nBounds=1,2,3,4");
    ASSERT_EQ(ini.SectionCount(), 1);
    EXPECT_EQ(ini.Section(0).Name, "Gate 1");
    EXPECT_EQ(ini.Section(0).Line, 3);
    EXPECT_EQ(ini.ReadString(0, "type"), "doText");
    EXPECT_EQ(ini.ReadString(0, "Bounds"), "1,2,3,4");
    EXPECT_EQ(ini.Section(0).Entries.size(), 2u);
}

TEST(IniFile, ByteOrderMarkIsSkippedAndTextIsUtf8) {
    const TIniFile ini = TIniFile::FromUtf8("\xEF\xBB\xBF[\xC3\x84rger]\nk=\xE2\x82\xAC\n");
    ASSERT_EQ(ini.SectionCount(), 1);
    EXPECT_EQ(ini.Section(0).Name, QString::fromUtf8("\xC3\x84rger"));
    EXPECT_EQ(ini.ReadString(0, "K"), QString(QChar(0x20AC)));
}

TEST(IniFile, SectionHeaderWithoutClosingBracketTakesTheRestOfTheLine) {
    const TIniFile ini = TIniFile::FromUtf8("[open\nk=v\n");
    ASSERT_EQ(ini.SectionCount(), 1);
    EXPECT_EQ(ini.Section(0).Name, "open");
}

TEST(IniFile, WriterUsesUtf8AndNewlinesOnlyAndReadsBackTheSame) {
    TIniFile ini;
    const int a = ini.AddSection(QString::fromUtf8("G\xC3\xBC"));
    ini.AddValue(a, "Type", "doText");
    const int b = ini.AddSection("G\xC3\xBC");
    ini.AddValue(b, "Bounds", "1,2,3,4");
    const QByteArray text = ini.ToUtf8();
    EXPECT_EQ(text, QByteArray("[G\xC3\xBC]\nType=doText\n[G\xC3\xBC]\nBounds=1,2,3,4\n"));
    EXPECT_EQ(TIniFile::FromUtf8(text).ToUtf8(), text);
}

TEST(IniFile, MissingFileReadsAsEmptyAndSavedFileReadsBack) {
    QTemporaryDir tmp;
    EXPECT_EQ(TIniFile::LoadFromFile(tmp.filePath("none.ini")).SectionCount(), 0);
    TIniFile ini;
    ini.AddValue(ini.AddSection("s"), "k", "v");
    ini.SaveToFile(tmp.filePath("a.ini"));
    const TIniFile back = TIniFile::LoadFromFile(tmp.filePath("a.ini"));
    EXPECT_EQ(back.ToUtf8(), ini.ToUtf8());
}

TEST(IniFile, SavingWhereNoFileCanBeMadeRaisesATypedErrorNamingThePath) {
    TIniFile ini;
    try {
        ini.SaveToFile("/proc/no-such-folder/a.ini");
        FAIL() << "no error";
    } catch (const EFCreateError& e) {
        EXPECT_TRUE(e.Message().contains("/proc/no-such-folder/a.ini")) << e.what();
    }
}

} // namespace
} // namespace vde
