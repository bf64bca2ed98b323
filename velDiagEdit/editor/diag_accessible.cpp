#include "velDiagEdit/editor/diag_accessible.h"

#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/platform/graphic_host.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QAccessibleWidget>
#include <QCoreApplication>
#include <QHash>
#include <QPointer>
#include <QRectF>
#include <algorithm>

namespace vde {

namespace {

QHash<const QWidget*, TDiagContainer*>& Surfaces() {
    static QHash<const QWidget*, TDiagContainer*> s;
    return s;
}

QString KindName(TDiagObjectType Kind) {
    switch (Kind) {
    case doText:
        return QCoreApplication::translate("vde::TDiagAccessible", "Text block");
    case doAndLogic:
        return QCoreApplication::translate("vde::TDiagAccessible", "AND gate");
    case doOrLogic:
        return QCoreApplication::translate("vde::TDiagAccessible", "OR gate");
    case doRSTrigger:
        return QCoreApplication::translate("vde::TDiagAccessible", "RS flip-flop");
    case doNone:
        break;
    }
    return QCoreApplication::translate("vde::TDiagAccessible", "Block");
}

// The kind, and the first label of a text block (its name in the circuit).
QString ShortName(const TDiagObject* Block) {
    QString name = KindName(Block->GetDiagObjType());
    if (Block->GetDiagObjType() == doText)
        for (const TDiagLabel& l : Block->FLabels)
            if (!l.Text.trimmed().isEmpty())
                return QCoreApplication::translate("vde::TDiagAccessible", "%1 “%2”")
                    .arg(name, l.Text.trimmed());
    return name;
}

QString Count(qsizetype N, bool Inputs) {
    if (Inputs)
        return N == 1 ? QCoreApplication::translate("vde::TDiagAccessible", "1 input")
                      : QCoreApplication::translate("vde::TDiagAccessible", "%1 inputs").arg(N);
    return N == 1 ? QCoreApplication::translate("vde::TDiagAccessible", "1 output")
                  : QCoreApplication::translate("vde::TDiagAccessible", "%1 outputs").arg(N);
}

QString MarkerName(int32_t Marker) {
    if (Marker < 0)
        return QCoreApplication::translate("vde::TDiagAccessible", "input %1")
            .arg(-int64_t(Marker));
    if (Marker > 0)
        return QCoreApplication::translate("vde::TDiagAccessible", "output %1").arg(Marker);
    return QCoreApplication::translate("vde::TDiagAccessible", "no marker");
}

// One end of a wire: a block and its marker, another wire, or nothing.
QString EndName(const TDiagObject* Block, int32_t Marker, LongRec Cross) {
    if (Block)
        return QCoreApplication::translate("vde::TDiagAccessible", "%1 (%2)")
            .arg(ShortName(Block), MarkerName(Marker));
    if (!Cross.IsZero())
        return QCoreApplication::translate("vde::TDiagAccessible", "wire %1").arg(Cross.Hi);
    return QCoreApplication::translate("vde::TDiagAccessible", "a loose end");
}

QRect ScreenRect(const QWidget* Surface, const QRect& R) {
    if (!Surface)
        return QRect();
    // A zoomed surface shows the rectangle scaled.
    const TGraphicHost* h = TGraphicHost::Find(Surface);
    if (h && h->Scale() != 1.0) {
        const double z = h->Scale();
        const QRect d = QRectF(R.x() * z, R.y() * z, R.width() * z, R.height() * z).toAlignedRect();
        return QRect(Surface->mapToGlobal(d.topLeft()), d.size());
    }
    return QRect(Surface->mapToGlobal(R.topLeft()), R.size());
}

// A block: object-bound, so Qt's cache keeps one per block and drops it with the block.
class TBlockAccessible : public QAccessibleObject {
public:
    explicit TBlockAccessible(TDiagObject* Block) : QAccessibleObject(Block) {}

    TDiagObject* Block() const { return static_cast<TDiagObject*>(object()); }

    QAccessibleInterface* parent() const override {
        return isValid() ? QAccessible::queryAccessibleInterface(Block()->parentWidget()) : nullptr;
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessible::Role role() const override { return QAccessible::Graphic; }
    QString text(QAccessible::Text t) const override {
        if (!isValid())
            return {};
        if (t == QAccessible::Name)
            return AccessibleBlockName(Block());
        if (t == QAccessible::Description)
            return QCoreApplication::translate("vde::TDiagAccessible",
                                               "A block of the diagram; Tab and Shift+Tab go to "
                                               "the next and previous block in design mode.");
        return {};
    }
    QRect rect() const override {
        return isValid() ? ScreenRect(Block()->parentWidget(), Block()->geometry()) : QRect();
    }
    QAccessible::State state() const override {
        QAccessible::State s;
        if (!isValid())
            return s;
        const TDiagObject* b = Block();
        s.selectable = true;
        s.focusable = true;
        s.selected = b->GetSelected();
        s.focused = b->GetSelected() && b->parentWidget() && b->parentWidget()->hasFocus();
        s.invisible = !b->isVisible();
        return s;
    }
};

// A wire: no object of its own; the surface keeps it and checks on every question that the
// wire is still in the container's list.
class TWireAccessible : public QAccessibleInterface {
public:
    TWireAccessible(QWidget* Surface, TDiagConnection* Wire) : FSurface(Surface), FWire(Wire) {}

    TDiagConnection* Wire() const { return FWire; }
    bool isValid() const override {
        TDiagContainer* dc = FSurface ? DiagSurfaceContainer(FSurface) : nullptr;
        return dc && dc->ConList && dc->ConList->IndexOf(FWire) >= 0;
    }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override {
        return FSurface ? FSurface->window()->windowHandle() : nullptr;
    }
    QAccessibleInterface* parent() const override {
        return FSurface ? QAccessible::queryAccessibleInterface(FSurface.data()) : nullptr;
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QString text(QAccessible::Text t) const override {
        return t == QAccessible::Name && isValid() ? AccessibleWireName(FWire) : QString();
    }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override {
        if (!isValid() || FWire->FPoints.empty())
            return {};
        QRect r(QPoint(FWire->FPoints[0].X, FWire->FPoints[0].Y), QSize(1, 1));
        for (const TPoint& p : FWire->FPoints)
            r = r.united(QRect(QPoint(p.X, p.Y), QSize(1, 1)));
        return ScreenRect(FSurface, r);
    }
    QAccessible::Role role() const override { return QAccessible::Graphic; }
    QAccessible::State state() const override {
        QAccessible::State s;
        s.selectable = true;
        s.selected = isValid() && FWire->GetSelectedIndex() >= 0;
        return s;
    }

private:
    QPointer<QWidget> FSurface;
    TDiagConnection* FWire;
};

// The surface: its blocks in reading order, its wires, then its widgets as any widget has them.
class TSurfaceAccessible : public QAccessibleWidget {
public:
    explicit TSurfaceAccessible(QWidget* Surface)
        : QAccessibleWidget(Surface, QAccessible::Canvas) {}
    ~TSurfaceAccessible() override {
        for (QAccessible::Id id : std::as_const(FWires))
            QAccessible::deleteAccessibleInterface(id);
    }

    TDiagContainer* Container() const { return DiagSurfaceContainer(widget()); }

    std::vector<TDiagObject*> Blocks() const {
        const TDiagContainer* dc = Container();
        return dc ? dc->BlocksInReadingOrder() : std::vector<TDiagObject*>();
    }
    int WireCount() const {
        const TDiagContainer* dc = Container();
        return dc && dc->ConList ? dc->ConList->Count() : 0;
    }

    int childCount() const override {
        return int(Blocks().size()) + WireCount() + QAccessibleWidget::childCount();
    }

    QAccessibleInterface* child(int Index) const override {
        if (Index < 0)
            return nullptr;
        const std::vector<TDiagObject*> blocks = Blocks();
        if (Index < int(blocks.size()))
            return QAccessible::queryAccessibleInterface(blocks[size_t(Index)]);
        Index -= int(blocks.size());
        if (Index < WireCount())
            return WireInterface(Container()->ConList->Items(Index));
        return QAccessibleWidget::child(Index - WireCount());
    }

    int indexOfChild(const QAccessibleInterface* Child) const override {
        if (!Child)
            return -1;
        const std::vector<TDiagObject*> blocks = Blocks();
        if (auto* b = qobject_cast<TDiagObject*>(Child->object())) {
            const auto it = std::find(blocks.begin(), blocks.end(), b);
            return it == blocks.end() ? -1 : int(it - blocks.begin());
        }
        if (const auto* w = dynamic_cast<const TWireAccessible*>(Child)) {
            const TDiagContainer* dc = Container();
            const int i = dc && dc->ConList ? dc->ConList->IndexOf(w->Wire()) : -1;
            return i < 0 ? -1 : int(blocks.size()) + i;
        }
        const int i = QAccessibleWidget::indexOfChild(Child);
        return i < 0 ? -1 : int(blocks.size()) + WireCount() + i;
    }

    QAccessibleInterface* childAt(int X, int Y) const override {
        const QPoint p = widget()->mapFromGlobal(QPoint(X, Y));
        if (TGraphicHost* h = TGraphicHost::Find(widget()))
            if (auto* b = qobject_cast<TDiagObject*>(h->ControlAt(h->PointAt(p))))
                return QAccessible::queryAccessibleInterface(b);
        return QAccessibleWidget::childAt(X, Y);
    }

    QAccessibleInterface* focusChild() const override {
        const TDiagContainer* dc = Container();
        if (dc && widget()->hasFocus())
            for (TDiagObject* b : Blocks())
                if (b->GetSelected() && b == dc->SelObj.data())
                    return QAccessible::queryAccessibleInterface(b);
        return QAccessibleWidget::focusChild();
    }

    QString text(QAccessible::Text t) const override {
        QString s = QAccessibleWidget::text(t);
        if (t == QAccessible::Name && s.isEmpty() && Container())
            s = QCoreApplication::translate("vde::TDiagAccessible", "Diagram");
        return s;
    }

private:
    QAccessibleInterface* WireInterface(TDiagConnection* Wire) const {
        // Wires gone from the list give their interfaces back first.
        for (auto it = FWires.begin(); it != FWires.end();) {
            QAccessibleInterface* i = QAccessible::accessibleInterface(it.value());
            if (!i || !i->isValid()) {
                QAccessible::deleteAccessibleInterface(it.value());
                it = FWires.erase(it);
            } else {
                ++it;
            }
        }
        if (const auto it = FWires.constFind(Wire); it != FWires.cend())
            return QAccessible::accessibleInterface(it.value());
        auto* i = new TWireAccessible(widget(), Wire);
        FWires.insert(Wire, QAccessible::registerAccessibleInterface(i));
        return i;
    }
    mutable QHash<const TDiagConnection*, QAccessible::Id> FWires;
};

QAccessibleInterface* Factory(const QString&, QObject* Object) {
    if (auto* w = qobject_cast<QWidget*>(Object); w && Surfaces().contains(w))
        return new TSurfaceAccessible(w);
    if (auto* b = qobject_cast<TDiagObject*>(Object); b && Surfaces().contains(b->parentWidget()))
        return new TBlockAccessible(b);
    return nullptr;
}

} // namespace

TDiagContainer* DiagSurfaceContainer(const QWidget* Surface) {
    return Surfaces().value(Surface, nullptr);
}

void RegisterDiagSurface(QWidget* Surface, TDiagContainer* Container) {
    static const bool installed = [] {
        QAccessible::installFactory(&Factory);
        return true;
    }();
    (void)installed;
    if (!Surface)
        return;
    // A surface freed before its container leaves the registry with it.
    if (!Surfaces().contains(Surface))
        QObject::connect(Surface, &QObject::destroyed, [Surface] { Surfaces().remove(Surface); });
    Surfaces().insert(Surface, Container);
}

void UnregisterDiagSurface(QWidget* Surface, TDiagContainer* Container) {
    const auto it = Surfaces().constFind(Surface);
    if (it != Surfaces().cend() && it.value() == Container)
        Surfaces().erase(it);
}

QString AccessibleBlockName(const TDiagObject* Block) {
    if (!Block)
        return {};
    QString s = QCoreApplication::translate("vde::TDiagAccessible", "%1, %2, %3")
                    .arg(ShortName(Block), Count(Block->FInputs.size(), true),
                         Count(Block->FOutputs.size(), false));
    if (Block->GetSelected())
        s = QCoreApplication::translate("vde::TDiagAccessible", "%1, selected").arg(s);
    return s;
}

QString AccessibleWireName(const TDiagConnection* Wire) {
    if (!Wire)
        return {};
    return QCoreApplication::translate("vde::TDiagAccessible", "Wire from %1 to %2")
        .arg(EndName(Wire->FSource.data(), Wire->FSrcConIdx, Wire->FSrcCrossInfo),
             EndName(Wire->FDest.data(), Wire->FDstConIdx, Wire->FDstCrossInfo));
}

} // namespace vde
