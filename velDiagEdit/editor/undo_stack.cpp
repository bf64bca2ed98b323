#include "velDiagEdit/editor/undo_stack.h"

#include <QLoggingCategory>
#include <QSet>
#include <utility>
#include <vector>

Q_LOGGING_CATEGORY(lcUndo, "veldiagedit.undo")

namespace vde {

// ---- one step ----------------------------------------------------------------------------------

TDiagUndoStep::TDiagUndoStep(TDiagUndoStack* Stack, const QString& Text, QByteArray Before,
                             QByteArray After, int MergeId, uint32_t MergeKey)
    : QUndoCommand(Text), FStack(Stack), FBefore(std::move(Before)), FAfter(std::move(After)),
      FMergeId(MergeId), FMergeKey(MergeKey) {}

void TDiagUndoStep::undo() {
    if (!FStack || FStack->FRebuilding)
        return;
    // Undoing the newest step: whatever happened since without a step of its own (a
    // selection, most often) is kept as part of it, so that redo returns exactly to where
    // undoing started. (The stack moves its index after this call.)
    if (FStack->index() == FStack->count()) {
        QByteArray now = FStack->Snapshot();
        if (now != FAfter)
            FAfter = std::move(now);
    }
    FStack->Restore(FBefore);
}

void TDiagUndoStep::redo() {
    if (!FStack || FStack->FRebuilding)
        return;
    if (!FPushed) {
        FPushed = true;
        return;
    }
    FStack->Restore(FAfter);
}

int TDiagUndoStep::id() const {
    if (FStack && FStack->FRebuilding)
        return -1;
    return FMergeId;
}

bool TDiagUndoStep::mergeWith(const QUndoCommand* Other) {
    const auto* o = dynamic_cast<const TDiagUndoStep*>(Other);
    if (!o || o->FMergeId != FMergeId || o->FMergeKey != FMergeKey || o->FBefore != FAfter)
        return false;
    FAfter = o->FAfter;
    // A burst that ends where it began is no change at all; the stack then drops the step.
    if (FAfter == FBefore)
        setObsolete(true);
    return true;
}

// ---- a step that carries its own change --------------------------------------------------------

TDiagDeltaStep::TDiagDeltaStep(TDiagUndoStack* Stack, const QString& Text)
    : TDiagUndoStep(Stack, Text, QByteArray(), QByteArray()) {}

void TDiagDeltaStep::undo() {
    if (!FStack || FStack->FRebuilding)
        return;
    if (FStack->index() == FStack->count())
        TakeAfter();
    FStack->FRestoring = true;
    try {
        Apply(false);
    } catch (...) {
        FStack->FRestoring = false;
        throw;
    }
    FStack->FRestoring = false;
}

void TDiagDeltaStep::redo() {
    if (!FStack || FStack->FRebuilding)
        return;
    if (!FPushed) {
        FPushed = true;
        return;
    }
    FStack->FRestoring = true;
    try {
        Apply(true);
    } catch (...) {
        FStack->FRestoring = false;
        throw;
    }
    FStack->FRestoring = false;
}

bool TDiagDeltaStep::mergeWith(const QUndoCommand*) {
    return false;
}

// ---- the stack ---------------------------------------------------------------------------------

TDiagUndoStack::TDiagUndoStack(TSaveFunc Save, TRestoreFunc Restore, QObject* Parent)
    : QUndoStack(Parent), FSave(std::move(Save)), FRestore(std::move(Restore)) {}

TDiagUndoStack::~TDiagUndoStack() {
    // Steps must not load anything while the stack goes.
    FRebuilding = true;
}

QByteArray TDiagUndoStack::Snapshot() const {
    return FSave ? FSave() : QByteArray();
}

void TDiagUndoStack::Restore(const QByteArray& Bytes) {
    if (!FRestore)
        return;
    FRestoring = true;
    try {
        FRestore(Bytes);
    } catch (...) {
        FRestoring = false;
        throw;
    }
    FRestoring = false;
}

bool TDiagUndoStack::PushStep(const QString& Text, const QByteArray& Before, int MergeId,
                              uint32_t MergeKey) {
    QByteArray after = Snapshot();
    if (after == Before)
        return false;
    // The bytes before this step are very often the bytes after the newest step: share them.
    QByteArray before = Before;
    if (index() > 0) {
        if (const auto* top = dynamic_cast<const TDiagUndoStep*>(command(index() - 1)))
            if (top->FAfter == before)
                before = top->FAfter;
    }
    push(new TDiagUndoStep(this, Text, std::move(before), std::move(after), MergeId, MergeKey));
    TrimToLimit();
    return true;
}

void TDiagUndoStack::PushDelta(TDiagDeltaStep* Step) {
    push(Step);
    TrimToLimit();
}

void TDiagUndoStack::BeginStep(const QString& Text) {
    if (FDepth++ > 0)
        return;
    FStepText = Text;
    FStepFailed = false;
    try {
        FStepBefore = Snapshot();
    } catch (const std::exception& e) {
        // Without the bytes before there is nothing to undo to; the change goes unrecorded.
        FStepFailed = true;
        qCWarning(lcUndo) << "No undo step for" << Text << ":" << e.what();
    }
}

void TDiagUndoStack::EndStep() {
    if (FDepth <= 0 || --FDepth > 0)
        return;
    QByteArray before = std::exchange(FStepBefore, QByteArray());
    if (FStepFailed)
        return;
    try {
        PushStep(FStepText, before);
    } catch (const std::exception& e) {
        qCWarning(lcUndo) << "No undo step for" << FStepText << ":" << e.what();
    }
}

void TDiagUndoStack::AbandonStep() {
    FDepth = 0;
    FStepBefore = QByteArray();
    FStepFailed = false;
}

int64_t TDiagUndoStack::MemoryUsed() const {
    // Steps side by side share the bytes between them; each buffer counts once. (A QSet: the
    // standard library's hash table over a plain pointer would be exported with the library.)
    QSet<const char*> seen;
    int64_t total = 0;
    auto add = [&](const QByteArray& b) {
        if (b.isEmpty() || seen.contains(b.constData()))
            return;
        seen.insert(b.constData());
        total += b.size();
    };
    for (int i = 0; i < count(); ++i) {
        if (const auto* d = dynamic_cast<const TDiagDeltaStep*>(command(i)))
            total += d->Size();
        else if (const auto* s = dynamic_cast<const TDiagUndoStep*>(command(i))) {
            add(s->FBefore);
            add(s->FAfter);
        }
    }
    return total;
}

void TDiagUndoStack::SetMemoryLimit(int64_t Bytes) {
    FMemoryLimit = Bytes;
    TrimToLimit();
}

void TDiagUndoStack::TrimToLimit() {
    if (FMemoryLimit <= 0 || count() <= 1 || MemoryUsed() <= FMemoryLimit)
        return;
    // Steps below the current position are the ones undone last, if ever; the step just
    // below it is the newest that can still be undone and stays.
    int drop = 0;
    int64_t used = MemoryUsed();
    // Work out how many to drop by what each one frees: a buffer shared with the next step
    // is freed only when that one goes too.
    const int last = index() - 1;
    while (drop < last && used > FMemoryLimit) {
        const auto* s = dynamic_cast<const TDiagUndoStep*>(command(drop));
        const auto* next = dynamic_cast<const TDiagUndoStep*>(command(drop + 1));
        if (const auto* d = dynamic_cast<const TDiagDeltaStep*>(s))
            used -= d->Size();
        else if (s) {
            used -= s->FBefore.size();
            if (!next || s->FAfter.constData() != next->FBefore.constData())
                used -= s->FAfter.size();
        }
        ++drop;
    }
    if (drop > 0)
        DropOldest(drop);
}

void TDiagUndoStack::DropOldest(int First) {
    struct Kept {
        QString Text;
        QByteArray Before, After;
        int MergeId;
        uint32_t MergeKey;
        TDiagDeltaStep* Delta;
    };
    std::vector<Kept> kept;
    for (int i = First; i < count(); ++i) {
        const auto* s = dynamic_cast<const TDiagUndoStep*>(command(i));
        if (!s)
            continue;
        const auto* d = dynamic_cast<const TDiagDeltaStep*>(s);
        kept.push_back({s->text(), s->FBefore, s->FAfter, s->FMergeId, s->FMergeKey,
                        d ? d->Clone() : nullptr});
    }
    const int position = index() - First;
    const int clean = cleanIndex() - First;
    FRebuilding = true;
    clear();
    for (Kept& k : kept) {
        TDiagUndoStep* s = k.Delta;
        if (!s)
            s = new TDiagUndoStep(this, k.Text, std::move(k.Before), std::move(k.After), k.MergeId,
                                  k.MergeKey);
        s->FPushed = true;
        push(s);
    }
    // A clean state among the dropped steps is gone for good.
    if (clean >= 0) {
        setIndex(clean);
        setClean();
    } else {
        resetClean();
    }
    setIndex(position);
    FRebuilding = false;
}

// ---- scope -------------------------------------------------------------------------------------

TUndoStepScope::TUndoStepScope(TDiagUndoStack* Stack, const QString& Text) : FStack(Stack) {
    if (FStack)
        FStack->BeginStep(Text);
}

TUndoStepScope::~TUndoStepScope() {
    if (FStack)
        FStack->EndStep();
}

} // namespace vde
