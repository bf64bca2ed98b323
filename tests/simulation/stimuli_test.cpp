// Waveforms in their three text forms and stimuli files, with the place of every error.

#include "velDiagEdit/simulation/stimuli.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace vde;

namespace {

std::string Values(const TSimWaveform& w, int n) {
    std::string s;
    for (int i = 0; i < n; ++i)
        s += w.ValueAt(i) ? '1' : '0';
    return s;
}

// The line and column of the error the text raises.
std::pair<int, int> ErrorAt(const QByteArray& json) {
    try {
        TSimStimuli::ParseJson(json);
    } catch (const EStimulusError& e) {
        return {e.Line(), e.Column()};
    }
    ADD_FAILURE() << "no error for " << json.toStdString();
    return {0, 0};
}

std::pair<int, int> WaveErrorAt(const QString& text) {
    try {
        TSimWaveform::Parse(text);
    } catch (const EStimulusError& e) {
        return {e.Line(), e.Column()};
    }
    ADD_FAILURE() << "no error for " << text.toStdString();
    return {0, 0};
}

} // namespace

TEST(SimWaveform, BitsGiveOneValuePerStepAndHoldTheLast) {
    const TSimWaveform w = TSimWaveform::Parse("0011 0101");
    EXPECT_EQ(w.Kind(), TSimWaveform::wkBits);
    EXPECT_EQ(Values(w, 11), "00110101111");
    EXPECT_EQ(Values(TSimWaveform::Parse(" 1_0 "), 4), "1000");
    EXPECT_FALSE(w.ValueAt(-1));
}

TEST(SimWaveform, AClockIsLowForItsFirstHalfPeriod) {
    EXPECT_EQ(Values(TSimWaveform::Parse("clock 4"), 10), "0011001100");
    EXPECT_EQ(Values(TSimWaveform::Parse("  Clock   2 "), 6), "010101");
    // Odd periods: low for the longer part.
    EXPECT_EQ(Values(TSimWaveform::Parse("clock 5"), 10), "0001100011");
    EXPECT_EQ(TSimWaveform::Parse("clock 5").Text(), "clock 5");
}

TEST(SimWaveform, ChangesAtSteps) {
    const TSimWaveform w = TSimWaveform::Parse("0, 1@8, 0@20");
    EXPECT_EQ(w.Kind(), TSimWaveform::wkChanges);
    EXPECT_FALSE(w.ValueAt(7));
    EXPECT_TRUE(w.ValueAt(8));
    EXPECT_TRUE(w.ValueAt(19));
    EXPECT_FALSE(w.ValueAt(20));
    EXPECT_EQ(Values(TSimWaveform::Parse("1@2"), 4), "0011");
    EXPECT_EQ(Values(TSimWaveform::Parse("1, 0 @ 1"), 3), "100");
    EXPECT_EQ(w.Text(), "0@0, 1@8, 0@20");
}

TEST(SimWaveform, MalformedTextIsAnErrorAtItsColumn) {
    EXPECT_EQ(WaveErrorAt("0012"), std::make_pair(1, 4));
    EXPECT_EQ(WaveErrorAt("   "), std::make_pair(1, 4));
    EXPECT_EQ(WaveErrorAt("clock"), std::make_pair(1, 6));
    EXPECT_EQ(WaveErrorAt("clock 1"), std::make_pair(1, 7));
    EXPECT_EQ(WaveErrorAt("clock x"), std::make_pair(1, 7));
    EXPECT_EQ(WaveErrorAt("0, 1@8, 0@5"), std::make_pair(1, 11));
    EXPECT_EQ(WaveErrorAt("0, 1"), std::make_pair(1, 4));
    EXPECT_EQ(WaveErrorAt("0, 2@3"), std::make_pair(1, 4));
    EXPECT_EQ(WaveErrorAt("0,,1@2"), std::make_pair(1, 3));
    EXPECT_EQ(WaveErrorAt("0, 1#3"), std::make_pair(1, 5));
    EXPECT_EQ(WaveErrorAt("1@99999999999"), std::make_pair(1, 3));
    EXPECT_THROW(TSimWaveform::Clock(1), EConvertError);
    EXPECT_THROW(TSimWaveform::Changes({{3, true}, {3, false}}), EConvertError);
    try {
        TSimWaveform::Parse("01x", 3, 10);
        ADD_FAILURE();
    } catch (const EStimulusError& e) {
        EXPECT_EQ(e.Line(), 3);
        EXPECT_EQ(e.Column(), 12);
        EXPECT_EQ(e.Message().toStdString(),
                  "Unexpected \"x\": a bit string has only 0, 1 and spaces (line 3, column 12)");
    }
}

TEST(SimStimuliFile, StepsAndSignals) {
    const TSimStimuli s =
        TSimStimuli::ParseJson(R"({"steps": 64, "signals": {"CLK": "clock 4", "EN": "0, 1@8"}})");
    EXPECT_EQ(s.Steps, 64);
    ASSERT_EQ(s.Signals.size(), 2u);
    EXPECT_EQ(s.Signals.at("CLK").Text(), "clock 4");
    EXPECT_TRUE(s.Signals.at("EN").ValueAt(8));
    EXPECT_EQ(TSimStimuli::ParseJson("{}").Steps, -1);
}

TEST(SimStimuliFile, MalformedFilesNameLineAndColumn) {
    // Broken JSON: where Qt's parser stopped, just past the brace at column 24.
    EXPECT_EQ(ErrorAt("{\n  \"steps\": 64,\n  \"signals\": {\"A\": \"1\",}\n}"),
              std::make_pair(3, 25));
    // Not an object.
    EXPECT_EQ(ErrorAt("\n  [1, 2]"), std::make_pair(2, 3));
    // Steps not a whole number.
    EXPECT_EQ(ErrorAt("{\"steps\": 6.5}"), std::make_pair(1, 11));
    EXPECT_EQ(ErrorAt("{\"steps\": -1}"), std::make_pair(1, 11));
    EXPECT_EQ(ErrorAt("{\"steps\": \"64\"}"), std::make_pair(1, 11));
    // Unknown key, at the key.
    EXPECT_EQ(ErrorAt("{\"steps\": 4,\n \"signal\": {}}"), std::make_pair(2, 2));
    // Signals not an object; a waveform not a string.
    EXPECT_EQ(ErrorAt("{\"signals\": [1]}"), std::make_pair(1, 13));
    EXPECT_EQ(ErrorAt("{\"signals\": {\"A\": 1}}"), std::make_pair(1, 19));
    // A waveform that cannot be read: the column of its own bad character, one past the
    // quote; the characters before it count as one column each (é too).
    EXPECT_EQ(ErrorAt("{\"signals\": {\n\t\"é\": \"0, 1@8\",\n  \"B\": \"01x1\"}}"),
              std::make_pair(3, 11));
    // The same key twice, at the top or among the signals.
    EXPECT_EQ(ErrorAt("{\"steps\": 1, \"steps\": 2}"), std::make_pair(1, 14));
    EXPECT_EQ(ErrorAt("{\"signals\": {\"A\": \"1\", \"A\": \"0\"}}"), std::make_pair(1, 24));
}

TEST(SimStimuliFile, LoadFromFileNamesTheFile) {
    QTemporaryDir dir;
    const QString path = dir.filePath("s.json");
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("{\"steps\": 3,\n \"signals\": {\"A\": \"clock 1\"}}");
    f.close();
    try {
        TSimStimuli::LoadFromFile(path);
        ADD_FAILURE();
    } catch (const EStimulusError& e) {
        EXPECT_EQ(e.Line(), 2);
        EXPECT_EQ(e.Column(), 26); // the period's "1"
        EXPECT_TRUE(e.Message().startsWith(path)) << e.Message().toStdString();
    }
    EXPECT_THROW(TSimStimuli::LoadFromFile(dir.filePath("none.json")), EFOpenError);
}
