#include "velDiagEdit/commands/diag_actions_list.h"

#include "velDiagEdit/commands/table_diag_actions.h"

namespace vde {

namespace {

TTableDiagActionsFactory& TableFactory() {
    static TTableDiagActionsFactory factory;
    return factory;
}

int CompareNames(const QString& a, const QString& b) {
    return QString::compare(a, b, Qt::CaseInsensitive);
}

} // namespace

void SetTableDiagActionsFactory(TTableDiagActionsFactory Factory) {
    TableFactory() = std::move(Factory);
}

bool HasTableDiagActionsFactory() {
    return bool(TableFactory());
}

TDiagActionsList::TDiagActionsList(QObject* AOwner, TDataSet* ADataStore,
                                   const QString& AModuleName)
    : FOwner(AOwner), FDataStore(ADataStore), FModuleName(AModuleName) {}

TDiagActionsList::~TDiagActionsList() {
    Clear();
}

QString TDiagActionsList::Strings(int Index) const {
    return Index >= 0 && Index < Count() ? FItems[size_t(Index)].first : QString();
}

TdmDiagActions* TDiagActionsList::Objects(int Index) const {
    return Index >= 0 && Index < Count() ? FItems[size_t(Index)].second.data() : nullptr;
}

bool TDiagActionsList::Find(const QString& S, int& Index) const {
    int lo = 0, hi = Count() - 1;
    while (lo <= hi) {
        const int mid = lo + (hi - lo) / 2;
        const int c = CompareNames(FItems[size_t(mid)].first, S);
        if (c == 0) {
            Index = mid;
            return true;
        }
        if (c < 0)
            lo = mid + 1;
        else
            hi = mid - 1;
    }
    Index = lo;
    return false;
}

int TDiagActionsList::IndexOf(const QString& S) const {
    int i = 0;
    return Find(S, i) ? i : -1;
}

void TDiagActionsList::Clear() {
    // Taken out first, so that nothing a module does while it goes sees a half-empty list.
    auto items = std::move(FItems);
    FItems.clear();
    for (auto& item : items)
        delete item.second.data();
}

std::unique_ptr<TdmDiagActions> TDiagActionsList::NewDiagActions() {
    if (FDataStore && !FModuleName.isEmpty()) {
        if (TableFactory())
            if (auto module = TableFactory()(FOwner.data(), FDataStore, FModuleName))
                return module;
        return std::make_unique<TdmTableDiagActions>(FOwner.data(), FDataStore, FModuleName);
    }
    return std::make_unique<TdmDiagActions>(FOwner.data());
}

TdmDiagActions* TDiagActionsList::CreateDiagActions(const QString& AName, QWidget* AParent,
                                                    TCanvas* ACanvas) {
    int index = 0;
    if (Find(AName, index))
        return Objects(index);
    if (AName.isEmpty() || !AParent)
        return nullptr;
    std::unique_ptr<TdmDiagActions> module = NewDiagActions();
    module->SetName(AName); // raises for a bad or taken name; the module then goes
    module->CreateContainer(AParent, ACanvas);
    module->SetConflictCheck(FConflictCheck);
    module->OnConflictResolved = FOnConflictResolved;
    module->OnChangedElsewhere = FOnChangedElsewhere;
    module->OnReloaded = FOnReloaded;
    module->SetLiveReload(FLiveReload);
    TdmDiagActions* result = module.get();
    FItems.insert(FItems.begin() + index, {AName, QPointer<TdmDiagActions>(module.release())});
    return result;
}

void TDiagActionsList::SaveDiagActions(const QString& AName) {
    if (AName.isEmpty()) {
        SaveDiagrams();
        return;
    }
    int index = 0;
    if (Find(AName, index))
        if (TdmDiagActions* module = Objects(index))
            module->SaveDiagram(QString());
}

void TDiagActionsList::SaveDiagrams() {
    for (int i = 0; i < Count(); ++i)
        if (TdmDiagActions* module = Objects(i))
            module->SaveDiagram(QString());
}

void TDiagActionsList::SetConflictCheck(bool Value) {
    FConflictCheck = Value;
    for (int i = 0; i < Count(); ++i)
        if (TdmDiagActions* module = Objects(i))
            module->SetConflictCheck(Value);
}

void TDiagActionsList::SetOnConflictResolved(decltype(TdmDiagActions::OnConflictResolved) Handler) {
    FOnConflictResolved = std::move(Handler);
    for (int i = 0; i < Count(); ++i)
        if (TdmDiagActions* module = Objects(i))
            module->OnConflictResolved = FOnConflictResolved;
}

void TDiagActionsList::SetLiveReload(bool Value) {
    FLiveReload = Value;
    for (int i = 0; i < Count(); ++i)
        if (TdmDiagActions* module = Objects(i))
            module->SetLiveReload(Value);
}

void TDiagActionsList::SetOnLiveReload(
    decltype(TdmDiagActions::OnChangedElsewhere) ChangedElsewhere,
    decltype(TdmDiagActions::OnReloaded) Reloaded) {
    FOnChangedElsewhere = std::move(ChangedElsewhere);
    FOnReloaded = std::move(Reloaded);
    for (int i = 0; i < Count(); ++i)
        if (TdmDiagActions* module = Objects(i)) {
            module->OnChangedElsewhere = FOnChangedElsewhere;
            module->OnReloaded = FOnReloaded;
        }
}

void TDiagActionsList::EnableDesignMode(bool Enable) {
    // A module whose surface the host took away has no design mode to switch.
    for (int i = 0; i < Count(); ++i)
        if (TdmDiagActions* module = Objects(i); module && module->DiagContr)
            module->SetDesignMode(Enable);
}

} // namespace vde
