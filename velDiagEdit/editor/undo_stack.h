#pragma once
// Undo and redo of a diagram by snapshots of its whole stream.
//
// A step keeps the bytes of the diagram before and after one user-level change; undoing it
// loads the bytes before, redoing it the bytes after, so both are exact whatever the change
// was. The stack does not know what a diagram is: it is given one function that writes the
// diagram's bytes and one that loads them.
//
// A step may instead carry only what its change touched (TDiagDeltaStep): a drag of one block
// on a large diagram then costs what the block and its wires cost, not two whole streams.
//
// Memory: two neighbouring steps usually share the bytes between them (one step's "after" is
// the next one's "before"), so a step costs about one snapshot. The stack keeps its snapshots
// within a limit in bytes: after every push the oldest steps are dropped until the rest fits,
// but the newest step is always kept, even when it alone is larger than the limit.
//
// Ownership: the stack owns its steps (QUndoStack's rule); hosts reach it as a QUndoStack and
// add their Undo/Redo actions with createUndoAction/createRedoAction or a QUndoView.

#include "velDiagEdit/velDiagEdit_export.h"

#include <QByteArray>
#include <QString>
#include <QUndoCommand>
#include <QUndoStack>
#include <cstdint>
#include <functional>

namespace vde {

class TDiagUndoStack;

// One step: the diagram's bytes before and after the change.
class VELDIAGEDIT_EXPORT TDiagUndoStep : public QUndoCommand {
public:
    // MergeId -1: never merged. Steps with the same MergeId >= 0 and the same MergeKey merge
    // when the later one starts exactly where the earlier one ended (a burst of arrow keys).
    TDiagUndoStep(TDiagUndoStack* Stack, const QString& Text, QByteArray Before, QByteArray After,
                  int MergeId = -1, uint32_t MergeKey = 0);

    void undo() override;
    void redo() override;
    int id() const override;
    bool mergeWith(const QUndoCommand* Other) override;

    const QByteArray& Before() const { return FBefore; }
    const QByteArray& After() const { return FAfter; }
    int MergeId() const { return FMergeId; }
    uint32_t MergeKey() const { return FMergeKey; }

protected:
    friend class TDiagUndoStack;
    TDiagUndoStack* FStack;
    QByteArray FBefore;
    QByteArray FAfter;
    int FMergeId;
    uint32_t FMergeKey;
    // The first redo comes from the push, when the diagram already is in the state after.
    bool FPushed = false;
};

// A step that undoes and redoes its own change, from the little it recorded, on a diagram that
// is in the state the step left (the stack guarantees that for its own steps). Never merged.
class VELDIAGEDIT_EXPORT TDiagDeltaStep : public TDiagUndoStep {
public:
    TDiagDeltaStep(TDiagUndoStack* Stack, const QString& Text);

    void undo() override;
    void redo() override;
    bool mergeWith(const QUndoCommand* Other) override;

    // Puts the diagram in the state before (After false) or after the change.
    virtual void Apply(bool After) = 0;
    // Undoing the newest step: records what it touched as it is now as the state after, so that
    // redo returns to where undoing started.
    virtual void TakeAfter() = 0;
    // Bytes the step holds.
    virtual int64_t Size() const = 0;
    // A copy, for rebuilding the stack.
    virtual TDiagDeltaStep* Clone() const = 0;
};

class VELDIAGEDIT_EXPORT TDiagUndoStack : public QUndoStack {
    Q_OBJECT
public:
    using TSaveFunc = std::function<QByteArray()>;
    using TRestoreFunc = std::function<void(const QByteArray&)>;

    // The limit a new stack starts with: 256 MiB.
    static constexpr int64_t kDefaultMemoryLimit = int64_t(256) << 20;

    TDiagUndoStack(TSaveFunc Save, TRestoreFunc Restore, QObject* Parent = nullptr);
    ~TDiagUndoStack() override;

    // The diagram's bytes now.
    QByteArray Snapshot() const;

    // Pushes one step from Before to the diagram as it is now, unless the two are the same
    // bytes; true when a step was pushed (or merged into the newest one).
    bool PushStep(const QString& Text, const QByteArray& Before, int MergeId = -1,
                  uint32_t MergeKey = 0);
    // Pushes a step that carries its own change (the diagram already is in its state after).
    void PushDelta(TDiagDeltaStep* Step);

    // A step around a piece of work: BeginStep takes the bytes before, the matching EndStep
    // pushes the step if the bytes changed. Steps begun inside another step belong to the
    // outer one, so a command that calls other commands is still one step with the outer
    // text. EndStep never throws.
    void BeginStep(const QString& Text);
    void EndStep();
    int StepDepth() const { return FDepth; }

    // Forgets a step begun and not ended, without pushing it (the diagram was replaced).
    void AbandonStep();

    // Snapshot bytes held by all steps, each shared buffer counted once.
    int64_t MemoryUsed() const;
    int64_t MemoryLimit() const { return FMemoryLimit; }
    // 0 or less: no limit. Takes effect at once.
    void SetMemoryLimit(int64_t Bytes);

    // True while a step's bytes are being loaded into the diagram.
    bool IsRestoring() const { return FRestoring; }

private:
    friend class TDiagUndoStep;
    friend class TDiagDeltaStep;
    void Restore(const QByteArray& Bytes);
    // Drops the oldest steps until the rest fits the limit (the newest always stays).
    void TrimToLimit();
    // Rebuilds the stack without its First oldest steps, keeping the position and the clean
    // state of the rest.
    void DropOldest(int First);

    TSaveFunc FSave;
    TRestoreFunc FRestore;
    int64_t FMemoryLimit = kDefaultMemoryLimit;
    int FDepth = 0;
    QString FStepText;
    QByteArray FStepBefore;
    bool FStepFailed = false;
    bool FRestoring = false;
    // While set, steps neither load bytes nor merge: the stack is being rebuilt.
    bool FRebuilding = false;
};

// Begins a step for its lifetime: `const TUndoStepScope step(stack, "Delete");`. A null stack
// makes it do nothing.
class VELDIAGEDIT_EXPORT TUndoStepScope {
public:
    TUndoStepScope(TDiagUndoStack* Stack, const QString& Text);
    ~TUndoStepScope();
    TUndoStepScope(const TUndoStepScope&) = delete;
    TUndoStepScope& operator=(const TUndoStepScope&) = delete;

private:
    TDiagUndoStack* FStack;
};

} // namespace vde
