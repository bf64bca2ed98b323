#include "velDiagEdit/blocks/control_list.h"

#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/record_codec.h"

#include <QLoggingCategory>

namespace vde {

namespace {
Q_LOGGING_CATEGORY(lcBlocks, "veldiagedit.blocks")
} // namespace

QObject* TControlList::Items(int Index) const {
    if (Index < 0 || Index >= Count())
        return nullptr;
    return FItems[size_t(Index)];
}

int TControlList::Add(QObject* Control) {
    FItems.emplace_back(Control);
    return Count() - 1;
}

int TControlList::IndexOf(const QObject* Control) const {
    for (size_t i = 0; i < FItems.size(); ++i)
        if (FItems[i] == Control)
            return int(i);
    return -1;
}

void TControlList::Delete(int Index) {
    if (Index >= 0 && Index < Count())
        FItems.erase(FItems.begin() + Index);
}

QObject* TControlList::FindControl(const QString& Name) const {
    for (const auto& c : FItems)
        if (c && c->objectName().compare(Name, Qt::CaseInsensitive) == 0)
            return c;
    return nullptr;
}

void TControlList::SaveToStream(TStream& Stream) const {
    TRecordWriter w;
    w.Int(Count());
    for (const auto& c : FItems) {
        if (!c || !IsWindowedControl(c))
            continue;
        w.Str(c->objectName()).Rect(BoundsRect(static_cast<const QWidget*>(c.data())));
    }
    w.Flush(Stream);
}

void TControlList::LoadFromStream(TStream& Stream) {
    FWarnings.clear();
    FUnknownNames = 0;
    QString firstName;
    int64_t firstAt = 0;
    const int32_t n = Stream.ReadCount("Control count", kControlEntryMinSize);
    for (int32_t i = 0; i < n; ++i) {
        const int64_t at = Stream.Position();
        const QString name = Stream.ReadStr();
        QObject* c = FindControl(name);
        if (!c) {
            if (FUnknownNames++ == 0) {
                firstName = name;
                firstAt = at;
            }
            continue;
        }
        TRecordReader r(Stream, kRectSize);
        const TRect b = r.Rect();
        const int32_t w = WrapSub(b.Right, b.Left), h = WrapSub(b.Bottom, b.Top);
        if (auto* g = qobject_cast<TGraphicControl*>(c))
            SetBounds(g, b.Left, b.Top, w, h);
        else
            SetBounds(static_cast<QWidget*>(c), b.Left, b.Top, w, h);
    }
    if (FUnknownNames > 0) {
        // One line per load, however many entries missed: a hostile stream must not turn
        // into millions of messages.
        FWarnings << QStringLiteral("%1 control entries named no control (the first, \"%2\", "
                                    "at byte offset %3); their bounds were not read")
                         .arg(FUnknownNames)
                         .arg(firstName.left(64))
                         .arg(firstAt);
        qCWarning(lcBlocks).noquote() << FWarnings.front();
    }
}

} // namespace vde
