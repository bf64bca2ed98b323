#include "velDiagEdit/blocks/control_list.h"

#include "velDiagEdit/platform/controls.h"

namespace vde {

QWidget* TControlList::Items(int Index) const {
    if (Index < 0 || Index >= Count())
        return nullptr;
    return FItems[size_t(Index)];
}

int TControlList::Add(QWidget* Control) {
    FItems.emplace_back(Control);
    return Count() - 1;
}

int TControlList::IndexOf(const QWidget* Control) const {
    for (size_t i = 0; i < FItems.size(); ++i)
        if (FItems[i] == Control)
            return int(i);
    return -1;
}

void TControlList::Delete(int Index) {
    if (Index >= 0 && Index < Count())
        FItems.erase(FItems.begin() + Index);
}

QWidget* TControlList::FindControl(const QString& Name) const {
    for (const auto& c : FItems)
        if (c && c->objectName().compare(Name, Qt::CaseInsensitive) == 0)
            return c;
    return nullptr;
}

void TControlList::SaveToStream(TStream& Stream) const {
    Stream.WriteInt32(Count());
    for (const auto& c : FItems) {
        if (!c || !IsWindowedControl(c))
            continue;
        Stream.WriteStr(c->objectName());
        const TRect r = BoundsRect(c);
        Stream.WriteInt32(r.Left);
        Stream.WriteInt32(r.Top);
        Stream.WriteInt32(r.Right);
        Stream.WriteInt32(r.Bottom);
    }
}

void TControlList::LoadFromStream(TStream& Stream) {
    FWarnings.clear();
    // An entry is at least its name's count.
    const int32_t n = Stream.ReadCount("Control count", 4);
    for (int32_t i = 0; i < n; ++i) {
        const int64_t at = Stream.Position();
        const QString name = Stream.ReadStr();
        QWidget* c = FindControl(name);
        if (!c) {
            FWarnings << QStringLiteral("No control named \"%1\" (entry %2 at byte offset %3); "
                                        "its bounds were not read")
                             .arg(name)
                             .arg(i)
                             .arg(at);
            continue;
        }
        const int32_t l = Stream.ReadInt32(), t = Stream.ReadInt32();
        const int32_t r = Stream.ReadInt32(), b = Stream.ReadInt32();
        SetBounds(c, l, t, WrapSub(r, l), WrapSub(b, t));
    }
}

} // namespace vde
