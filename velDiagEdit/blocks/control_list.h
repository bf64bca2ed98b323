#pragma once
// Remembers the parent's ordinary child widgets (not blocks) by name and bounds, so that a
// saved diagram can put them back where they were. It never owns them. An item may also be a
// graphic control: it is counted and found by name, but only windowed controls are written.

#include "velDiagEdit/platform/streams.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QPointer>
#include <QStringList>
#include <QWidget>
#include <vector>

namespace vde {

class VELDIAGEDIT_EXPORT TControlList {
public:
    explicit TControlList(QWidget* AParent) : FParent(AParent) {}

    int Count() const { return int(FItems.size()); }
    QObject* Items(int Index) const;
    int Add(QObject* Control);
    int IndexOf(const QObject* Control) const;
    void Delete(int Index);
    void Clear() { FItems.clear(); }

    // First item whose object name equals Name ignoring case.
    QObject* FindControl(const QString& Name) const;

    // Count of all items, then an entry (name, bounds) for each windowed control only.
    void SaveToStream(TStream& Stream) const;
    // For a name no control has, the bounds are not read: the next entry's name is read from
    // those bytes, as the format has always behaved. Such entries are counted and reported
    // once per load: one line in Warnings() (and in the log category veldiagedit.blocks)
    // with their number and the first of them.
    void LoadFromStream(TStream& Stream);
    const QStringList& Warnings() const { return FWarnings; }
    int UnknownNameCount() const { return FUnknownNames; }

    QPointer<QWidget> FParent;

private:
    std::vector<QPointer<QObject>> FItems;
    QStringList FWarnings;
    int FUnknownNames = 0;
};

} // namespace vde
