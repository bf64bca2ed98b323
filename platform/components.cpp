#include "velDiagEdit/platform/components.h"

#include <QPointer>
#include <vector>

namespace vde {

namespace {

const char* const kOwnedListName = "vde_components";

// Lives as a Qt child of the owner, so it goes when the owner goes and takes the owned
// components with it.
class TOwnedComponents : public QObject {
    Q_OBJECT
public:
    explicit TOwnedComponents(QObject* owner) : QObject(owner) {
        setObjectName(QLatin1String(kOwnedListName));
    }
    ~TOwnedComponents() override {
        // Taken out first: deleting one component may delete others on the list.
        std::vector<QPointer<QObject>> items;
        items.swap(Items);
        for (auto& p : items)
            delete p.data();
    }
    std::vector<QPointer<QObject>> Items;
};

TOwnedComponents* OwnedList(const QObject* owner) {
    return owner->findChild<TOwnedComponents*>(QLatin1String(kOwnedListName),
                                               Qt::FindDirectChildrenOnly);
}

bool SameName(const QObject* o, const QString& name) {
    return o && o->objectName().compare(name, Qt::CaseInsensitive) == 0;
}

} // namespace

void InsertComponent(QObject* owner, QObject* component) {
    if (!owner || !component)
        return;
    TOwnedComponents* list = OwnedList(owner);
    if (!list)
        list = new TOwnedComponents(owner);
    // Components freed elsewhere have left null entries; they are dropped here.
    std::erase_if(list->Items, [](const QPointer<QObject>& p) { return p.isNull(); });
    for (const auto& p : list->Items)
        if (p == component)
            return;
    list->Items.emplace_back(component);
}

QObject* FindComponent(const QObject* owner, const QString& name) {
    if (!owner || name.isEmpty())
        return nullptr;
    for (QObject* child : owner->children())
        if (SameName(child, name) && !qobject_cast<TOwnedComponents*>(child))
            return child;
    if (TOwnedComponents* list = OwnedList(owner))
        for (const auto& p : list->Items)
            if (SameName(p.data(), name))
                return p.data();
    return nullptr;
}

} // namespace vde

#include "components.moc"
