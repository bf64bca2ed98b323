// The container's two stored forms: the binary container stream (also in files and the default
// file beside the host program) and the INI-like text form that lists blocks only.
//
// Loading a whole diagram reads in two passes. The first reads everything without touching the
// open diagram: the blocks into a fresh block list on the same parent (they are not painted
// before control returns to the event loop), the connections into a scratch list that is thrown
// away, the control section against stand-ins that carry the foreign controls' names, and the
// selection words. Only when all of it has been read does the second pass replace the diagram:
// the fresh block list's blocks take the place of the old ones in the same list object, and the
// connections, the control bounds and the selection are read again from the same, now known good,
// bytes by the lists' own readers, in the usual order. So a bad stream raises its typed error and
// leaves the open diagram as it was.

#include "velDiagEdit/editor/diag_container.h"

#include "velDiagEdit/geometry/codecs.h"
#include "velDiagEdit/platform/dialog_service.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/host_program.h"
#include "velDiagEdit/platform/ini_file.h"
#include "velDiagEdit/platform/record_codec.h"

#include <QSaveFile>
#include <QWidget>
#include <QtEndian>
#include <vector>

namespace vde {

namespace {

// One int32 moved as 4 raw bytes with the plain calls. A count or info word that the stream
// cannot supply in full is a malformed stream rather than a value read from nowhere.
void WriteStreamInt(TStream& Stream, int32_t Value) {
    uint8_t b[4];
    qToLittleEndian<int32_t>(Value, b);
    Stream.Write(b, 4);
}

int32_t ReadStreamInt(TStream& Stream, const char* What) {
    const int64_t at = Stream.Position();
    uint8_t b[4];
    if (Stream.Read(b, 4) != 4)
        throw EFormatError(
            QStringLiteral("%1 is cut short: 4 bytes wanted").arg(QString::fromLatin1(What)), at);
    return qFromLittleEndian<int32_t>(b);
}

// A count of records stored by the container. -1 says "the list reads its own count"; other
// negative values and counts the remaining bytes cannot hold are refused before anything is
// allocated or created.
void CheckListCount(TStream& Stream, int32_t Count, int64_t MinRecordSize, const char* What) {
    const int64_t at = Stream.Position() - 4;
    if (Count < -1)
        throw EFormatError(
            QStringLiteral("%1 %2 is negative").arg(QString::fromLatin1(What)).arg(Count), at);
    if (Count > 0 && int64_t(Count) * MinRecordSize > Stream.Remaining())
        throw EFormatError(QStringLiteral("%1 %2 is larger than the %3 bytes that remain "
                                          "could hold")
                               .arg(QString::fromLatin1(What))
                               .arg(Count)
                               .arg(Stream.Remaining()),
                           at);
}

// Reads the control section exactly as the control list does, but against parentless
// stand-ins that carry the names of the list's controls, so that the real controls keep their
// bounds if the stream turns out to be bad.
void CheckControlSection(TStream& Stream, const TControlList& Controls) {
    std::vector<std::unique_ptr<QWidget>> standIns;
    TControlList probe(nullptr);
    for (int i = 0; i < Controls.Count(); ++i) {
        QObject* c = Controls.Items(i);
        if (!c)
            continue;
        auto w = std::make_unique<QWidget>();
        w->setObjectName(c->objectName());
        probe.Add(w.get());
        standIns.push_back(std::move(w));
    }
    probe.LoadFromStream(Stream);
}

} // namespace

// ---- binary container stream

void TDiagContainer::SaveToStream(TStream& Stream) {
    const uint32_t signature = qToLittleEndian(kContainerSignature);
    Stream.WriteBuffer(&signature, 4);
    if (ObjList)
        ObjList->SaveToStream(Stream);
    else
        WriteStreamInt(Stream, -1);
    if (ConList)
        ConList->SaveToStream(Stream);
    else
        WriteStreamInt(Stream, -1);
    CntList->SaveToStream(Stream);
    SaveInfoToStream(Stream);
}

void TDiagContainer::SaveInfoToStream(TStream& Stream) {
    WriteStreamInt(Stream, int32_t(SelInfo.Value()));
    WriteStreamInt(Stream, SelObj ? int32_t(SelObj->GetObjKey()) : 0);
}

void TDiagContainer::LoadInfoFromStream(TStream& Stream) {
    SelInfo = LongRec{};
    if (!ObjList || !ConList)
        return;
    SelInfo = LongRec::FromValue(uint32_t(ReadStreamInt(Stream, "Selected segment")));
    if (!SelInfo.IsZero())
        ConList->SelectSegmentByLongRec(SelInfo);
    const auto key = TObjKey(uint32_t(ReadStreamInt(Stream, "Selected block key")));
    SelObj = ObjList->FindObjByKey(key);
    if (SelObj)
        SelObj->SetSelected(true);
}

void TDiagContainer::LoadFromStream(TStream& Stream) {
    // An empty or cut-off source is simply ignored.
    if (Stream.Size() - Stream.Position() <= 4)
        return;
    uint32_t signature = 0;
    Stream.ReadBuffer(&signature, 4);
    if (qFromLittleEndian(signature) != kContainerSignature) {
        DialogService().ErrorMessageDlg(tr("Invalid file format"));
        return;
    }

    // ---- first pass: read all of it; the open diagram is not touched.
    const int32_t blockCount = ReadStreamInt(Stream, "Block count");
    std::unique_ptr<TDiagObjectList> newBlocks;
    if (ObjList) {
        CheckListCount(Stream, blockCount, kBlockRecordMinSize, "Block count");
        newBlocks = std::make_unique<TDiagObjectList>(ObjList->GetParent());
        newBlocks->SetParentCanvas(ObjList->GetParentCanvas());
        newBlocks->LoadFromStream(
            Stream, [](QObject*) {}, blockCount);
    }
    const int32_t connectionCount = ReadStreamInt(Stream, "Connection count");
    const int64_t connectionsAt = Stream.Position();
    if (ConList) {
        CheckListCount(Stream, connectionCount, kConnectionRecordBase, "Connection count");
        TDiagConnectList probe(static_cast<TCanvas*>(nullptr));
        probe.LoadFromStream(Stream, {}, connectionCount);
    }
    const int64_t controlsAt = Stream.Position();
    CheckControlSection(Stream, *CntList);
    const int64_t infoAt = Stream.Position();
    if (ObjList && ConList) {
        const auto selected =
            LongRec::FromValue(uint32_t(ReadStreamInt(Stream, "Selected segment")));
        // A segment without a connection would make the connection list fail half-way through
        // the selection; refuse it now.
        if (selected.Hi == 0 && selected.Lo != 0)
            throw EFormatError(QStringLiteral("Selected segment %1,%2 names no connection")
                                   .arg(selected.Hi)
                                   .arg(selected.Lo),
                               infoAt);
        ReadStreamInt(Stream, "Selected block key");
    }

    // ---- second pass: replace the diagram.
    if (ObjList) {
        // The list object stays (a host may hold it); only its blocks are exchanged, and the
        // old ones go with the scratch list.
        ObjList->SwapContents(*newBlocks);
        newBlocks.reset();
        for (TDiagObject* block : std::vector<TDiagObject*>(ObjList->All()))
            AssignObjEvents(block);
    }
    if (ConList) {
        Stream.SetPosition(connectionsAt);
        ConList->LoadFromStream(
            Stream, [this](TDiagConnection* c) { ResolveObjLinks(c); }, connectionCount);
    }
    Stream.SetPosition(controlsAt);
    CntList->LoadFromStream(Stream);
    LoadInfoFromStream(Stream);
    AssignPaintEvent();
    if (FParent)
        FParent->update();
    // A load that an undo or redo makes is announced by the stack once it is done.
    if (!FUndoStack || !FUndoStack->IsRestoring())
        NoteDiagramChanged();
}

// ---- files

void TDiagContainer::SaveDiagramToFile(const QString& FileName) {
    // Written beside the old file and renamed over it only when complete, so a failed or
    // interrupted save leaves the old file whole.
    QSaveFile file(FileName);
    if (!file.open(QIODevice::WriteOnly))
        throw EFCreateError(
            QStringLiteral("Cannot create file \"%1\": %2").arg(FileName, file.errorString()));
    TDeviceStream stream(&file);
    SaveToStream(stream);
    if (!file.commit())
        throw EFCreateError(
            QStringLiteral("Cannot write file \"%1\": %2").arg(FileName, file.errorString()));
}

void TDiagContainer::LoadDiagramFromFile(const QString& FileName) {
    TFileStream stream(FileName, fmOpenRead);
    LoadFromStream(stream);
    if (FParent)
        FParent->update();
}

void TDiagContainer::SaveDefaultDiagramFile() {
    SaveDiagramToFile(ChangeFileExt(HostProgramPath(), QStringLiteral(".dgm")));
}

void TDiagContainer::LoadDefaultDiagramFile() {
    const QString name = ChangeFileExt(HostProgramPath(), QStringLiteral(".dgm"));
    if (FileExists(name))
        LoadDiagramFromFile(name);
}

// ---- text form

void TDiagContainer::SaveDiagramToText(const QString& FileName) {
    TIniFile text;
    if (ObjList) {
        for (const TDiagObject* block : ObjList->All()) {
            const int s = text.AddSection(block->objectName());
            text.AddValue(s, QStringLiteral("Type"), GetEnumName<TDiagObjectType>(block->FObjType));
            text.AddValue(s, QStringLiteral("Bounds"), block->SaveBoundsToStr());
        }
    }
    text.SaveToFile(FileName);
}

void TDiagContainer::LoadDiagramFromText(const QString& FileName) {
    const TIniFile text = TIniFile::LoadFromFile(FileName);
    // Every section is read and checked before the first block is made, so a bad value
    // adds nothing.
    struct TNewBlock {
        TDiagObjectType Kind;
        TRect R;
    };
    std::vector<TNewBlock> wanted;
    for (int i = 0; i < text.SectionCount(); ++i) {
        const QString bounds = text.ReadString(i, QStringLiteral("Bounds"));
        if (bounds.isEmpty())
            continue;
        int32_t a[4] = {0, 0, 0, 0};
        try {
            StringToIntArray(bounds, a, 4);
        } catch (const EConvertError& e) {
            const TIniFile::TSection& s = text.Section(i);
            throw EConvertError(QStringLiteral("%1: \"Bounds=%2\" in section [%3] (line %4) of "
                                               "\"%5\"")
                                    .arg(e.Message(), bounds, s.Name)
                                    .arg(s.Line)
                                    .arg(FileName));
        }
        const QString type = text.ReadString(i, QStringLiteral("Type"));
        if (type.isEmpty())
            continue;
        // An unknown name gives -1, whose low byte selects no kind.
        const int kind = GetEnumValue<TDiagObjectType>(type);
        wanted.push_back({TDiagObjectType(uint8_t(kind & 0xFF)), TRect{a[0], a[1], a[2], a[3]}});
    }
    for (const TNewBlock& b : wanted)
        CreateObjByDiagType(b.Kind, b.R);
    if (FParent)
        FParent->update();
}

} // namespace vde
