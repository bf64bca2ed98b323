#include "velDiagEdit/commands/diag_actions.h"

#include "velDiagEdit/geometry/codecs.h"
#include "velDiagEdit/geometry/diag_types.h"
#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/components.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/event_boundary.h"
#include "velDiagEdit/platform/host_program.h"
#include "velDiagEdit/platform/ini_file.h"
#include "velDiagEdit/platform/streams.h"
#include "velDiagEdit/platform/translations.h"

#include <QAbstractScrollArea>
#include <QMenuBar>
#include <QScrollBar>
#include <QSet>

namespace vde {

namespace {

const QString kDiagramExt = QStringLiteral(".dgm");
// Save as copy tries <name>_copy1, <name>_copy2, ... up to this many.
constexpr int kMaxCopies = 1000;

QByteArray ToQBytes(const std::vector<uint8_t>& b) {
    return QByteArray(reinterpret_cast<const char*>(b.data()), qsizetype(b.size()));
}

} // namespace

TdmDiagActions::TdmDiagActions(QObject* AOwner) : QObject(nullptr), FOwner(AOwner) {
    InsertComponent(AOwner, this);
    BuildComponents();
    FMoveResize = new TdmMoveResize(this);
}

TdmDiagActions::~TdmDiagActions() {
    DataModuleDestroy(this);
    delete FMoveResize.data();
    FMoveResize = nullptr;
}

void TdmDiagActions::DataModuleDestroy(QObject* /*Sender*/) {
    DiagContr.reset();
}

void TdmDiagActions::SetName(const QString& Value) {
    SetComponentName(FOwner.data(), this, Value);
}

// ---- design-time components ------------------------------------------------------------------

TMenuItem* TdmDiagActions::DesignItem(TMenuItem* AParent, const QString& AName,
                                      const char* ACaption,
                                      void (TdmDiagActions::*Handler)(QObject*)) {
    auto* item = new TMenuItem(this);
    InsertComponent(this, item);
    SetComponentName(this, item, AName);
    item->SetTrCaption(staticMetaObject.className(), ACaption);
    if (Handler)
        item->OnClick = [this, Handler](QObject* Sender) { (this->*Handler)(Sender); };
    AParent->Add(item);
    return item;
}

void TdmDiagActions::BuildComponents() {
    using S = QString;
    pmConnections = new TPopupMenu(this);
    InsertComponent(this, pmConnections);
    SetComponentName(this, pmConnections, S("pmConnections"));
    pmObjects = new TPopupMenu(this);
    InsertComponent(this, pmObjects);
    SetComponentName(this, pmObjects, S("pmObjects"));

    TMenuItem* c = pmConnections->Items();
    mnuAddSegment = DesignItem(c, S("mnuAddSegment"), QT_TR_NOOP("Add Segment ..."),
                               &TdmDiagActions::mnuAddSegmentClick);
    mnuEditSegment = DesignItem(c, S("mnuEditSegment"), QT_TR_NOOP("Edit Segment ..."),
                                &TdmDiagActions::mnuEditSegmentClick);
    mnuGetSegmentIndex = DesignItem(c, S("mnuGetSegmentIndex"), QT_TR_NOOP("Get Seg. Index"),
                                    &TdmDiagActions::mnuGetSegmentIndexClick);
    mnuGetSegmentRect = DesignItem(c, S("mnuGetSegmentRect"), QT_TR_NOOP("Get Seg. Rect"),
                                   &TdmDiagActions::mnuGetSegmentRectClick);
    mnuDelSegment = DesignItem(c, S("mnuDelSegment"), QT_TR_NOOP("Del. Segment"),
                               &TdmDiagActions::mnuDelSegmentClick);
    mnuAlignSegment = DesignItem(c, S("mnuAlignSegment"), QT_TR_NOOP("Align Segment"),
                                 &TdmDiagActions::mnuAlignSegmentClick);
    mnuEndConnections =
        DesignItem(c, S("mnuEndConnections"), QT_TR_NOOP("End Connections"), nullptr);
    mnuEndConnection =
        DesignItem(mnuEndConnections, S("mnuEndConnection"), QT_TR_NOOP("End Connection"),
                   &TdmDiagActions::mnuEndConnectionClick);
    mnuEndWithCross =
        DesignItem(mnuEndConnections, S("mnuEndWithCross"), QT_TR_NOOP("End with Cross"),
                   &TdmDiagActions::mnuEndWithCrossClick);
    mnuEndWithSegment =
        DesignItem(mnuEndConnections, S("mnuEndWithSegment"), QT_TR_NOOP("End with Segment"),
                   &TdmDiagActions::mnuEndWithSegmentClick);
    mnuConnection = DesignItem(c, S("mnuConnection"), QT_TR_NOOP("Connection"), nullptr);
    mnuChangeConType =
        DesignItem(mnuConnection, S("mnuChangeConType"), QT_TR_NOOP("Change Type ..."), nullptr);
    mnuChangeConSize =
        DesignItem(mnuConnection, S("mnuChangeConSize"), QT_TR_NOOP("Change Size ..."),
                   &TdmDiagActions::mnuChangeConSizeClick);
    mnuChangeConPos = DesignItem(mnuConnection, S("mnuChangeConPos"), QT_TR_NOOP("Change Pos ..."),
                                 &TdmDiagActions::mnuChangeConPosClick);

    TMenuItem* o = pmObjects->Items();
    mnuCreate = DesignItem(o, S("mnuCreate"), QT_TR_NOOP("Create"), nullptr);
    mnuDelete =
        DesignItem(o, S("mnuDelete"), QT_TR_NOOP("Delete"), &TdmDiagActions::mnuDeleteClick);
    mnuShiftBy = DesignItem(o, S("mnuShiftBy"), QT_TR_NOOP("Shift By Delta ..."),
                            &TdmDiagActions::mnuShiftByClick);
    mnuRefresh =
        DesignItem(o, S("mnuRefresh"), QT_TR_NOOP("Refresh"), &TdmDiagActions::mnuRefreshClick);
    mnuInputs = DesignItem(o, S("mnuInputs"), QT_TR_NOOP("Inputs"), nullptr);
    mnuSetInputCount = DesignItem(mnuInputs, S("mnuSetInputCount"), QT_TR_NOOP("Set In Count ..."),
                                  &TdmDiagActions::mnuSetInputCountClick);
    mnuOutputs = DesignItem(o, S("mnuOutputs"), QT_TR_NOOP("Outputs"), nullptr);
    mnuSetOutputCount =
        DesignItem(mnuOutputs, S("mnuSetOutputCount"), QT_TR_NOOP("Set Out Count ..."),
                   &TdmDiagActions::mnuSetOutputCountClick);
    mnuMargins = DesignItem(o, S("mnuMargins"), QT_TR_NOOP("Margins"), nullptr);
    mnuHorizMargin = DesignItem(mnuMargins, S("mnuHorizMargin"), QT_TR_NOOP("Horiz. Margin ..."),
                                &TdmDiagActions::mnuHorizMarginClick);
    mnuTextParams = DesignItem(o, S("mnuTextParams"), QT_TR_NOOP("Text Params"), nullptr);
    mnuSetTitles = DesignItem(mnuTextParams, S("mnuSetTitles"), QT_TR_NOOP("Set Title ..."),
                              &TdmDiagActions::mnuSetTitlesClick);
    mnuSetTextSize =
        DesignItem(mnuTextParams, S("mnuSetTextSize"), QT_TR_NOOP("Set Text Sizes ..."),
                   &TdmDiagActions::mnuSetTextSizeClick);
    mnuSetTextPos = DesignItem(mnuTextParams, S("mnuSetTextPos"), QT_TR_NOOP("Set Text Pos ..."),
                               &TdmDiagActions::mnuSetTextPosClick);
    mnuAlignTitles = DesignItem(mnuTextParams, S("mnuAlignTitles"), QT_TR_NOOP("Align Titles"),
                                &TdmDiagActions::mnuAlignTitlesClick);
    mnuFile = DesignItem(o, S("mnuFile"), QT_TR_NOOP("File"), nullptr);
    mnuSaveToFile = DesignItem(mnuFile, S("mnuSaveToFile"), QT_TR_NOOP("Save To ..."),
                               &TdmDiagActions::mnuSaveToFileClick);
    mnuLoadFromFile = DesignItem(mnuFile, S("mnuLoadFromFile"), QT_TR_NOOP("Load From ..."),
                                 &TdmDiagActions::mnuLoadFromFileClick);

    for (TFileDialog* d :
         {static_cast<TFileDialog*>(&dlgOpen), static_cast<TFileDialog*>(&dlgSave)}) {
        d->DefaultExt = QStringLiteral("dgm");
        d->Filter = tr("Diagram files (*.dgm)|*.dgm");
    }
    // The filter follows the language too, unless a host gave the dialog a filter of its own.
    OnLanguageChange(this, [this, shown = dlgOpen.Filter]() mutable {
        const QString now = tr("Diagram files (*.dgm)|*.dgm");
        for (TFileDialog* d :
             {static_cast<TFileDialog*>(&dlgOpen), static_cast<TFileDialog*>(&dlgSave)})
            if (d->Filter == shown)
                d->Filter = now;
        shown = now;
    });
}

TMenuItem* TdmDiagActions::CreateMenuItem(TMenuItem* AParent, const QString& AName,
                                          const QString& ACaption, int APos) {
    if (!AParent)
        return nullptr;
    QObject* owner = ComponentOwner(AParent);
    // Items of a menu bar belong to the bar's own owner.
    if (owner && qobject_cast<QMenuBar*>(owner))
        owner = ComponentOwner(owner) ? ComponentOwner(owner) : owner->parent();
    if (!owner)
        return nullptr;
    auto item = std::make_unique<TMenuItem>(owner);
    InsertComponent(owner, item.get());
    SetComponentName(owner, item.get(), AName);
    item->SetCaption(ACaption);
    if (APos >= 0 && APos <= AParent->Count())
        AParent->Insert(APos, item.get());
    else
        AParent->Add(item.get());
    return item.release();
}

// ---- the surface -----------------------------------------------------------------------------

TDiagContainer& TdmDiagActions::Container() const {
    if (!DiagContr)
        throw EInvalidOperation(
            QStringLiteral("The diagram \"%1\" has no surface: its container was not created")
                .arg(GetName()));
    return *DiagContr;
}

void TdmDiagActions::CreateContainer(QWidget* AParent, TCanvas* ACanvas) {
    DiagContr.reset();
    DiagContr = std::make_unique<TDiagContainer>(AParent, ACanvas, FMoveResize.data());
    LinkEvents();
}

void TdmDiagActions::FreeContainer() {
    DiagContr.reset();
}

void TdmDiagActions::LinkEvents() {
    // A container without a canvas has no blocks or wires for the menus to work on.
    if (!DiagContr || !DiagContr->GetCanvas())
        return;
    DiagContr->AssignContextMenus(pmConnections, pmObjects);
    FillCreateMenu(0);
    FillMarkerMenu(0);
}

void TdmDiagActions::UnlinkEvents() {
    if (DiagContr)
        DiagContr->AssignContextMenus(nullptr, nullptr);
    FillCreateMenu(0);
    FillMarkerMenu(0);
}

// The items call the current container's command when chosen, so a container made again later
// is the one they reach.
void TdmDiagActions::FillCreateMenu(int Link) {
    const TNotifyEvent create = [this](QObject* Sender) {
        if (DiagContr)
            DiagContr->CreateDiagObEvent(Sender);
    };
    if (mnuCreate->Count() > 0) {
        for (int i = 0; i < mnuCreate->Count(); ++i)
            mnuCreate->Items(i)->OnClick = Link != 0 ? create : TNotifyEvent();
        return;
    }
    for (int t = doText; t <= doRSTrigger; ++t) {
        const QString caption = GoodDiagObjTypeName(t);
        TMenuItem* item = CreateMenuItem(mnuCreate, QStringLiteral("mnu") + caption, caption, -1);
        if (!item)
            continue;
        const TTrText shown = DiagObjTypeCaption(t);
        item->SetTrCaption(shown.Context, shown.Source);
        item->Tag = t;
        item->OnClick = create;
    }
}

void TdmDiagActions::FillMarkerMenu(int Link) {
    if (mnuChangeConType->Count() > 0) {
        // Relinking binds block creation here, not the marker type: the way the items have
        // always been relinked, and only ever reached with Link 0, which unbinds them.
        const TNotifyEvent create = [this](QObject* Sender) {
            if (DiagContr)
                DiagContr->CreateDiagObEvent(Sender);
        };
        for (int i = 0; i < mnuChangeConType->Count(); ++i)
            mnuChangeConType->Items(i)->OnClick = Link != 0 ? create : TNotifyEvent();
        return;
    }
    const TNotifyEvent changeType = [this](QObject* Sender) {
        if (DiagContr)
            DiagContr->ChangeMarkerType(Sender);
    };
    for (int t = itDirect; t <= itArrow; ++t) {
        const QString caption = GoodMarkerTypeName(t);
        TMenuItem* item =
            CreateMenuItem(mnuChangeConType, QStringLiteral("mnu") + caption, caption, -1);
        if (!item)
            continue;
        const TTrText shown = MarkerTypeCaption(t);
        item->SetTrCaption(shown.Context, shown.Source);
        item->Tag = t;
        item->OnClick = changeType;
    }
}

void TdmDiagActions::SetDesignMode(bool Value) {
    Container().SetDesignMode(Value);
    if (Value)
        FNeedSave = true;
}

bool TdmDiagActions::GetDesignMode() const {
    return DiagContr && DiagContr->GetDesignMode();
}

QWidget* TdmDiagActions::GetCurrentNodeControl() const {
    return DiagContr ? DiagContr->GetCurrentNodeControl() : nullptr;
}

void TdmDiagActions::CreateDiagObEvent(QObject* Sender) {
    auto* item = qobject_cast<TMenuItem*>(Sender);
    if (!item || item->Tag < 0 || item->Tag > 255)
        return;
    Container().CreateObjectAtMousePos(TDiagObjectType(uint8_t(item->Tag)));
}

void TdmDiagActions::ParentMouseUp(QObject* /*Sender*/, TMouseButton Button, TShiftState /*Shift*/,
                                   int X, int Y) {
    TDiagContainer& dc = Container();
    dc.SelectBestSegment(TPoint{X, Y});
    if (Button == mbRight && dc.GetParent()) {
        // Converted and not used further: nothing pops up from here.
        (void)ClientToScreen(dc.GetParent(), TPoint{X, Y});
    }
}

// ---- storage ---------------------------------------------------------------------------------

QString TdmDiagActions::DiagramFileName(const QString& AName) const {
    const QString name = AName.isEmpty() ? GetName() : AName;
    // The file must stay beside the host program, whatever name a caller hands on.
    if (name == QLatin1String(".") || name == QLatin1String("..") ||
        name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')) ||
        name.contains(QChar(0)))
        throw EInvalidOperation(
            QStringLiteral("The diagram name \"%1\" is not a file name: it "
                           "may not hold a path separator or be \".\" or \"..\"")
                .arg(name));
    return ExtractFilePath(HostProgramPath()) + name + kDiagramExt;
}

void TdmDiagActions::SaveDiagram(const QString& AName) {
    const QString file = DiagramFileName(AName);
    if (FConflictCheck) {
        SaveChecked(AName, FileStorage());
        return;
    }
    const QByteArray bytes = DiagramBytes();
    SaveBytesToFile(file, bytes);
    RememberStored(AName, file, ContentFingerprint(bytes));
}

void TdmDiagActions::LoadDiagram(const QString& AName) {
    LoadDiagramFile(AName, false);
}

void TdmDiagActions::LoadDiagramFile(const QString& AName, bool AClearWhenMissing) {
    const QString file = DiagramFileName(AName);
    // What a save killed in the middle left beside the file goes first.
    RemoveStaleSaves(file);
    QByteArray bytes;
    if (FileExists(file)) {
        // Read once: the fingerprint is that of exactly the bytes loaded.
        TFileStream in(file, fmOpenRead);
        TMemoryStream all;
        if (in.Size() > 0)
            all.CopyFrom(in, 0);
        bytes = ToQBytes(all.Bytes());
    } else if (!AClearWhenMissing) {
        RememberStored(AName, file, QString());
        return;
    }
    LoadStoredBytes(bytes, AClearWhenMissing);
    RememberStored(AName, file, ContentFingerprint(bytes));
}

QByteArray TdmDiagActions::DiagramBytes() {
    TMemoryStream stream;
    Container().SaveToStream(stream);
    return ToQBytes(stream.Bytes());
}

void TdmDiagActions::LoadStoredBytes(const QByteArray& Bytes, bool AClearWhenEmpty) {
    TDiagContainer& dc = Container();
    if (Bytes.isEmpty()) {
        if (AClearWhenEmpty)
            dc.Clear(false);
        return;
    }
    TMemoryStream stream(std::vector<uint8_t>(Bytes.begin(), Bytes.end()));
    dc.LoadFromStream(stream);
}

void TdmDiagActions::RememberStored(const QString& AName, const QString& Place,
                                    const QString& Fingerprint) {
    FStoredName = AName;
    FStoredPlace = Place;
    FStoredFingerprint = Fingerprint;
    // What is stored now is this module's own: nothing reported before is news any more.
    FElsewhere.reset();
    FKept.reset();
    if (FLiveReload)
        WatchStoredPlace();
}

TdmDiagActions::TStorageKind TdmDiagActions::FileStorage() {
    TStorageKind kind;
    kind.Place = [this](const QString& AName) { return DiagramFileName(AName); };
    kind.Store = [this](const QString& AName, const QByteArray& Bytes, const QString& Expected) {
        return WriteFileIfUnchanged(DiagramFileName(AName), Bytes, Expected);
    };
    kind.Reload = [this](const QString& AName) { LoadDiagramFile(AName, true); };
    kind.Fingerprint = [this](const QString& AName) {
        return FileFingerprint(DiagramFileName(AName));
    };
    return kind;
}

void TdmDiagActions::SaveChecked(const QString& AName, const TStorageKind& Storage) {
    TDiagContainer& dc = Container();
    const QString name = AName.isEmpty() ? GetName() : AName;
    const QString place = Storage.Place(name);
    const QByteArray bytes = DiagramBytes();
    // A place this module never loaded from nor saved to is expected to hold nothing.
    QString expected = place == FStoredPlace ? FStoredFingerprint : QString();
    bool overwriting = false;
    for (;;) {
        const TConditionalWrite done = Storage.Store(name, bytes, expected);
        if (done.Written) {
            RememberStored(name, place, ContentFingerprint(bytes));
            if (overwriting && OnConflictResolved)
                OnConflictResolved(this, ccOverwrite, QString());
            return;
        }
        // The error a host catches keeps the library's own words; the question is translated.
        const auto describe = [&](auto text) {
            const QString what =
                done.Found.isEmpty()
                    ? text(QT_TR_NOOP("was removed by someone else after it was loaded"))
                : expected.isEmpty()
                    ? text(QT_TR_NOOP("was stored by someone else, and this one never saw it"))
                    : text(QT_TR_NOOP("was saved by someone else after it was loaded"));
            return text(QT_TR_NOOP("The diagram \"%1\" (%2) %3 (loaded: %4, stored now: %5). "
                                   "Nothing was written."))
                .arg(name, place, what, ShortFingerprint(expected), ShortFingerprint(done.Found));
        };
        const QString message = describe([](const char* t) { return QString::fromUtf8(t); });
        if (!HasDialogService())
            throw EDiagramConflict(message, place, expected, done.Found);
        const TConflictChoice choice =
            DialogService().AskSaveConflict(describe([](const char* t) { return tr(t); }));
        switch (choice) {
        case ccOverwrite:
            // Theirs, as just seen, is what goes; if it changes again meanwhile, the question
            // comes again.
            expected = done.Found;
            overwriting = true;
            continue;
        case ccReload:
            Storage.Reload(name);
            dc.UndoStack()->clear();
            dc.UndoStack()->setClean();
            break;
        case ccSaveAsCopy: {
            QString copy;
            for (int n = 1; copy.isEmpty() && n <= kMaxCopies; ++n) {
                const QString candidate = name + QStringLiteral("_copy") + QString::number(n);
                if (Storage.Store(candidate, bytes, QString()).Written)
                    copy = candidate;
            }
            if (copy.isEmpty())
                throw EDiagramConflict(
                    message + QStringLiteral(" No free name for a copy up to %1_copy%2.")
                                  .arg(name)
                                  .arg(kMaxCopies),
                    place, expected, done.Found);
            if (OnConflictResolved)
                OnConflictResolved(this, choice, copy);
            return;
        }
        case ccCancel:
        default:
            throw EDiagramConflict(message, place, expected, done.Found);
        }
        if (OnConflictResolved)
            OnConflictResolved(this, choice, QString());
        return;
    }
}

// ---- live reload ------------------------------------------------------------------------------

namespace {

// A burst of watcher events (a save's link, rename and folder change) is checked once.
constexpr int kCheckDelayMs = 50;
constexpr int kCheckRetries = 5;
constexpr int kRetryDelayMs = 300;

} // namespace

TdmDiagActions::TStorageKind TdmDiagActions::CurrentStorage() {
    return FileStorage();
}

void TdmDiagActions::SetLiveReload(bool Value) {
    if (Value == FLiveReload)
        return;
    FLiveReload = Value;
    if (!Value) {
        StopWatching();
        if (FCheckTimer)
            FCheckTimer->stop();
        FElsewhere.reset();
        FKept.reset();
        return;
    }
    // Nothing loaded or saved yet: the watch starts with the first load or save.
    if (!FStoredPlace.isEmpty())
        WatchStoredPlace();
}

void TdmDiagActions::WatchFiles(const QStringList& Files) {
    if (!FWatcher) {
        FWatcher = std::make_unique<QFileSystemWatcher>();
        connect(FWatcher.get(), &QFileSystemWatcher::fileChanged, this,
                [this](const QString&) { StoredPlaceTouched(); });
        connect(FWatcher.get(), &QFileSystemWatcher::directoryChanged, this,
                [this](const QString&) { StoredPlaceTouched(); });
    }
    QStringList wanted;
    for (const QString& f : Files) {
        // The folder too: a file replaced by a rename (every save here) or made anew is seen
        // only there, and the watch on the file is dropped with the file it watched.
        wanted << ExtractFilePath(f);
        if (FileExists(f))
            wanted << f;
    }
    QStringList watched = FWatcher->files() + FWatcher->directories();
    QStringList stale, missing;
    for (const QString& w : watched)
        if (!wanted.contains(w))
            stale << w;
    for (const QString& w : wanted)
        if (!watched.contains(w) && !missing.contains(w))
            missing << w;
    if (!stale.isEmpty())
        FWatcher->removePaths(stale);
    if (!missing.isEmpty())
        FWatcher->addPaths(missing);
}

void TdmDiagActions::WatchStoredPlace() {
    WatchFiles({FStoredPlace});
}

void TdmDiagActions::StopWatching() {
    FWatcher.reset();
}

void TdmDiagActions::StoredPlaceTouched() {
    if (!FLiveReload || FReloading)
        return;
    if (!FCheckTimer) {
        FCheckTimer = std::make_unique<QTimer>();
        FCheckTimer->setSingleShot(true);
        connect(FCheckTimer.get(), &QTimer::timeout, this, [this] { CheckStoredDiagram(); });
    }
    FCheckTimer->start(kCheckDelayMs);
}

void TdmDiagActions::CheckStoredDiagram() {
    if (!FLiveReload || FReloading || !DiagContr || FStoredPlace.isEmpty())
        return;
    // Reached from the event loop. A read that fails (a database locked by a writer, a server
    // gone for a moment) is tried again a few times before the error is shown.
    try {
        CheckStoredNow();
        FCheckFailures = 0;
    } catch (...) {
        if (++FCheckFailures <= kCheckRetries) {
            StoredPlaceTouched();
            FCheckTimer->start(kRetryDelayMs);
            return;
        }
        FCheckFailures = 0;
        ReportEventError("live reload", EventErrorText(std::current_exception()));
    }
}

void TdmDiagActions::CheckStoredNow() {
    const TStorageKind storage = CurrentStorage();
    // A file replaced by a rename is no longer the one watched: watch the path again.
    WatchStoredPlace();
    const QString stored = storage.Fingerprint(FStoredName.isEmpty() ? GetName() : FStoredName);
    // The empty fingerprint (removed by someone else) is a version like any other.
    if (stored == FStoredFingerprint || (FElsewhere && stored == *FElsewhere) ||
        (FKept && stored == *FKept))
        return;
    if (DiagContr->UndoStack()->isClean()) {
        ReloadKeepingView(storage);
        if (OnReloaded)
            OnReloaded(this);
        return;
    }
    FElsewhere = stored;
    if (OnChangedElsewhere)
        OnChangedElsewhere(this);
}

void TdmDiagActions::ReloadKeepingView(const TStorageKind& Storage) {
    TDiagContainer& dc = Container();
    // The view: the scroll position of the scroll area the surface sits in, and the selected
    // blocks by key.
    QAbstractScrollArea* area = nullptr;
    for (QWidget* w = dc.GetParent(); w && !area; w = w->parentWidget())
        area = qobject_cast<QAbstractScrollArea*>(w);
    const int hScroll = area ? area->horizontalScrollBar()->value() : 0;
    const int vScroll = area ? area->verticalScrollBar()->value() : 0;
    QSet<TObjKey> selected;
    for (TDiagObject* b : dc.SelectedBlocks())
        selected.insert(b->GetObjKey());
    const bool hadCurrent = !dc.SelObj.isNull();
    const TObjKey current = hadCurrent ? dc.SelObj->GetObjKey() : 0;

    FReloading = true;
    try {
        Storage.Reload(FStoredName.isEmpty() ? GetName() : FStoredName);
    } catch (...) {
        FReloading = false;
        throw;
    }
    FReloading = false;
    dc.UndoStack()->clear();
    dc.UndoStack()->setClean();

    std::vector<TDiagObject*> again;
    TDiagObject* currentAgain = nullptr;
    for (int i = 0; i < dc.ObjList->Count(); ++i) {
        TDiagObject* b = dc.ObjList->Items(i);
        if (selected.contains(b->GetObjKey()))
            again.push_back(b);
        if (hadCurrent && b->GetObjKey() == current)
            currentAgain = b;
    }
    dc.SetSelectedBlocks(again, currentAgain);
    if (area) {
        area->horizontalScrollBar()->setValue(hScroll);
        area->verticalScrollBar()->setValue(vScroll);
    }
    if (dc.GetParent())
        dc.GetParent()->update();
}

void TdmDiagActions::ReloadChangedDiagram() {
    ReloadKeepingView(CurrentStorage());
}

void TdmDiagActions::KeepMine() {
    if (!FElsewhere)
        return;
    FKept = FElsewhere;
    FElsewhere.reset();
}

void TdmDiagActions::LoadDiagramEx(const QString& /*AName*/, const QString& /*ATabName*/) {
    LoadDiagram(QString());
}

// Proposes the last file saved or opened, else the host program's name with ".dgm".
void TdmDiagActions::SaveDiagramToFile() {
    TDiagContainer& dc = Container();
    if (dlgSave.FileName.isEmpty())
        dlgSave.FileName = dlgOpen.FileName;
    if (dlgSave.FileName.isEmpty())
        dlgSave.FileName = ChangeFileExt(HostProgramPath(), kDiagramExt);
    dlgSave.InitialDir = ExtractFilePath(dlgSave.FileName);
    dlgSave.FileName = ExtractFileName(dlgSave.FileName);
    if (dlgSave.Execute())
        dc.SaveDiagramToFile(dlgSave.FileName);
}

// Proposes the last file opened, else the host program's name with ".dgm"; the save dialog's
// name is not consulted.
void TdmDiagActions::LoadDiagramFromFile() {
    TDiagContainer& dc = Container();
    if (dlgOpen.FileName.isEmpty())
        dlgOpen.FileName = ChangeFileExt(HostProgramPath(), kDiagramExt);
    dlgOpen.InitialDir = ExtractFilePath(dlgOpen.FileName);
    dlgOpen.FileName = ExtractFileName(dlgOpen.FileName);
    if (dlgOpen.Execute()) {
        FNeedSave = true;
        // A file opened by the user is one step back to the diagram it replaced.
        const TUndoStepScope step(dc.UndoStack(),
                                  tr("Load From %1").arg(ExtractFileName(dlgOpen.FileName)));
        dc.LoadDiagramFromFile(dlgOpen.FileName);
    }
}

void TdmDiagActions::SaveDefaultDiagramFile() {
    Container().SaveDefaultDiagramFile();
}

void TdmDiagActions::LoadDefaultDiagramFile() {
    Container().LoadDefaultDiagramFile();
}

// ---- menu handlers ---------------------------------------------------------------------------

void TdmDiagActions::RunFileCommand(void (TdmDiagActions::*Command)(), const QString& Action,
                                    const TFileDialog& Dialog) {
    try {
        (this->*Command)();
    } catch (const Exception& e) {
        // The platform's file errors name the file already; the others get it added.
        const QString file = Dialog.FileName;
        const QString text = e.Message().contains(file)
                                 ? e.Message()
                                 : QStringLiteral("%1 \"%2\": %3").arg(Action, file, e.Message());
        ReportEventError("menu", text);
    }
}

#define VDE_FORWARD(Handler, Command)                                                              \
    void TdmDiagActions::Handler(QObject* /*Sender*/) {                                            \
        if (DiagContr)                                                                             \
            DiagContr->Command();                                                                  \
    }

VDE_FORWARD(mnuAddSegmentClick, AddSegmentToConnection)
VDE_FORWARD(mnuEditSegmentClick, EditSegmentOfConnection)
VDE_FORWARD(mnuGetSegmentIndexClick, ShowSegmentIndex)
VDE_FORWARD(mnuGetSegmentRectClick, ShowSegmentRect)
VDE_FORWARD(mnuDelSegmentClick, DeleteCurSegment)
VDE_FORWARD(mnuAlignSegmentClick, AlignCurSegment)
VDE_FORWARD(mnuEndConnectionClick, EndDiagConnection)
VDE_FORWARD(mnuEndWithCrossClick, EndConnectionWithCross)
VDE_FORWARD(mnuEndWithSegmentClick, EndConnectionWithSegment)
VDE_FORWARD(mnuChangeConSizeClick, ChangeMarkerSize)
VDE_FORWARD(mnuChangeConPosClick, ChangeMarkerPos)
VDE_FORWARD(mnuDeleteClick, DelSelectedObject)
VDE_FORWARD(mnuShiftByClick, ShiftByDelta)
VDE_FORWARD(mnuRefreshClick, Refresh)
VDE_FORWARD(mnuSetInputCountClick, SetInputCount)
VDE_FORWARD(mnuSetOutputCountClick, SetOutputCount)
VDE_FORWARD(mnuHorizMarginClick, SetHorizMargin)
VDE_FORWARD(mnuSetTitlesClick, SetTextValues)
VDE_FORWARD(mnuSetTextSizeClick, SetTextHeights)
VDE_FORWARD(mnuSetTextPosClick, SetTextPosValues)
VDE_FORWARD(mnuAlignTitlesClick, AlignTitles)

#undef VDE_FORWARD

void TdmDiagActions::mnuSaveToFileClick(QObject* /*Sender*/) {
    if (DiagContr)
        RunFileCommand(&TdmDiagActions::SaveDiagramToFile, tr("Cannot save the diagram to"),
                       dlgSave);
}

void TdmDiagActions::mnuLoadFromFileClick(QObject* /*Sender*/) {
    if (DiagContr)
        RunFileCommand(&TdmDiagActions::LoadDiagramFromFile, tr("Cannot load the diagram from"),
                       dlgOpen);
}

void TdmDiagActions::mnuAddConnectionClick(QObject* /*Sender*/) {}

} // namespace vde
