#pragma once
// Helpers of the persistence tests: the sample diagrams, a dialog service that counts error
// messages, byte comparisons and a small diagram to stand in as "the open diagram".

#include "editor/editor_test_util.h"

#include "velDiagEdit/platform/errors.h"

#include <QDir>
#include <QFile>
#include <QStringList>
#include <vector>

namespace vde::test {

// The source tree's examples/ (VDE_EXAMPLES_DIR in the environment overrides it).
inline QString ExamplesDir() {
    const QString env = qEnvironmentVariable("VDE_EXAMPLES_DIR");
    return env.isEmpty() ? QStringLiteral(VDE_EXAMPLES_DIR) : env;
}

inline QStringList ExampleFiles(const QString& suffix) {
    QStringList files;
    for (const QFileInfo& f :
         QDir(ExamplesDir())
             .entryInfoList({QStringLiteral("*.") + suffix}, QDir::Files, QDir::Name))
        files << f.filePath();
    return files;
}

inline std::vector<uint8_t> ReadBytes(const QString& name) {
    QFile f(name);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    const QByteArray b = f.readAll();
    return {b.begin(), b.end()};
}

inline std::vector<uint8_t> Saved(TDiagContainer& dc) {
    TMemoryStream s;
    dc.SaveToStream(s);
    return s.Bytes();
}

// Answers every error message with OK and counts them; anything else is unexpected.
class TErrorCounter : public TScriptedDialogService {
public:
    TModalResult ErrorMessageDlg(const QString& Msg) override {
        Messages << Msg;
        return mrOk;
    }
    QStringList Messages;
};

// Two gates joined by one wire, the second gate selected and the wire's first segment
// selected: the "open diagram" that a failed load must leave alone.
inline void BuildSmallDiagram(TDiagContainer& dc) {
    TDiagObject* a = dc.CreateObjByDiagType(doAndLogic, {10, 20, 70, 90});
    TDiagObject* b = dc.CreateObjByDiagType(doOrLogic, {150, 20, 210, 90});
    a->SetObjKey(101);
    b->SetObjKey(102);
    auto* w = new TDiagObjConnection(dc.ConList.get(), a, 1, b, -1, {15, 12}, 0, 0, 0);
    w->FSrcKey = 101;
    w->FDstKey = 102;
    dc.SelObj = b;
    b->SetSelected(true);
    dc.SelInfo = LongRec{1, 1};
    dc.ConList->SelectSegmentByLongRec(dc.SelInfo);
}

} // namespace vde::test
