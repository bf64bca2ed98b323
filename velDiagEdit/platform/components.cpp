#include "velDiagEdit/platform/components.h"

#include "velDiagEdit/platform/errors.h"

#include <QHash>
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

// Component -> owner. Kept outside the components so that no smart pointer has to travel through
// a QVariant; an entry leaves when its component is destroyed. Never freed: components may still
// be destroyed while static objects are torn down at exit.
QHash<const QObject*, QPointer<QObject>>& Owners() {
    static auto* owners = new QHash<const QObject*, QPointer<QObject>>();
    return *owners;
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
    if (!Owners().contains(component))
        QObject::connect(component, &QObject::destroyed,
                         [component] { Owners().remove(component); });
    Owners().insert(component, QPointer<QObject>(owner));
}

QObject* ComponentOwner(const QObject* component) {
    if (!component)
        return nullptr;
    return Owners().value(component).data();
}

bool IsValidIdent(const QString& name) {
    if (name.isEmpty())
        return false;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const char16_t c = name[i].unicode();
        const bool letter = (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_';
        const bool digit = c >= u'0' && c <= u'9';
        if (!letter && !(digit && i > 0))
            return false;
    }
    return true;
}

void SetComponentName(QObject* owner, QObject* component, const QString& name) {
    if (!component)
        return;
    if (!name.isEmpty() && !IsValidIdent(name))
        throw EComponentError(QStringLiteral("\"%1\" is not a valid component name").arg(name));
    if (!name.isEmpty()) {
        QObject* other = FindComponent(owner, name);
        if (other && other != component)
            throw EComponentError(QStringLiteral("A component named %1 already exists").arg(name));
    }
    component->setObjectName(name);
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
