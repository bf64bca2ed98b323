#pragma once
// Shared by the diagram fuzz targets: the application, a surface with a container on it, a
// dialog service that only counts messages, and a hard stop for a broken promise.

#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/platform/dialog_service.h"

#include <QApplication>
#include <QWidget>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace vde::fuzz {

class TCountingDialogService : public TScriptedDialogService {
public:
    TModalResult ErrorMessageDlg(const QString&) override {
        ++Errors;
        return mrOk;
    }
    int Errors = 0;
};

inline void Require(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

// A panel with a canvas, a container over it and one foreign child control, and a small
// diagram loaded, so that a failed load has something to leave alone.
struct Surface {
    QWidget panel;
    QWidget* child = nullptr;
    TCanvas canvas;
    std::unique_ptr<TDiagContainer> dc;

    Surface() {
        panel.resize(400, 300);
        child = new QWidget(&panel);
        child->setObjectName(QStringLiteral("Edit1"));
        child->setGeometry(5, 6, 70, 20);
        canvas.SetHandle(&panel);
        dc = std::make_unique<TDiagContainer>(&panel, &canvas, nullptr);
        dc->CntList->Add(child);
        TDiagObject* a = dc->CreateObjByDiagType(doAndLogic, {10, 20, 70, 90});
        TDiagObject* b = dc->CreateObjByDiagType(doOrLogic, {150, 20, 210, 90});
        a->SetObjKey(1);
        b->SetObjKey(2);
        auto* w = new TDiagObjConnection(dc->ConList.get(), a, 1, b, -1, {15, 12}, 0, 0, 0);
        w->FSrcKey = 1;
        w->FDstKey = 2;
        dc->SelObj = b;
        b->SetSelected(true);
        dc->SelInfo = LongRec{1, 1};
        dc->ConList->SelectSegmentByLongRec(dc->SelInfo);
    }

    std::vector<uint8_t> Save() {
        TMemoryStream s;
        dc->SaveToStream(s);
        return s.Bytes();
    }
};

inline void InitQt(int* argc, char*** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QApplication app(*argc, *argv);
    static TCountingDialogService dialogs;
    SetDialogService(&dialogs);
}

} // namespace vde::fuzz
