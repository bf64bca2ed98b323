#pragma once
// The surface for the editing command tests: shown on screen, connections drawn only inside the
// parent's paint (so that a repaint of the whole parent is the container's own doing), a state
// snapshot to tell "nothing changed" exactly, and a watch on full repaints of the parent.

#include "editor_test_util.h"

#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/geometry/codecs.h"
#include "velDiagEdit/platform/streams.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPaintEvent>
#include <QTest>
#include <functional>
#include <vector>

namespace vde::test {

// Counts the paint events of a widget that cover all of it.
class FullPaintWatch : public QObject {
public:
    explicit FullPaintWatch(QWidget* w) : FWidget(w) { w->installEventFilter(this); }
    ~FullPaintWatch() override {
        if (FWidget)
            FWidget->removeEventFilter(this);
    }
    int Full = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == FWidget && event->type() == QEvent::Paint &&
            static_cast<QPaintEvent*>(event)->rect() == FWidget->rect())
            ++Full;
        return false;
    }

private:
    QPointer<QWidget> FWidget;
};

class CommandsFixture : public EditorFixture {
protected:
    std::unique_ptr<FullPaintWatch> watch;

    void SetUp() override {
        EditorFixture::SetUp();
        Show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&panel));
        // A connection that repaints itself outside the parent's paint asks for nothing: only
        // the container's own invalidation repaints the whole parent.
        canvas.OnRequestPaint = [] {};
        watch = std::make_unique<FullPaintWatch>(&panel);
    }

    void TearDown() override {
        watch.reset();
        EditorFixture::TearDown();
    }

    static void Flush() {
        for (int i = 0; i < 3; ++i)
            QCoreApplication::processEvents();
    }

    // Whether running `command` repaints the whole parent.
    bool Invalidates(const std::function<void()>& command) {
        Flush();
        watch->Full = 0;
        command();
        Flush();
        return watch->Full > 0;
    }

    // A block made the way the objects menu makes it: at the click point, with the container's
    // handlers bound.
    template <class T = TDiagObject> T* Place(TDiagObjectType type, int x, int y) {
        dc->FClickPoint = {x, y};
        TDiagObject* b = dc->CreateObjectAtMousePos(type);
        dc->AssignObjEvents(b);
        return dynamic_cast<T*>(b);
    }

    // Selects the block and one of its markers as two left clicks would.
    void SelectMarker(TDiagObject* b, int marker) {
        dc->SelObj = b;
        b->SetSelected(true);
        dc->ObjList->DeselectAll(b);
        b->SetSelMarkerIndex(marker);
    }

    // Everything a command may change, as bytes: the block and connection records, what the
    // records leave out (selection, counts, the blocks' own settings, which blocks the wires are
    // attached to), and the container's selection.
    std::vector<uint8_t> State() const {
        TMemoryStream s;
        dc->ObjList->SaveToStream(s);
        dc->ConList->SaveToStream(s);
        for (int i = 0; i < dc->ObjList->Count(); ++i) {
            const TDiagObject* b = dc->ObjList->Items(i);
            s.WriteByte(b->FSelected ? 1 : 0);
            s.WriteInt32(b->FSelMarkerIndex);
            s.WriteByte(b->FTextHeight);
            if (auto* t = dynamic_cast<const TDiagText*>(b)) {
                s.WriteInt32(t->FInCount);
                s.WriteInt32(t->FOutCount);
            }
            for (const TDiagLabel& l : b->FLabels)
                s.WriteByte(l.Height);
        }
        for (int i = 0; i < dc->ConList->Count(); ++i) {
            const TDiagConnection* c = dc->ConList->Items(i);
            s.WriteInt32(dc->ObjList->IndexOf(c->GetSrcObject()));
            s.WriteInt32(dc->ObjList->IndexOf(c->GetDstObject()));
            s.WriteByte(c->FIsEditable ? 1 : 0);
        }
        s.WriteUInt32(dc->SelInfo.Value());
        s.WriteInt32(dc->ObjList->IndexOf(dc->SelObj.data()));
        return s.Bytes();
    }

    QStringList Log() const { return dialogs.Log(); }
    QString LastAsked() const { return dialogs.Log().isEmpty() ? QString() : dialogs.Log().back(); }
};

// The text a conversion error of `text` read as a point carries.
inline QString PointErrorText(const QString& text) {
    try {
        StrToPoint(text);
    } catch (const EConvertError& e) {
        return e.Message();
    }
    return {};
}

} // namespace vde::test
