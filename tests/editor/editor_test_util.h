#pragma once
// A host panel turned into a diagram surface, with scripted input and dialogs and a recording
// popup service, for the editor's tests.

#include "connections/connection_test_util.h"
#include "velDiagEdit/dialogs/scripted_dialog_service.h"
#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/platform/dialog_service.h"
#include "velDiagEdit/platform/input_state.h"
#include "velDiagEdit/platform/menus.h"

#include <QImage>
#include <QPalette>
#include <QWidget>
#include <gtest/gtest.h>
#include <memory>

namespace vde::test {

// A white 400 x 300 panel shown on screen (offscreen platform) with a canvas on it, the
// container built over them, and the two menus named "pmConnections" and "pmObjects".
class EditorFixture : public ::testing::Test {
protected:
    QWidget panel;
    TCanvas canvas;
    TScriptedInputState input;
    TScopedInputState inputGuard{&input};
    TScriptedDialogService dialogs;
    TScopedDialogService dialogGuard{&dialogs};
    TRecordingPopupService popups;
    TScopedPopupService popupGuard{&popups};
    TPopupMenu menuConnections{nullptr};
    TPopupMenu menuObjects{nullptr};
    std::unique_ptr<TDiagContainer> dc;

    void SetUp() override {
        panel.resize(400, 300);
        panel.move(0, 0);
        QPalette pal = panel.palette();
        pal.setColor(QPalette::Window, Qt::white);
        panel.setPalette(pal);
        panel.setAutoFillBackground(true);
        canvas.SetHandle(&panel);
        menuConnections.SetName(QStringLiteral("pmConnections"));
        menuObjects.SetName(QStringLiteral("pmObjects"));
        dc = std::make_unique<TDiagContainer>(&panel, &canvas, nullptr);
    }

    void TearDown() override {
        dc.reset();
        EXPECT_TRUE(dialogs.Failures().isEmpty())
            << dialogs.Failures().join(QLatin1Char('\n')).toStdString();
        EXPECT_EQ(dialogs.Pending(), 0u);
    }

    // Shows the panel so that it has a screen position and receives real mouse events.
    void Show() {
        panel.show();
        panel.activateWindow();
    }

    QImage Render() {
        QImage img(panel.size(), QImage::Format_ARGB32);
        img.fill(Qt::red);
        panel.render(&img);
        return img;
    }

    // The screen point of a point in the panel's client coordinates.
    TPoint Screen(TPoint p) const { return ClientToScreen(&panel, p); }
};

} // namespace vde::test
