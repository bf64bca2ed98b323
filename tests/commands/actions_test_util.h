#pragma once
// A command module on a shown host panel, with the host program placed in a scratch folder,
// scripted input and dialogs and a recording popup service.

#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/commands/diag_actions.h"
#include "velDiagEdit/platform/dialog_service.h"
#include "velDiagEdit/platform/host_program.h"
#include "velDiagEdit/platform/input_state.h"
#include "velDiagEdit/platform/menus.h"
#include "velDiagEdit/platform/streams.h"

#include <QFile>
#include <QPalette>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace vde::test {

// A white panel of 400 x 300 shown on screen with a canvas over it.
struct HostPanel {
    QWidget panel;
    TCanvas canvas;

    HostPanel() {
        panel.resize(400, 300);
        QPalette pal = panel.palette();
        pal.setColor(QPalette::Window, Qt::white);
        panel.setPalette(pal);
        panel.setAutoFillBackground(true);
        canvas.SetHandle(&panel);
    }
    void Show() {
        panel.show();
        (void)QTest::qWaitForWindowExposed(&panel);
    }
};

// The whole diagram of a container as its stream writes it.
inline std::vector<uint8_t> DiagramBytes(TDiagContainer& dc) {
    TMemoryStream s;
    dc.SaveToStream(s);
    return s.Bytes();
}

inline std::vector<uint8_t> FileBytes(const QString& name) {
    QFile f(name);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    const QByteArray b = f.readAll();
    return std::vector<uint8_t>(b.begin(), b.end());
}

inline void WriteFile(const QString& name, const std::vector<uint8_t>& bytes) {
    QFile f(name);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(reinterpret_cast<const char*>(bytes.data()), qint64(bytes.size()));
}

class ActionsFixture : public ::testing::Test {
protected:
    QTemporaryDir dir;
    // The host program lives in the scratch folder: files by name go there, never beside the
    // test program.
    TScopedHostProgramPath hostPath{dir.filePath(QStringLiteral("host.exe"))};
    HostPanel host;
    TScriptedInputState input;
    TScopedInputState inputGuard{&input};
    TScriptedDialogService dialogs;
    TScopedDialogService dialogGuard{&dialogs};
    TRecordingPopupService popups;
    TScopedPopupService popupGuard{&popups};
    QObject owner;
    QPointer<TdmDiagActions> dm;

    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        dm = new TdmDiagActions(&owner);
        dm->SetName(QStringLiteral("Main"));
    }

    void TearDown() override {
        delete dm.data();
        EXPECT_TRUE(dialogs.Failures().isEmpty())
            << dialogs.Failures().join(QLatin1Char('\n')).toStdString();
        EXPECT_EQ(dialogs.Pending(), 0u);
    }

    QString Dir() const { return dir.path() + QLatin1Char('/'); }
    TDiagContainer& dc() { return *dm->DiagContr; }

    void Surface() {
        dm->CreateContainer(&host.panel, &host.canvas);
        host.Show();
    }

    // A text block at (x, y) with the container's handlers bound, as the objects menu makes it.
    TDiagText* Text(int x, int y, int inputs = 2, int outputs = 2) {
        dc().FClickPoint = {x, y};
        auto* b = dynamic_cast<TDiagText*>(dc().CreateObjectAtMousePos(doText));
        dc().AssignObjEvents(b);
        b->SetInCount(inputs);
        b->SetOutCount(outputs);
        return b;
    }

    void Select(TDiagObject* b, int marker) {
        dc().SelObj = b;
        b->SetSelected(true);
        dc().ObjList->DeselectAll(b);
        b->SetSelMarkerIndex(marker);
    }

    // Kinds and captions of the prompts asked so far.
    QStringList Asked() const {
        QStringList out;
        for (const TDialogRequest& r : dialogs.Asked())
            out << DialogKindName(r.Kind) + QLatin1Char(' ') + r.Caption;
        return out;
    }
};

} // namespace vde::test
